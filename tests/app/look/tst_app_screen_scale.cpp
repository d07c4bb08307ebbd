#include "app/look/screen_scale.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

namespace {

constexpr const char *kScale = "QT_SCALE_FACTOR";
const QSize kWanted(436, 697);

// An application object, at the scale that the environment asks for.
struct Application
{
    int count = 1;
    QByteArray name = "tst_app_screen_scale";
    char *arguments[2] = {name.data(), nullptr};
    QGuiApplication application{count, arguments};
};

} // namespace

/// When the application object has to be made anew for the window's sake.
class TestAppScreenScale : public QObject
{
    Q_OBJECT

private slots:
    void init() { qunsetenv(kScale); }
    void noneIsOne_data();
    void noneIsOne();
    void whatFitsIsRight_data();
    void whatFitsIsRight();
    void oneThatNeverFitsIsGivenUp();
};

void TestAppScreenScale::noneIsOne_data()
{
    QTest::addColumn<QByteArray>("scale");
    for (const char *none : {"0", "-2", "inf", "-inf", "nan", "large", ""})
        QTest::newRow(none) << QByteArray(none);
}

void TestAppScreenScale::noneIsOne()
{
    QFETCH(QByteArray, scale);
    qputenv(kScale, scale);
    const ScreenScale made(kWanted);
    QCOMPARE(qgetenv(kScale), QByteArray("1"));
}

void TestAppScreenScale::whatFitsIsRight_data()
{
    QTest::addColumn<QByteArray>("asked");
    for (const char *asked : {"0.8", "1", "1.25"})
        QTest::newRow(asked) << QByteArray(asked);
}

void TestAppScreenScale::whatFitsIsRight()
{
    QFETCH(QByteArray, asked);
    qputenv(kScale, asked);
    ScreenScale scale(kWanted);
    const Application made;
    QVERIFY(!scale.isWrong());
    QCOMPARE(qgetenv(kScale), asked);
}

// The application object is not made anew here, however often another scale is asked for.
void TestAppScreenScale::oneThatNeverFitsIsGivenUp()
{
    qputenv(kScale, "3");
    ScreenScale scale(kWanted);
    const Application made;
    QVERIFY(kWanted.height() > QGuiApplication::primaryScreen()->size().height());
    for (int i = 0; i < 4; ++i)
        QVERIFY(scale.isWrong());
    QVERIFY(!scale.isWrong());
}

QTEST_APPLESS_MAIN(TestAppScreenScale)
#include "tst_app_screen_scale.moc"
