#include "signaturecore/signature_core.h"

#include <dlfcn.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QLoggingCategory>

namespace {

// Off by default at every level: progress texts are of interest to the suite's developers alone.
Q_LOGGING_CATEGORY(lcCore, "orvane.core", QtFatalMsg)

constexpr const char *kConfigurationFile = "/settings/PXClientConfig.dll";

bool holdsConfiguration(const QString &directory)
{
    return QFile::exists(directory + QLatin1String(kConfigurationFile));
}

// A relative path counts as none, as the XDG base directory rules ask.
QString userConfigHome()
{
    QString home = QFile::decodeName(qgetenv("XDG_CONFIG_HOME"));
    if (QDir::isAbsolutePath(home))
        return home;
    return QDir::homePath() + QLatin1String("/.config");
}

// The shipped configuration for the desktop's language. Its script tells, whatever form the
// language is named in: zh_HK and zh_Hant are Traditional Chinese as zh_TW is.
QString shippedConfiguration()
{
    switch (QLocale::system().script()) {
    case QLocale::SimplifiedHanScript:
        return QStringLiteral("CN");
    case QLocale::TraditionalHanScript:
        return QStringLiteral("TW");
    default:
        return QStringLiteral("EN");
    }
}

} // namespace

QString SignatureCore::configPath() const
{
    QString chosen = QFile::decodeName(qgetenv("PX_CONFIG_PATH"));
    if (!chosen.isEmpty())
        return chosen;
    QString own = userConfigHome() + QLatin1String("/orvane");
    if (holdsConfiguration(own))
        return own;
    return installPath() + QLatin1String("/settings/") + shippedConfiguration();
}

QString SignatureCore::installPath() const
{
    Dl_info info = {}; // without a name, as it begins, it gives an empty path
    ::dladdr(reinterpret_cast<const void *>(&SignatureCore::staticMetaObject), &info);
    return QFileInfo(QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath()).path();
}

void SignatureCore::logDebug(const QString &text) const
{
    qCDebug(lcCore).noquote() << text;
}

void SignatureCore::logError(const QString &text) const
{
    qCCritical(lcCore).noquote() << text;
}

qint64 SignatureCore::createComponentObject(const QString &, const QString &) const
{
    return 0;
}

extern "C" {

Q_DECL_EXPORT void PX_Init() {}

Q_DECL_EXPORT void PX_Uninit() {}

Q_DECL_EXPORT int PX_GetSignatureCore(QObject **core)
{
    static SignatureCore signatureCore;
    *core = &signatureCore;
    return 0;
}

} // extern "C"
