// A core that watches the program from inside: it tells with each line of the debug stream whether
// a window is shown, and ends the event loop with 7.

#include <algorithm>
#include <cstdio>
#include <QGuiApplication>
#include <QTimer>
#include <QWindow>

namespace {

void tell(QtMsgType, const QMessageLogContext &, const QString &text)
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    const bool isShown = std::any_of(windows.begin(), windows.end(),
                                     [](const QWindow *window) { return window->isVisible(); });
    std::fprintf(stderr, "%s: %s\n", isShown ? "shown" : "hidden", text.toUtf8().constData());
}

} // namespace

extern "C" {

Q_DECL_EXPORT void PX_Init()
{
    qInstallMessageHandler(tell);
    QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(7); });
}

Q_DECL_EXPORT void PX_Uninit() {}

Q_DECL_EXPORT int PX_GetSignatureCore(QObject **core)
{
    *core = QCoreApplication::instance();
    return 0;
}

} // extern "C"
