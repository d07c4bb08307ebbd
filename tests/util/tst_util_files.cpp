#include "tests/support/open_descriptors.h"
#include "tests/support/ordinary_user.h"
#include "util/c_util.h"
#include "util/file_reader.h"

#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr qint64 k64MiB = 64LL * 1024 * 1024;
constexpr int kShortPatienceMs = 500;

// How long the library wanted to wait for data, and whether the time is to pass at once.
struct Waits
{
    bool isForged = false;
    std::vector<int> asked;
};

Waits waits;

QByteArray allOctets(int count)
{
    QByteArray octets;
    for (int i = 0; i < count; ++i)
        octets.append(static_cast<char>(i * 7 + i / 256));
    return octets;
}

void writeAll(int fd, const QByteArray &octets)
{
    for (ssize_t done = 0; done < octets.size();) {
        const ssize_t written =
            ::write(fd, octets.constData() + done, static_cast<size_t>(octets.size() - done));
        if (written <= 0)
            return;
        done += written;
    }
}

// A pipe as the shell hands one to a program: a path to an end that is open already.
class Pipe
{
public:
    Pipe()
    {
        if (::pipe2(m_ends.data(), O_CLOEXEC) != 0)
            qFatal("no pipe");
    }
    ~Pipe()
    {
        ::close(m_ends[0]);
        closeWriter();
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    QByteArray path() const { return "/dev/fd/" + QByteArray::number(m_ends[0]); }
    int reader() const { return m_ends[0]; }
    int writer() const { return m_ends[1]; }
    void closeWriter()
    {
        if (m_ends[1] >= 0)
            ::close(m_ends[1]);
        m_ends[1] = -1;
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
};

// Signals that interrupt what waits, fifty times a second.
class Interruptions
{
public:
    Interruptions()
    {
        struct sigaction ignore = {};
        ignore.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &ignore, &m_before);
        constexpr timeval kInterval = {0, 20000};
        const itimerval timer = {kInterval, kInterval};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }
    ~Interruptions()
    {
        const itimerval none = {};
        ::setitimer(ITIMER_REAL, &none, nullptr);
        ::sigaction(SIGALRM, &m_before, nullptr);
    }
    Interruptions(const Interruptions &) = delete;
    Interruptions &operator=(const Interruptions &) = delete;

private:
    struct sigaction m_before = {};
};

} // namespace

// The linker hands the library's calls to this.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names.
extern "C" {
int __real_poll(pollfd *descriptors, nfds_t count, int timeout);
int __wrap_poll(pollfd *descriptors, nfds_t count, int timeout)
{
    waits.asked.push_back(timeout);
    return __real_poll(descriptors, count, waits.isForged ? 0 : timeout);
}
}
// NOLINTEND(bugprone-reserved-identifier)

class TestUtilFiles : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void fileExists_data();
    void fileExists();

    void readIntoBuffer_data();
    void readIntoBuffer();
    void readIntoBufferOfMissingFile();
    void readIntoBufferOfWhatCannotBeRead_data();
    void readIntoBufferOfWhatCannotBeRead();
    void readIntoBufferOfUnreadableFile();
    void readIntoBufferOfPipe();

    void readWhole_data();
    void readWhole();
    void refusesToRead_data();
    void refusesToRead();
    void refusesUnreadableFile();
    void readsProcFiles();
    void sizeLimit();
    void hugeFileIsRefusedAtOnce();
    void readsPipeToItsEnd();
    void readsPipeWhoseWriterIsDone();
    void refusesPipeWithoutContent();
    void waitsAMinuteOfSilence();
    void refusesSilentPipe();
    void readsSlowPipe();
    void pipeThatIsNotWaitedFor();
    void refusesTooLongPipe();
    void fileThatShrinks();
    void waitsForALeaseOnAFile();

    void writefile_data();
    void writefile();
    void writefileAppends();
    void writefileFails_data();
    void writefileFails();
    void writefileToReadOnlyFile();

    void base64cert_data();
    void base64cert();
    void base64certOfACertificate();

