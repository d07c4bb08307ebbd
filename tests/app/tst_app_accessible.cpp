#include "tests/app/widgets.h"

#include <memory>
#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

namespace {

} // namespace

/// What a screen reader may ask of the window's own parts, beyond what it reads aloud.
class TestAppAccessible : public QObject
{
    Q_OBJECT

private slots:
    void tabsAreLeaves();
    void aTabThatIsGone();
    void tabsGoWithTheirBar();
    void tabsAreSeenWithTheirBar();
    void selectorOpensItsList();
    void selectorsValueIsReadNotEdited();
    void pagesAreGroups();
    void aFrameAroundSomethingIsRead();
};

void TestAppAccessible::tabsAreLeaves()
{
    MainWindow window;
    window.show();
    auto *bar = child<QTabWidget>(window, "tabWidget")->tabBar();
    QAccessibleInterface *list = interfaceOf(bar);
    QAccessibleInterface *tab = list->child(0);
    QCOMPARE(tab->childCount(), 0);
    QVERIFY(!tab->child(0));
    QVERIFY(!tab->childAt(tab->rect().center().x(), tab->rect().center().y()));
    QCOMPARE(tab->indexOfChild(list), -1);
    QCOMPARE(list->indexOfChild(list), -1);
    QCOMPARE(tab->window(), window.windowHandle());
    QVERIFY(!tab->object());
    QVERIFY(tab->text(QAccessible::Description).isEmpty());
    QVERIFY(tab->actionInterface()
                ->keyBindingsForAction(QAccessibleActionInterface::pressAction())
                .isEmpty());
    QVERIFY(!tab->textInterface());
    const QString name = bar->tabText(0);
    tab->setText(QAccessible::Name, QStringLiteral("another"));
    QCOMPARE(bar->tabText(0), name);
}

void TestAppAccessible::aTabThatIsGone()
{
    QTabBar bar;
    bar.addTab(QStringLiteral("stays"));
    bar.addTab(QStringLiteral("goes"));
    bar.move(30, 40);  // nothing of it is at the screen's corner
    MainWindow window; // with which the parts come
    QAccessibleInterface *tab = interfaceOf(&bar)->child(1);
    QVERIFY(tab->isValid());
    bar.removeTab(1);
    QVERIFY(!tab->isValid());
    QVERIFY(tab->state().invalid);
    QVERIFY(!tab->state().selectable);
    QVERIFY(tab->text(QAccessible::Name).isEmpty());
    QCOMPARE(tab->rect(), QRect());
    tab->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(bar.currentIndex(), 0);
}

void TestAppAccessible::tabsGoWithTheirBar()
{
    const MainWindow window;
    auto bar = std::make_unique<QTabBar>();
    bar->addTab(QStringLiteral("tab"));
    const QAccessible::Id tab = QAccessible::uniqueId(interfaceOf(bar.get())->child(0));
    QVERIFY(QAccessible::accessibleInterface(tab));
    bar.reset();
    QVERIFY(!QAccessible::accessibleInterface(tab));
}

void TestAppAccessible::tabsAreSeenWithTheirBar()
{
    MainWindow window;
    const QAccessibleInterface *tab =
        interfaceOf(child<QTabWidget>(window, "tabWidget")->tabBar())->child(1);
    QVERIFY(tab->state().invisible);
    window.show();
    QVERIFY(!tab->state().invisible);
}

void TestAppAccessible::selectorOpensItsList()
{
    MainWindow window;
    window.show();
    child<QTabWidget>(window, "tabWidget")->setCurrentIndex(1);
    auto *box = child<QComboBox>(window, "comboBox_selection");
    QAccessibleInterface *selector = interfaceOf(box);
    QVERIFY(!selector->child(0));
    QCOMPARE(selector->indexOfChild(nullptr), -1);
    QCOMPARE(selector->indexOfChild(selector), -1);
    QAccessibleActionInterface *actions = selector->actionInterface();
    QCOMPARE(actions->actionNames(), QStringList(QAccessibleActionInterface::showMenuAction()));
    actions->doAction(QStringLiteral("none"));
    QVERIFY(!box->view()->isVisible());
    actions->doAction(actions->actionNames().constFirst());
    QTRY_VERIFY(box->view()->isVisible());
    QVERIFY(selector->child(0) && !selector->child(1));
    box->hidePopup();
}

void TestAppAccessible::selectorsValueIsReadNotEdited()
{
    MainWindow window;
    auto *box = child<QComboBox>(window, "comboBox_selection");
    QAccessibleTextInterface *text = interfaceOf(box)->textInterface();
    const QString value = box->currentText();
    text->addSelection(0, 2);
    text->setSelection(0, 0, 2);
    text->setCursorPosition(2);
    text->removeSelection(0);
    text->scrollToSubstring(0, 2);
    QCOMPARE(text->cursorPosition(), 0);
    int start = 7;
    int end = 7;
    QCOMPARE(text->selectionCount(), 1); // all of it, whatever is asked for
    text->selection(0, &start, &end);
    QCOMPARE(start, 0);
    QCOMPARE(end, int(value.size()));
    start = end = 7;
    QVERIFY(text->attributes(0, &start, &end).isEmpty()); // all of it is alike
    QCOMPARE(start, 0);
    QCOMPARE(end, int(value.size()));
    QVERIFY(text->characterRect(0).isEmpty());
    QCOMPARE(text->offsetAtPoint(QPoint(0, 0)), -1);
    QCOMPARE(text->text(0, text->characterCount()), value);
    QCOMPARE(box->currentText(), value);
}

void TestAppAccessible::pagesAreGroups()
{
    MainWindow window;
    for (const char *name : {"tab", "tab_2"})
        QCOMPARE(interfaceOf(child<QWidget>(window, name))->role(), QAccessible::Grouping);
    QCOMPARE(interfaceOf(child<QWidget>(window, "centralWidget"))->role(), QAccessible::Client);
}

void TestAppAccessible::aFrameAroundSomethingIsRead()
{
    const MainWindow window;
    QFrame frame;
    frame.setFrameShape(QFrame::Box);
    QVERIFY(interfaceOf(&frame)->role() != QAccessible::Whitespace);
}

QTEST_MAIN(TestAppAccessible)
#include "tst_app_accessible.moc"
