#include "app/look/program_look.h"

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScopedPointer>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>

namespace {

constexpr QRgb kPainted = 0xffc5c5c5;
const QRect kPlace(3, 2, 20, 10); // within the picture, so that what crosses it is seen

// What a style's drawing leaves on white.
template <typename Draw>
QImage drawn(const Draw &draw)
{
    QImage image(30, 15, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    draw(&painter);
    return image;
}

template <typename Option>
Option inPlace()
{
    Option option;
    option.rect = kPlace;
    option.state = QStyle::State_Enabled | QStyle::State_Selected | QStyle::State_Active |
                   QStyle::State_KeyboardFocusChange;
    return option;
}

QImage primitive(const QStyle *style, QStyle::PrimitiveElement element, const QWidget *widget)
{
    return drawn([&](QPainter *painter) {
        if (element == QStyle::PE_FrameFocusRect) {
            const auto focus = inPlace<QStyleOptionFocusRect>();
            style->drawPrimitive(element, &focus, painter, widget);
        } else if (element == QStyle::PE_PanelItemViewItem) {
            auto item = inPlace<QStyleOptionViewItem>();
            item.showDecorationSelected = true;
            style->drawPrimitive(element, &item, painter, widget);
        } else {
            const auto frame = inPlace<QStyleOptionFrame>();
            style->drawPrimitive(element, &frame, painter, widget);
        }
    });
}

QImage control(const QStyle *style, QStyle::ControlElement element, const QStyleOption &option)
{
    return drawn([&](QPainter *painter) { style->drawControl(element, &option, painter); });
}

QStyleOptionFrame framed(QFrame::Shape shape)
{
    auto option = inPlace<QStyleOptionFrame>();
    option.frameShape = shape;
    option.lineWidth = 1;
    option.midLineWidth = 1;
    return option;
}

} // namespace

/// What the program's style draws by itself, and that all else is the toolkit's.
class TestAppLook : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void colours_data();
    void colours();
    void framesOfScrollAreas();
    void otherPrimitives_data();
    void otherPrimitives();
    void theFocusIsNotFramed();
    void linesAcross();
    void otherControls();
    void openGlTheUserNamedIsLoaded();
    void sessionBus_data();
    void sessionBus();

private:
    QScopedPointer<QStyle> m_toolkits;
};

void TestAppLook::initTestCase()
{
    QToolTip::setPalette(QPalette(Qt::black)); // as a desktop may
    program_look::dress();
    m_toolkits.reset(QStyleFactory::create(QStringLiteral("Fusion")));
    QVERIFY(m_toolkits);
}

void TestAppLook::colours_data()
{
    QTest::addColumn<QPalette::ColorRole>("role");
    QTest::addColumn<QRgb>("color");
    QTest::newRow("window") << QPalette::Window << 0xffffffff;
    QTest::newRow("text") << QPalette::Text << 0xff333333;
    QTest::newRow("selected") << QPalette::Highlight << 0xffadd8e6;
    QTest::newRow("selected text") << QPalette::HighlightedText << 0xff1c1c1c;
    QTest::newRow("tool tip") << QPalette::ToolTipBase << 0xffffffff;
    QTest::newRow("tool tip's text") << QPalette::ToolTipText << 0xff333333;
}

void TestAppLook::colours()
{
    QFETCH(QPalette::ColorRole, role);
    QFETCH(QRgb, color);
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(QApplication::palette().color(group, role).rgba(), color);
        QCOMPARE(QToolTip::palette().color(group, role).rgba(), color);
    }
}

void TestAppLook::framesOfScrollAreas()
{
    const QPlainTextEdit box;
    const QImage expected = drawn([](QPainter *painter) {
        painter->fillRect(kPlace, QColor(kPainted));
        painter->fillRect(kPlace.adjusted(1, 1, -1, -1), Qt::white);
    });
    QCOMPARE(primitive(QApplication::style(), QStyle::PE_Frame, &box), expected);
}

void TestAppLook::otherPrimitives_data()
{
    QTest::addColumn<QStyle::PrimitiveElement>("element");
    QTest::addColumn<bool>("ofAScrollArea");
    QTest::newRow("another frame") << QStyle::PE_Frame << false;
    QTest::newRow("a selected item") << QStyle::PE_PanelItemViewItem << true;
}

