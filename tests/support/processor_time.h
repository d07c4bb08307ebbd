#pragma once

#include <ctime>

/// What this process has used of the processor since the object was made: what work costs, however
/// busy the machine is with other things.
class ProcessorTime
{
public:
    double seconds() const { return double(std::clock() - m_start) / CLOCKS_PER_SEC; }
    long long elapsed() const { return (std::clock() - m_start) / (CLOCKS_PER_SEC / 1000); } ///< ms

private:
    std::clock_t m_start = std::clock();
};
