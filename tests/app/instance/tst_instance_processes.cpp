#include "app/instance/instance_lock.h"
#include "util/file_descriptor.h"

#include <csignal>
#include <fcntl.h>
#include <memory>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char *kProbe = PX_BINARY_DIR "/tests/bin/instance_probe";
constexpr int kPatienceMs = 60000;

class Probe
{
public:
    Probe(const QProcessEnvironment &environment, const QStringList &arguments)
    {
        m_process.setProcessEnvironment(environment);
        m_process.start(QLatin1String(kProbe), arguments);
    }
    ~Probe()
    {
        constexpr int kGraceMs = 2000; // for what it may have to write yet
        m_process.terminate();
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kGraceMs))
            m_process.kill();
        m_process.waitForFinished();
    }
    Probe(const Probe &) = delete;
    Probe &operator=(const Probe &) = delete;

    // The next line of output, without its end; empty when the process ended or took too long.
    QByteArray line()
    {
        QElapsedTimer timer;
        timer.start();
        while (!m_process.canReadLine() && timer.elapsed() < kPatienceMs) {
            if (!m_process.waitForReadyRead(100) && m_process.state() == QProcess::NotRunning)
                break;
        }
        return m_process.readLine().trimmed();
    }

    void go(const QByteArray &message = "raise_window_noop")
    {
        m_process.write("\n" + message);
        m_process.closeWriteChannel();
        m_process.waitForBytesWritten();
    }

    // Everything from the start to the first line that says what it has become.
    QByteArray become(const QByteArray &message = "raise_window_noop")
    {
        if (line() != "ready")
            return "did not start";
        go(message);
        return line();
    }

    bool endsWell()
    {
        return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(kPatienceMs)
                   ? m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0
                   : false;
    }

    void signal(int number) { ::kill(static_cast<pid_t>(m_process.processId()), number); }
    void waitForEnd() { m_process.waitForFinished(kPatienceMs); }
    bool isAlive()
    {
        return !m_process.waitForFinished(0) && m_process.state() == QProcess::Running;
    }
    // The lines of the debug stream that are the guard's own; the toolkit has complaints too.
    QByteArray notices()
    {
        QByteArray notices;
        const QList<QByteArray> lines = m_process.readAllStandardError().split('\n');
        for (const QByteArray &line : lines) {
            if (line.startsWith("running without") || line.startsWith("no messages"))
                notices += line;
        }
        return notices;
    }

private:
    QProcess m_process;
};

QStringList run(const char *milliseconds = "30000")
{
    return {QStringLiteral("run"), QLatin1String(milliseconds)};
}

} // namespace

class TestInstanceProcesses : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void secondHandsOver();
    void messagesArriveUnchanged_data();
    void messagesArriveUnchanged();
    void twentyAtOnceLeaveOne();
    void killedInstanceBlocksNobody();
    void childrenDoNotHoldTheLock();
    void stoppedInstanceDelaysNobodyLong();
    void holderThatIsNotServingYet();
    void holderThatIsNotListeningYet();
    void sendingWithoutAsking();
    void runtimeDirectory_data();
    void runtimeDirectory();
    void filesAreNamedByTheIdentifier();
    void longestRuntimeDirectory();
    void temporaryFolder_data();
    void temporaryFolder();
    void lockThatCannotBeTaken_data();
    void lockThatCannotBeTaken();
    void temporaryPathTooLongForASocket();
    void missingTemporaryFolder();
    void theReasonIsTheSystems();

private:
    QString inside(const char *name) const { return m_root->filePath(QLatin1String(name)); }
    QString ownFolder() const
    {
        return inside("tmp") + QStringLiteral("/orvane-instance-%1").arg(::geteuid());
    }
    // The lock file's name is the same in every folder.
    QString lockFileIn(const QString &folder) const;

    std::unique_ptr<QTemporaryDir> m_root;
    QProcessEnvironment m_environment;
};

void TestInstanceProcesses::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
    QVERIFY(QDir(m_root->path()).mkdir(QStringLiteral("tmp")));
    QCOMPARE(::mkdir(inside("run").toLocal8Bit().constData(), 0700), 0);
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(QStringLiteral("TMPDIR"), inside("tmp"));
    m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), inside("run"));
}

void TestInstanceProcesses::cleanup()
{
    QDir::setCurrent(QDir::rootPath());
}

