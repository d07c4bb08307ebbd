#include "tests/support/der.h"
#include "tests/support/guarded_buffer.h"
#include "tests/support/message_recorder.h"

#include "asn/pxasn.h"

#include <QRandomGenerator>
#include <QTest>

using namespace der;

namespace {

// With all kinds of extensions: encapsulated, nested, refused and empty ones.
QByteArray certificate()
{
    Certificate certificate;
    certificate.extensions = joined(
        {criticalExtension("551D13", sequence({tlv(0x01, "\xFF"), integer("00")})),
         extension("551D0F", tlv(0x03, QByteArray::fromHex("0186"))),
         extension("551D11", sequence({tlv(0x82, "example.org"), tlv(0x86, "http://x")})),
         extension("551D20", sequence({sequence(
                                 {oid("551D2000"), sequence({sequence({oid("2B06010505070201"),
                                                                       tlv(0x16, "cps")})})})})),
         extension("551D0E", tlv(0x04, QByteArray::fromHex("AABBCC"))),
         extension("551D12", QByteArray()), extension("551D1E", "no DER"),
         extension("551D1F", tlv(0x1E, QByteArray::fromHex("00410042D83D")))});
    return certificate.encoded();
}

int g_read = 0;

void readAll(const PXAsnBlock &block)
{
    for (int i = 0; i < block.getChildCount(); ++i)
        readAll(*block.getChild(i, 0));
    block.toString();
    block.toByteArray();
    block.toInt();
    block.toDateTime();
    block.printData();
    block.printData_ex();
    block.print();
    ++g_read;
}

// From memory that ends where the input does; what it builds again reads back as the same.
bool survives(const QByteArray &input)
{
    const GuardedBuffer<char> guarded(input.constData(), std::size_t(input.size()));
    PXAsn document(nullptr);
    if (document.open(QByteArray::fromRawData(guarded.get(), input.size())) == 0)
        return true;
    readAll(document);
    document.myprint();
    document.get_basedata();
    std::vector<QString> values;
    std::vector<certpolicy> items;
    int level = 0;
    document.get_extendata(values);
    document.get_extendata_certpolicy(items, level);
    const QByteArray der = document.build();
    PXAsn again(nullptr);
    return level == -1 && values.size() == items.size() && again.open(der) == 1 &&
           again.build() == der;
}

} // namespace

/// Nothing that is opened may crash, or be read beyond its end.
class TestAsnRobustness : public QObject
{
    Q_OBJECT

private:
    QScopedPointer<MessageRecorder> m_debugStream;

private slots:
    void init()
    {
        g_read = 0;
        m_debugStream.reset(new MessageRecorder);
    }
    void cleanup() { m_debugStream.reset(); }

    void truncations()
    {
        const QByteArray whole = certificate();
        QVERIFY(survives(whole));
        QVERIFY(g_read > 60);
        for (int size = 0; size < whole.size(); ++size) {
            QVERIFY(survives(whole.left(size)));
            // With the outer length made to fit, so that the cut lies inside.
            QVERIFY(survives(tlv(0x30, whole.mid(4, size))));
            QVERIFY(survives(tlv(0xA3, whole.mid(size))));
        }
    }

    void everyOctetChanged()
    {
        const QByteArray whole = certificate();
        for (int i = 0; i < whole.size(); ++i) {
            for (const int value :
                 {0x00, 0x01, 0x04, 0x1E, 0x30, 0x7F, 0x80, 0x81, 0x84, 0xA3, 0xFF}) {
                QByteArray changed = whole;
                changed[i] = static_cast<char>(value);
                QVERIFY(survives(changed));
            }
        }
        QVERIFY(g_read > whole.size());
    }

    void randomOctets_data()
    {
        QTest::addColumn<unsigned int>("seed");
        for (unsigned int seed = 1; seed <= 5; ++seed)
            QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }

    void randomOctets()
    {
        QFETCH(unsigned int, seed);
        QRandomGenerator random(seed);
        const QByteArray whole = certificate();
        for (int i = 0; i < 400; ++i) {
            QByteArray any(random.bounded(200), '\0');
            for (char &octet : any)
                octet = static_cast<char>(random.bounded(256));
            QVERIFY(survives(any));
            QVERIFY(survives(tlv(random.bounded(2) == 0 ? 0x30 : 0xA3, any)));
            QByteArray changed = whole;
            for (int j = random.bounded(10); j >= 0; --j)
                changed[random.bounded(changed.size())] = static_cast<char>(random.bounded(256));
            QVERIFY(survives(changed));
        }
        QVERIFY(g_read > 400);
    }

    // Every tag around every length of content that a value's reader looks at.
    void everyTagAndSmallContent()
    {
        for (int tag = 0; tag < 256; ++tag) {
            for (int size = 0; size < 20; ++size) {
                for (const char octet : {'\0', '\x01', '\x30', '\x80', '\xD8', '\xFF'})
                    QVERIFY(survives(tlv(tag, QByteArray(size, octet))));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestAsnRobustness)
#include "tst_asn_robustness.moc"
