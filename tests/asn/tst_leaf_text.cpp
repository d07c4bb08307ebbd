#include "asn/leaf_text.h"

#include <QTest>

namespace {

QByteArray everyOctet()
{
    QByteArray octets;
    for (int i = 0; i < 256; ++i)
        octets += static_cast<char>(i);
    return octets;
}

} // namespace

// Each form that a flattened leaf is written in, held against the way back.
class TestLeafText : public QObject
{
    Q_OBJECT

private slots:
    void formsAreWritten();
    void everyFormReadsBack_data();
    void everyFormReadsBack();
    void flagsReadBack();
    void otherTextsStay_data();
    void otherTextsStay();
    void othersAreJudgedByLength();
};

void TestLeafText::formsAreWritten()
{
    QCOMPARE(leaf_text::hex(QByteArray("\x04\xaf\x00", 3)), QStringLiteral("04 AF 00"));
    QCOMPARE(leaf_text::characters("a c"), QStringLiteral("a   c"));
    QCOMPARE(leaf_text::characters("\xe9z"), QString::fromLatin1("\xe9 z"));
    QCOMPARE(leaf_text::hexOrCharacters("abc"), QStringLiteral("61 62 63"));
    QCOMPARE(leaf_text::hexOrCharacters("abcd"), QStringLiteral("a b c d"));
    QVERIFY(leaf_text::hex({}).isEmpty());
    QVERIFY(leaf_text::characters({}).isEmpty());
}

void TestLeafText::everyFormReadsBack_data()
{
    QTest::addColumn<QByteArray>("octets");
    for (int length = 0; length <= 9; ++length)
        QTest::addRow("%d octets", length) << everyOctet().right(length);
    QTest::newRow("every octet") << everyOctet();
    QTest::newRow("blanks alone") << QByteArray(5, ' ');
}

void TestLeafText::everyFormReadsBack()
{
    QFETCH(QByteArray, octets);
    QCOMPARE(leaf_text::closedUp(leaf_text::characters(octets)),
             QString::fromLatin1(octets.constData(), octets.size()));
    QCOMPARE(leaf_text::asHex(leaf_text::hexOrCharacters(octets)), leaf_text::hex(octets));
}

void TestLeafText::flagsReadBack()
{
    const auto flagsOf = [](const QByteArray &content) {
        return leaf_text::flags(leaf_text::hex(content));
    };
    for (int first = 0; first < 256; ++first) {
        const char low = static_cast<char>(first);
        QCOMPARE(flagsOf(QByteArray("\x05", 1) + low), first);
        QCOMPARE(flagsOf(QByteArray("\x05", 1) + '\x01' + low + '\x7f'), 0x01 | first << 8);
    }
    QCOMPARE(flagsOf(QByteArray("\x05", 1)), 0);
    QCOMPARE(flagsOf({}), 0);
}

void TestLeafText::otherTextsStay_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", "a", "ab", "a b ", "abc", "a bc", "a bcd", "04 1F"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void TestLeafText::otherTextsStay()
{
    QFETCH(QString, text);
    QCOMPARE(leaf_text::closedUp(text), text);
    QCOMPARE(leaf_text::asHex(text), text);
}

void TestLeafText::othersAreJudgedByLength()
{
    QCOMPARE(leaf_text::asHex(QStringLiteral("abcdef")), QStringLiteral("abcdef"));
    QCOMPARE(leaf_text::asHex(QStringLiteral("abcdefg")), QStringLiteral("61 63 65 67"));
}

QTEST_GUILESS_MAIN(TestLeafText)
#include "tst_leaf_text.moc"
