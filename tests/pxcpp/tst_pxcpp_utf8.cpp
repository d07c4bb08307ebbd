#include "tests/pxcpp/units.h"
#include "tests/support/child_process.h"
#include "tests/support/guarded_buffer.h"

#include "pxcpp/code_convert.h"

#include <algorithm>
#include <array>
#include <QRandomGenerator>
#include <QTest>
#include <vector>

namespace {

/// The octets of one code point as the encoder writes them.
QByteArray encoded(long unicode)
{
    char output[6];
    return {output, code_unicode_to_utf8_one(unicode, output, 0)};
}

struct decoded_one
{
    int consumed;
    long unicode;
};

/// Decodes the first sequence of a text that ends in its terminator and a guard.
decoded_one decoded(const QByteArray &text)
{
    const GuardedBuffer<char> input(text.constData(), std::size_t(text.size()) + 1);
    decoded_one result{0, -1};
    result.consumed = code_utf8_to_unicode_one(input.get(), &result.unicode);
    return result;
}

/// The decoder's table of octets, written out: what a sequence of continuation octets must give.
long byTheTable(const QByteArray &sequence)
{
    std::array<int, 7> b{};
    for (int i = 0; i < sequence.size(); ++i)
        b[std::size_t(i) + 1] = static_cast<unsigned char>(sequence[i]);
    std::array<int, 4> octets{};
    switch (sequence.size()) {
    case 1:
        octets = {b[1], 0, 0, 0};
        break;
    case 2:
        octets = {(b[1] << 6) + (b[2] & 0x3F), (b[1] >> 2) & 0x07, 0, 0};
        break;
    case 3:
        octets = {(b[2] << 6) + (b[3] & 0x3F), (b[1] << 4) + ((b[2] >> 2) & 0x0F), 0, 0};
        break;
    case 4:
        octets = {(b[3] << 6) + (b[4] & 0x3F), (b[2] << 4) + ((b[3] >> 2) & 0x0F),
                  ((b[1] & 0x07) << 2) + ((b[2] >> 4) & 0x03), 0};
        break;
    case 5:
        octets = {(b[4] << 6) + (b[5] & 0x3F), (b[3] << 4) + ((b[4] >> 2) & 0x0F),
                  (b[2] << 2) + ((b[3] >> 4) & 0x03), (b[1] & 0x03) << 6};
        break;
    default:
        octets = {(b[5] << 6) + (b[6] & 0x3F), (b[5] << 4) + ((b[6] >> 2) & 0x0F),
                  (b[3] << 2) + ((b[4] >> 4) & 0x03), ((b[1] & 0x01) << 6) + (b[2] & 0x3F)};
    }
    long result = 0;
    for (int i = 0; i < 4; ++i)
        result |= long(octets[std::size_t(i)] & 0xFF) << (8 * i);
    return result;
}

std::vector<unsigned int> units(const QByteArray &text, int capacity, int &count)
{
    const GuardedBuffer<unsigned int> output(std::size_t(capacity) + 1);
    const GuardedBuffer<char> input(text.constData(), std::size_t(text.size()) + 1);
    count = code_utf8_to_unicode(input.get(), output.get(), capacity);
    return {output.get(), output.get() + capacity + 1};
}

constexpr unsigned int kUntouched = 0xA5A5A5A5;

} // namespace

class TestPxcppUtf8 : public QObject
{
    Q_OBJECT

private slots:
    void sequenceLength();
    void statistics_data();
    void statistics();
    void statisticsAddUp();
    void encodeLimits_data();
    void encodeLimits();
    void encodeLikeQt();
    void decodeLimits_data();
    void decodeLimits();
    void decodeByTheTable();
    void decodeRefuses_data();
    void decodeRefuses();
    void decodeTwoOctets();
    void roundTripOne();
    void encodeArray_data();
    void encodeArray();
    void encodeArrayRefuses();
    void encodeArrayEndsWithinSixOctets();
    void decodeArray_data();
    void decodeArray();
    void decodeArrayRefuses();
    void decodeArrayKeepsToCapacity();
    void roundTripArrays();
    void assertions();
};

void TestPxcppUtf8::sequenceLength()
{
    for (int first = 0; first < 256; ++first) {
        const int expected = first < 0xC0   ? 1
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF8 ? 4
                             : first < 0xFC ? 5
                                            : 6;
        QCOMPARE(code_get_utf8_byte_size(static_cast<unsigned char>(first)), expected);
    }
    QCOMPARE(code_get_utf8_byte_size(0x80), 1);
    QCOMPARE(code_get_utf8_byte_size(0xFE), 6);
    QCOMPARE(code_get_utf8_byte_size(0xF8), 5);
}

