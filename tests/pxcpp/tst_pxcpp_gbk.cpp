#include "tests/pxcpp/units.h"
#include "tests/support/child_process.h"
#include "tests/support/guarded_buffer.h"

#include "pxcpp/code_convert.h"

#include <iconv.h>
#include <QRandomGenerator>
#include <QTest>

namespace {

QByteArray gbkOf(const Units &units)
{
    const GuardedBuffer<char> output(2 * units.size());
    return {output.get(), code_unicode_to_gbk(units.data(), output.get(), int(units.size()))};
}

Units unitsOf(const QByteArray &gbk)
{
    // No terminator: the octet after the length can't be read.
    const GuardedBuffer<char> input(gbk.constData(), std::size_t(gbk.size()));
    const GuardedBuffer<unsigned int> output(std::size_t(gbk.size()));
    const int count = code_gbk_to_unicode(input.get(), output.get(), int(gbk.size()));
    return {output.get(), output.get() + count};
}

/// As large an output as the contract asks for.
QByteArray utf8ToGbk(const QByteArray &utf8)
{
    const GuardedBuffer<char> input(utf8.constData(), std::size_t(utf8.size()) + 1);
    const GuardedBuffer<char> output(2 * (3 * std::size_t(utf8.size()) + 1));
    return {output.get(), code_utf8_to_gbk(input.get(), output.get())};
}

QByteArray gbkToUtf8(const QByteArray &gbk, int size = 1000)
{
    const GuardedBuffer<char> input(gbk.constData(), std::size_t(gbk.size()) + 1);
    const GuardedBuffer<char> output(std::size_t(size) + 6);
    return {output.get(), code_gbk_to_utf8(input.get(), output.get(), size)};
}

QByteArray iconvFromUtf8(const QByteArray &utf8)
{
    QByteArray text = utf8;
    QByteArray result(2 * utf8.size(), '\0');
    char *from = text.data();
    char *to = result.data();
    auto fromLeft = std::size_t(text.size());
    auto toLeft = std::size_t(result.size());
    iconv_t converter = iconv_open("CP936", "UTF-8");
    if (iconv(converter, &from, &fromLeft, &to, &toLeft) != 0)
        result.clear();
    iconv_close(converter);
    result.chop(int(toLeft));
    return result;
}

/// A text of `size` letters A that takes little memory: the same page over and over.
class LongText
{
public:
    explicit LongText(std::size_t size)
        : m_size((size / kBlock + 1) * kBlock + kBlock)
    {
        const int file = memfd_create("text", 0);
        const std::vector<char> block(kBlock, 'A');
        bool mapped = write(file, block.data(), kBlock) == ssize_t(kBlock);
        m_text = static_cast<char *>(
            mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        for (std::size_t at = 0; mapped && at + kBlock <= size; at += kBlock) {
            mapped =
                mmap(m_text + at, kBlock, PROT_READ, MAP_SHARED | MAP_FIXED, file, 0) != MAP_FAILED;
        }
        std::memset(m_text + size / kBlock * kBlock, 'A', size % kBlock);
        close(file);
    }
    ~LongText() { munmap(m_text, m_size); }
    LongText(const LongText &) = delete;
    LongText &operator=(const LongText &) = delete;

    const char *get() const { return m_text; }

private:
    static constexpr std::size_t kBlock = std::size_t(1) << 22;
    std::size_t m_size;
    char *m_text;
};

} // namespace

class TestPxcppGbk : public QObject
{
    Q_OBJECT

private slots:
    void fromUnits_data();
    void fromUnits();
    void toUnits_data();
    void toUnits();
    void everyPair();
    void utf8_data();
    void utf8();
    void malformedUtf8_data();
    void malformedUtf8();
    void toUtf8_data();
    void toUtf8();
    void toUtf8KeepsToSize();
    void nothingToDo();
    void tooLong();
    void withoutMemory();
    void likeIconv();
    void randomOctets();
};

void TestPxcppGbk::fromUnits_data()
{
    QTest::addColumn<Units>("units");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("ascii") << Units{'A', 0x7F} << QByteArray("A\x7F");
    QTest::newRow("zero unit") << Units{'A', 0, 'B'} << QByteArray("A\0B", 3);
    QTest::newRow("euro") << Units{0x20AC} << QByteArray("\x80");
    QTest::newRow("character") << Units{0x4E2D, 0x6587} << QByteArray("\xD6\xD0\xCE\xC4");
    QTest::newRow("first pair") << Units{0xA4} << QByteArray("\xA1\xE8");
    QTest::newRow("unmapped") << Units{0x80} << QByteArray("\0\0", 2);
    QTest::newRow("surrogate") << Units{0xD800} << QByteArray("\0\0", 2);
    QTest::newRow("private use") << Units{0xE000} << QByteArray("\0\0", 2);
    QTest::newRow("last of the page") << Units{0xFFFF} << QByteArray("\0\0", 2);
    QTest::newRow("above the page") << Units{0x1F600, 0xFFFFFFFF} << QByteArray("\0\0\0\0", 4);
    QTest::newRow("low half is not looked up") << Units{0x14E2D} << QByteArray("\0\0", 2);
}

void TestPxcppGbk::fromUnits()
{
    QFETCH(Units, units);
    QFETCH(QByteArray, expected);
    QCOMPARE(gbkOf(units).toHex(), expected.toHex());
}

void TestPxcppGbk::toUnits_data()
{
    QTest::addColumn<QByteArray>("gbk");
    QTest::addColumn<Units>("expected");

    QTest::newRow("ascii") << QByteArray("A\x7F") << Units{'A', 0x7F};
    QTest::newRow("zero octet") << QByteArray("A\0B", 3) << Units{'A', 0, 'B'};
    QTest::newRow("characters") << QByteArray("\xD6\xD0\xCE\xC4") << Units{0x4E2D, 0x6587};
    QTest::newRow("euro swallows") << QByteArray("\x80"
                                                 "A")
                                   << Units{0x20AC};
    QTest::newRow("euro swallows half a character") << QByteArray("\x80\xD6\xD0"
                                                                  "A")
                                                    << Units{0x20AC, 0x8825};
    QTest::newRow("euro at the end") << QByteArray("\x80") << Units{0x20AC};
    QTest::newRow("euro twice") << QByteArray("\x80\x80\x80") << Units{0x20AC, 0x20AC};
    QTest::newRow("lead at the end") << QByteArray("A\xD6") << Units{'A', 0};
    QTest::newRow("pair without a character") << QByteArray("\xFF\xFF"
                                                            "A")
                                              << Units{0, 'A'};
    QTest::newRow("trail below 40") << QByteArray("\xD6\x0A"
                                                  "A")
                                    << Units{0, 'A'};
}

void TestPxcppGbk::toUnits()
{
    QFETCH(QByteArray, gbk);
    QFETCH(Units, expected);
    QCOMPARE(unitsOf(gbk), expected);
}

void TestPxcppGbk::everyPair()
{
    int pairs = 0;
    for (unsigned int lead = 0x81; lead < 0x100; ++lead) {
        for (unsigned int trail = 0; trail < 0x100; ++trail) {
            const QByteArray gbk = QByteArray(1, char(lead)).append(char(trail));
            const Units units = unitsOf(gbk);
            QCOMPARE(units.size(), std::size_t(1));
            if (units[0] != 0) {
                QCOMPARE(gbkOf(units), gbk);
                ++pairs;
            }
        }
    }
    QCOMPARE(pairs, 21791); // and the euro
}

void TestPxcppGbk::utf8_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("empty") << QByteArray("") << QByteArray();
    QTest::newRow("ascii") << QByteArray("AB") << QByteArray("AB");
    QTest::newRow("one octet") << QByteArray("A") << QByteArray("A");
    QTest::newRow("characters") << QByteArray("A\xE4\xB8\xAD\xE6\x96\x87")
                                << QByteArray("A\xD6\xD0\xCE\xC4");
    QTest::newRow("euro") << QByteArray("\xE2\x82\xAC") << QByteArray("\x80");
    QTest::newRow("two octets") << QByteArray("\xCE\x91") << QByteArray("\xA6\xA1");
    QTest::newRow("not in GBK") << QByteArray("\xF0\x9F\x98\x80"
                                              "A")
                                << QByteArray("\0\0A", 3);
    QTest::newRow("stray continuation") << QByteArray("\x80") << QByteArray("\0\0", 2);
}

