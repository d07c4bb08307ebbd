#include "app/instance/instance_channel.h"
#include "app/instance/instance_lock.h"
#include "tests/support/message_recorder.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtEndian>
#include <QTest>
#include <QTimer>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <utility>
#include <vector>

using namespace instance_channel;

namespace {

// What the first calls of send do: take so many octets at most, or fail with the error whose
// negative it is.
std::vector<int> firstSends;
std::atomic<std::size_t> sends{0};

int acceptError = 0; // of the next call of accept4, if any

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names.
extern "C" {
ssize_t __real_send(int socket, const void *octets, std::size_t length, int flags);
ssize_t __wrap_send(int socket, const void *octets, std::size_t length, int flags)
{
    const std::size_t number = sends++;
    const int most = number < firstSends.size() ? firstSends[number] : INT_MAX;
    if (most >= 0)
        return __real_send(socket, octets, std::min<std::size_t>(length, most), flags);
    errno = -most;
    return -1;
}

int __real_accept4(int socket, sockaddr *address, socklen_t *length, int flags);
int __wrap_accept4(int socket, sockaddr *address, socklen_t *length, int flags)
{
    const int error = std::exchange(acceptError, 0);
    if (error == 0)
        return __real_accept4(socket, address, length, flags);
    errno = error;
    return -1;
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

// Sends from a thread of its own while this one runs the server's event loop.
bool sendWhileServing(const QString &path, const QString &message, int timeout = 20000)
{
    std::atomic<int> result{-1};
    std::thread sender([&] { result = sendToInstance(path, message, QDeadlineTimer(timeout)); });
    while (result < 0)
        QTest::qWait(1);
    sender.join();
    return result == 1;
}

QByteArray header(quint32 size)
{
    QByteArray octets(kHeaderSize, '\0');
    qToBigEndian(size, octets.data());
    return octets;
}

// A server, and a client that writes it these octets.
struct Visit
{
    Visit(const QString &path, const QByteArray &octets)
    {
        if (!server.listen(path))
            qFatal("nobody listens");
        client.connectToServer(path);
        client.write(octets);
    }

    InstanceServer server;
    QLocalSocket client;
};

// Has the server listen half a second from now.
class LateListener
{
public:
    LateListener(InstanceServer &server, const QString &path)
    {
        constexpr int kDelayMs = 500;
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, &server,
                         [&server, path] { server.listen(path); });
        m_timer.start(kDelayMs);
    }

private:
    QTimer m_timer;
};

// A socket that listens and never accepts, with room for `backlog` clients and one more.
FileDescriptor deafListener(const QString &path, int backlog)
{
    FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, path.toLocal8Bit().constData(), sizeof(address.sun_path));
    if (listener < 0 ||
        ::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof(address)) != 0 ||
        ::listen(listener, backlog) != 0)
        return {};
    return listener;
}

} // namespace

class TestInstanceChannel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void message_data();
    void message();
    void longestMessage();
    void whatSendDoes_data();
    void whatSendDoes();
    void tooLongMessageIsRefusedAtOnce();
    void socketIsForTheUserAlone();
    void staleSocketIsReplaced();
    void pathTooLongToListen();
    void senderWaitsForAServerThatIsLate();
    void senderWaitsForEver();
    void deadlineHolds_data();
    void deadlineHolds();
    void triesOnceWithoutTime();
    void pausesBetweenAttempts();
    void brokenClientsDelayNobody_data();
    void brokenClientsDelayNobody();
    void theOldestOfTooManyClientsIsDropped();
    void tooLongFrameIsCutOff();
    void clientThatLeavesEarlyIsDropped();
    void idleClientsAreDropped();
    void oneMessageAConnection();
    void messageInPieces();
    void longestMessageInPieces();
    void connectionEndsBeforeTheMessageIsHeard();
    void socketGoesWithItsServer();
    void clientThatLeavesAtOnceIsHeard();
    void receiverMayBlockInItsSlot();
    void anotherAnswerIsNone();
    void whatAcceptDoes_data();
    void whatAcceptDoes();
    void serverIsQuietWithoutDescriptors();

private:
    QScopedPointer<QTemporaryDir> m_directory;
    QString m_path;
};

void TestInstanceChannel::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    m_path = m_directory->filePath(QStringLiteral("socket"));
}

void TestInstanceChannel::message_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("the viewer's own") << QStringLiteral("raise_window_noop");
    QTest::newRow("empty") << QString();
    QTest::newRow("Chinese") << QString::fromUtf8("證書 证书");
    QTest::newRow("beyond the first plane") << QString::fromUtf8("\xF0\x9F\x94\x92");
    QTest::newRow("with NUL") << QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b"));
    QTest::newRow("with line ends") << QStringLiteral("a\r\nb\n");
}

