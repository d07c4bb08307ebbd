#include "tests/support/guarded_buffer.h"
#include "tests/support/message_recorder.h"

#include "pxcpp/code_convert.h"

#include <QRandomGenerator>
#include <QTest>
#include <vector>

namespace {

QString address(const void *pointer)
{
    return QString("0x%1").arg(quintptr(pointer), 0, 16);
}

/// Big-endian units one to a 32-bit slot, as the slot form takes them; no slot after them.
std::vector<unsigned int> slotsOf(const QByteArray &units)
{
    std::vector<unsigned int> result(std::size_t(units.size() / 2));
    for (std::size_t i = 0; i < result.size(); ++i)
        std::memcpy(&result[i], units.constData() + 2 * i, 2);
    return result;
}

/// What both forms write for a text.
void addRows()
{
    QTest::addColumn<QByteArray>("units");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<bool>("terminated");

    const auto row = [](const char *name, const char *hex, int size, const char *expected,
                        bool terminated) {
        QTest::newRow(name) << QByteArray::fromHex(hex) << size << QByteArray(expected)
                            << terminated;
    };
    row("two units", "00410042", 3, "AB", true);
    row("no room to terminate", "00410042", 2, "AB", false);
    row("every length", "004100E94E2D", 100, "A\xC3\xA9\xE4\xB8\xAD", true);
    row("limits", "007F008007FF0800FFFF", 100, "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF",
        true);
    row("goes on while the size is met", "0041004200430044", 2, "ABC", false);
    row("three beyond", "00414E2D0042", 1, "A\xE4\xB8\xAD", false);
    row("last one beyond", "4E2D", 1, "\xE4\xB8\xAD", false);
    row("surrogates stay two characters", "D83DDE00", 10, "\xED\xA0\xBD\xED\xB8\x80", true);
    row("lone surrogate", "DC00", 10, "\xED\xB0\x80", true);
}

} // namespace

class TestPxcppReversebyte : public QObject
{
    Q_OBJECT

private slots:
    void units_data() { addRows(); }
    void units();
    void units32_data() { addRows(); }
    void units32();
    void zeroUnits();
    void zeroSlots();
    void slotHalves();
    void refuses();
    void anyAlignment();
    void likeQt();
    void debugStream();
};

void TestPxcppReversebyte::units()
{
    QFETCH(QByteArray, units);
    QFETCH(int, size);
    QFETCH(QByteArray, expected);
    QFETCH(bool, terminated);

    const GuardedBuffer<char> input(units.constData(), std::size_t(units.size()));
    const GuardedBuffer<char> output(std::size_t(size) + 3);
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE(input.get(), int(units.size() / 2), output.get(),
                                                   size),
             int(expected.size()));
    QCOMPARE(QByteArray(output.get(), expected.size()), expected);
    if (expected.size() < size + 3)
        QCOMPARE(output[std::size_t(expected.size())], terminated ? '\0' : '\xA5');
}

void TestPxcppReversebyte::units32()
{
    QFETCH(QByteArray, units);
    QFETCH(int, size);
    QFETCH(QByteArray, expected);
    QFETCH(bool, terminated);

    const auto slots32 = slotsOf(units);
    const GuardedBuffer<unsigned int> input(slots32.data(), slots32.size());
    const GuardedBuffer<char> output(std::size_t(size) + 3);
    QCOMPARE(code_unicode_to_utf8_reversebyte(input.get(), int(slots32.size()), output.get(), size),
             int(expected.size()));
    QCOMPARE(QByteArray(output.get(), expected.size()), expected);
    if (expected.size() < size + 3)
        QCOMPARE(output[std::size_t(expected.size())], terminated ? '\0' : '\xA5');
}

void TestPxcppReversebyte::zeroUnits()
{
    char output[8] = "xxxxxxx";
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE("\0A\0\0\0B", 3, output, 8), 3);
    QCOMPARE(QByteArray(output, 5), QByteArray("A\0B\0x", 5));
}

