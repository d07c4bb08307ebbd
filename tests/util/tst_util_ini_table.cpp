#include "tests/support/ordinary_user.h"
#include "tests/support/processor_time.h"
#include "util/file_descriptor.h"
#include "util/ini_table.h"
#include "util/qt_compat.h"

#include <fcntl.h>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QSet>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>

// What look-ups ask of the system.
static qulonglong allocatedOctets = 0;
static int statCalls = 0;

extern "C" int stat(const char *__file, struct stat *__buf)
{
    ++statCalls;
    return ::fstatat(AT_FDCWD, __file, __buf, 0);
}

#ifndef __SANITIZE_ADDRESS__ // which has an allocator of its own, and counts nothing here
extern "C" void *__libc_malloc(std::size_t size);
extern "C" void *__libc_realloc(void *block, std::size_t size);
extern "C" void *malloc(std::size_t size)
{
    allocatedOctets += size;
    return __libc_malloc(size);
}
extern "C" void *realloc(void *__ptr, std::size_t __size)
{
    allocatedOctets += __size;
    return __libc_realloc(__ptr, __size);
}
#endif

namespace {

QString section(const char *name = "CN")
{
    return QString::fromUtf8(name);
}

// What every look-up is to give: the class itself, each time on a file that it hasn't seen, since
// it parses no more of a file than it is asked for.
class Reference
{
public:
    explicit Reference(const QByteArray &content)
        : m_content(content)
    {
    }
    QStringList keys() const
    {
        QSettings settings(copy(), QSettings::IniFormat);
        readAsUtf8(settings);
        return settings.allKeys();
    }
    QString value(const QString &section, const QString &key) const
    {
        QSettings settings(copy(), QSettings::IniFormat);
        readAsUtf8(settings);
        return settings.value(QStringLiteral("/%1/%2").arg(section, key)).toString();
    }

private:
    QString copy() const
    {
        static int count = 0;
        QFile file(m_directory.filePath(QString::number(++count)));
        if (!file.open(QIODevice::WriteOnly) || file.write(m_content) != m_content.size())
            qFatal("cannot write");
        return file.fileName();
    }

    QTemporaryDir m_directory;
    QByteArray m_content;
};

} // namespace

class TestUtilIniTable : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void readsAsSettingsDo_data();
    void readsAsSettingsDo();
    void readsAnyOctetsAsSettingsDo();
    void readsAnySectionsAsSettingsDo();
    void isNotFooledByTheCacheOfSettings();
    void absentFile_data();
    void absentFile();
    void unreadableFile();
    void followsTheFile();
    void followsTwoFiles();
    void oneStateAtOnce();
    void seesEveryEditAtOnce_data();
    void seesEveryEditAtOnce();
    void seesEditThatKeepsSizeAndTime();
    void seesEditWithinTheClockTick();
    void manyLookupsAreFast();
    void lookupsInTwoFilesAreFast();
    void lookupsOfWhatNoFileHoldsAreFast();
    void lookupCostsOneStatAndNoMemory();
    void leavesNothingBehind();
    void worksWithoutATemporaryDirectory();
    void pathOutsideAscii();

private:
    QString path(const char *name = "texts.ini") const
    {
        return m_directory->filePath(QString::fromUtf8(name));
    }
    QString make(const QByteArray &content, const char *name = "texts.ini") const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write");
        return file.fileName();
    }
    // Every key that settings find, and some they don't, gives the same in both.
    static void compare(const QString &file, const Reference &reference);

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestUtilIniTable::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
    QCOMPARE(::chmod(QFile::encodeName(m_directory->path()).constData(), 0755), 0);
}

