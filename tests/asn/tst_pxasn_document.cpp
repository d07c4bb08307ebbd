#include "tests/asn/tree.h"
#include "tests/support/der.h"
#include "tests/support/message_recorder.h"
#include "tests/support/printed.h"

#include "asn/pxasn.h"

#include <cerrno>
#include <QPointer>
#include <QTest>

using namespace der;

namespace {

constexpr const char *kNoSuchChild = "(!node || index < 0 || index >= listChild.count()) fail\n";
constexpr const char *kNoChildObject = "PXAsnBlock* block = listChild.at(index); fail\n";
constexpr const char *kOtherTag = "!block->checkTag(checkType) fail \n";

QByteArray sample()
{
    return sequence({sequence({integer("01")}), integer("02"), utf8("three")});
}

// Lets a test put a hole into the list, which nothing in the layer does.
class Holey : public PXAsnBlock
{
public:
    using PXAsnBlock::PXAsnBlock;
    void addHole() { listChild.append(nullptr); }
};

} // namespace

/// Opening and walking a document.
class TestPxasnDocument : public QObject
{
    Q_OBJECT

private slots:
    void init() { g_bExtend = 0; }

    void empty()
    {
        const PXAsn document(nullptr);
        QCOMPARE(document.type(), 0);
        QCOMPARE(document.getChildCount(), 0);
        QVERIFY(!document.checkTag(0));
        QVERIFY(!document.checkTag(0x30));
        QCOMPARE(printedBy([&] { QVERIFY(!document.getChild(0, 0)); }), QByteArray(kNoSuchChild));
    }