private:
    QByteArray path(const char *name) const
    {
        return QFile::encodeName(m_directory->filePath(QLatin1String(name)));
    }
    QByteArray make(const char *name, const QByteArray &content) const
    {
        QFile file(m_directory->filePath(QLatin1String(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write");
        return path(name);
    }
    // A path to each kind of file there is, by its name.
    QByteArray makeKind(const QByteArray &kind);
    void kinds(std::initializer_list<const char *> kinds) const
    {
        QTest::addColumn<QByteArray>("kind");
        for (const char *kind : kinds)
            QTest::newRow(kind) << QByteArray(kind);
    }

    QScopedPointer<QTemporaryDir> m_directory;
    c_util m_util;
    int m_socket = -1;
};

void TestUtilFiles::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    QCOMPARE(::chmod(QFile::encodeName(m_directory->path()).constData(), 0755), 0);
    if (m_socket >= 0)
        ::close(m_socket);
    m_socket = -1;
}

QByteArray TestUtilFiles::makeKind(const QByteArray &kind)
{
    QByteArray made = path("made");
    const auto linkTo = [&](const char *target) {
        if (::symlink(target, made.constData()) != 0)
            qFatal("no link to %s", target);
    };
    if (kind == "file")
        return make("made", "content");
    if (kind == "directory")
        ::mkdir(made.constData(), 0755);
    else if (kind == "pipe")
        ::mkfifo(made.constData(), 0644);
    else if (kind == "link to a file")
        linkTo(make("target", "content").constData());
    else if (kind == "link to a directory")
        linkTo("/");
    else if (kind == "link to a device")
        linkTo("/dev/zero");
    else if (kind == "link to nowhere")
        linkTo(path("nowhere").constData());
    else if (kind == "link to itself")
        linkTo(made.constData());
    else if (kind == "null device")
        return "/dev/null";
    else if (kind == "endless device")
        return "/dev/zero";
    else if (kind == "terminal")
        return "/dev/ptmx";
    else if (kind == "empty name")
        return "";
    else if (kind == "below a file")
        return make("made", "content") + "/file";
    else if (kind == "overlong name")
        return path("made") + QByteArray(5000, 'x');
    else if (kind == "socket") {
        m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, made.constData(), sizeof(address.sun_path));
        if (::bind(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof(address)) != 0 ||
            ::listen(m_socket, 1) != 0)
            qFatal("no socket");
    }
    return made;
}

void TestUtilFiles::fileExists_data()
{
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<bool>("exists");
    for (const char *kind : {"file", "directory", "pipe", "socket", "null device", "terminal",
                             "link to a file", "link to a directory", "link to a device"})
        QTest::newRow(kind) << QByteArray(kind) << true;
    for (const char *kind : {"missing", "link to nowhere", "link to itself", "empty name",
                             "below a file", "overlong name"})
        QTest::newRow(kind) << QByteArray(kind) << false;
}

void TestUtilFiles::fileExists()
{
    QFETCH(QByteArray, kind);
    QFETCH(bool, exists);
    QCOMPARE(m_util.FileExists(makeKind(kind).constData()), exists);
}

void TestUtilFiles::readIntoBuffer_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 2, 255, 10239, 10240, 65535, 65536, 65537, 200000})
        QTest::newRow(QByteArray::number(size).constData()) << size;
}

void TestUtilFiles::readIntoBuffer()
{
    QFETCH(int, size);
    const QByteArray content = allOctets(size);
    constexpr char kUntouched = 0x55;
    QByteArray buffer(size + 1, kUntouched);
    int count = -1;
    QVERIFY(m_util.readfile(make("file", content).constData(), buffer.data(), count));
    QCOMPARE(count, size + 1);
    QCOMPARE(buffer, content + kUntouched);
}

