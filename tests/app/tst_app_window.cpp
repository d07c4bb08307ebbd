#include "app/look/program_look.h"
#include "app/look/window_style.h"
#include "app/title_translation.h"
#include "tests/app/widgets.h"
#include "ui_mainwindow.h"

#include <cstddef>
#include <cstring>
#include <QApplication>
#include <QBitmap>
#include <QHeaderView>
#include <QListView>
#include <QMetaMethod>
#include <QPainter>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>

using texts::shown;

namespace {

// The faces of the marked image: a colour for each region that the nine parts are cut from.
constexpr QRgb kMarks[3][3] = {
    {0xffff0000, 0xff00ff00, 0xff0000ff},
    {0xffffff00, 0xff888888, 0xff00ffff},
    {0xffff00ff, 0xff804000, 0xff004080},
};

// 200 x 200 with a border of 20 pixels.
QPixmap markedImage()
{
    QImage image(200, 200, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 200; ++x) {
            const auto band = [](int at) { return at < 20 ? 0 : at < 180 ? 1 : 2; };
            image.setPixel(x, y, kMarks[band(y)][band(x)]);
        }
    }
    return QPixmap::fromImage(image);
}

// What the window is to look like, written down anew for a window of 436 x 697.
QImage drawnByHand(const QPixmap &pixmap)
{
    const QRectF parts[][2] = {
        {{20, 20, 396, 657}, {20, 20, 141, 141}}, {{0, 0, 20, 20}, {0, 0, 20, 20}},
        {{20, 0, 396, 20}, {20, 0, 160, 20}},     {{416, 0, 20, 20}, {180, 0, 20, 20}},
        {{0, 677, 20, 20}, {0, 180, 20, 20}},     {{20, 677, 396, 20}, {20, 180, 160, 20}},
        {{416, 677, 20, 20}, {180, 180, 20, 20}}, {{0, 20, 20, 657}, {0, 20, 20, 160}},
        {{416, 20, 20, 657}, {180, 20, 20, 160}},
    };
    QImage image(436, 697, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    for (const auto &part : parts)
        painter.drawPixmap(part[0], pixmap, part[1]);
    return image;
}

QImage withoutChildren(MainWindow &window)
{
    QImage image(window.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    window.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

} // namespace

// How the window is built, dressed and painted.
class TestAppWindow : public QObject
{
    Q_OBJECT

private slots:
    void formHoldsTwelveWidgetsInOrder();
    void formHasItsOwnPlacesAndTexts_data();
    void formHasItsOwnPlacesAndTexts();
    void formKeepsItsTitle();
    void onlyTheTitleIsTranslated();
    void windowIsFixedAndFrameless();
    void slotsStandInOrder();
    void placesOfNamedWidgets_data();
    void placesOfNamedWidgets();
    void titleStrip();
    void twoLinesShareAName();
    void buttonsAndCaption();
    void buttonsAreNotNamedAsTheirStylesSay();
    void styleSheets_data();
    void styleSheets();
    void table();
    void selector();
    void boxes();
    void texts_data();
    void texts();
    void resources_data();
    void resources();
    void fontsThatStandIn_data();
    void fontsThatStandIn();
    void scaling();
    void patchTable();
    void patchesOfMarkedImage();
    void paintsTheBackgroundInNineParts();
    void theSheetLiesWithinItsShadow();
    void centring_data();
    void centring();
    void dragArea_data();
    void dragArea();
    void tableThatWasResizedWhileHidden();
    void tipsKeepTheDesktopsFont();
};

void TestAppWindow::formHoldsTwelveWidgetsInOrder()
{
#define PX_AT(member) std::pair<const char *, std::size_t>(#member, offsetof(Ui_MainWindow, member))
    const std::pair<const char *, std::size_t> members[] = {
        PX_AT(centralWidget),
        PX_AT(tabWidget),
        PX_AT(tab),
        PX_AT(plainTextEdit_normal),
        PX_AT(label),
        PX_AT(label_icon),
        PX_AT(plainTextEdit_normal_2),
        PX_AT(tab_2),
        PX_AT(plainTextEdit_detail_2),
        PX_AT(tableWidget_detailinfo),
        PX_AT(comboBox_selection),
        PX_AT(label_2_notice),
    };
#undef PX_AT
    QMainWindow window;
    Ui_MainWindow form;
    form.setupUi(&window);
    constexpr std::size_t kPointerSize = sizeof(void *);
    std::size_t offset = 0;
    for (const auto &[name, at] : members) {
        QCOMPARE(at, offset);
        QWidget *widget = nullptr;
        std::memcpy(static_cast<void *>(&widget), reinterpret_cast<const char *>(&form) + at,
                    kPointerSize);
        QCOMPARE(widget->objectName(), QString::fromLatin1(name));
        offset += kPointerSize;
    }
    QCOMPARE(sizeof form, offset);
}

void TestAppWindow::formHasItsOwnPlacesAndTexts_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("parent");
    QTest::addColumn<QRect>("place");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *name, const char *parent, const QRect &place,
                        const char *text = "") {
        QTest::newRow(name) << QByteArray(name) << QByteArray(parent) << place
                            << QString::fromUtf8(text);
    };
    add("tabWidget", "centralWidget", {10, 60, 411, 571});
    add("plainTextEdit_normal", "tab", {10, 60, 381, 211});
    add("label", "tab", {50, 20, 101, 21}, " 证书信息");
    add("label_icon", "tab", {20, 20, 21, 21}, "TextLabel");
    add("plainTextEdit_normal_2", "tab", {10, 290, 381, 231});
    add("plainTextEdit_detail_2", "tab_2", {10, 320, 381, 201});
    add("tableWidget_detailinfo", "tab_2", {10, 60, 381, 251});
    add("comboBox_selection", "tab_2", {80, 18, 181, 21});
    add("label_2_notice", "tab_2", {15, 23, 54, 15}, "显示(S):");
}

