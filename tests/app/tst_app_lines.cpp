#include "tests/app/compositor.h"
#include "tests/app/viewer_tree.h"
#include "tests/app/widgets.h"

#include <algorithm>
#include <cmath>
#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScreen>
#include <QStyleOptionComboBox>
#include <QTableWidget>
#include <QTabWidget>
#include <QTest>

namespace {

constexpr QRgb kDivider = 0xffececec;
constexpr QRgb kFrame = 0xffc5c5c5;
constexpr QRgb kHeaderFrame = 0xffd7d7d7;

QImage pictureOf(const QRect &place)
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, place.x(), place.y(), place.width(), place.height())
        .toImage();
}

// Where a line of this colour is crossed on the way down column `at`, or along row `at`, and how
// thick it is there.
using Lines = QVector<QPair<int, int>>;
Lines linesCrossed(const QImage &picture, int at, bool down, QRgb color)
{
    Lines lines;
    int thickness = 0;
    const int length = down ? picture.height() : picture.width();
    for (int i = 0; i <= length; ++i) {
        const bool isLine =
            i < length && (down ? picture.pixel(at, i) : picture.pixel(i, at)) == color;
        if (!isLine && thickness > 0)
            lines.append({i - thickness, thickness});
        thickness = isLine ? thickness + 1 : 0;
    }
    return lines;
}

// The greatest difference in any channel of any pixel.
int greatestDifference(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return 256;
    int greatest = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            greatest = std::max({greatest, std::abs(a.red() - b.red()),
                                 std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
        }
    }
    return greatest;
}

void verifySame(const QImage &seen, const QImage &expected)
{
    constexpr int kRounding = 16; // where a picture is scaled or lies over another
    const int difference = greatestDifference(seen, expected);
    QVERIFY2(difference <= kRounding, qPrintable(QString::number(difference)));
}

// An image as it should be seen: its drawing at this size, over what is below it.
QImage drawn(const char *name, const QSize &size, const QImage &below)
{
    QImage image = QImage(QStringLiteral(PX_SOURCE_DIR "/app/img/") + QLatin1String(name));
    image.setDevicePixelRatio(1);
    if (image.size() != size)
        image = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QImage all = below.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter(&all).drawImage(0, 0, image);
    return all;
}

QString printed(const Lines &lines)
{
    QStringList all;
    for (const auto &[start, thickness] : lines)
        all += QStringLiteral("%1 (%2)").arg(start).arg(thickness);
    return all.join(QStringLiteral(", "));
}

} // namespace

// Whether the lines of both pages are there at every scale, each once and as thick as a pixel is,
// and the pictures are made of the screen's own pixels.
class TestAppLines : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void lines_data();
    void lines();
    void pictures_data();
    void pictures();

private:
    void verifyLines(const Lines &lines, const QVector<int> &expected, double scale) const;

    QRect m_table;
    QRect m_box;
    QRect m_icon;
    QRect m_arrow;
};

// Where they are at scale 1.
void TestAppLines::initTestCase()
{
    QVERIFY(QGuiApplication::primaryScreen()->size().height() >= 4 * 697);
    MainWindow window;
    const auto place = [&](QWidget *widget) {
        return QRect(widget->mapTo(&window, QPoint(0, 0)), widget->size());
    };
    window.show();
    m_icon = place(child<QLabel>(window, "label_icon"));
    child<QTabWidget>(window, "tabWidget")->setCurrentIndex(1);
    auto *selector = child<QComboBox>(window, "comboBox_selection");
    QStyleOptionComboBox option;
    option.initFrom(selector);
    option.subControls = QStyle::SC_All;
    m_arrow = selector->style()
                  ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, selector)
                  .translated(place(selector).topLeft());
    m_table = place(child<QTableWidget>(window, "tableWidget_detailinfo"));
    m_box = place(child<QPlainTextEdit>(window, "plainTextEdit_detail_2"));
}

void TestAppLines::lines_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<bool>("composed");
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        QTest::addRow("%g", scale) << scale << false;
        QTest::addRow("%g, composed", scale) << scale << true;
    }
}

void TestAppLines::verifyLines(const Lines &lines, const QVector<int> &expected, double scale) const
{
    QVERIFY2(lines.size() == expected.size(), qPrintable(printed(lines)));
    for (int i = 0; i < lines.size(); ++i) {
        QVERIFY2(std::abs(lines.at(i).first - expected.at(i) * scale) <= 1,
                 qPrintable(printed(lines)));
        QVERIFY2(std::abs(lines.at(i).second - scale) < 1, qPrintable(printed(lines)));
    }
}

