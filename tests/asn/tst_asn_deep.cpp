#include "tests/asn/shown_document.h"
#include "tests/support/printed.h"

#include <QTest>

namespace {

constexpr int kDeep = 300000; // the way back of a recursion through so many fits on no stack

// A chain of SEQUENCEs, a leaf of three octets in the innermost.
AsnBlockPtr deepTree()
{
    AsnBlockPtr root(ASNAddStruct(0x30, nullptr));
    stASN_BLOCK_HEADER *node = root.get();
    for (int level = 1; level < kDeep; ++level)
        node = ASNAddStruct(0x30, node);
    ASNSetBlockData(ASNAddSample(0x04, node), octets("abc"), 3);
    return root;
}

} // namespace

/// Trees that editing made deeper than any parse goes.
class TestAsnDeep : public QObject
{
    Q_OBJECT

private slots:
    void init() { g_bExtend = 0; }

    void builtAndReadBack()
    {
        const AsnBlockPtr root = deepTree();
        QCOMPARE(ASNGetDataLength(root.get()), 3U);
        const QByteArray der = encoded(root.get());
        QVERIFY(der.startsWith('\x30'));
        QVERIFY(der.endsWith(QByteArray::fromHex("30050403") + "abc"));
        QCOMPARE(der.size(), int(ASNGetBlockLength(root.get())));
        // Each level has a header in front of what is inside, as a leaf of that size has.
        const stASN_BLOCK_HEADER *child = ASNGetChild(root.get(), 0);
        const unsigned int inside = ASNGetBlockLength(child);
        QCOMPARE(ASNGetBlockLength(root.get()), 1 + ASNCalcLengthBytes(inside) + inside);
        // What is deeper than the limit is not read back.
        const AsnBlockPtr again = parsed(der);
        int depth = 0;
        for (const stASN_BLOCK_HEADER *node = again.get(); node; node = ASNGetChild(node, 0))
            ++depth;
        QCOMPARE(depth, ASN_MAX_DEPTH);
    }

    void removed()
    {
        const AsnBlockPtr root = deepTree();
        QCOMPARE(ASNRemoveChild(root.get(), 0), 1);
        QCOMPARE(outline(root.get()), QStringLiteral("30()"));
    }

    void heldByAnOctetString()
    {
        AsnBlockPtr string(ASNCreateStruct(0x04, nullptr));
        QCOMPARE(ASNAppendChild(string.get(), deepTree().release()), 1);
        QCOMPARE(ASNSetBlockData(string.get(), octets("ab"), 2), 1);
        QCOMPARE(outline(string.get()), QStringLiteral("04:6162"));
    }

    void document()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.create(0x30), 1);
        PXAsnBlock *block = &document;
        for (int level = 1; level < kDeep; ++level)
            block = block->addStruct(0x30);
        QCOMPARE(block->addSample(0x04)->setData("abc"), 1);
        document.update();
        const QByteArray der = document.build();
        QVERIFY(der.endsWith(QByteArray::fromHex("30050403") + "abc"));
        QCOMPARE(document.myprint(), QStringLiteral(" { 61 62 63 }\n"));
        QCOMPARE(document.get_basedata(), std::string(" { 61 62 63 }: "));
        std::vector<QString> values;
        std::vector<certpolicy> items;
        int level = 0;
        document.get_extendata(values);
        document.get_extendata_certpolicy(items, level);
        QCOMPARE(values, std::vector<QString>{"61 62 63"});
        QCOMPARE(items.front().level, kDeep);
        QCOMPARE(level, -1);
        QCOMPARE(document.remove(0), 1);
        QCOMPARE(document.myprint(), QStringLiteral(" { }\n"));
        PXAsn again(nullptr);
        QCOMPARE(again.open(der), 1);
        again.get_extendata(values);
        QCOMPARE(values.size(), 2U);
    }

    // Every level of which is written behind four blanks for each level above.
    void dumped()
    {
        constexpr int kLevels = 3000;
        PXAsn document(nullptr);
        QCOMPARE(document.create(0x30), 1);
        PXAsnBlock *block = &document;
        for (int level = 1; level < kLevels; ++level)
            block = block->addStruct(0x30);
        QCOMPARE(printedBy([&] { document.dump(0); }).size(),
                 kLevels * 8 + 4 * kLevels * (kLevels - 1) / 2);
    }

    // A document whose nodes have several objects has all of them made.
    void sharedDocument()
    {
        Shown document;
        QCOMPARE(document.create(0x30), 1);
        stASN_BLOCK_HEADER *inside = deepTree().release();
        QCOMPARE(ASNAppendChild(document.root(), inside), 1);
        auto *other = new PXAsnBlock(&document);
        QCOMPARE(other->load(document.root()), 1);
        QCOMPARE(other->remove(0), 1);
        QCOMPARE(document.getChildCount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestAsnDeep)
#include "tst_asn_deep.moc"