void TestAppWindow::formHasItsOwnPlacesAndTexts()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, parent);
    QFETCH(QRect, place);
    QFETCH(QString, text);
    QMainWindow window;
    Ui_MainWindow form;
    form.setupUi(&window);

    auto *widget = child<QWidget>(window, name.constData());
    QCOMPARE(widget->parent()->objectName(), QString::fromLatin1(parent));
    QCOMPARE(widget->geometry(), place);
    if (auto *label = qobject_cast<QLabel *>(widget))
        QCOMPARE(label->text(), text);
}

void TestAppWindow::formKeepsItsTitle()
{
    QMainWindow window;
    Ui_MainWindow form;
    form.setupUi(&window);
    QCOMPARE(window.objectName(), QStringLiteral("MainWindow"));
    QCOMPARE(window.windowModality(), Qt::WindowModal);
    QCOMPARE(window.size(), QSize(425, 697));
    QCOMPARE(window.styleSheet(), QString());
    QCOMPARE(window.windowTitle(), QString::fromUtf8("证书查看器"));
    QCOMPARE(window.centralWidget(), form.centralWidget);
    QCOMPARE(form.tabWidget->styleSheet(), QString());
    QCOMPARE(form.tabWidget->count(), 2);
    QCOMPARE(form.tabWidget->widget(0), form.tab);
    QCOMPARE(form.tabWidget->widget(1), form.tab_2);
    QCOMPARE(form.tabWidget->tabText(0), QString::fromUtf8("常规"));
    QCOMPARE(form.tabWidget->tabText(1), QString::fromUtf8("详细信息"));
    QCOMPARE(form.tabWidget->currentIndex(), 0);
    QCOMPARE(form.plainTextEdit_normal->frameShape(), QFrame::VLine);
    QCOMPARE(form.plainTextEdit_normal_2->frameShape(), QFrame::VLine);
    const auto boxes = window.findChildren<QPlainTextEdit *>();
    for (const QPlainTextEdit *box : boxes)
        QVERIFY2(box->isReadOnly(), qPrintable(box->objectName()));
    QCOMPARE(form.tableWidget_detailinfo->selectionMode(), QAbstractItemView::SingleSelection);
}