void TestInstanceChannel::message()
{
    QFETCH(QString, text);
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    QVERIFY(sendWhileServing(m_path, text));
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), text);
}

void TestInstanceChannel::longestMessage()
{
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    // 64 KiB are counted in UTF-8: a letter of three octets among letters of one.
    const QString text = QString(kMaxMessageSize - 3, QLatin1Char('x')) + QChar(0x8B49);
    QVERIFY(sendWhileServing(m_path, text));
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), text);
}

void TestInstanceChannel::whatSendDoes_data()
{
    QTest::addColumn<std::vector<int>>("first");
    QTest::addColumn<int>("calls"); // the last is the answer's
    QTest::newRow("goes on") << std::vector<int>{5, -EAGAIN, 5, -EINTR} << 6;
    QTest::newRow("begins anew") << std::vector<int>{5, 5, -EPIPE, 5, 5} << 7;
}

void TestInstanceChannel::whatSendDoes()
{
    QFETCH(std::vector<int>, first);
    QFETCH(int, calls);
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    firstSends = first;
    sends = 0;
    QVERIFY(sendWhileServing(m_path, QStringLiteral("twelve chars"), 2000));
    QCOMPARE(int(sends), calls);
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("twelve chars"));
}

void TestInstanceChannel::tooLongMessageIsRefusedAtOnce()
{
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    QElapsedTimer timer;
    timer.start();
    const QString text = QString(kMaxMessageSize - 2, QLatin1Char('x')) + QChar(0x8B49);
    QVERIFY(!sendToInstance(m_path, text, QDeadlineTimer(20000)));
    QVERIFY(timer.elapsed() < 5000);
    QTest::qWait(50);
    QVERIFY(received.isEmpty());
}

void TestInstanceChannel::socketIsForTheUserAlone()
{
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    struct stat status = {};
    QCOMPARE(::lstat(m_path.toLocal8Bit().constData(), &status), 0);
    QVERIFY(S_ISSOCK(status.st_mode));
    QCOMPARE(status.st_mode & (S_IRWXG | S_IRWXO), 0U);
}

void TestInstanceChannel::staleSocketIsReplaced()
{
    {
        const FileDescriptor killed = deafListener(m_path, 1);
        QVERIFY(killed >= 0);
    }
    QVERIFY(QFileInfo::exists(m_path));
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QVERIFY(sendWhileServing(m_path, QStringLiteral("hello")));
}

void TestInstanceChannel::pathTooLongToListen()
{
    InstanceServer server;
    for (const std::size_t length : {sizeof(sockaddr_un::sun_path), std::size_t(300)}) {
        QVERIFY(!server.listen(m_path.leftJustified(int(length), QLatin1Char('x'))));
        QCOMPARE(server.errorText(), QString::fromLocal8Bit(std::strerror(ENAMETOOLONG)));
    }
}

void TestInstanceChannel::senderWaitsForAServerThatIsLate()
{
    // The lock is held some time before its holder listens.
    InstanceServer server;
    const LateListener late(server, m_path);
    QVERIFY(sendWhileServing(m_path, QStringLiteral("early")));
}

void TestInstanceChannel::senderWaitsForEver()
{
    InstanceServer server;
    const LateListener late(server, m_path);
    QVERIFY(sendWhileServing(m_path, QStringLiteral("early"), -1));
}

void TestInstanceChannel::deadlineHolds_data()
{
    QTest::addColumn<int>("backlog"); // negative: nobody listens
    QTest::newRow("nobody") << -1;
    QTest::newRow("no answer") << 10;
    QTest::newRow("full queue") << 0;
}

void TestInstanceChannel::deadlineHolds()
{
    QFETCH(int, backlog);
    const FileDescriptor listener = backlog < 0 ? FileDescriptor() : deafListener(m_path, backlog);
    QCOMPARE(listener >= 0, backlog >= 0);
    QLocalSocket first;
    if (backlog == 0)
        first.connectToServer(m_path);
    QElapsedTimer timer;
    timer.start();
    const QString text(kMaxMessageSize, QLatin1Char('x'));
    firstSends = {-EINTR}; // which nothing that succeeds takes back
    sends = 0;
    const MessageRecorder recorder;
    QVERIFY(!sendToInstance(m_path, text, QDeadlineTimer(700)));
    QCOMPARE(MessageRecorder::messages(), QStringList()); // the toolkit has nothing to complain of
    QVERIFY(timer.elapsed() >= 690);
    QVERIFY2(timer.elapsed() < 3000, QByteArray::number(timer.elapsed()).constData());
}

void TestInstanceChannel::triesOnceWithoutTime()
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i)
        QVERIFY(!sendToInstance(m_path, QStringLiteral("hello"), QDeadlineTimer(0)));
    QVERIFY2(timer.elapsed() < 1000, QByteArray::number(timer.elapsed()).constData());
}

