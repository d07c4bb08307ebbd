#include "app/look/fonts_ahead.h"

#include <clocale>
#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLibrary>
#include <QString>
#include <QtGlobal>
#include <sched.h>

namespace {

bool mayUseX11()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    return !qEnvironmentVariableIsEmpty("DISPLAY") &&
           (platform.isEmpty() || platform.startsWith("xcb"));
}

// Beside the toolkit's other libraries, as its plug-in finds it too: one from elsewhere may be of
// another version.
QString displayLibrary()
{
    Dl_info gui = {};
    if (::dladdr(reinterpret_cast<void *>(&QGuiApplication::sync), &gui) == 0)
        return {};
    return QFileInfo(QFile::decodeName(gui.dli_fname)).path() +
           QStringLiteral("/libQt%1XcbQpa.so.%1").arg(QT_VERSION_MAJOR);
}

// None when the program may run on one processor only.
cpu_set_t otherProcessors()
{
    cpu_set_t others;
    CPU_ZERO(&others);
    if (sched_getaffinity(0, sizeof others, &others) == 0)
        CPU_CLR(static_cast<unsigned>(sched_getcpu()), &others);
    return others;
}

void *read(void * /*nothing*/)
{
    FcInit();
    return nullptr;
}

} // namespace

FontsAhead::FontsAhead()
{
    if (mayUseX11())
        QLibrary(displayLibrary()).load();
    std::setlocale(LC_ALL, ""); // which decides how numbers are read, and must not change meanwhile
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    // Left to itself, a new thread begins where its parent runs, and the two take turns there for
    // most of the time it lives, while the other processor idles.
    const cpu_set_t others = otherProcessors();
    if (CPU_COUNT(&others) > 0)
        pthread_attr_setaffinity_np(&attributes, sizeof others, &others);
    pthread_t reader = {};
    const auto begins = [&](const pthread_attr_t *how) {
        return pthread_create(&reader, how, read, nullptr) == 0;
    };
    if (begins(&attributes) || begins(nullptr)) // processors may not be ours to choose
        m_reader = reader;
    pthread_attr_destroy(&attributes);
}

FontsAhead::~FontsAhead()
{
    wait();
}

void FontsAhead::wait()
{
    if (m_reader)
        pthread_join(*m_reader, nullptr);
    m_reader.reset();
}
