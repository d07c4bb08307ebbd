#include "tests/cert/parsed.h"
#include "tests/support/der.h"
#include "tests/support/message_recorder.h"
#include "tests/support/printed.h"

#include "asn/pxasn.h"
#include "cert/display_date.h"

#include <QtTest>

using namespace der;

namespace {

QString failure(const char *field)
{
    return QStringLiteral("[PXCertificate::parseTBSCertificate] ...tbsCertificate %1 fail")
        .arg(QLatin1String(field));
}

QString shortText(const QString &iso)
{
    return QLocale::system().toString(QDateTime::fromString(iso, Qt::ISODate),
                                      QLocale::ShortFormat);
}

QByteArray validityOf(const QByteArray &notBefore, const QByteArray &notAfter)
{
    return sequence({notBefore, notAfter});
}

bool showsNoDates(const Parsed &parsed)
{
    return parsed.blocks.at(1).first.endsWith(
        QStringLiteral("\n\n %1 %2   ").arg(shown("PXCERTREAD_0009"), shown("PXCERTREAD_0010")));
}

} // namespace

/// Version to subject public key info.
class TestCertFields : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { c_language::GetLangPtr()->LANG_SetFileName(QString()); }

    void rowsStandInOrder()
    {
        const Parsed parsed = parse(Certificate().encoded());
        QStringList names;
        for (const detail_node &row : parsed.rows) {
            names << row.name;
            QCOMPARE(row.kind, 0);
        }
        QStringList expected;
        for (const char *key :
             {"PXCERTREAD_0014", "PXCERTREAD_0015", "PXCERTREAD_0016", "PXCERTREAD_0017",
              "PXCERTREAD_0018", "PXCERTREAD_0019", "PXCERTREAD_0020", "PXCERTREAD_0021"})
            expected << shown(key);
        QCOMPARE(names, expected);
        QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), names.size());
        for (const QString &name : qAsConst(names))
            QVERIFY2(!name.startsWith(QLatin1String("PXCERT")), qPrintable(name));
    }

    void version_data()
    {
        QTest::addColumn<QByteArray>("version");
        QTest::addColumn<QString>("value");
        QTest::newRow("v1 written out") << tlv(0xA0, integer("00")) << "V1";
        QTest::newRow("v2") << tlv(0xA0, integer("01")) << "V2";
        QTest::newRow("v3") << tlv(0xA0, integer("02")) << "V3";
        QTest::newRow("255") << tlv(0xA0, integer("FF")) << "V256";
        QTest::newRow("two octets, the machine's order") << tlv(0xA0, integer("0100")) << "V2";
        QTest::newRow("four octets, the machine's order") << tlv(0xA0, integer("02000000")) << "V3";
        QTest::newRow("three octets read as 0") << tlv(0xA0, integer("020000")) << "V1";
    }
    void version()
    {
        QFETCH(QByteArray, version);
        Certificate certificate;
        certificate.version = version;
        QTEST(parse(certificate.encoded()).row("PXCERTREAD_0014").value, "value");
    }

    void withoutVersionTheSerialNumberComesFirst()
    {
        Certificate certificate;
        certificate.version.clear();
        MessageRecorder recorder;
        const Parsed parsed = parse(certificate.encoded());
        QVERIFY(recorder.messages().contains(failure("version")));
        QVERIFY(!parsed.hasRow("PXCERTREAD_0014"));
        QCOMPARE(parsed.rows.front().name, shown("PXCERTREAD_0015"));
        QCOMPARE(parsed.rows.size(), std::size_t(7));
    }

    void serialNumber_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("value");
        QTest::newRow("leading zero stays") << QByteArray::fromHex("008F") << "008f";
        QTest::newRow("one octet") << QByteArray::fromHex("0A") << "0a";
        QTest::newRow("negative") << QByteArray::fromHex("FF01") << "ff01";
        QTest::newRow("twenty octets")
            << QByteArray(20, '\xAB') << QString(20, 'x').replace("x", "ab");
        QTest::newRow("empty") << QByteArray() << "";
    }
    void serialNumber()
    {
        QFETCH(QByteArray, content);
        Certificate certificate;
        certificate.serialNumber = tlv(0x02, content);
        const detail_node row = parse(certificate.encoded()).row("PXCERTREAD_0015");
        QTEST(row.value, "value");
        QCOMPARE(row.full_value, row.value);
    }

    void missingFieldEndsTheRows_data()
    {
        QTest::addColumn<QByteArray>("certificate");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("rows");
        const auto row = [](const char *name, const Certificate &certificate, const char *field,
                            int rows) {
            QTest::newRow(name) << certificate.encoded() << failure(field) << rows;
        };
        const QByteArray wrong = tlv(0x05, {});
        Certificate c;
        c.version = tlv(0xA0, wrong);
        row("version is no INTEGER", c, "version2", 0);
        c = {};
        c.version = tlv(0xA0, {});
        row("version is empty", c, "version2", 0);
        c = {};
        c.serialNumber = wrong;
        row("serial number", c, "serialNumber", 1);
        c = {};
        c.signature = wrong;
        row("signature", c, "signature", 2);
        c.signature = sequence({wrong});
        row("signature identifier", c, "signature2", 2);
        c = {};
        c.issuer = wrong;
        row("issuer", c, "issuer", 3);
        c.issuer = sequence({wrong});
        row("relative name", c, "relativeDistinguishedName", 3);
        c.issuer = sequence({set({wrong})});
        row("attribute", c, "attributeTypeAndValue", 3);
        c = {};
        c.validity = wrong;
        row("validity", c, "validity", 4);
        c.validity = sequence({});
        row("not before", c, "notBefore", 4);
        c.validity = sequence({utcTime("200101000000Z")});
        row("not after", c, "notAfter", 4);
        c = {};
        c.subject = wrong;
        row("subject", c, "subject", 6);
        c = {};
        c.keyInfo = wrong;
        row("key info", c, "subjectPublicKeyInfoAlgorithm", 7);
        c.keyInfo = sequence({wrong});
        row("key algorithm", c, "subjectPublicKeyInfoAlgorithm", 7);
        c.keyInfo = sequence({sequence({wrong})});
        row("key algorithm identifier", c, "subjectPublicKeyInfoAlgorithmOID1", 7);
        c.keyInfo = sequence({sequence({oid(kRsaEncryption)}), wrong});
        row("key", c, "subjectPublicKey", 7);
    }
    void missingFieldEndsTheRows()
    {
        QFETCH(QByteArray, certificate);
        QFETCH(QString, message);
        QFETCH(int, rows);
        MessageRecorder recorder;
        const Parsed parsed = parse(certificate);
        QVERIFY2(recorder.messages().contains(message), qPrintable(message));
        QVERIFY(!recorder.messages().contains(
            QStringLiteral("[PXCertificate::parseTBSCertificate] end")));
        QCOMPARE(int(parsed.rows.size()), rows);
        QCOMPARE(parsed.blocks.size(), 2);
        QCOMPARE(parsed.rowSignals, 1);
    }

    void completeCertificateSaysSo()
    {
        MessageRecorder recorder;
        parse(Certificate().encoded());
        QVERIFY(recorder.messages().contains(
            QStringLiteral("[PXCertificate::parseTBSCertificate] end")));
    }

    void whatMayBeMissingIsNotComplainedOf()
    {
        Certificate certificate;
        certificate.keyInfo =
            sequence({sequence({oid(kRsaEncryption)}), tlv(0x03, QByteArray::fromHex("0000"))});
        certificate.extensions = sequence({});
        const MessageRecorder debugStream; // the test's own goes to standard output
        QCOMPARE(printedBy([&] { parse(certificate.encoded()); }), QByteArray());
    }

    void nameIsShownTheOtherWayRound()
    {
        Certificate certificate;
        certificate.subject = sequence({
            set({attribute(kCountry, tlv(0x13, "CN"))}),
            set({attribute(kOrganization, utf8("First")), attribute(kOrganization, utf8("组织"))}),
            set({attribute(kCommonName, utf8("Leaf"))}),
        });
        const detail_node row = parse(certificate.encoded()).row("PXCERTREAD_0020");
        QCOMPARE(row.value, QStringLiteral("Leaf,组织,First,CN"));
        QCOMPARE(row.full_value, QStringLiteral("CN= Leaf\nO= 组织\nO= First\nC= CN\n"));
    }

    void emptyNameGivesAnEmptyRow()
    {
        Certificate certificate;
        certificate.issuer = sequence({});
        const Parsed parsed = parse(certificate.encoded());
        QVERIFY(parsed.hasRow("PXCERTREAD_0017"));
        QCOMPARE(parsed.row("PXCERTREAD_0017").value, QString());
        QCOMPARE(parsed.row("PXCERTREAD_0017").full_value, QString());
        QVERIFY(parsed.hasRow("PXCERTREAD_0021"));
    }

    void unreadableAttributeIsSkipped_data()
    {
        QTest::addColumn<QByteArray>("attribute");
        QTest::addColumn<QString>("message");
        QTest::newRow("no type") << sequence({utf8("x"), utf8("y")}) << failure("type");
        QTest::newRow("nothing") << sequence({}) << failure("type");
        QTest::newRow("no value") << sequence({oid(kCommonName)}) << failure("value");
    }
    void unreadableAttributeIsSkipped()
    {
        QFETCH(QByteArray, attribute);
        QFETCH(QString, message);
        Certificate certificate;
        certificate.issuer =
            sequence({set({attribute, der::attribute(kOrganization, utf8("Org"))})});
        MessageRecorder recorder;
        const Parsed parsed = parse(certificate.encoded());
        QVERIFY(recorder.messages().contains(message));
        QCOMPARE(parsed.row("PXCERTREAD_0017").value, QStringLiteral("Org"));
        QVERIFY(parsed.hasRow("PXCERTREAD_0021"));
    }

    void unknownAttributeShowsItsIdentifier()
    {
        Certificate certificate;
        certificate.issuer = sequence({set({attribute(kUnknown, utf8("what"))})});
        QCOMPARE(parse(certificate.encoded()).row("PXCERTREAD_0017").full_value,
                 QLatin1String(kUnknownDotted) + QStringLiteral("= what\n"));
    }

    void identifierTexts_data()
    {
        QTest::addColumn<QByteArray>("hex");
        QTest::addColumn<QString>("text");
        const QByteArray arc = "83FFFFFF7F"; // 1073741823, eleven characters with its dot
        QTest::newRow("first octet alone") << QByteArray("883701") << "3.16.55.1";
        QTest::newRow("signed number") << QByteArray("6988FFFFFF7F") << "2.25.-1879048193";
        QTest::newRow("one octet") << QByteArray("2B") << "";
        QTest::newRow("99 characters")
            << "2B" + arc.repeated(8) + "FFFF7F"
            << "1.3" + QStringLiteral(".1073741823").repeated(8) + ".2097151";
        QTest::newRow("100 characters") << "2B" + arc.repeated(8) + "84E2AD00"
                                        << "";
    }
    void identifierTexts()
    {
        QFETCH(QByteArray, hex);
        QFETCH(QString, text);
        Certificate certificate;
        certificate.issuer = sequence({set({attribute(hex.constData(), utf8("x"))})});
        QCOMPARE(parse(certificate.encoded()).row("PXCERTREAD_0017").full_value,
                 text + QStringLiteral("= x\n"));
    }

    void characterBeyondABmpStringIsReplaced()
    {
        Certificate certificate;
        certificate.issuer = sequence(
            {set({attribute(kCommonName, tlv(0x1E, QByteArray::fromHex("0041D83DDD12")))})});
        const QString value = parse(certificate.encoded()).row("PXCERTREAD_0017").value;
        QVERIFY(value.size() > 1);
        QCOMPARE(value, QLatin1Char('A') + QString(value.size() - 1, QChar(0xFFFD)));
    }

    void attributeIsNamedByBothSections()
    {
        Certificate certificate;
        certificate.issuer = sequence({set({attribute("551D0F", utf8("what"))})});
        QCOMPARE(parse(certificate.encoded()).row("PXCERTREAD_0017").full_value,
                 shown("PXCERTREAD_0031") + QStringLiteral("= what\n"));
    }

    void attributeValueIsLookedUpAsWell()
    {
        Certificate certificate;
        certificate.subject = sequence({set({attribute(kCommonName, utf8("PXCERTREAD_0039"))})});
        const Parsed parsed = parse(certificate.encoded());
        const QString name = shown("PXCERTREAD_0039");
        QCOMPARE(parsed.row("PXCERTREAD_0020").value, name);
        QCOMPARE(parsed.row("PXCERTREAD_0020").full_value, QStringLiteral("CN= %1\n").arg(name));
        QVERIFY(parsed.blocks.at(1).first.contains(QStringLiteral(":   %1\n\n").arg(name)));
    }

    void attributeValueThatIsNoTextIsEmpty()
    {
        Certificate certificate;
        certificate.subject = sequence({set({attribute(kOrganization, utf8("Org"))}),
                                        set({attribute("550410", sequence({utf8("Street 1")}))})});
        const detail_node row = parse(certificate.encoded()).row("PXCERTREAD_0020");
        QCOMPARE(row.value, QStringLiteral(",Org"));
        QCOMPARE(row.full_value, QStringLiteral("postalAddress= \nO= Org\n"));
    }

    void attributeValueOfNulStaysWhole()
    {
        Certificate certificate;
        certificate.subject =
            sequence({set({attribute(kCommonName, tlv(0x0C, QByteArray("a\0b", 3)))})});
        const Parsed parsed = parse(certificate.encoded());
        const QString name = QString::fromLatin1("a\0b", 3);
        QCOMPARE(parsed.row("PXCERTREAD_0020").value, name);
        QVERIFY(parsed.blocks.at(1).first.contains(name));
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

    void lastNameOfAKindCounts()
    {
        Certificate certificate;
        certificate.subject = sequence({set({attribute(kCommonName, utf8("one"))}),
                                        set({attribute(kCommonName, utf8("two"))})});
        certificate.issuer = sequence({set({attribute(kOrganization, utf8("three"))}),
                                       set({attribute(kOrganization, utf8("four"))})});
        const QString identity = parse(certificate.encoded()).blocks.at(1).first;
        QVERIFY(identity.contains(shown("PXCERTREAD_0007") + QStringLiteral(":   two\n\n")));
        QVERIFY(identity.contains(shown("PXCERTREAD_0008") + QStringLiteral(":   four\n\n")));
    }

    void timesShowEightHoursLater_data()
    {
        QTest::addColumn<QByteArray>("time");
        QTest::addColumn<QString>("iso");
        QTest::newRow("noon") << utcTime("250102120000Z") << "2025-01-02T20:00:00Z";
        QTest::newRow("next day") << utcTime("250102170000Z") << "2025-01-03T01:00:00Z";
        QTest::newRow("year 49") << utcTime("491231235959Z") << "2050-01-01T07:59:59Z";
        QTest::newRow("year 50") << utcTime("500101000000Z") << "1950-01-01T08:00:00Z";
        QTest::newRow("leap day") << utcTime("240229000000Z") << "2024-02-29T08:00:00Z";
        QTest::newRow("four digits")
            << generalizedTime("20991231235959Z") << "2100-01-01T07:59:59Z";
        QTest::newRow("year 1") << generalizedTime("00010101000000Z") << "0001-01-01T08:00:00Z";
    }
    void timesShowEightHoursLater()
    {
        QFETCH(QByteArray, time);
        QFETCH(QString, iso);
        Certificate certificate;
        certificate.validity = validityOf(time, time);
        const Parsed parsed = parse(certificate.encoded());
        QCOMPARE(parsed.row("PXCERTREAD_0018").value, shortText(iso));
        QCOMPARE(parsed.row("PXCERTREAD_0019").value, shortText(iso));
        QVERIFY(!shortText(iso).isEmpty());
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

    void timesFollowTheSystemsLocaleAlone()
    {
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::German));
        const Parsed parsed = parse(Certificate().encoded());
        QLocale::setDefault(before);
        QCOMPARE(parsed.row("PXCERTREAD_0018").value,
                 shortText(QStringLiteral("2020-01-01T08:00:00Z")));
    }

    void timeOfAnotherForm_data()
    {
        QTest::addColumn<QByteArray>("time");
        QTest::newRow("fraction") << generalizedTime("20250101000000.5Z");
        QTest::newRow("no seconds") << utcTime("2501010000Z");
        QTest::newRow("offset") << utcTime("250101000000+0000");
        QTest::newRow("no zone") << generalizedTime("20250101000000");
        QTest::newRow("lower-case zone") << utcTime("250101000000z");
        QTest::newRow("UTCTime of 15") << utcTime("20250101000000Z");
        QTest::newRow("GeneralizedTime of 13") << generalizedTime("250101000000Z");
        QTest::newRow("another type") << tlv(0x13, "250101000000Z");
        QTest::newRow("empty") << utcTime("");
    }
    void timeOfAnotherForm()
    {
        QFETCH(QByteArray, time);
        const QByteArray good = utcTime("250101000000Z");
        for (const bool after : {false, true}) {
            Certificate certificate;
            certificate.validity = after ? validityOf(good, time) : validityOf(time, good);
            MessageRecorder recorder;
            const Parsed parsed = parse(certificate.encoded());
            QVERIFY(
                recorder.messages().contains(failure(after ? "notAfterValue" : "notBeforeValue")));
            QVERIFY(!parsed.hasRow("PXCERTREAD_0018"));
            QCOMPARE(int(parsed.rows.size()), 4);
            QVERIFY(showsNoDates(parsed));
        }
    }

    void oneTimeAloneDecidesNothing()
    {
        const QByteArray future = generalizedTime("29990101000000Z");
        const QByteArray broken = utcTime("2501010000Z");
        for (const QByteArray &validity :
             {sequence({future}), validityOf(future, broken), validityOf(broken, future)}) {
            Certificate certificate;
            certificate.validity = validity;
            const Parsed parsed = parse(certificate.encoded());
            QCOMPARE(parsed.blocks.at(0).first, QStringLiteral(" ") + shown("PXCERTREAD_0006"));
            QVERIFY(showsNoDates(parsed));
        }
    }

    void impossibleTimeIsEmptyAndNoFailure_data()
    {
        QTest::addColumn<QString>("fields");
        for (const char *fields :
             {"1301000000", "0001000000", "0132000000", "0100000000", "0230000000", "0101240000",
              "0101006000", "0101000060", "01010000-1", "0101 00000", "xx01000000", "+101000000"})
            QTest::newRow(fields) << QString::fromLatin1(fields);
    }
    void impossibleTimeIsEmptyAndNoFailure()
    {
        QFETCH(QString, fields);
        const QByteArray octets = fields.toLatin1();
        for (const QByteArray &time :
             {tlv(0x17, "25" + octets + "Z"), tlv(0x18, "2025" + octets + "Z")}) {
            Certificate certificate;
            certificate.validity = validityOf(time, time);
            const Parsed parsed = parse(certificate.encoded());
            QVERIFY(parsed.hasRow("PXCERTREAD_0018"));
            QCOMPARE(parsed.row("PXCERTREAD_0018").value, QString());
            QCOMPARE(parsed.row("PXCERTREAD_0019").value, QString());
            QVERIFY(parsed.hasRow("PXCERTREAD_0021"));
            QVERIFY(showsNoDates(parsed));
        }
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

    void publicKey_data()
    {
        QTest::addColumn<QByteArray>("bits");
        QTest::addColumn<QString>("full");
        QTest::newRow("unused-bits octet 0 goes")
            << QByteArray::fromHex("003082010A") << "30 82 01 0A ";
        QTest::newRow("a key's own first 0 stays") << QByteArray::fromHex("0000FF") << "00 FF ";
        QTest::newRow("other counts stay") << QByteArray::fromHex("07AB80") << "07 AB 80 ";
        QTest::newRow("count alone") << QByteArray::fromHex("00") << "";
        QTest::newRow("nothing") << QByteArray() << "";
    }
    void publicKey()
    {
        QFETCH(QByteArray, bits);
        Certificate certificate;
        certificate.keyInfo =
            sequence({sequence({oid(kRsaEncryption), tlv(0x05, {})}), tlv(0x03, bits)});
        const Parsed parsed = parse(certificate.encoded());
        QTEST(parsed.row("PXCERTREAD_0021").full_value, "full");
        QVERIFY(!parsed.row("PXCERTREAD_0021").value.isEmpty());
        QVERIFY(!parsed.hasRow("PXCERTREAD_0022"));
    }

    void curveIsARowOfItsOwn()
    {
        Certificate certificate;
        certificate.keyInfo = sequence({sequence({oid(kEcPublicKey), oid(kPrime256)}),
                                        tlv(0x03, QByteArray::fromHex("0004"))});
        const Parsed parsed = parse(certificate.encoded());
        QCOMPARE(parsed.rows.back().name, shown("PXCERTREAD_0022"));
        QVERIFY(!parsed.rows.back().value.isEmpty());
        QCOMPARE(parsed.rows.back().full_value, parsed.rows.back().value);
        QVERIFY(parsed.rows.back().value != parsed.row("PXCERTREAD_0021").value);
    }

    void parameterOfAnotherTypeIsIgnored_data()
    {
        QTest::addColumn<QByteArray>("parameter");
        QTest::newRow("SEQUENCE") << sequence({integer("01")});
        QTest::newRow("NULL") << tlv(0x05, {});
        QTest::newRow("OCTET STRING") << tlv(0x04, "octets");
        QTest::newRow("UTF8String") << utf8("text");
    }
    void parameterOfAnotherTypeIsIgnored()
    {
        QFETCH(QByteArray, parameter);
        Certificate certificate;
        certificate.keyInfo = sequence(
            {sequence({oid(kEcPublicKey), parameter}), tlv(0x03, QByteArray::fromHex("0004"))});
        const Parsed parsed = parse(certificate.encoded());
        QVERIFY(parsed.hasRow("PXCERTREAD_0021"));
        QVERIFY(!parsed.hasRow("PXCERTREAD_0022"));
    }

    void unknownAlgorithmsShowTheirIdentifiers()
    {
        Certificate certificate;
        certificate.signature = sequence({oid(kUnknown)});
        certificate.keyInfo = sequence(
            {sequence({oid(kUnknown), oid(kUnknown)}), tlv(0x03, QByteArray::fromHex("00"))});
        const Parsed parsed = parse(certificate.encoded());
        for (const char *key : {"PXCERTREAD_0016", "PXCERTREAD_0021", "PXCERTREAD_0022"})
            QCOMPARE(parsed.row(key).value, QLatin1String(kUnknownDotted));
    }
};

QTEST_GUILESS_MAIN(TestCertFields)
#include "tst_cert_fields.moc"