void TestPxcppUtf8::statistics_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QVector<int>>("expected");

    using Counters = QVector<int>;
    QTest::newRow("empty") << QByteArray("") << Counters{0, 0, 0, 0, 0, 0, 0};
    QTest::newRow("ascii") << QByteArray("abc") << Counters{3, 3, 0, 0, 0, 0, 0};
    QTest::newRow("one of each") << QByteArray("A\xC2\x80\xE4\xB8\xAD\xF0\x9F\x98\x80"
                                               "\xF8\x88\x80\x80\x80\xFC\x84\x80\x80\x80\x80")
                                 << Counters{6, 1, 1, 1, 1, 1, 1};
    QTest::newRow("stray continuation") << QByteArray("\x80\xBF") << Counters{2, 2, 0, 0, 0, 0, 0};
    QTest::newRow("steps over what follows")
        << QByteArray("\xE4zzA") << Counters{2, 1, 0, 1, 0, 0, 0};
    QTest::newRow("cut by the terminator")
        << QByteArray("A\xFC\x84") << Counters{2, 1, 0, 0, 0, 0, 1};
    QTest::newRow("lead at the end") << QByteArray("\xE4") << Counters{1, 0, 0, 1, 0, 0, 0};
}

void TestPxcppUtf8::statistics()
{
    QFETCH(QByteArray, text);
    QFETCH(QVector<int>, expected);

    const GuardedBuffer<char> input(text.constData(), std::size_t(text.size()) + 1);
    const GuardedBuffer<int> counters(7);
    std::fill_n(counters.get(), 7, 0);
    code_get_utf8_length(input.get(), counters.get());
    QCOMPARE(QVector<int>(counters.get(), counters.get() + 7), expected);
}

void TestPxcppUtf8::statisticsAddUp()
{
    int counters[7] = {10, 20, 30, 40, 50, 60, 70};
    code_get_utf8_length(nullptr, counters);
    QCOMPARE(counters[0], 10);
    code_get_utf8_length("A\xC2\x80", counters);
    const int expected[7] = {12, 21, 31, 40, 50, 60, 70};
    QVERIFY(std::equal(counters, counters + 7, expected));
}

void TestPxcppUtf8::encodeLimits_data()
{
    QTest::addColumn<qlonglong>("unicode");
    QTest::addColumn<QByteArray>("expected");

    const auto row = [](const char *name, qlonglong unicode, const char *hex) {
        QTest::newRow(name) << unicode << QByteArray::fromHex(hex);
    };
    row("zero", 0, "00");
    row("last of 1", 0x7F, "7F");
    row("first of 2", 0x80, "C280");
    row("last of 2", 0x7FF, "DFBF");
    row("first of 3", 0x800, "E0A080");
    row("last of 3", 0xFFFF, "EFBFBF");
    row("first of 4", 0x10000, "F0908080");
    row("last of 4", 0x1FFFFF, "F7BFBFBF");
    row("first of 5", 0x200000, "F888808080");
    row("last of 5", 0x3FFFFFF, "FBBFBFBFBF");
    row("first of 6", 0x4000000, "FC8480808080");
    row("last of 6", 0x7FFFFFFF, "FDBFBFBFBFBF");
    row("above", 0x80000000, "");
    row("far above", 0x7FFFFFFFFFFFFFFF, "");
    row("lone surrogate", 0xD800, "EDA080");
    row("minus one", -1, "7F");
    row("low bits of a negative", -128, "00");
    row("lowest", std::numeric_limits<qlonglong>::min() + 0x41, "41");
}

void TestPxcppUtf8::encodeLimits()
{
    QFETCH(qlonglong, unicode);
    QFETCH(QByteArray, expected);

    // Writes to the guard at most, and nothing behind what it returns.
    const GuardedBuffer<char> output(6);
    QCOMPARE(code_unicode_to_utf8_one(long(unicode), output.get(), 0), int(expected.size()));
    const QByteArray untouched(6 - expected.size(), '\xA5');
    QCOMPARE(QByteArray(output.get(), 6).toHex(), (expected + untouched).toHex());
}

void TestPxcppUtf8::encodeLikeQt()
{
    for (uint unicode = 1; unicode <= 0x10FFFF; ++unicode) {
        if (unicode < 0xD800 || unicode > 0xDFFF) {
            // Behind another character, or Qt takes U+FEFF for a byte order mark.
            const char32_t text[] = {U'A', unicode};
            QCOMPARE('A' + encoded(unicode), QString::fromUcs4(text, 2).toUtf8());
        }
    }
}

