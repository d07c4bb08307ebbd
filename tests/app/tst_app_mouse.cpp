#include "tests/app/compositor.h"
#include "tests/app/widgets.h"

#include <QClipboard>
#include <QComboBox>
#include <QFrame>
#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>
#include <QTabBar>
#include <QTableWidget>
#include <QTabWidget>
#include <QTest>

namespace {

// Makes the X server see mouse and keys, as a hand at them would; every command in turn.
void xdotool(const QStringList &commands)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), commands);
    while (process.state() != QProcess::NotRunning) {
        process.waitForFinished(10);
        QCoreApplication::processEvents();
    }
    if (process.error() == QProcess::FailedToStart)
        qFatal("xdotool is missing");
    if (process.exitCode() != 0)
        qFatal("xdotool: %s", process.readAllStandardError().constData());
    QTest::qWait(50);
}

QStringList moveTo(const QPoint &point)
{
    return {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())};
}

void press(int button)
{
    xdotool({QStringLiteral("mousedown"), QString::number(button)});
}

void release(int button)
{
    xdotool({QStringLiteral("mouseup"), QString::number(button)});
}

void clickAt(const QPoint &point)
{
    xdotool(moveTo(point) + QStringList{QStringLiteral("click"), QStringLiteral("1")});
}

void key(const char *name)
{
    xdotool({QStringLiteral("key"), QString::fromLatin1(name)});
}

const QPoint kHome(742, 191);

// A window on the real server, away from its edges.
struct OnScreen
{
    OnScreen()
    {
        desktop.claimToCompose(); // so that the window reaches to its shadow's end
        window.result_detail({row("Version", "V3", "V3", 0), row("Name", "n", "the name", 0),
                              row("Usage", "u", "all usages", 1),
                              row("Name", "m", "another name", 1)});
        window.move(kHome);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("the window does not become active");
    }
    ~OnScreen()
    {
        for (const int button : {1, 2, 3})
            release(button);
    }
    OnScreen(const OnScreen &) = delete;
    OnScreen &operator=(const OnScreen &) = delete;

    // The screen's pixels where the widget is.
    QImage seen(const QWidget *widget)
    {
        const QPoint corner = widget->mapToGlobal(QPoint(0, 0));
        return QGuiApplication::primaryScreen()
            ->grabWindow(0, corner.x(), corner.y(), widget->width(), widget->height())
            .toImage();
    }

    // Whether the detail box comes to show this.
    bool shows(const char *text) const
    {
        return QTest::qWaitFor([&] { return box->toPlainText() == QLatin1String(text); });
    }

    int markedRow() const
    {
        const QModelIndexList rows = table->selectionModel()->selectedRows();
        return rows.isEmpty() ? -1 : rows.first().row();
    }

    QPoint cell(int row, int column) const
    {
        return table->viewport()->mapToGlobal(
            table->visualRect(table->model()->index(row, column)).center());
    }

    OtherClient desktop;
    MainWindow window;
    QTabWidget *tabs = child<QTabWidget>(window, "tabWidget");
    QTableWidget *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    QPlainTextEdit *box = child<QPlainTextEdit>(window, "plainTextEdit_detail_2");
};

// True when the window keeps the event for itself.
bool sendMouse(QWidget &window, QEvent::Type type, const QPoint &global, Qt::MouseButton button,
               Qt::MouseButtons held)
{
    QMouseEvent event(type, window.mapFromGlobal(global), global, button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
    return event.isAccepted();
}

} // namespace

// The window under a real mouse and a real keyboard.
class TestAppMouse : public QObject
{
    Q_OBJECT

private slots:
    void dragging_data();
    void dragging();
    void pressInTheWindowItself_data();
    void pressInTheWindowItself();
    void dragFollowsTheMouse();
    void dragEndsWithTheButton();
    void moveWithoutAButtonDoesNotDrag();
    void eventsAreNotKept();
    void nearTheOriginNothingMoves_data();
    void nearTheOriginNothingMoves();
    void closeControlsClose_data();
    void closeControlsClose();
    void closeButtonKeepsItsFace();
    void closeButtonWouldChangeItsFace();
    void tabs();
    void rows();
    void aDoubleClickIsAClick();
    void draggingOverRowsShowsTheSelectedOne();
    void aPressShowsTheRowItMarks();
    void ctrlTakesNoMarkBack();
    void otherButtonsOverRowsShowNothing();
    void selector();
    void keyboard();
    void theTextBoxesHaveNoMenu();
};