void TestUtilFiles::readIntoBufferOfMissingFile()
{
    char octet = 'x';
    int count = 99;
    QVERIFY(!m_util.readfile(path("missing").constData(), &octet, count));
    QCOMPARE(count, 0);
    QCOMPARE(octet, 'x');
}

void TestUtilFiles::readIntoBufferOfWhatCannotBeRead_data()
{
    kinds({"directory", "socket", "pipe", "endless device", "null device", "link to a device"});
}

void TestUtilFiles::readIntoBufferOfWhatCannotBeRead()
{
    QFETCH(QByteArray, kind);
    char octet = 'x';
    int count = 99;
    QVERIFY(m_util.readfile(makeKind(kind).constData(), &octet, count));
    QCOMPARE(count, 1);
    QCOMPARE(octet, 'x');
}

void TestUtilFiles::readIntoBufferOfUnreadableFile()
{
    const QByteArray file = make("file", "content");
    QCOMPARE(::chmod(file.constData(), 0), 0);
    QVERIFY(asOrdinaryUser([&] {
        char octet = 'x';
        int count = 99;
        return m_util.readfile(file.constData(), &octet, count) && count == 1 && octet == 'x';
    }));
}

void TestUtilFiles::readIntoBufferOfPipe()
{
    Pipe pipe;
    writeAll(pipe.writer(), "content");
    pipe.closeWriter();
    QByteArray buffer(8, 'x');
    int count = 0;
    QVERIFY(m_util.readfile(pipe.path().constData(), buffer.data(), count));
    QCOMPARE(count, 8);
    QCOMPARE(buffer, QByteArray("contentx"));
}

void TestUtilFiles::readWhole_data()
{
    readIntoBuffer_data();
    QTest::newRow("a million") << 1000000;
}

void TestUtilFiles::readWhole()
{
    QFETCH(int, size);
    const QByteArray expected = allOctets(size);
    QByteArray content = "left over";
    const int before = openDescriptors();
    QVERIFY(m_util.readfile(make("file", expected).constData(), content));
    QCOMPARE(content, expected);
    QVERIFY(m_util.readfile(makeKind("link to a file").constData(), content));
    QCOMPARE(content, QByteArray("content"));
    QCOMPARE(openDescriptors(), before);
}

void TestUtilFiles::refusesToRead_data()
{
    kinds({"missing", "directory", "link to a directory", "socket", "pipe", "endless device",
           "null device", "terminal", "link to a device", "link to nowhere", "link to itself",
           "empty name", "below a file", "overlong name"});
}

void TestUtilFiles::refusesToRead()
{
    QFETCH(QByteArray, kind);
    const QByteArray made = makeKind(kind);
    const int before = openDescriptors();
    QElapsedTimer timer;
    timer.start();
    QByteArray content = "left over";
    QVERIFY(!m_util.readfile(made.constData(), content));
    QVERIFY(content.isEmpty());
    QCOMPARE(openDescriptors(), before);
    QVERIFY(timer.elapsed() < 2000);
}

void TestUtilFiles::refusesUnreadableFile()
{
    const QByteArray file = make("file", "content");
    QCOMPARE(::chmod(file.constData(), 0), 0);
    QVERIFY(asOrdinaryUser([&] {
        QByteArray content = "left over";
        return !m_util.readfile(file.constData(), content) && content.isEmpty();
    }));
}

void TestUtilFiles::readsProcFiles()
{
    // They are regular files that say they have no octets.
    QByteArray content;
    QVERIFY(m_util.readfile("/proc/self/status", content));
    QVERIFY(content.startsWith("Name:"));
}

void TestUtilFiles::sizeLimit()
{
    QCOMPARE(file_reader::kMaxFileSize, k64MiB);
    const QByteArray file = make("file", QByteArray());
    QByteArray content;
    QCOMPARE(::truncate(file.constData(), k64MiB), 0);
    QVERIFY(m_util.readfile(file.constData(), content));
    QCOMPARE(content.size(), static_cast<int>(k64MiB));
    QCOMPARE(::truncate(file.constData(), k64MiB + 1), 0);
    QVERIFY(!m_util.readfile(file.constData(), content));
    QVERIFY(content.isEmpty());
}

