#include "app/look/visible_text.h"
#include "tests/support/processor_time.h"

#include <QTest>

using visible_text::LineFeeds;

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class TestAppVisibleText : public QObject
{
    Q_OBJECT

private slots:
    void characters_data();
    void characters();
    void lineFeeds_data();
    void lineFeeds();
    void everyIgnorableIsMarked();
    void piecesKeepTheText();
    void isLinear();
};

void TestAppVisibleText::characters_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const char *given, const char *shown) {
        QTest::newRow(name) << text(given) << text(shown);
    };
    row("empty", "", "");
    row("letters of many scripts", "Bank 银行 בנק мир é", "Bank 银行 בנק мир é");
    row("override", "\u202Eknab", "‹U+202E›knab");
    row("isolate", "a\u2066b\u2069", "a‹U+2066›b‹U+2069›");
    row("Arabic letter mark", "\u061C", "‹U+061C›");
    row("zero-width blank", "pay\u200Bpal", "pay‹U+200B›pal");
    row("soft hyphen", "pay\u00ADpal", "pay‹U+00AD›pal");
    row("byte order mark within", "a\uFEFFb", "a‹U+FEFF›b");
    row("tag characters", "a\U000E0041b", "a‹U+E0041›b");
    row("annotation", "a\uFFF9b\uFFFB", "a‹U+FFF9›b‹U+FFFB›");
    row("object", "a\uFFFCb", "a‹U+FFFC›b");
    row("no character", "a\uFDD0b\uFFFE", "a‹U+FDD0›b‹U+FFFE›");
    row("C0", "a\x01\x7F", "a‹U+0001›‹U+007F›");
    row("carriage return", "a\rb", "a‹U+000D›b");
    row("C1", "a\u0085b\u009F", "a‹U+0085›b‹U+009F›");
    row("separators", "a\u2028b\u2029c", "a‹U+2028›b‹U+2029›c");
    row("tabs", "a\t\tb", "a  b");
    row("blanks stay", "a \u00A0\u3000b", "a \u00A0\u3000b");
    row("Persian non-joiner", "می\u200Cخواهم", "می\u200Cخواهم");
    row("Hindi joiner", "क्\u200Dष", "क्\u200Dष");
    row("joiner between Latin letters", "a\u200Db", "a‹U+200D›b");
    row("joiner before another script", "م\u200Cb", "م‹U+200C›b");
    row("joiner at the end", "م\u200C", "م‹U+200C›");
    row("joiner behind a vowel sign", "مَ\u200Cخ", "مَ\u200Cخ");
    row("two joiners", "م\u200C\u200Cخ", "م‹U+200C›‹U+200C›خ");
    row("selector behind its base", "\u2764\uFE0F", "\u2764\uFE0F");
    row("ideographic selector", "葛\U000E0100", "葛\U000E0100");
    row("selector at the start", "\uFE0Fa", "‹U+FE0F›a");
    row("selector behind a blank", "a \uFE0F", "a ‹U+FE0F›");
    row("two selectors", "a\uFE0F\uFE0F", "a\uFE0F‹U+FE0F›");
    row("beyond the first plane", "\U0001F600", "\U0001F600");
    QTest::newRow("half a pair") << QString(QChar(0xD83D)) + QLatin1Char('a') << text("‹U+D83D›a");
    QTest::newRow("half a pair at the end")
        << QLatin1Char('a') + QString(QChar(0xD83D)) << text("a‹U+D83D›");
    QTest::newRow("the other half alone")
        << QLatin1Char('a') + QString(QChar(0xDE00)) << text("a‹U+DE00›");
    QTest::newRow("NUL") << QString(QChar(0)) << text("‹U+0000›");
}

void TestAppVisibleText::characters()
{
    QFETCH(QString, given);
    QFETCH(QString, shown);
    for (const LineFeeds each : {LineFeeds::Stay, LineFeeds::AsMarks, LineFeeds::AsBlanks})
        QCOMPARE(visible_text::shown(given, each), shown);
}

void TestAppVisibleText::lineFeeds_data()
{
    QTest::addColumn<int>("lineFeeds");
    QTest::addColumn<QString>("shown");
    QTest::newRow("stay") << int(LineFeeds::Stay) << text("a\nb\n");
    QTest::newRow("marks") << int(LineFeeds::AsMarks) << text("a‹U+000A›b‹U+000A›");
    QTest::newRow("blanks") << int(LineFeeds::AsBlanks) << text("a b ");
}

void TestAppVisibleText::lineFeeds()
{
    QFETCH(int, lineFeeds);
    QTEST(visible_text::shown(text("a\nb\n"), static_cast<LineFeeds>(lineFeeds)), "shown");
}

// Against the published property, of which the code holds the ranges.
void TestAppVisibleText::everyIgnorableIsMarked()
{
    QFile published(QStringLiteral("/usr/share/unicode/DerivedCoreProperties.txt"));
    QVERIFY(published.open(QIODevice::ReadOnly));
    int seen = 0;
    while (!published.atEnd()) {
        const QString line = QString::fromUtf8(published.readLine());
        if (!line.contains(QLatin1String("; Default_Ignorable_Code_Point")))
            continue;
        const QStringList ends =
            line.section(QLatin1Char(';'), 0, 0).trimmed().split(QStringLiteral(".."));
        const uint last = ends.last().toUInt(nullptr, 16);
        for (uint character = ends.first().toUInt(nullptr, 16); character <= last; ++character) {
            // Behind a letter: a byte order mark at the beginning would be taken for one.
            const char32_t codes[] = {U'a', character};
            const QString alone = QString::fromUcs4(codes, 2).mid(1);
            QVERIFY2(visible_text::shown(alone, LineFeeds::Stay).contains(QLatin1String("U+")),
                     qPrintable(QString::number(character, 16)));
            ++seen;
        }
    }
    QVERIFY(seen > 4000);
}

void TestAppVisibleText::piecesKeepTheText()
{
    const QString given = text("a\u202Eb\tc\n\u200D\U000E0041\r d");
    for (const LineFeeds each : {LineFeeds::Stay, LineFeeds::AsMarks, LineFeeds::AsBlanks}) {
        QString together;
        for (const visible_text::Piece &piece : visible_text::pieces(given, each))
            together += piece.original.isEmpty() ? piece.shown : piece.original;
        QCOMPARE(together, given);
    }
    QCOMPARE(visible_text::pieces(text("abc"), LineFeeds::Stay).size(), std::size_t(1));
}

void TestAppVisibleText::isLinear()
{
    const ProcessorTime timer;
    const QString marks(1000000, QChar(0x202E));
    QCOMPARE(visible_text::shown(marks, LineFeeds::Stay).size(), 8 * marks.size());
    QVERIFY(timer.elapsed() < 5000);
}

QTEST_APPLESS_MAIN(TestAppVisibleText)
#include "tst_app_visible_text.moc"
