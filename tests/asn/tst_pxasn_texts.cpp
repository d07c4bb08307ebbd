#include "tests/support/der.h"
#include "tests/support/printed.h"

#include "asn/pxasn.h"
#include "core/px_core_manager.h"

#include <QTest>

using namespace der;

namespace {

struct TagName
{
    const char *name;
    int tag;
    bool hasLength; ///< `print` adds the length of the value's text
};

constexpr TagName kTagNames[] = {
    {"BOOLEAN", 0x01, true},
    {"INTEGER", 0x02, true},
    {"BIT STRING", 0x03, true},
    {"OCTET STRING", 0x04, true},
    {"NULL", 0x05, false},
    {"OBJECT IDENTIFIER", 0x06, true},
    {"OBJECT DESCRIPTOR", 0x07, true},
    {"EXTERNAL", 0x08, true},
    {"REAL", 0x09, true},
    {"ENUMERATED", 0x0A, true},
    {"UTF8 STRING", 0x0C, true},
    {"RELATIVE OID", 0x0D, true},
    {"NUMERIC STRING", 0x12, true},
    {"PRINTABLE STRING", 0x13, true},
    {"TELETEX STRING", 0x14, true},
    {"VIDEOTEX STRING", 0x15, true},
    {"IA5 STRING", 0x16, true},
    {"UTC TIME", 0x17, true},
    {"GENERALIZED TIME", 0x18, true},
    {"GRAPHIC STRING", 0x19, true},
    {"VISIBLE STRING", 0x1A, true},
    {"GENERAL STRING", 0x1B, true},
    {"UNIVERSAL STRING", 0x1C, true},
    {"CHARACTER STRING", 0x1D, true},
    {"BMP STRING", 0x1E, true},
    {"SEQUENCE", 0x30, false},
    {"SET", 0x31, false},
    {"CONTEXT SPECIFIC", 0xA0, false},
    {"UNKNOWN", 0xA1, false},
    {"UNKNOWN", 0xA2, false},
    {"UNKNOWN", 0xA3, false},
    {"UNKNOWN", 0xA4, false},
    {"UNKNOWN", 0x80, false},
    {"UNKNOWN", 0x82, false},
    {"UNKNOWN", 0x86, false},
};

QStringList flattened(const PXAsnBlock &block)
{
    std::vector<QString> values;
    if (block.get_extendata(values) != 1)
        return {QStringLiteral("failed")};
    QStringList list;
    for (const QString &value : values)
        list << value;
    return list;
}

QString latin1(const QByteArray &text)
{
    return QString::fromLatin1(text.constData(), text.size());
}

} // namespace

/// The texts of blocks: single values, whole trees, flattened extensions.
class TestPxasnTexts : public QObject
{
    Q_OBJECT

private:
    PXAsn m_document{nullptr};

    const PXAsnBlock &opened(const QByteArray &der)
    {
        if (!m_document.open(der))
            qFatal("the element did not parse");
        return m_document;
    }

private slots:
    void initTestCase() { GetCoreManager(); }