void TestAppWindow::onlyTheTitleIsTranslated()
{
    const MainWindow window;
    const QTranslator *translation = window.findChild<TitleTranslation *>();
    QVERIFY(translation);
    QCOMPARE(translation->translate("MainWindow", "证书查看器"), shown(text_keys::kWindowTitle));
    QCOMPARE(translation->translate("MainWindow", "常规"), QString());
    QCOMPARE(translation->translate("Another", "证书查看器"), QString());
    QCOMPARE(translation->translate("Another", "常规"), QString());
    QVERIFY(!translation->isEmpty());
}

void TestAppWindow::windowIsFixedAndFrameless()
{
    MainWindow window;
    QCOMPARE(window.minimumSize(), QSize(436, 697));
    QCOMPARE(window.maximumSize(), QSize(436, 697));
    QCOMPARE(window.size(), QSize(436, 697));
    QCOMPARE(window.windowFlags(), Qt::Window | Qt::FramelessWindowHint);
    QVERIFY(window.testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(window.windowModality(), Qt::WindowModal);
    window.resize(800, 800);
    QCOMPARE(window.size(), QSize(436, 697));
}

void TestAppWindow::slotsStandInOrder()
{
    const std::pair<const char *, QList<QByteArray>> expected[] = {
        {"result_detail(std::vector<detail_node>)", {"detail_data"}},
        {"result_normal(QString,int)", {"snormal", "type"}},
        {"Exit()", {}},
        {"on_tableWidget_detailinfo_clicked(QModelIndex)", {"index"}},
        {"on_comboBox_selection_currentIndexChanged(int)", {"index"}},
        {"on_tabWidget_tabBarClicked(int)", {"index"}},
        {"on_tabWidget_currentChanged(int)", {"index"}},
    };
    const QMetaObject &meta = MainWindow::staticMetaObject;
    int index = meta.methodOffset();
    for (const auto &[signature, names] : expected) {
        const QMetaMethod method = meta.method(index++);
        QCOMPARE(method.methodSignature(), QByteArray(signature));
        QCOMPARE(method.parameterNames(), names);
        QCOMPARE(method.methodType(), QMetaMethod::Slot);
    }
    QCOMPARE(meta.methodCount(), index);
}

void TestAppWindow::placesOfNamedWidgets_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QRect>("place");
    const auto add = [](const char *name, const QRect &place) {
        QTest::newRow(name) << QByteArray(name) << place;
    };
    add("label_icon", {26, 27, 21, 21});
    add("label", {50, 27, 101, 21});
    add("label_2_notice", {28, 27, 54, 15});
    add("tabWidget", {12, 58, 407, 571});
    add("tableWidget_detailinfo", {28, 60, 356, 251});
    add("titileCaption", {65, 10, 296, 30});
    add("plainTextEdit_normal", {28, 60, 356, 211});
    add("plainTextEdit_normal_2", {28, 290, 356, 231});
    add("plainTextEdit_detail_2", {28, 315, 356, 201});
}

void TestAppWindow::placesOfNamedWidgets()
{
    QFETCH(QByteArray, name);
    QFETCH(QRect, place);
    MainWindow window;
    QCOMPARE(child<QWidget>(window, name.constData())->geometry(), place);
}

void TestAppWindow::titleStrip()
{
    MainWindow window;
    const auto labels = window.findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(labels.size(), 2);
    QLabel *strip = labels.first();
    QCOMPARE(strip->objectName(), QString());
    QCOMPARE(strip->geometry(), QRect(11, 7, 414, 41));
    QVERIFY(strip->hasScaledContents());
    QCOMPARE(strip->pixmap(Qt::ReturnByValue).toImage(),
             QPixmap(QStringLiteral(":/img/res/bk_rose_gold_noborder.png")).toImage());

    auto *icon = child<QLabel>(window, "label_icon");
    QVERIFY(icon->hasScaledContents());
    QCOMPARE(icon->pixmap(Qt::ReturnByValue).toImage(),
             QPixmap(QStringLiteral(":/img/cert.png")).toImage());
}

