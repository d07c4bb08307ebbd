#include "tests/app/viewer_tree.h"

#include <cmath>
#include <QGuiApplication>
#include <QScreen>
#include <QTest>

namespace {

const QSize kWindow(436, 697);

QString example()
{
    return QStringLiteral(PX_SOURCE_DIR "/examples/server.pem");
}

void xprop(const QStringList &arguments)
{
    if (QProcess::execute(QStringLiteral("xprop"), arguments) != 0)
        qFatal("xprop fails");
}

// The resolution of the desktop's fonts, by which it tells its scale, as long as the object lives.
struct Resolution
{
    explicit Resolution(const QByteArray &dpi)
    {
        xprop({QStringLiteral("-root"), QStringLiteral("-f"), QStringLiteral("RESOURCE_MANAGER"),
               QStringLiteral("8s"), QStringLiteral("-set"), QStringLiteral("RESOURCE_MANAGER"),
               QStringLiteral("*customization:\t-color\nXft.dpi:\t") + QString::fromUtf8(dpi) +
                   QLatin1Char('\n')});
    }
    ~Resolution()
    {
        xprop({QStringLiteral("-root"), QStringLiteral("-remove"),
               QStringLiteral("RESOURCE_MANAGER")});
    }
    Resolution(const Resolution &) = delete;
    Resolution &operator=(const Resolution &) = delete;
};

QRect placeOf(const ViewerTree &tree)
{
    Program program(tree, "PXViewCertTool", {example()});
    const QString window = program.window();
    return window.isEmpty() ? QRect() : Program::place(window);
}

// As large as the scale makes it, or as the screen allows, and in its middle.
void verifyPlace(const QRect &place, double scale)
{
    const QSize screen = QGuiApplication::primaryScreen()->size();
    const double largest = std::min(double(screen.width()) / kWindow.width(),
                                    double(screen.height()) / kWindow.height());
    const double factor = std::min(scale, std::max(largest, 1.0));
    const auto isNear = [](double one, double other) { return std::abs(one - other) <= 1.5; };
    QVERIFY2(isNear(place.width(), kWindow.width() * factor) &&
                 isNear(place.height(), kWindow.height() * factor),
             qPrintable(QStringLiteral("%1 x %2").arg(place.width()).arg(place.height())));
    if (largest >= 1)
        QVERIFY(QRect(QPoint(), screen).contains(place));
    QVERIFY(std::abs(place.center().x() - screen.width() / 2) <= 3);
    QVERIFY(std::abs(place.center().y() - screen.height() / 2) <= 3);
}

} // namespace

// The window's size by what desktop and user ask for, on a screen that may be small.
class TestAppScale : public QObject
{
    Q_OBJECT

private slots:
    void desktop_data();
    void desktop();
    void user_data();
    void user();
    void both();
    void theFreePartOfTheScreen();
    void hugeFont();
    void closesByKey();
};

void TestAppScale::desktop_data()
{
    QTest::addColumn<QByteArray>("dpi");
    QTest::addColumn<double>("scale");
    const auto add = [](const char *dpi, double scale) {
        QTest::newRow(dpi) << QByteArray(dpi) << scale;
    };
    add("96", 1);
    add("97", 97.0 / 96);
    add("120", 1.25);
    add("144", 1.5);
    add("168", 1.75);
    add("192", 2);
    add("288", 3);
    add("72", 1);
    add("1", 1);
    add("0", 1);
    add("-96", 1);
    add("9600", 100);
    add("not a number", 1);
}

void TestAppScale::desktop()
{
    QFETCH(QByteArray, dpi);
    QFETCH(double, scale);
    const Resolution resolution(dpi);
    verifyPlace(placeOf(ViewerTree()), scale);
}

void TestAppScale::user_data()
{
    QTest::addColumn<QByteArray>("factor");
    QTest::addColumn<double>("scale");
    const auto add = [](const char *factor, double scale) {
        QTest::newRow(factor) << QByteArray(factor) << scale;
    };
    add("1.25", 1.25);
    add("1.5", 1.5);
    add("1.75", 1.75);
    add("2", 2);
    add("0.8", 0.8);
    add("0", 1);
    add("-2", 1);
    add("100", 100);
    add("inf", 1);
    add("not a number", 1);
}

void TestAppScale::user()
{
    QFETCH(QByteArray, factor);
    QFETCH(double, scale);
    ViewerTree tree;
    tree.environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::fromLatin1(factor));
    verifyPlace(placeOf(tree), scale);
}

// They multiply.
void TestAppScale::both()
{
    const Resolution resolution("120");
    ViewerTree tree;
    tree.environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QStringLiteral("1.1"));
    verifyPlace(placeOf(tree), 1.375);
    tree.environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QStringLiteral("10"));
    verifyPlace(placeOf(tree), 12.5);
}

// Panels take their part of the screen.
void TestAppScale::theFreePartOfTheScreen()
{
    const QSize screen = QGuiApplication::primaryScreen()->size();
    const int panel = 100;
    const auto set = [](const char *name, const QString &value) {
        xprop({QStringLiteral("-root"), QStringLiteral("-f"), QString::fromLatin1(name),
               QStringLiteral("32c"), QStringLiteral("-set"), QString::fromLatin1(name), value});
    };
    // What a window manager tells.
    set("_NET_WORKAREA", QStringLiteral("0, %1, %2, %3")
                             .arg(panel)
                             .arg(screen.width())
                             .arg(screen.height() - panel));
    const Resolution resolution("192");
    const QRect place = placeOf(ViewerTree());
    xprop({QStringLiteral("-root"), QStringLiteral("-remove"), QStringLiteral("_NET_WORKAREA")});
    const int room = qMax(screen.height() - panel, kWindow.height());
    QVERIFY2(std::abs(place.height() - qMin(room, 2 * kWindow.height())) <= 2,
             qPrintable(QString::number(place.height())));
}

void TestAppScale::hugeFont()
{
    ViewerTree tree;
    QVERIFY(tree.write("config/kdeglobals", "[General]\nfont=Sans,40,-1,5,50,0,0,0,0,0\n"));
    tree.environment.insert(QStringLiteral("XDG_CONFIG_HOME"), tree.path("config"));
    tree.environment.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("KDE"));
    tree.environment.insert(QStringLiteral("KDE_FULL_SESSION"), QStringLiteral("true"));
    tree.environment.insert(QStringLiteral("KDE_SESSION_VERSION"), QStringLiteral("5"));
    verifyPlace(placeOf(tree), 1);
}

void TestAppScale::closesByKey()
{
    for (const char *factor : {"1", "100"}) {
        ViewerTree tree;
        tree.environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::fromLatin1(factor));
        Program program(tree, "PXViewCertTool", {example()});
        const QString window = program.window();
        QVERIFY(!window.isEmpty());
        Program::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window,
                          QStringLiteral("key"), QStringLiteral("Escape")});
        QCOMPARE(program.end(), 0);
    }
}

QTEST_MAIN(TestAppScale)
#include "tst_app_scale.moc"
