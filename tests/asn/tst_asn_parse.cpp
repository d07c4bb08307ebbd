#include "tests/asn/tree.h"
#include "tests/support/der.h"
#include "tests/support/guarded_buffer.h"

#include <QRandomGenerator>
#include <QTest>
#include <vector>

namespace {

// The parser by the letter of its rules: an OCTET STRING is tried and thrown away again. Slow, and
// independent of the one under test.
class LiteralParser
{
public:
    bool isExtended = false;

    // Appends the element's outline, and gives the octets it took; 0 when it does not parse.
    unsigned int element(const QByteArray &input, int depth, QString &text)
    {
        if (input.isEmpty())
            return 0;
        const auto tag = static_cast<unsigned char>(input.at(0));
        isExtended = isExtended || tag == 0xA3;
        const unsigned int size =
            ASNCalcBlockLength(octets(input), static_cast<unsigned int>(input.size()));
        if (depth > 128 || !ASN_TAGVALID(tag) || size == 0)
            return 0;
        const auto lengthOctet = static_cast<unsigned char>(input.at(1));
        const int header = lengthOctet > 0x80 ? 2 + lengthOctet - 0x80 : 2;
        const QByteArray content = input.mid(header, static_cast<int>(size) - header);
        text += QStringLiteral("%1").arg(tag, 2, 16, QLatin1Char('0')).toUpper();
        QString children;
        const bool isComplete = run(content, depth + 1, children, tag);
        if ((tag & 0x20) != 0 || isComplete)
            text += '(' + children + ')';
        else
            text += ':' + QString::fromLatin1(content.toHex().toUpper());
        return size;
    }

private:
    bool run(QByteArray content, int depth, QString &text, unsigned char tag)
    {
        if ((tag & 0x20) == 0 && !(tag == 0x04 && isExtended))
            return false;
        bool isComplete = !content.isEmpty();
        while (!content.isEmpty()) {
            QString child;
            const unsigned int used = element(content, depth, child);
            if (used == 0)
                return false;
            text += (text.isEmpty() ? "" : ",") + child;
            content = content.mid(static_cast<int>(used));
        }
        return isComplete;
    }
};

// Octets that make elements more often than chance does.
QByteArray likelyDer(QRandomGenerator &random, int size)
{
    static const unsigned char tags[] = {0x02, 0x04, 0x04, 0x04, 0x05, 0x30,
                                         0x30, 0xA0, 0xA3, 0x0C, 0x86, 0x24};
    QByteArray data;
    while (data.size() < size) {
        data.append(static_cast<char>(tags[random.bounded(int(sizeof tags))]));
        const int choice = random.bounded(20);
        if (choice == 0)
            data.append('\x81');
        else if (choice == 1)
            data.append("\x82", 1).append('\0');
        else if (choice == 2)
            data.append(static_cast<char>(random.bounded(256)));
        data.append(static_cast<char>(random.bounded(choice < 10 ? 4 : size)));
    }
    return data;
}

QByteArray nested(int tag, int times, QByteArray content)
{
    for (int i = 0; i < times; ++i)
        content = der::tlv(tag, content);
    return content;
}

int depthOf(const stASN_BLOCK_HEADER *node)
{
    const stASN_CHILD_CELL *cell = ASNFirstCell(node);
    return node ? 1 + depthOf(cell ? cell->child : nullptr) : 0;
}

const stASN_BLOCK_HEADER *innermost(const stASN_BLOCK_HEADER *node)
{
    const stASN_CHILD_CELL *cell = ASNFirstCell(node);
    return cell ? innermost(cell->child) : node;
}

} // namespace

/// From octets to the tree of blocks.
class TestAsnParse : public QObject
{
    Q_OBJECT

private slots:
    void init() { g_bExtend = 0; }
    void cleanup() { g_bExtend = 0; }

    void acceptedTags()
    {
        const QByteArray accepted = QByteArray::fromHex(
            "0102030405060708090A0C0D12131415161718191A1B1C1D1E3031808286A0A1A2A3A4");
        for (int tag = 0; tag < 256; ++tag) {
            const int expected = accepted.contains(static_cast<char>(tag)) ? 1 : 0;
            QCOMPARE(ASN_TAGVALID(static_cast<unsigned char>(tag)), expected);
            const QByteArray element = QByteArray(1, static_cast<char>(tag)) + '\0';
            QCOMPARE(parsed(element) != nullptr, expected == 1);
        }
    }