void TestUtilIniTable::compare(const QString &file, const Reference &reference)
{
    QSet<QPair<QString, QString>> pairs;
    const QStringList keys = reference.keys();
    for (const QString &key : keys) {
        for (auto i = key.indexOf(QLatin1Char('/')); i >= 0;
             i = key.indexOf(QLatin1Char('/'), i + 1))
            pairs.insert({key.left(i), key.mid(i + 1)});
        pairs.insert({QString(), key});
        pairs.insert({QStringLiteral("General"), key});
    }
    for (const char *name : {"CN", "cn", "General", "", "證書"}) {
        for (const char *key :
             {"K", "k", "L", "a/b", "/K", "K/", "a//b", "證書", "證", "%E8", "a b"})
            pairs.insert({section(name), section(key)});
    }
    for (const auto &pair : qAsConst(pairs))
        QCOMPARE(ini_table::lookup(file, pair.first, pair.second),
                 reference.value(pair.first, pair.second));
}

void TestUtilIniTable::readsAsSettingsDo_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("value"); // of K in CN
    const auto row = [](const char *name, const QByteArray &content, const char *value) {
        QTest::newRow(name) << content << QString::fromUtf8(value);
    };
    row("plain", "[CN]\nK=value\n", "value");
    row("UTF-8", "[CN]\nK=證書\n", "證書");
    row("UTF-8, quoted", "[CN]\nK=\"證書\"\n", "證書");
    row("beyond the first plane", "[CN]\nK=\"\xF0\x9F\x94\x92\"\n", "\xF0\x9F\x94\x92");
    row("not UTF-8", "[CN]\nK=\"\xFF\xFE\"\n", "\xEF\xBF\xBD\xEF\xBF\xBD");
    row("no line end", "[CN]\nK=value", "value");
    row("CR LF", "[CN]\r\nK=value\r\nL=x\r\n", "value");
    row("CR", "[CN]\rK=value\rL=x\r", "value");
    row("byte order mark", "\xEF\xBB\xBF[CN]\nK=證書\n", "證書");
    row("blanks around", "[CN]\n  K  =  value  \n", "value");
    row("blanks in quotes", "[CN]\nK=\"  value  \"\n", "  value  ");
    row("blanks around the section", "[ CN ]\nK=value\n", "value");
    row("empty", "[CN]\nK=\n", "");
    row("empty, quoted", "[CN]\nK=\"\"\n", "");
    row("no equals sign", "[CN]\nK\n", "");
    row("two equals signs", "[CN]\nK=a=b\n", "a=b");
    row("comma", "[CN]\nK=one, two\n", "");
    row("comma, quoted", "[CN]\nK=\"one, two\"\n", "one, two");
    row("two quoted", "[CN]\nK=\"one\", \"two\"\n", "");
    row("semicolon", "[CN]\nK=one;two\n", "one");
    row("semicolon, quoted", "[CN]\nK=\"one;two\"\n", "one;two");
    row("hash", "[CN]\nK=one#two\n", "one#two");
    row("comment lines", ";[CN]\n[CN]\n;K=one\n#K=two\nK=three\n", "three");
    row("escapes", "[CN]\nK=a\\nb\\t\\x41\\101\\\\\\\"\n", "a\nb\tAA\\\"");
    row("escapes, quoted", "[CN]\nK=\"a\\nb\\\\c\\\"d\"\n", "a\nb\\c\"d");
    row("unknown escape", "[CN]\nK=\"a\\qb\"\n", "ab");
    row("joined lines", "[CN]\nK=one\\\ntwo\n", "onetwo");
    row("quote without end", "[CN]\nK=\"value\nL=x\n", "value\nL=x\n");
    row("quotes in the middle", "[CN]\nK=a\"b\"c\n", "abc");
    row("the last of two", "[CN]\nK=one\nK=two\n", "two");
    row("section in two parts", "[CN]\nK=one\n[TW]\nK=x\n[CN]\nL=two\n", "one");
    row("another section", "[TW]\nK=value\n", "");
    row("another case", "[cn]\nK=value\n", "");
    row("another case of the key", "[CN]\nk=value\n", "");
    row("no section", "K=value\n", "");
    row("section General", "[General]\nK=value\n[%General]\nL=x\n", "");
    row("section with a slash", "[CN]\nK=value\n[CN/A]\nK=x\n", "");
    row("section with a backslash", "[CN]\nK=value\n[CN\\A]\nK=x\n", "");
    row("section with an escaped slash", "[CN]\nK=value\n[CN%2FA]\n", "");
    row("section with a slash behind the key", "[CN]\nK=value\n[CN/b]\nK=x\n", "value");
    row("section of a slash", "[/]\nK=x\n[CN]\nK=value\n", "value");
    row("key with a slash before the sections", "CN\\K=value\n", "");
    row("key with a slash in General", "[TW]\nK=x\n[ General ]\nCN/K=value\n", "");
    row("slash in a comment", "; a/b\n[CN]\nK=value\n", "value");
    row("section without end", "[CN\nK=value\n", "value");
    row("key with a slash", "[CN]\na\\b=value\na/c=x\nK=y\n", "y");
    row("key with escapes", "[CN]\na%20b=value\n%4B=x\n", "x");
    row("key outside ASCII", "[CN]\n證書=value\n%U8B49=x\nK=y\n", "y");
    row("section outside ASCII", "[證書]\nK=value\n[CN]\nK=y\n", "y");
    row("number", "[CN]\nK=42\n", "42");
    row("identifier", "[OID]\n2.5.4.3=\"CN\"\n[CN]\nK=y\n", "y");
    row("@Invalid", "[CN]\nK=@Invalid()\n", "");
    row("@ByteArray", "[CN]\nK=@ByteArray(abc)\n", "abc");
    row("@String", "[CN]\nK=@String(abc)\n", "abc");
    row("@Rect", "[CN]\nK=@Rect(1 2 3 4)\n", "");
    row("@Variant", "[CN]\nK=@Variant(\\0\\0\\0\\x2\\0\\0\\0*)\n", "42");
    row("@Variant, cut short", "[CN]\nK=@Variant(\\0\\0)\n", "");
    row("@@", "[CN]\nK=@@x\n", "@x");
    QTest::newRow("NUL in a value")
        << QByteArray("[CN]\nK=\"a\0b\"\n", 13) << QString::fromUtf8("a\0b", 3);
    row("NUL in a key", QByteArray("[CN]\nK\0L=x\nK=y\n", 15), "y");
    // A section that is asked about one key at a time, wherever it stands.
    row("NUL before an odd section", QByteArray("[TW]\nL=\0\n[ General ]\nCN/K=x\n", 28), "");
    row("bracket that heads no section", "L=[]\na/K=1\n[CN]\nK=2\n", "2");
    row("bracket that a quote hides", "L=\"\n[]\n\"\na/K=1\n[CN]\nK=2\n", "2");
    row("no file to speak of", "\n\n", "");
}

