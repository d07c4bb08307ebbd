#include "core/px_core_manager.h"

#include "core/core_calls.h"
#include "core/core_loader.h"
#include "core/start_directory.h"

#include <cstdio>
#include <QCoreApplication>
#include <QDebug>
#include <QDir>

namespace {

PXCoreManager *g_coremanager = nullptr;

} // namespace

PXCoreManager::PXCoreManager()
    : m_installPath(
          QDir(QCoreApplication::applicationDirPath() + QLatin1String("/..")).canonicalPath())
{
    rememberStartDirectory();
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
    // Made before the core is asked, which may change where temporary files, and logs, belong.
    auto *agent = new PXSignatureManagerAgent;
    agent->setObjectName(QStringLiteral("Agent"));
    const QString classId = QStringLiteral("1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013");
    agent->setTarget(
        createComponentObject(QStringLiteral("PXSIGNATUREMANAGER.PXSignatureManager.1"), classId));
    if (!agent->target())
        std::printf("createComponentObject = %s  fail", classId.toUtf8().constData());
    m_signatureManager = agent;
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

QObject *createComponentObject(const QString &progId, const QString &classId)
{
    // The core's method gives the address as a number.
    return reinterpret_cast<QObject *>( // NOLINT(performance-no-int-to-ptr)
        static_cast<quintptr>(core_calls::componentAddress(progId, classId)));
}
