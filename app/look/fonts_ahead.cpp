#include "app/look/fonts_ahead.h"

#include <clocale>
#include <fontconfig/fontconfig.h>
#include <QByteArray>
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
        QLibrary(QStringLiteral("Qt%1XcbQpa").arg(QT_VERSION_MAJOR), QT_VERSION_MAJOR).load();
    std::setlocale(LC_ALL, ""); // which decides how numbers are read, and must not change meanwhile
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    // Left to itself, a new thread begins where its parent runs, and the two take turns there for
    // most of the time it lives, while the other processor idles.
    const cpu_set_t others = otherProcessors();
    if (CPU_COUNT(&others) > 0)
        pthread_attr_setaffinity_np(&attributes, sizeof others, &others);
    pthread_t reader = {};
    if (pthread_create(&reader, &attributes, read, nullptr) == 0)
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
