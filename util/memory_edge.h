#pragma once

#include <new>

/// The edges at which work gives up where memory has run out, instead of ending the program or of
/// showing half of what it should.
namespace memory_edge {

/// Sets memory aside for what follows a failure: the message, the end of the program. Does nothing
/// while it is there.
void keepReserve() noexcept;

/// Gives the reserve back and tells the debug stream.
void ranOut() noexcept;

/// Runs `work`. False when memory ran out on the way: what `work` left half done is the caller's to
/// undo.
template <typename Work>
bool suffices(const Work &work)
{
    keepReserve();
    try {
        work();
        return true;
    } catch (const std::bad_alloc &) {
        ranOut();
        return false;
    }
}

} // namespace memory_edge
