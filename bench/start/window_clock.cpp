// window_clock PROGRAM ARGUMENT...        from the program's start to its first painted window
// window_clock --exit PROGRAM ARGUMENT... from the program's start to its end
//
// Prints "MILLISECONDS KILOBYTES": the time, and the most memory the program had by then. The
// window is painted when the screen shows more than one colour of it: a server fills new windows
// with one. The program is ended then.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <set>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <X11/extensions/Xdamage.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPatienceMs = 120000;
constexpr int kSmallest = 100; // smaller windows are the toolkits' helpers
constexpr unsigned kColumns = 16;

[[noreturn]] void fail(const char *reason)
{
    std::fprintf(stderr, "window_clock: %s\n", reason);
    std::exit(1);
}

// Windows come and go while they are looked at.
int ignoreErrors(Display * /*display*/, XErrorEvent * /*error*/)
{
    return 0;
}

class Desktop
{
public:
    Desktop()
        : m_display(XOpenDisplay(nullptr))
    {
        int errorBase = 0;
        if (!m_display || !XDamageQueryExtension(m_display, &m_damageEvent, &errorBase))
            fail("there is no X server with the DAMAGE extension");
        XSetErrorHandler(ignoreErrors);
        XSelectInput(m_display, DefaultRootWindow(m_display), SubstructureNotifyMask);
        XSync(m_display, False);
    }

    int connection() const { return ConnectionNumber(m_display); }

    /// Takes what the server has told; whether one of it was a window's first picture. A window is
    /// looked at once for all that changed: each look holds up the server, and the window with it.
    bool sawPaintedWindow()
    {
        std::set<Window> changed;
        while (XPending(m_display) > 0) {
            XEvent event;
            XNextEvent(m_display, &event);
            if (event.type == CreateNotify)
                XDamageCreate(m_display, event.xcreatewindow.window, XDamageReportRawRectangles);
            else if (event.type == m_damageEvent + XDamageNotify)
                changed.insert(reinterpret_cast<XDamageNotifyEvent &>(event).drawable);
        }
        XFlush(m_display);
        return std::any_of(changed.begin(), changed.end(),
                           [this](Window window) { return isPainted(window); });
    }

private:
    bool isPainted(Window window)
    {
        XWindowAttributes state;
        if (!XGetWindowAttributes(m_display, window, &state) || state.map_state != IsViewable ||
            std::min(state.width, state.height) < kSmallest)
            return false;
        // A quarter into it: in the windows that are compared, text lies there. Not its edge: what
        // lies outside a window's shape has another colour as soon as the window is mapped.
        const int edge = state.height / 16;
        XImage *image =
            XGetImage(m_display, window, state.width / 4, edge, kColumns,
                      static_cast<unsigned>(state.height - 2 * edge), AllPlanes, ZPixmap);
        if (!image)
            return false;
        bool same = true;
        for (int y = 0; same && y < image->height; ++y) {
            for (int x = 0; same && x < image->width; ++x)
                same = XGetPixel(image, x, y) == XGetPixel(image, 0, 0);
        }
        XDestroyImage(image);
        return !same;
    }

    Display *m_display;
    int m_damageEvent = 0;
};

pid_t start(char **command)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) // ours carries the result
        posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    if (posix_spawnp(&pid, command[0], &actions, nullptr, command, environ) != 0)
        fail("the program can't be started");
    return pid;
}

// Of the whole program: the process counts its children's.
long peakOf(pid_t pid)
{
    int status = 0;
    rusage usage = {};
    if (wait4(pid, &status, 0, &usage) != pid)
        fail("the program is gone");
    return usage.ru_maxrss;
}

void waitForWindow(Desktop &desktop, pid_t pid)
{
    const auto end = Clock::now() + std::chrono::milliseconds(kPatienceMs);
    while (!desktop.sawPaintedWindow()) {
        if (waitpid(pid, nullptr, WNOHANG) == pid)
            fail("the program ended without a window");
        if (Clock::now() > end) {
            kill(pid, SIGKILL);
            fail("no window appeared");
        }
        pollfd wait = {desktop.connection(), POLLIN, 0};
        poll(&wait, 1, 100);
    }
}

void print(Clock::duration time, long peak)
{
    std::printf("%.2f %ld\n", std::chrono::duration<double, std::milli>(time).count(), peak);
}

} // namespace

int main(int argc, char **argv)
{
    const bool toExit = argc > 1 && std::strcmp(argv[1], "--exit") == 0;
    char **command = argv + (toExit ? 2 : 1);
    if (!*command)
        fail("name a program");
    if (toExit) {
        const auto begin = Clock::now();
        const long peak = peakOf(start(command));
        print(Clock::now() - begin, peak);
        return 0;
    }
    Desktop desktop;
    const auto begin = Clock::now();
    const pid_t pid = start(command);
    waitForWindow(desktop, pid);
    const auto time = Clock::now() - begin;
    kill(pid, SIGTERM);
    print(time, peakOf(pid));
    return 0;
}
