#include "app/look/x_display.h"
#include "tests/app/compositor.h"

#include <cstdlib>
#include <QTest>
#include <sys/socket.h>

/// The viewer's own connection to the X server: what it makes of one that is gone or lacks
/// something.
class TestAppDisplay : public QObject
{
    Q_OBJECT

private slots:
    void withoutAServer();
    void serverThatGoes();
    void resourceThatIsNone();
    void whatTheServerLacksHarmsNobody();
};

void TestAppDisplay::withoutAServer()
{
    const QByteArray before = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":no display");
    const XDisplay display;
    qputenv("DISPLAY", before);
    QVERIFY(!display.isConnected());
    QCOMPARE(display.resource("Xft.dpi"), 0);
    display.watchCompositor();
    QVERIFY(!display.takeEvent());
    QVERIFY(display.isComposed()); // nothing is to be shaped where nobody knows
}

void TestAppDisplay::serverThatGoes()
{
    const auto leave = [](const XDisplay &display) {
        return display.isConnected() && ::shutdown(display.descriptor(), SHUT_RDWR) == 0;
    };
    const XDisplay asked;
    QVERIFY(leave(asked));
    QCOMPARE(asked.resource("Xft.dpi"), 0);
    QVERIFY(!asked.isConnected());
    const XDisplay another;
    QVERIFY(leave(another));
    QVERIFY(another.isComposed());
    const XDisplay last;
    QVERIFY(leave(last));
    last.shape(0, QRegion(0, 0, 1, 1));
    last.unshape(0);
    QVERIFY(!last.takeEvent());
}

void TestAppDisplay::resourceThatIsNone()
{
    QCOMPARE(XDisplay().resource("no such resource"), 0);
}

// CTest runs it on a server without an extension, too, that would end the connection of whoever
// asks for it.
void TestAppDisplay::whatTheServerLacksHarmsNobody()
{
    const OtherClient other;
    const XDisplay display;
    QVERIFY(display.isConnected());
    display.watchCompositor();
    display.shape(other.window(), QRegion(0, 0, 1, 1));
    display.unshape(other.window());
    QVERIFY(!display.isComposed());
    QVERIFY(display.isConnected());
}

QTEST_GUILESS_MAIN(TestAppDisplay)
#include "tst_app_display.moc"
