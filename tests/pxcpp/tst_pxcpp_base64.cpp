#include "tests/support/child_process.h"
#include "tests/support/guarded_buffer.h"
#include "tests/support/printed.h"

#include "pxcpp/base64.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <QRandomGenerator>
#include <QTest>
#include <set>

// How much the library asked for last, and the buffers that it did not give back; the linker hands
// its requests to these. The set is never destroyed: memory is given back until the very end.
static std::size_t asked = 0;
static auto &buffers = *new std::set<void *>;

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names.
extern "C" {
void *__real_calloc(std::size_t count, std::size_t size);
void *__wrap_calloc(std::size_t count, std::size_t size)
{
    asked = count * size;
    void *memory = __real_calloc(count, size);
    if (memory)
        buffers.insert(memory);
    return memory;
}
void __real_free(void *memory);
void __wrap_free(void *memory)
{
    buffers.erase(memory); // no buffer is what a string gives back
    __real_free(memory);
}
void *__real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag);
void *__wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag)
{
    asked = size;
    return __real__ZnamRKSt9nothrow_t(size, tag);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

constexpr char kStandard[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
constexpr char kUrl[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.";

constexpr char kNullData[] = "argument error...... pbtdata is null.\n";
constexpr char kNoMemory[] = "memory not enough...........\n";
constexpr char kNullText[] = "[PXBase64Decode] pszBase64Code == NULL.\n";
constexpr char kNoMemoryToDecode[] = "[PXBase64Decode] malloc error.\n";
constexpr char kNotInTable[] = "[PXBase64Decode] btValue[0] == 0xFF.\n";

struct free_deleter
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using Freed = std::unique_ptr<T, free_deleter>;

/// The text of `data`, or a null array for a null result. Reads nothing past `data`.
QByteArray base64Of(const QByteArray &data)
{
    const GuardedBuffer<char> input(data.constData(), std::size_t(data.size()));
    const Freed<char> text(PXBase64Encode(input.get(), std::uint64_t(data.size())));
    return {text.get()};
}

/// The octets of `text`, or "refused" when a null pointer comes back.
QByteArray octetsOf(const QByteArray &text)
{
    const GuardedBuffer<char> input(text.constData(), std::size_t(text.size()) + 1);
    std::uint64_t length = 12345;
    const Freed<unsigned char> data(PXBase64Decode(input.get(), &length));
    if (!data)
        return length == 12345 ? "refused" : "the length was written";
    if (data.get()[length] != 0)
        return "not terminated";
    return {reinterpret_cast<const char *>(data.get()), int(length)};
}

QByteArray decodedEx(const QByteArray &text, int length, const char *table = kStandard)
{
    const GuardedBuffer<char> input(text.constData(), std::size_t(text.size()) + 1);
    int count = -1;
    const std::unique_ptr<unsigned char[]> data(DeCodeBase64Ex(input.get(), length, table, &count));
    return {reinterpret_cast<const char *>(data.get()), count};
}

/// The lenient decoder in so many words: every position by a search from the table's start.
QByteArray leniently(const QByteArray &text, int length, const QByteArray &table)
{
    const auto valueAt = [&](int position) {
        const char character = position < text.size() ? text[position] : '\0';
        const int index = position <= length ? int(table.indexOf(character)) : -1;
        return index >= 0 ? index : 64;
    };
    QByteArray result;
    for (int i = 0; i < length; i += 4) {
        const int value[] = {valueAt(i), valueAt(i + 1), valueAt(i + 2), valueAt(i + 3)};
        result += char((value[0] << 2) + ((value[1] >> 4) & 3));
        if (value[2] != 64)
            result += char((value[1] << 4) + ((value[2] >> 2) & 15));
        if (value[2] != 64 && value[3] != 64)
            result += char((value[2] << 6) + (value[3] & 63));
    }
    return result;
}

QByteArray encodedEx(const QByteArray &data, const char *table = kStandard)
{
    const GuardedBuffer<char> input(data.constData(), std::size_t(data.size()));
    const Freed<char> text(EnCodeBase64Ex(input.get(), int(data.size()), table));
    return {text.get()};
}

QByteArray randomOctets(QRandomGenerator &random, int size)
{
    QByteArray result(size, '\0');
    for (char &octet : result)
        octet = char(random.bounded(256));
    return result;
}

} // namespace

class TestPxcppBase64 : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { PXBase64SetTableCode(nullptr); }

    void encode_data();
    void encode();
    void encodeMessages();
    void tableIndex();
    void decode_data();
    void decode();
    void decodeRefuses_data();
    void decodeRefuses();
    void decodeMessages();
    void decodeWithoutALength();
    void likeQt();
    void setTable();
    void tableChangedInPlace();
    void defaultTableIsWritable();
    void doubleCharacterInTable();
    void encodeEx_data();
    void encodeEx();
    void encodeExString();
    void encodeExBeyondTheEstimate();
    void decodeEx_data();
    void decodeEx();
    void decodeExAsDescribed();
    void refusalsOfEx();
    void roundTripEx();
    void withoutMemory();
    void sizesOfTheBuffers();
    void refusalsKeepNoBuffer();
};

void TestPxcppBase64::encode_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("text");

    const auto row = [](const QByteArray &data, const char *text) {
        QTest::newRow(text) << data << QByteArray(text);
    };
    row("M", "TQ==");
    row("Ma", "TWE=");
    row("Man", "TWFu");
    // RFC 4648, section 10.
    row("f", "Zg==");
    row("fo", "Zm8=");
    row("foo", "Zm9v");
    row("foob", "Zm9vYg==");
    row("fooba", "Zm9vYmE=");
    row("foobar", "Zm9vYmFy");
    row(QByteArray("\0\0\0\0", 4), "AAAAAA==");
    row("\xFF\xFF\xFF\xFF\xFF", "//////8=");
    row("\xFB\xEF\xBE", "++++");
}

