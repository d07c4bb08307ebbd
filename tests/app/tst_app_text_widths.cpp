#include "app/mainwindow.h"
#include "tests/app/widgets.h"
#include "tests/languages/tables.h"
#include "ui_mainwindow.h"
#include "util/c_language.h"
#include "util/texts.h"

#include <algorithm>
#include <QDir>
#include <QFontInfo>
#include <QHeaderView>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionComboBox>
#include <QTemporaryDir>
#include <QTest>

using texts::shown;

namespace {

const QString kSkinFont = QStringLiteral("Microsoft YaHei");

// What the style sheets make of their font, which they name in a fixed size.
QFontMetrics metrics(int pixelSize)
{
    QFont font(kSkinFont);
    font.setPixelSize(pixelSize);
    return QFontMetrics(font);
}

// The names of rows: of fields, of extensions, of identifiers that are one, and of some without
// name.
QStringList rowNames(const QString &section)
{
    QStringList names = {QStringLiteral("1.3.6.1.4.1.11129.2.4.2"),
                         QStringLiteral("1.2.840.113556.1.8000.2554.1073741823.40")};
    const QVector<tables::Row> own = tables::read("texts.tsv");
    for (const tables::Row &row : own) {
        const QString group = tables::cell(row, "group");
        if (group == QLatin1String("Row") || group == QLatin1String("Extension"))
            names += texts::shown(tables::cell(row, "key"));
    }
    const QVector<tables::Row> identifiers = tables::read("oids.tsv");
    for (const tables::Row &row : identifiers)
        names += tables::cell(row, section.toLatin1());
    return names;
}

// How the table paints the name in its first row.
QStyleOptionViewItem nameOption(const QTableWidget *table, int height)
{
    QStyleOptionViewItem option;
    option.initFrom(table);
    option.rect = QRect(0, 0, table->columnWidth(0), height);
    option.displayAlignment = Qt::AlignLeft | Qt::AlignVCenter;
    option.features = QStyleOptionViewItem::WrapText;
    option.font = table->font();
    option.widget = table;
    return option;
}

// How many pixels the name in the first row marks when its row has this height.
int inkOfName(const QTableWidget *table, int height)
{
    const QStyleOptionViewItem option = nameOption(table, height);
    QImage image(option.rect.size(), QImage::Format_Grayscale8);
    image.fill(Qt::white);
    QPainter painter(&image);
    table->itemDelegate()->paint(&painter, option, table->model()->index(0, 0));
    int ink = 0;
    for (int y = 0; y < image.height(); ++y) {
        const uchar *line = image.constScanLine(y);
        ink += int(std::count_if(line, line + image.width(), [](uchar c) { return c < 255; }));
    }
    return ink;
}

int widthOfName(const QTableWidget *table)
{
    return table->itemDelegate()
        ->sizeHint(nameOption(table, table->rowHeight(0)), table->model()->index(0, 0))
        .width();
}

} // namespace

// Whether the texts fit the window's parts, in the fonts that the README recommends and in the one
// that a European desktop falls back on.
class TestAppTextWidths : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void labels_data() { languagesAndFonts(); }
    void labels();
    void buttons_data() { languagesAndFonts(); }
    void buttons();
    void tabs_data() { languagesAndFonts(); }
    void tabs();
    void selector_data() { languagesAndFonts(); }
    void selector();
    void columns_data() { languagesAndFonts(); }
    void columns();
    void summaryLines_data() { languagesAndFonts(); }
    void summaryLines();
    void statusBlockEndsAboveTheLine_data() { languagesAndFonts(); }
    void statusBlockEndsAboveTheLine();

private:
    static void languagesAndFonts();
    void verifyFits(const QString &text, int needed, int room) const;

    QTemporaryDir m_configuration;
};

void TestAppTextWidths::initTestCase()
{
    QVERIFY(QDir(m_configuration.path()).mkdir(QStringLiteral("settings")));
    qputenv("PX_CONFIG_PATH", QFile::encodeName(m_configuration.path()));
}

void TestAppTextWidths::languagesAndFonts()
{
    QTest::addColumn<QByteArray>("language");
    QTest::addColumn<QString>("font");
    const auto add = [](const char *language, const char *font) {
        QTest::addRow("%s in %s", language, font) << QByteArray(language) << QString(font);
    };
    add("CN", "Noto Sans CJK SC");
    add("CN", "WenQuanYi Micro Hei");
    add("TW", "Noto Sans CJK TC");
    add("TW", "WenQuanYi Micro Hei");
    add("EN", "Noto Sans CJK SC");
    add("EN", "WenQuanYi Micro Hei");
    add("EN", "DejaVu Sans");
}

// The language table reads the configuration again, so one process goes through all languages.
void TestAppTextWidths::init()
{
    QFETCH(QByteArray, language);
    QFETCH(QString, font);
    const QString target = m_configuration.filePath(QStringLiteral("settings/PXClientConfig.dll"));
    QFile::remove(target);
    QVERIFY(QFile::copy(QStringLiteral(PX_BINARY_DIR "/settings/") + QLatin1String(language) +
                            QStringLiteral("/settings/PXClientConfig.dll"),
                        target));
    c_language::GetLangPtr()->LANG_SetFileName(QString());
    c_language::GetLangPtr()->LANG_SetLang();
    QCOMPARE(c_language::GetLangPtr()->section(), QString::fromLatin1(language));

    // Before the window adds its own: the first that is installed serves.
    QFont::removeSubstitutions(kSkinFont);
    QFont::insertSubstitution(kSkinFont, font);
    QCOMPARE(QFontInfo(QFont(kSkinFont)).family(), font);
}

