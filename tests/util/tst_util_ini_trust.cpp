#include "tests/support/message_recorder.h"
#include "tests/support/open_descriptors.h"
#include "util/file_reader.h"
#include "util/ini_table.h"

#include <cstdarg>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

namespace {

constexpr qint64 kMillisecond = 1000000;
constexpr qint64 kSecond = 1000 * kMillisecond;

// What the system tells the library of files and of the time, where a test says so.
struct Told
{
    bool isForged = false;
    struct stat status = {};
    qint64 now = 0;               ///< in nanoseconds
    std::function<int()> opening; ///< -1: it fails
};

Told told;

using Change = void (*)(struct stat &);

} // namespace

Q_DECLARE_METATYPE(Change)

// The linker hands the library's calls to these.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names.
extern "C" {
int __real_stat(const char *path, struct stat *status);
int __wrap_stat(const char *path, struct stat *status)
{
    const int result = __real_stat(path, status);
    if (told.isForged)
        *status = told.status;
    return result;
}

int __real_clock_gettime(clockid_t clock, timespec *time);
int __wrap_clock_gettime(clockid_t clock, timespec *time)
{
    if (!told.isForged || clock != CLOCK_REALTIME)
        return __real_clock_gettime(clock, time);
    *time = {told.now / kSecond, told.now % kSecond};
    return 0;
}

int __real_open(const char *path, int flags, mode_t mode);
int __wrap_open(const char *path, int flags, ...)
{
    return told.opening && told.opening() < 0 ? -1 : __real_open(path, flags, 0);
}
}
// NOLINTEND(bugprone-reserved-identifier)

/// When the parsed copy of a language file is trusted, in a world whose files and clock say what a
/// test wants.
class TestUtilIniTrust : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { told = Told(); }

    void everyPartOfTheIdentityCounts_data();
    void everyPartOfTheIdentityCounts();
    void isJudgedByTheTimeBeforeTheRead();
    void tickOfTheClock_data();
    void tickOfTheClock();
    void failedReadIsNotRemembered();
    void keyWithoutAName();
    void whatIsNoFileAnyMore();
    void devicesAreNotOpened();

private:
    void write(const QByteArray &text) const
    {
        QFile file(m_directory->filePath(QStringLiteral("texts.ini")));
        if (!file.open(QIODevice::WriteOnly) || file.write("[CN]\nK=" + text + "\n") < 0)
            qFatal("cannot write");
    }
    QString value() const
    {
        return ini_table::lookup(m_directory->filePath(QStringLiteral("texts.ini")),
                                 QStringLiteral("CN"), QStringLiteral("K"));
    }
    // From now on the file was changed at this second and nanosecond, whatever is done to it.
    void forge(qint64 changed) const
    {
        const QByteArray path =
            QFile::encodeName(m_directory->filePath(QStringLiteral("texts.ini")));
        QCOMPARE(__real_stat(path.constData(), &told.status), 0);
        told.status.st_ctim = {changed / kSecond, changed % kSecond};
        told.status.st_mtim = told.status.st_ctim;
        told.isForged = true;
    }

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestUtilIniTrust::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    write("one");
}

void TestUtilIniTrust::everyPartOfTheIdentityCounts_data()
{
    QTest::addColumn<Change>("change");
    QTest::newRow("device") << Change([](struct stat &status) { ++status.st_dev; });
    QTest::newRow("inode") << Change([](struct stat &status) { ++status.st_ino; });
    QTest::newRow("size") << Change([](struct stat &status) { ++status.st_size; });
    QTest::newRow("modified") << Change([](struct stat &status) { ++status.st_mtim.tv_nsec; });
    QTest::newRow("changed") << Change([](struct stat &status) { ++status.st_ctim.tv_nsec; });
    QTest::newRow("a second") << Change([](struct stat &status) { ++status.st_mtim.tv_sec; });
}

void TestUtilIniTrust::everyPartOfTheIdentityCounts()
{
    QFETCH(Change, change);
    forge(1000 * kSecond + 1);
    told.now = 2000 * kSecond;
    QCOMPARE(value(), QStringLiteral("one"));
    write("two");
    QCOMPARE(value(), QStringLiteral("one")); // nothing tells
    change(told.status);
    QCOMPARE(value(), QStringLiteral("two"));
}

