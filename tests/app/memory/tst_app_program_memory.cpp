#include "app/program_memory.h"

#include <numeric>
#include <QFile>
#include <QLibrary>
#include <QTest>

namespace {

constexpr int kKibibytes = 400; // of each part of the library
constexpr std::size_t kOctets = std::size_t{kKibibytes} * 1024;

using Ask = int (*)();

// A library of its own for each test, that stays.
class LargeLibrary
{
public:
    explicit LargeLibrary(const char *name)
        : m_library(QLatin1String(PX_BINARY_DIR "/tests/large/") + QLatin1String(name) +
                    QLatin1String(".so"))
    {
        m_library.load();
    }

    bool isLoaded() const { return m_library.isLoaded(); }
    int ask() { return reinterpret_cast<Ask>(m_library.resolve("ask"))(); }
    char *part(const char *name) { return reinterpret_cast<char *>(m_library.resolve(name)); }
    /// Touches every page of it.
    int sum(const char *name)
    {
        const char *begin = part(name);
        return std::accumulate(begin, begin + kOctets, 0);
    }

private:
    QLibrary m_library;
};

// Of the mapping that the address lies in; -1 when it lies in none.
int residentKibibytes(const void *address)
{
    QFile file(QStringLiteral("/proc/self/smaps"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QList<QByteArray> lines = file.readAll().split('\n');
    const auto wanted = reinterpret_cast<quintptr>(address);
    bool isIn = false;
    for (const QByteArray &line : lines) {
        const int dash = static_cast<int>(line.indexOf('-'));
        const int blank = static_cast<int>(line.indexOf(' '));
        if (dash > 0 && blank > dash)
            isIn = line.left(dash).toULongLong(nullptr, 16) <= wanted &&
                   wanted < line.mid(dash + 1, blank - dash - 1).toULongLong(nullptr, 16);
        else if (isIn && line.startsWith("Rss:"))
            return line.mid(4).trimmed().split(' ').first().toInt();
    }
    return -1;
}

} // namespace

class TestAppProgramMemory : public QObject
{
    Q_OBJECT

private slots:
    void whatIsOnlyReadIsGivenBack();
    void whatIsWrittenStays();
    void whatLinkingWroteToStays();
};

void TestAppProgramMemory::whatIsOnlyReadIsGivenBack()
{
    LargeLibrary library("plain");
    QVERIFY(library.isLoaded());
    QCOMPARE(library.sum("readOnly"), 1 + 2 + 3);
    const char *part = library.part("readOnly"); // asked again, it is looked for in the file
    QVERIFY(residentKibibytes(part) >= kKibibytes);
    program_memory::giveBackFiles();
    const int resident = residentKibibytes(part);
    QVERIFY2(resident >= 0 && resident < kKibibytes / 4, qPrintable(QString::number(resident)));
    QCOMPARE(library.sum("readOnly"), 1 + 2 + 3);
    QCOMPARE(library.ask(), 42);
}

void TestAppProgramMemory::whatIsWrittenStays()
{
    LargeLibrary library("plain");
    QVERIFY(library.isLoaded());
    library.part("written")[kOctets - 1] = 7;
    program_memory::giveBackFiles();
    QCOMPARE(library.sum("written"), 4 + 5 + 6 + 7);
}

void TestAppProgramMemory::whatLinkingWroteToStays()
{
    LargeLibrary library("relocated");
    QVERIFY(library.isLoaded());
    QCOMPARE(library.sum("readOnly"), 1 + 2 + 3);
    QCOMPARE(library.ask(), 42);
    program_memory::giveBackFiles();
    QCOMPARE(library.ask(), 42);
    QVERIFY(residentKibibytes(library.part("readOnly")) >= kKibibytes);
}

QTEST_GUILESS_MAIN(TestAppProgramMemory)
#include "tst_app_program_memory.moc"
