#pragma once

#include "util/file_descriptor.h"

#include <memory>
#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>

class QSocketNotifier;

/// How messages travel between instances: a connection carries one message, as its length in octets
/// (32 bits, high octet first), then that many octets of UTF-8. The receiver answers with one octet
/// (ACK, 6) and closes.
namespace instance_channel {
constexpr int kHeaderSize = 4;
constexpr int kMaxMessageSize = 64 * 1024;
constexpr char kAcknowledge = 6;
} // namespace instance_channel

/// The running instance's end. It never waits for a client: broken and idle ones are dropped. Its
/// children are the clients whose messages are not there yet.
class InstanceServer : public QObject
{
    Q_OBJECT

public:
    InstanceServer();
    ~InstanceServer() override;

    /// Listens at `socketPath`, for this user only. What lies there is taken for the socket of an
    /// instance that was killed and removed, so only the lock's holder may call this.
    bool listen(const QString &socketPath);

    /// Why `listen` failed.
    QString errorText() const;

signals:
    void messageReceived(const QString &message);

private:
    void acceptClients();

    FileDescriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_news;
    QByteArray m_path; ///< of the socket; empty while there is none
    QString m_errorText;
};

/// Delivers the message to the instance that listens, or soon will listen, at `socketPath`, and
/// waits for its answer. False when that can't be done before the deadline, or the message is too
/// long.
bool sendToInstance(const QString &socketPath, const QString &message, QDeadlineTimer deadline);