void TestPxcppBase64::encode()
{
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, text);
    QCOMPARE(base64Of(data), text);
    QCOMPARE(octetsOf(text), data);
}

void TestPxcppBase64::encodeMessages()
{
    QCOMPARE(printedBy([] { QVERIFY(!PXBase64Encode(nullptr, 1)); }), QByteArray(kNullData));
    QCOMPARE(printedBy([] { QVERIFY(!PXBase64Encode(nullptr, 0)); }), QByteArray(kNullData));
    QCOMPARE(printedBy([] { QVERIFY(!PXBase64Encode("M", 0)); }), QByteArray());
    QCOMPARE(printedBy([] { Freed<char>(PXBase64Encode("M", 1)); }), QByteArray());
    // Texts longer than any object, and one whose length comes out as 1.
    for (const std::uint64_t length :
         {std::uint64_t(1) << 61, UINT64_MAX / 4 * 3, std::uint64_t(3) << 62, UINT64_MAX})
        QCOMPARE(printedBy([&] { QVERIFY(!PXBase64Encode("M", length)); }), QByteArray(kNoMemory));
}

void TestPxcppBase64::tableIndex()
{
    for (int character = 0; character < 256; ++character) {
        const int position = int(QByteArray(kStandard).indexOf(char(character)));
        QCOMPARE(int(GetTableIndex(char(character))), position >= 0 ? position : 255);
    }
    QCOMPARE(int(GetTableIndex('A')), 0);
    QCOMPARE(int(GetTableIndex('/')), 63);
    QCOMPARE(int(GetTableIndex('=')), 64);
}

void TestPxcppBase64::decode_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("data");

    const auto row = [](const char *text, const QByteArray &data) {
        QTest::newRow(text) << QByteArray(text) << data;
    };
    row("", QByteArray());
    row("TQ==", "M");
    row("TWE=", "Ma");
    row("TWFu", "Man");
    // Bits that padding leaves over are not looked at.
    row("TR==", "M");
    row("TWF=", "Ma");
    // Padding before the last group is zero bits and goes unnoticed.
    row("TQ==TWFu", QByteArray("M\0\0Man", 6));
    row("T===", "L");
    row("====", QByteArray("\0", 1));
    row("TWFu====", QByteArray("Man\0", 4));
    row("=WFu", "\x01"
                "an");
    row("T=Fu", "L\x01n");
    // The third character alone says that two octets are missing.
    row("TW=u", "M");
}

void TestPxcppBase64::decode()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, data);
    QCOMPARE(printedBy([&] { QCOMPARE(octetsOf(text), data); }), QByteArray());
}