void TestPxcppReversebyte::zeroSlots()
{
    // A zero slot ends the text, wherever it stands.
    const auto slots32 = slotsOf(QByteArray("\0A\0\0\0B", 6));
    char output[8] = "xxxxxxx";
    QCOMPARE(code_unicode_to_utf8_reversebyte(slots32.data(), 3, output, 8), 1);
    QCOMPARE(QByteArray(output, 3), QByteArray("A\0x", 3));

    QCOMPARE(code_unicode_to_utf8_reversebyte(slots32.data() + 1, 2, output, 1), 0);
    QCOMPARE(QByteArray(output, 2), QByteArray("\0\0", 2));
}

void TestPxcppReversebyte::slotHalves()
{
    // The second half of a slot is no character, but it keeps the slot from being zero.
    const unsigned char octets[] = {0, 'A', 'y', 'z', 0, 0, 0, 1, 0, 'B', 0, 0, 0, 0, 0, 0};
    unsigned int slots32[4];
    std::memcpy(slots32, octets, sizeof slots32);
    char output[8] = "xxxxxxx";
    QCOMPARE(code_unicode_to_utf8_reversebyte(slots32, 4, output, 8), 3);
    QCOMPARE(QByteArray(output, 5), QByteArray("A\0B\0x", 5));
}

void TestPxcppReversebyte::refuses()
{
    const unsigned int input[2] = {0x4100, 0};
    char output[8] = "xxxxxxx";
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE(nullptr, 1, output, 8), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE(input, 1, nullptr, 8), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE(input, 0, output, 8), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE(input, -1, output, 8), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE(input, 1, output, 0), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE(input, 1, output, -1), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte(nullptr, 1, output, 8), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte(input, 1, nullptr, 8), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte(input, 0, output, 8), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte(input, -1, output, 8), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte(input, 1, output, 0), 0);
    QCOMPARE(code_unicode_to_utf8_reversebyte(input, 1, output, -1), 0);
    QCOMPARE(output, "xxxxxxx");
}

void TestPxcppReversebyte::anyAlignment()
{
    const char octets[] = "x\0A\x4E\x2D";
    char output[8];
    QCOMPARE(code_unicode_to_utf8_reversebyte_BYTE(octets + 1, 2, output, 8), 4);
    QCOMPARE(QByteArray(output), QByteArray("A\xE4\xB8\xAD"));
}

void TestPxcppReversebyte::likeQt()
{
    QRandomGenerator random(1);
    for (int round = 0; round < 2000; ++round) {
        QString text;
        while (text.size() < 20) {
            const auto unit = ushort(random.bounded(1, 0x10000));
            if (!QChar::isSurrogate(unit) && unit != QChar::ByteOrderMark)
                text += QChar(unit);
        }
        QByteArray units;
        for (const QChar unit : std::as_const(text))
            units.append(char(unit.unicode() >> 8)).append(char(unit.unicode() & 0xFF));
        char output[100];
        const int written =
            code_unicode_to_utf8_reversebyte_BYTE(units.constData(), 20, output, sizeof output);
        QCOMPARE(QByteArray(output, written), text.toUtf8());
    }
}

void TestPxcppReversebyte::debugStream()
{
    const auto slots32 = slotsOf(QByteArray("\0A\0B\0C", 6));
    const unsigned int *first = slots32.data();
    char output[8];
    const MessageRecorder recorder;

    code_unicode_to_utf8_reversebyte(first, 2, output, 8);
    QCOMPARE(MessageRecorder::messages(),
             QStringList({"unicode  " + address(first), "pData  " + address(first),
                          "pData  " + address(first + 1)}));

    MessageRecorder::messages().clear();
    code_unicode_to_utf8_reversebyte(nullptr, 2, output, 8);
    QCOMPARE(MessageRecorder::messages(), QStringList("unicode  0x0"));

    MessageRecorder::messages().clear();
    code_unicode_to_utf8_reversebyte_BYTE(first, 2, output, 8);
    QCOMPARE(MessageRecorder::messages(), QStringList());
}

QTEST_GUILESS_MAIN(TestPxcppReversebyte)
#include "tst_pxcpp_reversebyte.moc"
