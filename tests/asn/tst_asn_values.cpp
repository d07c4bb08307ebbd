#include "tests/asn/tree.h"
#include "tests/support/child_process.h"
#include "tests/support/guarded_buffer.h"

#include "asn/asn_values.h"

#include <cstdlib>
#include <cstring>
#include <QDateTime>
#include <QTest>

namespace {

constexpr unsigned char kUtcTime = 0x17;
constexpr unsigned char kGeneralizedTime = 0x18;
constexpr unsigned char kBitString = 0x03;

long long utc(int year, int month, int day, int hour, int minute, int second)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC)
        .toSecsSinceEpoch();
}

QByteArray encodedIdentifier(const char *text, int *result)
{
    unsigned char output[256];
    std::memset(output, 0xEE, sizeof output);
    unsigned int length = sizeof output;
    *result = ASNGetOIDData(text, output, &length);
    if (*result == 0)
        return {};
    return {reinterpret_cast<char *>(output), static_cast<int>(length)};
}

QByteArray nameOf(const QByteArray &content, int *result)
{
    const GuardedBuffer<unsigned char> guarded(content.constData(), std::size_t(content.size()));
    char output[100];
    unsigned int length = sizeof output;
    *result =
        ASNGetOIDName(guarded.get(), static_cast<unsigned int>(content.size()), output, &length);
    if (*result == 0)
        return {};
    return length == std::strlen(output) ? QByteArray(output) : QByteArray("wrong length");
}

} // namespace