void TestPxcppBase64::decodeRefuses_data()
{
    QTest::addColumn<QByteArray>("text");

    for (const char *text : {"T", "TW", "TWF", "TWFuT", "TWFuTWF", "TQ=", "TWFu\n", "TW\nFu==="})
        QTest::newRow(QByteArray(text).replace('\n', "(LF)")) << QByteArray(text);
    for (const char wrong : {'\n', '\r', ' ', '-', '_', '.', '\x01', '\x80', '\xFF'}) {
        for (int i = 0; i < 8; ++i) {
            QByteArray text("TWFuTWFu");
            text[i] = wrong;
            QTest::addRow("%02X at %d", static_cast<unsigned char>(wrong), i) << text;
        }
    }
}

void TestPxcppBase64::decodeRefuses()
{
    QFETCH(QByteArray, text);
    const QByteArray printed = printedBy([&] { QCOMPARE(octetsOf(text), QByteArray("refused")); });
    QCOMPARE(printed, QByteArray(kNotInTable));
}

void TestPxcppBase64::decodeMessages()
{
    std::uint64_t length = 7;
    QCOMPARE(printedBy([&] { QVERIFY(!PXBase64Decode(nullptr, &length)); }), QByteArray(kNullText));
    QCOMPARE(length, std::uint64_t(7));
}

void TestPxcppBase64::decodeWithoutALength()
{
    const Freed<unsigned char> data(PXBase64Decode("TWE=", nullptr));
    QCOMPARE(reinterpret_cast<const char *>(data.get()), "Ma");
    QVERIFY(Freed<unsigned char>(PXBase64Decode("", nullptr)));
}

void TestPxcppBase64::likeQt()
{
    QRandomGenerator random(1);
    for (int size = 1; size < 600; ++size) {
        const QByteArray data = randomOctets(random, size);
        QCOMPARE(base64Of(data), data.toBase64());
        QCOMPARE(octetsOf(data.toBase64()), data);
    }
}

void TestPxcppBase64::setTable()
{
    char table[66] = {};
    std::copy_n(kUrl, 66, table);
    QVERIFY(PXBase64SetTableCode(table) == table);
    QCOMPARE(base64Of("\xFB\xEF\xBEM"), QByteArray("----TQ.."));
    QCOMPARE(octetsOf("----TQ.."), QByteArray("\xFB\xEF\xBEM"));
    QCOMPARE(printedBy([] { QCOMPARE(octetsOf("TQ=="), QByteArray("refused")); }),
             QByteArray(kNotInTable));
    QCOMPARE(int(GetTableIndex('.')), 64);
    QCOMPARE(int(GetTableIndex('=')), 255);

    const char *standard = PXBase64SetTableCode(nullptr);
    QCOMPARE(standard, kStandard);
    QVERIFY(PXBase64SetTableCode(nullptr) == standard);
    QCOMPARE(base64Of("M"), QByteArray("TQ=="));
    QCOMPARE(int(GetTableIndex('=')), 64);
}

void TestPxcppBase64::tableChangedInPlace()
{
    char table[66] = {};
    std::copy_n(kStandard, 66, table);
    PXBase64SetTableCode(table);
    QCOMPARE(octetsOf("TWFu"), QByteArray("Man"));
    std::swap(table[19], table[20]); // T and U
    table[64] = '*';
    QCOMPARE(octetsOf("UWFu"), QByteArray("Man"));
    QCOMPARE(octetsOf("UQ**"), QByteArray("M"));
    QCOMPARE(base64Of("M"), QByteArray("UQ**"));
    QCOMPARE(int(GetTableIndex('T')), 20);
}

void TestPxcppBase64::defaultTableIsWritable()
{
    char *standard = PXBase64SetTableCode(nullptr);
    standard[64] = '~';
    QCOMPARE(base64Of("M"), QByteArray("TQ~~"));
    QCOMPARE(octetsOf("TQ~~"), QByteArray("M"));
    standard[64] = '=';
    QCOMPARE(base64Of("M"), QByteArray("TQ=="));
}

void TestPxcppBase64::doubleCharacterInTable()
{
    char table[66] = {};
    std::copy_n(kStandard, 66, table);
    table[63] = 'A';
    PXBase64SetTableCode(table);
    QCOMPARE(int(GetTableIndex('A')), 0);
    QCOMPARE(octetsOf("AAAA"), QByteArray("\0\0\0", 3));
    QCOMPARE(decodedEx("AAAA", 4, table), QByteArray("\0\0\0", 3));
}

void TestPxcppBase64::encodeEx_data()
{
    encode_data();
}

