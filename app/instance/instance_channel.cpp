#include "app/instance/instance_channel.h"

#include <algorithm>
#include <QByteArray>
#include <QLocalSocket>
#include <QtEndian>
#include <QThread>
#include <QTimer>

using namespace instance_channel;

namespace {

// A client has this long to send its message; a good one needs milliseconds.
constexpr int kClientTimeoutMs = 3000;

// With more clients than this at a time, the oldest is dropped.
constexpr int kMaxClients = 64;

constexpr int kRetryMs = 20;

QByteArray framed(const QByteArray &message)
{
    QByteArray frame(kHeaderSize, '\0');
    qToBigEndian<quint32>(static_cast<quint32>(message.size()), frame.data());
    return frame + message;
}

// True when the message is there; false when more must arrive, or never will: then the client is
// dropped.
bool takeMessage(QLocalSocket &client, QString &message)
{
    char header[kHeaderSize];
    if (client.peek(header, kHeaderSize) < kHeaderSize)
        return false;
    const quint32 size = qFromBigEndian<quint32>(header);
    if (size > kMaxMessageSize) {
        client.abort();
        return false;
    }
    if (client.bytesAvailable() < kHeaderSize + static_cast<qint64>(size))
        return false;
    client.skip(kHeaderSize);
    const QByteArray octets = client.read(size);
    message = QString::fromUtf8(octets.constData(), octets.size());
    return true;
}

// The milliseconds that are left, as the toolkit's waiting functions take them.
int remaining(const QDeadlineTimer &deadline)
{
    return static_cast<int>(deadline.remainingTime());
}

bool deliver(const QString &socketPath, const QByteArray &frame, const QDeadlineTimer &deadline)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    // It connects at once, or there is nobody, or the queue is full: both may change.
    if (socket.state() != QLocalSocket::ConnectedState)
        return false;
    socket.write(frame);
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(remaining(deadline)))
            return false;
    }
    char answer = 0;
    while (socket.bytesAvailable() == 0) {
        if (!socket.waitForReadyRead(remaining(deadline)))
            return false;
    }
    socket.getChar(&answer);
    return answer == kAcknowledge;
}

} // namespace

InstanceServer::InstanceServer()
    : m_server(this)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &InstanceServer::acceptClients);
}

bool InstanceServer::listen(const QString &socketPath)
{
    QLocalServer::removeServer(socketPath);
    return m_server.listen(socketPath);
}

QString InstanceServer::errorText() const
{
    return m_server.errorString();
}

void InstanceServer::acceptClients()
{
    while (QLocalSocket *client = m_server.nextPendingConnection()) {
        const auto clients = m_server.findChildren<QLocalSocket *>();
        if (clients.size() > kMaxClients)
            delete clients.first();
        serve(client);
    }
}

void InstanceServer::serve(QLocalSocket *client)
{
    client->setReadBufferSize(kHeaderSize + kMaxMessageSize);
    const auto read = [this, client] {
        QString message;
        if (!takeMessage(*client, message))
            return;
        client->write(&kAcknowledge, 1);
        client->flush(); // now: whoever gets the message may keep the event loop waiting
        client->disconnectFromServer();
        emit messageReceived(message);
    };
    connect(client, &QLocalSocket::readyRead, this, read);
    connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    auto *patience = new QTimer(client);
    connect(patience, &QTimer::timeout, client, &QLocalSocket::abort);
    patience->start(kClientTimeoutMs);
    read();
}

bool sendToInstance(const QString &socketPath, const QString &message, QDeadlineTimer deadline)
{
    const QByteArray octets = message.toUtf8();
    if (octets.size() > kMaxMessageSize)
        return false;
    const QByteArray frame = framed(octets);
    do {
        if (deliver(socketPath, frame, deadline))
            return true;
        QThread::msleep(static_cast<unsigned long>(std::clamp<qint64>(
            deadline.isForever() ? kRetryMs : deadline.remainingTime(), 0, kRetryMs)));
    } while (!deadline.hasExpired());
    return false;
}
