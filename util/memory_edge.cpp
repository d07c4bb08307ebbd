#include "util/memory_edge.h"

#include <cstdlib>
#include <exception>
#include <QtGlobal>

namespace memory_edge {

namespace {

void *reserve = nullptr;

} // namespace

void keepReserve() noexcept
{
    constexpr std::size_t kReserve = 262144;
    if (!reserve)
        reserve = std::malloc(kReserve);
}

void ranOut() noexcept
{
    std::free(reserve);
    reserve = nullptr;
    try {
        qDebug("there is not enough memory");
    } catch (const std::exception &) {
        return; // not even for that
    }
}

} // namespace memory_edge