void TestPxcppUtf8::decodeLimits_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("consumed");
    QTest::addColumn<qlonglong>("unicode");

    const auto row = [](const char *name, const char *hex, int consumed, qlonglong unicode) {
        QTest::newRow(name) << QByteArray::fromHex(hex) << consumed << unicode;
    };
    row("terminator", "", 1, 0);
    row("last of 1", "7F", 1, 0x7F);
    row("stray continuation", "80", 1, 0x80);
    row("last stray continuation", "BF", 1, 0xBF);
    row("first of 2", "C280", 2, 0x80);
    row("last second octet of 2", "C29F", 2, 0x9F);
    row("last taken of 2", "DF9F", 2, 0x7DF);
    row("overlong 2", "C080", 2, 0);
    row("first of 3", "E0A080", 3, 0x800);
    row("last of 3", "EFBFBF", 3, 0xFFFF);
    row("surrogate", "EDA080", 3, 0xD800);
    row("overlong 3", "E08080", 3, 0);
    row("first of 4", "F0908080", 4, 0x10000);
    row("last of 4", "F7BFBFBF", 4, 0x1FFFFF);
    row("first of 5", "F888808080", 5, 0x200000);
    row("last of 5 that comes back", "F8BFBFBFBF", 5, 0xFFFFFF);
    row("bits 24 and 25 of 5 land in 30 and 31", "F980808080", 5, 0x40000000);
    row("last of 5", "FBBFBFBFBF", 5, 0xC0FFFFFF);
    row("first of 6", "FC8480808080", 6, 0x4000000);
    row("last of 6", "FDBFBFBFBFBF", 6, 0x7FFFFFFF);
    row("6 with the fifth octet twice", "FC8080818180", 6, 0x1040);
    row("lead FF", "FF8480808081", 6, 0x44000001);
    row("what follows is not read", "41C2", 1, 0x41);
}

void TestPxcppUtf8::decodeLimits()
{
    QFETCH(QByteArray, text);
    QFETCH(int, consumed);
    QFETCH(qlonglong, unicode);
    const decoded_one result = decoded(text);
    QCOMPARE(result.consumed, consumed);
    QCOMPARE(qlonglong(result.unicode), unicode);
}

void TestPxcppUtf8::decodeByTheTable()
{
    QRandomGenerator random(1);
    for (int first = 0xC0; first < 256; ++first) {
        const int size = code_get_utf8_byte_size(static_cast<unsigned char>(first));
        for (int round = 0; round < 300; ++round) {
            QByteArray text(1, char(first));
            while (text.size() < size)
                text.append(char(0x80 + random.bounded(size == 2 ? 0x20 : 0x40)));
            const decoded_one result = decoded(text);
            QCOMPARE(result.consumed, size);
            QCOMPARE(result.unicode, byTheTable(text));
        }
    }
}

void TestPxcppUtf8::decodeRefuses_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("2 with a second octet above 9F") << QByteArray("\xC3\xA9");
    // Cut after every octet, and with every continuation octet replaced in turn.
    const QByteArrayList whole = {"\xC2\x80", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80",
                                  "\xF8\x88\x80\x80\x80", "\xFC\x84\x80\x80\x80\x80"};
    for (const QByteArray &sequence : whole) {
        for (int i = 1; i < sequence.size(); ++i) {
            QTest::addRow("%d cut to %d", int(sequence.size()), i) << sequence.left(i);
            for (const char wrong : {'\x7F', '\xC0', '\xFF', 'A'}) {
                QByteArray text = sequence;
                text[i] = wrong;
                QTest::addRow("%d with octet %d %02X", int(sequence.size()), i,
                              static_cast<unsigned char>(wrong))
                    << text;
            }
        }
    }
}

void TestPxcppUtf8::decodeRefuses()
{
    QFETCH(QByteArray, text);
    const decoded_one result = decoded(text);
    QCOMPARE(result.consumed, 0);
    QCOMPARE(result.unicode, 0L);
}

void TestPxcppUtf8::decodeTwoOctets()
{
    for (long unicode = 0x80; unicode < 0x800; ++unicode) {
        const decoded_one result = decoded(encoded(unicode));
        const bool taken = (unicode & 0x20) == 0;
        QCOMPARE(result.consumed, taken ? 2 : 0);
        QCOMPARE(result.unicode, taken ? unicode : 0);
    }
}

