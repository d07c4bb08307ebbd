#include "tests/cert/parsed.h"
#include "tests/support/der.h"
#include "tests/support/message_recorder.h"
#include "tests/support/printed.h"

#include "asn/pxasn.h"
#include "cert/display_date.h"

#include <QTest>

using namespace der;

namespace {

QString shortText(const QString &iso)
{
    return QLocale::system().toString(QDateTime::fromString(iso, Qt::ISODate),
                                      QLocale::ShortFormat);
}

} // namespace

/// Version to subject public key info.
class TestCertFields : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { c_language::GetLangPtr()->LANG_SetFileName(QString()); }

    void whatMayBeMissingIsNotComplainedOf()
    {
        Certificate certificate;
        certificate.keyInfo =
            sequence({sequence({oid(kRsaEncryption)}), tlv(0x03, QByteArray::fromHex("0000"))});
        certificate.extensions = sequence({});
        const MessageRecorder debugStream; // the test's own goes to standard output
        QCOMPARE(printedBy([&] { parse(certificate.encoded()); }), QByteArray());
    }

    void greatestVersionWraps()
    {
        Certificate certificate;
        certificate.version = tlv(0xA0, integer("FFFFFF7F"));
        QCOMPARE(parse(certificate.encoded()).row(text_keys::kVersion).value,
                 QStringLiteral("V-2147483648"));
    }

    void characterBeyondABmpStringIsReplaced()
    {
        Certificate certificate;
        certificate.issuer = sequence(
            {set({attribute(kCommonName, tlv(0x1E, QByteArray::fromHex("0041D83DDD12")))})});
        const QString value = parse(certificate.encoded()).row(text_keys::kIssuer).value;
        QVERIFY(value.size() > 1);
        QCOMPARE(value, QLatin1Char('A') + QString(value.size() - 1, QChar(0xFFFD)));
    }

    void attributeValueOfNulStaysWhole()
    {
        Certificate certificate;
        certificate.subject =
            sequence({set({attribute(kCommonName, tlv(0x0C, QByteArray("a\0b", 3)))})});
        const Parsed parsed = parse(certificate.encoded());
        const QString name = QString::fromLatin1("a\0b", 3);
        QCOMPARE(parsed.row(text_keys::kSubject).value, name);
        QVERIFY(parsed.blocks.at(1).first.contains(name));
    }

    void basicFieldsTellWhetherAllWereRead()
    {
        Certificate whole;
        Certificate withoutVersion;
        withoutVersion.version = tlv(0xA0, {});
        Certificate withoutSubject;
        withoutSubject.subject = tlv(0x05, {});
        const auto areRead = [](const Certificate &certificate) {
            PXAsn document(nullptr);
            document.open(certificate.encoded());
            return c_pxcert(nullptr).parseTBSCertificate_basedata(&document);
        };
        QVERIFY(areRead(whole));
        QVERIFY(!areRead(withoutVersion));
        QVERIFY(!areRead(withoutSubject));
    }

    void attributeOperations()
    {
        PXAsn document(nullptr);
        QVERIFY(document.open(attribute(kCommonName, utf8("value"))));
        c_pxcert model(nullptr);
        QString line;
        QString value;
        QVERIFY(model.parseTBSIssuer(&document, line, value));
        QCOMPARE(line, QStringLiteral("CN= value"));
        QCOMPARE(value, QStringLiteral("value"));
        QVERIFY(model.parseTBSSubject(&document, line, value));
        QVERIFY(!model.parseTBSIssuer(nullptr, line, value));
        QVERIFY(!model.parseTBSSubject(nullptr, line, value));
        QVERIFY(!model.parseTBSCertificate_basedata(nullptr));
    }

    void timesNameTheirHalfOfTheDayInTaiwan()
    {
        const QLocale taiwan(QStringLiteral("zh_TW"));
        const QDate date(2024, 1, 1);
        const auto shows = [&](int hour) {
            return display_date::shortText(QDateTime(date, QTime(hour, 15)), taiwan);
        };
        QCOMPARE(shows(8), QStringLiteral("2024/1/1 上午8:15"));
        QCOMPARE(shows(20), QStringLiteral("2024/1/1 下午8:15"));
    }

    void dateEndsBeforeTheFirstBlank()
    {
        QCOMPARE(display_date::datePart(QStringLiteral("1/2/25 8:00 PM")),
                 QStringLiteral("1/2/25"));
        QCOMPARE(display_date::datePart(QStringLiteral("2025-01-02")),
                 QStringLiteral("2025-01-02"));
        QCOMPARE(display_date::datePart(QString()), QString());
    }

    void timesFollowTheSystemsLocaleAlone()
    {
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::German));
        const Parsed parsed = parse(Certificate().encoded());
        QLocale::setDefault(before);
        QCOMPARE(parsed.row(text_keys::kValidFrom).value,
                 shortText(QStringLiteral("2020-01-01T08:00:00Z")));
    }

    void timeConversions()
    {
        QCOMPARE(c_pxcert::fromUTCTime(QStringLiteral("250102120000Z")),
                 QDateTime(QDate(2025, 1, 2), QTime(20, 0), Qt::UTC));
        QCOMPARE(c_pxcert::fromUTCTime(QStringLiteral("250102120000Z")).timeSpec(), Qt::UTC);
        QCOMPARE(c_pxcert::fromGeneralizedTime(QStringLiteral("20250102120000Z")),
                 QDateTime(QDate(2025, 1, 2), QTime(20, 0), Qt::UTC));
        QVERIFY(c_pxcert::fromUTCTime(QStringLiteral("20250102120000Z")).isNull());
        QVERIFY(c_pxcert::fromUTCTime(QString()).isNull());
        QVERIFY(c_pxcert::fromGeneralizedTime(QStringLiteral("250102120000Z")).isNull());
        QVERIFY(!c_pxcert::fromUTCTime(QStringLiteral("251302120000Z")).isValid());
        QVERIFY(!c_pxcert::fromUTCTime(QStringLiteral("250102990000Z")).isValid());
        QVERIFY(!c_pxcert::fromGeneralizedTime(QStringLiteral("00000102000000Z")).isValid());
    }

    void timesOfOtherLengthsAreNone()
    {
        for (const char *text : {"250102120000", "250102120000ZZ", "2501021200000Z"})
            QVERIFY2(c_pxcert::fromUTCTime(QLatin1String(text)).isNull(), text);
        for (const char *text : {"20250102120000", "20250102120000ZZ", "202501021200000Z"})
            QVERIFY2(c_pxcert::fromGeneralizedTime(QLatin1String(text)).isNull(), text);
    }

    void firstYearsOfACentury()
    {
        const auto utcYear = [](const char *text) {
            return c_pxcert::fromUTCTime(QLatin1String(text)).date().year();
        };
        QCOMPARE(utcYear("000102120000Z"), 2000);
        QCOMPARE(utcYear("490102120000Z"), 2049);
        QCOMPARE(utcYear("500102120000Z"), 1950);
        const auto year = [](const char *text) {
            return c_pxcert::fromGeneralizedTime(QLatin1String(text)).date().year();
        };
        QCOMPARE(year("20000102120000Z"), 2000);
        QCOMPARE(year("00250102120000Z"), 25);
    }

    // A year that is no number would otherwise be one that ends a century.
    void yearsOfOtherCharactersAreNone()
    {
        for (const char *text : {"x00102120000Z", "0x0102120000Z", "-10102120000Z"})
            QVERIFY2(!c_pxcert::fromUTCTime(QLatin1String(text)).isValid(), text);
        for (const char *text : {"x0000102120000Z", "20x00102120000Z", "x0x00102120000Z"})
            QVERIFY2(!c_pxcert::fromGeneralizedTime(QLatin1String(text)).isValid(), text);
    }
};

QTEST_GUILESS_MAIN(TestCertFields)
#include "tst_cert_fields.moc"
