#include "tests/support/der.h"
#include "tests/support/message_recorder.h"

#include "asn/pxasn.h"

#include <ctime>
#include <QTest>

using namespace der;

namespace {

// Sets the process's time zone while it lives.
class Zone
{
public:
    explicit Zone(const QByteArray &name) { set(name); }
    ~Zone() { set("UTC"); }
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;

private:
    static void set(const QByteArray &name)
    {
        qputenv("TZ", name);
        tzset();
    }
};

QString iso(const QDateTime &time)
{
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) : QString();
}

} // namespace

/// The two ways to read a time that the certificate model does without.
class TestPxasnDates : public QObject
{
    Q_OBJECT

private slots:
    void converted_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("expected"); // empty: invalid
        const auto row = [](const char *text, const char *expected) {
            QTest::newRow(*text ? text : "empty")
                << QByteArray(text) << QString::fromLatin1(expected);
        };
        row("200101120000Z", "2020-01-01 20:00:00");
        row("200101235959Z", "2020-01-02 07:59:59");
        row("590101000000Z", "2059-01-01 08:00:00"); // the pivot is 60
        row("600101000000Z", "1960-01-01 08:00:00");
        row("000229000000Z", "2000-02-29 08:00:00");
        row("991231235959Z", "2000-01-01 07:59:59");
        row("20200101120000Z", "2020-01-01 20:00:00");
        row("19500101000000Z", "1950-01-01 08:00:00");
        row("99991231000000Z", "9999-12-31 08:00:00");
        row("", "");
        row("2001011200Z", "");
        row("200101120000", "");
        row("2001011200000", "");
        row("2001011200000Z", ""); // fourteen
        row("200101120000+0800", "");
        row("20200101120000.5Z", "");
        row("200101120000z", "");
        row("201301120000Z", "");
        row("200001120000Z", "");
        row("200132120000Z", "");
        row("200230120000Z", "");
        row("190229120000Z", "");
        // An impossible time of day is midnight.
        row("200101240000Z", "2020-01-01 08:00:00");
        row("200101006000Z", "2020-01-01 08:00:00");
        row("200101000060Z", "2020-01-01 08:00:00");
        row("20200101250000Z", "2020-01-01 08:00:00");
        // What is no number counts as 0, and a blank or a sign may stand before a digit.
        row("xx0101120000Z", "2000-01-01 20:00:00");
        row("20xx01120000Z", "");
        row("2001xx120000Z", "");
        row("200101xx0000Z", "2020-01-01 08:00:00");
        row("20010100xx00Z", "2020-01-01 08:00:00");
        row("2001010000xxZ", "2020-01-01 08:00:00");
        row("200101 10000Z", "2020-01-01 09:00:00");
        row("200101+10000Z", "2020-01-01 09:00:00");
        row("200101-10000Z", "2020-01-01 08:00:00");
        row("202x0101120000Z", "");
        row("00000101120000Z", ""); // there is no year 0
    }

    void converted()
    {
        QFETCH(QByteArray, text);
        for (const char *zone : {"UTC", "Asia/Taipei", "America/New_York"}) {
            const Zone here(zone);
            const QDateTime time = PXAsnBlock::convertDateTime(text);
            QTEST(iso(time), "expected");
            QCOMPARE(time.timeSpec(), Qt::UTC);
            QCOMPARE(time.time().msec(), time.isValid() ? 0 : time.time().msec());
        }
    }

    void read_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QString>("expected"); // local; empty: invalid
        const auto row = [](int tag, const char *text, const char *zone, const char *expected) {
            QTest::newRow(qPrintable(
                QStringLiteral("%1 %2 %3").arg(tag).arg(QLatin1String(text), QLatin1String(zone))))
                << tag << QByteArray(text) << QByteArray(zone) << QString::fromLatin1(expected);
        };
        // The two digits are the year.
        row(0x17, "200101120000Z", "UTC", "0020-01-01 12:00:00");
        row(0x17, "200101120000Z", "Asia/Taipei", "0020-01-01 20:00:00");
        row(0x17, "200101200000Z", "Asia/Taipei", "0020-01-01 04:00:00");
        row(0x17, "200101235959Z", "Asia/Kolkata", "0020-01-01 05:59:59"); // whole hours
        row(0x17, "200101120000Z", "America/New_York", "0020-01-01 07:00:00");
        row(0x17, "200101020000Z", "America/New_York", "0020-01-01 21:00:00");
        row(0x17, "990101120000Z", "UTC", "0099-01-01 12:00:00");
        // Only thirteen characters that end in "Z" are moved.
        row(0x17, "2001011200Z", "Asia/Taipei", "0020-01-01 12:00:00");
        row(0x17, "200101120000", "Asia/Taipei", "0020-01-01 12:00:00");
        row(0x17, "200101120000+0100", "Asia/Taipei", "0020-01-01 12:00:00");
        row(0x17, "2001011200+0100", "Asia/Taipei", "0020-01-01 12:00:00");
        row(0x18, "20200101120000Z", "Asia/Taipei", "2020-01-01 12:00:00");
        row(0x18, "202001011200Z", "Asia/Taipei", "2020-01-01 12:00:00"); // thirteen, too
        row(0x18, "20200101120000.5Z", "UTC", "2020-01-01 12:00:00");
        row(0x17, "", "UTC", "");
        row(0x17, "20", "UTC", "");
        row(0x17, "200101", "UTC", "0020-01-01 00:00:00"); // what is missing counts as 0
        row(0x17, "20010112", "UTC", "0020-01-01 12:00:00");
        row(0x17, "201301120000Z", "UTC", "");
        row(0x17, "200132120000Z", "UTC", "");
        row(0x17, "200101161500Z", "Asia/Taipei", "0020-01-01 00:15:00");
        row(0x17, "200101001500Z", "America/New_York", "0020-01-01 19:15:00");
        // The hour is moved as any other; a time of day that is impossible then is midnight.
        row(0x17, "200101240000Z", "UTC", "0020-01-01 00:00:00");
        row(0x17, "200101240000Z", "Asia/Taipei", "0020-01-01 08:00:00");
        row(0x17, "200101240000Z", "America/New_York", "0020-01-01 19:00:00");
        row(0x17, "200101470000Z", "UTC", "0020-01-01 23:00:00");
        row(0x17, "200101480000Z", "UTC", "0020-01-01 00:00:00");
        row(0x17, "200101471500Z", "Asia/Taipei", "0020-01-01 00:00:00");
        row(0x17, "200101240000", "Asia/Taipei", "0020-01-01 00:00:00"); // not moved
        row(0x17, "200101126000Z", "UTC", "0020-01-01 00:00:00");
        row(0x17, "200101126000Z", "Asia/Taipei", "0020-01-01 00:00:00");
        row(0x17, "200101120060Z", "UTC", "0020-01-01 00:00:00");
        row(0x17, "200101xx3000Z", "UTC", "0020-01-01 00:30:00"); // so does what is no number
        row(0x17, "200101xx3000Z", "Asia/Taipei", "0020-01-01 08:30:00");
        row(0x17, "200101 13000Z", "UTC", "0020-01-01 01:30:00");
        row(0x17, "200101-10000Z", "UTC", "0020-01-01 00:00:00");
        row(0x17, "200101-10000Z", "Asia/Taipei", "0020-01-01 07:00:00");
        row(0x17, "xx0101120000Z", "UTC", "");
        row(0x17, "20xx01120000Z", "UTC", "");
        row(0x17, "000101120000Z", "UTC", ""); // there is no year 0
        row(0x18, "202001xx120000Z", "UTC", "");
        row(0x18, "20200101250000Z", "UTC", "2020-01-01 00:00:00");
        row(0x13, "20200101120000Z", "UTC", "");
        row(0x04, "200101120000Z", "UTC", "");
    }

    void read()
    {
        QFETCH(int, tag);
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, zone);
        const Zone here(zone);
        PXAsn document(nullptr);
        QCOMPARE(document.open(tlv(tag, text)), 1);
        QTEST(iso(QDateTime(document)), "expected");
        QTEST(iso(document.toDateTime()), "expected");
        QCOMPARE(document.toDateTime().timeSpec(), Qt::LocalTime);
    }

    void debugStream()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(utcTime("200101120000Z")), 1);
        MessageRecorder recorder;
        document.toDateTime();
        const QStringList expected = {QStringLiteral("[PXAsn::operator QDateTime]..."),
                                      QStringLiteral("text:  \"200101120000Z\"")};
        QCOMPARE(MessageRecorder::messages(), expected);
    }
};

QTEST_GUILESS_MAIN(TestPxasnDates)
#include "tst_pxasn_dates.moc"