void TestPxcppBase64::encodeEx()
{
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, text);
    QCOMPARE(encodedEx(data), text);
    QCOMPARE(decodedEx(text, int(text.size())), data);
    QCOMPARE(PXBase64EncodeEx(data), QString::fromLatin1(text));
}

void TestPxcppBase64::encodeExString()
{
    QCOMPARE(printedBy([] {
                 QVERIFY(PXBase64EncodeEx(QByteArray()).isNull());
                 QVERIFY(PXBase64EncodeEx(QByteArray("")).isNull());
             }),
             QByteArray());

    const QByteArray data("Man");
    QCOMPARE(PXBase64EncodeEx(data), QString("TWFu"));
    QCOMPARE(data, QByteArray("Man"));

    char table[66] = {};
    std::copy_n(kStandard, 66, table);
    table[64] = '\xA4';
    PXBase64SetTableCode(table);
    QCOMPARE(PXBase64EncodeEx(QByteArray("M")), QString("TQ") + QString(2, QChar(0xA4)));
}

void TestPxcppBase64::encodeExBeyondTheEstimate()
{
    QRandomGenerator random(2);
    for (const int size : {12582909, 12582910, 12582911, 12582912}) {
        const QByteArray data = randomOctets(random, 1000).repeated(12583).left(size);
        QCOMPARE(data.size(), size);
        QCOMPARE(encodedEx(data), data.toBase64());
    }
}

void TestPxcppBase64::decodeEx_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("data");

    const auto row = [](const char *name, const char *text, int length, const QByteArray &data) {
        QTest::newRow(name) << QByteArray(text) << length << data;
    };
    row("empty", "", 0, QByteArray());
    row("nothing wanted", "TWFu", 0, QByteArray());
    row("less than nothing", "TWFu", -5, QByteArray());
    row("one group", "TWFu", 4, "Man");
    row("padding", "TQ==", 4, "M");
    row("padding ends its own group only", "TQ==TWE=TWFu", 12, "MMaMan");
    row("line break as padding", "TWFu\nTWFu", 9, "Man\x01\x35\x85\xB8");
    row("line break after three", "TWF\nTQ==", 8, "MaM");
    row("cut after three", "TWF", 3, "Ma");
    row("cut after two", "TW", 2, "M");
    row("cut after one", "T", 1, "L");
    row("the character at the length counts", "TWFu", 3, "Man");
    row("but not the one after it", "TWFu", 2, "Ma");
    row("first of a group at the length is left", "TWFuT", 4, "Man");
    row("all unknown", "????", 4, QByteArray("\0", 1));
    row("high octets", "\xFF\xFE\x80\x81", 4, QByteArray("\0", 1));
}

void TestPxcppBase64::decodeEx()
{
    QFETCH(QByteArray, text);
    QFETCH(int, length);
    QFETCH(QByteArray, data);
    QCOMPARE(printedBy([&] { QCOMPARE(decodedEx(text, length).toHex(), data.toHex()); }),
             QByteArray());
}

void TestPxcppBase64::decodeExAsDescribed()
{
    QRandomGenerator random(3);
    // A table may be longer or shorter than 65 characters here.
    const QByteArray tables[] = {kStandard, kUrl, QByteArray(kStandard) + "!?*#", "ABCD", ""};
    for (const QByteArray &table : tables) {
        for (int round = 0; round < 3000; ++round) {
            QByteArray text(random.bounded(1, 40), '\0');
            for (char &character : text) {
                character = random.bounded(8) == 0
                                ? char(random.bounded(1, 256))
                                : (table + "=")[random.bounded(table.size() + 1)];
            }
            const int length = random.bounded(int(text.size()) + 1);
            QCOMPARE(decodedEx(text, length, table).toHex(),
                     leniently(text, length, table).toHex());
        }
    }
}