void TestUtilFiles::hugeFileIsRefusedAtOnce()
{
    const QByteArray file = make("file", QByteArray());
    for (const qint64 size : {100LL * 1000 * 1000, 1LL << 40}) {
        QCOMPARE(::truncate(file.constData(), size), 0);
        QElapsedTimer timer;
        timer.start();
        QByteArray content;
        QVERIFY(!m_util.readfile(file.constData(), content));
        QVERIFY(timer.elapsed() < 1000);
    }
}

void TestUtilFiles::readsPipeToItsEnd()
{
    Pipe pipe;
    const QByteArray expected = allOctets(300000); // more than a pipe holds
    std::thread writer([&] {
        for (int i = 0; i < expected.size(); i += 100000) {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            writeAll(pipe.writer(), expected.mid(i, 100000));
        }
        pipe.closeWriter();
    });
    QByteArray content;
    bool read = false;
    {
        const Interruptions interruptions;
        read = m_util.readfile(pipe.path().constData(), content);
    }
    writer.join();
    QVERIFY(read);
    QCOMPARE(content, expected);
}

void TestUtilFiles::readsPipeWhoseWriterIsDone()
{
    Pipe pipe;
    writeAll(pipe.writer(), "content");
    pipe.closeWriter();
    QByteArray content;
    QVERIFY(m_util.readfile(pipe.path().constData(), content));
    QCOMPARE(content, QByteArray("content"));
}

void TestUtilFiles::refusesPipeWithoutContent()
{
    Pipe pipe;
    pipe.closeWriter();
    QByteArray content;
    QVERIFY(!m_util.readfile(pipe.path().constData(), content));
}

void TestUtilFiles::waitsAMinuteOfSilence()
{
    Pipe pipe;
    writeAll(pipe.writer(), "not yet all");
    const auto refuses = [&](const auto &read) {
        waits = {true, {}};
        read();
        waits.isForged = false;
        return waits.asked == std::vector<int>{60000};
    };
    QByteArray content;
    QVERIFY(refuses([&] { QVERIFY(!m_util.readfile(pipe.path().constData(), content)); }));
    QVERIFY(content.isEmpty());
    int count = 0;
    char octet = 'x';
    QVERIFY(refuses([&] { QVERIFY(m_util.readfile(pipe.path().constData(), &octet, count)); }));
}

void TestUtilFiles::refusesSilentPipe()
{
    Pipe pipe;
    QByteArray content;
    QElapsedTimer timer;
    timer.start();
    const Interruptions interruptions; // they make no new beginning
    QVERIFY(!file_reader::readWhole(pipe.path().constData(), content, kShortPatienceMs));
    QVERIFY2(timer.elapsed() >= kShortPatienceMs, QByteArray::number(timer.elapsed()).constData());
}

// What counts is how long the writer is silent, not how long it takes in all.
void TestUtilFiles::readsSlowPipe()
{
    Pipe pipe;
    std::thread writer([&] {
        for (int i = 0; i < 10; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(kShortPatienceMs / 5));
            writeAll(pipe.writer(), "x");
        }
        pipe.closeWriter();
    });
    QByteArray content;
    const bool read = file_reader::readWhole(pipe.path().constData(), content, kShortPatienceMs);
    writer.join();
    QVERIFY(read);
    QCOMPARE(content, QByteArray(10, 'x'));
}

void TestUtilFiles::pipeThatIsNotWaitedFor()
{
    const auto read = [](const Pipe &pipe, QByteArray &content) {
        waits = {};
        return file_reader::readWhole(pipe.path().constData(), content, file_reader::kNoPatience) &&
               waits.asked.empty();
    };
    Pipe done;
    writeAll(done.writer(), "content");
    done.closeWriter();
    QByteArray content;
    QVERIFY(read(done, content));
    QCOMPARE(content, QByteArray("content"));

    const Pipe silent;
    QVERIFY(!read(silent, content));
    QCOMPARE(waits.asked, std::vector<int>{0});
}