QString TestInstanceProcesses::lockFileIn(const QString &folder) const
{
    qputenv("XDG_RUNTIME_DIR", inside("run").toLocal8Bit());
    const InstanceLock lock(QStringLiteral("probe of the guard"));
    const QString socketName = QFileInfo(lock.socketPath()).completeBaseName();
    return folder + QLatin1Char('/') + socketName + QLatin1String(".lock");
}

void TestInstanceProcesses::secondHandsOver()
{
    Probe first(m_environment, run());
    QCOMPARE(first.become(), QByteArray("first"));
    Probe second(m_environment, run());
    QCOMPARE(second.become(), QByteArray("second sent"));
    QVERIFY(second.endsWell());
    QCOMPARE(first.line(), "message " + QByteArray("raise_window_noop").toHex());
    QVERIFY(first.isAlive());
    QVERIFY(first.notices().isEmpty());
}

void TestInstanceProcesses::messagesArriveUnchanged_data()
{
    constexpr int kMax = 64 * 1024;
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<bool>("delivered");
    QTest::newRow("empty") << QByteArray() << true;
    QTest::newRow("Chinese") << QByteArray("證書 证书") << true;
    QTest::newRow("NUL") << QByteArray("a\0b", 3) << true;
    QTest::newRow("64 KiB") << QByteArray(kMax, 'x') << true;
    QTest::newRow("one more") << QByteArray(kMax + 1, 'x') << false;
}

void TestInstanceProcesses::messagesArriveUnchanged()
{
    QFETCH(QByteArray, message);
    QFETCH(bool, delivered);
    Probe first(m_environment, run());
    QCOMPARE(first.become(), QByteArray("first"));
    Probe second(m_environment, run());
    QCOMPARE(second.become(message), QByteArray(delivered ? "second sent" : "second failed"));
    QVERIFY(second.endsWell());
    if (delivered)
        QCOMPARE(first.line(), ("message " + message.toHex()).trimmed());
    QVERIFY(first.isAlive());
}

void TestInstanceProcesses::twentyAtOnceLeaveOne()
{
    constexpr int kRounds = 20;
    constexpr size_t kProbes = 20;
    for (int round = 0; round < kRounds; ++round) {
        std::vector<std::unique_ptr<Probe>> probes;
        while (probes.size() < kProbes)
            probes.push_back(std::make_unique<Probe>(m_environment, run()));
        for (auto &probe : probes)
            QCOMPARE(probe->line(), QByteArray("ready"));
        for (auto &probe : probes)
            probe->go();
        Probe *first = nullptr;
        for (auto &probe : probes) {
            const QByteArray became = probe->line();
            if (became == "first") {
                QVERIFY2(!first, "two instances");
                first = probe.get();
                continue;
            }
            QCOMPARE(became, QByteArray("second sent"));
            QVERIFY(probe->endsWell());
        }
        if (!first)
            QFAIL("no instance");
        for (size_t i = 1; i < kProbes; ++i)
            QCOMPARE(first->line(), "message " + QByteArray("raise_window_noop").toHex());
        QVERIFY(first->isAlive());
        // It goes with the round, killed: the next round starts from what that leaves.
    }
}

void TestInstanceProcesses::killedInstanceBlocksNobody()
{
    for (int round = 0; round < 3; ++round) {
        Probe first(m_environment, run());
        QCOMPARE(first.become(), QByteArray("first"));
        first.signal(SIGKILL);
        first.waitForEnd();
    }
    // What the killed ones left must not keep messages from the next.
    secondHandsOver();
}

void TestInstanceProcesses::childrenDoNotHoldTheLock()
{
    Probe first(m_environment, run() + QStringList(QStringLiteral("child")));
    QCOMPARE(first.become(), QByteArray("first"));
    const QByteArray line = first.line();
    QVERIFY(line.startsWith("child "));
    const auto child = static_cast<pid_t>(line.mid(6).toInt());
    QVERIFY(child > 1);
    first.signal(SIGKILL);
    first.waitForEnd();
    QCOMPARE(::kill(child, 0), 0);
    Probe next(m_environment, run());
    const QByteArray became = next.become();
    ::kill(child, SIGKILL);
    QCOMPARE(became, QByteArray("first"));
}

