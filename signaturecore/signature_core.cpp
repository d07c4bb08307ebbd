#include "signaturecore/signature_core.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <dlfcn.h>

namespace {

// Off by default at every level: progress texts are of interest to the suite's developers alone.
Q_LOGGING_CATEGORY(lcCore, "orvane.core", QtMsgType(QtFatalMsg + 1))

constexpr const char *kConfigurationFile = "/settings/PXClientConfig.dll";

bool holdsConfiguration(const QString &directory)
{
    return QFile::exists(directory + QLatin1String(kConfigurationFile));
}

// The shipped configuration for the language the desktop speaks; English for all others.
QString shippedConfiguration()
{
    const QString language = QLocale::system().uiLanguages().value(0);
    const QLocale locale(QString(language).replace(QLatin1Char('-'), QLatin1Char('_')));
    if (locale.language() != QLocale::Chinese)
        return QStringLiteral("EN");
    const bool traditional = locale.script() == QLocale::TraditionalHanScript ||
                             language.contains(QLatin1String("Hant"));
    return traditional ? QStringLiteral("TW") : QStringLiteral("CN");
}

} // namespace

QString SignatureCore::configPath() const
{
    const QString chosen = qEnvironmentVariable("PX_CONFIG_PATH");
    if (!chosen.isEmpty())
        return chosen;
    const QString own = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                        QLatin1String("/orvane");
    if (holdsConfiguration(own))
        return own;
    return installPath() + QLatin1String("/settings/") + shippedConfiguration();
}

QString SignatureCore::installPath() const
{
    Dl_info info = {};
    if (::dladdr(reinterpret_cast<const void *>(&SignatureCore::staticMetaObject), &info) == 0)
        return {};
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