void TestUtilFiles::refusesTooLongPipe()
{
    Pipe pipe;
    std::thread writer([&] {
        const QByteArray megabyte(1 << 20, 'x');
        for (int i = 0; i < 65; ++i)
            writeAll(pipe.writer(), megabyte);
        pipe.closeWriter();
    });
    QByteArray content;
    const bool read = m_util.readfile(pipe.path().constData(), content);
    // What is left must go, or the writer waits for ever.
    QByteArray rest;
    while (m_util.readfile(pipe.path().constData(), rest)) {
    }
    writer.join();
    QVERIFY(!read);
    QVERIFY(content.isEmpty());
}

void TestUtilFiles::fileThatShrinks()
{
    constexpr off_t kSize = 8 << 20;
    const QByteArray file = make("file", QByteArray());
    std::atomic<bool> done{false};
    bool sizesSet = true;
    std::thread shrinker([&] {
        while (!done) {
            for (const off_t size : {kSize, off_t(3)})
                sizesSet = ::truncate(file.constData(), size) == 0 && sizesSet;
        }
    });
    int reads = 0;
    bool sizesFit = true;
    for (; reads < 50; ++reads) {
        QByteArray content;
        if (!m_util.readfile(file.constData(), content))
            break;
        sizesFit = sizesFit && content.size() <= kSize;
    }
    done = true;
    shrinker.join();
    QCOMPARE(reads, 50);
    QVERIFY(sizesFit);
    QVERIFY(sizesSet);
}

// Another process holds the file to itself and gives it up a while after it is asked to.
void TestUtilFiles::waitsForALeaseOnAFile()
{
    constexpr int kHeldMs = 300;
    const QByteArray file = make("file", "content");
    Pipe held;
    const pid_t holder = ::fork();
    if (holder == 0) {
        sigset_t asked;
        ::sigemptyset(&asked);
        ::sigaddset(&asked, SIGIO);
        ::sigprocmask(SIG_BLOCK, &asked, nullptr);
        const int fd = ::open(file.constData(), O_RDWR | O_CLOEXEC);
        const bool isHeld = ::fcntl(fd, F_SETLEASE, F_WRLCK) == 0;
        writeAll(held.writer(), isHeld ? "y" : "n");
        if (isHeld && ::sigwaitinfo(&asked, nullptr) == SIGIO) {
            ::usleep(kHeldMs * 1000);
            ::fcntl(fd, F_SETLEASE, F_UNLCK);
        }
        ::_exit(0);
    }
    QFile answer;
    QVERIFY(answer.open(held.reader(), QIODevice::ReadOnly | QIODevice::Unbuffered));
    const QByteArray isHeld = answer.read(1);
    QElapsedTimer timer;
    timer.start();
    QByteArray content;
    const bool read = m_util.readfile(file.constData(), content);
    const qint64 elapsed = timer.elapsed();
    ::kill(holder, SIGKILL);
    QCOMPARE(::waitpid(holder, nullptr, 0), holder);
    if (isHeld != "y")
        QSKIP("this file system gives no leases");
    QVERIFY(read);
    QCOMPARE(content, QByteArray("content"));
    QVERIFY2(elapsed >= kHeldMs - 10, QByteArray::number(elapsed).constData());
}

void TestUtilFiles::writefile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("plain") << QByteArray("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("UTF-8") << QByteArray("證書");
    QTest::newRow("with NUL") << QByteArray("a\0b", 3);
    QTest::newRow("with a line feed") << QByteArray("a\nb\n");
    QTest::newRow("long") << QByteArray(100000, 'x');
}