void TestAppWindow::twoLinesShareAName()
{
    MainWindow window;
    const auto lines =
        window.findChildren<QFrame *>(QStringLiteral("lineEnd2"), Qt::FindDirectChildrenOnly);
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0)->geometry(), QRect(15, 91, 405, 1));
    QCOMPARE(lines.at(1)->geometry(), QRect(39, 342, 360, 1));
    for (const QFrame *line : lines) {
        QCOMPARE(line->styleSheet(), QStringLiteral("#lineEnd2{color:rgba(236,236,236);}"));
        QCOMPARE(line->palette().color(QPalette::WindowText), QColor(236, 236, 236));
        QCOMPARE(line->frameShadow(), QFrame::Plain);
        QCOMPARE(line->midLineWidth(), 1);
        QCOMPARE(line->frameShape(), QFrame::HLine);
    }
}

void TestAppWindow::buttonsAndCaption()
{
    MainWindow window;
    QCOMPARE(closeButton(window)->geometry(), QRect(371, 17, 45, 29));
    QCOMPARE(closeButton(window)->toolTip(), shown(text_keys::kClose));
    QCOMPARE(closeButton(window)->cursor().shape(), Qt::PointingHandCursor);

    QPushButton *bottom = bottomButton(window);
    QCOMPARE(bottom->geometry(), QRect(304, 637, 92, 30));
    QCOMPARE(bottom->minimumHeight(), 30);
    QCOMPARE(bottom->maximumHeight(), 30);
    QCOMPARE(bottom->text(), shown(text_keys::kClose));
    QCOMPARE(bottom->cursor().shape(), Qt::PointingHandCursor);
    QCOMPARE(bottom->font().pixelSize(), 14);
    QCOMPARE(bottom->font().family(), QStringLiteral("Microsoft YaHei"));
    QCOMPARE(bottom->font().weight(), int(QFont::Normal));

    auto *caption = child<QLabel>(window, "titileCaption");
    QCOMPARE(caption->parentWidget(), &window);
    QCOMPARE(caption->font().pointSize(), 13);
    QCOMPARE(caption->font().family(), QStringLiteral("Microsoft YaHei"));
    QCOMPARE(caption->font().weight(), int(QFont::Normal));
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        QCOMPARE(caption->palette().brush(group, QPalette::WindowText),
                 QBrush(QColor(255, 255, 255, 255)));
}

void TestAppWindow::buttonsAreNotNamedAsTheirStylesSay()
{
    MainWindow window;
    QCOMPARE(closeButton(window)->objectName(), QString());
    QCOMPARE(bottomButton(window)->objectName(), QString());
}

