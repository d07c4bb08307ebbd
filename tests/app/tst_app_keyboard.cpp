#include "app/look/focus_mark.h"
#include "tests/app/contrast.h"
#include "tests/app/widgets.h"

#include <QAccessible>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTableWidget>
#include <QTabWidget>
#include <QTest>

using texts::shown;

namespace {

// A window that has the focus, with thirty rows; rows 3 and 13 bear the same name.
struct Keyed
{
    Keyed()
    {
        std::vector<detail_node> rows;
        rows.reserve(30);
        for (int i = 0; i < 30; ++i) {
            rows.push_back({QStringLiteral("field %1").arg(i), QStringLiteral("value"),
                            QStringLiteral("full %1").arg(i), i % 2});
        }
        rows[13].name = rows[3].name;
        window.result_detail(rows);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("the window does not become active");
    }

    void goToTable()
    {
        tabs->setCurrentIndex(1);
        table->setFocus();
    }

    QString detail() const { return box->toPlainText(); }
    QWidget *focused() const { return QApplication::focusWidget(); }

    MainWindow window;
    QTabWidget *tabs = child<QTabWidget>(window, "tabWidget");
    QTableWidget *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    QComboBox *selector = child<QComboBox>(window, "comboBox_selection");
    QPlainTextEdit *box = child<QPlainTextEdit>(window, "plainTextEdit_detail_2");
};

QWidget *control(const MainWindow &window, const QByteArray &name)
{
    if (name == "bottom")
        return bottomButton(window);
    return name == "close" ? closeButton(window) : child<QWidget>(window, name.constData());
}

QString nameOf(QWidget *widget)
{
    return interfaceOf(widget)->text(QAccessible::Name);
}

// The text of the label that a screen reader reads with a control whose own name is its value.
QString labelOf(QWidget *widget)
{
    const auto relations =
        QAccessible::queryAccessibleInterface(widget)->relations(QAccessible::Label);
    return relations.isEmpty() ? QString() : relations.first().first->text(QAccessible::Name);
}

} // namespace

// How many pixels of the area stand out, by 3 to 1, from what they were before.
int standOut(const QImage &before, const QImage &after, const QRect &area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += contrast(before.pixelColor(x, y), after.pixelColor(x, y)) >= 3;
    }
    return count;
}

const char *const kBoxes[] = {"plainTextEdit_normal", "plainTextEdit_normal_2",
                              "plainTextEdit_detail_2"};

// The window without a mouse.
class TestAppKeyboard : public QObject
{
    Q_OBJECT

private slots:
    void keysShowTheRow_data();
    void keysShowTheRow();
    void firstKeyShowsTheFirstRow();
    void firstKeyShowsTheCurrentRow();
    void equalNamesShowBothTexts();
    void otherKeysChangeNothing();
    void keysInAnEmptyTable();
    void copyTakesTheRowsOwnFullValue();
    void copyWithoutASelectionLeavesTheClipboard();
    void copyInTheDetailBoxTakesItsSelection();
    void boxesTakeACaret_data();
    void boxesTakeACaret();
    void boxesAreNotEdited();
    void cellsAreReachedAndStay();
    void firstKeyTellsTheCell();
    void spaceShowsTheRowItMarks();
    void enterPressesTheButton_data();
    void enterPressesTheButton();
    void keysChangeThePage_data();
    void keysChangeThePage();
    void altSGoesToTheSelector();
    void keysClose_data();
    void keysClose();
    void escapeClosesTheSelectorsListFirst();
    void tabGoesInReadingOrder_data();
    void tabGoesInReadingOrder();
    void arrowsChangeTheTabAtOnce();
    void focusIsMarked();
    void noMarkBeforeAKey();
    void markStandsOut();
    void markIsDarkInLight();
    void mouseTakesTheMarkAway();
    void keyBringsTheMarkBack();
    void markFollowsTheTab();
    void anotherWindowsFocusIsNotMarked();
    void controlsHaveNames();
    void tabsTellWhichIsSelected();
    void selectorTellsItsValue();
    void picturesAndLinesAreNotRead();
    void cellsAreReadAsTheyAreShown();
    void theWindowTellsTheStatus();
};

