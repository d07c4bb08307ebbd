#include "tests/asn/tree.h"
#include "tests/support/child_process.h"
#include "tests/support/guarded_buffer.h"

#include <algorithm>
#include <cstring>
#include <QTest>

namespace {

unsigned int sizeOf(const QByteArray &data)
{
    return static_cast<unsigned int>(data.size());
}

int setContent(stASN_BLOCK_HEADER *leaf, const QByteArray &content)
{
    return ASNSetBlockData(leaf, octets(content), sizeOf(content));
}

// SEQUENCE { INTEGER 1, INTEGER 2, ... }
AsnBlockPtr sequenceOf(int children)
{
    AsnBlockPtr root(ASNAddStruct(0x30, nullptr));
    for (int i = 1; i <= children; ++i)
        setContent(ASNAddSample(0x02, root.get()), QByteArray(1, static_cast<char>(i)));
    return root;
}

AsnBlockPtr encapsulating()
{
    g_bExtend = 1;
    AsnBlockPtr root = parsed(QByteArray::fromHex("0403020101"));
    g_bExtend = 0;
    return root;
}

} // namespace

/// Lengths, re-encoding, and changes of the tree of blocks.
class TestAsnEdit : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { g_bExtend = 0; }

    void lengthBytes_data()
    {
        QTest::addColumn<unsigned int>("content");
        QTest::addColumn<unsigned int>("octetCount");
        const std::pair<unsigned int, unsigned int> cases[] = {
            {0, 1},         {127, 1},        {128, 2},        {255, 2},
            {256, 3},       {65535, 3},      {65536, 4},      {0xFFFFFF, 4},
            {0x1000000, 5}, {0x7FFFFFFF, 5}, {0x80000000, 5}, {0xFFFFFFFF, 5}};
        for (const auto &[content, count] : cases)
            QTest::newRow(qPrintable(QString::number(content))) << content << count;
    }

    void lengthBytes()
    {
        QFETCH(unsigned int, content);
        QTEST(ASNCalcLengthBytes(content), "octetCount");
    }

    void update_data()
    {
        QTest::addColumn<int>("content");
        QTest::addColumn<QByteArray>("lengthOctets");
        QTest::addColumn<unsigned int>("total");
        const auto row = [](int content, const char *hex, unsigned int total) {
            QTest::newRow(qPrintable(QString::number(content)))
                << content << QByteArray::fromHex(hex) << total;
        };
        row(0, "00", 2);
        row(1, "01", 3);
        row(127, "7F", 129);
        row(128, "8180", 131);
        row(255, "81FF", 258);
        row(256, "820100", 260);
        row(65535, "82FFFF", 65539);
        row(65536, "83010000", 65541);
        row(16777215, "83FFFFFF", 16777220);
        row(16777216, "8401000000", 16777222);
    }

    void update()
    {
        QFETCH(int, content);
        QFETCH(QByteArray, lengthOctets);
        QFETCH(unsigned int, total);
        const QByteArray filling(content, '\x5A');
        const AsnBlockPtr leaf = leafOf(0x0C, filling);
        QCOMPARE(ASNUpdate(leaf.get()), 1);
        QCOMPARE(int(leaf->lengthOctetCount), lengthOctets.size());
        QCOMPARE(QByteArray(reinterpret_cast<char *>(leaf->lengthOctets), lengthOctets.size()),
                 lengthOctets);
        QCOMPARE(ASNGetBlockLength(leaf.get()), total);
        QVERIFY(encoded(leaf.get()) == "\x0C" + lengthOctets + filling);
    }

    void updateOfNothing()
    {
        QCOMPARE(ASNUpdate(nullptr), 0);
        QCOMPARE(ASNGetBlockLength(nullptr), 0U);
        QCOMPARE(ASNGetDataLength(nullptr), 0U);
    }

    void aCellOfNothing()
    {
        const AsnBlockPtr root = parsed(QByteArray::fromHex("3003020101"));
        QCOMPARE(ASNAppendChild(root.get(), nullptr), 1);
        QCOMPARE(ASNAppendChild(root.get(), leafOf(0x04, "x").release()), 1);
        QCOMPARE(ASNGetDataLength(root.get()), 2U);
        QCOMPARE(encoded(root.get()).toHex(), QByteArray("3006020101040178"));
        QVERIFY(!ASNGetChild(root.get(), 1));
        QCOMPARE(ASNRemoveChild(root.get(), 1), 1);
        QCOMPARE(outline(root.get()), QStringLiteral("30(02:01,04:78)"));
    }

    void updateOfEmptyStructs()
    {
        for (const unsigned char tag : std::initializer_list<unsigned char>{0x30, 0xA3, 0x04}) {
            const AsnBlockPtr node(ASNCreateStruct(tag, nullptr));
            QCOMPARE(ASNUpdate(node.get()), 1);
            QCOMPARE(int(node->lengthOctetCount), 1);
            QCOMPARE(int(node->lengthOctets[0]), 0);
            QCOMPARE(node->totalLength, 2U);
            QCOMPARE(encoded(node.get()), QByteArray(1, static_cast<char>(tag)) + '\0');
        }
    }

    void lengthsShrinkAgain()
    {
        const AsnBlockPtr leaf = leafOf(0x04, QByteArray(300, 'x'));
        QCOMPARE(encoded(leaf.get()).size(), 304);
        setContent(leaf.get(), "y");
        QCOMPARE(encoded(leaf.get()), QByteArray("\x04\x01y"));
    }

    void reencoding_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("output");
        const auto row = [](const char *name, const char *input, const char *output) {
            QTest::newRow(name) << QByteArray::fromHex(input) << QByteArray::fromHex(output);
        };
        row("as it was",
            "300A0201010401AA3002"
            "0500",
            "300A0201010401AA3002"
            "0500");
        row("encapsulated", "A3080406300403020780", "A3080406300403020780");
        row("longer lengths than needed",
            "308400000007020101"
            "82820000",
            "3005020101"
            "8200");
        row("indefinite form", "3080", "3000");
        row("without what did not parse", "3005020101FF00", "3003020101");
    }

    void reencoding()
    {
        QFETCH(QByteArray, input);
        QTEST(encoded(parsed(input).get()), "output");
    }

    void buildWithinItsCapacity()
    {
        const AsnBlockPtr root = sequenceOf(3);
        ASNUpdate(root.get());
        const unsigned int size = ASNGetBlockLength(root.get());
        QCOMPARE(size, 11U);
        const GuardedBuffer<unsigned char> exact(size);
        QCOMPARE(ASNBuildData(root.get(), exact.get(), size), 1);
        const QByteArray der = QByteArray::fromHex("3009020101020102020103");
        QVERIFY(std::memcmp(exact.get(), der.constData(), size) == 0);

        const GuardedBuffer<unsigned char> small(size - 1);
        QCOMPARE(ASNBuildData(root.get(), small.get(), size - 1), 0);
        QVERIFY(std::all_of(small.get(), small.get() + size - 1,
                            [](unsigned char octet) { return octet == 0xA5; }));

        unsigned char large[16] = {};
        QCOMPARE(ASNBuildData(root.get(), large, sizeof large), 1);
        QVERIFY(std::memcmp(large, der.constData(), size) == 0);
        QCOMPARE(int(large[size]), 0);
    }

    void buildOfNothing()
    {
        unsigned char output[4] = {};
        QCOMPARE(ASNBuildData(nullptr, output, 4), 0);
        const AsnBlockPtr root = sequenceOf(1);
        QCOMPARE(ASNBuildData(root.get(), nullptr, 100), 0);
    }

    // The content follows the identifier directly: no length octets were computed.
    void buildWithoutUpdate()
    {
        const AsnBlockPtr leaf = leafOf(0x04, "abc");
        for (const unsigned int capacity : {0U, 1U, 3U, 4U}) {
            const GuardedBuffer<unsigned char> output(capacity);
            QCOMPARE(ASNBuildData(leaf.get(), output.get(), capacity), capacity == 4 ? 1 : 0);
            if (capacity == 4)
                QVERIFY(std::memcmp(output.get(),
                                    "\x04"
                                    "abc",
                                    4) == 0);
        }
        const AsnBlockPtr root = sequenceOf(2);
        const GuardedBuffer<unsigned char> one(1);
        QCOMPARE(ASNBuildData(root.get(), one.get(), 1), 1);
        QCOMPARE(int(one[0]), 0x30);
    }

    // The root's length is from before the change: nothing may pass the capacity it asks for.
    void buildOfStaleLengths()
    {
        const AsnBlockPtr root = sequenceOf(2);
        ASNUpdate(root.get());
        stASN_BLOCK_HEADER *first = ASNGetChild(root.get(), 0);
        setContent(first, QByteArray(4000, 'x'));
        ASNUpdate(first);
        const unsigned int size = ASNGetBlockLength(root.get());
        const GuardedBuffer<unsigned char> output(size);
        QCOMPARE(ASNBuildData(root.get(), output.get(), size), 1);
        setContent(first, QByteArray(2, 'x'));
        const GuardedBuffer<unsigned char> again(size);
        QCOMPARE(ASNBuildData(root.get(), again.get(), size), 1);

        const AsnBlockPtr leaf = leafOf(0x04, "a");
        ASNUpdate(leaf.get());
        setContent(leaf.get(), "ab");
        const GuardedBuffer<unsigned char> small(3);
        QCOMPARE(ASNBuildData(leaf.get(), small.get(), 3), 0);
        QCOMPARE(int(small[0]), 0xA5);
    }

    // What does not fit ends the writing: nothing behind it takes its place.
    void buildStopsAtAChildTooLong()
    {
        const AsnBlockPtr root = parsed(QByteArray::fromHex("3006020101020102"));
        ASNUpdate(root.get());
        stASN_BLOCK_HEADER *first = ASNGetChild(root.get(), 0);
        setContent(first, QByteArray(100, 'x'));
        ASNUpdate(first);
        QByteArray der(8, '\0');
        QCOMPARE(ASNBuildData(root.get(), reinterpret_cast<unsigned char *>(der.data()), 8), 1);
        QCOMPARE(der.toHex(), QByteArray("3006000000000000"));
        // Nor does what is inside of it.
        const AsnBlockPtr nested = parsed(QByteArray::fromHex("300430020500"));
        ASNUpdate(nested.get());
        stASN_BLOCK_HEADER *inner = ASNGetChild(nested.get(), 0);
        ASNAddSample(0x05, inner);
        ASNUpdate(inner);
        QByteArray short6(6, '\0');
        QCOMPARE(ASNBuildData(nested.get(), reinterpret_cast<unsigned char *>(short6.data()), 6),
                 1);
        QCOMPARE(short6.toHex(), QByteArray("300400000000"));
    }

    void dataLengthIsThatOfTheLeaves()
    {
        const AsnBlockPtr two = sequenceOf(2);
        QCOMPARE(ASNGetDataLength(two.get()), 2U);
        const AsnBlockPtr deep = parsed(QByteArray::fromHex("300D30080202AABB300205000401CC"));
        QCOMPARE(ASNGetDataLength(deep.get()), 3U);
        QCOMPARE(ASNGetDataLength(leafOf(0x04, "abcde").get()), 5U);
        QCOMPARE(ASNGetDataLength(encapsulating().get()), 1U);
        QCOMPARE(ASNGetDataLength(AsnBlockPtr(ASNCreateStruct(0x30, nullptr)).get()), 0U);
        QCOMPARE(ASNGetDataLength(AsnBlockPtr(ASNCreateStruct(0x04, nullptr)).get()), 0U);
    }

    void createStruct()
    {
        const AsnBlockPtr parent(ASNCreateStruct(0x30, nullptr));
        QVERIFY(!parent->parent);
        for (const unsigned char tag :
             std::initializer_list<unsigned char>{0x30, 0x31, 0xA0, 0x04, 0xFF}) {
            const AsnBlockPtr node(ASNCreateStruct(tag, parent.get()));
            QCOMPARE(node->tag, tag);
            QCOMPARE(node->rawFlag, 0);
            QCOMPARE(node->parent, parent.get());
            QCOMPARE(node->contentLength, 0U);
            QCOMPARE(node->totalLength, 0U);
            QCOMPARE(node->lengthOctetCount, 0);
            QVERIFY(!ASNFirstCell(node.get()));
        }
        QVERIFY(!ASNFirstCell(parent.get())); // it links nothing
        for (const unsigned char tag : std::initializer_list<unsigned char>{0x02, 0x05, 0x82, 0x1F})
            QVERIFY(!ASNCreateStruct(tag, nullptr));
    }

    void addStruct()
    {
        const AsnBlockPtr root(ASNAddStruct(0x30, nullptr));
        stASN_BLOCK_HEADER *child = ASNAddStruct(0xA3, root.get());
        QCOMPARE(ASNGetChild(root.get(), 0), child);
        QCOMPARE(child->parent, root.get());
        QVERIFY(!ASNAddStruct(0x04, root.get()));
        QVERIFY(!ASNAddStruct(0x02, nullptr));
        QCOMPARE(outline(root.get()), QStringLiteral("30(A3())"));
    }

    void addSample()
    {
        const AsnBlockPtr root(ASNAddStruct(0x30, nullptr));
        stASN_BLOCK_HEADER *child = ASNAddSample(0x04, root.get());
        QCOMPARE(ASNGetChild(root.get(), 0), child);
        QCOMPARE(child->rawFlag, 1);
        QVERIFY(!child->content);
        QVERIFY(!ASNAddSample(0x30, root.get()));
        QVERIFY(!ASNAddSample(0xA0, nullptr));
        QCOMPARE(outline(root.get()), QStringLiteral("30(04:)"));
    }

    void nothingIsAddedToALeaf()
    {
        for (const unsigned char tag : std::initializer_list<unsigned char>{0x02, 0x04}) {
            const AsnBlockPtr leaf(ASNAddSample(tag, nullptr));
            QVERIFY(!ASNAddSample(0x05, leaf.get()));
            QVERIFY(!ASNAddStruct(0x30, leaf.get()));
            const AsnBlockPtr child(ASNAddSample(0x05, nullptr));
            QCOMPARE(ASNAppendChild(leaf.get(), child.get()), 0);
        }
    }

    void appendChild()
    {
        const AsnBlockPtr root(ASNCreateStruct(0x04, nullptr));
        AsnBlockPtr child(ASNAddSample(0x05, nullptr));
        QCOMPARE(ASNAppendChild(nullptr, child.get()), 0);
        QCOMPARE(ASNAppendChild(root.get(), child.get()), 1);
        QCOMPARE(ASNGetChild(root.get(), 0), child.release());
        QCOMPARE(ASNAppendChild(root.get(), ASNAddSample(0x0A, nullptr)), 1);
        QCOMPARE(outline(root.get()), QStringLiteral("04(05:,0A:)"));
    }

    void getChild()
    {
        const AsnBlockPtr root = sequenceOf(3);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(outline(ASNGetChild(root.get(), i)), QStringLiteral("02:0%1").arg(i + 1));
        QVERIFY(!ASNGetChild(root.get(), 3));
        QVERIFY(!ASNGetChild(root.get(), -1));
        QVERIFY(!ASNGetChild(nullptr, 0));
        QVERIFY(!ASNGetChild(ASNGetChild(root.get(), 0), 0));
        QVERIFY(!ASNGetChild(leafOf(0x04, QByteArray::fromHex("0500")).get(), 0));
        QCOMPARE(outline(ASNGetChild(encapsulating().get(), 0)), QStringLiteral("02:01"));
        QVERIFY(!ASNGetChild(sequenceOf(0).get(), 0));
    }

    void removeChild_data()
    {
        QTest::addColumn<int>("children");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("tree"); // with a NULL appended afterwards
        const auto row = [](const char *name, int children, int index, int result,
                            const char *tree) {
            QTest::newRow(name) << children << index << result << QString::fromLatin1(tree);
        };
        row("first", 3, 0, 1, "30(02:02,02:03,05:)");
        row("middle", 3, 1, 1, "30(02:01,02:03,05:)");
        row("last", 3, 2, 1, "30(02:01,02:02,05:)");
        row("beyond", 3, 3, 0, "30(02:01,02:02,02:03,05:)");
        row("far beyond", 3, 1000, 0, "30(02:01,02:02,02:03,05:)");
        row("negative", 3, -1, 0, "30(02:01,02:02,02:03,05:)");
        row("only", 1, 0, 1, "30(05:)");
        row("of none", 0, 0, 0, "30(05:)");
    }

    void removeChild()
    {
        QFETCH(int, children);
        QFETCH(int, index);
        QFETCH(QString, tree);
        const AsnBlockPtr root = sequenceOf(children);
        QTEST(ASNRemoveChild(root.get(), index), "result");
        ASNAddSample(0x05, root.get());
        QCOMPARE(outline(root.get()), tree);
    }

    void removeChildOfALeaf()
    {
        QCOMPARE(ASNRemoveChild(nullptr, 0), 0);
        QCOMPARE(ASNRemoveChild(leafOf(0x02, "a").get(), 0), 0);
        QCOMPARE(ASNRemoveChild(leafOf(0x04, QByteArray::fromHex("0500")).get(), 0), 0);
        const AsnBlockPtr root = encapsulating();
        QCOMPARE(ASNRemoveChild(root.get(), 0), 1);
        QCOMPARE(outline(root.get()), QStringLiteral("04()"));
        QCOMPARE(encoded(root.get()), QByteArray::fromHex("0400"));
    }

    void setBlockData()
    {
        const AsnBlockPtr leaf(ASNAddSample(0x0C, nullptr));
        QCOMPARE(setContent(leaf.get(), "abc"), 1);
        QCOMPARE(outline(leaf.get()), QStringLiteral("0C:616263"));
        // Its own content may be what is copied.
        QCOMPARE(ASNSetBlockData(leaf.get(), leaf->content + 1, 2), 1);
        QCOMPARE(outline(leaf.get()), QStringLiteral("0C:6263"));
        QCOMPARE(ASNSetBlockData(leaf.get(), nullptr, 5), 1);
        QVERIFY(!leaf->content);
        QCOMPARE(leaf->contentLength, 0U);
        QCOMPARE(setContent(leaf.get(), "d"), 1);
        QCOMPARE(ASNSetBlockData(leaf.get(), octets("x"), 0), 1);
        QVERIFY(!leaf->content);
        QCOMPARE(leaf->contentLength, 0U);
        QCOMPARE(ASNSetBlockData(nullptr, octets("x"), 1), 0);
    }

    void setBlockDataOfNodesWithChildren()
    {
        const AsnBlockPtr root = sequenceOf(2);
        QCOMPARE(setContent(root.get(), "abc"), 0);
        QCOMPARE(ASNSetBlockData(root.get(), nullptr, 0), 0);
        QCOMPARE(outline(root.get()), QStringLiteral("30(02:01,02:02)"));

        for (const QByteArray &content : {QByteArray("abc"), QByteArray()}) {
            const AsnBlockPtr string = encapsulating();
            QCOMPARE(outline(string.get()), QStringLiteral("04(02:01)"));
            QCOMPARE(setContent(string.get(), content), 1);
            QCOMPARE(string->rawFlag, 1);
            QVERIFY(!ASNFirstCell(string.get()));
            QCOMPARE(encoded(string.get()),
                     char(4) + QByteArray(1, char(content.size())) + content);
        }
    }

    void withoutMemory()
    {
        // SEQUENCE { OCTET STRING of a hundred megabytes }, outside the heap.
        const unsigned int size = 100U << 20;
        const QByteArray headers = QByteArray::fromHex("308406400006"
                                                       "048406400000");
        const GuardedBuffer<unsigned char> input(size + 12);
        std::copy(headers.begin(), headers.end(), input.get());
        const AsnBlockPtr leaf = leafOf(0x04, "old");
        const AsnBlockPtr root = sequenceOf(1);
        const auto result = runWithoutMemory([&] {
            const int stored = ASNSetBlockData(leaf.get(), input.get(), size);
            const bool isParsed = ASNAddByData(root.get(), input.get() + 6, size + 6) != nullptr;
            const AsnBlockPtr outer(ASNAddByData(nullptr, input.get(), size + 12));
            std::printf("%d, %d, %s, %s, %s\n", stored, isParsed ? 1 : 0,
                        qPrintable(outline(leaf.get())), qPrintable(outline(root.get())),
                        qPrintable(outline(outer.get())));
        });
        QVERIFY2(result.output.endsWith("0, 0, 04:6F6C64, 30(02:01), none\n"),
                 result.output.constData());
    }

    void deleteBlock()
    {
        ASNDeleteBlock(nullptr);
        ASNDeleteBlock(encapsulating().release());
        ASNDeleteBlock(sequenceOf(1000).release());
    }
};

QTEST_GUILESS_MAIN(TestAsnEdit)
#include "tst_asn_edit.moc"