void TestAppWindow::styleSheets_data()
{
    QTest::addColumn<QString>("actual");
    QTest::addColumn<QString>("expected");
    MainWindow window;
    const auto add = [](const char *name, const QWidget *widget, const char *expected) {
        QTest::newRow(name) << widget->styleSheet() << QString::fromLatin1(expected);
    };
    const auto named = [&](const char *name) { return child<QWidget>(window, name); };
    const char *text = "font-size:14px;font-Family:Microsoft YaHei;color:#333333;";
    for (const char *name : {"label", "label_2_notice", "plainTextEdit_normal",
                             "plainTextEdit_normal_2", "plainTextEdit_detail_2"})
        add(name, named(name), text);
    for (const char *name : {"label_icon", "titileCaption", "centralWidget", "tab", "tab_2"})
        add(name, named(name), "");
    add("the window", &window, "");
    add("tabs", named("tabWidget"),
        "QTabWidget::pane{border: 2px;background:transparent;}QTabWidget::tab-bar{background:"
        "transparent;subcontrol-position:left;}QTabBar::tab{font-family:Microsoft "
        "YaHei;font-size:15px;color:#1c1c1c;padding-left:-9px;padding-right:-9px;min-width:100px;"
        "min-height:30px;background:transparent;margin-left:-10px;margin-right:40px;}QTabBar::tab:"
        "selected{color: #cd210f;border-bottom:3px solid "
        "#cd210f;;background:transparent;}QTabBar::tab:!selected{color: "
        "rgb(0,0,0);background:transparent;}QTabBar::tab:hover{color: "
        "#cd210f;background:transparent;}");
    const auto *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    add("table", table,
        "selection-background-color:lightblue;font-size:13px;font-Family:Microsoft "
        "YaHei;color:#333333;");
    add("header", table->horizontalHeader(),
        "QHeaderView::section{border:1px solid #d7d7d7;font-size:13px;font-Family:Microsoft "
        "YaHei;color:#1c1c1c;}");
    add("the table's scroll bar", table->verticalScrollBar(),
        "QScrollBar{background:transparent;width: 10px;}QScrollBar::handle{background:lightgray; "
        "border:2px solid transparent; "
        "border-radius:5px;}QScrollBar::handle:hover{background:gray;}QScrollBar::sub-line{"
        "background:transparent;}QScrollBar::add-line{background:transparent;}");
    const auto *detail = child<QPlainTextEdit>(window, "plainTextEdit_detail_2");
    add("the detail box's scroll bar", detail->verticalScrollBar(),
        "QScrollBar{background:transparent; width: 10px;}QScrollBar::handle{background:lightgray; "
        "border:2px solid transparent; "
        "border-radius:5px;}QScrollBar::handle:hover{background:gray;}QScrollBar::sub-line{"
        "background:transparent;}QScrollBar::add-line{background:transparent;}");
    add("the close button", closeButton(window),
        "QToolButton{border-image: "
        "url(:/img/res/closeBtn/close_normal.png);}QToolButton#closeBtn:hover{border-image: "
        "url(:/img/res/closeBtn/close_horver.png);}QToolButton#closeBtn:pressed{border-image: "
        "url(:/img/res/closeBtn/close_down.png);}");
    add("the bottom button", bottomButton(window),
        "QPushButton{height:30px; border-radius:5px;background:#db180c; width:80px;  "
        "color:#FFF;}QPushButton#OkButton:hover{border:none;}QPushButton#OkButton:pressed{border:"
        "none;}");
    add("the selector", named("comboBox_selection"),
        "QComboBox{min-height: 22px;border-radius: 3px ;background-color: rgb(255, 255, 255);      "
        "                               color: rgb(0, 0, 0);border:1px solid #d7d7d7; "
        "border-radius: 3px; padding: 1px 18px 1px 3px;font-size:13px;font-Family:Microsoft "
        "YaHei;color:#333333;}QComboBox::drop-down{width: 20px;border-left-width: "
        "1px;border-left-color: darkgray;border-left-style: solid;                                 "
        "    border-top-right-radius: 3px; border-bottom-right-radius: "
        "3px;}QComboBox::down-arrow{image: "
        "url(:/img/res/combo1);height:18px;width:18px;}QComboBox QAbstractItemView {border:1px "
        "solid #d7d7d7;min-height: 30px; font-size:14px;font-Family:Microsoft "
        "YaHei;color:#333333;}");
}

void TestAppWindow::styleSheets()
{
    QFETCH(QString, actual);
    QFETCH(QString, expected);
    QCOMPARE(actual, expected);
}

void TestAppWindow::table()
{
    MainWindow window;
    auto *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    window.show();
    child<QTabWidget>(window, "tabWidget")->setCurrentIndex(1);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QHeaderView *header = table->horizontalHeader();
    QCOMPARE(table->columnCount(), 2);
    QCOMPARE(table->rowCount(), 0);
    QCOMPARE(table->horizontalHeaderItem(0)->text(), shown(text_keys::kColumnField));
    QCOMPARE(table->horizontalHeaderItem(1)->text(), shown(text_keys::kColumnValue));
    QCOMPARE(table->columnWidth(0), 142);
    QCOMPARE(table->columnWidth(1), table->viewport()->width() - 142);
    QVERIFY(header->stretchLastSection());
    QCOMPARE(header->defaultAlignment(), Qt::AlignLeft);
    QVERIFY(!header->highlightSections());
    QVERIFY(!header->isEnabled());
    QVERIFY(!table->verticalHeader()->isEnabled());
    QVERIFY(table->verticalHeader()->isHidden());
    QVERIFY(!table->showGrid());
    QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
    QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
}