void TestAppKeyboard::keysShowTheRow_data()
{
    QTest::addColumn<int>("key"); // with its modifiers
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("down") << int(Qt::Key_Down) << 4 << 5;
    QTest::newRow("down at the end") << int(Qt::Key_Down) << 29 << 29;
    QTest::newRow("up") << int(Qt::Key_Up) << 6 << 5;
    QTest::newRow("up at the top") << int(Qt::Key_Up) << 0 << 0;
    QTest::newRow("left") << int(Qt::Key_Left) << 5 << 5;
    QTest::newRow("right") << int(Qt::Key_Right) << 5 << 5;
    QTest::newRow("home") << int(Qt::Key_Home) << 12 << 0;
    QTest::newRow("end") << int(Qt::Key_End) << 12 << 29;
    // A page is as many rows as the table shows whole.
    QTest::newRow("page down") << int(Qt::Key_PageDown) << 0 << -1;
    QTest::newRow("page up") << int(Qt::Key_PageUp) << 29 << -1;
    for (const int modifier : {Qt::ControlModifier, Qt::ShiftModifier}) {
        QTest::addRow("down with %x", modifier) << (Qt::Key_Down | modifier) << 4 << 5;
        QTest::addRow("right with %x", modifier) << (Qt::Key_Right | modifier) << 5 << 5;
        QTest::addRow("end with %x", modifier) << (Qt::Key_End | modifier) << 12 << 29;
    }
    QTest::newRow("a letter") << int(Qt::Key_F) << 4 << 5;
}

void TestAppKeyboard::keysShowTheRow()
{
    QFETCH(int, key);
    QFETCH(int, from);
    QFETCH(int, to);
    Keyed keyed;
    keyed.goToTable();
    keyed.table->setCurrentCell(from, 0);
    QCOMPARE(keyed.detail(), QString()); // a program's doing shows nothing
    QTest::keyClick(keyed.table, static_cast<Qt::Key>(key & ~int(Qt::KeyboardModifierMask)),
                    Qt::KeyboardModifiers(key & int(Qt::KeyboardModifierMask)));

    const int row = keyed.table->currentRow();
    if (to >= 0)
        QCOMPARE(row, to);
    else
        QVERIFY2(qAbs(row - from) >= 4 && qAbs(row - from) <= 10, qPrintable(QString::number(row)));
    QCOMPARE(keyed.detail(), QStringLiteral("full %1").arg(row));
    QVERIFY(keyed.table->visualRect(keyed.table->currentIndex())
                .intersects(keyed.table->viewport()->rect()));
    QCOMPARE(keyed.table->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(keyed.table->selectionModel()->selectedRows().first().row(), row);
}

void TestAppKeyboard::firstKeyShowsTheFirstRow()
{
    Keyed keyed;
    keyed.goToTable();
    QVERIFY(!keyed.table->selectionModel()->hasSelection());
    QTest::keyClick(keyed.table, Qt::Key_Down);
    QCOMPARE(keyed.table->currentRow(), 0);
    QCOMPARE(keyed.detail(), QStringLiteral("full 0"));
}

void TestAppKeyboard::firstKeyShowsTheCurrentRow()
{
    Keyed keyed;
    keyed.goToTable();
    keyed.table->setCurrentCell(5, 0);
    keyed.table->clearSelection();
    QTest::keyClick(keyed.table, Qt::Key_Down);
    QCOMPARE(keyed.table->currentRow(), 5);
    QCOMPARE(keyed.detail(), QStringLiteral("full 5"));
}

void TestAppKeyboard::equalNamesShowBothTexts()
{
    Keyed keyed;
    keyed.goToTable();
    for (const int row : {3, 13}) {
        keyed.table->setCurrentCell(row - 1, 0);
        QTest::keyClick(keyed.table, Qt::Key_Down);
        QCOMPARE(keyed.table->currentRow(), row);
        QCOMPARE(keyed.detail(), QStringLiteral("full 3\nfull 13"));
    }
}

void TestAppKeyboard::otherKeysChangeNothing()
{
    Keyed keyed;
    keyed.goToTable();
    keyed.table->setCurrentCell(5, 0);
    for (const Qt::Key key : {Qt::Key_Shift, Qt::Key_F5, Qt::Key_Delete, Qt::Key_F2}) {
        QTest::keyClick(keyed.table, key);
        QCOMPARE(keyed.table->currentRow(), 5);
        QCOMPARE(keyed.detail(), QString());
    }
    QTest::keyClick(keyed.table, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(keyed.table->selectionModel()->selectedRows().size(), 1);
}

void TestAppKeyboard::keysInAnEmptyTable()
{
    Keyed keyed;
    keyed.goToTable();
    keyed.selector->setCurrentIndex(-1);
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Home, Qt::Key_End, Qt::Key_PageDown,
                              Qt::Key_PageUp, Qt::Key_Right})
        QTest::keyClick(keyed.table, key);
    QCOMPARE(keyed.detail(), QString());
}

