// The toolkit has all of this in a library of its own, which would be loaded for nothing else: with
// those that it needs in turn, a twentieth of the start.

#include "app/instance/instance_channel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <QFile>
#include <QSocketNotifier>
#include <QtEndian>
#include <QThread>
#include <QTimer>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

using namespace instance_channel;

namespace {

// A client has this long to send its message; a good one needs milliseconds.
constexpr int kClientTimeoutMs = 3000;

// With more clients than this at a time, the oldest is dropped.
constexpr int kMaxClients = 64;

constexpr int kRetryMs = 20;

// What the call returns when no signal came in between.
template <typename Call>
auto untilDone(const Call &call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

FileDescriptor newSocket()
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

// Has `use`, which is bind or connect, take the path as the socket's address.
template <typename Use>
bool withAddress(int socket, const QByteArray &path, const Use &use)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= static_cast<int>(sizeof(address.sun_path))) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::copy(path.begin(), path.end(), address.sun_path);
    return use(socket, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0;
}

QByteArray framed(const QByteArray &message)
{
    QByteArray frame(kHeaderSize, '\0');
    qToBigEndian<quint32>(static_cast<quint32>(message.size()), frame.data());
    return frame + message;
}

// Whether the socket is ready for `events`, or broken, before the deadline.
bool waitFor(int socket, short events, const QDeadlineTimer &deadline)
{
    pollfd wait = {socket, events, 0};
    return untilDone([&] { return ::poll(&wait, 1, static_cast<int>(deadline.remainingTime())); }) >
           0;
}

bool send(int socket, const QByteArray &octets, const QDeadlineTimer &deadline)
{
    const char *next = octets.constData();
    const char *const end = next + octets.size();
    while (next != end) {
        if (!waitFor(socket, POLLOUT, deadline))
            return false;
        const ssize_t sent = untilDone([&] {
            return ::send(socket, next, static_cast<std::size_t>(end - next), MSG_NOSIGNAL);
        });
        if (sent < 0 && errno != EAGAIN)
            return false;
        next += std::max<ssize_t>(sent, 0);
    }
    return true;
}

bool deliver(const QString &socketPath, const QByteArray &frame, const QDeadlineTimer &deadline)
{
    const FileDescriptor socket = newSocket();
    // It connects at once, or there is nobody, or the queue is full: both may change.
    if (socket < 0 || !withAddress(socket, QFile::encodeName(socketPath), ::connect) ||
        !send(socket, frame, deadline) || !waitFor(socket, POLLIN, deadline))
        return false;
    char answer = 0;
    return ::recv(socket, &answer, 1, 0) == 1 && answer == kAcknowledge;
}

// A connection up to its message.
class Client : public QObject
{
public:
    Client(FileDescriptor socket, InstanceServer *server)
        : QObject(server)
        , m_socket(std::move(socket))
        , m_news(m_socket, QSocketNotifier::Read)
        , m_server(server)
    {
        connect(&m_news, &QSocketNotifier::activated, this, &Client::read);
        connect(&m_patience, &QTimer::timeout, this, &Client::drop);
        m_patience.start(kClientTimeoutMs);
    }

private:
    void read();
    bool readWhatIsThere();
    void drop();

    FileDescriptor m_socket;
    QSocketNotifier m_news;
    QTimer m_patience;
    InstanceServer *m_server;
    QByteArray m_frame; // what has come of it
};

// False at its end.
bool Client::readWhatIsThere()
{
    ssize_t count = 0;
    do {
        char octets[4096];
        count = untilDone([&] { return ::recv(m_socket, octets, sizeof(octets), 0); });
        m_frame.append(octets, static_cast<int>(std::max<ssize_t>(count, 0)));
    } while (count > 0 && m_frame.size() < kHeaderSize + kMaxMessageSize);
    return count > 0 || (count < 0 && errno == EAGAIN);
}

void Client::read()
{
    const bool goesOn = readWhatIsThere();
    const bool hasHeader = m_frame.size() >= kHeaderSize;
    const quint32 size = hasHeader ? qFromBigEndian<quint32>(m_frame.constData()) : 0;
    const bool isWhole = hasHeader && size <= static_cast<quint32>(m_frame.size() - kHeaderSize);
    if (isWhole && size <= kMaxMessageSize) {
        ::send(m_socket, &kAcknowledge, 1, MSG_NOSIGNAL);
        drop(); // now: whoever gets the message may keep the event loop waiting
        emit m_server->messageReceived(
            QString::fromUtf8(m_frame.constData() + kHeaderSize, static_cast<int>(size)));
    } else if (!goesOn || size > kMaxMessageSize) {
        drop();
    }
}

// Closes the connection. The object, which may be what runs, goes when the event loop is back.
void Client::drop()
{
    m_news.setEnabled(false);
    m_patience.stop();
    m_socket = FileDescriptor();
    setParent(nullptr);
    deleteLater();
}

} // namespace

InstanceServer::InstanceServer() = default;

InstanceServer::~InstanceServer()
{
    if (!m_path.isEmpty())
        ::unlink(m_path.constData());
}

bool InstanceServer::listen(const QString &socketPath)
{
    constexpr int kQueue = 50;
    const QByteArray path = QFile::encodeName(socketPath);
    FileDescriptor socket = newSocket();
    ::unlink(path.constData());
    // The socket's permissions become the file's.
    if (socket < 0 || ::fchmod(socket, S_IRUSR | S_IWUSR) != 0 ||
        !withAddress(socket, path, ::bind) || ::listen(socket, kQueue) != 0) {
        m_errorText = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    m_socket = std::move(socket);
    m_path = path;
    m_news = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
    connect(m_news.get(), &QSocketNotifier::activated, this, &InstanceServer::acceptClients);
    return true;
}

QString InstanceServer::errorText() const
{
    return m_errorText;
}

void InstanceServer::acceptClients()
{
    FileDescriptor client(::accept4(m_socket, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (client >= 0) {
        new Client(std::move(client), this);
        if (children().size() > kMaxClients)
            delete children().first();
    } else if (errno == EMFILE || errno == ENFILE) {
        // Who knocks would be heard without end: again when those that are there have gone.
        m_news->setEnabled(false);
        QTimer::singleShot(kClientTimeoutMs, m_news.get(), [this] { m_news->setEnabled(true); });
    }
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
