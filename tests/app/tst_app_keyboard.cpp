#include "app/look/focus_mark.h"
#include "tests/app/widgets.h"

#include <QAccessible>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTableWidget>
#include <QTabWidget>
#include <QtTest>

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

QString nameOf(QWidget *widget)
{
    const QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
    return interface ? interface->text(QAccessible::Name) : QString();
}

// The text of the label that a screen reader reads with a control whose own name is its value.
QString labelOf(QWidget *widget)
{
    const auto relations =
        QAccessible::queryAccessibleInterface(widget)->relations(QAccessible::Label);
    return relations.isEmpty() ? QString() : relations.first().first->text(QAccessible::Name);
}

} // namespace

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
    void keysClose_data();
    void keysClose();
    void escapeClosesTheSelectorsListFirst();
    void tabGoesInReadingOrder_data();
    void tabGoesInReadingOrder();
    void arrowsChangeTheTabAtOnce();
    void focusIsMarked();
    void mouseLeavesNoMark();
    void anotherWindowsFocusIsNotMarked();
    void controlsHaveNames();
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
    const auto control = [&](const QByteArray &name) -> QWidget * {
        if (name == "bottom")
            return bottomButton(keyed.window);
        return name == "close" ? closeButton(keyed.window)
                               : child<QWidget>(keyed.window, name.constData());
    };
    QCOMPARE(keyed.focused(), control("qt_tabwidget_tabbar")); // from the beginning
    for (int i = 1; i <= controls.size(); ++i) {
        QTest::keyClick(keyed.focused(), Qt::Key_Tab);
        QCOMPARE(keyed.focused(), control(controls.at(i % controls.size())));
    }
    for (auto i = controls.size() - 1; i >= 0; --i) {
        QTest::keyClick(keyed.focused(), Qt::Key_Backtab);
        QCOMPARE(keyed.focused(), control(controls.at(i)));
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

// Each control looks otherwise when Tab brought the focus there.
void TestAppKeyboard::focusIsMarked()
{
    for (const int page : {0, 1}) {
        Keyed keyed;
        keyed.tabs->setCurrentIndex(page);
        const QImage before = keyed.window.grab().toImage();
        for (int i = 0; i < 6; ++i) {
            QTest::keyClick(keyed.focused(), Qt::Key_Tab);
            const QRect place(keyed.focused()->mapTo(&keyed.window, QPoint(0, 0)),
                              keyed.focused()->size());
            const QRect around = place.adjusted(-3, -3, 3, 3);
            const QImage after = keyed.window.grab().toImage();
            QVERIFY2(before.copy(around) != after.copy(around),
                     qPrintable(keyed.focused()->objectName()));
            auto *mark = keyed.window.findChild<FocusMark *>();
            QVERIFY(mark);
            QCOMPARE(mark->isVisible(), !qobject_cast<QTabBar *>(keyed.focused()));
            if (mark->isVisible())
                QCOMPARE(mark->geometry(), around);
        }
    }
}

void TestAppKeyboard::mouseLeavesNoMark()
{
    Keyed keyed;
    keyed.tabs->setCurrentIndex(1);
    auto *mark = keyed.window.findChild<FocusMark *>();
    QVERIFY(mark && !mark->isVisible());
    QTest::mouseClick(keyed.table->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
    QCOMPARE(keyed.focused(), keyed.table);
    QVERIFY(!mark->isVisible());
}

void TestAppKeyboard::anotherWindowsFocusIsNotMarked()
{
    Keyed keyed;
    auto *mark = keyed.window.findChild<FocusMark *>();
    QTest::keyClick(keyed.focused(), Qt::Key_Tab);
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
    QCOMPARE(nameOf(closeButton(window)), shown("PXCERTREAD_0041"));
    QCOMPARE(nameOf(bottomButton(window)), shown("PXCERTREAD_0041"));
    QCOMPARE(named("qt_tabwidget_tabbar"), shown("PXCERTREAD_0066"));
    QCOMPARE(named("plainTextEdit_normal"), shown("PXCERTREAD_0070"));
    QCOMPARE(named("plainTextEdit_normal_2"), shown("PXCERTREAD_0071"));
    QCOMPARE(labelOf(child<QWidget>(window, "comboBox_selection")), shown("PXCERTREAD_0069"));
    QCOMPARE(child<QComboBox>(window, "comboBox_selection")->accessibleName(),
             shown("PXCERTREAD_0069"));
    QCOMPARE(named("tableWidget_detailinfo"), shown("PXCERTREAD_0072"));
    QCOMPARE(named("plainTextEdit_detail_2"), shown("PXCERTREAD_0073"));
    QCOMPARE(nameOf(&window), window.windowTitle());
    for (const char *key :
         {"PXCERTREAD_0070", "PXCERTREAD_0071", "PXCERTREAD_0072", "PXCERTREAD_0073"})
        QVERIFY2(shown(key) != QLatin1String(key), key);
}

QTEST_MAIN(TestAppKeyboard)
#include "tst_app_keyboard.moc"
