#include "core/q_dispatch.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/ordinary_user.h"

#include <fcntl.h>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QTime>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr uid_t kNobody = 65534;

} // namespace

class TestCoreLog : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void lineHasTimeAndMessage_data();
    void lineHasTimeAndMessage();
    void linesAreAppended();
    void directoryIsNeverMade();
    void linkIsNotFollowed_data();
    void linkIsNotFollowed();
    void pipeIsNeitherWaitedForNorWritten();
    void otherKindsAreLeftAlone_data();
    void otherKindsAreLeftAlone();
    void fileThatCannotBeWritten();
    void secondNameIsLeftAlone();
    void directoryOfAnotherUser();
    void linkToTheDirectory_data();
    void linkToTheDirectory();
    void newFileObeysTheMask();
    void linesOfManyProcessesStayWhole();
    void leavesNothingOpen_data();
    void leavesNothingOpen();

private:
    QString logFile() const { return m_directory->filePath(QStringLiteral("tessera_core.log")); }
    QByteArray logPath() const { return QFile::encodeName(logFile()); }
    QByteArray content() const
    {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no log)");
    }

    QScopedPointer<QTemporaryDir> m_directory;
    Q_Dispatch m_agent;
};

void TestCoreLog::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    m_agent.setLogDirectory(QDir(m_directory->path()));
}

void TestCoreLog::lineHasTimeAndMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("plain") << QStringLiteral("[open:40] start");
    QTest::newRow("empty") << QString();
    QTest::newRow("Chinese") << QString::fromUtf8("参数错误");
    QTest::newRow("with format directives") << QStringLiteral("100 %s %n %%");
}

void TestCoreLog::lineHasTimeAndMessage()
{
    QFETCH(QString, message);
    const QTime before = QTime::currentTime();
    m_agent.Corelog(message);
    const QByteArray line = content();
    constexpr int kTimeSize = 8;
    const QTime time =
        QTime::fromString(QString::fromLatin1(line.left(kTimeSize)), QStringLiteral("HH:mm:ss"));
    QVERIFY(time.isValid());
    QVERIFY(qAbs(time.secsTo(before)) <= 10 || qAbs(time.secsTo(before)) >= 86390);
    QCOMPARE(line.mid(kTimeSize), ": " + message.toUtf8() + '\n');
}

void TestCoreLog::linesAreAppended()
{
    QFile file(logFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("there before\n"), 13);
    file.close();
    m_agent.Corelog(QStringLiteral("one"));
    m_agent.Corelog(QStringLiteral("two"));
    const QList<QByteArray> lines = content().split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(0), QByteArray("there before"));
    QVERIFY(lines.at(1).endsWith(": one"));
    QVERIFY(lines.at(2).endsWith(": two"));
    QVERIFY(lines.at(3).isEmpty());
}

void TestCoreLog::directoryIsNeverMade()
{
    const QString missing = m_directory->filePath(QStringLiteral("orvane"));
    m_agent.setLogDirectory(QDir(missing));
    m_agent.Corelog(QStringLiteral("text"));
    QVERIFY(!QFileInfo::exists(missing));
    // It is looked for anew each time.
    QVERIFY(QDir().mkdir(missing));
    m_agent.Corelog(QStringLiteral("text"));
    QVERIFY(QFileInfo::exists(missing + QLatin1String("/tessera_core.log")));
}

void TestCoreLog::linkIsNotFollowed_data()
{
    QTest::addColumn<bool>("targetExists");
    QTest::newRow("to a file") << true;
    QTest::newRow("to nowhere") << false;
}