void TestInstanceChannel::pausesBetweenAttempts()
{
    constexpr int kAttempts = 10;
    int attempts = 0;
    QLocalServer server;
    QVERIFY(server.listen(m_path));
    connect(&server, &QLocalServer::newConnection, this, [&] {
        QLocalSocket *client = server.nextPendingConnection();
        if (++attempts == kAttempts)
            client->write(&kAcknowledge, 1);
        else
            client->abort();
    });
    QElapsedTimer timer;
    timer.start();
    QVERIFY(sendWhileServing(m_path, QStringLiteral("again"), -1));
    QCOMPARE(attempts, kAttempts);
    QVERIFY2(timer.elapsed() >= 100, QByteArray::number(timer.elapsed()).constData());
}

void TestInstanceChannel::brokenClientsDelayNobody_data()
{
    QTest::addColumn<QByteArray>("octets");
    QTest::newRow("silent") << QByteArray();
    QTest::newRow("half a header") << QByteArray("\0\0", 2);
    QTest::newRow("header alone") << header(10);
    QTest::newRow("half a message") << header(10) + "12345";
    QTest::newRow("one octet short of the longest")
        << header(kMaxMessageSize) + QByteArray(kMaxMessageSize - 1, 'x');
    QTest::newRow("too long") << header(kMaxMessageSize + 1) + QByteArray(1000, 'x');
    QTest::newRow("much too long") << header(0xFFFFFFFFU) + QByteArray(1000, 'x');
    QTest::newRow("no protocol at all") << QByteArray("GET / HTTP/1.0\r\n\r\n");
}

void TestInstanceChannel::brokenClientsDelayNobody()
{
    QFETCH(QByteArray, octets);
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    constexpr int kClients = 200;
    std::vector<QLocalSocket> clients(kClients);
    for (QLocalSocket &client : clients) {
        client.connectToServer(m_path);
        client.write(octets);
        QTest::qWait(1);
    }
    // However many come, few are kept.
    QTRY_VERIFY_WITH_TIMEOUT(server.children().size() <= 64, 1000);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(sendWhileServing(m_path, QStringLiteral("good")));
    QVERIFY2(timer.elapsed() < 2500, QByteArray::number(timer.elapsed()).constData());
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("good"));
}

void TestInstanceChannel::theOldestOfTooManyClientsIsDropped()
{
    constexpr int kKept = 64;
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    std::vector<QLocalSocket> clients(kKept + 1);
    const auto come = [this](QLocalSocket &client) {
        client.connectToServer(m_path);
        QTest::qWait(1);
    };
    std::for_each(clients.begin(), clients.end() - 1, come);
    QTRY_COMPARE(server.children().size(), kKept);
    come(clients.back());
    QTRY_COMPARE(clients.front().state(), QLocalSocket::UnconnectedState);
    QCOMPARE(server.children().size(), kKept);
    QCOMPARE(clients.at(1).state(), QLocalSocket::ConnectedState);
}

void TestInstanceChannel::tooLongFrameIsCutOff()
{
    Visit visit(m_path, header(kMaxMessageSize + 1));
    QTRY_COMPARE_WITH_TIMEOUT(visit.client.state(), QLocalSocket::UnconnectedState, 2000);
    QCOMPARE(visit.client.bytesAvailable(), 0);
}

void TestInstanceChannel::clientThatLeavesEarlyIsDropped()
{
    Visit visit(m_path, header(10) + "12345");
    QTRY_COMPARE(visit.server.children().size(), 1);
    QTest::qWait(20); // it is heard
    visit.client.abort();
    QTRY_COMPARE_WITH_TIMEOUT(visit.server.children().size(), 0, 2000); // before idle ones are
}

void TestInstanceChannel::idleClientsAreDropped()
{
    Visit visit(m_path, header(10) + "12345");
    QTRY_COMPARE_WITH_TIMEOUT(visit.client.state(), QLocalSocket::UnconnectedState, 10000);
    QTRY_COMPARE(visit.server.children().size(), 0);
}

void TestInstanceChannel::oneMessageAConnection()
{
    Visit visit(m_path, header(3) + "one" + header(3) + "two");
    QSignalSpy received(&visit.server, &InstanceServer::messageReceived);
    // Before idle clients are dropped.
    QTRY_COMPARE_WITH_TIMEOUT(visit.client.state(), QLocalSocket::UnconnectedState, 2000);
    QCOMPARE(visit.client.readAll(), QByteArray(1, kAcknowledge));
    QTest::qWait(50);
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("one"));
}