    void values_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("value");  // as extensions show it
        QTest::addColumn<QString>("braced"); // what stands in the braces of the other form
        const auto row = [](const char *name, int tag, const QByteArray &content,
                            const QString &value, const QString &braced) {
            QTest::newRow(name) << tag << content << value << braced;
        };
        const auto listed = [&](const char *name, int tag, const QByteArray &content,
                                const QByteArray &value) {
            row(name, tag, content, latin1(value), latin1(value.isEmpty() ? value : value + ' '));
        };
        const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
        listed("OCTET STRING", 0x04, hex("0414ABff"), "04 14 AB FF");
        listed("OCTET STRING of one octet", 0x04, hex("0a"), "0A");
        listed("empty OCTET STRING", 0x04, {}, "");
        listed("INTEGER", 0x02, hex("00ff"), "00 FF");
        listed("BOOLEAN", 0x01, hex("FF"), "FF");
        listed("BIT STRING keeps its unused-bits octet", 0x03, hex("0780"), "07 80");
        listed("NULL", 0x05, {}, "");
        listed("GeneralizedTime", 0x18, "2020", "32 30 32 30");
        listed("TeletexString", 0x14, "ab", "61 62");
        listed("VisibleString", 0x1A, "ab", "61 62");
        listed("context-specific 0", 0x80, "ab", "61 62");
        listed("IA5String", 0x16, "ab", "a b");
        listed("IA5String of one character", 0x16, "a", "a");
        listed("empty IA5String", 0x16, {}, "");
        listed("PrintableString", 0x13, "a b", "a   b");
        listed("PrintableString beyond ASCII", 0x13, "\xE9\xFF", "\xE9 \xFF");
        listed("IA5String with a NUL", 0x16, QByteArray("a\0b", 3), QByteArray("a \0 b", 5));
        listed("context-specific 6", 0x86, "http", "h t t p");
        listed("empty context-specific 6", 0x86, {}, "");
        row("context-specific 2, empty", 0x82, {}, {}, {});
        row("context-specific 2, one octet", 0x82, "a", QStringLiteral("61"), QStringLiteral("a "));
        row("context-specific 2, two octets", 0x82, "ab", QStringLiteral("61 62"),
            QStringLiteral("a b "));
        row("context-specific 2, three octets", 0x82, "abc", QStringLiteral("61 62 63"),
            QStringLiteral("a b c "));
        listed("context-specific 2, four octets", 0x82, "abcd", "a b c d");
        const auto plain = [&](const char *name, int tag, const QByteArray &content,
                               const QString &value) { row(name, tag, content, value, value); };
        plain("named OBJECT IDENTIFIER", 0x06, hex("550403"), QStringLiteral("CN"));
        plain("unknown OBJECT IDENTIFIER", 0x06, hex(kUnknown), QLatin1String(kUnknownDotted));
        plain("bad OBJECT IDENTIFIER", 0x06, hex("55"), {});
        plain("UTF8String", 0x0C, "\xC3\xA9 b", QString::fromUtf8("é b"));
        plain("BMPString", 0x1E, hex("00410042"), QStringLiteral("AB"));
        plain("UTCTime", 0x17, "200101000000Z", QStringLiteral("200101000000Z "));
        plain("UTCTime with a NUL", 0x17, QByteArray("2001\0Z", 6), QStringLiteral("2001 "));
        plain("empty UTCTime", 0x17, {}, QStringLiteral(" "));
        row("SEQUENCE", 0x30, integer("01"), {}, {});
        row("empty SEQUENCE", 0x30, {}, {}, {});
        row("empty [3]", 0xA3, {}, {}, {});
    }

    void values()
    {
        QFETCH(int, tag);
        QFETCH(QByteArray, content);
        QFETCH(QString, braced);
        const PXAsnBlock &block = opened(tlv(tag, content));
        QTEST(block.printData_ex(), "value");
        QCOMPARE(block.printData(), QStringLiteral(" { ") + braced + '}');
    }

    void names_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("hasLength");
        for (const TagName &row : kTagNames)
            QTest::newRow(qPrintable(QStringLiteral("%1").arg(row.tag, 2, 16)))
                << row.tag << QString::fromLatin1(row.name) << row.hasLength;
    }

    void names()
    {
        QFETCH(int, tag);
        QFETCH(QString, name);
        QFETCH(bool, hasLength);
        const PXAsnBlock &block = opened(tlv(tag, {}));
        const QString length = QString::number(block.printData().size());
        QCOMPARE(block.print(), hasLength ? name + "       length =" + length : name);
    }

    void printedLengthIsThatOfTheText()
    {
        QCOMPARE(opened(tlv(0x04, "abc")).print(), // " { 61 62 63 }"
                 QStringLiteral("OCTET STRING       length =13"));
        QCOMPARE(opened(tlv(0x13, "abc")).print(),
                 QStringLiteral("PRINTABLE STRING       length =10"));
        QCOMPARE(opened(oid("550403")).print(),
                 QStringLiteral("OBJECT IDENTIFIER       length =6"));
        QCOMPARE(opened(utf8("\xC3\xA9")).print(), QStringLiteral("UTF8 STRING       length =5"));
    }

    void everyTagHasAName()
    {
        for (int tag = 0; tag < 256; ++tag) {
            if (!ASN_TAGVALID(static_cast<unsigned char>(tag)))
                continue;
            QVERIFY(std::any_of(std::begin(kTagNames), std::end(kTagNames),
                                [tag](const TagName &row) { return row.tag == tag; }));
        }
    }

    void nothing()
    {
        const PXAsnBlock none(nullptr);
        QCOMPARE(none.print(), QStringLiteral("None"));
        QCOMPARE(none.printData(), QStringLiteral(" { }"));
        QCOMPARE(none.printData_ex(), QString());
        QCOMPARE(none.myprint(), QStringLiteral(" { }\n"));
        QCOMPARE(none.get_basedata(), std::string(" { }: "));
        QCOMPARE(printedBy([&] { none.dump(1); }), QByteArray("    None"));
        QCOMPARE(flattened(none), QStringList());
    }

    void trees()
    {
        const PXAsnBlock &block = opened(
            sequence({integer("01"), sequence({utf8("%s\xC3\xA9%n"), set({})}), tlv(0x13, "x")}));
        QCOMPARE(block.myprint(), QString::fromUtf8(" { 01 }\n { %sé%n}\n { }\n { x }\n"));
        QCOMPARE(block.get_basedata(), std::string(" { 01 }:  { %s\xC3\xA9%n}:  { }:  { x }: "));
        QCOMPARE(printedBy([&] { block.dump(0); }),
                 QByteArray("SEQUENCE    INTEGER       length =7    SEQUENCE"
                            "        UTF8 STRING       length =9        SET"
                            "    PRINTABLE STRING       length =6"));
        QCOMPARE(printedBy([&] { block.getChild(2, 0)->dump(2); }),
                 QByteArray("        PRINTABLE STRING       length =6"));
    }

    void flatteners()
    {
        const PXAsnBlock &block = opened(sequence(
            {oid("551D0E"), sequence({tlv(0x04, "ab"), set({}), sequence({tlv(0x16, "cd")})}),
             tlv(0x05, {})}));
        std::vector<QString> values = {QStringLiteral("before")};
        QCOMPARE(block.get_extendata(values), 1);
        const std::vector<QString> expected = {
            QStringLiteral("before"), block.getChild(0, 0)->toString(),
            QStringLiteral("61 62"),  {},
            QStringLiteral("c d"),    QString()};
        QCOMPARE(values, expected);
    }

    void emptyNodesFlattenToEmptyTexts()
    {
        for (const int tag : {0x30, 0x31, 0xA0, 0xA3})
            QCOMPARE(flattened(opened(tlv(tag, {}))), QStringList{QString()});
    }

    void encapsulatedValuesFlatten()
    {
        const PXAsnBlock &block =
            opened(tlv(0xA3, tlv(0x04, sequence({tlv(0x01, "\xFF"), integer("03")}))));
        QCOMPARE(flattened(block), (QStringList{QStringLiteral("FF"), QStringLiteral("03")}));
    }

    void levels_data()
    {
        QTest::addColumn<int>("start");
        for (const int start : {0, 1, -3, 100})
            QTest::newRow(qPrintable(QString::number(start))) << start;
    }

    void levels()
    {
        QFETCH(int, start);
        const PXAsnBlock &block = opened(sequence(
            {integer("01"), sequence({integer("02"), sequence({integer("03")}), integer("04")}),
             set({}), integer("05")}));
        std::vector<certpolicy> items;
        int level = start;
        QCOMPARE(block.get_extendata_certpolicy(items, level), 1);
        QCOMPARE(level, start - 1);
        const std::vector<std::pair<QString, int>> expected = {{QStringLiteral("01"), 1},
                                                               {QStringLiteral("02"), 2},
                                                               {QStringLiteral("03"), 3},
                                                               {QStringLiteral("04"), 2},
                                                               {QString(), 1},
                                                               {QStringLiteral("05"), 1}};
        QCOMPARE(items.size(), expected.size());
        for (std::size_t i = 0; i < items.size(); ++i) {
            QCOMPARE(items[i].text, expected[i].first);
            QCOMPARE(items[i].level, start + expected[i].second);
        }
    }

    void levelsOfLeafAndNothing()
    {
        std::vector<certpolicy> items;
        int level = 5;
        QCOMPARE(opened(integer("07")).get_extendata_certpolicy(items, level), 1);
        QCOMPARE(level, 4);
        QCOMPARE(items.size(), std::size_t(1));
        QCOMPARE(items[0].level, 5);
        QCOMPARE(PXAsnBlock(nullptr).get_extendata_certpolicy(items, level), 1);
        QCOMPARE(level, 3);
        QCOMPARE(items.size(), std::size_t(1));
    }
};

QTEST_GUILESS_MAIN(TestPxasnTexts)
#include "tst_pxasn_texts.moc"