    void blockLength_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<unsigned int>("size");
        const auto row = [](const char *name, const char *hex, unsigned int size) {
            QTest::newRow(name) << QByteArray::fromHex(hex) << size;
        };
        row("empty", "", 0);
        row("identifier alone", "02", 0);
        row("no content", "0500", 2);
        row("short form", "020105", 3);
        row("short form, octets behind", "020105FFFF", 3);
        row("short form, one octet too long", "020205", 0);
        row("0x80 has no content", "3080", 2);
        row("0x80, octets behind", "308002010500", 2);
        row("0x81", "02810105", 4);
        row("0x81 of a length that needs none", "028100", 3);
        row("0x81, length octet missing", "0281", 0);
        row("0x82", "0282000105", 5);
        row("0x82, a length octet missing", "028200", 0);
        row("0x83", "028300000105", 6);
        row("0x83, a length octet missing", "02830000", 0);
        row("0x84", "02840000000105", 7);
        row("0x84, a length octet missing", "0284000000", 0);
        row("0x84 of more than there is", "0284FFFFFFFF05", 0);
        row("0x84 that would wrap to a small size", "0284FFFFFFFA05", 0);
        row("0x84, the greatest positive length", "02847FFFFFFF05", 0);
        row("0x85, a length octet missing", "028500000000", 0);
        row("0x85, and a content that fits", "0285000000000105", 0);
        row("0xFF", "02FF00", 0);
        row("any identifier", "FF00", 2);
    }

    void blockLength()
    {
        QFETCH(QByteArray, input);
        QFETCH(unsigned int, size);
        const GuardedBuffer<unsigned char> guarded(input.constData(), std::size_t(input.size()));
        QCOMPARE(ASNCalcBlockLength(guarded.get(), static_cast<unsigned int>(input.size())), size);
    }

    void blockLengthOfNothing() { QCOMPARE(ASNCalcBlockLength(nullptr, 5), 0U); }

    void everyLengthOctet()
    {
        for (int first = 0; first < 256; ++first) {
            const QByteArray input =
                QByteArray("\x04") + static_cast<char>(first) + QByteArray(300, '\0');
            unsigned int size = 0;
            if (first < 0x80)
                size = 2U + static_cast<unsigned int>(first);
            else if (first < 0x85)
                size = 2U + static_cast<unsigned int>(first) - 0x80;
            QCOMPARE(ASNCalcBlockLength(octets(input), 302), size);
            QCOMPARE(parsed(input) != nullptr, size > 0);
        }
    }

    void trees_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QString>("tree");
        const auto row = [](const char *name, const char *hex, const char *tree) {
            QTest::newRow(name) << QByteArray::fromHex(hex) << QString::fromLatin1(tree);
        };
        row("nothing", "", "none");
        row("identifier alone", "30", "none");
        row("INTEGER", "020105", "02:05");
        row("octets behind the element", "020105FFFF", "02:05");
        row("NULL", "0500", "05:");
        row("empty SEQUENCE", "3000", "30()");
        row("SEQUENCE of two", "3006020101020102", "30(02:01,02:02)");
        row("SEQUENCE of one element and garbage", "3005020101FF00", "30(02:01)");
        row("SEQUENCE of one element and a cut one", "3005020101020A", "30(02:01)");
        row("SEQUENCE of garbage", "3003FFFFFF", "30()");
        row("nothing is read behind garbage", "3008FF00020101020102", "30()");
        row("a child may not pass its parent's end", "30030202AABB", "30()");
        row("a nested SEQUENCE keeps what it has", "30083004020109FF0500", "30(30(02:09),05:)");
        row("0x80 has empty content", "3080020101", "30()");
        row("0x80 inside takes two octets", "300404800500", "30(04:,05:)");
        row("length octet 0x85", "30850000000000", "none");
        row("length octet 0x85 inside", "300A02010104850000000000", "30(02:01)");
        row("one octet longer than the input", "30030201", "none");
        row("long form where the short one would do", "308400000006828200022AFF", "30(82:2AFF)");
        row("unaccepted tag", "0B00", "none");
        row("the end-of-contents octets end a list", "300702010100000500", "30(02:01)");
        row("BIT STRING is never looked into", "A3050303300000", "A3(03:300000)");
        row("OCTET STRING without the switch", "04020500", "04:0500");
        row("OCTET STRING before the switch", "300C04020500A300040205000500",
            "30(04:0500,A3(),04(05:),05:)");
        row("OCTET STRING inside the extensions",
            "A3040402"
            "0500",
            "A3(04(05:))");
        row("OCTET STRING behind the extensions", "3006A30004020500", "30(A3(),04(05:))");
        row("OCTET STRING of several elements", "A306040405000500", "A3(04(05:,05:))");
        row("OCTET STRING of an element and garbage", "A30504030500FF", "A3(04:0500FF)");
        row("OCTET STRING of a key identifier", "A3060404AABBCCDD", "A3(04:AABBCCDD)");
        row("empty OCTET STRING", "A3020400", "A3(04:)");
        row("OCTET STRING in an OCTET STRING", "A306040404020500", "A3(04(04(05:)))");
        row("garbage in the inner OCTET STRING", "A3060404040205FF", "A3(04(04:05FF))");
        row("inner OCTET STRING longer than what is left", "A306040504020500FF", "A3()");
        row("garbage behind the inner OCTET STRING", "A307040504020500FF", "A3(04:04020500FF)");
        row("OCTET STRING of a SEQUENCE with garbage",
            "A3060404"
            "3002FFFF",
            "A3(04(30()))");
        row("an 0xA3 of bad length is met all the same", "3006A3FF04020500", "30()");
        row("a second 0xA3 changes nothing", "3008A300A30004020500", "30(A3(),A3(),04(05:))");
        row("0xA3 as content is not met", "30070401A304020500", "30(04:A3,04:0500)");
    }

    void trees()
    {
        QFETCH(QByteArray, input);
        QFETCH(QString, tree);
        const GuardedBuffer<unsigned char> guarded(input.constData(), std::size_t(input.size()));
        const AsnBlockPtr root(
            ASNAddByData(nullptr, guarded.get(), static_cast<unsigned int>(input.size())));
        QCOMPARE(outline(root.get()), tree);
    }

    void nullInput() { QVERIFY(!ASNAddByData(nullptr, nullptr, 5)); }

    void switchIsSetByTheFirstA3AndStays()
    {
        QCOMPARE(outline(parsed(QByteArray::fromHex("04020500")).get()), QStringLiteral("04:0500"));
        QCOMPARE(g_bExtend, 0);
        // The identifier octet alone does it, before anything of it is checked.
        QVERIFY(!parsed(QByteArray::fromHex("A385")));
        QCOMPARE(g_bExtend, 1);
        QCOMPARE(outline(parsed(QByteArray::fromHex("04020500")).get()), QStringLiteral("04(05:)"));
        QVERIFY(parsed(QByteArray::fromHex("0500")));
        QCOMPARE(g_bExtend, 1);
    }

    void parsedIntoAParent()
    {
        const AsnBlockPtr root = parsed(QByteArray::fromHex("3003020101"));
        const QByteArray more = QByteArray::fromHex("3002"
                                                    "0500");
        stASN_BLOCK_HEADER *added = ASNAddByData(root.get(), octets(more), 4);
        QCOMPARE(ASNGetChild(root.get(), 1), added);
        QCOMPARE(outline(root.get()), QStringLiteral("30(02:01,30(05:))"));
        QVERIFY(!ASNAddByData(root.get(), octets(more), 3));
        QCOMPARE(outline(root.get()), QStringLiteral("30(02:01,30(05:))"));
        stASN_BLOCK_HEADER *leaf = ASNGetChild(root.get(), 0);
        QVERIFY(!ASNAddByData(leaf, octets(more), 4));
        QCOMPARE(outline(root.get()), QStringLiteral("30(02:01,30(05:))"));
    }

    void lengthsWaitForTheUpdate()
    {
        const AsnBlockPtr root = parsed(QByteArray::fromHex("3003020101"));
        for (const stASN_BLOCK_HEADER *node :
             {static_cast<const stASN_BLOCK_HEADER *>(root.get()), innermost(root.get())}) {
            QCOMPARE(node->totalLength, 0U);
            QCOMPARE(node->lengthOctetCount, 0);
            for (const unsigned char octet : node->lengthOctets)
                QCOMPARE(octet, 0);
        }
        QCOMPARE(root->rawFlag, 0);
        QCOMPARE(innermost(root.get())->rawFlag, 1);
        const AsnBlockPtr two = parsed(QByteArray::fromHex("30023000"));
        QVERIFY(!two->parent && !ASNGetChild(two.get(), 0)->parent);
    }

    void contentIsACopy()
    {
        QByteArray data = QByteArray::fromHex("0402AABB");
        const AsnBlockPtr root = parsed(data);
        data.fill('\0');
        QCOMPARE(outline(root.get()), QStringLiteral("04:AABB"));
    }

    void depthLimit()
    {
        const AsnBlockPtr deepest = parsed(nested(0x30, 127, QByteArray::fromHex("0500")));
        QCOMPARE(depthOf(deepest.get()), 128);
        QCOMPARE(outline(innermost(deepest.get())), QStringLiteral("05:"));
        const AsnBlockPtr tooDeep = parsed(nested(0x30, 128, QByteArray::fromHex("0500")));
        QCOMPARE(depthOf(tooDeep.get()), 128);
        QCOMPARE(outline(innermost(tooDeep.get())), QStringLiteral("30()"));
    }

    void depthLimitOfOctetStrings()
    {
        g_bExtend = 1;
        const AsnBlockPtr deepest = parsed(nested(0x04, 127, QByteArray::fromHex("0500")));
        QCOMPARE(depthOf(deepest.get()), 128);
        QCOMPARE(outline(innermost(deepest.get())), QStringLiteral("05:"));
        const QByteArray below = nested(0x04, 3, QByteArray::fromHex("0500"));
        const AsnBlockPtr tooDeep = parsed(nested(0x04, 128, below));
        QCOMPARE(depthOf(tooDeep.get()), 128);
        QCOMPARE(outline(innermost(tooDeep.get())),
                 QStringLiteral("04:") + QString::fromLatin1(below.toHex().toUpper()));
    }

    void longChainsDoNotRunOutOfStack()
    {
        g_bExtend = 1;
        for (const int tag : {0x30, 0x04, 0xA3}) {
            // Inside out, each header before what it holds, without copying it every time.
            QByteArray headers;
            quint32 size = 0;
            for (int i = 0; i < 100000; ++i) {
                char header[6] = {static_cast<char>(tag),        '\x84',
                                  static_cast<char>(size >> 24), static_cast<char>(size >> 16),
                                  static_cast<char>(size >> 8),  static_cast<char>(size)};
                std::reverse(header, header + 6);
                headers.append(header, 6);
                size += 6;
            }
            std::reverse(headers.begin(), headers.end());
            const AsnBlockPtr root = parsed(headers);
            QCOMPARE(depthOf(root.get()), 128);
        }
    }

    void sameAsTheLiteralRules_data()
    {
        QTest::addColumn<unsigned int>("seed");
        for (unsigned int seed = 1; seed <= 8; ++seed)
            QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }

    void sameAsTheLiteralRules()
    {
        QFETCH(unsigned int, seed);
        QRandomGenerator random(seed);
        int parsedWell = 0;
        for (int i = 0; i < 3000; ++i) {
            QByteArray data = likelyDer(random, 4 + random.bounded(100));
            if (random.bounded(2) == 0)
                data = der::tlv(random.bounded(2) == 0 ? 0x30 : 0xA3, data);
            if (random.bounded(8) == 0)
                data = nested(random.bounded(2) == 0 ? 0x30 : 0x04, 120 + random.bounded(12), data);
            g_bExtend = static_cast<unsigned char>(random.bounded(2));
            LiteralParser literal;
            literal.isExtended = g_bExtend == 1;
            QString expected;
            if (literal.element(data, 1, expected) == 0)
                expected = QStringLiteral("none");
            const AsnBlockPtr root = parsed(data);
            QCOMPARE(outline(root.get()), expected);
            QCOMPARE(g_bExtend == 1, literal.isExtended);
            parsedWell += root ? 1 : 0;
        }
        QVERIFY(parsedWell > 1000);
    }
};

QTEST_GUILESS_MAIN(TestAsnParse)
#include "tst_asn_parse.moc"