void TestUtilFiles::writefile()
{
    QFETCH(QByteArray, text);
    const QByteArray file = path("file");
    QVERIFY(m_util.writefile(file.constData(), text.toStdString()));
    QByteArray content;
    QVERIFY(m_util.readfile(file.constData(), content));
    QCOMPARE(content, text + '\n');
}

void TestUtilFiles::writefileAppends()
{
    const QByteArray file = make("file", "before");
    QVERIFY(m_util.writefile(file.constData(), "one"));
    QVERIFY(m_util.writefile(file.constData(), "two"));
    QByteArray content;
    QVERIFY(m_util.readfile(file.constData(), content));
    QCOMPARE(content, QByteArray("beforeone\ntwo\n"));
}

void TestUtilFiles::writefileFails_data()
{
    kinds({"directory", "socket", "below a file", "empty name", "link to itself"});
}

void TestUtilFiles::writefileFails()
{
    QFETCH(QByteArray, kind);
    QVERIFY(!m_util.writefile(makeKind(kind).constData(), "text"));
}

void TestUtilFiles::writefileToReadOnlyFile()
{
    const QByteArray file = make("file", "content");
    QCOMPARE(::chmod(file.constData(), 0444), 0);
    QVERIFY(asOrdinaryUser([&] { return !m_util.writefile(file.constData(), "text"); }));
    QByteArray content;
    QVERIFY(m_util.readfile(file.constData(), content));
    QCOMPARE(content, QByteArray("content"));
}

void TestUtilFiles::base64cert_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray head(28, '-');
    const QByteArray tail(31, '=');
    const auto row = [&](const char *name, const QByteArray &body, const QByteArray &expected) {
        QTest::newRow(name) << head + body + tail << 59 + static_cast<int>(body.size()) << expected;
    };
    row("59 characters", "", "");
    row("60 characters", "A", "A");
    row("text", "QUJDREVG", "QUJDREVG");
    row("line feeds", "QUJD\nREVG\n", "QUJDREVG");
    row("carriage returns", "\r\nQUJD\r\nREVG\r", "QUJDREVG");
    row("other white space stays", "QU JD\tRE", "QU JD\tRE");
    row("ends at NUL", QByteArray("QUJD\0REVG", 9), "QUJD");
    row("NUL alone", QByteArray("\0QUJD", 5), "");
    row("no base64 is looked for", "\x80\xFF-!", "\x80\xFF-!");
    const QByteArray text = head + "QUJD" + tail;
    QTest::newRow("58 characters") << text << 58 << QByteArray();
    QTest::newRow("length 0") << text << 0 << QByteArray();
    QTest::newRow("negative length") << text << -1 << QByteArray();
    QTest::newRow("shorter length than the text has") << text << 61 << QByteArray("QU");
}

void TestUtilFiles::base64cert()
{
    QFETCH(QByteArray, text);
    QFETCH(int, length);
    QFETCH(QByteArray, expected);
    QByteArray output(100, '#');
    int count = 99;
    QVERIFY(m_util.base64cert_to_dercert(text.constData(), length, output.data(), count));
    QCOMPARE(count, static_cast<int>(expected.size()));
    QCOMPARE(output.left(count), expected);
    QCOMPARE(output.mid(count), QByteArray(100 - count, '#')); // it is not terminated
}

void TestUtilFiles::base64certOfACertificate()
{
    // The armour that the offsets are made for has five characters of line ends after it.
    const QByteArray content = allOctets(200).toBase64();
    QByteArray text = "-----BEGIN CERTIFICATE-----\n";
    for (int i = 0; i < content.size(); i += 64)
        text += content.mid(i, 64) + '\n';
    text.chop(1);
    text += "\n-----END CERTIFICATE-----\r\n\r\n\n";
    QByteArray output(text.size(), '\0');
    int count = 0;
    QVERIFY(m_util.base64cert_to_dercert(text.constData(), int(text.size()), output.data(), count));
    QCOMPARE(output.left(count), content);
}

QTEST_GUILESS_MAIN(TestUtilFiles)
#include "tst_util_files.moc"