void TestUtilIniTable::readsAsSettingsDo()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, value);
    const QString file = make(content);
    compare(file, Reference(content));
    QCOMPARE(ini_table::lookup(file, section(), section("K")), value);
}

void TestUtilIniTable::readsAnyOctetsAsSettingsDo()
{
    QRandomGenerator random(20240229);
    const QByteArray alphabet("[]=;#\"\\\n\r,%@()KLCN \t/\0\xE8\xAD\x89\xFF", 26);
    for (int i = 0; i < 120; ++i) {
        QByteArray content = "[CN]\nK=";
        const int size = static_cast<int>(random.bounded(120));
        for (int j = 0; j < size; ++j)
            content += alphabet.at(static_cast<int>(random.bounded(alphabet.size())));
        compare(make(content), Reference(content));
        if (QTest::currentTestFailed())
            QFAIL(content.toHex().constData());
    }
}

void TestUtilIniTable::readsAnySectionsAsSettingsDo()
{
    QRandomGenerator random(20250102);
    const QByteArrayList pieces = {
        "[CN]", "[CN/a]",  "[CN\\a]", "[CN/L]",     "[C%4E]", "[General]", "[CN/A]", "[]",
        "[/]",  "[CN//a]", "[CN",     "K=1",        "k=2",    "a\\b=3",    "a/K=4",  "a%2Fb=5",
        "=6",   ";a/b=7",  "CN/K=8",  "CN\\a\\b=9", "L=\"",   "L=\\",      "%",      "L=b;a/b"};
    for (int i = 0; i < 120; ++i) {
        QByteArray content;
        const int lines = random.bounded(1, 9);
        for (int j = 0; j < lines; ++j)
            content += pieces.at(random.bounded(int(pieces.size()))) + '\n';
        compare(make(content), Reference(content));
        if (QTest::currentTestFailed())
            QFAIL(content.constData());
    }
}