void TestPxcppGbk::utf8()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expected);
    QCOMPARE(utf8ToGbk(text).toHex(), expected.toHex());
}

void TestPxcppGbk::malformedUtf8_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("start");

    QTest::newRow("refused form of two") << QByteArray("\xC3\xA9") << QByteArray();
    QTest::newRow("cut") << QByteArray("A\xE4\xB8") << QByteArray("A");
    QTest::newRow("lead alone") << QByteArray("\xFF") << QByteArray();
    QTest::newRow("in the middle") << QByteArray("\xE4\xB8\xAD\xE4zz") << QByteArray("\xD6\xD0");
}

void TestPxcppGbk::malformedUtf8()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, start);

    // Zero octets up to 3n + 1 characters in all.
    const int characters = 3 * int(text.size()) + 1;
    const int first = start.isEmpty() ? 0 : 1;
    QCOMPARE(utf8ToGbk(text), start + QByteArray(characters - first, '\0'));
}

void TestPxcppGbk::toUtf8_data()
{
    QTest::addColumn<QByteArray>("gbk");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("empty") << QByteArray("") << QByteArray();
    QTest::newRow("one octet") << QByteArray("A") << QByteArray("A");
    QTest::newRow("characters") << QByteArray("A\xD6\xD0\xCE\xC4")
                                << QByteArray("A\xE4\xB8\xAD\xE6\x96\x87");
    QTest::newRow("euro swallows") << QByteArray("\x80"
                                                 "AB")
                                   << QByteArray("\xE2\x82\xAC"
                                                 "B");
    QTest::newRow("two octets") << QByteArray("\xA1\xE8") << QByteArray("\xC2\xA4");
    QTest::newRow("pair without a character ends") << QByteArray("A\xFF\xFF"
                                                                 "B")
                                                   << QByteArray("A");
    QTest::newRow("lead at the end") << QByteArray("A\xD6") << QByteArray("A");
}

