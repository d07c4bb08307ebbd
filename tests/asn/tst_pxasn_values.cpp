#include "tests/support/der.h"
#include "tests/support/message_recorder.h"

#include "asn/pxasn.h"
#include "core/px_core_manager.h"
#include "util/text_keys.h"

#include <QTest>

using namespace der;

namespace {

template <typename Result>
void addColumns(const char *result)
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<Result>(result);
}

} // namespace

/// What a block is as text, octets and number.
class TestPxasnValues : public QObject
{
    Q_OBJECT

private:
    PXAsn m_document{nullptr};

    const PXAsnBlock &block(int tag, const QByteArray &content)
    {
        if (!m_document.open(tlv(tag, content)))
            qFatal("the element did not parse");
        return m_document;
    }

private slots:
    void initTestCase() { GetCoreManager(); }

    // Of a content too long for texts nothing is read.
    void endlessContentCountsAsNone()
    {
        const AsnBlockPtr leaf(ASNAddSample(0x04, nullptr));
        const unsigned char octet = 'x';
        QCOMPARE(ASNSetBlockData(leaf.get(), &octet, 1), 1);
        PXAsnBlock block(nullptr);
        QCOMPARE(block.load(leaf.get()), 1);
        QCOMPARE(block.contentOctets(), QByteArray("x"));
        leaf->contentLength = 512U * 1024 * 1024 + 1;
        QCOMPARE(block.contentOctets(), QByteArray());
        QCOMPARE(block.toString(), QString());
    }

    void text_data()
    {
        addColumns<QString>("text");
        const auto row = [](const char *name, int tag, const QByteArray &content,
                            const QString &text) { QTest::newRow(name) << tag << content << text; };
        const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
        row("OBJECT IDENTIFIER with a name", 0x06, hex("550403"), QStringLiteral("CN"));
        row("OBJECT IDENTIFIER of a key", 0x06, hex("551D0F"), text_keys::kKeyUsage);
        row("unknown OBJECT IDENTIFIER", 0x06, hex(kUnknown), QLatin1String(kUnknownDotted));
        row("OBJECT IDENTIFIER of one octet", 0x06, hex("55"), {});
        row("empty OBJECT IDENTIFIER", 0x06, {}, {});
        row("too long OBJECT IDENTIFIER", 0x06, QByteArray(51, '\1'), {});
        row("BIT STRING", 0x03, hex("00414220FF"), QString::fromUtf8("AB ÿ"));
        row("BIT STRING of an unused-bits octet alone", 0x03, hex("07"), {});
        row("empty BIT STRING", 0x03, {}, {});
        row("UTF8String", 0x0C, QString::fromUtf8("Zürich 台北 😀").toUtf8(),
            QString::fromUtf8("Zürich 台北 😀"));
        row("UTF8String with a NUL", 0x0C, QByteArray("a\0b", 3),
            QStringLiteral("a") + QChar(0) + 'b');
        row("malformed UTF8String", 0x0C, "a\xFF", QStringLiteral("a") + QChar(0xFFFD));
        row("empty UTF8String", 0x0C, {}, {});
        row("BMPString", 0x1E, hex("00410042"), QStringLiteral("AB"));
        row("BMPString beyond Latin", 0x1E, hex("00E953F053170000"),
            QString::fromUtf8("é台北") + QChar(0));
        row("BMPString with a NUL", 0x1E, hex("004100000042"),
            QStringLiteral("A") + QChar(0) + 'B');
        row("BMPString of an odd length", 0x1E, hex("0041004200"), QStringLiteral("AB"));
        row("BMPString of one octet", 0x1E, hex("41"), {});
        row("empty BMPString", 0x1E, {}, {});
        row("INTEGER", 0x02, hex("41FF"), QString::fromUtf8("Aÿ"));
        row("OCTET STRING", 0x04, QByteArray("a\0\x80", 3),
            QStringLiteral("a") + QChar(0) + QChar(0x80));
        for (const int tag :
             {0x0D, 0x12, 0x13, 0x14, 0x16, 0x17, 0x18, 0x1A, 0x1C, 0x80, 0x82, 0x86})
            row(qPrintable(QStringLiteral("Latin-1 for %1").arg(tag, 2, 16)), tag,
                QByteArray("x\0\xE9", 3), QStringLiteral("x") + QChar(0) + QChar(0xE9));
        row("SEQUENCE", 0x30, integer("01"), {});
        row("SET", 0x31, {}, {});
    }

    void text()
    {
        QFETCH(int, tag);
        QFETCH(QByteArray, content);
        QFETCH(QString, text);
        const PXAsnBlock &value = block(tag, content);
        QCOMPARE(QString(value), text);
        QCOMPARE(value.toString(), text);
    }

    // The encoder knows no pairs: each half becomes three octets that are no UTF-8, in the text
    // replaced, in the octets as they are.
    void surrogatesOfABmpString()
    {
        const PXAsnBlock &value = block(0x1E, QByteArray::fromHex("0041D83DDE000042"));
        QCOMPARE(value.toByteArray(), QByteArray("A\xED\xA0\xBD\xED\xB8\x80"
                                                 "B"));
        const QString text = value.toString();
        QVERIFY(text.startsWith('A') && text.endsWith('B'));
        QCOMPARE(text.mid(1).chopped(1), QString(text.size() - 2, QChar(0xFFFD)));
    }