void TestAppMouse::dragging_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("drags");
    const auto add = [](const char *name, int x, int y, int button, bool drags) {
        QTest::newRow(name) << QPoint(x, y) << button << drags;
    };
    add("first corner", 1, 1, 1, true);
    add("caption", 120, 25, 1, true);
    add("last column, above the close button", 378, 10, 1, true);
    add("last line, left of the close button", 370, 36, 1, true);
    add("middle button", 120, 25, 2, true);
    add("right button", 120, 25, 3, true);
    add("right button over the close button", 378, 36, 3, true);
    add("outer corner", 0, 0, 1, false);
    add("left of it", 0, 10, 1, false);
    add("above it", 10, 0, 1, false);
    add("beside it", 379, 10, 1, false);
    add("below it", 120, 37, 1, false);
    add("sheet", 218, 660, 1, false);
}

void TestAppMouse::dragging()
{
    QFETCH(QPoint, from);
    QFETCH(int, button);
    QFETCH(bool, drags);
    OnScreen screen;
    xdotool(moveTo(kHome + from));
    press(button);
    xdotool(moveTo(kHome + from + QPoint(40, -30)));
    QTRY_COMPARE(screen.window.pos(), drags ? kHome + QPoint(40, -30) : kHome);
    release(button);
}

// The edges of the drag area where the close button lies over it.
void TestAppMouse::pressInTheWindowItself_data()
{
    QTest::addColumn<QPoint>("at");
    QTest::addColumn<bool>("drags");
    QTest::newRow("last corner") << QPoint(378, 36) << true;
    QTest::newRow("beside it") << QPoint(379, 36) << false;
    QTest::newRow("below it") << QPoint(378, 37) << false;
}

void TestAppMouse::pressInTheWindowItself()
{
    QFETCH(QPoint, at);
    QFETCH(bool, drags);
    MainWindow window;
    window.move(kHome);
    sendMouse(window, QEvent::MouseButtonPress, kHome + at, Qt::LeftButton, Qt::LeftButton);
    sendMouse(window, QEvent::MouseMove, kHome + at + QPoint(5, 6), Qt::NoButton, Qt::LeftButton);
    QCOMPARE(window.pos(), drags ? kHome + QPoint(5, 6) : kHome);
}

void TestAppMouse::dragFollowsTheMouse()
{
    OnScreen screen;
    const QPoint grip(100, 20);
    xdotool(moveTo(kHome + grip));
    press(1);
    // By less than the toolkit's drag distance too, and out of the screen.
    for (const QPoint &target : {kHome + QPoint(1, 0), kHome + QPoint(-300, 200), QPoint(-60, 5),
                                 QPoint(1500, 900), kHome}) {
        xdotool(moveTo(target + grip));
        QTRY_COMPARE(screen.window.pos(), target);
    }
}

void TestAppMouse::dragEndsWithTheButton()
{
    OnScreen screen;
    xdotool(moveTo(kHome + QPoint(100, 20)));
    press(1);
    xdotool(moveTo(kHome + QPoint(150, 70)));
    QTRY_COMPARE(screen.window.pos(), kHome + QPoint(50, 50));
    release(1);
    xdotool(moveTo(kHome + QPoint(300, 90)));
    QTest::qWait(100);
    QCOMPARE(screen.window.pos(), kHome + QPoint(50, 50));

    // Nor does another button that is held start it again.
    xdotool(moveTo(kHome + QPoint(200, 700)));
    press(1);
    xdotool(moveTo(kHome + QPoint(260, 640)));
    QTest::qWait(100);
    QCOMPARE(screen.window.pos(), kHome + QPoint(50, 50));
}

void TestAppMouse::moveWithoutAButtonDoesNotDrag()
{
    MainWindow window;
    window.setMouseTracking(true); // else the toolkit delivers no such move
    window.move(kHome);
    sendMouse(window, QEvent::MouseButtonPress, kHome + QPoint(9, 9), Qt::LeftButton,
              Qt::LeftButton);
    sendMouse(window, QEvent::MouseMove, kHome + QPoint(90, 90), Qt::NoButton, Qt::NoButton);
    QCOMPARE(window.pos(), kHome);
    sendMouse(window, QEvent::MouseMove, kHome + QPoint(90, 90), Qt::NoButton, Qt::RightButton);
    QCOMPARE(window.pos(), kHome + QPoint(81, 81));
}

// Whatever a handler does, it lets the toolkit's own go on with the event.
void TestAppMouse::eventsAreNotKept()
{
    MainWindow window;
    window.move(kHome);
    const Qt::MouseButton left = Qt::LeftButton;
    for (const QPoint &at : {QPoint(9, 9), QPoint(9, 90)}) {
        const QPoint point = window.pos() + at;
        QVERIFY(!sendMouse(window, QEvent::MouseButtonPress, point, left, left));
        QVERIFY(!sendMouse(window, QEvent::MouseMove, point + QPoint(5, 6), Qt::NoButton, left));
        QVERIFY(!sendMouse(window, QEvent::MouseButtonRelease, point, left, Qt::NoButton));
    }
}