void TestPxcppBase64::refusalsOfEx()
{
    int count = 7;
    const QByteArray printed = printedBy([&] {
        QVERIFY(!DeCodeBase64Ex(nullptr, 4, kStandard, &count));
        QVERIFY(!DeCodeBase64Ex(nullptr, 0, kStandard, &count));
        QVERIFY(!DeCodeBase64Ex("TWFu", 4, nullptr, &count));
        QVERIFY(!EnCodeBase64Ex(nullptr, 3, kStandard));
        QVERIFY(!EnCodeBase64Ex(nullptr, 0, kStandard));
        QVERIFY(!EnCodeBase64Ex("Man", 3, nullptr));
    });
    QCOMPARE(printed, QByteArray());
    QCOMPARE(count, 7);

    for (const int length : {0, -1, -100, std::numeric_limits<int>::min()}) {
        const Freed<char> text(EnCodeBase64Ex("Man", length, kStandard));
        QCOMPARE(text.get(), "");
        const std::unique_ptr<unsigned char[]> data(
            DeCodeBase64Ex("TWFu", length, kStandard, &count));
        QVERIFY(data);
        QCOMPARE(int(data[0]), 0);
        QCOMPARE(count, 0);
    }
    const std::unique_ptr<unsigned char[]> data(DeCodeBase64Ex("TWFu", 4, kStandard, nullptr));
    QCOMPARE(int(data[0]), int('M'));
}

void TestPxcppBase64::roundTripEx()
{
    QRandomGenerator random(4);
    for (int size = 1; size < 600; ++size) {
        const QByteArray data = randomOctets(random, size);
        for (const char *table : {kStandard, kUrl}) {
            const QByteArray text = encodedEx(data, table);
            QCOMPARE(text.size(), (size + 2) / 3 * 4);
            QCOMPARE(decodedEx(text, int(text.size()), table), data);
        }
        QCOMPARE(encodedEx(data), data.toBase64());
    }
}

void TestPxcppBase64::withoutMemory()
{
    // No heap for the text: the sanitizer's limit holds for it, too.
    const std::size_t size = std::size_t(128) << 20;
    const GuardedBuffer<char> text(size + 4);
    std::fill_n(text.get(), size, 'A');
    text[size] = '\0';

    // A sanitizer adds a line of its own before.
    const auto decoding = runWithoutMemory([&] { PXBase64Decode(text.get(), nullptr); });
    QVERIFY2(decoding.output.endsWith(kNoMemoryToDecode), decoding.output.constData());
    const auto encoding = runWithoutMemory([&] { PXBase64Encode(text.get(), size); });
    QVERIFY2(encoding.output.endsWith(kNoMemory), encoding.output.constData());
    const auto silent = runWithoutMemory([&] {
        int count = 7;
        const bool null = !DeCodeBase64Ex(text.get(), int(size), kStandard, &count) &&
                          !EnCodeBase64Ex(text.get(), int(size), kStandard);
        std::puts(null && count == 7 ? "null" : "something");
    });
    QVERIFY2(silent.output.endsWith("null\n"), silent.output.constData());
}

// Callers may count on the octets behind a result, and on no more.
void TestPxcppBase64::sizesOfTheBuffers()
{
    const QByteArray data(400, 'x');
    const QByteArray text(400, 'A');
    for (int size = 1; size <= 400; ++size) {
        const Freed<char> base64Of(PXBase64Encode(data.constData(), std::uint64_t(size)));
        QCOMPARE(asked, std::size_t(size + 2) / 3 * 4 + 1);
        if (size % 4 == 0) {
            const Freed<unsigned char> octets(PXBase64Decode(text.left(size).constData(), nullptr));
            QCOMPARE(asked, std::size_t(size) / 4 * 3 + 1);
        }
        const std::unique_ptr<unsigned char[]> octets(
            DeCodeBase64Ex(text.constData(), size, kStandard, nullptr));
        QCOMPARE(asked, std::size_t(size));
    }
    // A text by table is given four characters more than its groups take.
    for (const auto &[size, octets] :
         {std::pair(0, 5), {1, 6}, {2, 7}, {3, 9}, {4, 10}, {300, 405}}) {
        const Freed<char> base64Of(EnCodeBase64Ex(data.constData(), size, kStandard));
        QCOMPARE(asked, std::size_t(octets));
    }
}

void TestPxcppBase64::refusalsKeepNoBuffer()
{
    buffers.clear();
    QVERIFY(!EnCodeBase64Ex(nullptr, 3, kStandard));
    QVERIFY(!EnCodeBase64Ex("Man", 3, nullptr));
    QVERIFY(!PXBase64Decode("TWF?", nullptr));
    QVERIFY(!PXBase64Decode("TWF", nullptr));
    QCOMPARE(PXBase64EncodeEx("Man"), QStringLiteral("TWFu"));
    QVERIFY(buffers.empty());
}

QTEST_GUILESS_MAIN(TestPxcppBase64)
#include "tst_pxcpp_base64.moc"
