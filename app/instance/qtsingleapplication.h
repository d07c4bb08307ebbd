#pragma once

#include "app/instance/instance_channel.h"
#include "app/instance/instance_lock.h"

#include <memory>
#include <QApplication>
#include <QString>

/// A GUI application of which each user runs one instance: the first to ask holds a lock that the
/// system takes back when the process ends, however it ends; later ones can send it messages.
class QtSingleApplication : public QApplication
{
    Q_OBJECT

public:
    /// `id` names the program: instances with the same one are told apart from all others. `argc`
    /// and `argv` as `QApplication` takes them.
    QtSingleApplication(const QString &id, int &argc, char **argv);
    ~QtSingleApplication() override;

    /// Whether another instance runs. Otherwise this one becomes the running instance, if it isn't
    /// yet. Where no lock can be had it says so on the debug stream and answers false: rather two
    /// instances than none.
    bool isRunning();

    /// Sends the message to the running instance and waits until that has received it, `timeout`
    /// milliseconds in all (forever when negative). False when it can't be delivered in time, is
    /// longer than 64 KiB in UTF-8, or this is the running instance.
    bool sendMessage(const QString &message, int timeout = 5000);

signals:
    /// A later instance sent `message` to this one. Emitted from the event loop.
    void messageReceived(const QString &message);

private:
    InstanceLock m_lock;
    // Goes before the lock does: only its holder may touch the socket.
    std::unique_ptr<InstanceServer> m_server;
};
