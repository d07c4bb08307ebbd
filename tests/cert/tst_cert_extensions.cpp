#include "asn/asn_values.h"
#include "asn/pxasn.h"
#include "tests/cert/parsed.h"
#include "tests/cert/recognised.h"
#include "tests/support/der.h"
#include "tests/support/message_recorder.h"

#include <QTest>

using namespace der;
using texts::shown;

namespace {

QString makeNode(const QString &key, std::vector<QString> values)
{
    c_pxcert model(nullptr);
    return model.make_certnode(texts::raw(key), values);
}

std::vector<QString> list(const QStringList &values)
{
    return {values.begin(), values.end()};
}

// The content octets of an OBJECT IDENTIFIER.
QByteArray contentOf(const QString &identifier)
{
    unsigned char octets[96];
    unsigned int length = sizeof octets;
    const bool known = ASNGetOIDData(identifier.toLatin1().constData(), octets, &length) == 1;
    return known ? QByteArray(reinterpret_cast<const char *>(octets), int(length)) : QByteArray();
}

constexpr const char *kEndEntity = "Subject Type=End Entity\nPath Length Constraint=None";

} // namespace

Q_DECLARE_METATYPE(std::vector<certpolicy>)

/// The texts of extensions from their flattened values, and the walk over a certificate's list.
class TestCertExtensions : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { c_language::GetLangPtr()->LANG_SetFileName(QString()); }

    void keyUsage_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << 0 << "";
        QTest::newRow("0x80") << 0x80 << "Digital Signature";
        QTest::newRow("0x40") << 0x40 << "Non-Repudiation";
        QTest::newRow("0x20") << 0x20 << "Key Encipherment";
        QTest::newRow("0x10") << 0x10 << "Data Encipherment";
        QTest::newRow("0x08") << 0x08 << "Key Agreement";
        QTest::newRow("0x04") << 0x04 << "Certificate Signing";
        QTest::newRow("0x02") << 0x02 << "Off_line CRL Signing, CRL Signing";
        QTest::newRow("0x01") << 0x01 << "Encipher Only";
        QTest::newRow("0x8000") << 0x8000 << "Decipher Only";
        QTest::newRow("two") << 0xA0 << "Digital Signature,Key Encipherment";
        QTest::newRow("order") << 0x60 << "Key Encipherment,Non-Repudiation";
        QTest::newRow("unnamed bits") << 0x7F00 << "";
        QTest::newRow("all") << 0xFFFF
                             << "Digital Signature,Key Encipherment,Non-Repudiation,"
                                "Data Encipherment,Key Agreement,Certificate Signing,"
                                "Off_line CRL Signing, CRL Signing,Encipher Only,Decipher Only";
    }
    void keyUsage()
    {
        QFETCH(int, bits);
        QTEST(c_pxcert(nullptr).get_keyusage(bits), "text");
    }

    void netscapeType_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << 0 << "";
        QTest::newRow("0x01") << 0x01 << "Object Signing CA";
        QTest::newRow("0x02") << 0x02 << "Email CA";
        QTest::newRow("0x04") << 0x04 << "SSL CA";
        QTest::newRow("0x08") << 0x08 << "Reserved";
        QTest::newRow("0x10") << 0x10 << "Object Signing";
        QTest::newRow("0x20") << 0x20 << "Email";
        QTest::newRow("0x40") << 0x40 << "SSL Server";
        QTest::newRow("0x80") << 0x80 << "SSL Client";
        QTest::newRow("all") << 0xFF
                             << "Object Signing CA,Email CA,SSL CA,Reserved,Object Signing,Email,"
                                "SSL Server,SSL Client";
    }
    void netscapeType()
    {
        QFETCH(int, bits);
        QTEST(c_pxcert(nullptr).get_ns_cert_type(bits), "text");
    }

    void node_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, QLatin1String key, const QStringList &values,
                            const QString &text) {
            QTest::newRow(name) << QString(key) << values << text;
        };

        const QLatin1String usage = text_keys::kKeyUsage;
        row("usage", usage, {"05 A0"}, "Digital Signature,Key Encipherment");
        row("usage, critical", usage, {"FF", "05 A0"}, "Digital Signature,Key Encipherment");
        row("usage, second octet", usage, {"07 00 80"}, "Decipher Only");
        row("usage, no bits", usage, {"00"}, "");
        row("usage, no octets", usage, {""}, "");
        row("usage, nothing", usage, {}, "");
        row("usage, no hexadecimal text", usage, {"x y z"}, "");

        row("Netscape", text_keys::kNetscapeCertificateType, {"06 C0"}, "SSL Server,SSL Client");
        row("Netscape, critical", text_keys::kNetscapeCertificateType, {"FF", "00 05"},
            "Object Signing CA,SSL CA");

        const QLatin1String constraints = text_keys::kBasicConstraints;
        row("constraints, nothing", constraints, {}, kEndEntity);
        row("constraints, empty", constraints, {""}, kEndEntity);
        row("constraints, 00", constraints, {"00"}, kEndEntity);
        row("constraints, FF", constraints, {"FF"}, "Subject Type=CA\nPath Length Constraint=None");
        row("constraints, another", constraints, {"03"}, kEndEntity);
        row("constraints, critical CA", constraints, {"FF", "FF"}, "Subject Type=CA\n");
        row("constraints, critical, no CA", constraints, {"FF", ""}, "Subject Type=End Entity\n");
        row("constraints, critical CA, length", constraints, {"FF", "FF", "03"},
            "Subject Type=CA\nPath Length Constraint=03\n");
        row("constraints, critical, no CA, length", constraints, {"FF", "", "03"},
            "Subject Type=End Entity\nPath Length Constraint=03\n");
        row("constraints, CA with length", constraints, {"FF", "00"}, "Subject Type=End Entity\n");
        row("constraints, long length", constraints, {"FF", "FF", "00 80"},
            "Subject Type=CA\nPath Length Constraint=00 80\n");

        const QLatin1String names = text_keys::kSubjectAlternativeName;
        row("names", names, {"a b", "c"}, "DNS Name=ab\nDNS Name=c\n");
        row("names, critical", names, {"FF", "a"}, "DNS Name=FF\nDNS Name=a\n");
        row("names, every white space", names, {QString::fromUtf8("a\t\n\u00a0\u3000 b%1")},
            "DNS Name=ab%1\n");
        row("names, nothing", names, {}, "");

        const QLatin1String access = text_keys::kAuthorityInformationAccess;
        const QString first = "[1]Authority Info Access\n    Access Method=1.2.3\n"
                              "    Alternative Name:\n        URL=http://a%20b\n";
        row("access", access, {"1.2.3", "h t t p : / / a % 2 0 b"}, first);
        row("access, critical", access, {"FF", "1.2.3", "http://a%20b"}, first);
        row("access, not critical", access, {"00", "1.2.3", "http://a%20b"}, first);
        row("access, two", access, {"1.2.3", "http://a%20b", "1.2.4", "x"},
            first + "[2]Authority Info Access\n    Access Method=1.2.4\n"
                    "    Alternative Name:\n        URL=x\n");
        row("access, location missing", access, {"1.2.3"},
            "[1]Authority Info Access\n    Access Method=1.2.3\n"
            "    Alternative Name:\n        URL=\n");
        row("access, nothing", access, {}, "");

        const QLatin1String authority = text_keys::kAuthorityKeyIdentifier;
        row("authority", authority, {"AB CD"}, "KeyID=AB CD\n");
        row("authority, critical", authority, {"FF", "AB CD"}, "KeyID=AB CD\n");
        row("authority, nothing", authority, {}, "");
        row("authority, flag alone", authority, {"00"}, "");
        const QString issuer = "KeyID=AB\nCertificate Issuer:\n    Directory Address:\n";
        row("authority, serial", authority, {"AB", "01"}, issuer + "Certificate SerialNumber=01");
        row("authority, issuer", authority, {"AB", "CN", "N a m e", "O", "Org", "01 02 03"},
            issuer + "        CN=Name\n        O=Org\nCertificate SerialNumber=01 02 03");
        row("authority, name that is a key", authority,
            {"AB", text_keys::kWindowTitle, "a b c", "01"},
            issuer + "        " + shown(text_keys::kWindowTitle) +
                "=abc\nCertificate SerialNumber=01");
        row("authority, serial as characters", authority,
            {"AB", QString::fromLatin1("a b \x01 \xff")},
            issuer + "Certificate SerialNumber=61 62 01 FF");
        row("authority, two octets", authority, {"AB", "01 02"},
            issuer + "Certificate SerialNumber=01 02");
        row("authority, odd", authority, {"AB", "CN", "Name", "h t t p", "01"},
            issuer + "        CN=Name\n        http\nCertificate SerialNumber=01");
        row("authority, short values stay", authority, {"AB", "CN", "a", "O", "a b", "01"},
            issuer + "        CN=a\n        O=ab\nCertificate SerialNumber=01");
        row("authority, blanks elsewhere stay", authority, {"AB", "CN", "ab cd", "01"},
            issuer + "        CN=ab cd\nCertificate SerialNumber=01");

        row("generic", QLatin1String("no such name"), {"one", "", text_keys::kWindowTitle},
            "one\n\n" + shown(text_keys::kWindowTitle) + "\n");
        row("generic, nothing", QLatin1String("no such name"), {}, "");
        row("policies by values", text_keys::kCertificatePolicies, {"one"}, "one\n");
        row("points by values", text_keys::kCrlDistributionPoints, {"one"}, "one\n");
    }
    void node()
    {
        QFETCH(QString, key);
        QFETCH(QStringList, values);
        QTEST(makeNode(key, list(values)), "text");
    }

    void groups_data()
    {
        QTest::addColumn<std::vector<certpolicy>>("items");
        QTest::addColumn<QString>("policies");
        QTest::addColumn<QString>("points");
        using Items = std::vector<certpolicy>;
        QTest::newRow("nothing") << Items() << ""
                                 << "";
        QTest::newRow("one") << Items{{"1.2.3", 4}}
                             << "[1]Certificate Policy:\n    Policy Identifier=1.2.3"
                             << "[1]CRL Distribution Point\n    Distribution Point Name:\n"
                                "        Full Name:\nURL=1.2.3";
        QTest::newRow("two")
            << Items{{"1.2.3", 1}, {"1.2.4", 1}}
            << "[1]Certificate Policy:\n    Policy Identifier=1.2.3\n"
               "[2]Certificate Policy:\n    Policy Identifier=1.2.4"
            << "[1]CRL Distribution Point\n    Distribution Point Name:\n        Full Name:\n"
               "URL=1.2.3\n[2]CRL Distribution Point\n    Distribution Point Name:\n"
               "        Full Name:\nURL=1.2.4";
        QTest::newRow("with items below")
            << Items{{"u", 1}, {"CN", 3}, {"a b", 3}, {"v", 1}}
            << "[1]Certificate Policy:\n    Policy Identifier=u\n"
               "    [1,1]Policy Qualifier Info:\n        Policy Qualifier Id=CN\n"
               "        Qualifier:\n               ab\n"
               "[2]Certificate Policy:\n    Policy Identifier=v"
            << "[1]CRL Distribution Point\n    Distribution Point Name:\n        Full Name:\n"
               "URL=u\n   CRL Issuer:\n       Directory Address:\n            CN=a b\n"
               "[2]CRL Distribution Point\n    Distribution Point Name:\n        Full Name:\nURL=v";
        QTest::newRow("first below the lowest")
            << Items{{"a", 5}, {"b", 4}}
            << "[1]Certificate Policy:\n    Policy Identifier=\n"
               "    [1,1]Policy Qualifier Info:\n        Policy Qualifier Id=a\n"
               "[2]Certificate Policy:\n    Policy Identifier=b"
            << "[1]CRL Distribution Point\n    Distribution Point Name:\n        Full Name:\nURL=\n"
               "[2]CRL Distribution Point\n    Distribution Point Name:\n        Full Name:\nURL=b";
        QTest::newRow("looked up and trimmed")
            << Items{{text_keys::kWindowTitle, -1}}
            << "[1]Certificate Policy:\n    Policy Identifier=" + shown(text_keys::kWindowTitle)
            << "[1]CRL Distribution Point\n    Distribution Point Name:\n        Full Name:\nURL=" +
                   shown(text_keys::kWindowTitle);
    }
    void groups()
    {
        QFETCH(std::vector<certpolicy>, items);
        c_pxcert model(nullptr);
        QTEST(model.make_certnode_certpolicy(items), "policies");
        QTEST(model.make_certnode_crlpoint(items), "points"); // they are all still there
        QTEST(model.make_certnode_certpolicy(items), "policies");
    }

    void singleBlocks()
    {
        c_pxcert model(nullptr);
        std::vector<QString> values = {"p", "id", "a b", "id2", "c"};
        QCOMPARE(model.make_single_certpolicy(7, values),
                 QStringLiteral("[7]Certificate Policy:\n    Policy Identifier=p\n"
                                "    [7,1]Policy Qualifier Info:\n        Policy Qualifier Id=id\n"
                                "        Qualifier:\n               ab\n"
                                "    [7,2]Policy Qualifier Info:\n        Policy Qualifier Id=id2\n"
                                "        Qualifier:\n               c\n"));
        values = {"h t t p", "CN", "a b"};
        QCOMPARE(model.make_single_crlpoint(3, values),
                 QStringLiteral("[3]CRL Distribution Point\n    Distribution Point Name:\n"
                                "        Full Name:\nURL=h t t p\n   CRL Issuer:\n"
                                "       Directory Address:\n            CN=a b\n"));
        values = {"u", "CN", "a", "odd"};
        QVERIFY(model.make_single_crlpoint(1, values).endsWith(QStringLiteral("CN=a\n")));
        values = {"u", "two values"};
        QVERIFY(!model.make_single_crlpoint(1, values).contains(QStringLiteral("CRL Issuer")));
        values = {"u%1", "%2", "%3"};
        QVERIFY(model.make_single_certpolicy(1, values).contains(QStringLiteral("Id=%2\n")));
        values.clear();
        QCOMPARE(model.make_single_certpolicy(1, values),
                 QStringLiteral("[1]Certificate Policy:\n    Policy Identifier=\n"));
    }

    void policiesBecomePurposesAndPointsDoNot()
    {
        c_pxcert model(nullptr);
        std::vector<certpolicy> items = {{"p", 0}, {"q", 1}, {"r", 0}};
        model.make_certnode_certpolicy(items);
        std::vector<certpolicy> points = {{"s", 0}};
        model.make_certnode_crlpoint(points);
        Parsed parsed;
        parsed.listenTo(model);
        model.parse_cert({});
        QVERIFY(parsed.blocks.at(0).first.endsWith(QStringLiteral("\n      -p\n      -r\n\n")));
    }

    void purposeWithoutTextIsListed()
    {
        c_pxcert model(nullptr);
        std::vector<certpolicy> items = {{"below the lowest", 5}, {"p", 4}};
        model.make_certnode_certpolicy(items);
        Parsed parsed;
        parsed.listenTo(model);
        model.parse_cert({});
        QVERIFY(parsed.blocks.at(0).first.endsWith(QStringLiteral("\n      -\n      -p\n\n")));
    }

    // Each part's depths are counted on from where those of the part before ended.
    void depthGoesOnFromPartToPart()
    {
        Certificate certificate;
        certificate.extensions = criticalExtension("551D20", "\xAB");
        QCOMPARE(parse(certificate.encoded()).rows.back().value,
                 QStringLiteral("[1]Certificate Policy:\n    Policy Identifier=\n"
                                "    [1,1]Policy Qualifier Info:\n"
                                "        Policy Qualifier Id=FF\n"
                                "[2]Certificate Policy:\n    Policy Identifier=AB"));
    }

    void everyListBelowTheWrapperIsWalked()
    {
        Certificate certificate;
        certificate.keyInfo += tlv(0xA3, sequence({extension(kUnknown, integer("05"))}) +
                                             sequence({extension(kUnknown, integer("06"))}));
        const Parsed parsed = parse(certificate.encoded());
        QCOMPARE(parsed.rows.size(), std::size_t(10));
        QCOMPARE(parsed.rows.at(8).value, QStringLiteral("05\n"));
        QCOMPARE(parsed.rows.at(9).value, QStringLiteral("06\n"));
    }

    void everyPartOfAnExtensionCounts()
    {
        Certificate certificate;
        certificate.extensions =
            sequence({oid(kUnknown), tlv(0x01, "\xFF"), integer("07"), tlv(0x04, integer("05"))});
        QCOMPARE(parse(certificate.encoded()).rows.back().value, QStringLiteral("FF\n07\n05\n"));
    }

    void walkSkipsWhatIsNoExtension()
    {
        Certificate certificate;
        certificate.extensions = joined({sequence({}), sequence({integer("01"), tlv(0x04, "x")}),
                                         extension(kUnknown, integer("05"))});
        const Parsed parsed = parse(certificate.encoded());
        QCOMPARE(parsed.rows.size(), std::size_t(9));
        QCOMPARE(parsed.rows.back().name, QLatin1String(kUnknownDotted));
        QCOMPARE(parsed.rows.back().value, QStringLiteral("05\n"));
        QCOMPARE(parsed.rows.back().full_value, parsed.rows.back().value);
        QCOMPARE(parsed.rows.back().kind, 1);
    }

    void walkSaysNameAndCount()
    {
        Certificate certificate;
        certificate.extensions = criticalExtension(kUnknown, integer("05"));
        MessageRecorder recorder;
        parse(certificate.encoded());
        QVERIFY(recorder.messages().contains(
            QStringLiteral("\"%1\"  count 3").arg(QLatin1String(kUnknownDotted))));
        c_pxcert model(nullptr);
        QVERIFY(!model.parseTBSCertificate_extendata(nullptr));
        PXAsn document(nullptr);
        QVERIFY(document.open(sequence({sequence({extension(kUnknown, integer("05"))})})));
        QVERIFY(model.parseTBSCertificate_extendata(&document));
    }

    void extensionWithoutValueHasARow()
    {
        Certificate certificate;
        certificate.extensions = joined({sequence({oid(kUnknown)}), sequence({oid("551D0F")}),
                                         sequence({oid("551D20")}), sequence({oid("551D23")})});
        const Parsed parsed = parse(certificate.encoded());
        QCOMPARE(parsed.rows.size(), std::size_t(12));
        for (std::size_t i = 8; i < parsed.rows.size(); ++i)
            QCOMPARE(parsed.rows[i].value, QString());
    }

    void everyKindOfContentIsSafe_data()
    {
        QTest::addColumn<QByteArray>("oid");
        for (const RecognisedExtension &extension : kRecognisedExtensions) {
            const QString identifier = recognised::identifierOf(extension);
            QTest::newRow(qPrintable(identifier)) << contentOf(identifier).toHex();
        }
    }
    void everyKindOfContentIsSafe()
    {
        QFETCH(QByteArray, oid);
        QVERIFY(!oid.isEmpty());
        const QByteArray good = sequence({sequence({der::oid(kUnknown), tlv(0x86, "uri")}),
                                          tlv(0x80, "key"), tlv(0x82, "serial"), tlv(0x03, "ab")});
        QList<QByteArray> contents = {
            QByteArray(),      "\x30",        "\x03\x01",       "\x03\x00",
            tlv(0x03, {}),     tlv(0x05, {}), tlv(0x1E, "odd"), tlv(0x0C, "\xFF\xFE"),
            tlv(0x06, "\x80"), sequence({})};
        for (int size = 0; size <= good.size(); ++size)
            contents << good.left(size);
        for (const QByteArray &content : qAsConst(contents)) {
            Certificate certificate;
            certificate.extensions =
                extension(oid.constData(), content) + criticalExtension(oid.constData(), content);
            QCOMPARE(parse(certificate.encoded()).rows.size(), std::size_t(10));
        }
    }
};

QTEST_GUILESS_MAIN(TestCertExtensions)
#include "tst_cert_extensions.moc"