void TestPxcppUtf8::roundTripOne()
{
    const auto comesBack = [](long unicode) {
        const QByteArray text = encoded(unicode);
        const decoded_one result = decoded(text);
        return result.consumed == text.size() && result.unicode == unicode;
    };
    for (long unicode = 0x800; unicode < 0x10000; ++unicode)
        QVERIFY(comesBack(unicode));
    QRandomGenerator random(2);
    for (int round = 0; round < 100000; ++round) {
        QVERIFY(comesBack(random.bounded(0x10000, 0x200000)));
        QVERIFY(comesBack(random.bounded(0x200000, 0x1000000)));
    }
}

void TestPxcppUtf8::encodeArray_data()
{
    QTest::addColumn<Units>("input");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<bool>("terminated");

    QTest::newRow("empty") << Units{} << 1 << QByteArray() << true;
    QTest::newRow("one, with room") << Units{'A'} << 2 << QByteArray("A") << true;
    QTest::newRow("one, no room to terminate") << Units{'A'} << 1 << QByteArray("A") << false;
    QTest::newRow("several") << Units{'A', 0xE9, 0x4E2D, 0x1F600, 0x200000, 0x7FFFFFFF} << 100
                             << QByteArray("A\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80\xF8\x88\x80\x80"
                                           "\x80\xFD\xBF\xBF\xBF\xBF\xBF")
                             << true;
    QTest::newRow("goes on while the size is met")
        << Units{'A', 'B', 'C', 'D'} << 2 << QByteArray("ABC") << false;
    QTest::newRow("six beyond") << Units{'A', 0x7FFFFFFF, 'B'} << 1
                                << QByteArray("A\xFD\xBF\xBF\xBF\xBF\xBF") << false;
    QTest::newRow("last one beyond") << Units{0x4E2D} << 1 << QByteArray("\xE4\xB8\xAD") << false;
    QTest::newRow("above the limit")
        << Units{'A', 0x80000000, 0xFFFFFFFF, 'B'} << 10 << QByteArray("AB") << true;
    QTest::newRow("lone surrogates")
        << Units{0xDC00, 0xD800} << 10 << QByteArray("\xED\xB0\x80\xED\xA0\x80") << true;
}

void TestPxcppUtf8::encodeArray()
{
    QFETCH(Units, input);
    QFETCH(int, size);
    QFETCH(QByteArray, expected);
    QFETCH(bool, terminated);

    input.push_back(0);
    const GuardedBuffer<unsigned int> source(input.data(), input.size());
    const GuardedBuffer<char> output(std::size_t(size) + 6);
    QCOMPARE(code_unicode_to_utf8(source.get(), output.get(), size), int(expected.size()));
    QCOMPARE(QByteArray(output.get(), expected.size()), expected);
    if (expected.size() < size + 6)
        QCOMPARE(output[std::size_t(expected.size())], terminated ? '\0' : '\xA5');
}

void TestPxcppUtf8::encodeArrayRefuses()
{
    const unsigned int input[] = {'A', 0};
    char output[8] = "xxxxxxx";
    QCOMPARE(code_unicode_to_utf8(nullptr, output, 8), 0);
    QCOMPARE(code_unicode_to_utf8(input, nullptr, 8), 0);
    QCOMPARE(code_unicode_to_utf8(input, output, 0), 0);
    QCOMPARE(code_unicode_to_utf8(input, output, -1), 0);
    QCOMPARE(output, "xxxxxxx");
}

void TestPxcppUtf8::encodeArrayEndsWithinSixOctets()
{
    QRandomGenerator random(3);
    for (int round = 0; round < 2000; ++round) {
        Units input(20);
        for (unsigned int &unit : input) {
            unit = (random.generate() & 0x7FFFFFFF) >> random.bounded(31);
            unit = std::max(unit, 1U);
        }
        input.push_back(0);
        const int size = random.bounded(1, 60);
        const GuardedBuffer<char> output(std::size_t(size) + 6);
        const int written = code_unicode_to_utf8(input.data(), output.get(), size);

        QByteArray expected;
        for (std::size_t i = 0; input[i] != 0 && expected.size() <= size; ++i)
            expected += encoded(long(input[i]));
        QCOMPARE(QByteArray(output.get(), written), expected);
    }
}

