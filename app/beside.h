#pragma once

#include <optional>
#include <pthread.h>

/// Work that is done on another processor, if there is one, beside what follows. It throws nothing,
/// and would be done later all the same: where no thread is to be had it is left undone.
class Beside
{
public:
    /// Begins.
    explicit Beside(void (*work)());
    /// Waits as well.
    ~Beside();
    Beside(const Beside &) = delete;
    Beside &operator=(const Beside &) = delete;

    /// Up to the end; again at no cost.
    void wait();

private:
    static void *run(void *self);

    void (*m_work)();
    std::optional<pthread_t> m_thread;
};
