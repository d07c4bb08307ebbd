#include "app/look/pixels.h"

#include <cstdlib>
#include <QIcon>
#include <QImage>
#include <QTest>

class TestAppPixels : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void iconIsThatOfTheFile();
    void picturesAreThoseOfTheFiles_data();
    void picturesAreThoseOfTheFiles();
    void aMissingPictureIsNull();
};

void TestAppPixels::initTestCase()
{
    Q_INIT_RESOURCE(pixels);
    Q_INIT_RESOURCE(res);
}

// The toolkit's way from the file to the X server rounds twice.
void TestAppPixels::iconIsThatOfTheFile()
{
    constexpr int kTolerance = 1;
    const QByteArray icon = pixels::icon();
    QByteArray expected;
    const QIcon file(QStringLiteral(":/img/res/stamp.ico"));
    const QList<QSize> sizes = file.availableSizes();
    QVERIFY(!sizes.isEmpty());
    for (const QSize &size : sizes) {
        const QImage image = file.pixmap(size).toImage().convertToFormat(QImage::Format_ARGB32);
        const quint32 sides[] = {quint32(size.width()), quint32(size.height())};
        expected.append(reinterpret_cast<const char *>(sides), sizeof sides);
        expected.append(reinterpret_cast<const char *>(image.constBits()),
                        static_cast<int>(image.sizeInBytes()));
    }
    QCOMPARE(icon.size(), expected.size());
    for (int i = 0; i < icon.size(); ++i) {
        const int difference =
            std::abs(static_cast<uchar>(icon[i]) - static_cast<uchar>(expected[i]));
        QVERIFY2(difference <= kTolerance, qPrintable(QString::number(i)));
    }
}

void TestAppPixels::picturesAreThoseOfTheFiles_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"cert", "res/background", "res/bk_rose_gold_noborder"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestAppPixels::picturesAreThoseOfTheFiles()
{
    QFETCH(QString, name);
    const QPixmap picture = pixels::picture(name);
    QVERIFY(!picture.isNull());
    QCOMPARE(picture.toImage(), QPixmap(QStringLiteral(":/img/%1.png").arg(name)).toImage());
}

void TestAppPixels::aMissingPictureIsNull()
{
    QVERIFY(pixels::picture(QStringLiteral("none")).isNull());
}

QTEST_MAIN(TestAppPixels)
#include "tst_app_pixels.moc"
