#pragma once

#include <ctime>

/// Milliseconds of the processor that this process has used since the object was made: what work
/// costs, however busy the machine is with other things.
class ProcessorTime
{
public:
    long long elapsed() const { return (std::clock() - m_start) / (CLOCKS_PER_SEC / 1000); }

private:
    std::clock_t m_start = std::clock();
};