void TestAppKeyboard::copyTakesTheRowsOwnFullValue()
{
    Keyed keyed;
    keyed.goToTable();
    keyed.table->setCurrentCell(12, 0);
    QTest::keyClick(keyed.table, Qt::Key_Down);
    QCOMPARE(keyed.detail(), QStringLiteral("full 3\nfull 13"));
    QTest::keyClick(keyed.table, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("full 13"));

    keyed.selector->setCurrentIndex(1); // even rows only
    keyed.table->setCurrentCell(1, 1);
    QTest::keyClick(keyed.table, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("full 2"));
}

void TestAppKeyboard::copyWithoutASelectionLeavesTheClipboard()
{
    Keyed keyed;
    keyed.goToTable();
    QApplication::clipboard()->setText(QStringLiteral("mine"));
    QTest::keyClick(keyed.table, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("mine"));
}

void TestAppKeyboard::copyInTheDetailBoxTakesItsSelection()
{
    Keyed keyed;
    keyed.goToTable();
    QTest::keyClick(keyed.table, Qt::Key_Down);
    keyed.box->setFocus();
    keyed.box->selectAll();
    QTest::keyClick(keyed.box, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("full 0"));
}

void TestAppKeyboard::boxesTakeACaret_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : kBoxes)
        QTest::newRow(name) << QByteArray(name);
}

void TestAppKeyboard::boxesTakeACaret()
{
    QFETCH(QByteArray, name);
    Keyed keyed;
    auto *box = child<QPlainTextEdit>(keyed.window, name.constData());
    box->setPlainText(QStringLiteral("first line\nsecond line\nthird"));
    keyed.tabs->setCurrentIndex(name == "plainTextEdit_detail_2" ? 1 : 0);
    box->setFocus();
    const QImage atTheStart = box->grab().toImage();
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(box->textCursor().blockNumber(), 1);
    QVERIFY(box->grab().toImage() != atTheStart); // the caret is seen
    QTest::keyClick(box, Qt::Key_Right, Qt::ControlModifier);
    QTest::keyClick(box, Qt::Key_End, Qt::ShiftModifier);
    QCOMPARE(box->textCursor().selectedText(), QStringLiteral("line"));
    QTest::keyClick(box, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("line"));
    QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(box, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), box->toPlainText());
}

void TestAppKeyboard::boxesAreNotEdited()
{
    Keyed keyed;
    for (const char *name : kBoxes) {
        auto *box = child<QPlainTextEdit>(keyed.window, name);
        box->setPlainText(QStringLiteral("text"));
        box->setFocus();
        QApplication::clipboard()->setText(QStringLiteral("other"));
        for (const Qt::Key key : {Qt::Key_X, Qt::Key_Delete, Qt::Key_Return, Qt::Key_Backspace})
            QTest::keyClick(box, key);
        for (const Qt::Key key : {Qt::Key_V, Qt::Key_X})
            QTest::keyClick(box, key, Qt::ControlModifier);
        QCOMPARE(box->toPlainText(), QStringLiteral("text"));
    }
}

void TestAppKeyboard::cellsAreReachedAndStay()
{
    Keyed keyed;
    keyed.goToTable();
    const auto press = [&](Qt::Key key) { QTest::keyClick(keyed.table, key); };
    const auto cell = [&] {
        return QPoint(keyed.table->currentColumn(), keyed.table->currentRow());
    };
    press(Qt::Key_Down);
    QCOMPARE(cell(), QPoint(0, 0));
    press(Qt::Key_Right);
    QCOMPARE(cell(), QPoint(1, 0));
    press(Qt::Key_Down);
    QCOMPARE(cell(), QPoint(1, 1));
    press(Qt::Key_End);
    QCOMPARE(cell(), QPoint(1, 29));
    press(Qt::Key_Home);
    QCOMPARE(cell(), QPoint(1, 0));
    press(Qt::Key_Right);
    QCOMPARE(cell(), QPoint(1, 0));
    press(Qt::Key_Left);
    QCOMPARE(cell(), QPoint(0, 0));
    QCOMPARE(keyed.detail(), QStringLiteral("full 0"));
}