void TestUtilIniTrust::isJudgedByTheTimeBeforeTheRead()
{
    forge(1000 * kSecond + 1);
    told.now = 1000 * kSecond + kMillisecond;
    told.opening = [] {
        told.now += kSecond;
        return 0;
    };
    QCOMPARE(value(), QStringLiteral("one"));
    write("two"); // within the tick in which it was read
    QCOMPARE(value(), QStringLiteral("two"));
    write("six");
    QCOMPARE(value(), QStringLiteral("two")); // by now it is trusted
}

void TestUtilIniTrust::tickOfTheClock_data()
{
    QTest::addColumn<qint64>("changed");
    QTest::addColumn<qint64>("age");
    QTest::addColumn<bool>("trusted");
    constexpr qint64 kFine = 1000 * kSecond + 123456789;
    constexpr qint64 kWhole = 1000 * kSecond;
    QTest::newRow("10 ms ago") << kFine << 10 * kMillisecond << false;
    QTest::newRow("20 ms ago") << kFine << 20 * kMillisecond << false;
    QTest::newRow("a nanosecond more") << kFine << 20 * kMillisecond + 1 << true;
    QTest::newRow("in 20 ms") << kFine << -20 * kMillisecond << false;
    QTest::newRow("in a nanosecond more") << kFine << -20 * kMillisecond - 1 << true;
    QTest::newRow("10 ms ago, in another second")
        << 1000 * kSecond + 995 * kMillisecond << 10 * kMillisecond << false;
    QTest::newRow("100 ms ago") << kFine << 100 * kMillisecond << true;
    QTest::newRow("in 10 ms") << kFine << -10 * kMillisecond << false;
    QTest::newRow("in an hour") << kFine << -3600 * kSecond << true;
    QTest::newRow("whole seconds, 100 ms ago") << kWhole << 100 * kMillisecond << false;
    QTest::newRow("whole seconds, 1.9 s ago") << kWhole << 1900 * kMillisecond << false;
    QTest::newRow("whole seconds, 2.1 s ago") << kWhole << 2100 * kMillisecond << true;
    QTest::newRow("whole seconds, in 1 s") << kWhole << -kSecond << false;
}

void TestUtilIniTrust::tickOfTheClock()
{
    QFETCH(qint64, changed);
    QFETCH(qint64, age);
    QFETCH(bool, trusted);
    forge(changed);
    told.now = changed + age;
    QCOMPARE(value(), QStringLiteral("one"));
    write("two");
    QCOMPARE(value(), trusted ? QStringLiteral("one") : QStringLiteral("two"));
}

void TestUtilIniTrust::failedReadIsNotRemembered()
{
    forge(1000 * kSecond + 1);
    told.now = 2000 * kSecond;
    told.opening = [] {
        errno = EMFILE;
        return -1;
    };
    QCOMPARE(value(), QString());
    told.opening = nullptr;
    QCOMPARE(value(), QStringLiteral("one"));
}

void TestUtilIniTrust::keyWithoutAName()
{
    QFile file(m_directory->filePath(QStringLiteral("texts.ini")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("=x\n[CN]\nK=one\n=y\n") > 0);
    file.close();
    const MessageRecorder recorder;
    QCOMPARE(value(), QStringLiteral("one"));
    QCOMPARE(MessageRecorder::messages(), QStringList());
}

// Between the look at a path and its opening, a folder takes the file's place.
void TestUtilIniTrust::whatIsNoFileAnyMore()
{
    forge(1000 * kSecond + 1);
    const QString path = m_directory->filePath(QStringLiteral("texts.ini"));
    QVERIFY(QFile::remove(path));
    QVERIFY(QDir().mkdir(path));
    const int before = openDescriptors();
    QCOMPARE(value(), QString());
    QCOMPARE(value(), QString());
    QCOMPARE(openDescriptors(), before);
}

// Opening one can already do something; one that takes a file's place is not read.
void TestUtilIniTrust::devicesAreNotOpened()
{
    int opened = 0;
    told.opening = [&opened] { return ++opened; };
    QByteArray content;
    QVERIFY(!file_reader::readWhole("/dev/null", content));
    QCOMPARE(opened, 0);
    forge(1000 * kSecond + 1);
    QVERIFY(!file_reader::readWhole("/dev/null", content));
    QCOMPARE(opened, 1);
}

QTEST_GUILESS_MAIN(TestUtilIniTrust)
#include "tst_util_ini_trust.moc"