void TestAppWindow::selector()
{
    MainWindow window;
    auto *selector = child<QComboBox>(window, "comboBox_selection");
    QCOMPARE(selector->pos(), QPoint(80, 22));
    QCOMPARE(selector->width(), 181);
    QCOMPARE(selector->count(), 3);
    QCOMPARE(selector->currentIndex(), 0);
    const QLatin1String keys[] = {text_keys::kShowAll, text_keys::kShowBasicFields,
                                  text_keys::kShowExtensions};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(selector->itemText(i), shown(keys[i]));
        QVERIFY(selector->itemIcon(i).isNull());
        QVERIFY(!selector->itemData(i).isValid());
    }
    QCOMPARE(selector->view()->metaObject()->className(), "QListView");

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // Its list has none when it is dressed after the window was shown.
    window.show();
    child<QTabWidget>(window, "tabWidget")->setCurrentIndex(1);
    const auto *list = qobject_cast<QFrame *>(selector->view()->parentWidget());
    QCOMPARE(list->frameShape(), QFrame::StyledPanel);
#endif
}

void TestAppWindow::boxes()
{
    MainWindow window;
    const auto boxes = window.findChildren<QPlainTextEdit *>();
    QCOMPARE(boxes.size(), 3);
    for (const QPlainTextEdit *box : boxes) {
        QCOMPARE(box->contextMenuPolicy(), Qt::NoContextMenu);
        QVERIFY(box->isReadOnly());
        QCOMPARE(box->toPlainText(), QString());
    }
    // The form's vertical lines would show at their ends.
    for (const char *name : {"plainTextEdit_normal", "plainTextEdit_normal_2"})
        QCOMPARE(child<QPlainTextEdit>(window, name)->lineWidth(), 0);
    // The line between them takes no text away.
    auto *status = child<QPlainTextEdit>(window, "plainTextEdit_normal");
    window.show();
    QCOMPARE(status->viewport()->geometry(), QRect(0, 0, 356, 211 - 24));
    QCOMPARE(child<QTabWidget>(window, "tabWidget")->currentIndex(), 0);
}

void TestAppWindow::texts_data()
{
    QTest::addColumn<QString>("actual");
    QTest::addColumn<QString>("key");
    MainWindow window;
    auto *tabs = child<QTabWidget>(window, "tabWidget");
    const auto add = [](const QString &actual, QLatin1String key) {
        QTest::newRow(key.latin1()) << actual << QString(key);
    };
    add(child<QLabel>(window, "label")->text(), text_keys::kLabelCertificate);
    add(child<QLabel>(window, "label_2_notice")->text(), text_keys::kLabelShow);
    add(child<QLabel>(window, "titileCaption")->text(), text_keys::kWindowTitle);
    add(tabs->tabText(0), text_keys::kTabGeneral);
    add(tabs->tabText(1), text_keys::kTabDetails);
}

void TestAppWindow::texts()
{
    QFETCH(QString, actual);
    QFETCH(QString, key);
    QCOMPARE(actual, shown(key));
    QVERIFY(actual != key);
}

void TestAppWindow::resources_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("size");
    const auto add = [](const char *path, int width, int height) {
        QTest::newRow(path) << QString::fromLatin1(path) << QSize(width, height);
    };
    add(":/img/res/background.png", 200, 200);
    add(":/img/res/bk_rose_gold_noborder.png", 500, 44);
    add(":/img/cert.png", 21, 23);
    add(":/img/res/closeBtn/close_normal.png", 45, 29);
    add(":/img/res/closeBtn/close_horver.png", 45, 29);
    add(":/img/res/closeBtn/close_down.png", 45, 29);
    add(":/img/res/combo1", 7, 5);
    add(":/img/res/stamp.ico", 0, 0);
    add(":/img/res/title_ico.png", 0, 0);
    add(":/img/res/down.png", 0, 0);
    add(":/img/res/background2.png", 0, 0);
    add(":/img/res/background_right.png", 0, 0);
}