// The threshold counts from the desktop's origin.
void TestAppMouse::nearTheOriginNothingMoves_data()
{
    QTest::addColumn<QPoint>("target");
    QTest::addColumn<bool>("moves");
    QTest::newRow("3, 4") << QPoint(3, 4) << false;
    QTest::newRow("0, 0") << QPoint(0, 0) << false;
    QTest::newRow("10, 0") << QPoint(10, 0) << false;
    QTest::newRow("-5, 5") << QPoint(-5, 5) << false;
    QTest::newRow("-5, -5") << QPoint(-5, -5) << false;
    QTest::newRow("11, 0") << QPoint(11, 0) << true;
    QTest::newRow("6, -5") << QPoint(6, -5) << true;
    QTest::newRow("-3, 8") << QPoint(-3, 8) << true;
}

void TestAppMouse::nearTheOriginNothingMoves()
{
    QFETCH(QPoint, target);
    QFETCH(bool, moves);
    QCOMPARE(QApplication::startDragDistance(), 10);
    OnScreen screen;
    const QPoint grip(100, 20);
    xdotool(moveTo(kHome + grip));
    press(1);
    xdotool(moveTo(target + grip));
    QTest::qWait(50); // what must not happen would have by then
    QTRY_COMPARE(screen.window.pos(), moves ? target : kHome);
}

void TestAppMouse::closeControlsClose_data()
{
    QTest::addColumn<bool>("atTheTop");
    QTest::newRow("close button") << true;
    QTest::newRow("bottom button") << false;
}

void TestAppMouse::closeControlsClose()
{
    QFETCH(bool, atTheTop);
    OnScreen screen;
    const QRect place =
        atTheTop ? closeButton(screen.window)->geometry() : bottomButton(screen.window)->geometry();
    clickAt(kHome + place.center());
    QTRY_VERIFY(!screen.window.isVisible());
}

void TestAppMouse::closeButtonKeepsItsFace()
{
    OnScreen screen;
    const QPoint centre = closeButton(screen.window)->mapToGlobal(QPoint(22, 14));
    xdotool(moveTo(kHome + QPoint(200, 400)));
    const QImage away = screen.seen(closeButton(screen.window));
    xdotool(moveTo(centre));
    QTRY_VERIFY(closeButton(screen.window)->underMouse());
    QCOMPARE(screen.seen(closeButton(screen.window)), away);
    press(1);
    QTRY_VERIFY(closeButton(screen.window)->isDown());
    QCOMPARE(screen.seen(closeButton(screen.window)), away);
    xdotool(moveTo(kHome + QPoint(200, 400)));
    release(1);
    QVERIFY(screen.window.isVisible());
}

// What the test before compares is what is seen: with the name, the face does change.
void TestAppMouse::closeButtonWouldChangeItsFace()
{
    OnScreen screen;
    xdotool(moveTo(kHome + QPoint(200, 400)));
    const QImage away = screen.seen(closeButton(screen.window));
    closeButton(screen.window)->setObjectName(QStringLiteral("closeBtn"));
    closeButton(screen.window)->setStyleSheet(closeButton(screen.window)->styleSheet());
    xdotool(moveTo(closeButton(screen.window)->mapToGlobal(QPoint(22, 14))));
    QTRY_VERIFY(screen.seen(closeButton(screen.window)) != away);
}

void TestAppMouse::tabs()
{
    OnScreen screen;
    const auto lines = screen.window.findChildren<QFrame *>(QStringLiteral("lineEnd2"));
    QTabBar *bar = screen.tabs->tabBar();
    clickAt(bar->mapToGlobal(bar->tabRect(1).center()));
    QTRY_COMPARE(screen.tabs->currentIndex(), 1);
    QVERIFY(!lines.at(1)->isVisible());
    clickAt(bar->mapToGlobal(bar->tabRect(0).center()));
    QTRY_COMPARE(screen.tabs->currentIndex(), 0);
    QVERIFY(lines.at(1)->isVisible());
}

void TestAppMouse::rows()
{
    OnScreen screen;
    screen.tabs->setCurrentIndex(1);
    clickAt(screen.cell(0, 0));
    QVERIFY(screen.shows("V3"));
    clickAt(screen.cell(3, 1));
    QVERIFY(screen.shows("the name\nanother name"));
}

void TestAppMouse::aDoubleClickIsAClick()
{
    OnScreen screen;
    screen.tabs->setCurrentIndex(1);
    const QSignalSpy chosen(screen.table, &QTableWidget::doubleClicked);
    xdotool(moveTo(screen.cell(2, 1)));
    xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"),
             QStringLiteral("--delay"), QStringLiteral("20"), QStringLiteral("1")});
    QTRY_COMPARE(chosen.count(), 1);
    QVERIFY(screen.shows("all usages"));
    QCOMPARE(screen.markedRow(), 2);
}