// A screen reader is told of a cell when it becomes the current one.
void TestAppKeyboard::firstKeyTellsTheCell()
{
    Keyed keyed;
    keyed.tabs->setCurrentIndex(1);
    keyed.selector->setFocus();
    QTest::keyClick(keyed.selector, Qt::Key_Tab);
    QCOMPARE(keyed.focused(), keyed.table);
    QStringList told;
    connect(keyed.table->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [&told](const QModelIndex &now) {
                if (now.isValid())
                    told += now.data().toString();
            });
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Right, Qt::Key_Left, Qt::Key_Down})
        QTest::keyClick(keyed.table, key);
    const QString first = QStringLiteral("field 0");
    QCOMPARE(told, (QStringList{first, QStringLiteral("value"), first, QStringLiteral("field 1")}));
}

void TestAppKeyboard::spaceShowsTheRowItMarks()
{
    Keyed keyed;
    keyed.goToTable();
    for (const auto modifiers : {Qt::NoModifier, Qt::ControlModifier, Qt::ControlModifier}) {
        QTest::keyClick(keyed.table, Qt::Key_Space, modifiers);
        QCOMPARE(keyed.table->selectionModel()->selectedRows().size(), 1);
        QCOMPARE(keyed.table->selectionModel()->selectedRows().first().row(), 0);
        QCOMPARE(keyed.detail(), QStringLiteral("full 0"));
    }
}

void TestAppKeyboard::enterPressesTheButton_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("atTheTop");
    const std::pair<const char *, Qt::Key> keys[] = {
        {"Enter", Qt::Key_Enter}, {"Return", Qt::Key_Return}, {"Space", Qt::Key_Space}};
    for (const auto &[name, key] : keys) {
        QTest::addRow("%s, close button", name) << int(key) << true;
        QTest::addRow("%s, bottom button", name) << int(key) << false;
    }
}

void TestAppKeyboard::enterPressesTheButton()
{
    QFETCH(int, key);
    QFETCH(bool, atTheTop);
    Keyed keyed;
    QTest::keyClick(keyed.focused(), static_cast<Qt::Key>(key));
    QVERIFY(keyed.window.isVisible()); // of no button
    QAbstractButton *button = bottomButton(keyed.window);
    if (atTheTop)
        button = closeButton(keyed.window);
    button->setFocus();
    QTest::keyClick(button, static_cast<Qt::Key>(key));
    QVERIFY(!keyed.window.isVisible());
}

void TestAppKeyboard::keysChangeThePage_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QByteArray>("focus");
    const auto add = [](int page, const char *focus) {
        QTest::addRow("%d, %s", page, focus) << page << QByteArray(focus);
    };
    for (const int page : {0, 1}) {
        for (const char *focus : {"qt_tabwidget_tabbar", "close", "bottom"})
            add(page, focus);
    }
    add(0, "plainTextEdit_normal");
    add(0, "plainTextEdit_normal_2");
    add(1, "comboBox_selection");
    add(1, "tableWidget_detailinfo");
    add(1, "plainTextEdit_detail_2");
}

void TestAppKeyboard::keysChangeThePage()
{
    QFETCH(int, page);
    QFETCH(QByteArray, focus);
    const std::pair<Qt::Key, Qt::KeyboardModifiers> keys[] = {
        {Qt::Key_PageDown, Qt::ControlModifier},
        {Qt::Key_PageUp, Qt::ControlModifier},
        {Qt::Key_Tab, Qt::ControlModifier},
        {Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier},
    };
    for (const auto &[key, modifiers] : keys) {
        Keyed keyed;
        keyed.tabs->setCurrentIndex(page);
        control(keyed.window, focus)->setFocus();
        QTest::keyClick(keyed.focused(), key, modifiers);
        QCOMPARE(keyed.tabs->currentIndex(), 1 - page);
        QCOMPARE(keyed.focused(), keyed.tabs->tabBar());
        QTest::keyClick(keyed.focused(), key, modifiers);
        QCOMPARE(keyed.tabs->currentIndex(), page);
    }
}