    void longBmpStrings()
    {
        const MessageRecorder debugStream; // an address for each character goes there
        for (int units = 1; units < 200; ++units) {
            QByteArray content;
            for (int i = 0; i < units; ++i)
                content += "\x53\xF0";
            const PXAsnBlock &value = block(0x1E, content);
            // Three octets a character: the converters stop once they passed the size they are
            // told.
            QCOMPARE(value.toString(), QString(units, QChar(0x53F0)));
            QCOMPARE(value.toByteArray().size(), 3 * units);
        }
    }

    void octets_data()
    {
        addColumns<QByteArray>("octets");
        const auto row = [](const char *name, int tag, const QByteArray &content,
                            const QByteArray &octets) {
            QTest::newRow(name) << tag << content << octets;
        };
        const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
        row("BIT STRING", 0x03, hex("00308200"), hex("308200"));
        row("BIT STRING of an unused-bits octet alone", 0x03, hex("05"), {});
        row("empty BIT STRING", 0x03, {}, {});
        row("BMPString", 0x1E, hex("0041004253F0"), "AB\xE5\x8F\xB0");
        row("BMPString beyond Latin", 0x1E, hex("4E2D6587"), "\xE4\xB8\xAD\xE6\x96\x87");
        row("BMPString that ends at a NUL", 0x1E, hex("004100000042"), "A");
        row("BMPString of an odd length", 0x1E, hex("004100"), "A");
        row("BMPString of one octet", 0x1E, hex("41"), {});
        row("empty BMPString", 0x1E, {}, {});
        row("INTEGER", 0x02, hex("00FF"), hex("00FF"));
        row("OBJECT IDENTIFIER", 0x06, hex("550403"), hex("550403"));
        row("UTF8String", 0x0C, "\xC3\xA9", "\xC3\xA9");
        row("OCTET STRING", 0x04, hex("0000FF"), hex("0000FF"));
        row("NULL", 0x05, {}, {});
        row("SEQUENCE", 0x30, integer("01"), {});
    }

    void octets()
    {
        QFETCH(int, tag);
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, octets);
        const PXAsnBlock &value = block(tag, content);
        QCOMPARE(QByteArray(value), octets);
        QCOMPARE(value.toByteArray(), octets);
    }

    void contentOctets()
    {
        const QByteArray bits = QByteArray::fromHex("00308200");
        QCOMPARE(block(0x03, bits).contentOctets(), bits);
        QCOMPARE(block(0x30, integer("01")).contentOctets(), QByteArray());
        QCOMPARE(PXAsnBlock(nullptr).contentOctets(), QByteArray());
    }

    void number_data()
    {
        addColumns<int>("number");
        const auto row = [](const char *hex, int number, int tag = 0x02) {
            QTest::newRow(qPrintable(QStringLiteral("%1: '%2'").arg(tag).arg(QLatin1String(hex))))
                << tag << QByteArray::fromHex(hex) << number;
        };
        row("02", 2);
        row("00", 0);
        row("FF", 255);
        row("0100", 1); // least significant first
        row("0001", 256);
        row("FFFF", 65535);
        row("008000", 0);
        row("01000000", 1);
        row("78563412", 0x12345678);
        row("FFFFFFFF", -1);
        row("", 0);
        row("0000000001", 0);
        row("0100000000000000", 0);
        row("02", 0, 0x0A);
        row("02", 0, 0x04);
        row("02", 0, 0x03);
    }

    void number()
    {
        QFETCH(int, tag);
        QFETCH(QByteArray, content);
        QFETCH(int, number);
        const PXAsnBlock &value = block(tag, content);
        QCOMPARE(int(value), number);
        QCOMPARE(value.toInt(), number);
    }

    void nothing()
    {
        const PXAsnBlock none(nullptr);
        QCOMPARE(none.toString(), QString());
        QCOMPARE(none.toByteArray(), QByteArray());
        QCOMPARE(none.toInt(), 0);
        QVERIFY(!none.toDateTime().isValid());
    }

    // Where others have content, such a node keeps a reference.
    void nodesWithChildrenHaveNoValue()
    {
        QCOMPARE(
            m_document.open(sequence({tlv(0xA3, {}), tlv(0x04, integer("05")), tlv(0xA0, {})})), 1);
        for (int i = 0; i < 3; ++i) {
            const PXAsnBlock *child = m_document.getChild(i, 0);
            QCOMPARE(child->toString(), QString());
            QCOMPARE(child->toByteArray(), QByteArray());
            QCOMPARE(child->toInt(), 0);
            QVERIFY(!child->toDateTime().isValid());
        }
        QCOMPARE(m_document.getChild(1, 0x04)->getChildCount(), 1);
    }
};

QTEST_GUILESS_MAIN(TestPxasnValues)
#include "tst_pxasn_values.moc"
