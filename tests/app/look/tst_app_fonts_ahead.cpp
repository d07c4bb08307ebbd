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

std::atomic<int> g_fontLists{0};

} // namespace

// In the place of the font library's, for the toolkit.
extern "C" FcFontSet *FcFontList(FcConfig *config, FcPattern *pattern, FcObjectSet *os)
{
    ++g_fontLists;
    void *library = ::dlopen("libfontconfig.so.1", RTLD_LAZY);
    const auto list = reinterpret_cast<decltype(&FcFontList)>(::dlsym(library, "FcFontList"));
    return list(config, pattern, os);
}

/// What is settled and found of the fonts before the toolkit asks.
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
    qputenv("LC_ALL", "C.UTF-8");
    QVERIFY(std::setlocale(LC_ALL, "C"));
    fonts_ahead::prepare();
    QCOMPARE(QByteArray(std::setlocale(LC_ALL, nullptr)), QByteArray("C.UTF-8"));
}

// The configuration once for two application objects, which is told by a mark in it, and the list
// once for each.
void TestAppFontsAhead::areFoundOnce()
{
    constexpr int kMark = 12345;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    std::thread(fonts_ahead::readConfiguration).join();
    QVERIFY(FcConfigSetRescanInterval(nullptr, kMark));
    for (int round = 1; round <= 2; ++round) {
        char program[] = "program";
        char *arguments[] = {program, nullptr};
        int count = 1;
        const QGuiApplication application(count, arguments);
        QCOMPARE(g_fontLists.load(), round - 1);
        std::thread(fonts_ahead::list).join();
        QCOMPARE(g_fontLists.load(), round);
        QVERIFY(QFontMetrics(QFont()).height() > 0);
        QCOMPARE(g_fontLists.load(), round);
        QCOMPARE(FcConfigGetRescanInterval(nullptr), kMark);
    }
}

QTEST_APPLESS_MAIN(TestAppFontsAhead)
#include "tst_app_fonts_ahead.moc"
