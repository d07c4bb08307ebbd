#include "app/look/x_display.h"
#include "tests/app/compositor.h"

#include <cstdlib>
#include <QProcess>
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
    void resource_data();
    void resource();
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

void TestAppDisplay::resource_data()
{
    QTest::addColumn<QString>("resources");
    QTest::newRow("alone") << QStringLiteral("Xft.dpi:120");
    QTest::newRow("the first") << QStringLiteral("Xft.dpi:\t120\nXft.dpi2:\t7\n");
    QTest::newRow("the last") << QStringLiteral("Xft.dpi2:\t7\nXft.dp:\t8\nXft.dpi: 120\n");
}

void TestAppDisplay::resource()
{
    QFETCH(QString, resources);
    const auto xprop = [](const QStringList &arguments) {
        return QProcess::execute(QStringLiteral("xprop"),
                                 QStringList{QStringLiteral("-root")} + arguments);
    };
    const QString name = QStringLiteral("RESOURCE_MANAGER");
    QCOMPARE(xprop({QStringLiteral("-f"), name, QStringLiteral("8s"), QStringLiteral("-set"), name,
                    resources}),
             0);
    const int value = XDisplay().resource("Xft.dpi");
    QCOMPARE(xprop({QStringLiteral("-remove"), name}), 0);
    QCOMPARE(value, 120);
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