void TestAppLook::otherPrimitives()
{
    QFETCH(QStyle::PrimitiveElement, element);
    QFETCH(bool, ofAScrollArea);
    const QPlainTextEdit box;
    const QFrame plain;
    const QWidget *widget = ofAScrollArea ? static_cast<const QWidget *>(&box) : &plain;
    const QImage expected = primitive(m_toolkits.data(), element, widget);
    QVERIFY(expected != drawn([](QPainter *) {}));
    QCOMPARE(primitive(QApplication::style(), element, widget), expected);
}

// The window has a mark of its own.
void TestAppLook::theFocusIsNotFramed()
{
    const QPlainTextEdit box;
    const QImage nothing = drawn([](QPainter *) {});
    QVERIFY(primitive(m_toolkits.data(), QStyle::PE_FrameFocusRect, &box) != nothing);
    QCOMPARE(primitive(QApplication::style(), QStyle::PE_FrameFocusRect, &box), nothing);
}

void TestAppLook::linesAcross()
{
    QStyleOptionFrame option = framed(QFrame::HLine);
    option.palette.setColor(QPalette::WindowText, Qt::red);
    const QImage expected =
        drawn([](QPainter *painter) { painter->fillRect(kPlace, QColor(Qt::red)); });
    QCOMPARE(control(QApplication::style(), QStyle::CE_ShapedFrame, option), expected);
}

void TestAppLook::otherControls()
{
    const QImage nothing = drawn([](QPainter *) {});
    const QStyleOptionFrame downward = framed(QFrame::VLine);
    const QImage line = control(m_toolkits.data(), QStyle::CE_ShapedFrame, downward);
    QVERIFY(line != nothing);
    QCOMPARE(control(QApplication::style(), QStyle::CE_ShapedFrame, downward), line);
    // Of another kind, or without a frame's option: the toolkit leaves both alone.
    QCOMPARE(control(QApplication::style(), QStyle::CE_DockWidgetTitle, framed(QFrame::HLine)),
             nothing);
    QCOMPARE(control(QApplication::style(), QStyle::CE_ShapedFrame, inPlace<QStyleOption>()),
             nothing);
}

void TestAppLook::openGlTheUserNamedIsLoaded()
{
    constexpr const char *kChoice = "QT_XCB_GL_INTEGRATION";
    const QByteArray before = qgetenv(kChoice);
    qputenv(kChoice, "xcb_egl");
    program_look::leaveOutTheUnused();
    QCOMPARE(qgetenv(kChoice), QByteArray("xcb_egl"));
    qunsetenv(kChoice);
    program_look::leaveOutTheUnused();
    QCOMPARE(qgetenv(kChoice), QByteArray("none"));
    qputenv(kChoice, before);
}

void TestAppLook::sessionBus_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<QString>("file"); // in the user's folder, which is the path too
    QTest::addColumn<QByteArray>("left");
    const QByteArray none;
    QTest::newRow("nowhere") << none << QStringLiteral("other") << QByteArray("disabled:");
    QTest::newRow("named") << QByteArray("unix:path=/x") << QStringLiteral("other")
                           << QByteArray("unix:path=/x");
    QTest::newRow("in the folder") << none << QStringLiteral("bus") << none;
    QTest::newRow("who starts one") << none << QStringLiteral("dbus-launch") << none;
}

void TestAppLook::sessionBus()
{
    QFETCH(QByteArray, address);
    QFETCH(QString, file);
    QFETCH(QByteArray, left);
    const QTemporaryDir folder;
    QFile made(folder.filePath(file));
    QVERIFY(made.open(QIODevice::WriteOnly) &&
            made.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    const QByteArray path = QFile::encodeName(folder.path());
    const std::pair<const char *, QByteArray> variables[] = {
        {"DBUS_SESSION_BUS_ADDRESS", address}, {"XDG_RUNTIME_DIR", path}, {"PATH", path}};
    QList<QByteArray> before;
    for (const auto &[name, value] : variables) {
        before.append(qgetenv(name));
        qputenv(name, value);
    }
    program_look::leaveOutTheUnused();
    const QByteArray result = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    for (const auto &[name, value] : variables)
        qputenv(name, before.takeFirst());
    QCOMPARE(result, left);
}

QTEST_MAIN(TestAppLook)
#include "tst_app_look.moc"