    void open_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("children");
        const QByteArray der = sample();
        QTest::newRow("DER") << der << 1 << 0x30 << 3;
        QTest::newRow("DER and octets behind") << der + "garbage" << 1 << 0x30 << 3;
        QTest::newRow("base64") << der.toBase64() << 1 << 0x30 << 3;
        QTest::newRow("base64 in lines") << der.toBase64().insert(8, "\r\n") << 1 << 0x30 << 3;
        QTest::newRow("base64 of a certificate")
            << Certificate().encoded().toBase64() << 1 << 0x30 << 3;
        QTest::newRow("leaf") << integer("05") << 1 << 0x02 << 0;
        QTest::newRow("nothing") << QByteArray() << 0 << 0 << 0;
        QTest::newRow("one octet") << QByteArray("\x30") << 0 << 0 << 0;
        QTest::newRow("neither") << QByteArray("\xFF\xFF\xFF") << 0 << 0 << 0;
        QTest::newRow("base64 of what does not parse") << QByteArray("//8=") << 0 << 0 << 0;
        QTest::newRow("text") << QByteArray("!\"$%&/()=?") << 0 << 0 << 0;
        QTest::newRow("an octet short") << der.chopped(1) << 0 << 0 << 0;
        // "-----BEGIN" decodes as an OCTET STRING.
        QTest::newRow("armour") << "-----BEGIN CERTIFICATE-----\n" +
                                       Certificate().encoded().toBase64() +
                                       "\n-----END CERTIFICATE-----\n"
                                << 1 << 0x04 << 0;
    }

    void open()
    {
        QFETCH(QByteArray, data);
        MessageRecorder debugStream;
        PXAsn document(nullptr);
        QTEST(document.open(data), "result");
        QCOMPARE(MessageRecorder::messages(), QStringList{QStringLiteral("[PXAsn::open]...")});
        QTEST(document.type(), "type");
        QTEST(document.getChildCount(), "children");
        QCOMPARE(g_bExtend, 0);
    }

    void openClearsTheSwitch()
    {
        const QByteArray inside = tlv(0x04, integer("01"));
        const QByteArray extended = sequence({tlv(0xA3, {}), inside});
        for (int i = 0; i < 2; ++i) {
            PXAsn document(nullptr);
            QCOMPARE(document.open(extended), 1);
            QCOMPARE(document.getChild(1, 0x04)->getChildCount(), 1);
            QCOMPARE(g_bExtend, 0);
            PXAsn plain(nullptr);
            QCOMPARE(plain.open(inside), 1);
            QCOMPARE(plain.getChildCount(), 0);
        }
        PXAsn broken(nullptr);
        QCOMPARE(broken.open("\xA3\xFF"), 0);
        QCOMPARE(g_bExtend, 0);
    }

    void openOfNothingLeavesTheSwitch()
    {
        g_bExtend = 1;
        PXAsn document(nullptr);
        QCOMPARE(document.open({}), 0);
        QCOMPARE(g_bExtend, 1);
    }

    // It is told from an error of long before.
    void openOfGarbageIsNoLackOfMemory()
    {
        PXAsn document(nullptr);
        errno = ENOMEM;
        QCOMPARE(document.open("\xA3\xFF"), 0);
    }

    // It is not opening that clears it before the parse.
    void switchHoldsFromBefore()
    {
        g_bExtend = 1;
        PXAsn document(nullptr);
        QCOMPARE(document.open(tlv(0x04, integer("01"))), 1);
        QCOMPARE(document.getChildCount(), 1);
        // Nor is the first attempt's mark forgotten before the second.
        const QByteArray base64 = "\xA3\xFF" + tlv(0x04, integer("01")).toBase64();
        QCOMPARE(document.open(base64), 1);
        QCOMPARE(document.getChildCount(), 1);
    }

    void openReplacesWhatWasOpen()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sample()), 1);
        QCOMPARE(document.open(sequence({integer("07")})), 1);
        QCOMPARE(document.getChildCount(), 1);
        QCOMPARE(document.getChild(0, 0x02)->toInt(), 7);
        QCOMPARE(document.children().size(), 1);
        QCOMPARE(document.open("\xFF\xFF"), 0); // the old one stays
        QCOMPARE(document.getChildCount(), 1);
    }

    void close()
    {
        PXAsn document(nullptr);
        document.close();
        QCOMPARE(document.open(sample()), 1);
        document.close();
        QCOMPARE(document.type(), 0);
        QCOMPARE(document.getChildCount(), 0);
        QVERIFY(document.children().isEmpty());
        document.close();
        QCOMPARE(document.open(sample()), 1);
    }

    void objectsMirrorTheTree()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sample()), 1);
        QVERIFY(document.checkTag(0x30));
        QVERIFY(!document.checkTag(0x31));
        PXAsnBlock *inner = document.getChild(0, 0x30);
        QCOMPARE(inner->parent(), &document);
        QCOMPARE(inner->type(), 0x30);
        QCOMPARE(inner->getChildCount(), 1);
        QCOMPARE(inner->getChild(0, 0x02)->toInt(), 1);
        QCOMPARE(document.getChild(1, 0)->toInt(), 2);
        QCOMPARE(document.getChild(2, 0x0C)->toString(), QStringLiteral("three"));
        QCOMPARE(inner->metaObject()->className(), "PXAsnBlock");
        QCOMPARE(document.metaObject()->className(), "PXAsn");
        QCOMPARE(document.build(), sample()); // opening has computed the lengths
    }

    void load()
    {
        const AsnBlockPtr first = parsed(sample());
        const AsnBlockPtr second = parsed(sequence({integer("07")}));
        PXAsnBlock block(nullptr);
        QCOMPARE(block.load(nullptr), 0);
        QCOMPARE(block.type(), 0);
        QCOMPARE(block.load(first.get()), 1);
        QCOMPARE(block.getChildCount(), 3);
        QCOMPARE(block.load(nullptr), 0);
        QCOMPARE(block.getChildCount(), 3);
        // A loaded one keeps its child objects, and gets more.
        QCOMPARE(block.load(second.get()), 1);
        QCOMPARE(block.getChildCount(), 4);
        QCOMPARE(block.getChild(1, 0x02)->toInt(), 2);
        QCOMPARE(block.getChild(3, 0x02)->toInt(), 7);
        QCOMPARE(block.children().size(), 4);
        QCOMPARE(block.myprint(), QStringLiteral(" { 01 }\n { 02 }\n { three}\n { 07 }\n"));
        const QPointer<PXAsnBlock> second1(block.getChild(1, 0x02));
        block.release(1); // can't be made anew, so it stays
        QVERIFY(second1);
    }

    void childrenAreMadeWhenAskedFor()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sample()), 1);
        std::vector<QString> values;
        document.get_extendata(values);
        document.myprint();
        document.get_basedata();
        QCOMPARE(document.getChildCount(), 3);
        QVERIFY(document.children().isEmpty());
        PXAsnBlock *last = document.getChild(2, 0x0C);
        QCOMPARE(document.children(), QObjectList{last});
        QCOMPARE(document.getChild(2, 0), last);
        PXAsnBlock *first = document.getChild(0, 0x30);
        QCOMPARE(document.getChild(0, 0x02), nullptr); // made all the same
        QCOMPARE(document.children(), (QObjectList{last, first}));
        QVERIFY(first->children().isEmpty());
        QCOMPARE(first->getChild(0, 0)->parent(), first);
    }

    void release()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sample()), 1);
        const QPointer<PXAsnBlock> inner(document.getChild(0, 0x30)->getChild(0, 0x02));
        PXAsnBlock *kept = document.getChild(1, 0x02);
        for (const int index : {-1, 0, 3, 0})
            document.release(index);
        QVERIFY(!inner);
        QCOMPARE(document.children(), QObjectList{kept});
        QCOMPARE(document.getChildCount(), 3);
        QCOMPARE(document.getChild(0, 0x30)->getChild(0, 0x02)->toInt(), 1);
        QCOMPARE(document.getChild(1, 0x02), kept);
    }

    // A block's end leaves the nodes alone.
    void blockDoesNotOwnItsNode()
    {
        const AsnBlockPtr root = parsed(sample());
        QCOMPARE(PXAsnBlock(nullptr).load(root.get()), 1);
        QCOMPARE(outline(root.get()), QStringLiteral("30(30(02:01),02:02,0C:7468726565)"));
    }

    void nullCellFailsTheLoad()
    {
        const AsnBlockPtr root = parsed(sample());
        QCOMPARE(ASNAppendChild(root.get(), nullptr), 1);
        PXAsnBlock block(nullptr);
        QCOMPARE(block.load(root.get()), 0);
        QCOMPARE(block.type(), 0);
    }

    void navigation_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("checkType");
        QTest::addColumn<QByteArray>("printed"); // nothing when the child is there
        const auto row = [](const char *name, int index, int checkType, const char *printed) {
            QTest::newRow(name) << index << checkType << QByteArray(printed);
        };
        row("any tag", 0, 0, "");
        row("its tag", 0, 0x30, "");
        row("last", 2, 0x0C, "");
        row("another tag", 0, 0x02, kOtherTag);
        row("its tag and more bits", 0, 0x130, kOtherTag);
        row("beyond", 3, 0, kNoSuchChild);
        row("far beyond", 5, 0, kNoSuchChild);
        row("negative", -1, 0, kNoSuchChild);
        row("hole", 4, 0, kNoChildObject);
    }

    void navigation()
    {
        QFETCH(int, index);
        QFETCH(int, checkType);
        QFETCH(QByteArray, printed);
        const bool isHole = printed == kNoChildObject;
        Holey block(nullptr);
        const AsnBlockPtr root = parsed(sample());
        QCOMPARE(block.load(root.get()), 1);
        if (isHole)
            block.addHole();
        const PXAsnBlock *child = nullptr;
        QCOMPARE(printedBy([&] { child = block.getChild(isHole ? 3 : index, checkType); }),
                 printed);
        QCOMPARE(child != nullptr, printed.isEmpty());
    }

    void childWithoutNode()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sample()), 1);
        document.addSample(0x30); // refused: the object is there, and stands for nothing
        const PXAsnBlock *child = document.getChild(3, 0);
        QVERIFY(child);
        QCOMPARE(child->type(), 0);
        QCOMPARE(printedBy([&] { QVERIFY(!document.getChild(3, 0x30)); }), QByteArray(kOtherTag));
    }
};

QTEST_GUILESS_MAIN(TestPxasnDocument)
#include "tst_pxasn_document.moc"