void TestAppWindow::resources()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);
    MainWindow window; // brings the resources in
    const QPixmap pixmap(path);
    QVERIFY(!pixmap.isNull());
    if (!size.isEmpty())
        QCOMPARE(pixmap.size(), size);
}

void TestAppWindow::fontsThatStandIn_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("first");
    QTest::newRow("CN") << QStringLiteral("CN") << QStringLiteral("Noto Sans CJK SC");
    QTest::newRow("TW") << QStringLiteral("TW") << QStringLiteral("Noto Sans CJK TC");
    QTest::newRow("EN") << QStringLiteral("EN") << QStringLiteral("Noto Sans CJK SC");
}

void TestAppWindow::fontsThatStandIn()
{
    QFETCH(QString, section);
    QFETCH(QString, first);
    const QString skin = QStringLiteral("Microsoft YaHei");
    QFont::removeSubstitutions(skin);
    program_look::substituteFonts(section);
    QStringList fonts = QFont::substitutes(skin);
    for (QString &font : fonts)
        font = font.toLower(); // the toolkit may have done so
    QCOMPARE(fonts.first(), first.toLower());
    QVERIFY(fonts.contains(QLatin1String("wenquanyi micro hei")));
    QCOMPARE(fonts.last(), QStringLiteral("sans serif"));
}

void TestAppWindow::scaling()
{
    using namespace window_style;
    QCOMPARE(scaled(-9, 1.0F), -9);
    QCOMPARE(scaled(21, 1.5F), 31); // cut, not rounded
    QCOMPARE(scaled(-9, 1.5F), -13);
    QCOMPARE(placed(kNotice, 2.0F), QRect(28, 54, 108, 30));
    QCOMPARE(placed(kTabs, 2.0F), QRect(12, 116, 814, 1142));
    QCOMPARE(placed(kTitleStrip, 2.0F), QRect(11, 14, 828, 82));
    QCOMPARE(placed(kTabLine, 2.0F), QRect(30, 182, 810, 1));
    QCOMPARE(placed(kCaption, 2.0F, QSize(872, 1394)), QRect(130, 20, 592, 60));
    QCOMPARE(placed(kBottomButton, 2.0F, QSize(872, 1394)), QRect(608, 1274, 184, 60));
    QCOMPARE(textStyle(2.0F),
             QStringLiteral("font-size:28px;font-Family:Microsoft YaHei;color:#333333;"));
}

void TestAppWindow::patchTable()
{
    using namespace window_style;
    const QRect centre = backgroundCentre();
    QCOMPARE(centre.topLeft(), QPoint(20, 20));
    QCOMPARE(centre.bottomRight(), QPoint(160, 160));
    QCOMPARE(centre.size(), QSize(141, 141));
    const QRectF expected[kPatchCount][2] = {
        {{20, 20, 60, 10}, {20, 20, 141, 141}}, {{0, 0, 20, 20}, {0, 0, 20, 20}},
        {{20, 0, 60, 20}, {20, 0, 160, 20}},    {{80, 0, 20, 20}, {180, 0, 20, 20}},
        {{0, 30, 20, 20}, {0, 180, 20, 20}},    {{20, 30, 60, 20}, {20, 180, 160, 20}},
        {{80, 30, 20, 20}, {180, 180, 20, 20}}, {{0, 20, 20, 10}, {0, 20, 20, 160}},
        {{80, 20, 20, 10}, {180, 20, 20, 160}},
    };
    Patch patches[kPatchCount];
    backgroundPatches(QSize(100, 50), centre, patches);
    for (int i = 0; i < kPatchCount; ++i) {
        QCOMPARE(patches[i].target, expected[i][0]);
        QCOMPARE(patches[i].source, expected[i][1]);
    }
}