void TestPxcppGbk::toUtf8()
{
    QFETCH(QByteArray, gbk);
    QFETCH(QByteArray, expected);
    QCOMPARE(gbkToUtf8(gbk), expected);
}

void TestPxcppGbk::toUtf8KeepsToSize()
{
    const QByteArray gbk("\xD6\xD0\xD6\xD0\xD6\xD0");
    QCOMPARE(gbkToUtf8(gbk, 1), QByteArray("\xE4\xB8\xAD"));
    QCOMPARE(gbkToUtf8(gbk, 3), QByteArray("\xE4\xB8\xAD\xE4\xB8\xAD"));
    QCOMPARE(gbkToUtf8(gbk, 9).size(), 9);

    char output[12] = "xxxxxxxxxxx";
    QCOMPARE(code_gbk_to_utf8(gbk.constData(), output, 10), 9);
    QCOMPARE(QByteArray(output + 8, 3), QByteArray("\xAD\0x", 3));
    QCOMPARE(code_gbk_to_utf8("", output, 10), 0);
    QCOMPARE(output[0], '\0');
}

void TestPxcppGbk::nothingToDo()
{
    const unsigned int units[] = {'A'};
    unsigned int unit = 7;
    char output[4] = "xxx";
    QCOMPARE(code_unicode_to_gbk(units, output, 0), 0);
    QCOMPARE(code_unicode_to_gbk(units, output, -1), 0);
    QCOMPARE(code_unicode_to_gbk(nullptr, output, 1), 0);
    QCOMPARE(code_unicode_to_gbk(units, nullptr, 1), 0);
    QCOMPARE(code_gbk_to_unicode("A", &unit, 0), 0);
    QCOMPARE(code_gbk_to_unicode("A", &unit, -1), 0);
    QCOMPARE(code_gbk_to_unicode(nullptr, &unit, 1), 0);
    QCOMPARE(code_gbk_to_unicode("A", nullptr, 1), 0);
    QCOMPARE(code_utf8_to_gbk(nullptr, output), 0);
    QCOMPARE(code_utf8_to_gbk("A", nullptr), 0);
    QCOMPARE(code_utf8_to_gbk("", output), 0);
    QCOMPARE(code_gbk_to_utf8(nullptr, output, 3), 0);
    QCOMPARE(code_gbk_to_utf8("A", nullptr, 3), 0);
    QCOMPARE(code_gbk_to_utf8("A", output, 0), 0);
    QCOMPARE(code_gbk_to_utf8("A", output, -1), 0);
    QCOMPARE(output, "xxx");
    QCOMPARE(unit, 7U);
}