void TestInstanceProcesses::stoppedInstanceDelaysNobodyLong()
{
    Probe first(m_environment, run());
    QCOMPARE(first.become(), QByteArray("first"));
    first.signal(SIGSTOP);
    QElapsedTimer timer;
    timer.start();
    Probe second(m_environment, run("4000"));
    QCOMPARE(second.become(), QByteArray("second failed"));
    QVERIFY(second.endsWell());
    QVERIFY2(timer.elapsed() < 5000, QByteArray::number(timer.elapsed()).constData());
    first.signal(SIGCONT);
    Probe third(m_environment, run());
    QCOMPARE(third.become(), QByteArray("second sent"));
    QVERIFY(first.isAlive());
}

void TestInstanceProcesses::holderThatIsNotServingYet()
{
    Probe first(m_environment, {QStringLiteral("late"), QStringLiteral("1500")});
    QCOMPARE(first.become(), QByteArray("first"));
    Probe second(m_environment, run());
    QCOMPARE(second.become(), QByteArray("second sent"));
    QCOMPARE(first.line(), "message " + QByteArray("raise_window_noop").toHex());
}

void TestInstanceProcesses::holderThatIsNotListeningYet()
{
    qputenv("XDG_RUNTIME_DIR", inside("run").toLocal8Bit());
    InstanceLock holder(QStringLiteral("probe of the guard"));
    QCOMPARE(holder.acquire(), InstanceLock::Result::Held);
    QElapsedTimer timer;
    timer.start();
    Probe second(m_environment, run("1000"));
    QCOMPARE(second.become(), QByteArray("second failed"));
    QVERIFY(timer.elapsed() >= 1000);
    QVERIFY(second.endsWell());
}

void TestInstanceProcesses::sendingWithoutAsking()
{
    const QStringList send = {QStringLiteral("send"), QStringLiteral("500")};
    Probe lonely(m_environment, send);
    QCOMPARE(lonely.become(), QByteArray("failed"));
    Probe first(m_environment, run());
    QCOMPARE(first.become(), QByteArray("first"));
    Probe sender(m_environment, {QStringLiteral("send"), QStringLiteral("30000")});
    QCOMPARE(sender.become("hello"), QByteArray("sent"));
    QCOMPARE(first.line(), "message " + QByteArray("hello").toHex());
}

void TestInstanceProcesses::runtimeDirectory_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("used");
    // "@" stands for the test's own directory.
    QTest::newRow("as it must be") << QStringLiteral("@/run") << true;
    QTest::newRow("with a slash at its end") << QStringLiteral("@/run/") << true;
    QTest::newRow("not set") << QString() << false;
    QTest::newRow("relative") << QStringLiteral("run") << false;
    QTest::newRow("missing") << QStringLiteral("@/missing/run") << false;
    QTest::newRow("a file") << QStringLiteral("@/file") << false;
    QTest::newRow("readable by the group") << QStringLiteral("@/group") << false;
    QTest::newRow("writable by others") << QStringLiteral("@/others") << false;
    QTest::newRow("a link") << QStringLiteral("@/link") << false;
    QTest::newRow("a link with a slash at its end") << QStringLiteral("@/link/") << false;
    QTest::newRow("someone else's")
        << (::geteuid() == 0 ? QStringLiteral("@/foreign") : QStringLiteral("/root")) << false;
    QTest::newRow("too long for a socket")
        << QStringLiteral("@/") + QString(100, QLatin1Char('x')) << false;
}