void TestUtilIniTable::isNotFooledByTheCacheOfSettings()
{
    const QString file = make("[CN]\nK=\"證書\"\n");
    {
        const QSettings settings(file, QSettings::IniFormat);
        settings.value(QStringLiteral("CN/K")); // parsed, in whatever encoding
    }
    QCOMPARE(ini_table::lookup(file, section(), section("K")), section("證書"));
}

void TestUtilIniTable::absentFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("a directory") << QStringLiteral("directory");
    QTest::newRow("a pipe") << QStringLiteral("pipe");
    QTest::newRow("a pipe whose writer is silent") << QStringLiteral("silent pipe");
    QTest::newRow("empty") << QStringLiteral("empty");
    QTest::newRow("link to a device") << QStringLiteral("device");
}

void TestUtilIniTable::absentFile()
{
    QFETCH(QString, kind);
    const QByteArray file = QFile::encodeName(path());
    if (kind == QLatin1String("directory"))
        QCOMPARE(::mkdir(file.constData(), 0755), 0);
    else if (kind.endsWith(QLatin1String("pipe")))
        QCOMPARE(::mkfifo(file.constData(), 0644), 0);
    else if (kind == QLatin1String("empty"))
        make(QByteArray());
    else if (kind == QLatin1String("device"))
        QCOMPARE(::symlink("/dev/zero", file.constData()), 0);
    const FileDescriptor writer(kind.startsWith(QLatin1String("silent"))
                                    ? ::open(file.constData(), O_RDWR | O_CLOEXEC)
                                    : -1);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(ini_table::lookup(path(), section(), section("K")), QString());
    QVERIFY(timer.elapsed() < 5000);
}

void TestUtilIniTable::unreadableFile()
{
    const QString file = make("[CN]\nK=value\n");
    QCOMPARE(::chmod(QFile::encodeName(file).constData(), 0), 0);
    QVERIFY(
        asOrdinaryUser([&] { return ini_table::lookup(file, section(), section("K")).isEmpty(); }));
}

void TestUtilIniTable::followsTheFile()
{
    const auto value = [this] { return ini_table::lookup(path(), section(), section("K")); };
    QCOMPARE(value(), QString());
    make("[CN]\nK=one\n");
    QCOMPARE(value(), QStringLiteral("one"));
    make("[CN]\nK=two\n", "other.ini");
    QCOMPARE(::rename(QFile::encodeName(path("other.ini")).constData(),
                      QFile::encodeName(path()).constData()),
             0);
    QCOMPARE(value(), QStringLiteral("two"));
    QVERIFY(QFile::remove(path()));
    QCOMPARE(value(), QString());
    QVERIFY(QFile::link(make("[CN]\nK=three\n", "third.ini"), path()));
    QCOMPARE(value(), QStringLiteral("three"));
    make("[CN]\nK=four\n", "third.ini");
    QCOMPARE(value(), QStringLiteral("four"));
}

void TestUtilIniTable::followsTwoFiles()
{
    const QString one = make("[CN]\nK=one\n", "one.ini");
    const QString two = make("[CN]\nK=two\n", "two.ini");
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(ini_table::lookup(one, section(), section("K")), QStringLiteral("one"));
        QCOMPARE(ini_table::lookup(two, section(), section("K")), QStringLiteral("two"));
    }
}