void TestAppKeyboard::altSGoesToTheSelector()
{
    for (const char *focus : {"qt_tabwidget_tabbar", "tableWidget_detailinfo", "bottom"}) {
        Keyed keyed;
        keyed.tabs->setCurrentIndex(1);
        control(keyed.window, focus)->setFocus();
        QTest::keyClick(keyed.focused(), Qt::Key_S, Qt::AltModifier);
        QCOMPARE(keyed.focused(), keyed.selector);
    }
}

void TestAppKeyboard::keysClose_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QByteArray>("focus");
    for (const char *focus : {"tableWidget_detailinfo", "plainTextEdit_detail_2",
                              "comboBox_selection", "qt_tabwidget_tabbar"}) {
        const auto add = [&](const char *name, Qt::Key key, Qt::KeyboardModifier modifiers) {
            QTest::addRow("%s in %s", name, focus)
                << int(key) << int(modifiers) << QByteArray(focus);
        };
        add("Escape", Qt::Key_Escape, Qt::NoModifier);
        add("Ctrl+W", Qt::Key_W, Qt::ControlModifier);
        add("Ctrl+Q", Qt::Key_Q, Qt::ControlModifier);
    }
}

void TestAppKeyboard::keysClose()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(QByteArray, focus);
    Keyed keyed;
    keyed.goToTable();
    auto *focused = child<QWidget>(keyed.window, focus.constData());
    focused->setFocus();
    QCOMPARE(keyed.focused(), focused);
    QTest::keyClick(focused, static_cast<Qt::Key>(key), Qt::KeyboardModifiers(modifiers));
    QVERIFY(!keyed.window.isVisible());
}

void TestAppKeyboard::escapeClosesTheSelectorsListFirst()
{
    Keyed keyed;
    keyed.goToTable();
    keyed.selector->setFocus();
    keyed.selector->showPopup();
    QTRY_VERIFY(keyed.selector->view()->isVisible());
    QTest::keyClick(keyed.selector->view(), Qt::Key_Escape);
    QTRY_VERIFY(!keyed.selector->view()->isVisible());
    QVERIFY(keyed.window.isVisible());
    QTest::keyClick(keyed.selector, Qt::Key_Escape);
    QVERIFY(!keyed.window.isVisible());
}

void TestAppKeyboard::tabGoesInReadingOrder_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QList<QByteArray>>("controls");
    QTest::newRow("General") << 0
                             << QList<QByteArray>{"qt_tabwidget_tabbar", "plainTextEdit_normal",
                                                  "plainTextEdit_normal_2", "bottom", "close"};
    QTest::newRow("Details") << 1
                             << QList<QByteArray>{"qt_tabwidget_tabbar",
                                                  "comboBox_selection",
                                                  "tableWidget_detailinfo",
                                                  "plainTextEdit_detail_2",
                                                  "bottom",
                                                  "close"};
}

void TestAppKeyboard::tabGoesInReadingOrder()
{
    QFETCH(int, page);
    QFETCH(QList<QByteArray>, controls);
    Keyed keyed;
    keyed.tabs->setCurrentIndex(page);
    QCOMPARE(keyed.focused(), control(keyed.window, "qt_tabwidget_tabbar")); // from the beginning
    for (int i = 1; i <= controls.size(); ++i) {
        QTest::keyClick(keyed.focused(), Qt::Key_Tab);
        QCOMPARE(keyed.focused(), control(keyed.window, controls.at(i % controls.size())));
    }
    for (auto i = controls.size() - 1; i >= 0; --i) {
        QTest::keyClick(keyed.focused(), Qt::Key_Backtab);
        QCOMPARE(keyed.focused(), control(keyed.window, controls.at(i)));
    }
}

void TestAppKeyboard::arrowsChangeTheTabAtOnce()
{
    Keyed keyed;
    QTest::keyClick(keyed.focused(), Qt::Key_Right);
    QCOMPARE(keyed.tabs->currentIndex(), 1);
    QTest::keyClick(keyed.focused(), Qt::Key_Left);
    QCOMPARE(keyed.tabs->currentIndex(), 0);
}

