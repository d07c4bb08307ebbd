#include "app/look/fonts_ahead.h"

#include <atomic>
#include <clocale>
#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QTest>
#include <thread>

namespace {

bool speaksToX11()
{
    const QByteArray name =
        QByteArray("libQt%1XcbQpa.so.%1").replace("%1", QByteArray::number(QT_VERSION_MAJOR));
    void *library = ::dlopen(name.constData(), RTLD_NOLOAD | RTLD_LAZY);
    if (library)
        ::dlclose(library);
    return library != nullptr;
}

std::atomic<int> g_configurations{0};
std::atomic<int> g_fontLists{0};

} // namespace

extern "C" {

FcBool __wrap_FcInit()
{
    ++g_configurations;
    return FcTrue;
}

// In the place of the font library's, for the toolkit.
FcFontSet *FcFontList(FcConfig *config, FcPattern *pattern, FcObjectSet *os)
{
    ++g_fontLists;
    void *library = ::dlopen("libfontconfig.so.1", RTLD_LAZY);
    const auto list = reinterpret_cast<decltype(&FcFontList)>(::dlsym(library, "FcFontList"));
    return list(config, pattern, os);
}

} // extern "C"

/// What is found of the fonts before the toolkit asks, and when.
class TestAppFontsAhead : public QObject
{
    Q_OBJECT

private slots:
    void displayIsLoaded_data();
    void displayIsLoaded();
    void localeIsTheUsers();
    void areFoundOnce();
};

// What is loaded stays: the rows that load nothing come first.
void TestAppFontsAhead::displayIsLoaded_data()
{
    QTest::addColumn<QByteArray>("display");
    QTest::addColumn<QByteArray>("platform");
    QTest::addColumn<bool>("loaded");
    QTest::newRow("there is none") << QByteArray() << QByteArray() << false;
    QTest::newRow("none that was asked for") << QByteArray() << QByteArray("xcb") << false;
    QTest::newRow("another one") << QByteArray(":9") << QByteArray("offscreen") << false;
    QTest::newRow("as the desktop has it") << QByteArray(":9") << QByteArray() << true;
    QTest::newRow("asked for") << QByteArray(":9") << QByteArray("xcb;wayland") << true;
}

void TestAppFontsAhead::displayIsLoaded()
{
    QFETCH(QByteArray, display);
    QFETCH(QByteArray, platform);
    QFETCH(bool, loaded);
    qputenv("DISPLAY", display);
    qputenv("QT_QPA_PLATFORM", platform);
    fonts_ahead::prepare();
    QCOMPARE(speaksToX11(), loaded);
}

void TestAppFontsAhead::localeIsTheUsers()
{
    const QByteArray own = std::setlocale(LC_ALL, "");
    QVERIFY(own != "C");
    QVERIFY(std::setlocale(LC_ALL, "C"));
    fonts_ahead::prepare();
    QCOMPARE(QByteArray(std::setlocale(LC_ALL, nullptr)), own);
}

// As the program does: what was found beside it is not looked for again.
void TestAppFontsAhead::areFoundOnce()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCOMPARE(g_configurations.load(), 0);
    std::thread(fonts_ahead::readConfiguration).join();
    QCOMPARE(g_configurations.load(), 1);

    char program[] = "program";
    char *arguments[] = {program, nullptr};
    int count = 1;
    const QGuiApplication application(count, arguments);
    QCOMPARE(g_fontLists.load(), 0);
    std::thread(fonts_ahead::list).join();
    QCOMPARE(g_fontLists.load(), 1);
    QVERIFY(QFontMetrics(QFont()).height() > 0);
    QCOMPARE(g_fontLists.load(), 1);
}

QTEST_APPLESS_MAIN(TestAppFontsAhead)
#include "tst_app_fonts_ahead.moc"