void TestPxcppGbk::tooLong()
{
    char output[] = "xxx";
    // Thrice the one length is more than a number holds, thrice the other comes out as 2.
    for (const std::size_t length : {715827883UL, 1431655766UL}) {
        const LongText text(length);
        QCOMPARE(std::strlen(text.get()), length);
        QCOMPARE(code_utf8_to_gbk(text.get(), output), 0);
    }
    const LongText text(std::size_t(INT_MAX) + 1);
    QCOMPARE(std::strlen(text.get()), std::size_t(INT_MAX) + 1);
    QCOMPARE(code_gbk_to_utf8(text.get(), output, 4), 0);
    QCOMPARE(output, "xxx");
}

void TestPxcppGbk::withoutMemory()
{
    const LongText text(20000000);
    const auto result = runWithoutMemory([&] {
        char output[] = "xxx";
        std::printf("%d ", code_utf8_to_gbk(text.get(), output));
        std::printf("%d %s\n", code_gbk_to_utf8(text.get(), output, 4), output);
    });
    QVERIFY2(result.output.endsWith("0 0 xxx\n"), result.output.constData());
}

void TestPxcppGbk::likeIconv()
{
    QRandomGenerator random(1);
    for (int round = 0; round < 500; ++round) {
        QString text;
        while (text.size() < 30) {
            const auto unit = ushort(random.bounded(0x4E00, 0x9FA6));
            text += random.bounded(4) == 0 ? QChar(random.bounded(1, 128)) : QChar(unit);
        }
        const QByteArray utf8 = text.toUtf8();
        const QByteArray gbk = utf8ToGbk(utf8);
        QCOMPARE(gbk, iconvFromUtf8(utf8));
        QCOMPARE(gbkToUtf8(gbk), utf8);
    }
}

void TestPxcppGbk::randomOctets()
{
    // The guards around the buffers are the check; the results only have to be within them.
    QRandomGenerator random(2);
    for (int round = 0; round < 5000; ++round) {
        QByteArray text(random.bounded(30), '\0');
        for (char &octet : text)
            octet = char(random.bounded(1, 256));
        QVERIFY(utf8ToGbk(text).size() <= 2 * (3 * text.size() + 1));
        const int size = random.bounded(1, 60);
        QVERIFY(gbkToUtf8(text, size).size() <= size + 6);
        QVERIFY(unitsOf(text).size() <= std::size_t(text.size()));
    }
}

QTEST_GUILESS_MAIN(TestPxcppGbk)
#include "tst_pxcpp_gbk.moc"