void TestPxcppUtf8::decodeArray_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("capacity");
    QTest::addColumn<int>("count");
    QTest::addColumn<Units>("expected"); // all capacity + 1 units

    QTest::newRow("empty") << QByteArray("") << 1 << 0 << Units{0, kUntouched};
    QTest::newRow("terminated") << QByteArray("AB") << 3 << 2 << Units{'A', 'B', 0, kUntouched};
    QTest::newRow("as many as the capacity")
        << QByteArray("AB") << 2 << 2 << Units{'A', 'B', kUntouched};
    QTest::newRow("one more than the capacity")
        << QByteArray("ABC") << 2 << 3 << Units{'A', 'B', 'C'};
    QTest::newRow("longer") << QByteArray("ABCDEF") << 2 << 3 << Units{'A', 'B', 'C'};
    QTest::newRow("malformed fills")
        << QByteArray("A\xC3\xA9z") << 4 << 5 << Units{'A', 0, 0, 0, 0};
    QTest::newRow("cut fills") << QByteArray("A\xE4\xB8") << 3 << 4 << Units{'A', 0, 0, 0};
    QTest::newRow("overlong zero goes on") << QByteArray("\xC0\x80"
                                                         "A")
                                           << 3 << 2 << Units{0, 'A', 0, kUntouched};
    QTest::newRow("all lengths") << QByteArray("A\xC2\x80\xE4\xB8\xAD\xF0\x9F\x98\x80\xF8\x88\x80"
                                               "\x80\x80\xFC\x84\x80\x80\x80\x80")
                                 << 7 << 6 << Units{'A',      0x80,      0x4E2D, 0x1F600,
                                                    0x200000, 0x4000000, 0,      kUntouched};
}

void TestPxcppUtf8::decodeArray()
{
    QFETCH(QByteArray, text);
    QFETCH(int, capacity);
    QFETCH(int, count);
    QFETCH(Units, expected);

    int counted = -1;
    QCOMPARE(units(text, capacity, counted), expected);
    QCOMPARE(counted, count);
}

void TestPxcppUtf8::decodeArrayRefuses()
{
    unsigned int output[2] = {7, 7};
    QCOMPARE(code_utf8_to_unicode(nullptr, output, 2), 0);
    QCOMPARE(code_utf8_to_unicode("A", nullptr, 2), 0);
    QCOMPARE(code_utf8_to_unicode("A", output, 0), 0);
    QCOMPARE(code_utf8_to_unicode("A", output, -1), 0);
    QCOMPARE(output[0], 7U);
}

void TestPxcppUtf8::decodeArrayKeepsToCapacity()
{
    QRandomGenerator random(4);
    for (int round = 0; round < 5000; ++round) {
        QByteArray text(random.bounded(40), '\0');
        for (char &octet : text)
            octet = char(random.bounded(1, 256));
        const int capacity = random.bounded(1, 40);
        int counted = -1;
        const Units result = units(text, capacity, counted);
        QVERIFY(counted >= 0 && counted <= capacity + 1);
        if (counted < capacity)
            QCOMPARE(result[std::size_t(counted)], 0U);
    }
}

void TestPxcppUtf8::roundTripArrays()
{
    QRandomGenerator random(5);
    for (int round = 0; round < 2000; ++round) {
        Units input(std::size_t(random.bounded(1, 50)));
        for (unsigned int &unit : input) {
            unit = random.bounded(3) == 0 ? random.bounded(1U, 0x80U)
                                          : random.bounded(0x800U, 0x200000U);
        }
        input.push_back(0);
        const int size = int(input.size()) * 4;
        const GuardedBuffer<char> text(std::size_t(size) + 6);
        QVERIFY(code_unicode_to_utf8(input.data(), text.get(), size) > 0);
        int counted = -1;
        Units back = units(text.get(), int(input.size()), counted);
        back.pop_back();
        QCOMPARE(back, input);
        QCOMPARE(counted, int(input.size()) - 1);
    }
}

void TestPxcppUtf8::assertions()
{
    long unicode = 0;
    const struct
    {
        child_end end;
        QByteArray text;
    } cases[] = {
        {runInChild([] { code_unicode_to_utf8_one('A', nullptr, 6); }),
         "pxcpp/code_convert:103: code_unicode_to_utf8_one: Assertion `pOutput != NULL' failed."},
        {runInChild([&] { code_utf8_to_unicode_one(nullptr, &unicode); }),
         "pxcpp/code_convert:169: code_utf8_to_unicode_one: Assertion `pInput != NULL && unicode "
         "!= NULL' failed."},
        {runInChild([] { code_utf8_to_unicode_one("A", nullptr); }),
         "pxcpp/code_convert:169: code_utf8_to_unicode_one: Assertion `pInput != NULL && unicode "
         "!= NULL' failed."},
    };
    for (const auto &[end, text] : cases) {
        QCOMPARE(end.signal, SIGABRT);
        QVERIFY2(end.output.contains(text), end.output.constData());
    }
}

QTEST_GUILESS_MAIN(TestPxcppUtf8)
#include "tst_pxcpp_utf8.moc"