void TestAppWindow::patchesOfMarkedImage()
{
    using namespace window_style;
    const QPixmap marked = markedImage();
    Patch patches[kPatchCount];
    backgroundPatches(QSize(436, 697), backgroundCentre(), patches);
    QImage image(436, 697, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        for (const Patch &patch : patches)
            painter.drawPixmap(patch.target, marked, patch.source);
    }
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int column = x < 20 ? 0 : x < 416 ? 1 : 2;
            const int line = y < 20 ? 0 : y < 677 ? 1 : 2;
            QCOMPARE(image.pixel(x, y), kMarks[line][column]);
        }
    }
    QCOMPARE(image, drawnByHand(marked));
}

void TestAppWindow::paintsTheBackgroundInNineParts()
{
    MainWindow window;
    const QImage image = withoutChildren(window);
    QCOMPARE(image, drawnByHand(QPixmap(QStringLiteral(":/img/res/background.png"))));
    for (const QPoint &corner : {QPoint(0, 0), QPoint(435, 0), QPoint(0, 696), QPoint(435, 696)})
        QCOMPARE(qAlpha(image.pixel(corner)), 0);
    QCOMPARE(qAlpha(image.pixel(218, 348)), 255);
}

void TestAppWindow::theSheetLiesWithinItsShadow()
{
    QCOMPARE(window_style::sheetArea(QSize(436, 697)), QRect(11, 7, 414, 675));
}

void TestAppWindow::centring_data()
{
    QTest::addColumn<QRect>("screen");
    QTest::addColumn<QRect>("window");
    QTest::addColumn<QPoint>("place");
    const QRect window(0, 0, 436, 697);
    QTest::newRow("full HD") << QRect(0, 0, 1920, 1080) << window << QPoint(742, 191);
    QTest::newRow("not at the origin")
        << QRect(1920, 200, 1920, 1080) << window << QPoint(742, 191);
    QTest::newRow("window elsewhere")
        << QRect(0, 0, 1920, 1080) << QRect(300, 400, 436, 697) << QPoint(742, 191);
    QTest::newRow("odd remainder") << QRect(0, 0, 1367, 768) << window << QPoint(465, 35);
    // Cut toward zero, not downward.
    QTest::newRow("smaller than the window") << QRect(0, 0, 401, 600) << window << QPoint(-17, -48);
}

void TestAppWindow::centring()
{
    QFETCH(QRect, screen);
    QFETCH(QRect, window);
    QFETCH(QPoint, place);
    QCOMPARE(window_style::centred(window, screen), place);
}

void TestAppWindow::dragArea_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<bool>("inside");
    const auto add = [](int x, int y, bool inside) {
        QTest::addRow("%d, %d", x, y) << QPoint(x, y) << inside;
    };
    add(1, 1, true);
    add(378, 36, true);
    add(1, 36, true);
    add(378, 1, true);
    add(200, 20, true);
    add(0, 0, false);
    add(0, 10, false);
    add(10, 0, false);
    add(379, 10, false);
    add(10, 37, false);
    add(435, 696, false);
}

void TestAppWindow::dragArea()
{
    QFETCH(QPoint, point);
    QFETCH(bool, inside);
    QCOMPARE(window_style::dragArea(QSize(436, 697)).contains(point), inside);
}

void TestAppWindow::tableThatWasResizedWhileHidden()
{
    MainWindow window;
    auto *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    auto *tabs = child<QTabWidget>(window, "tabWidget");
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    tabs->setCurrentIndex(1);
    tabs->setCurrentIndex(0);
    table->resize(300, 200);
    tabs->setCurrentIndex(1);
    QCOMPARE(table->columnWidth(1), table->viewport()->width() - 142);
    QVERIFY(table->viewport()->width() <= 300);
}

// Dressed, the program has a font of its own.
void TestAppWindow::tipsKeepTheDesktopsFont()
{
    const QFont usual = QToolTip::font();
    program_look::dress();
    QVERIFY(QApplication::font() != usual);
    QCOMPARE(QApplication::font().pixelSize(), 14);
    QCOMPARE(QToolTip::font(), usual);
}

QTEST_MAIN(TestAppWindow)
#include "tst_app_window.moc"
