#include "app/instance/qtsingleapplication.h"

#include <QDeadlineTimer>
#include <QDebug>

QtSingleApplication::QtSingleApplication(const QString &id, int &argc, char **argv)
    : QApplication(argc, argv)
    , m_lock(id)
{
}

QtSingleApplication::~QtSingleApplication() = default;

bool QtSingleApplication::isRunning()
{
    if (m_server)
        return false;
    switch (m_lock.acquire()) {
    case InstanceLock::Result::HeldByAnother:
        return true;
    case InstanceLock::Result::Unavailable:
        qDebug().noquote() << "running without the single-instance guard:" << m_lock.errorText();
        return false;
    case InstanceLock::Result::Held:
        break;
    }
    m_server = std::make_unique<InstanceServer>();
    connect(m_server.get(), &InstanceServer::messageReceived, this,
            &QtSingleApplication::messageReceived, Qt::QueuedConnection);
    if (!m_server->listen(m_lock.socketPath()))
        qDebug().noquote() << "no messages from later instances:" << m_server->errorText();
    return false;
}

bool QtSingleApplication::sendMessage(const QString &message, int timeout)
{
    return !m_server && sendToInstance(m_lock.socketPath(), message, QDeadlineTimer(timeout));
}