/// Times, object identifiers and bit strings.
class TestAsnValues : public QObject
{
    Q_OBJECT

private slots:
    void digits_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("moved");
        const auto row = [](const char *text, int count, int value, int error, int moved) {
            QTest::newRow(text) << QByteArray(text) << count << value << error << moved;
        };
        row("12rest", 2, 12, 0, 2);
        row("05", 2, 5, 0, 2);
        row("1", 1, 1, 0, 1);
        row("20", 2, 20, 0, 2);
        row("21", 2, 21, 1, 2);
        row("0", 1, 0, 1, 1);
        row("x1", 2, 0, 1, 0);
        row("1x", 2, 0, 1, 1);
        row("1", 2, 0, 1, 1);
        row("", 2, 0, 1, 0);
        row(" 1", 2, 0, 1, 0);
        row("-1", 2, 0, 1, 0);
        row("7", 0, 0, 1, 0); // below the minimum
    }

    // Between 1 and 20.
    void digits()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, count);
        int error = 0;
        const char *cursor = text.constData();
        QTEST(mypint(&cursor, count, 1, 20, &error), "value");
        QTEST(error, "error");
        QTEST(int(cursor - text.constData()), "moved");
    }

    void noDigitsAreZero()
    {
        int error = 0;
        const char *cursor = "x";
        QCOMPARE(mypint(&cursor, 0, 0, 9, &error), 0);
        QCOMPARE(error, 0);
    }

    void errorFlagIsNeverCleared()
    {
        int error = 1;
        const char *cursor = "5";
        QCOMPARE(mypint(&cursor, 1, 0, 9, &error), 5);
        QCOMPARE(error, 1);
    }

    void anyNumberOfDigits()
    {
        int error = 0;
        const char *cursor = "99999999999999999999";
        mypint(&cursor, 20, 0, 9, &error);
        QCOMPARE(*cursor, '\0');
    }

    void times_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qlonglong>("seconds");
        QTest::addColumn<unsigned int>("error");
        const auto row = [](int tag, const QByteArray &text, long long seconds,
                            unsigned int error = 0) {
            QTest::newRow(QByteArray::number(tag) + ' ' + text.toPercentEncoding(" +,."))
                << tag << text << qlonglong(seconds) << error;
        };
        const auto utcTime = [&](const char *text, long long seconds) {
            row(kUtcTime, text, seconds);
        };
        const auto badUtcTime = [&](const QByteArray &text) { row(kUtcTime, text, 0, 1); };
        utcTime("700101000000Z", 0);
        utcTime("700101000001Z", 1);
        utcTime("000101000000Z", utc(2000, 1, 1, 0, 0, 0));
        utcTime("500101000000Z", -631152000);
        row(kUtcTime, "491231235959Z", 0, 2);
        utcTime("380119031407Z", 2147483647);
        utcTime("380119031408Z", 2147483648);
        utcTime("381231235959Z", utc(2038, 12, 31, 23, 59, 59));
        row(kUtcTime, "390101000000Z", 0, 2);
        utcTime("2001011200Z", utc(2020, 1, 1, 12, 0, 0));
        utcTime("200101120000+0800", utc(2020, 1, 1, 4, 0, 0));
        utcTime("200101120000-0800", utc(2020, 1, 1, 20, 0, 0));
        utcTime("2001011200+0530", utc(2020, 1, 1, 6, 30, 0));
        utcTime("200101120000+1259", utc(2019, 12, 31, 23, 1, 0));
        utcTime("200430235959Z", utc(2020, 4, 30, 23, 59, 59));
        utcTime("200431000000Z", utc(2020, 5, 1, 0, 0, 0)); // rolls into the next month
        utcTime("200229120000Z", utc(2020, 2, 29, 12, 0, 0));
        utcTime("200301000000Z", utc(2020, 3, 1, 0, 0, 0));
        utcTime("190301000000Z", utc(2019, 3, 1, 0, 0, 0));
        utcTime("191231000000Z", utc(2019, 12, 31, 0, 0, 0));
        utcTime("691231235959Z", -1);
        row(kUtcTime, "700101000000+0001", 0, 2); // before 1970, in a year that is not
        row(kUtcTime, "691231235959-0001", 0, 2); // the reverse
        row(kUtcTime, "691231235900-0001", 0, 2); // 1970 to the second
        utcTime("680229000000Z", utc(1968, 2, 29, 0, 0, 0));
        utcTime("680301000000Z", utc(1968, 3, 1, 0, 0, 0));
        row(kUtcTime, QByteArray("700101000000Z\0ignored", 21), 0);
        row(kUtcTime,
            QByteArray("70010100\0"
                       "0000Z",
                       14),
            0, 1);
        badUtcTime("");
        badUtcTime("7");
        badUtcTime("x00101000000Z");
        badUtcTime("7x0101000000Z");
        badUtcTime("70 101000000Z");
        badUtcTime("7001 1000000Z");
        badUtcTime("701301000000Z");
        badUtcTime("700001000000Z");
        badUtcTime("700100000000Z");
        badUtcTime("700132000000Z");
        badUtcTime("700101240000Z");
        badUtcTime("700101006000Z");
        badUtcTime("700101000060Z");
        badUtcTime("70010100005Z");
        badUtcTime("700101000000");
        badUtcTime("7001010000");
        badUtcTime("700101000000z");
        badUtcTime("700101000000ZZ");
        badUtcTime("700101000000Z ");
        badUtcTime("700101000000.5Z");
        badUtcTime("200101120000+1300");
        badUtcTime("200101120000+1260");
        badUtcTime("200101120000+08");
        badUtcTime("200101120000+080");
        badUtcTime("200101120000+08000");
        badUtcTime("200101120000+0800Z");
        badUtcTime("200101120000+ 800");
        badUtcTime("700101000000Z" + QByteArray(36, ' '));

        row(kGeneralizedTime, "20200101120000Z", utc(2020, 1, 1, 12, 0, 0));
        row(kGeneralizedTime, "202001011200Z", utc(2020, 1, 1, 12, 0, 0));
        row(kGeneralizedTime, "20200101120000.123Z", utc(2020, 1, 1, 12, 0, 0));
        row(kGeneralizedTime, "20200101120000,5+0100", utc(2020, 1, 1, 11, 0, 0));
        row(kGeneralizedTime, "202001011200.5Z", utc(2020, 1, 1, 12, 0, 0));
        row(kGeneralizedTime, "20200101120000..,12,.Z", utc(2020, 1, 1, 12, 0, 0));
        row(kGeneralizedTime, "20200101120000." + QByteArray(32, '0') + "Z",
            utc(2020, 1, 1, 12, 0, 0)); // 48 octets, the most
        row(kGeneralizedTime, "20200101120000." + QByteArray(33, '0') + "Z", 0, 1);
        row(kGeneralizedTime, "20000229000000Z", utc(2000, 2, 29, 0, 0, 0));
        row(kGeneralizedTime, "20000301000000Z", utc(2000, 3, 1, 0, 0, 0));
        row(kGeneralizedTime, "19691231235959Z", -1);
        row(kGeneralizedTime, "19020101000000Z", utc(1902, 1, 1, 0, 0, 0));
        // 69 years of 365 days below 1970 no longer fit into 32 bits.
        row(kGeneralizedTime, "19010101000000Z", 0, 2);
        row(kGeneralizedTime, "20390101000000Z", 0, 2);
        row(kGeneralizedTime, "20490101000000Z", 0, 2);
        // Beyond that the wrapped product is positive again, and wrong.
        row(kGeneralizedTime, "21070101000000Z", utc(2107, 1, 1, 0, 0, 0) - 4294967296);
        row(kGeneralizedTime, "23000101000000Z", utc(2300, 1, 1, 0, 0, 0) - 2 * 4294967296);
        row(kGeneralizedTime, "23010101000000Z", utc(2301, 1, 1, 0, 0, 0) - 2 * 4294967296);
        row(kGeneralizedTime, "24010101000000Z", utc(2401, 1, 1, 0, 0, 0) - 3 * 4294967296);
        row(kGeneralizedTime, "18330101000000Z", utc(1833, 1, 1, 0, 0, 0) + 4294967296);
        row(kGeneralizedTime, "18000301000000Z", utc(1800, 3, 1, 0, 0, 0) + 4294967296);
        row(kGeneralizedTime, "15500101000000Z", utc(1550, 1, 1, 0, 0, 0) + 3 * 4294967296);
        row(kGeneralizedTime, "00000101000000Z", -2037677056); // a year that the toolkit lacks
        row(kGeneralizedTime, "x0200101120000Z", 0, 1);
        row(kGeneralizedTime, "202x0101120000Z", 0, 1);
        row(kGeneralizedTime, "20200101120000.5x", 0, 1);
        row(kGeneralizedTime, "20201301120000Z", 0, 1);
        row(kGeneralizedTime, "2020010112", 0, 1);
        row(0x02, "700101000000Z", 0, 1);
        row(0x16, "20200101120000Z", 0, 1);
    }

    void times()
    {
        QFETCH(int, tag);
        QFETCH(QByteArray, text);
        QFETCH(qlonglong, seconds);
        unsigned int error = 77;
        const AsnBlockPtr leaf = leafOf(static_cast<unsigned char>(tag), text);
        QCOMPARE(ASNGetTime(leaf.get(), &error), seconds);
        QTEST(error, "error");
        QCOMPARE(ASNGetTime(leaf.get(), nullptr), seconds);
    }

    void timeOfNothing()
    {
        unsigned int error = 0;
        QCOMPARE(ASNGetTime(nullptr, &error), 0);
        QCOMPARE(error, 1U);
    }

    // Every day that 32 bits and the table of months reach, against the calendar of the toolkit.
    void everyDay()
    {
        for (QDate day(1902, 1, 1); day.year() < 2039; day = day.addDays(1)) {
            const QByteArray text = day.toString(QStringLiteral("yyyyMMdd")).toLatin1() + "120000Z";
            QCOMPARE(ASNGetTime(leafOf(kGeneralizedTime, text).get(), nullptr),
                     utc(day.year(), day.month(), day.day(), 12, 0, 0));
        }
    }

    void localTimes_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qlonglong>("seconds");
        QTest::addColumn<unsigned int>("error");
        QTest::newRow("winter") << QByteArray("Europe/Berlin") << QByteArray("20200101120000")
                                << qlonglong(utc(2020, 1, 1, 11, 0, 0)) << 0U;
        QTest::newRow("summer") << QByteArray("Europe/Berlin") << QByteArray("20200701120000")
                                << qlonglong(utc(2020, 7, 1, 10, 0, 0)) << 0U;
        QTest::newRow("fraction") << QByteArray("Asia/Taipei") << QByteArray("20200101120000.25")
                                  << qlonglong(utc(2020, 1, 1, 4, 0, 0)) << 0U;
        QTest::newRow("no seconds") << QByteArray("Asia/Taipei") << QByteArray("202001011200")
                                    << qlonglong(utc(2020, 1, 1, 4, 0, 0)) << 0U;
        QTest::newRow("far") << QByteArray("UTC") << QByteArray("20490101000000")
                             << qlonglong(utc(2049, 1, 1, 0, 0, 0)) << 0U;
        QTest::newRow("the second that means failure")
            << QByteArray("UTC") << QByteArray("19691231235959") << qlonglong(0) << 2U;
    }

    void localTimes()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QByteArray, text);
        qputenv("TZ", zone);
        tzset();
        unsigned int error = 77;
        const long long seconds = ASNGetTime(leafOf(kGeneralizedTime, text).get(), &error);
        qputenv("TZ", "UTC");
        tzset();
        QTEST(qlonglong(seconds), "seconds");
        QTEST(error, "error");
    }

    void identifierNames_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("name"); // refused when empty
        const auto row = [](const QByteArray &hex, const QByteArray &name) {
            QTest::newRow(hex.isEmpty() ? "empty" : hex.constData())
                << QByteArray::fromHex(hex) << name;
        };
        row("2A864886F70D01010B", "1.2.840.113549.1.1.11");
        row("551D0F", "2.5.29.15");
        row("", "");
        row("55", "");
        row("2A00", "1.2.0");
        row("2A7F", "1.2.127");
        row("2A8100", "1.2.128");
        row("2A808001", "1.2.1"); // overlong
        row("8837", "3.16.55");   // the first octet alone gives two arcs
        row("FF01", "6.15.1");
        row("0001", "0.0.1");
        row("2801", "1.0.1");
        row("5001", "2.0.1");
        row("2A86", "1.2"); // cut within a subidentifier
        row("2A0186", "1.2.1");
        row("2A87FFFFFF7F", "1.2.2147483647");
        row("2A8880808000", "1.2.-2147483648");
        row("2A8FFFFFFF7F", "1.2.-1");
        row("2A9080808001", "1.2.1"); // bit 32 is lost
        row("2AFFFFFFFFFFFFFFFFFF7F", "1.2.-1");
    }

    void identifierNames()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, name);
        int result = 0;
        QCOMPARE(nameOf(content, &result), name);
        QCOMPARE(result, name.isEmpty() ? 0 : 1);
    }

    void longestIdentifierName()
    {
        // "1.2" and ".1" for each octet: 99 characters are the most.
        int result = 0;
        QCOMPARE(nameOf("\x2A" + QByteArray(48, '\1'), &result).size(), 99);
        QCOMPARE(result, 1);
        nameOf("\x2A" + QByteArray(49, '\1'), &result);
        QCOMPARE(result, 0);
        QCOMPARE(nameOf("\x2A" + QByteArray(46, '\1') + '\x64', &result).size(), 99);
        QCOMPARE(result, 1);
        nameOf("\x2A" + QByteArray(47, '\1') + '\x0A', &result);
        QCOMPARE(result, 0); // a hundredth character
        nameOf("\x2A" + QByteArray(47, '\1') + QByteArray("\x81\x00", 2), &result);
        QCOMPARE(result, 0);
        nameOf("\x2A" + QByteArray(100000, '\x81'), &result);
        QCOMPARE(result, 1); // a subidentifier without end
    }

    void identifierNameOutputs()
    {
        const QByteArray content = QByteArray::fromHex("551D0F"); // "2.5.29.15"
        char output[11];
        std::memset(output, 'x', sizeof output);
        unsigned int length = 8;
        QCOMPARE(ASNGetOIDName(octets(content), 3, output, &length), 1);
        QCOMPARE(length, 8U);
        QCOMPARE(output[0], 'x');
        QCOMPARE(ASNGetOIDName(octets(content), 3, nullptr, &length), 1);
        QCOMPARE(length, 8U);
        length = 9;
        QCOMPARE(ASNGetOIDName(octets(content), 3, output, &length), 1);
        QCOMPARE(length, 9U);
        QCOMPARE(output, "2.5.29.15");
        QCOMPARE(output[10], 'x');
        QCOMPARE(ASNGetOIDName(octets(content), 3, output, nullptr), 0);
        QCOMPARE(ASNGetOIDName(nullptr, 3, output, &length), 0);
    }

    void identifierData_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("result");
        QTest::addColumn<QByteArray>("content");
        const auto row = [](const char *text, const char *hex, int result = 1) {
            QTest::newRow(qPrintable(QStringLiteral("'%1'").arg(QLatin1String(text))))
                << QByteArray(text) << result << QByteArray::fromHex(hex);
        };
        row("1.2.840.113549", "2A864886F70D");
        row("1.2.840.113549.1.1.11", "2A864886F70D01010B");
        row("2.5.29.15", "551D0F");
        row("2.5.4.0", "5504"); // an arc of 0 is dropped
        row("2.5.0.4", "5504");
        row("0.0", "00");
        row("2.175", "FF");
        row("2.176", "00"); // one octet has no room for it
        row("2.999", "37");
        row("1.2.127", "2A7F");
        row("1.2.128", "2A8100");
        row("1.2.16383", "2AFF7F");
        row("1.2.16384", "2A818000");
        row("1.2.2147483647", "2A87FFFFFF7F");
        row("1.2.4294967296", "2A9080808000");
        row("1.2.9223372036854775807", "2AFFFFFFFFFFFFFFFF7F");
        row("1.2.99999999999999999999", "2AFFFFFFFFFFFFFFFF7F"); // the greatest number there is
        row("1", "");
        row("", "");
        row("1.", "28");
        row(".5", "05");
        row("1..3", "2803");
        row("1.2.", "2A");
        row("01.002.0003", "2A03");
        row("1.2x", "", 0);
        row("x", "", 0);
        row("1.2 ", "", 0);
        row("1. 2", "", 0);
        row("1.-2", "", 0);
        row("1.+2", "", 0);
    }

    void identifierData()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, content);
        int result = 0;
        QCOMPARE(encodedIdentifier(text.constData(), &result).toHex(), content.toHex());
        QTEST(result, "result");
    }

    void longestIdentifierData()
    {
        QByteArray text = "1.2";
        for (int i = 0; i < 95; ++i)
            text += ".1";
        int result = 0;
        QCOMPARE(encodedIdentifier(text.constData(), &result).size(), 96);
        QCOMPARE(result, 1);
        encodedIdentifier((text + ".1").constData(), &result);
        QCOMPARE(result, 0);
        encodedIdentifier((text.chopped(2) + ".128").constData(), &result);
        QCOMPARE(result, 0);
        encodedIdentifier((text + ".0").constData(), &result);
        QCOMPARE(result, 1); // writes nothing
    }

    void identifierDataOutputs()
    {
        unsigned char output[4] = {0xEE, 0xEE, 0xEE, 0xEE};
        unsigned int length = 2;
        QCOMPARE(ASNGetOIDData(nullptr, output, &length), 0);
        QCOMPARE(ASNGetOIDData("2.5.29.15", nullptr, nullptr), 0);
        QCOMPARE(ASNGetOIDData("2.5.29.15", nullptr, &length), 1);
        QCOMPARE(ASNGetOIDData("2.5.29.15", output, nullptr), 1);
        QCOMPARE(ASNGetOIDData("2.5.29.15", output, &length), 1);
        QCOMPARE(length, 2U);
        QCOMPARE(int(output[0]), 0xEE);
        length = 3;
        QCOMPARE(ASNGetOIDData("2.5.29.15", output, &length), 1);
        QCOMPARE(length, 3U);
        QCOMPARE(int(output[2]), 0x0F);
        QCOMPARE(int(output[3]), 0xEE);
    }

    void identifiersThereAndBack()
    {
        for (const char *text :
             {"1.2.840.113549.1.9.16.2.14", "2.16.840.1.113730.1.1", "1.3.6.1.4.1.311.21.10",
              "2.23.140.1.2.1", "1.2.156.10197.1.501"}) {
            int result = 0;
            QCOMPARE(nameOf(encodedIdentifier(text, &result), &result), QByteArray(text));
        }
    }

    void bitStrings_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("unusedBits");
        QTest::addColumn<QByteArray>("data");
        const auto row = [](const char *hex, int unusedBits, const char *data) {
            QTest::newRow(hex) << QByteArray::fromHex(hex) << unusedBits
                               << QByteArray::fromHex(data);
        };
        row("003082", 0, "3082");
        row("07FF", 7, "FF"); // the last octet is not masked
        row("FF00", 255, "00");
        row("05", 5, "");
    }

    void bitStrings()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, unusedBits);
        QFETCH(QByteArray, data);
        stASN_BIT_STRING record = {};
        QCOMPARE(ASNGetBitStringData(leafOf(kBitString, content).get(), &record), 1);
        QCOMPARE(int(record.unusedBits), unusedBits);
        QCOMPARE(QByteArray(reinterpret_cast<char *>(record.data), int(record.length)), data);

        const AsnBlockPtr leaf(ASNAddSample(kBitString, nullptr));
        QCOMPARE(ASNSetBitStringDataEx(leaf.get(), &record), 1);
        QCOMPARE(outline(leaf.get()), "03:" + QString::fromLatin1(content.toHex().toUpper()));
        const AsnBlockPtr other = leafOf(kBitString, "before");
        QCOMPARE(ASNSetBitStringData(other.get(), record.data, record.length, record.unusedBits),
                 1);
        QCOMPARE(outline(other.get()), outline(leaf.get()));
        std::free(record.data);
    }

    void bitStringsRefused()
    {
        stASN_BIT_STRING record = {9, 9, nullptr};
        const AsnBlockPtr number = leafOf(0x02, "abc");
        const AsnBlockPtr bits = leafOf(kBitString, "abc");
        QCOMPARE(ASNGetBitStringData(nullptr, &record), 0);
        QCOMPARE(ASNGetBitStringData(number.get(), &record), 0);
        QCOMPARE(ASNGetBitStringData(leafOf(kBitString, "").get(), &record), 0);
        QCOMPARE(ASNGetBitStringData(bits.get(), nullptr), 0);
        QCOMPARE(int(record.unusedBits), 9);

        unsigned char octet = 1;
        record = {0, 1, &octet};
        QCOMPARE(ASNSetBitStringDataEx(nullptr, &record), 0);
        QCOMPARE(ASNSetBitStringDataEx(bits.get(), nullptr), 0);
        QCOMPARE(ASNSetBitStringDataEx(number.get(), &record), 0);
        QCOMPARE(ASNSetBitStringData(nullptr, &octet, 1, 0), 0);
        QCOMPARE(ASNSetBitStringData(number.get(), &octet, 1, 0), 0);
        QCOMPARE(ASNSetBitStringData(bits.get(), nullptr, 1, 0), 0);
        QCOMPARE(ASNSetBitStringData(bits.get(), &octet, 0xFFFFFFFF, 0), 0);
        QCOMPARE(outline(bits.get()), QStringLiteral("03:616263"));
        QCOMPARE(outline(number.get()), QStringLiteral("02:616263"));
        QCOMPARE(ASNSetBitStringData(bits.get(), nullptr, 0, 3), 1);
        QCOMPARE(outline(bits.get()), QStringLiteral("03:03"));
    }

    void bitStringsWithoutMemory()
    {
        const unsigned int size = 100U << 20;
        const GuardedBuffer<unsigned char> data(size);
        stASN_BLOCK_HEADER large = {}; // its content lies outside the heap
        large.tag = kBitString;
        large.rawFlag = 1;
        large.content = data.get();
        large.contentLength = size;
        const AsnBlockPtr bits = leafOf(kBitString, "abc");
        const auto result = runWithoutMemory([&] {
            stASN_BIT_STRING record = {9, 9, nullptr};
            const int got = ASNGetBitStringData(&large, &record);
            const bool isUntouched = record.unusedBits == 9 && record.length == 9 && !record.data;
            std::printf("%d %d %d %s\n", got, isUntouched ? 1 : 0,
                        ASNSetBitStringData(bits.get(), data.get(), size, 0),
                        qPrintable(outline(bits.get())));
        });
        QVERIFY2(result.output.endsWith("0 1 0 03:616263\n"), result.output.constData());
    }
};

QTEST_GUILESS_MAIN(TestAsnValues)
#include "tst_asn_values.moc"