// Wherever the focus is, from the beginning, one mark is around the control.
void TestAppKeyboard::focusIsMarked()
{
    for (const int page : {0, 1}) {
        Keyed keyed;
        keyed.tabs->setCurrentIndex(page);
        const auto marks = keyed.window.findChildren<FocusMark *>();
        QCOMPARE(marks.size(), 1);
        for (int i = 0; i < 6; ++i) {
            QWidget *focused = keyed.focused();
            QVERIFY2(marks.first()->isVisible(), qPrintable(focused->objectName()));
            const QRect place(focused->mapTo(&keyed.window, QPoint(0, 0)), focused->size());
            if (!qobject_cast<QTabBar *>(focused))
                QCOMPARE(marks.first()->geometry(), place.adjusted(-3, -3, 3, 3));
            QVERIFY(keyed.window.childAt(place.center()) != marks.first()); // no mouse sees it
            QTest::keyClick(focused, Qt::Key_Tab);
        }
    }
}

void TestAppKeyboard::noMarkBeforeAKey()
{
    MainWindow window;
    window.setAttribute(Qt::WA_DontShowOnScreen); // where nothing gets the focus
    window.show();
    QVERIFY(!window.findChild<FocusMark *>()->isVisible());
}

void TestAppKeyboard::markStandsOut()
{
    for (const int page : {0, 1}) {
        Keyed keyed;
        keyed.tabs->setCurrentIndex(page);
        auto *mark = keyed.window.findChild<FocusMark *>();
        for (int i = 0; i < 6; ++i) {
            QWidget *focused = keyed.focused();
            const QRect area = mark->geometry();
            const QImage marked = keyed.window.grab().toImage();
            mark->hide();
            const QImage bare = keyed.window.grab().toImage();
            // All around but for the corners, and where a tab's own line lies below it.
            const int length = 2 * (area.width() + area.height());
            const int seen = standOut(bare, marked, area);
            QVERIFY2(seen >= length * 3 / 4, qPrintable(QStringLiteral("%1: %2 of %3")
                                                            .arg(focused->objectName())
                                                            .arg(seen)
                                                            .arg(length)));
            QTest::keyClick(focused, Qt::Key_Tab);
        }
    }
}

void TestAppKeyboard::markIsDarkInLight()
{
    const Keyed keyed;
    const QImage mark = keyed.window.findChild<FocusMark *>()->grab().toImage();
    const QRgb light = 0xffffffff;
    const QRgb dark = 0xffcd210f;
    const QRgb across[] = {light, dark, light};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(mark.pixel(mark.width() / 2, i), across[i]);
        QCOMPARE(mark.pixel(mark.width() / 2, mark.height() - 1 - i), across[i]);
        QCOMPARE(mark.pixel(i, mark.height() / 2), across[i]);
        QCOMPARE(mark.pixel(mark.width() - 1 - i, mark.height() / 2), across[i]);
    }
}

void TestAppKeyboard::mouseTakesTheMarkAway()
{
    Keyed keyed;
    keyed.tabs->setCurrentIndex(1);
    auto *mark = keyed.window.findChild<FocusMark *>();
    const QPoint cell(20, 20);
    const auto byMouse = [&](auto use) {
        QTest::keyClick(keyed.focused(), Qt::Key_Tab);
        QVERIFY(mark->isVisible());
        use();
        QVERIFY(!mark->isVisible());
    };
    byMouse([&] { QTest::mousePress(keyed.table->viewport(), Qt::LeftButton, {}, cell); });
    QCOMPARE(keyed.focused(), keyed.table);
    byMouse([&] { QTest::mousePress(keyed.tabs->widget(1), Qt::RightButton); }); // on nothing
    byMouse([&] {
        QWheelEvent event(cell, keyed.table->mapToGlobal(cell), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(keyed.table->viewport(), &event);
    });
}

void TestAppKeyboard::keyBringsTheMarkBack()
{
    Keyed keyed;
    keyed.goToTable();
    auto *mark = keyed.window.findChild<FocusMark *>();
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_S}) {
        QTest::mouseClick(keyed.table->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QVERIFY(!mark->isVisible());
        // Alt+S is a shortcut's, which no control hears of.
        QTest::keyClick(keyed.table, key, key == Qt::Key_S ? Qt::AltModifier : Qt::NoModifier);
        QVERIFY(mark->isVisible());
    }
}