void TestAppTextWidths::verifyFits(const QString &text, int needed, int room) const
{
    QVERIFY2(needed > 0 && needed <= room,
             qPrintable(QStringLiteral("\"%1\": %2 of %3 pixels").arg(text).arg(needed).arg(room)));
}

void TestAppTextWidths::labels()
{
    const MainWindow window;
    for (const char *name : {"label", "label_2_notice", "titileCaption"}) {
        auto *label = child<QLabel>(window, name);
        QVERIFY(label);
        label->ensurePolished();
        const QFontMetrics font = label->fontMetrics();
        const QString text = label->text().remove(QLatin1Char('&')); // which marks a key
        verifyFits(text, font.horizontalAdvance(text), label->contentsRect().width());
        // Lines are higher than the lowest label, what is drawn of them is not, but for brackets.
        const QString low = QString(text).remove(QLatin1Char('(')).remove(QLatin1Char(')'));
        verifyFits(text, font.tightBoundingRect(low).height(), label->height());
    }
}

void TestAppTextWidths::buttons()
{
    const MainWindow window;
    auto *button = bottomButton(window);
    QVERIFY(button);
    const int leastMargin = 12;
    verifyFits(button->text(), button->fontMetrics().horizontalAdvance(button->text()),
               button->width() - 2 * leastMargin);
}

void TestAppTextWidths::tabs()
{
    // The room that the style sheet's padding and margin leave of a tab's least width.
    const int room = 100 - 9 - 9 - 10;
    for (const QLatin1String key : {text_keys::kTabGeneral, text_keys::kTabDetails})
        verifyFits(shown(key), metrics(15).horizontalAdvance(shown(key)), room);
}

void TestAppTextWidths::selector()
{
    const MainWindow window;
    auto *selector = child<QComboBox>(window, "comboBox_selection");
    QVERIFY(selector);
    QStyleOptionComboBox option;
    option.initFrom(selector);
    option.subControls = QStyle::SC_All;
    const int room =
        selector->style()
            ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, selector)
            .width();
    QCOMPARE(selector->count(), 3);
    for (int i = 0; i < selector->count(); ++i)
        verifyFits(selector->itemText(i), metrics(13).horizontalAdvance(selector->itemText(i)),
                   room);
}

void TestAppTextWidths::columns()
{
    MainWindow window;
    auto *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    child<QTabWidget>(window, "tabWidget")->setCurrentIndex(1);
    window.show();
    const int margin =
        table->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, table) + 1;
    const int room = table->columnWidth(0) - 2 * margin;
    for (const QLatin1String key : {text_keys::kColumnField, text_keys::kColumnValue})
        verifyFits(shown(key), metrics(13).horizontalAdvance(shown(key)), room);

    // Each name takes the height it needs, and no more; no word is wider than the column.
    const QStringList names = rowNames(c_language::GetLangPtr()->section());
    for (const QString &name : names) {
        table->setRowCount(0);
        window.result_detail({{name, QString(), QString(), 0}});
        verifyFits(name, widthOfName(table), table->columnWidth(0));
        const int height = table->rowHeight(0);
        const int whole = inkOfName(table, height + 200);
        QVERIFY(whole > 0);
        QVERIFY2(inkOfName(table, height) == whole, qPrintable(name));
        // Above and below its lines, a row has the room that one of one line has.
        const int oneLine = table->verticalHeader()->defaultSectionSize();
        const int halfALineLess = height - oneLine + metrics(13).lineSpacing() / 2;
        if (height > oneLine)
            QVERIFY2(inkOfName(table, halfALineLess) < whole, qPrintable(name));
    }
}

// The lines of the status block that are always the same stand on one line each.
void TestAppTextWidths::summaryLines()
{
    const MainWindow window;
    auto *box = child<QPlainTextEdit>(window, "plainTextEdit_normal");
    QVERIFY(box);
    box->ensurePolished();
    const int room = box->contentsRect().width() - 2 * qRound(box->document()->documentMargin());
    const QString indent = QStringLiteral("      -");
    for (const QString &line : {QStringLiteral(" ") + shown(text_keys::kStatusPurposes),
                                indent + shown(text_keys::kStatusProvesIdentity),
                                indent + shown(text_keys::kStatusSecuresCommunication),
                                QStringLiteral(" ") + shown(text_keys::kStatusValid),
                                QStringLiteral(" ") + shown(text_keys::kStatusNotValid)})
        verifyFits(line, box->fontMetrics().horizontalAdvance(line), room);
}

// However long the block is: the line between the two boxes crosses the first.
void TestAppTextWidths::statusBlockEndsAboveTheLine()
{
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const auto lines =
        window.findChildren<QFrame *>(QStringLiteral("lineEnd2"), Qt::FindDirectChildrenOnly);
    QCOMPARE(lines.size(), 2);
    const QWidget *text = child<QPlainTextEdit>(window, "plainTextEdit_normal")->viewport();
    const int end = text->mapTo(&window, QPoint(0, text->height())).y();
    const int line = lines.at(1)->y();
    QVERIFY2(end <= line && end > line - 10,
             qPrintable(QStringLiteral("%1 of %2").arg(end).arg(line)));
}

QTEST_MAIN(TestAppTextWidths)
#include "tst_app_text_widths.moc"