void TestInstanceProcesses::runtimeDirectory()
{
    QFETCH(QString, value);
    QFETCH(bool, used);
    const QByteArray root = m_root->path().toLocal8Bit();
    QFile file(inside("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(::mkdir(root + "/group", 0700), 0);
    QCOMPARE(::chmod(root + "/group", 0740), 0);
    QCOMPARE(::mkdir(root + "/others", 0700), 0);
    QCOMPARE(::chmod(root + "/others", 0702), 0);
    QCOMPARE(::symlink(root + "/run", root + "/link"), 0);
    QCOMPARE(::mkdir(root + "/" + QByteArray(100, 'x'), 0700), 0);
    QCOMPARE(::mkdir(root + "/foreign", 0700), 0);
    if (::geteuid() == 0)
        QCOMPARE(::chown(root + "/foreign", 65534, 65534), 0);

    if (value.isNull())
        m_environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    else
        m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"),
                             QString(value).replace(QLatin1Char('@'), m_root->path()));
    QDir::setCurrent(m_root->path()); // where "run" would be found
    Probe first(m_environment, run());
    QCOMPARE(first.become(), QByteArray("first"));
    QCOMPARE(QFile::exists(lockFileIn(inside("run"))), used);
    QCOMPARE(QFile::exists(lockFileIn(ownFolder())), !used);
    Probe second(m_environment, run());
    QCOMPARE(second.become(), QByteArray("second sent"));
    QVERIFY(second.endsWell());
    QVERIFY(first.notices().isEmpty());
}

// By which another version of the program finds them, too.
void TestInstanceProcesses::filesAreNamedByTheIdentifier()
{
    const InstanceLock lock(QStringLiteral("id"));
    QCOMPARE(QFileInfo(lock.socketPath()).fileName(),
             QStringLiteral("instance-a56145270ce6b3be.socket")); // of its SHA-256
}

// A socket's address holds 107 octets and the end of the text.
void TestInstanceProcesses::longestRuntimeDirectory()
{
    const QString name = QFileInfo(lockFileIn(inside("run"))).completeBaseName();
    for (const int length : {107, 108}) {
        const auto missing = length - m_root->path().size() - name.size() - 2 - 7;
        const QString folder =
            m_root->path() + QLatin1Char('/') + QString(missing, QLatin1Char('x'));
        QCOMPARE(::mkdir(folder.toLocal8Bit().constData(), 0700), 0);
        qputenv("XDG_RUNTIME_DIR", folder.toLocal8Bit());
        const InstanceLock lock(QStringLiteral("probe of the guard"));
        QCOMPARE(lock.socketPath().size() == length && lock.socketPath().startsWith(folder),
                 length == 107);
    }
}

void TestInstanceProcesses::temporaryFolder_data()
{
    QTest::addColumn<QString>("planted");
    QTest::addColumn<bool>("guarded");
    QTest::newRow("made by the first") << QString() << true;
    QTest::newRow("there already") << QStringLiteral("own") << true;
    QTest::newRow("open to the group") << QStringLiteral("group") << false;
    QTest::newRow("a link to a private folder") << QStringLiteral("link") << false;
    QTest::newRow("a link to nowhere") << QStringLiteral("dangling") << false;
    QTest::newRow("a file") << QStringLiteral("file") << false;
    QTest::newRow("someone else's") << QStringLiteral("foreign") << false;
}

void TestInstanceProcesses::temporaryFolder()
{
    QFETCH(QString, planted);
    QFETCH(bool, guarded);
    const QByteArray path = ownFolder().toLocal8Bit();
    const QByteArray root = m_root->path().toLocal8Bit();
    if (planted == QLatin1String("own")) {
        QCOMPARE(::mkdir(path, 0700), 0);
    } else if (planted == QLatin1String("group")) {
        QCOMPARE(::mkdir(path, 0700), 0);
        QCOMPARE(::chmod(path, 0750), 0);
    } else if (planted == QLatin1String("link")) {
        QCOMPARE(::symlink(root + "/run", path), 0);
    } else if (planted == QLatin1String("dangling")) {
        QCOMPARE(::symlink(root + "/nowhere", path), 0);
    } else if (planted == QLatin1String("file")) {
        QFile file(ownFolder());
        QVERIFY(file.open(QIODevice::WriteOnly));
    } else if (planted == QLatin1String("foreign")) {
        if (::geteuid() == 0) {
            QCOMPARE(::mkdir(path, 0700), 0);
            QCOMPARE(::chown(path, 65534, 65534), 0);
        } else {
            QCOMPARE(::symlink("/root", path), 0);
        }
    }
    m_environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    Probe first(m_environment, run());
    QCOMPARE(first.become(), QByteArray("first"));
    Probe second(m_environment, run());
    QCOMPARE(second.become(), QByteArray(guarded ? "second sent" : "first"));
    const QByteArray notice = "running without the single-instance guard: " + path + ": ";
    const QByteArray notices = first.notices();
    QCOMPARE(notices.startsWith(notice), !guarded);
    if (planted == QLatin1String("group"))
        QVERIFY2(notices.endsWith("Operation not permitted"), notices.constData());
    QVERIFY(!QFile::exists(inside("nowhere")));
    if (planted.isNull()) {
        struct stat status = {};
        QCOMPARE(::lstat(path, &status), 0);
        QCOMPARE(status.st_mode & 07777U, 0700U);
    }
}

void TestInstanceProcesses::lockThatCannotBeTaken_data()
{
    QTest::addColumn<QString>("planted");
    QTest::newRow("a link") << QStringLiteral("link");
    QTest::newRow("a link to nowhere") << QStringLiteral("dangling");
    QTest::newRow("a directory") << QStringLiteral("directory");
    QTest::newRow("under a lease") << QStringLiteral("lease");
}

void TestInstanceProcesses::lockThatCannotBeTaken()
{
    QFETCH(QString, planted);
    const QByteArray root = m_root->path().toLocal8Bit();
    const QByteArray path = lockFileIn(inside("run")).toLocal8Bit();
    FileDescriptor leased;
    if (planted == QLatin1String("link")) {
        QFile target(inside("target"));
        QVERIFY(target.open(QIODevice::WriteOnly));
        QCOMPARE(::symlink(root + "/target", path), 0);
    } else if (planted == QLatin1String("dangling")) {
        QCOMPARE(::symlink(root + "/nowhere", path), 0);
    } else if (planted == QLatin1String("lease")) { // whose holder is told and does nothing
        std::signal(SIGIO, SIG_IGN);
        leased = FileDescriptor(::open(path, O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
        QCOMPARE(::fcntl(leased, F_SETLEASE, F_WRLCK), 0);
    } else {
        QCOMPARE(::mkdir(path, 0700), 0);
    }
    Probe first(m_environment, run());
    QCOMPARE(first.become(), QByteArray("first"));
    Probe second(m_environment, run());
    QCOMPARE(second.become(), QByteArray("first"));
    QVERIFY(
        first.notices().startsWith("running without the single-instance guard: " + path + ": "));
    QVERIFY(!QFile::exists(inside("nowhere")));
}

void TestInstanceProcesses::temporaryPathTooLongForASocket()
{
    // The lock holds all the same; messages alone can't be had.
    const QString deep = inside("tmp") + QLatin1Char('/') + QString(100, QLatin1Char('x'));
    QVERIFY(QDir().mkpath(deep));
    m_environment.insert(QStringLiteral("TMPDIR"), deep);
    m_environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    Probe first(m_environment, run());
    QCOMPARE(first.become(), QByteArray("first"));
    Probe second(m_environment, run("300"));
    QCOMPARE(second.become(), QByteArray("second failed"));
    QVERIFY(second.endsWell());
    QVERIFY(first.notices().startsWith("no messages from later instances: "));
}

void TestInstanceProcesses::missingTemporaryFolder()
{
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", inside("missing").toLocal8Bit());
    qunsetenv("XDG_RUNTIME_DIR");
    QDir::setCurrent(inside("run"));
    const InstanceLock lock(QStringLiteral("probe of the guard"));
    qputenv("TMPDIR", before);
    QVERIFY2(
        lock.socketPath().startsWith(QStringLiteral("/tmp/orvane-instance-%1/").arg(::geteuid())),
        qPrintable(lock.socketPath()));
    QVERIFY(QDir(inside("run")).isEmpty());
}

// For a user like any other; to the administrator alone, what was never asked belongs as well.
void TestInstanceProcesses::theReasonIsTheSystems()
{
    constexpr uid_t kNobody = 65534;
    const uid_t before = ::geteuid();
    const QByteArray oldFolder = qgetenv("TMPDIR");
    for (const QString &folder : {m_root->path(), inside("tmp")})
        QCOMPARE(::chmod(folder.toLocal8Bit().constData(), 0755), 0);
    const uid_t user = before == 0 ? kNobody : before;
    QFile file(inside("tmp") + QStringLiteral("/orvane-instance-%1").arg(user));
    QVERIFY(file.open(QIODevice::WriteOnly));
    qputenv("TMPDIR", inside("tmp").toLocal8Bit());
    qunsetenv("XDG_RUNTIME_DIR");
    QCOMPARE(::seteuid(user), 0);
    InstanceLock lock(QStringLiteral("probe of the guard"));
    const InstanceLock::Result result = lock.acquire();
    QCOMPARE(::seteuid(before), 0);
    qputenv("TMPDIR", oldFolder);
    QCOMPARE(result, InstanceLock::Result::Unavailable);
    QVERIFY(lock.errorText().startsWith(file.fileName() + QStringLiteral(": ")));
    QVERIFY(!lock.errorText().endsWith(QLatin1String("Operation not permitted")));
}

QTEST_GUILESS_MAIN(TestInstanceProcesses)
#include "tst_instance_processes.moc"