void TestUtilIniTable::oneStateAtOnce()
{
    const auto value = [this](const char *file) {
        return ini_table::lookup(path(file), section(), section("K"));
    };
    make("[CN]\nK=one\n", "file.ini");
    make("[CN]\nK=other\n", "other.ini");
    QCOMPARE(value("file.ini"), QStringLiteral("one"));
    make("[CN]\nK=two\n", "file.ini");
    {
        const ini_table::AtOnce atOnce;
        QCOMPARE(value("file.ini"), QStringLiteral("two"));
        make("[CN]\nK=three\n", "file.ini");
        {
            const ini_table::AtOnce within;
            QCOMPARE(value("file.ini"), QStringLiteral("two"));
            QCOMPARE(value("other.ini"), QStringLiteral("other"));
        }
        QCOMPARE(value("file.ini"), QStringLiteral("two"));
    }
    {
        const ini_table::AtOnce atOnce;
        QCOMPARE(value("file.ini"), QStringLiteral("three"));
    }
    make("[CN]\nK=four\n", "file.ini");
    QCOMPARE(value("file.ini"), QStringLiteral("four"));
}

void TestUtilIniTable::seesEveryEditAtOnce_data()
{
    QTest::addColumn<bool>("inPlace");
    QTest::newRow("written over") << true;
    QTest::newRow("replaced") << false;
}

void TestUtilIniTable::seesEveryEditAtOnce()
{
    QFETCH(bool, inPlace);
    // The same size each time, and faster than file times tick.
    for (int i = 1000; i < 1500; ++i) {
        const QByteArray content = "[CN]\nK=" + QByteArray::number(i) + "\n";
        if (inPlace) {
            make(content);
        } else {
            make(content, "new.ini");
            QCOMPARE(::rename(QFile::encodeName(path("new.ini")).constData(),
                              QFile::encodeName(path()).constData()),
                     0);
        }
        QCOMPARE(ini_table::lookup(path(), section(), section("K")), QString::number(i));
        QCOMPARE(ini_table::lookup(path(), section(), section("K")), QString::number(i));
    }
}

void TestUtilIniTable::seesEditThatKeepsSizeAndTime()
{
    const QByteArray file = QFile::encodeName(make("[CN]\nK=one\n"));
    QTest::qSleep(100); // the copy becomes one to be trusted
    QCOMPARE(ini_table::lookup(path(), section(), section("K")), QStringLiteral("one"));
    struct stat before = {};
    QCOMPARE(::stat(file.constData(), &before), 0);
    make("[CN]\nK=two\n");
    const timespec times[] = {before.st_atim, before.st_mtim};
    QCOMPARE(::utimensat(AT_FDCWD, file.constData(), times, 0), 0);
    struct stat after = {};
    QCOMPARE(::stat(file.constData(), &after), 0);
    QCOMPARE(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    QCOMPARE(after.st_size, before.st_size);
    QCOMPARE(ini_table::lookup(path(), section(), section("K")), QStringLiteral("two"));
}

void TestUtilIniTable::seesEditWithinTheClockTick()
{
    // Through a mapping a file can change twice while its times tell of one change alone, as file
    // times that tick slowly would.
    constexpr long long kSurelyWithin = 10000000LL;
    constexpr int kValueAt = 7;
    int tries = 0;
    int seen = 0;
    for (; tries < 200 && seen < 5; ++tries) {
        const QByteArray name = QFile::encodeName(make("[CN]\nK=1\n"));
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadWrite));
        uchar *octets = file.map(0, file.size());
        QVERIFY(octets);
        octets[kValueAt] = '2';
        QCOMPARE(ini_table::lookup(path(), section(), section("K")), QStringLiteral("2"));
        struct stat before = {};
        QCOMPARE(::stat(name.constData(), &before), 0);
        timespec now = {};
        ::clock_gettime(CLOCK_REALTIME, &now);
        octets[kValueAt] = '3';
        struct stat after = {};
        QCOMPARE(::stat(name.constData(), &after), 0);
        const long long age = (now.tv_sec - before.st_ctim.tv_sec) * 1000000000LL + now.tv_nsec -
                              before.st_ctim.tv_nsec;
        if (age > kSurelyWithin || after.st_ctim.tv_nsec != before.st_ctim.tv_nsec)
            continue;
        QCOMPARE(ini_table::lookup(path(), section(), section("K")), QStringLiteral("3"));
        ++seen;
    }
    QCOMPARE(seen, 5);
}

