#include "app/look/fonts_ahead.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#include <QTest>
#include <sched.h>
#include <thread>

namespace {

cpu_set_t allowed()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    sched_getaffinity(0, sizeof processors, &processors);
    return processors;
}

int allowedCount()
{
    const cpu_set_t processors = allowed();
    return CPU_COUNT(&processors);
}

bool speaksToX11()
{
    const QByteArray name =
        QByteArray("libQt%1XcbQpa.so.%1").replace("%1", QByteArray::number(QT_VERSION_MAJOR));
    void *library = ::dlopen(name.constData(), RTLD_NOLOAD | RTLD_LAZY);
    if (library)
        ::dlclose(library);
    return library != nullptr;
}

// What the fonts' reader found, which takes its time.
struct Reading
{
    std::atomic<int> begun{0};
    std::atomic<int> ended{0};
    int processors = 0;
    bool besideItsParent = false;
    bool spokeToX11 = false;
};
Reading g_reading;
std::thread::id g_parent;
bool g_refusesThreads = false;
bool g_refusesAttributes = false;

} // namespace

extern "C" {

int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*begin)(void *), void *argument);

FcBool __wrap_FcInit()
{
    ++g_reading.begun;
    g_reading.processors = allowedCount();
    g_reading.besideItsParent = std::this_thread::get_id() != g_parent;
    g_reading.spokeToX11 = speaksToX11();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ++g_reading.ended;
    return FcTrue;
}

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*begin)(void *), void *argument)
{
    if (g_refusesThreads || (g_refusesAttributes && attributes))
        return EPERM;
    return __real_pthread_create(thread, attributes, begin, argument);
}

} // extern "C"

/// Where and when the fonts are read.
class TestAppFontsAhead : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void displayIsLoadedBefore_data();
    void displayIsLoadedBefore();
    void areReadOnAnotherProcessor();
    void areReadOnTheOnlyProcessor();
    void areWaitedFor();
    void areReadWhereverAThreadMayRun();
    void goUnreadWithoutAThread();
};

void TestAppFontsAhead::init()
{
    g_reading.begun = 0;
    g_reading.ended = 0;
    g_parent = std::this_thread::get_id();
}

// What is loaded stays: the rows that load nothing come first.
void TestAppFontsAhead::displayIsLoadedBefore_data()
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

void TestAppFontsAhead::displayIsLoadedBefore()
{
    QFETCH(QByteArray, display);
    QFETCH(QByteArray, platform);
    QFETCH(bool, loaded);
    qputenv("DISPLAY", display);
    qputenv("QT_QPA_PLATFORM", platform);
    FontsAhead().wait();
    QCOMPARE(g_reading.begun.load(), 1);
    QCOMPARE(g_reading.spokeToX11, loaded);
}

void TestAppFontsAhead::areReadOnAnotherProcessor()
{
    const int own = allowedCount();
    if (own < 2)
        QSKIP("there is one processor");
    FontsAhead().wait();
    QVERIFY(g_reading.besideItsParent);
    QCOMPARE(g_reading.processors, own - 1);
    QCOMPARE(allowedCount(), own);
}

void TestAppFontsAhead::areReadOnTheOnlyProcessor()
{
    const cpu_set_t before = allowed();
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<unsigned>(sched_getcpu()), &one);
    QCOMPARE(sched_setaffinity(0, sizeof one, &one), 0);
    FontsAhead().wait();
    QCOMPARE(sched_setaffinity(0, sizeof before, &before), 0);
    QCOMPARE(g_reading.ended.load(), 1);
    QCOMPARE(g_reading.processors, 1);
    QVERIFY(g_reading.besideItsParent);
}

void TestAppFontsAhead::areWaitedFor()
{
    {
        FontsAhead fonts;
        fonts.wait();
        QCOMPARE(g_reading.ended.load(), 1);
        fonts.wait();
    }
    QCOMPARE(g_reading.ended.load(), 1);
    {
        const FontsAhead unasked;
    }
    QCOMPARE(g_reading.ended.load(), 2);
}

// Processors may not be a program's own to choose.
void TestAppFontsAhead::areReadWhereverAThreadMayRun()
{
    g_refusesAttributes = true;
    FontsAhead().wait();
    g_refusesAttributes = false;
    QCOMPARE(g_reading.ended.load(), 1);
    QVERIFY(g_reading.besideItsParent);
}

void TestAppFontsAhead::goUnreadWithoutAThread()
{
    g_refusesThreads = true;
    FontsAhead().wait();
    g_refusesThreads = false;
    QCOMPARE(g_reading.begun.load(), 0);
}

QTEST_GUILESS_MAIN(TestAppFontsAhead)
#include "tst_app_fonts_ahead.moc"
