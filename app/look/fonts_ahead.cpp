#include "app/look/fonts_ahead.h"

#include <clocale>
#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLibrary>
#include <QString>
#include <QtGlobal>

namespace fonts_ahead {

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

} // namespace

void prepare()
{
    if (mayUseX11())
        QLibrary(displayLibrary()).load();
    std::setlocale(LC_ALL, "");
}

void readConfiguration()
{
    FcInit();
    // An application object takes it along as it goes, and at some scales a second one follows.
    FcConfigReference(nullptr);
}

void list()
{
#if QT_VERSION_MAJOR >= 6
    QFontDatabase::isFixedPitch({}); // any question would do
#else
    const QFontDatabase fonts;
#endif
}

} // namespace fonts_ahead
