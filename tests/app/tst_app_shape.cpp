#include "tests/app/compositor.h"
#include "tests/app/viewer_tree.h"
#include "tests/app/widgets.h"

#include <QSocketNotifier>
#include <QTest>
#include <sys/socket.h>

namespace {

xcb_window_t idOf(const QWidget &window)
{
    return static_cast<xcb_window_t>(window.winId());
}

} // namespace

// The window's outline on a desktop with and without a compositor.
class TestAppShape : public QObject
{
    Q_OBJECT

private slots:
    void isTheSheetWithoutACompositor();
    void isThereBeforeTheWindowIsSeen();
    void staysWholeWithACompositor();
    void followsTheCompositor();
    void whoCannotAskIsNotShaped();
    void aConnectionThatEndsIsLeftAlone();
    void everyScaleHasIt_data();
    void everyScaleHasIt();
};

void TestAppShape::isTheSheetWithoutACompositor()
{
    const OtherClient other;
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QRegion shape = other.shape(idOf(window));
    QCOMPARE(shape.boundingRect(), QRect(11, 7, 414, 675));
    for (const QPoint &corner : {QPoint(11, 7), QPoint(424, 7), QPoint(11, 681), QPoint(424, 681)})
        QVERIFY(!shape.contains(corner)); // they are round
    QVERIFY(shape.contains(QRect(19, 7, 398, 675)) && shape.contains(QRect(11, 15, 414, 660)));
}

// The server has the shape when it maps the window: nothing black flashes up.
void TestAppShape::isThereBeforeTheWindowIsSeen()
{
    const OtherClient other;
    MainWindow window;
    window.setAttribute(Qt::WA_DontShowOnScreen); // shown to itself only
    window.show();
    QVERIFY(other.isShaped(idOf(window)));
}

void TestAppShape::staysWholeWithACompositor()
{
    const OtherClient other;
    other.claimToCompose();
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(!other.isShaped(idOf(window)));
    QCOMPARE(other.shape(idOf(window)), QRegion(0, 0, 436, 697));
}

void TestAppShape::followsTheCompositor()
{
    const OtherClient other;
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    for (int i = 0; i < 3; ++i) {
        {
            const OtherClient shortLived;
            shortLived.claimToCompose();
            QTRY_VERIFY(!other.isShaped(idOf(window)));
        }
        QTRY_VERIFY(other.isShaped(idOf(window)));
        other.claimToCompose();
        QTRY_VERIFY(!other.isShaped(idOf(window)));
        other.stopClaiming();
        QTRY_VERIFY(other.isShaped(idOf(window)));
    }
}

// The toolkit has its connection; when no second one is to be had, the window appears all the same.
void TestAppShape::whoCannotAskIsNotShaped()
{
    const OtherClient other;
    MainWindow window;
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":no display");
    window.show();
    qputenv("DISPLAY", display);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(!other.isShaped(idOf(window)));
    QVERIFY(window.findChildren<QSocketNotifier *>().isEmpty()); // nothing is waited for
}

// A descriptor at its end would be ready to be read for ever.
void TestAppShape::aConnectionThatEndsIsLeftAlone()
{
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *news = window.findChild<QSocketNotifier *>();
    QVERIFY(news && news->isEnabled());
    QCOMPARE(::shutdown(static_cast<int>(news->socket()), SHUT_RDWR), 0);
    QTRY_VERIFY(!news->isEnabled());
}

void TestAppShape::everyScaleHasIt_data()
{
    QTest::addColumn<double>("scale");
    for (const double scale : {1.0, 1.25, 1.5})
        QTest::addRow("%g", scale) << scale;
}

// On the display's own pixels, without a gap.
void TestAppShape::everyScaleHasIt()
{
    QFETCH(double, scale);
    ViewerTree tree;
    tree.environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(scale));
    const OtherClient other;
    Program program(tree, "PXViewCertTool", {QStringLiteral(PX_SOURCE_DIR "/examples/server.pem")});
    const QString id = program.window();
    QVERIFY(!id.isEmpty());
    const QRegion shape = other.shape(id.toUInt());
    const QRect bounds = shape.boundingRect();
    QCOMPARE(bounds.left(), qRound(11 * scale));
    QCOMPARE(bounds.top(), qRound(7 * scale));
    QVERIFY(qAbs(bounds.right() + 1 - 425 * scale) <= 1);
    QVERIFY(qAbs(bounds.bottom() + 1 - 682 * scale) <= 1);
    const int middle = bounds.center().x();
    QVERIFY(shape.contains(QRect(middle, bounds.top(), 1, bounds.height())));
    QCOMPARE(shape.intersected(QRect(middle, bounds.top(), 1, bounds.height())).rectCount(), 1);
}

QTEST_MAIN(TestAppShape)
#include "tst_app_shape.moc"
