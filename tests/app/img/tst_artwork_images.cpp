#include "tests/app/contrast.h"

#include <algorithm>
#include <cstdlib>
#include <QComboBox>
#include <QDirIterator>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QPixmap>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

namespace {

const QString kImages = QStringLiteral(PX_SOURCE_DIR "/app/img");

// Paths of the rendered images below a directory.
QStringList imagesBelow(const QString &directory)
{
    QStringList names;
    QDirIterator files(directory, {QStringLiteral("*.png"), QStringLiteral("*.ico")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext())
        names.append(QDir(directory).relativeFilePath(files.next()));
    names.sort();
    return names;
}

// All pictures of an image file: several in an icon.
QVector<QImage> picturesOf(const QString &path)
{
    QImageReader reader(path);
    QVector<QImage> pictures;
    for (int i = 0; i < reader.imageCount(); ++i) {
        reader.jumpToImage(i);
        pictures.append(reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }
    return pictures;
}

// The greatest difference of two pictures in any channel of any pixel; 256 when of unlike size.
int difference(const QImage &left, const QImage &right)
{
    if (left.size() != right.size() || left.sizeInBytes() != right.sizeInBytes())
        return 256;
    int greatest = 0;
    for (qsizetype i = 0; i < left.sizeInBytes(); ++i)
        greatest = std::max(greatest, std::abs(left.constBits()[i] - right.constBits()[i]));
    return greatest;
}

// The names of this program's threads.
QStringList threads()
{
    QStringList names;
    QDirIterator tasks(QStringLiteral("/proc/self/task"), QDir::Dirs | QDir::NoDotAndDotDot);
    while (tasks.hasNext()) {
        QFile name(tasks.next() + QLatin1String("/comm"));
        if (name.open(QIODevice::ReadOnly))
            names << QString::fromLocal8Bit(name.readAll()).trimmed();
    }
    return names;
}

QImage resourceImage(const char *path)
{
    return QImage(QLatin1String(path)).convertToFormat(QImage::Format_ARGB32);
}

// Relative luminance and contrast as the Web Content Accessibility Guidelines define them.
QImage pictureOf(QWidget &widget)
{
    return widget.grab().toImage();
}

} // namespace

class TestArtworkImages : public QObject
{
    Q_OBJECT

private slots:
    void startNoThreads();
    void haveTheirSizes_data();
    void haveTheirSizes();
    void areWhatTheDrawingsSay();
    void iconHoldsEverySize();
    void sheetStandsInsideATransparentBorder();
    void sheetIsUniformWhereItIsStretched();
    void whiteTextIsReadableOnTheStrip();
    void sealStandsOutFromTheStrip();
    void arrowIsFoundWithoutItsSuffix();
};

// For a picture of more than 128 KiB the toolkit starts two, which takes longer than its
// conversion.
void TestArtworkImages::startNoThreads()
{
    for (const char *path :
         {":/img/cert.png", ":/img/res/background.png", ":/img/res/bk_rose_gold_noborder.png",
          ":/img/res/closeBtn/close_normal.png"})
        QVERIFY(QPixmap(QLatin1String(path)).toImage().hasAlphaChannel());
    const QString pooled = QStringLiteral("Thread (pooled)");
    QVERIFY(!threads().contains(pooled));
    const QImage large(400, 400, QImage::Format_ARGB32);
    QVERIFY(!large.convertToFormat(QImage::Format_ARGB32_Premultiplied).isNull());
    QVERIFY(threads().contains(pooled) || QThreadPool::globalInstance()->maxThreadCount() < 2);
}

void TestArtworkImages::haveTheirSizes_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("size");
    const auto add = [](const char *path, int width, int height) {
        QTest::addRow("%s", path) << QString::fromLatin1(path) << QSize(width, height);
    };
    add(":/img/cert.png", 21, 23);
    add(":/img/res/background.png", 200, 200);
    add(":/img/res/bk_rose_gold_noborder.png", 500, 44);
    add(":/img/res/closeBtn/close_normal.png", 45, 29);
    add(":/img/res/closeBtn/close_horver.png", 45, 29);
    add(":/img/res/closeBtn/close_down.png", 45, 29);
    add(":/img/res/combo1.png", 7, 5);
    for (const int scale : {2, 3}) {
        const auto addLarger = [&](const char *path, const char *suffix, int width, int height) {
            add(QStringLiteral("%1@%2x%3").arg(path).arg(scale).arg(suffix).toLatin1(),
                scale * width, scale * height);
        };
        addLarger(":/img/cert", ".png", 21, 23);
        addLarger(":/img/res/bk_rose_gold_noborder", ".png", 500, 44);
        addLarger(":/img/res/closeBtn/close_normal", ".png", 45, 29);
        addLarger(":/img/res/closeBtn/close_horver", ".png", 45, 29);
        addLarger(":/img/res/closeBtn/close_down", ".png", 45, 29);
    }
    add(":/img/res/stamp.ico", 256, 256);
    add(":/img/res/title_ico.png", 24, 24);
    add(":/img/res/down.png", 7, 5);
    add(":/img/res/background2.png", 200, 200);
    add(":/img/res/background_right.png", 100, 200);
}

void TestArtworkImages::haveTheirSizes()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);
    QSize largest;
    const QVector<QImage> pictures = picturesOf(path);
    for (const QImage &picture : pictures)
        largest = largest.expandedTo(picture.size());
    QCOMPARE(largest, size);
}

