#include "core/px_core_manager.h"

#include "core/core_calls.h"

#include <cstdio>
#include <filesystem>
#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QLibrary>
#include <system_error>

namespace {

using InitFunction = void (*)();
using UninitFunction = void (*)();
using GetSignatureCoreFunction = int (*)(QObject **core);

PXCoreManager *g_coremanager = nullptr;
QLibrary *_coreLib = nullptr;
UninitFunction _PX_Uninit = nullptr;
PXSignatureCoreAgent *s_coreagent = nullptr;

template <typename Agent>
Agent *createAgent(QObject *target)
{
    auto *agent = new Agent(target);
    agent->setObjectName(QStringLiteral("Agent"));
    return agent;
}

} // namespace

PXCoreManager::PXCoreManager()
    : m_installPath(
          QDir(QCoreApplication::applicationDirPath() + QLatin1String("/..")).canonicalPath())
{
    startDirectory();
    qDebug() << "path:" << m_installPath;
    QDir::setCurrent(m_installPath);
    std::printf("Path = %s \n", m_installPath.toUtf8().constData());
    qtcall_init();
}

PXCoreManager::~PXCoreManager()
{
    delete m_signatureManager;
    qtcall_destroy();
    if (g_coremanager == this)
        g_coremanager = nullptr;
}

QString PXCoreManager::GetPath() const
{
    return m_installPath;
}

PXSignatureManagerAgent *PXCoreManager::GetSignatureManager()
{
    if (m_signatureManager)
        return m_signatureManager;
    const QString classId = QStringLiteral("1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013");
    QObject *component =
        createComponentObject(QStringLiteral("PXSIGNATUREMANAGER.PXSignatureManager.1"), classId);
    if (!component)
        std::printf("createComponentObject = %s  fail", classId.toUtf8().constData());
    m_signatureManager = createAgent<PXSignatureManagerAgent>(component);
    return m_signatureManager;
}

void PXCoreManager::Debug(const QString &message)
{
    if (getSignatureCore())
        core_calls::logDebug(core_calls::taggedMessage("Debug", 51, message));
}

void PXCoreManager::Error(const QString &message)
{
    if (getSignatureCore())
        core_calls::logError(core_calls::taggedMessage("Error", 56, message));
}

PXCoreManager *GetCoreManager()
{
    if (!g_coremanager)
        g_coremanager = new PXCoreManager;
    return g_coremanager;
}

bool qtcall_init()
{
    if (_coreLib)
        return true;

    _coreLib = new QLibrary(QDir::currentPath() + QLatin1String("/bin/PXSignatureCoreV10"));
    if (!_coreLib->load()) {
        delete _coreLib;
        _coreLib = nullptr;
        return false;
    }

    const auto init = reinterpret_cast<InitFunction>(_coreLib->resolve("PX_Init"));
    _PX_Uninit = reinterpret_cast<UninitFunction>(_coreLib->resolve("PX_Uninit"));
    const auto getCore =
        reinterpret_cast<GetSignatureCoreFunction>(_coreLib->resolve("PX_GetSignatureCore"));
    if (init && _PX_Uninit && getCore) {
        init();
        QObject *core = nullptr;
        if (getCore(&core) == 0 && core) {
            s_coreagent = createAgent<PXSignatureCoreAgent>(core);
            return true;
        }
    } else {
        // Nothing of it has run yet. Once "PX_Init" was called it may have left threads or exit
        // handlers behind, so from then on its code stays mapped.
        _coreLib->unload();
    }

    delete _coreLib;
    _coreLib = nullptr;
    _PX_Uninit = nullptr;
    s_coreagent = nullptr;
    return false;
}

void qtcall_destroy()
{
    delete s_coreagent;
    s_coreagent = nullptr;
    // "PX_Uninit" is deliberately not called: the core is never told to shut down.
    _PX_Uninit = nullptr;
    delete _coreLib;
    _coreLib = nullptr;
}

PXSignatureCoreAgent *getSignatureCore()
{
    return s_coreagent;
}

QObject *createComponentObject(const QString &progId, const QString &classId)
{
    // The core's method gives the address as a number.
    return reinterpret_cast<QObject *>( // NOLINT(performance-no-int-to-ptr)
        static_cast<quintptr>(core_calls::createComponentObject(progId, classId)));
}

QByteArray startDirectory()
{
    static const QByteArray directory = [] {
        std::error_code error;
        return QByteArray::fromStdString(std::filesystem::current_path(error).native());
    }();
    return directory;
}
