#pragma once

#include <optional>
#include <pthread.h>

/// Reads which fonts there are, a tenth of the start, on another processor if there is one, while
/// the application object is made. The program sets no variable of the environment meanwhile; the
/// toolkit takes one away that a launcher set, and that fonts have nothing to do with.
class FontsAhead
{
public:
    /// Begins, in the user's locale, as the application object will. What that speaks to an X
    /// server with is loaded before, unless the environment asks for another display: linking
    /// writes to hundreds of pages, and once another processor runs the program as well, each of
    /// them waits for it.
    FontsAhead();
    /// Waits as well.
    ~FontsAhead();
    FontsAhead(const FontsAhead &) = delete;
    FontsAhead &operator=(const FontsAhead &) = delete;

    /// Up to the end; again at no cost. To be called before the toolkit needs a font, or it would
    /// begin anew, as it does where no thread is to be had.
    void wait();

private:
    std::optional<pthread_t> m_reader;
};
