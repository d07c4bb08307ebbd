#include "tests/asn/recording_core.h"
#include "tests/asn/shown_document.h"
#include "tests/support/der.h"
#include "tests/support/printed.h"

#include <QTest>

using namespace der;

namespace {

constexpr const char *kStructEnd = "[ASNAddStruct:108] end";

} // namespace

/// Changing and building documents, and the progress texts that this sends to the core.
class TestPxasnEdit : public QObject
{
    Q_OBJECT

private:
    QScopedPointer<RecordingCore> m_core;

    QStringList sent()
    {
        QStringList messages = m_core->messages;
        m_core->messages.clear();
        return messages;
    }

private slots:
    void initTestCase()
    {
        GetCoreManager();
        QVERIFY(getSignatureCore());
    }
    void init() { m_core.reset(new RecordingCore); }
    void cleanup()
    {
        m_core.reset();
        g_bExtend = 0;
    }

    void openTells()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sequence({integer("01")})), 1);
        QCOMPARE(sent(), (QStringList{"[open:40] start", "[open:66] end"}));
        QCOMPARE(document.open(QByteArray()), 0);
        QCOMPARE(sent(), QStringList{"[open:40] start"});
        QCOMPARE(document.open("\xFF\xFF"), 0);
        QCOMPARE(sent(), QStringList{"[open:40] start"});
    }

    void readingTellsNothing()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(Certificate().encoded()), 1);
        sent();
        document.myprint();
        document.print();
        document.get_basedata();
        document.close();
        QCOMPARE(sent(), QStringList());
    }

    void create_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<int>("result");
        QTest::newRow("SEQUENCE") << 0x30 << 1;
        QTest::newRow("SET, and a SEQUENCE comes") << 0x31 << 1;
        QTest::newRow("[3], and a SEQUENCE comes") << 0xA3 << 1;
        QTest::newRow("INTEGER") << 0x02 << 0;
        QTest::newRow("OCTET STRING") << 0x04 << 0;
        QTest::newRow("0") << 0 << 0;
    }

    void create()
    {
        QFETCH(int, tag);
        QFETCH(int, result);
        Shown document;
        QCOMPARE(document.create(tag), result);
        QCOMPARE(document.tree(), result ? QStringLiteral("30()") : QStringLiteral("none"));
        QCOMPARE(sent(), result ? (QStringList{"[create:18] start", kStructEnd, "[create:32] end"})
                                : QStringList{"[create:18] start"});
    }

    void createReplacesWhatWasOpen()
    {
        Shown document;
        QCOMPARE(document.open(sequence({integer("01")})), 1);
        QCOMPARE(document.create(0x02), 0);
        QCOMPARE(document.getChildCount(), 1);
        QCOMPARE(document.create(0x30), 1);
        QCOMPARE(document.getChildCount(), 0);
        QCOMPARE(document.tree(), QStringLiteral("30()"));
    }

    void nodesTell()
    {
        const AsnBlockPtr root(ASNAddStruct(0x30, nullptr));
        QCOMPARE(sent(), QStringList{kStructEnd});
        ASNAddStruct(0xA3, root.get());
        QCOMPARE(sent(), QStringList{kStructEnd});
        QVERIFY(!ASNAddStruct(0x04, root.get()));
        QVERIFY(ASNAddSample(0x04, root.get()));
        const AsnBlockPtr leaf(ASNAddSample(0x04, nullptr));
        QVERIFY(!ASNAddStruct(0x30, leaf.get())); // appended to nothing, so nothing is told
        QVERIFY(AsnBlockPtr(ASNCreateStruct(0x30, nullptr)));
        QVERIFY(parsed(sequence({sequence({})})));
        QCOMPARE(sent(), QStringList());
    }

    void updateAndBuild()
    {
        Shown document;
        QCOMPARE(document.create(0x30), 1);
        document.addSample(0x02)->setData("\x05");
        sent();
        QCOMPARE(document.build(), QByteArray()); // no lengths yet
        QCOMPARE(sent(), (QStringList{"[build:375] start", "[build:394] end"}));
        QCOMPARE(document.update(), 1);
        QCOMPARE(sent(), (QStringList{"[update:400] start", "[update:402] end"}));
        QCOMPARE(document.build(), QByteArray::fromHex("3003020105"));
        QCOMPARE(sent(), (QStringList{"[build:375] start", "[build:394] end"}));
        QCOMPARE(document.getChild(0, 0)->build(), QByteArray::fromHex("020105"));
    }

    void updateAndBuildOfNothing()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.update(), 0);
        QCOMPARE(document.build(), QByteArray());
        QCOMPARE(sent(), (QStringList{"[update:400] start", "[update:402] end", "[build:375] start",
                                      "[build:394] end"}));
    }

    void data_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("padded"); // by setData
        QTest::addColumn<QByteArray>("stored"); // by setDataEx
        const auto row = [](const char *name, int tag, const QByteArray &data,
                            const QByteArray &padded, const QByteArray &stored) {
            QTest::newRow(name) << tag << data << padded << stored;
        };
        const auto same = [&](const char *name, int tag, const QByteArray &data) {
            row(name, tag, data, data, data);
        };
        const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
        same("INTEGER 7F", 0x02, hex("7F"));
        same("INTEGER 80", 0x02, hex("80"));
        same("INTEGER 80FF", 0x02, hex("80FF"));
        row("INTEGER 81", 0x02, hex("81"), hex("0081"), hex("81"));
        row("INTEGER FF01", 0x02, hex("FF01"), hex("00FF01"), hex("FF01"));
        same("INTEGER 0081", 0x02, hex("0081"));
        same("empty INTEGER", 0x02, {});
        same("ENUMERATED FF", 0x0A, hex("FF"));
        row("OBJECT IDENTIFIER", 0x06, "2.5.29.15", hex("551D0F"), hex("551D0F"));
        row("OBJECT IDENTIFIER with an arc of 0", 0x06, "2.5.4.0", hex("5504"), hex("5504"));
        same("bad OBJECT IDENTIFIER", 0x06, "1.2x");
        row("OBJECT IDENTIFIER of one arc", 0x06, "1", {}, {});
        same("too long OBJECT IDENTIFIER", 0x06, "1.2" + QByteArray(".1").repeated(96));
        row("BIT STRING", 0x03, hex("3082"), hex("003082"), hex("003082"));
        row("empty BIT STRING", 0x03, {}, hex("00"), hex("00"));
        same("UTF8String", 0x0C, "text");
        same("OCTET STRING", 0x04, hex("FF00"));
        same("empty OCTET STRING", 0x04, {});
        same("NUL", 0x16, QByteArray("a\0b", 3));
    }

    void data()
    {
        QFETCH(int, tag);
        QFETCH(QByteArray, data);
        QFETCH(QByteArray, padded);
        QFETCH(QByteArray, stored);
        PXAsn document(nullptr);
        QCOMPARE(document.open(tlv(tag, "before")), 1);
        sent();
        QCOMPARE(document.setData(data), 1);
        QCOMPARE(document.contentOctets().toHex(), padded.toHex());
        const QString text = QStringLiteral(" set data ASN_TAG_TYPE_OCTET_STRING ");
        const QString start = text + "start";
        const QString end = text + "end";
        QCOMPARE(sent(), tag == 0x04 ? (QStringList{"[setData:412] start", "[setData:444]" + start,
                                                    "[setData:447]" + end, "[setData:450] end"})
                                     : (QStringList{"[setData:412] start", "[setData:450] end"}));
        QCOMPARE(document.setDataEx(data), 1);
        QCOMPARE(document.contentOctets().toHex(), stored.toHex());
        QCOMPARE(sent(), tag == 0x04
                             ? (QStringList{"[setDataEx:461] start", "[setDataEx:493]" + start,
                                            "[setDataEx:496]" + end, "[setDataEx:499] end"})
                             : (QStringList{"[setDataEx:461] start", "[setDataEx:499] end"}));
        document.update();
        QCOMPARE(document.build().toHex(), tlv(tag, stored).toHex());
    }

    void dataRefused()
    {
        Shown document;
        QCOMPARE(document.setData("x"), 0);
        QCOMPARE(document.setDataEx("x"), 0);
        QCOMPARE(sent(), (QStringList{"[setData:412] start", "[setDataEx:461] start"}));
        QCOMPARE(document.open(sequence({integer("01")})), 1);
        sent();
        QCOMPARE(document.setData("x"), 0);
        QCOMPARE(document.setDataEx("x"), 0);
        QCOMPARE(sent(), (QStringList{"[setData:412] start", "[setDataEx:461] start"}));
        QCOMPARE(document.tree(), QStringLiteral("30(02:01)"));
        QCOMPARE(document.getChildCount(), 1);
    }

    void dataOfAnOctetStringThatHeldChildren()
    {
        for (const bool isEx : {false, true}) {
            Shown document;
            QCOMPARE(document.open(tlv(0xA3, tlv(0x04, sequence({integer("01")})))), 1);
            PXAsnBlock *string = document.getChild(0, 0x04);
            QCOMPARE(string->getChildCount(), 1);
            QCOMPARE(isEx ? string->setDataEx("ab") : string->setData("ab"), 1);
            QCOMPARE(string->getChildCount(), 0);
            QCOMPARE(string->toByteArray(), QByteArray("ab"));
            QCOMPARE(document.tree(), QStringLiteral("A3(04:6162)"));
        }
    }

    void addSample()
    {
        Shown document;
        QVERIFY(!document.addSample(0x02));
        QCOMPARE(sent(), QStringList{"[addSample:318] start"});
        QCOMPARE(document.create(0x30), 1);
        sent();
        PXAsnBlock *added = document.addSample(0x04);
        QCOMPARE(sent(), (QStringList{"[addSample:318] start", "[addSample:331] end"}));
        QCOMPARE(document.getChild(0, 0x04), added);
        QCOMPARE(added->parent(), &document);
        QVERIFY(!added->addSample(0x02)); // a leaf has no children
        QCOMPARE(sent(), QStringList{"[addSample:318] start"});
        // A constructed tag gives an object that stands for nothing.
        PXAsnBlock *refused = document.addSample(0x30);
        QCOMPARE(sent(), (QStringList{"[addSample:318] start", "[addSample:331] end"}));
        QCOMPARE(document.getChild(1, 0), refused);
        QCOMPARE(refused->type(), 0);
        QCOMPARE(document.tree(), QStringLiteral("30(04:)"));
    }

    void addStruct()
    {
        Shown document;
        QVERIFY(!document.addStruct(0x30));
        QCOMPARE(sent(), QStringList{"[addStruct:338] start"});
        QCOMPARE(document.create(0x30), 1);
        sent();
        PXAsnBlock *added = document.addStruct(0xA3);
        QCOMPARE(sent(), (QStringList{"[addStruct:338] start", kStructEnd, "[addStruct:350] end"}));
        QCOMPARE(document.getChild(0, 0xA3), added);
        QVERIFY(!document.addStruct(0x04));
        QVERIFY(!document.addStruct(0x02));
        QVERIFY(!document.addSample(0x02)->addStruct(0x30));
        QCOMPARE(added->addStruct(0x31)->parent(), added);
        QCOMPARE(document.tree(), QStringLiteral("30(A3(31()),02:)"));
    }

    void nothingIsAddedToAnEncapsulatingString()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(tlv(0xA3, tlv(0x04, integer("01")))), 1);
        PXAsnBlock *string = document.getChild(0, 0x04);
        QVERIFY(!string->addSample(0x02));
        QVERIFY(!string->addStruct(0x30));
    }

    void addBlock()
    {
        Shown document;
        QCOMPARE(document.open(sequence({integer("01")})), 1);
        sent();
        QCOMPARE(document.addBlock(sequence({utf8("a")}) + "behind"), 1);
        QCOMPARE(sent(), (QStringList{"[update:400] start", "[update:402] end"}));
        QCOMPARE(document.tree(), QStringLiteral("30(02:01,30(0C:61))"));
        QCOMPARE(ASNGetBlockLength(ASNGetChild(document.root(), 1)), 5U); // computed already
        // The new object mirrors the whole of the node that was added to.
        QCOMPARE(document.getChildCount(), 2);
        PXAsnBlock *mirror = document.getChild(1, 0x30);
        QCOMPARE(mirror->parent(), &document);
        QCOMPARE(mirror->getChildCount(), 2);
        QCOMPARE(mirror->getChild(0, 0x02)->toInt(), 1);
        QCOMPARE(mirror->getChild(1, 0x30)->getChild(0, 0)->toString(), QStringLiteral("a"));
        document.update();
        QCOMPARE(document.build(), sequence({integer("01"), sequence({utf8("a")})}));
    }

    void addBlockToAnEncapsulatingString()
    {
        Shown document;
        QCOMPARE(document.open(tlv(0xA3, tlv(0x04, integer("01")))), 1);
        QCOMPARE(document.getChild(0, 0x04)->addBlock(integer("02")), 1);
        QCOMPARE(document.tree(), QStringLiteral("A3(04(02:01,02:02))"));
    }

    // It is parsed, and tells so, before there turns out to be nothing to add it to.
    void addBlockWithoutNode()
    {
        Shown document;
        QCOMPARE(document.addBlock(tlv(0xA3, {})), 0);
        QCOMPARE(sent(), (QStringList{"[update:400] start", "[update:402] end"}));
        QCOMPARE(g_bExtend, 1);
        QCOMPARE(document.addBlock("\xFF"), 0);
        QCOMPARE(sent(), QStringList());
        QCOMPARE(document.tree(), QStringLiteral("none"));
        QVERIFY(document.children().isEmpty());
    }

    void addBlockRefused()
    {
        Shown document;
        QCOMPARE(document.open(sequence({integer("01")})), 1);
        sent();
        for (const QByteArray &der :
             {QByteArray(), QByteArray("\xFF\xFF"), QByteArray("\x02\x05x")})
            QCOMPARE(document.addBlock(der), 0);
        QCOMPARE(document.getChild(0, 0x02)->addBlock(integer("02")), 0); // a leaf
        QCOMPARE(sent(), QStringList());
        QCOMPARE(document.tree(), QStringLiteral("30(02:01)"));
        QCOMPARE(document.getChildCount(), 1);
        QCOMPARE(document.children().size(), 1);
        PXAsn leaf(nullptr);
        QCOMPARE(leaf.open(tlv(0x04, "ab")), 1);
        QCOMPARE(leaf.addBlock(integer("02")), 0);
        QCOMPARE(leaf.toByteArray(), QByteArray("ab"));
    }

    void remove_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("tree");
        QTest::newRow("first") << 0 << 1 << "30(30(05:),02:03)";
        QTest::newRow("middle") << 1 << 1 << "30(02:01,02:03)";
        QTest::newRow("last") << 2 << 1 << "30(02:01,30(05:))";
        QTest::newRow("beyond") << 3 << 0 << "30(02:01,30(05:),02:03)";
        QTest::newRow("negative") << -1 << 0 << "30(02:01,30(05:),02:03)";
    }

    void remove()
    {
        QFETCH(int, index);
        QFETCH(int, result);
        QFETCH(QString, tree);
        Shown document;
        QCOMPARE(document.open(sequence({integer("01"), sequence({tlv(5, {})}), integer("03")})),
                 1);
        sent();
        QCOMPARE(document.remove(index), result);
        QCOMPARE(sent(), QStringList());
        QCOMPARE(document.tree(), tree);
        QCOMPARE(document.getChildCount(), 3 - result);
        QCOMPARE(document.children().size(), 3 - result);
        for (int i = 0; i < document.getChildCount(); ++i)
            QCOMPARE(document.getChild(i, 0)->type(), int(ASNGetChild(document.root(), i)->tag));
    }

    // The object that stands for the same node as the document does may know more children.
    void removeWhatHasNoObject()
    {
        Shown document;
        QCOMPARE(document.create(0x30), 1);
        QCOMPARE(document.addBlock(integer("01")), 1);
        QVERIFY(document.getChild(0, 0)->addSample(0x05));
        QCOMPARE(document.tree(), QStringLiteral("30(02:01,05:)"));
        QCOMPARE(document.remove(1), 0);
        QCOMPARE(document.tree(), QStringLiteral("30(02:01,05:)"));
    }
    void buildOfStaleLengthsIsEmpty()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(tlv(0x04, "abc")), 1);
        QCOMPARE(document.setData("longer"), 1);
        QCOMPARE(document.build(), QByteArray());
        document.update();
        QCOMPARE(document.build(), tlv(0x04, "longer"));
    }
    void removeOfNothing()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.remove(0), 0);
        QCOMPARE(document.create(0x30), 1);
        QVERIFY(document.addSample(0x30)); // an object without a node in the tree
        QCOMPARE(document.remove(0), 0);
        QCOMPARE(document.getChildCount(), 1);
    }

    // What other objects stood for goes with the node, and they know it.
    void nodesThatGoAreForgotten()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sequence({sequence({integer("01")}), integer("02")})), 1);
        QCOMPARE(document.addBlock(integer("03")), 1);
        const PXAsnBlock *mirror = document.getChild(2, 0x30);
        PXAsnBlock *inner = mirror->getChild(0, 0x30)->getChild(0, 0x02);
        QCOMPARE(document.remove(0), 1);
        QCOMPARE(mirror->getChildCount(), 3);
        QCOMPARE(mirror->getChild(0, 0)->print(), QStringLiteral("None"));
        QCOMPARE(inner->type(), 0);
        QCOMPARE(inner->setData("x"), 0);
        QCOMPARE(mirror->getChild(1, 0x02)->toInt(), 2);
        std::vector<QString> values;
        document.get_extendata(values);
        QCOMPARE(values, (std::vector<QString>{"02", "02", "03"}));
        QCOMPARE(document.myprint(), QStringLiteral(" { 02 }\n { }\n { 02 }\n { 03 }\n"));
        QCOMPARE(printedBy([&] { document.dump(0); }),
                 QByteArray("SEQUENCE    INTEGER       length =7    SEQUENCE        None"
                            "            None        INTEGER       length =7"
                            "        INTEGER       length =7"));
    }

    // A document opened anew has its objects made when they are asked for, and all with the first
    // that doubles.
    void objectsAreMadeWithTheFirstThatDoubles()
    {
        PXAsn document(nullptr);
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(document.open(sequence({sequence({integer("01")}), integer("02")})), 1);
            QVERIFY(document.children().isEmpty());
            QCOMPARE(document.addBlock(integer("03")), 1);
            QCOMPARE(document.children().size(), 3);
            QCOMPARE(document.getChild(0, 0x30)->children().size(), 1);
        }
    }

    void nodesThatGoThroughAnotherObjectAreForgotten()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sequence({integer("01"), integer("02")})), 1);
        PXAsnBlock *first = document.getChild(0, 0x02);
        QCOMPARE(document.addBlock(integer("03")), 1);
        QCOMPARE(document.getChild(2, 0x30)->remove(0), 1);
        QCOMPARE(document.getChild(0, 0), first);
        QCOMPARE(first->type(), 0);
        QCOMPARE(document.getChild(1, 0x02)->toInt(), 2);
        document.update();
        QCOMPARE(document.build(), sequence({integer("02"), integer("03")}));
    }

    void dataThatEndsNodesThroughAnotherObject()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(tlv(0xA3, tlv(0x04, sequence({integer("01")})))), 1);
        PXAsnBlock *string = document.getChild(0, 0x04);
        QCOMPARE(string->addBlock(integer("02")), 1);
        PXAsnBlock *mirror = string->getChild(1, 0x04);
        QCOMPARE(mirror->getChildCount(), 2);
        QCOMPARE(mirror->setData("ab"), 1);
        QCOMPARE(mirror->getChildCount(), 0);
        QCOMPARE(string->toByteArray(), QByteArray("ab"));
        QCOMPARE(string->getChild(0, 0)->type(), 0);
        QCOMPARE(string->getChild(1, 0x04), mirror);
        QCOMPARE(document.myprint(), QStringLiteral(" { }\n { 61 62 }\n"));
    }

    // An addition that failed leaves an object without node, and all behind it out of step.
    void removeBehindAFailedAddition()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(sequence({integer("01")})), 1);
        PXAsnBlock *refused = document.addSample(0x30);
        PXAsnBlock *second = document.addStruct(0x31);
        QCOMPARE(document.remove(1), 1);
        QCOMPARE(document.getChildCount(), 2);
        QCOMPARE(document.getChild(1, 0), second);
        QVERIFY(!document.children().contains(refused));
        QCOMPARE(second->print(), QStringLiteral("None"));
        QCOMPARE(document.myprint(), QStringLiteral(" { 01 }\n { }\n"));
    }

    // An object that somebody made for himself is the document's as well, though in no list.
    void anObjectOfOnesOwnIsForgotten()
    {
        Shown document;
        QCOMPARE(document.open(sequence({sequence({integer("01")}), integer("02")})), 1);
        auto *own = new PXAsnBlock(&document);
        QCOMPARE(own->load(ASNGetChild(document.root(), 0)), 1);
        auto *whole = new PXAsnBlock(own);
        QCOMPARE(whole->load(document.root()), 1);
        QCOMPARE(document.remove(0), 1);
        QCOMPARE(own->type(), 0);
        QCOMPARE(own->getChildCount(), 1);
        QCOMPARE(whole->getChild(1, 0x02)->toInt(), 2);
        document.close();
        QCOMPARE(whole->type(), 0);
        QCOMPARE(whole->print(), QStringLiteral("None"));
        // Another document there is none of this one's, nor is any other object.
        new QObject(&document);
        auto *other = new Shown;
        other->setParent(&document);
        QCOMPARE(document.open(sequence({integer("01")})), 1);
        QCOMPARE(other->open(sequence({integer("05")})), 1);
        QCOMPARE(document.addBlock(integer("02")), 1);
        QVERIFY(other->children().isEmpty());
        QCOMPARE(document.remove(0), 1);
        QCOMPARE(other->getChild(0, 0x02)->toInt(), 5);
    }

    void aWholeCertificate()
    {
        Shown document;
        QCOMPARE(document.create(0x30), 1);
        PXAsnBlock *tbs = document.addStruct(0x30);
        tbs->addStruct(0xA0)->addSample(0x02)->setData(QByteArray(1, '\2'));
        tbs->addSample(0x02)->setData("\xFF\x01");
        PXAsnBlock *algorithm = tbs->addStruct(0x30);
        algorithm->addSample(0x06)->setData("1.2.840.113549.1.1.11");
        algorithm->addSample(0x05);
        QCOMPARE(tbs->addBlock(sequence({set({attribute(kCommonName, utf8("A"))})})), 1);
        document.addSample(0x03)->setData("signature");
        document.update();
        const QByteArray expected =
            sequence({sequence({tlv(0xA0, integer("02")), integer("00FF01"),
                                sequence({oid(kSha256WithRsa), tlv(0x05, {})}),
                                sequence({set({attribute(kCommonName, utf8("A"))})})}),
                      tlv(0x03, QByteArray(1, '\0') + "signature")});
        QCOMPARE(document.build().toHex(), expected.toHex());
        PXAsn again(nullptr);
        QCOMPARE(again.open(document.build()), 1);
        again.update();
        QCOMPARE(again.build(), document.build());
    }

    // All of it works, silently, where no core is loaded.
    void withoutACore()
    {
        m_core.reset();
        qtcall_destroy();
        QVERIFY(!getSignatureCore());
        {
            PXAsn document(nullptr);
            QCOMPARE(document.create(0x30), 1);
            QCOMPARE(document.addStruct(0x31)->addSample(0x04)->setData("x"), 1);
            QCOMPARE(document.addBlock(integer("01")), 1);
            document.update();
            QCOMPARE(document.build(), sequence({set({tlv(0x04, "x")}), integer("01")}));
            QCOMPARE(document.open(document.build()), 1);
        }
        QVERIFY(qtcall_init());
        QVERIFY(getSignatureCore());
    }
};

QTEST_GUILESS_MAIN(TestPxasnEdit)
#include "tst_pxasn_edit.moc"
