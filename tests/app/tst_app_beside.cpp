#include "app/beside.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <QTest>
#include <sched.h>
#include <thread>

namespace {

cpu_set_t allowedProcessors()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    sched_getaffinity(0, sizeof processors, &processors);
    return processors;
}

int allowedProcessorCount()
{
    const cpu_set_t processors = allowedProcessors();
    return CPU_COUNT(&processors);
}

// What the work found, which takes its time.
struct WorkDone
{
    std::atomic<int> begun{0};
    std::atomic<int> ended{0};
    int processors = 0;
    bool besideItsParent = false;
};
WorkDone g_work;
std::thread::id g_parent;
bool g_refusesThreads = false;
bool g_refusesAttributes = false;

void workAWhile()
{
    ++g_work.begun;
    g_work.processors = allowedProcessorCount();
    g_work.besideItsParent = std::this_thread::get_id() != g_parent;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ++g_work.ended;
}

} // namespace

extern "C" {

int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*begin)(void *), void *argument);

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*begin)(void *), void *argument)
{
    if (g_refusesThreads || (g_refusesAttributes && attributes))
        return EPERM;
    return __real_pthread_create(thread, attributes, begin, argument);
}

} // extern "C"

/// Where and when work beside the program's own is done.
class TestAppBeside : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void isDoneOnAnotherProcessor();
    void isDoneOnTheOnlyProcessor();
    void isWaitedFor();
    void isDoneWhereverAThreadMayRun();
    void isLeftUndoneWithoutAThread();
};

void TestAppBeside::init()
{
    g_work.begun = 0;
    g_work.ended = 0;
    g_parent = std::this_thread::get_id();
}

void TestAppBeside::isDoneOnAnotherProcessor()
{
    const int own = allowedProcessorCount();
    if (own < 2)
        QSKIP("there is one processor");
    Beside(workAWhile).wait();
    QVERIFY(g_work.besideItsParent);
    QCOMPARE(g_work.processors, own - 1);
    QCOMPARE(allowedProcessorCount(), own);
}

void TestAppBeside::isDoneOnTheOnlyProcessor()
{
    const cpu_set_t before = allowedProcessors();
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<unsigned>(sched_getcpu()), &one);
    QCOMPARE(sched_setaffinity(0, sizeof one, &one), 0);
    Beside(workAWhile).wait();
    QCOMPARE(sched_setaffinity(0, sizeof before, &before), 0);
    QCOMPARE(g_work.ended.load(), 1);
    QCOMPARE(g_work.processors, 1);
    QVERIFY(g_work.besideItsParent);
}

void TestAppBeside::isWaitedFor()
{
    {
        Beside work(workAWhile);
        work.wait();
        QCOMPARE(g_work.ended.load(), 1);
        work.wait();
    }
    QCOMPARE(g_work.ended.load(), 1);
    {
        const Beside unasked(workAWhile);
    }
    QCOMPARE(g_work.ended.load(), 2);
}

// Processors may not be a program's own to choose.
void TestAppBeside::isDoneWhereverAThreadMayRun()
{
    g_refusesAttributes = true;
    Beside(workAWhile).wait();
    g_refusesAttributes = false;
    QCOMPARE(g_work.ended.load(), 1);
    QVERIFY(g_work.besideItsParent);
}

void TestAppBeside::isLeftUndoneWithoutAThread()
{
    g_refusesThreads = true;
    Beside(workAWhile).wait();
    g_refusesThreads = false;
    QCOMPARE(g_work.begun.load(), 0);
}

QTEST_GUILESS_MAIN(TestAppBeside)
#include "tst_app_beside.moc"
