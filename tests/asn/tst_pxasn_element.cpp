#include "tests/support/der.h"
#include "tests/support/printed.h"

#include "asn/pxasn_element.h"

#include <QTest>

using namespace der;

namespace {

QByteArray nested()
{
    return sequence({sequence({integer("01"), oid("550403")}), tlv(0x1E, QByteArray("\0A", 2)),
                     tlv(0x03, QByteArray("\0\xAB", 2)), utf8("four")});
}

// Lets a test put a hole into the list, which nothing in the layer does.
class HoleyDocument : public PXAsn
{
public:
    using PXAsn::PXAsn;
    void addHole() { listChild.append(nullptr); }
};

// Says what both say of themselves, not of what is below.
template <typename One>
QString said(const One &one)
{
    std::vector<QString> values;
    std::vector<certpolicy> items;
    int level = 5;
    QString text = QStringLiteral("%1 %2 %3").arg(one.getChildCount()).arg(one.toInt()).arg(level);
    text += one.toString() + QString::fromLatin1(one.toByteArray().toHex()) +
            QString::fromLatin1(one.contentOctets().toHex());
    text += QString::number(one.get_extendata(values)) +
            QString::number(one.get_extendata_certpolicy(items, level));
    for (const QString &value : values)
        text += QLatin1Char('|') + value;
    for (const certpolicy &item : items)
        text += QLatin1Char('|') + item.text + QString::number(item.level);
    return text + QString::number(level);
}

// What `getChild` gives of an element and of its block, with what they print.
QString saidBelow(const PXAsnElement &element)
{
    QString text;
    for (const int type : {0, 0x02, 0x30, 0x1E}) {
        for (int index = -1; index <= element.getChildCount(); ++index) {
            PXAsnElement child;
            text += QString::fromUtf8(printedBy([&] { child = element.getChild(index, type); }));
            text += child ? said(child) + saidBelow(child) : QStringLiteral("none");
        }
    }
    return text;
}

QString saidBelow(const PXAsnBlock &block)
{
    QString text;
    for (const int type : {0, 0x02, 0x30, 0x1E}) {
        for (int index = -1; index <= block.getChildCount(); ++index) {
            PXAsnBlock *child = nullptr;
            text += QString::fromUtf8(printedBy([&] { child = block.getChild(index, type); }));
            text += child ? said(*child) + saidBelow(*child) : QStringLiteral("none");
        }
    }
    return text;
}

// Of an element as the list gives them, in full.
QString listed(const PXAsnElement &element, int first)
{
    QString text;
    PXAsnElement child;
    for (PXAsnChildren all(element, first); all.next(child);)
        text += child ? said(child) : QStringLiteral("none");
    return text;
}

QString oneByOne(const PXAsnElement &element, int first)
{
    QString text;
    for (int index = first; index < element.getChildCount(); ++index) {
        const PXAsnElement child = element.getChild(index, ASN_TAG_ANY);
        text += child ? said(child) : QStringLiteral("none");
    }
    return text;
}

} // namespace

/// An element says what its block says, whatever was made or changed, and no object is made for it.
class TestPxasnElement : public QObject
{
    Q_OBJECT

private slots:
    void none()
    {
        for (const PXAsnElement &none : {PXAsnElement(), PXAsnElement(nullptr)}) {
            QVERIFY(!none && !none.node() && !none.hasChildren() && !none.checkTag(0));
            QCOMPARE(said(none), said(PXAsnBlock(nullptr)));
            QCOMPARE(saidBelow(none), saidBelow(PXAsnBlock(nullptr)));
        }
    }

    void asItsBlock_data()
    {
        QTest::addColumn<int>("change");
        m_changes = {
            [](HoleyDocument &) {},
            [](HoleyDocument &document) { document.getChild(0, 0)->getChild(1, 0); },
            [](HoleyDocument &document) { document.remove(1); },
            [](HoleyDocument &document) { document.addSample(0x02)->setData("\x7F"); },
            [](HoleyDocument &document) { document.addSample(0x30); }, // an object without node
            [](HoleyDocument &document) { document.addStruct(0x30)->addSample(0x02); },
            [](HoleyDocument &document) { document.addBlock(integer("09")); },
            [](HoleyDocument &document) { document.getChild(0, 0)->remove(0); },
            [](HoleyDocument &document) { document.close(); },
            [](HoleyDocument &document) { document.addHole(); },
            [](HoleyDocument &document) {
                document.open(integer("01"));
                document.addHole();
            },
            [](HoleyDocument
                   &document) { // the added one stands for the document, and then for less
                document.addBlock(integer("09"));
                document.remove(0);
            },
        };
        const char *const names[] = {"as it was opened", "objects are made", "one removed",
                                     "one added",        "no node",          "a tree added",
                                     "a block added",    "removed below",    "closed",
                                     "a hole",           "a hole in a leaf", "forgotten below"};
        for (int i = 0; i < static_cast<int>(m_changes.size()); ++i)
            QTest::newRow(names[i]) << i;
    }
    void asItsBlock()
    {
        QFETCH(int, change);
        HoleyDocument document(nullptr);
        QCOMPARE(document.open(nested()), 1);
        m_changes[static_cast<std::size_t>(change)](document);
        const PXAsnElement element(&document);
        const QString saidBefore = said(element) + saidBelow(element);
        for (const int first : {0, 1, 3, 100})
            QCOMPARE(listed(element, first), oneByOne(element, first));
        QCOMPARE(saidBefore, said(document) + saidBelow(document)); // makes all objects
        QCOMPARE(said(element) + saidBelow(element), saidBefore);
        QCOMPARE(element.hasChildren(), document.getChildCount() > 0);
    }

    void withoutNodeNothingIsGiven()
    {
        HoleyDocument document(nullptr);
        document.addHole();
        const QByteArray printed =
            printedBy([&] { QVERIFY(!PXAsnElement(&document).getChild(0, ASN_TAG_ANY)); });
        QCOMPARE(printed, QByteArray("(!node || index < 0 || index >= listChild.count()) fail\n"));
    }

    void makesNoObject()
    {
        PXAsn document(nullptr);
        QCOMPARE(document.open(nested()), 1);
        const PXAsnElement inner = PXAsnElement(&document).getChild(0, 0x30);
        QVERIFY(inner.hasChildren() && inner.checkTag(0x30) && !inner.checkTag(0x31));
        QCOMPARE(inner.getChildCount(), 2);
        QCOMPARE(inner.getChild(0, 0x02).toInt(), 1);
        QCOMPARE(inner.getChild(1, 0x06).toString(), QStringLiteral("CN"));
        QVERIFY(document.children().isEmpty());
    }

private:
    std::vector<void (*)(HoleyDocument &)> m_changes;
};

QTEST_GUILESS_MAIN(TestPxasnElement)
#include "tst_pxasn_element.moc"
