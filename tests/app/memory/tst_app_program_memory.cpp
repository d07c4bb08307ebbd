#include "app/program_memory.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <QFile>
#include <QLibrary>
#include <QTest>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

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

std::size_t pageSize()
{
    return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

// Of the whole pages that the memory holds.
double residentShare(const void *begin, std::size_t size)
{
    const std::size_t page = pageSize();
    const auto place = reinterpret_cast<std::size_t>(begin);
    const std::size_t before = (page - place % page) % page;
    std::vector<unsigned char> states((size - before) / page);
    void *first = const_cast<char *>(static_cast<const char *>(begin) + before);
    if (::mincore(first, states.size() * page, states.data()) != 0)
        return -1;
    const auto there =
        std::count_if(states.begin(), states.end(), [](unsigned char state) { return state & 1; });
    return double(there) / double(states.size());
}

// Systems before Linux 5.14 don't.
bool canPopulate()
{
    void *page =
        ::mmap(nullptr, pageSize(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const bool can = ::madvise(page, pageSize(), MADV_POPULATE_WRITE) == 0;
    ::munmap(page, pageSize());
    return can;
}

struct Freed
{
    void operator()(void *memory) const { std::free(memory); }
};
using Memory = std::unique_ptr<char, Freed>;

Memory memoryOf(std::size_t size)
{
    return Memory(static_cast<char *>(std::malloc(size)));
}

} // namespace

class TestAppProgramMemory : public QObject
{
    Q_OBJECT

private slots:
    void roomIsFilled();
    void whatIsOnlyReadIsGivenBack();
    void whatIsWrittenStays();
    void whatLinkingWroteToStays();
};

void TestAppProgramMemory::roomIsFilled()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("the sanitizer has a heap of its own");
#endif
    if (!canPopulate())
        QSKIP("the system cannot");
    program_memory::keepFreed();
    program_memory::makeRoom();
    constexpr std::size_t kUsed = std::size_t{64} * 1024;
    constexpr std::size_t kLeft = std::size_t{1400} * 1024;
    const Memory used = memoryOf(kUsed);
    std::fill_n(used.get(), kUsed, 'x');
    program_memory::fillRoom();
    const Memory left = memoryOf(kLeft);
    QCOMPARE(residentShare(left.get(), kLeft), 1.0);
    const Memory further = memoryOf(kLeft);
    const double share = residentShare(further.get(), kLeft);
    QVERIFY2(share >= 0 && share < 0.5, qPrintable(QString::number(share)));
    QCOMPARE(std::count(used.get(), used.get() + kUsed, 'x'), std::ptrdiff_t{kUsed});
}

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