void TestAppLines::lines()
{
    QFETCH(double, scale);
    QFETCH(bool, composed);
    const OtherClient desktop;
    if (composed)
        desktop.claimToCompose();
    ViewerTree tree;
    tree.environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(scale));
    Program program(tree, "PXViewCertTool", {QStringLiteral("/nowhere")}); // nothing but the lines
    const QString id = program.window();
    QVERIFY(!id.isEmpty());
    const QRect place = Program::place(id);
    const auto at = [&](int length) { return int(length * scale); };

    const auto onGeneral = [&] { return linesCrossed(pictureOf(place), at(250), true, kDivider); };
    QTRY_COMPARE(onGeneral().size(), 2);
    verifyLines(onGeneral(), {91, 342}, scale);

    Program::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), id,
                      QStringLiteral("key"), QStringLiteral("Right")});
    const auto onDetails = [&](int where, bool down, QRgb color) {
        return linesCrossed(pictureOf(place), at(where), down, color);
    };
    QTRY_COMPARE(onDetails(250, true, kDivider).size(), 1);
    QTest::qWait(300);
    verifyLines(onDetails(250, true, kDivider), {91}, scale);
    verifyLines(onDetails(250, true, kFrame),
                {m_table.top(), m_table.bottom(), m_box.top(), m_box.bottom()}, scale);
    for (const QRect &frame : {m_table, m_box})
        verifyLines(onDetails(frame.center().y(), false, kFrame), {frame.left(), frame.right()},
                    scale);
    QVERIFY(!onDetails(250, true, kHeaderFrame).empty());
}

void TestAppLines::pictures_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QByteArray>("version");
    QTest::newRow("1") << 1 << QByteArray();
    QTest::newRow("2") << 2 << QByteArray("@2x");
    QTest::newRow("3") << 3 << QByteArray("@3x");
    QTest::newRow("4") << 4 << QByteArray("@3x"); // the largest there is
}

// Each is seen in its version for the scale, pixel by pixel.
void TestAppLines::pictures()
{
    QFETCH(int, scale);
    QFETCH(QByteArray, version);
    ViewerTree tree;
    tree.environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(scale));
    Program program(tree, "PXViewCertTool", {QStringLiteral("/nowhere")});
    const QString id = program.window();
    QVERIFY(!id.isEmpty());
    const QPoint corner = Program::place(id).topLeft();
    const auto seen = [&](const QRect &part) {
        return pictureOf(QRect(corner + part.topLeft() * scale, part.size() * scale));
    };
    const auto plain = [&](const QSize &size) {
        QImage image(size * scale, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        return image;
    };
    const auto file = [&](const char *name) { return name + version + ".png"; };

    QTRY_VERIFY(linesCrossed(pictureOf(Program::place(id)), 250 * scale, true, kDivider).size() ==
                2);
    const QRect strip(11, 7, 414, 41);
    const QImage stripDrawn = drawn(file("res/bk_rose_gold_noborder").constData(),
                                    strip.size() * scale, plain(strip.size()));
    const QRect seal(20, 9, 36, 37); // where neither corner, caption nor button is
    verifySame(seen(seal), stripDrawn.copy(QRect((seal.topLeft() - strip.topLeft()) * scale,
                                                 seal.size() * scale)));
    const QRect face(371, 17, 45, 29);
    const QImage below =
        stripDrawn.copy(QRect((face.topLeft() - strip.topLeft()) * scale, face.size() * scale));
    verifySame(seen(face),
               drawn(file("res/closeBtn/close_normal").constData(), face.size() * scale, below));
    const QRect icon(m_icon);
    verifySame(seen(icon),
               drawn(file("cert").constData(), icon.size() * scale, plain(icon.size())));

    Program::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), id,
                      QStringLiteral("key"), QStringLiteral("Right")});
    QTRY_VERIFY(linesCrossed(pictureOf(Program::place(id)), 250 * scale, true, kDivider).size() ==
                1);
    QTest::qWait(300);
    const QSize room(18, 18);
    const QRect arrow(m_arrow.center() - QPoint(8, 8), room);
    const bool isScaled = scale == 1 || scale > 3; // by the toolkit, which takes the nearest pixels
    if (!isScaled)
        verifySame(seen(arrow),
                   drawn(file("res/combo1_room").constData(), room * scale, plain(room)));
}

QTEST_MAIN(TestAppLines)
#include "tst_app_lines.moc"
