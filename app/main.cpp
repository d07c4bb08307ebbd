#include "app/beside.h"
#include "app/descriptors.h"
#include "app/instance/hand_over.h"
#include "app/instance/qtsingleapplication.h"
#include "app/look/fonts_ahead.h"
#include "app/look/program_look.h"
#include "app/look/screen_scale.h"
#include "app/look/window_style.h"
#include "app/mainwindow.h"
#include "app/program_memory.h"
#include "core/start_directory.h"

#include <csignal>
#include <optional>
#include <QDir>
#include <QIcon>
#include <QScreen>
#include <QTimer>

static void settleProcess()
{
    // Whoever reads the diagnostics may end before the window does.
    std::signal(SIGPIPE, SIG_IGN);
    program_memory::keepFreed();
    rememberStartDirectory();
}

// What the start would wait for, while the application object is made.
static void workAhead()
{
    program_memory::fillRoom();
    fonts_ahead::readConfiguration();
}

static bool isLeftToAnother(QtSingleApplication &application, const QString &message)
{
    const bool isRunning = application.isRunning();
    if (isRunning) {
        qDebug("this is already running");
        application.sendMessage(message, 4000);
    }
    return isRunning;
}

// The application's icon, as soon as a plug-in for its format is found.
static void setIcon()
{
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/img/res/stamp.ico")));
}

// What the window's first picture does without is put off: each image of the skin would be shown to
// all plug-ins for images, and the icon be decoded, and sent, in all its sizes: 1 in 15 of the
// start. With other displays, or with OpenGL, the window itself is a matter of plug-ins.
static QStringList findNoPlugIns()
{
    const QStringList folders = QCoreApplication::libraryPaths();
    if (QGuiApplication::platformName() == QLatin1String("xcb") &&
        qgetenv("QT_XCB_GL_INTEGRATION") == "none")
        QCoreApplication::setLibraryPaths({});
    return folders;
}

static void findPlugIns(QWidget *window, const QStringList &folders)
{
    constexpr int kPaintedMs = 50; // most often; nothing depends on it
    if (QCoreApplication::libraryPaths() == folders)
        return;
    QCoreApplication::setLibraryPaths(folders);
    QTimer::singleShot(kPaintedMs, window, setIcon);
}

int main(int argc, char *argv[])
{
    descriptors::fillStandardStreams();
    if (!descriptors::suffice()) {
        qDebug("too few file descriptors are left");
        return 1;
    }
    settleProcess();
    const QString id = QStringLiteral("PXViewCertTool   master application");
    const QString message = QStringLiteral("raise_window_noop");
    if (handOver(id, message))
        return 0;
    program_look::chooseDisplay();
    program_look::leaveOutTheUnused();
    ScreenScale scale({window_style::kWidth, window_style::kHeight});
    fonts_ahead::prepare();
    program_memory::makeRoom(); // linking has taken its part
    Beside ahead(workAhead);
    std::optional<QtSingleApplication> application;
    do {
        application.emplace(id, argc, argv);
        ahead.wait();
    } while (scale.isWrong());
    if (isLeftToAnother(*application, message))
        return 0;
    const Beside listing(fonts_ahead::list);
    // Deliberate: nobody listens to messageReceived; the running window is not raised.
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    QCoreApplication::addLibraryPath(QStringLiteral("plugins"));
    program_look::dress();

    const QStringList plugInFolders = findNoPlugIns();
    MainWindow window;
    setIcon();
    window.move(
        window_style::centred(window.geometry(), QGuiApplication::primaryScreen()->geometry()));
    if (argc <= 1)
        return 0; // nothing to show; the window was built all the same
    window.loadcertfile(argv[1]);
    program_memory::giveBackFiles(); // linked, built and read; what is left is to be shown
    window.setVisible(true);
    findPlugIns(&window, plugInFolders);
    qDebug("main:: end");
    return QApplication::exec();
}