void TestAppKeyboard::markFollowsTheTab()
{
    Keyed keyed;
    auto *mark = keyed.window.findChild<FocusMark *>();
    QTabBar *bar = keyed.tabs->tabBar();
    const auto area = [&](int tab) {
        QRect rect = bar->tabRect(tab);
        return rect.translated(bar->mapTo(&keyed.window, QPoint(0, 0)));
    };
    const QRect first = mark->geometry();
    QVERIFY(area(0).contains(first.center()));
    QVERIFY(first.left() >= 11); // on the sheet
    QCOMPARE(first.top(), area(0).top() - 3);
    QCOMPARE(first.bottom(), area(0).bottom() + 3);
    QTest::keyClick(bar, Qt::Key_Right);
    QVERIFY(mark->isVisible());
    QVERIFY(area(1).contains(mark->geometry().center()));
    QCOMPARE(mark->height(), first.height());
}

void TestAppKeyboard::anotherWindowsFocusIsNotMarked()
{
    Keyed keyed;
    auto *mark = keyed.window.findChild<FocusMark *>();
    QVERIFY(mark->isVisible());
    QWidget other;
    other.show();
    other.activateWindow();
    other.setFocus();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTRY_COMPARE(keyed.focused(), &other);
    QVERIFY(!mark->isVisible());
}

void TestAppKeyboard::controlsHaveNames()
{
    MainWindow window;
    const auto named = [&](const char *name) { return nameOf(child<QWidget>(window, name)); };
    QCOMPARE(nameOf(closeButton(window)), shown(text_keys::kClose));
    QCOMPARE(nameOf(bottomButton(window)), shown(text_keys::kClose));
    QCOMPARE(named("qt_tabwidget_tabbar"), shown(text_keys::kSpokenPages));
    QCOMPARE(named("tab"), shown(text_keys::kTabGeneral));
    QCOMPARE(named("tab_2"), shown(text_keys::kTabDetails));
    QCOMPARE(named("comboBox_selection"), QStringLiteral("Show:"));
    QCOMPARE(named("plainTextEdit_normal"), shown(text_keys::kSpokenStatus));
    QCOMPARE(named("plainTextEdit_normal_2"), shown(text_keys::kSpokenIdentity));
    QCOMPARE(child<QComboBox>(window, "comboBox_selection")->accessibleName(),
             QStringLiteral("Show:"));
    QCOMPARE(labelOf(child<QWidget>(window, "comboBox_selection")), QStringLiteral("Show:"));
    QCOMPARE(named("tableWidget_detailinfo"), shown(text_keys::kSpokenFields));
    QCOMPARE(named("plainTextEdit_detail_2"), shown(text_keys::kSpokenFullValue));
    QCOMPARE(nameOf(&window), window.windowTitle());
    for (const QLatin1String key : {text_keys::kSpokenStatus, text_keys::kSpokenIdentity,
                                    text_keys::kSpokenFields, text_keys::kSpokenFullValue})
        QVERIFY2(shown(key) != key, key.latin1());
}

void TestAppKeyboard::tabsTellWhichIsSelected()
{
    Keyed keyed;
    const QAccessibleInterface *list = interfaceOf(keyed.tabs->tabBar());
    QCOMPARE(list->childCount(), 2);
    QVERIFY(!list->child(2) && !list->child(-1));
    for (const int current : {0, 1, 0}) {
        keyed.tabs->setCurrentIndex(current);
        keyed.tabs->tabBar()->setFocus();
        for (const int i : {0, 1}) {
            QAccessibleInterface *tab = list->child(i);
            QCOMPARE(tab->role(), QAccessible::PageTab);
            QCOMPARE(tab->text(QAccessible::Name), keyed.tabs->tabText(i));
            QVERIFY(tab->state().selectable && tab->state().focusable);
            QCOMPARE(bool(tab->state().selected), i == current);
            QCOMPARE(bool(tab->state().focused), i == current);
            QCOMPARE(list->indexOfChild(tab), i);
            QCOMPARE(tab->parent(), list);
            QVERIFY(list->rect().intersects(tab->rect()));
        }
        QCOMPARE(list->focusChild(), list->child(current));
    }
    keyed.selector->setFocus();
    QVERIFY(!list->child(0)->state().focused && !list->focusChild());
    QAccessibleActionInterface *second = list->child(1)->actionInterface();
    QCOMPARE(second->actionNames(), QStringList(QAccessibleActionInterface::pressAction()));
    second->doAction(QStringLiteral("none"));
    QCOMPARE(keyed.tabs->currentIndex(), 0);
    second->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(keyed.tabs->currentIndex(), 1);
}