void TestUtilIniTable::manyLookupsAreFast()
{
    QByteArray content = "[CN]\n";
    for (int i = 0; i < 2000; ++i)
        content += "K" + QByteArray::number(i) + "=\"value " + QByteArray::number(i) + "\"\n";
    const QString file = make(content);
    QTest::qSleep(100);
    const ProcessorTime timer;
    for (int i = 0; i < 20000; ++i)
        QCOMPARE(ini_table::lookup(file, section(), section("K1999")), section("value 1999"));
    // Parsing the file for each would take minutes.
    QVERIFY2(timer.elapsed() < 5000, QByteArray::number(timer.elapsed()).constData());
}

// In turn, as a certificate's identifiers and their translations are looked up.
void TestUtilIniTable::lookupsInTwoFilesAreFast()
{
    QByteArray content = "[CN]\n";
    for (int i = 0; i < 10000; ++i)
        content += "K" + QByteArray::number(i) + "=\"value\"\n";
    const QString one = make(content, "one.ini");
    const QString two = make(content, "two.ini");
    QTest::qSleep(100);
    const ProcessorTime timer;
    for (int i = 0; i < 10000; ++i) {
        QCOMPARE(ini_table::lookup(one, section(), section("K9999")), section("value"));
        QCOMPARE(ini_table::lookup(two, section(), section("K9999")), section("value"));
    }
    QVERIFY2(timer.elapsed() < 5000, QByteArray::number(timer.elapsed()).constData());
}

// Values of a certificate are looked up too, whatever they hold.
void TestUtilIniTable::lookupsOfWhatNoFileHoldsAreFast()
{
    constexpr int kLength = 30000000;
    const QString slashes = QString(kLength, QLatin1Char('/'));
    const QString names = QStringLiteral("a/").repeated(kLength / 2);
    const QString file = make("[CN]\nK=plain\n");
    for (const QString &key : {slashes, names, QString(kLength, QLatin1Char('K'))}) {
        const auto before = allocatedOctets;
        QVERIFY(ini_table::lookup(file, section(), key).isEmpty());
        const auto taken = allocatedOctets - before;
        QVERIFY2(taken < 1000000, QByteArray::number(taken).constData());
    }
}

void TestUtilIniTable::lookupCostsOneStatAndNoMemory()
{
    const QString file = make("[CN]\nK=\"value\"\n");
    const QString name = section();
    const QString key = section("K");
    QTest::qSleep(100); // the copy becomes one to be trusted
    QCOMPARE(ini_table::lookup(file, name, key), section("value"));
    const auto octets = allocatedOctets;
    const auto stats = statCalls;
    for (int i = 0; i < 10; ++i)
        ini_table::lookup(file, name, key);
    const auto taken = allocatedOctets - octets;
    QCOMPARE(taken, 0ULL);
    QCOMPARE(statCalls, stats + 10);
}

void TestUtilIniTable::leavesNothingBehind()
{
    const QByteArray before = qgetenv("TMPDIR");
    QVERIFY(QDir(m_directory->path()).mkdir(QStringLiteral("temporary")));
    qputenv("TMPDIR", QFile::encodeName(path("temporary")));
    const QString value = ini_table::lookup(make("[CN]\nK=one\n"), section(), section("K"));
    qputenv("TMPDIR", before);
    QCOMPARE(value, QStringLiteral("one"));
    QVERIFY(QDir(path("temporary")).isEmpty());
}

void TestUtilIniTable::worksWithoutATemporaryDirectory()
{
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(path("missing")));
    const QString value = ini_table::lookup(make("[CN]\nK=\"證書\"\n"), section(), section("K"));
    qputenv("TMPDIR", before);
    QCOMPARE(value, section("證書"));
}

void TestUtilIniTable::pathOutsideAscii()
{
    QCOMPARE(ini_table::lookup(make("[CN]\nK=one\n", "語言 файл.ini"), section(), section("K")),
             QStringLiteral("one"));
}

QTEST_GUILESS_MAIN(TestUtilIniTable)
#include "tst_util_ini_table.moc"