void TestInstanceChannel::messageInPieces()
{
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    QLocalSocket client;
    client.connectToServer(m_path);
    const QByteArray frame = header(3) + "one";
    for (const char octet : frame) {
        QVERIFY(received.isEmpty());
        client.write(&octet, 1);
        QTest::qWait(10);
    }
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("one"));
}

void TestInstanceChannel::longestMessageInPieces()
{
    Visit visit(m_path, header(kMaxMessageSize) + 'x');
    QSignalSpy received(&visit.server, &InstanceServer::messageReceived);
    QTest::qWait(20);
    visit.client.write(QByteArray(kMaxMessageSize - 1, 'x'));
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QString(kMaxMessageSize, QLatin1Char('x')));
}

// Its descriptor is not kept while a slot keeps the event loop waiting.
void TestInstanceChannel::connectionEndsBeforeTheMessageIsHeard()
{
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QLocalSocket client;
    const MessageRecorder recorder;
    bool hasEnded = false;
    connect(&server, &InstanceServer::messageReceived, this, [&] {
        QEventLoop loop; // which deletes nothing that is to be deleted later
        connect(&client, &QLocalSocket::disconnected, &loop, &QEventLoop::quit);
        QTimer::singleShot(2000, &loop, &QEventLoop::quit);
        loop.exec();
        hasEnded = client.state() == QLocalSocket::UnconnectedState && server.children().isEmpty();
    });
    client.connectToServer(m_path);
    client.write(header(3) + "one");
    QTRY_COMPARE(client.state(), QLocalSocket::UnconnectedState);
    QTRY_VERIFY(hasEnded);
    QCOMPARE(MessageRecorder::messages(), QStringList()); // of a descriptor that is none any more
}

void TestInstanceChannel::socketGoesWithItsServer()
{
    {
        InstanceServer server;
        QVERIFY(server.listen(m_path));
        QVERIFY(QFileInfo::exists(m_path));
    }
    QVERIFY(!QFileInfo::exists(m_path));
}

void TestInstanceChannel::clientThatLeavesAtOnceIsHeard()
{
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    {
        QLocalSocket client;
        client.connectToServer(m_path);
        client.write(header(3) + "one");
        QVERIFY(client.flush());
    }
    QTRY_COMPARE(received.size(), 1);
}

void TestInstanceChannel::receiverMayBlockInItsSlot()
{
    // A slot that runs an event loop of its own, as a message box does, and gets the next message
    // meanwhile.
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    QStringList received;
    bool innerSent = false;
    connect(&server, &InstanceServer::messageReceived, this, [&](const QString &message) {
        received.append(message);
        if (received.size() == 1)
            innerSent = sendWhileServing(m_path, QStringLiteral("inner"));
    });
    QVERIFY(sendWhileServing(m_path, QStringLiteral("outer")));
    QVERIFY(innerSent);
    QCOMPARE(received, QStringList({QStringLiteral("outer"), QStringLiteral("inner")}));
}

void TestInstanceChannel::anotherAnswerIsNone()
{
    QLocalServer server;
    QVERIFY(server.listen(m_path));
    connect(&server, &QLocalServer::newConnection, this,
            [&server] { server.nextPendingConnection()->write("x"); });
    QVERIFY(!sendWhileServing(m_path, QStringLiteral("message"), 500));
}

void TestInstanceChannel::whatAcceptDoes_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("patience"); // of the client
    QTest::addColumn<bool>("isHeard");
    QTest::newRow("nobody any more") << EAGAIN << 2000 << true;
    QTest::newRow("no descriptor of the system's") << ENFILE << 300 << false;
}

void TestInstanceChannel::whatAcceptDoes()
{
    QFETCH(int, error);
    QFETCH(int, patience);
    QFETCH(bool, isHeard);
    InstanceServer server;
    QVERIFY(server.listen(m_path));
    acceptError = error;
    QCOMPARE(sendWhileServing(m_path, QStringLiteral("message"), patience), isHeard);
    QCOMPARE(acceptError, 0);
}

// A client that can't be taken in stays at the door.
void TestInstanceChannel::serverIsQuietWithoutDescriptors()
{
    Visit visit(m_path, header(3) + "one");
    QSignalSpy received(&visit.server, &InstanceServer::messageReceived);
    QVERIFY(visit.client.flush());
    rlimit usual = {};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit none = {3, usual.rlim_max}; // below all that are open
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::clock_t begin = std::clock();
    QTest::qWait(1000);
    const std::clock_t used = std::clock() - begin;
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    QVERIFY(received.isEmpty());
    QVERIFY2(used < CLOCKS_PER_SEC / 4, QByteArray::number(qlonglong(used)).constData());
    QTRY_COMPARE_WITH_TIMEOUT(received.size(), 1, 20000);
}

QTEST_GUILESS_MAIN(TestInstanceChannel)
#include "tst_instance_channel.moc"
