#include "app/beside.h"

#include <sched.h>

namespace {

// None when the program may run on one processor only.
cpu_set_t otherProcessors()
{
    cpu_set_t others;
    CPU_ZERO(&others);
    if (sched_getaffinity(0, sizeof others, &others) == 0)
        CPU_CLR(static_cast<unsigned>(sched_getcpu()), &others);
    return others;
}

} // namespace

Beside::Beside(void (*work)())
    : m_work(work)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    // Left to itself, a new thread begins where its parent runs, and the two take turns there for
    // most of the time it lives, while the other processor idles.
    const cpu_set_t others = otherProcessors();
    if (CPU_COUNT(&others) > 0)
        pthread_attr_setaffinity_np(&attributes, sizeof others, &others);
    pthread_t thread = {};
    const auto begins = [&](const pthread_attr_t *how) {
        return pthread_create(&thread, how, run, this) == 0;
    };
    if (begins(&attributes) || begins(nullptr)) // processors may not be ours to choose
        m_thread = thread;
    pthread_attr_destroy(&attributes);
}

Beside::~Beside()
{
    wait();
}

void Beside::wait()
{
    if (m_thread)
        pthread_join(*m_thread, nullptr);
    m_thread.reset();
}

void *Beside::run(void *self)
{
    static_cast<const Beside *>(self)->m_work();
    return nullptr;
}