void TestCoreLog::linkIsNotFollowed()
{
    QFETCH(bool, targetExists);
    const QString target = m_directory->filePath(QStringLiteral("target"));
    if (targetExists) {
        QFile file(target);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QCOMPARE(::symlink(QFile::encodeName(target).constData(), logPath().constData()), 0);
    m_agent.Corelog(QStringLiteral("text"));
    QCOMPARE(QFileInfo::exists(target), targetExists);
    QCOMPARE(QFileInfo(target).size(), 0);
    QVERIFY(QFileInfo(logFile()).isSymLink());
}

void TestCoreLog::pipeIsNeitherWaitedForNorWritten()
{
    QCOMPARE(::mkfifo(logPath().constData(), 0666), 0);
    QElapsedTimer timer;
    timer.start();
    m_agent.Corelog(QStringLiteral("nobody reads"));
    QVERIFY(timer.elapsed() < 2000);

    const int reader = ::open(logPath().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(reader >= 0);
    m_agent.Corelog(QStringLiteral("somebody reads"));
    char octet = 0;
    const ssize_t got = ::read(reader, &octet, 1);
    ::close(reader);
    QCOMPARE(got, 0);
}

void TestCoreLog::otherKindsAreLeftAlone_data()
{
    QTest::addColumn<bool>("socket");
    QTest::newRow("a directory") << false;
    QTest::newRow("a socket") << true;
}

void TestCoreLog::otherKindsAreLeftAlone()
{
    QFETCH(bool, socket);
    int listener = -1;
    if (socket) {
        listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (listener < 0)
            QFAIL("no socket");
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, logPath().constData(), sizeof(address.sun_path));
        QCOMPARE(::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
        QCOMPARE(::listen(listener, 1), 0);
    } else {
        QVERIFY(QDir().mkdir(logFile()));
    }
    m_agent.Corelog(QStringLiteral("text"));
    QVERIFY(!QFileInfo(logFile()).isFile());
    if (listener >= 0)
        ::close(listener);
}

void TestCoreLog::fileThatCannotBeWritten()
{
    const QByteArray directory = QFile::encodeName(m_directory->path());
    QCOMPARE(::chmod(directory.constData(), 0755), 0);
    if (::geteuid() == 0)
        QCOMPARE(::chown(directory.constData(), kNobody, kNobody), 0);
    QFile file(logFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QCOMPARE(::chmod(logPath().constData(), 0444), 0);
    QVERIFY(asOrdinaryUser([this] {
        m_agent.Corelog(QStringLiteral("text"));
        return true;
    }));
    QCOMPARE(content(), QByteArray());
}

void TestCoreLog::secondNameIsLeftAlone()
{
    const QString target = m_directory->filePath(QStringLiteral("target"));
    QFile file(target);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(::link(QFile::encodeName(target).constData(), logPath().constData()), 0);
    m_agent.Corelog(QStringLiteral("text"));
    QCOMPARE(QFileInfo(target).size(), 0);
}

// Everybody may write into the temporary directory, which is the system's.
void TestCoreLog::directoryOfAnotherUser()
{
    const QString path = QStringLiteral("/tmp/tessera_core.log");
    const qint64 before = QFileInfo(path).size();
    QVERIFY(asOrdinaryUser([this, path, before] {
        m_agent.setLogDirectory(QDir(QStringLiteral("/tmp")));
        m_agent.Corelog(QStringLiteral("text"));
        return QFileInfo(path).size() == before;
    }));
}

void TestCoreLog::linkToTheDirectory_data()
{
    QTest::addColumn<bool>("ofAnotherUser");
    QTest::newRow("of the user's") << false;
    QTest::newRow("of another user's") << true;
}

void TestCoreLog::linkToTheDirectory()
{
    QFETCH(bool, ofAnotherUser);
    const QString link = m_directory->filePath(QStringLiteral("link"));
    QCOMPARE(::symlink(QFile::encodeName(m_directory->path()).constData(),
                       QFile::encodeName(link).constData()),
             0);
    if (ofAnotherUser && ::lchown(QFile::encodeName(link).constData(), kNobody, kNobody) != 0)
        QSKIP("only root can give a link away");
    m_agent.setLogDirectory(QDir(link));
    m_agent.Corelog(QStringLiteral("text"));
    QCOMPARE(QFileInfo::exists(logFile()), !ofAnotherUser);
}

void TestCoreLog::newFileObeysTheMask()
{
    // Other users' programs of the suite write to the same log, where the mask lets them.
    const mode_t before = ::umask(022);
    m_agent.Corelog(QStringLiteral("text"));
    ::umask(before);
    struct stat status = {};
    QCOMPARE(::stat(logPath().constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0644U);
}

void TestCoreLog::linesOfManyProcessesStayWhole()
{
    constexpr int kProcesses = 4;
    constexpr int kLines = 200;
    const QString message(300, QLatin1Char('x'));
    QList<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (int line = 0; line < kLines; ++line)
                m_agent.Corelog(message);
            ::_exit(0);
        }
        QVERIFY(child > 0);
        children.append(child);
    }
    for (const pid_t child : qAsConst(children)) {
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
    }
    const QList<QByteArray> lines = content().split('\n');
    QCOMPARE(lines.size(), kProcesses * kLines + 1);
    for (int i = 0; i < kProcesses * kLines; ++i)
        QCOMPARE(lines.at(i).mid(8), ": " + message.toUtf8());
}

void TestCoreLog::leavesNothingOpen_data()
{
    QTest::addColumn<QByteArray>("kind");
    for (const char *kind :
         {"written", "a folder", "a pipe", "of another user", "linked to another user's"})
        QTest::newRow(kind) << QByteArray(kind);
}

void TestCoreLog::leavesNothingOpen()
{
    QFETCH(QByteArray, kind);
    if (kind == "a folder")
        QVERIFY(QDir().mkdir(logFile()));
    else if (kind == "a pipe")
        QCOMPARE(::mkfifo(logPath().constData(), S_IRUSR | S_IWUSR), 0);
    const bool isForeign = kind.endsWith("another user") || kind.startsWith("linked");
    const QByteArray folder = QFile::encodeName(m_directory->path());
    if (isForeign && ::chown(folder.constData(), kNobody, kNobody) != 0)
        QSKIP("only root can give a folder away");
    if (kind.startsWith("linked")) {
        QCOMPARE(::symlink(folder.constData(), (folder + "/link").constData()), 0);
        m_agent.setLogDirectory(QDir(m_directory->filePath(QStringLiteral("link"))));
    }
    const int before = openDescriptors();
    for (int i = 0; i < 3; ++i)
        m_agent.Corelog(QStringLiteral("line"));
    QCOMPARE(openDescriptors(), before);
    QVERIFY(!isForeign || content() == "(no log)");
}

QTEST_GUILESS_MAIN(TestCoreLog)
#include "tst_core_log.moc"
