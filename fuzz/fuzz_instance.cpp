#include "app/instance/instance_channel.h"
#include "fuzz_application.h"
#include "fuzz_target.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QtEndian>
#include <QVector>

namespace {

using namespace instance_channel;

using Messages = QVector<QString>;

/// The running instance, and all that it was told.
class Instance
{
public:
    Instance()
    {
        require(m_server.listen(path()));
        QObject::connect(&m_server, &InstanceServer::messageReceived, &m_server,
                         [this](const QString &message) { heard += message; });
    }

    QString path() const { return m_directory.filePath(QStringLiteral("socket")); }
    int clients() const { return static_cast<int>(m_server.children().size()); }

    Messages heard;

private:
    QTemporaryDir m_directory;
    InstanceServer m_server;
};

// Runs the event loop until it holds; that takes a moment, or is a fault.
template <typename Holds>
void requireSoon(const Holds &holds)
{
    constexpr int kPatienceMs = 2000;
    QElapsedTimer timer;
    timer.start();
    while (!holds()) {
        require(timer.elapsed() < kPatienceMs);
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

/// What the octets of a client mean, read by themselves.
struct Meaning
{
    explicit Meaning(const QByteArray &octets)
    {
        if (octets.size() < kHeaderSize)
            return;
        constexpr quint32 kMost = kMaxMessageSize;
        const quint32 size = qFromBigEndian<quint32>(octets.constData());
        isTooLong = size > kMost;
        const qint64 behind = octets.size() - kHeaderSize - qint64(size);
        isMessage = !isTooLong && behind >= 0;
        isAnswered = isMessage && behind == 0;
        if (isMessage)
            message = QString::fromUtf8(octets.constData() + kHeaderSize, static_cast<int>(size));
    }

    bool isTooLong = false;
    bool isMessage = false;
    bool isAnswered = false; ///< for sure: who goes on behind a message may miss the answer
    QString message;
};

// In two parts, as they may arrive.
void send(QLocalSocket &client, const QByteArray &octets)
{
    const auto first = octets.isEmpty() ? 0 : octets.size() * uchar(octets.back()) / 256;
    for (const QByteArray &part : {octets.left(first), octets.mid(first)}) {
        client.write(part);
        client.flush();
        QCoreApplication::processEvents();
    }
}

void requireIsTakenFor(const QByteArray &octets, Instance &instance)
{
    const Meaning meaning(octets);
    instance.heard.clear();
    QLocalSocket client;
    client.connectToServer(instance.path());
    require(client.state() == QLocalSocket::ConnectedState);
    requireSoon([&] { return instance.clients() == 1; });
    send(client, octets);
    if (meaning.isMessage || meaning.isTooLong)
        requireSoon([&] { return client.state() == QLocalSocket::UnconnectedState; });
    const QByteArray answer = client.readAll();
    client.abort();
    requireSoon([&] { return instance.clients() == 0; });
    require(answer == QByteArray(1, kAcknowledge) || (answer.isEmpty() && !meaning.isAnswered));
    require(answer.isEmpty() || meaning.isMessage);
    require(instance.heard == (meaning.isMessage ? Messages{meaning.message} : Messages()));
}

} // namespace

// Whatever a client sends, the instance hears the message that it is, or none, answers just that,
// and keeps nothing of the client.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    startApplication<QCoreApplication>("fuzz_instance");
    static Instance instance;
    requireIsTakenFor({reinterpret_cast<const char *>(data), static_cast<int>(size)}, instance);
    return 0;
}