void TestAppKeyboard::selectorTellsItsValue()
{
    Keyed keyed;
    keyed.tabs->setCurrentIndex(1);
    QAccessibleInterface *selector = interfaceOf(keyed.selector);
    QCOMPARE(selector->role(), QAccessible::ComboBox);
    for (const int index : {0, 2, 1}) {
        keyed.selector->setCurrentIndex(index);
        const QString value = keyed.selector->itemText(index);
        const QAccessibleTextInterface *text = selector->textInterface();
        QCOMPARE(selector->text(QAccessible::Value), value);
        QCOMPARE(text->characterCount(), int(value.size()));
        QCOMPARE(text->text(0, text->characterCount()), value);
        QCOMPARE(text->text(1, 3), value.mid(1, 2));
    }
    QVERIFY(selector->state().expandable && !selector->state().expanded);
    QVERIFY(selector->state().collapsed && selector->state().hasPopup);
    QVERIFY(selector->state().readOnly);
    QCOMPARE(selector->childCount(), 0);
    selector->actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
    QTRY_VERIFY(selector->state().expanded);
    QVERIFY(!selector->state().collapsed);
    QCOMPARE(selector->childCount(), 1);
    QCOMPARE(selector->child(0)->object(), keyed.selector->view());
    QCOMPARE(selector->indexOfChild(selector->child(0)), 0);
    keyed.selector->hidePopup();
}

void TestAppKeyboard::picturesAndLinesAreNotRead()
{
    MainWindow window;
    int pictures = 0;
    const auto labels = window.findChildren<QLabel *>();
    for (QLabel *label : labels) {
        const bool isPicture = label->text().isEmpty();
        QCOMPARE(interfaceOf(label)->role(),
                 isPicture ? QAccessible::Whitespace : QAccessible::StaticText);
        pictures += isPicture;
    }
    QCOMPARE(pictures, 2);
    const auto lines = window.findChildren<QFrame *>(QStringLiteral("lineEnd2"));
    QCOMPARE(lines.size(), 2);
    for (QFrame *line : lines)
        QCOMPARE(interfaceOf(line)->role(), QAccessible::Whitespace);
    auto *stack = child<QWidget>(window, "qt_tabwidget_stackedwidget");
    QCOMPARE(interfaceOf(stack)->role(), QAccessible::Whitespace);
    QCOMPARE(interfaceOf(stack)->childCount(), 2);
}

void TestAppKeyboard::cellsAreReadAsTheyAreShown()
{
    MainWindow window;
    window.result_detail({{QStringLiteral("name"), QStringLiteral("first\nsecond\n"), {}, 0},
                          {QStringLiteral("long"), QString(5000, QLatin1Char('x')), {}, 0}});
    auto *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    QAccessibleTableInterface *cells = interfaceOf(table)->tableInterface();
    const auto read = [&](int row, int column) {
        return cells->cellAt(row, column)->text(QAccessible::Name);
    };
    QCOMPARE(read(0, 0), QStringLiteral("name"));
    QCOMPARE(read(0, 1), QStringLiteral("first second"));
    QCOMPARE(read(1, 1), QString(1000, QLatin1Char('x')));
    QCOMPARE(table->item(0, 1)->text(), QStringLiteral("first\nsecond\n"));
}

void TestAppKeyboard::theWindowTellsTheStatus()
{
    MainWindow window;
    QCOMPARE(window.accessibleDescription(), QString());
    window.result_normal(QStringLiteral(" valid for:\n      -this\n"), 0);
    window.result_normal(QStringLiteral("holder"), 1);
    QCOMPARE(interfaceOf(&window)->text(QAccessible::Description),
             QStringLiteral("valid for: -this"));
}

QTEST_MAIN(TestAppKeyboard)
#include "tst_app_keyboard.moc"
