#include "tests/app/compositor.h"
#include "tests/app/viewer_tree.h"
#include "tests/app/widgets.h"

#include <cmath>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTableWidget>
#include <QTabWidget>
#include <QtTest>

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

QString printed(const Lines &lines)
{
    QStringList all;
    for (const auto &[start, thickness] : lines)
        all += QStringLiteral("%1 (%2)").arg(start).arg(thickness);
    return all.join(QStringLiteral(", "));
}

} // namespace

// Whether the lines of both pages are there at every scale, each once and as thick as a pixel is.
class TestAppLines : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void lines_data();
    void lines();

private:
    void verifyLines(const Lines &lines, const QVector<int> &expected, double scale) const;

    QRect m_table;
    QRect m_box;
};

// Where they are at scale 1.
void TestAppLines::initTestCase()
{
    QVERIFY(QGuiApplication::primaryScreen()->size().height() >= 3 * 697);
    MainWindow window;
    const auto place = [&](QWidget *widget) {
        return QRect(widget->mapTo(&window, QPoint(0, 0)), widget->size());
    };
    child<QTabWidget>(window, "tabWidget")->setCurrentIndex(1);
    window.show();
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
    QVERIFY(onDetails(250, true, kHeaderFrame).size() >= 1);
}

QTEST_MAIN(TestAppLines)
#include "tst_app_lines.moc"