void TestAppMouse::draggingOverRowsShowsTheSelectedOne()
{
    OnScreen screen;
    screen.tabs->setCurrentIndex(1);
    xdotool(moveTo(screen.cell(0, 0)));
    press(1);
    xdotool(moveTo(screen.cell(1, 1)));
    xdotool(moveTo(screen.cell(2, 1)));
    QVERIFY(screen.shows("all usages"));
    release(1);
    QCOMPARE(screen.table->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(screen.table->selectionModel()->selectedRows().first().row(), 2);
    QCOMPARE(screen.box->toPlainText(), QStringLiteral("all usages"));
}

void TestAppMouse::aPressShowsTheRowItMarks()
{
    OnScreen screen;
    screen.tabs->setCurrentIndex(1);
    xdotool(moveTo(screen.cell(2, 1)));
    press(1);
    QVERIFY(screen.shows("all usages"));
    xdotool(moveTo(screen.box->mapToGlobal(QPoint(30, 90)))); // released where no click comes of it
    release(1);
    QCOMPARE(screen.markedRow(), 2);
    QCOMPARE(screen.box->toPlainText(), QStringLiteral("all usages"));
}

void TestAppMouse::ctrlTakesNoMarkBack()
{
    OnScreen screen;
    screen.tabs->setCurrentIndex(1);
    for (int i = 0; i < 3; ++i) {
        xdotool({QStringLiteral("keydown"), QStringLiteral("ctrl")});
        clickAt(screen.cell(2, i % 2));
        xdotool({QStringLiteral("keyup"), QStringLiteral("ctrl")});
        QVERIFY(screen.shows("all usages"));
        QCOMPARE(screen.markedRow(), 2);
    }
}

void TestAppMouse::otherButtonsOverRowsShowNothing()
{
    OnScreen screen;
    screen.tabs->setCurrentIndex(1);
    for (const int button : {2, 3}) {
        xdotool(moveTo(screen.cell(0, 0)));
        press(button);
        xdotool(moveTo(screen.cell(1, 1)));
        xdotool(moveTo(screen.cell(2, 1)));
        release(button);
        QCOMPARE(screen.box->toPlainText(), QString());
        QCOMPARE(screen.markedRow(), -1);
        xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"),
                 QStringLiteral("--delay"), QStringLiteral("20"), QString::number(button)});
        QCOMPARE(screen.markedRow(), -1);
    }
    // Nor do they take away what is shown.
    clickAt(screen.cell(2, 1));
    QVERIFY(screen.shows("all usages"));
    xdotool(moveTo(screen.cell(0, 0)));
    press(3);
    release(3);
    QCOMPARE(screen.markedRow(), 2);
    QCOMPARE(screen.box->toPlainText(), QStringLiteral("all usages"));
}

void TestAppMouse::selector()
{
    OnScreen screen;
    screen.tabs->setCurrentIndex(1);
    auto *selector = child<QComboBox>(screen.window, "comboBox_selection");
    const auto choose = [&](int index) {
        clickAt(selector->mapToGlobal(selector->rect().center()));
        QTRY_VERIFY(selector->view()->isVisible());
        QTest::qWait(QApplication::doubleClickInterval()); // a list just opened ignores clicks
        const QRect item = selector->view()->visualRect(selector->model()->index(index, 0));
        clickAt(selector->view()->viewport()->mapToGlobal(item.center()));
        QTRY_COMPARE(selector->currentIndex(), index);
    };
    choose(2);
    QCOMPARE(screen.table->rowCount(), 2);
    choose(1);
    QCOMPARE(screen.table->rowCount(), 2);
    QCOMPARE(screen.table->item(0, 0)->text(), QStringLiteral("Version"));
    choose(0);
    QCOMPARE(screen.table->rowCount(), 4);
}

// From the start to a copied value without the mouse.
void TestAppMouse::keyboard()
{
    OnScreen screen;
    key("Right");
    QTRY_COMPARE(screen.tabs->currentIndex(), 1);
    key("Tab");
    key("Tab");
    QVERIFY(QTest::qWaitFor([&] { return QApplication::focusWidget() == screen.table; }));
    key("End");
    QVERIFY(screen.shows("the name\nanother name"));
    key("ctrl+c");
    QVERIFY(QTest::qWaitFor(
        [] { return QGuiApplication::clipboard()->text() == QLatin1String("another name"); }));
}

void TestAppMouse::theTextBoxesHaveNoMenu()
{
    OnScreen screen;
    screen.tabs->setCurrentIndex(1);
    xdotool(moveTo(screen.box->mapToGlobal(screen.box->rect().center())));
    press(3);
    release(3);
    QTest::qWait(200);
    QVERIFY(!QApplication::activePopupWidget());
}

QTEST_MAIN(TestAppMouse)
#include "tst_app_mouse.moc"