void TestArtworkImages::areWhatTheDrawingsSay()
{
    // Another version of the renderer may round a shade elsewhere.
    constexpr int kTolerance = 2;
    const QTemporaryDir fresh;
    QProcess process;
    process.start(QStringLiteral(PX_SOURCE_DIR "/tools/render_artwork.py"),
                  {QStringLiteral("--output"), fresh.path()});
    QVERIFY2(process.waitForFinished(), qPrintable(process.errorString()));
    QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());

    const QStringList names = imagesBelow(kImages);
    QVERIFY(names.size() > 12);
    QCOMPARE(imagesBelow(fresh.path()), names);
    for (const QString &name : names) {
        const QVector<QImage> committed = picturesOf(kImages + QLatin1Char('/') + name);
        const QVector<QImage> rendered = picturesOf(fresh.filePath(name));
        QVERIFY2(!committed.isEmpty(), qPrintable(name));
        QCOMPARE(committed.size(), rendered.size());
        for (int i = 0; i < committed.size(); ++i)
            QVERIFY2(difference(committed.at(i), rendered.at(i)) <= kTolerance, qPrintable(name));
    }
}

void TestArtworkImages::iconHoldsEverySize()
{
    QVector<int> sides;
    const QList<QSize> sizes = QIcon(QStringLiteral(":/img/res/stamp.ico")).availableSizes();
    for (const QSize &size : sizes) {
        QCOMPARE(size.width(), size.height());
        sides.append(size.width());
    }
    QCOMPARE(sides, (QVector<int>{16, 24, 32, 48, 64, 128, 256}));
}

void TestArtworkImages::sheetStandsInsideATransparentBorder()
{
    const QImage image = resourceImage(":/img/res/background.png");
    for (const QPoint &corner : {QPoint(0, 0), QPoint(199, 0), QPoint(0, 199), QPoint(199, 199)})
        QCOMPARE(qAlpha(image.pixel(corner)), 0);

    // The first opaque pixel from each side is where the title strip lies on the sheet.
    const auto opaque = [&image](int x, int y) { return qAlpha(image.pixel(x, y)) == 255; };
    QVERIFY(!opaque(10, 100) && opaque(11, 100));
    QVERIFY(opaque(188, 100) && !opaque(189, 100));
    QVERIFY(!opaque(100, 6) && opaque(100, 7));
    QVERIFY(opaque(100, 184) && !opaque(100, 185));
    // The shadow fades out before the window ends.
    QVERIFY(qAlpha(image.pixel(0, 100)) <= 2);
    QVERIFY(qAlpha(image.pixel(100, 0)) <= 2);
    QVERIFY(qAlpha(image.pixel(100, 199)) <= 2);
    QVERIFY(qAlpha(image.pixel(100, 186)) > 40);
}

void TestArtworkImages::sheetIsUniformWhereItIsStretched()
{
    const QImage image = resourceImage(":/img/res/background.png");
    for (int along = 20; along < 180; ++along) {
        for (int across = 0; across < 200; ++across) {
            QCOMPARE(image.pixel(along, across), image.pixel(100, across));
            QCOMPARE(image.pixel(across, along), image.pixel(across, 100));
        }
    }
    QCOMPARE(image.pixel(100, 100), QColor(Qt::white).rgba());
}

void TestArtworkImages::whiteTextIsReadableOnTheStrip()
{
    const QImage image = resourceImage(":/img/res/bk_rose_gold_noborder.png");
    const int rounding = 8; // the corners' size, where nothing is written
    const int caption = 65; // where it begins, right of the seal
    for (int y = 0; y < image.height(); ++y) {
        for (int x = caption; x < image.width(); ++x) {
            const bool inCorner = y < rounding && x >= image.width() - rounding;
            const QColor color = image.pixelColor(x, y);
            if (inCorner && color.alpha() < 255)
                continue;
            QCOMPARE(color.alpha(), 255);
            QVERIFY2(contrast(Qt::white, color) >= 4.5, qPrintable(color.name()));
        }
    }
}

void TestArtworkImages::sealStandsOutFromTheStrip()
{
    const QImage image = resourceImage(":/img/res/bk_rose_gold_noborder.png");
    const QPoint middle(33, 19);
    const int face = 10;    // from the middle, inside the seal's edge
    const int outside = 15; // beyond it
    for (const QPoint &side : {QPoint(-1, 0), QPoint(1, 0), QPoint(0, -1)}) {
        const QColor seal = image.pixelColor(middle + face * side);
        const QColor strip = image.pixelColor(middle + outside * side);
        QVERIFY2(contrast(seal, strip) >= 3.0, qPrintable(seal.name() + strip.name()));
    }
}

void TestArtworkImages::arrowIsFoundWithoutItsSuffix()
{
    QCOMPARE(QPixmap(QStringLiteral(":/img/res/combo1")).size(), QSize(7, 5));

    const QString sheet = QStringLiteral("QComboBox::down-arrow{image: url(%1);height:18px;"
                                         "width:18px;}");
    QComboBox box;
    box.resize(181, 26);
    box.setStyleSheet(sheet.arg(QStringLiteral(":/img/res/combo1")));
    const QImage bySuffixlessName = pictureOf(box);
    box.setStyleSheet(sheet.arg(QStringLiteral(":/img/res/combo1.png")));
    QCOMPARE(bySuffixlessName, pictureOf(box));
    box.setStyleSheet(sheet.arg(QStringLiteral(":/img/res/none")));
    QVERIFY(bySuffixlessName != pictureOf(box));
}

QTEST_MAIN(TestArtworkImages)
#include "tst_artwork_images.moc"
