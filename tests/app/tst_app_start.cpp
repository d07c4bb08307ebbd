#include "tests/app/viewer_tree.h"

#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

namespace {

QStringList certificate()
{
    return {QStringLiteral(PX_SOURCE_DIR "/examples/server.pem")};
}

// Which of these a running program has loaded.
QStringList loaded(const Program &program, const char *pattern)
{
    QFile maps(QStringLiteral("/proc/%1/maps").arg(program.id()));
    if (!maps.open(QIODevice::ReadOnly))
        return {QStringLiteral("unknown")};
    const QStringList lines = QString::fromLocal8Bit(maps.readAll()).split(QLatin1Char('\n'));
    return lines.filter(QRegularExpression(QLatin1String(pattern)));
}

// Of what a running program only reads of a library, how much it has in memory, and of how much, in
// kibibytes. The first such part is what linking reads.
QPair<int, int> readOf(const Program &program, const char *library)
{
    QFile maps(QStringLiteral("/proc/%1/smaps").arg(program.id()));
    if (!maps.open(QIODevice::ReadOnly))
        return {};
    const QRegularExpression part(
        QStringLiteral(
            " r--p 0{8} \\S+ \\d+ +\\S+/%1[^\\n]*\\nSize: +(\\d+) kB(?:\\n.*)*?\\nRss: +(\\d+)")
            .arg(QLatin1String(library)));
    const QRegularExpressionMatch found = part.match(QString::fromLocal8Bit(maps.readAll()));
    return {found.captured(2).toInt(), found.captured(1).toInt()};
}

// How many page faults the program's ended children had: a number, which is 0 when there were none.
QByteArray faultsOfChildren(const Program &program)
{
    constexpr int kPlace = 8; // of cminflt, behind the name
    QFile file(QStringLiteral("/proc/%1/stat").arg(program.id()));
    if (!file.open(QIODevice::ReadOnly))
        return "unknown";
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' ').value(kPlace);
}

const char *const kOpenGl = "xcbglintegrations|libGLX_|_dri\\.so";
const char *const kTheme = "platformthemes|libgtk";

// An X server that is reached as one on another machine is: by TCP, without shared memory.
class RemoteDisplay
{
public:
    RemoteDisplay()
    {
        m_server.start(QStringLiteral("Xvfb"),
                       QStringLiteral("-displayfd 1 -listen tcp -nolisten unix -nolisten local "
                                      "-noreset -screen 0 1920x1080x24 -extension MIT-SHM -ac")
                           .split(QLatin1Char(' ')));
        while (m_server.waitForReadyRead(Program::kPatienceMs) && !m_server.canReadLine()) {
        }
        m_name = QStringLiteral("127.0.0.1:") + QString::fromLatin1(m_server.readLine()).trimmed();
    }
    ~RemoteDisplay()
    {
        m_server.kill();
        m_server.waitForFinished();
    }
    RemoteDisplay(const RemoteDisplay &) = delete;
    RemoteDisplay &operator=(const RemoteDisplay &) = delete;

    QString name() const { return m_name; }

    bool showsWindow() const
    {
        QProcess tree;
        tree.start(QStringLiteral("xwininfo"), {QStringLiteral("-display"), m_name,
                                                QStringLiteral("-root"), QStringLiteral("-tree")});
        return tree.waitForFinished(Program::kPatienceMs) &&
               tree.readAllStandardOutput().contains(" 436x697+");
    }

private:
    QProcess m_server;
    QString m_name;
};

} // namespace

/// What a start asks of the desktop, and that it does without what the desktop lacks.
class TestAppStart : public QObject
{
    Q_OBJECT

private slots:
    void loadsNeitherOpenGlNorTheDesktopsTheme();
    void leavesOpenGlToTheUser();
    void givesBackWhatLinkingRead();
    void looksForNoBusWhereThereIsNone();
    void asksWhoStartsABus();
    void secondStartAsksForNoDisplay();
    void windowAppears_data();
    void windowAppears();
    void windowAppearsOnARemoteDisplay();
};

void TestAppStart::loadsNeitherOpenGlNorTheDesktopsTheme()
{
    ViewerTree tree;
    tree.environment.remove(QStringLiteral("QT_XCB_GL_INTEGRATION"));
    tree.environment.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("GNOME"));
    Program program(tree, kViewer, certificate());
    QVERIFY(!program.window().isEmpty());
    QCOMPARE(loaded(program, "XcbQpa").isEmpty(), false);
    QCOMPARE(loaded(program, kOpenGl), QStringList());
    QCOMPARE(loaded(program, kTheme), QStringList());
}

void TestAppStart::leavesOpenGlToTheUser()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    QSKIP("Qt 6 loads it when a program first draws with it");
#endif
    ViewerTree tree;
    tree.environment.insert(QStringLiteral("QT_XCB_GL_INTEGRATION"), QStringLiteral("xcb_glx"));
    Program program(tree, kViewer, certificate());
    QVERIFY(!program.window().isEmpty());
    QVERIFY(!loaded(program, kOpenGl).isEmpty());
}

void TestAppStart::givesBackWhatLinkingRead()
{
    const ViewerTree tree;
    Program program(tree, kViewer, certificate());
    QVERIFY(!program.window().isEmpty());
    const auto [resident, size] = readOf(program, "libQt.Widgets");
    if (size == 0)
        QSKIP("the toolkit's libraries have no such part");
    QVERIFY(size > 500);
    QVERIFY2(resident < size * 3 / 4, qPrintable(QString::number(resident)));
}

void TestAppStart::looksForNoBusWhereThereIsNone()
{
    if (!QStandardPaths::findExecutable(QStringLiteral("dbus-launch")).isEmpty())
        QSKIP("dbus-launch, which starts one, is installed");
    ViewerTree tree;
    tree.environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    Program program(tree, kViewer, certificate());
    QVERIFY(!program.window().isEmpty());
    QCOMPARE(faultsOfChildren(program), QByteArray("0"));
}

void TestAppStart::asksWhoStartsABus()
{
    ViewerTree tree;
    QVERIFY(QDir().mkdir(tree.path("path")));
    QVERIFY(tree.write("path/dbus-launch", "#!/bin/sh\n: >\"${0%/*}/asked\"\n"));
    QVERIFY(QFile::setPermissions(tree.path("path/dbus-launch"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    tree.environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    tree.environment.insert(QStringLiteral("PATH"), tree.path("path"));
    Program program(tree, kViewer, certificate());
    QVERIFY(!program.window().isEmpty());
    QVERIFY(QFile::exists(tree.path("path/asked")) ||
            QFile::exists(QStringLiteral("/usr/bin/dbus-launch")));
}

void TestAppStart::secondStartAsksForNoDisplay()
{
    ViewerTree tree;
    const Program first(tree, kViewer, certificate());
    tree.environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":nowhere"));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(tree.path("runtime")) &&
                                 !QDir(tree.path("runtime"))
                                      .entryList({QStringLiteral("*.socket")}, QDir::System)
                                      .isEmpty(),
                             Program::kPatienceMs);
    Program second(tree, kViewer, certificate());
    QCOMPARE(second.end(), 0);
    QVERIFY(second.debugLines().contains(QStringLiteral("this is already running")));
}

void TestAppStart::windowAppears_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QString>("value");
    const auto row = [](const char *name, const char *variable, const char *value) {
        QTest::newRow(name) << QByteArray(variable) << QString::fromLatin1(value);
    };
    row("without a session bus", "DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    row("without fonts", "FONTCONFIG_FILE", "no-fonts.conf");
    row("with a theme that is missing", "QT_QPA_PLATFORMTHEME", "nothing");
    row("with OpenGL that is missing", "QT_XCB_GL_INTEGRATION", "nothing");
    row("with OpenGL by the user's choice", "QT_XCB_GL_INTEGRATION", "xcb_egl");
    row("with an input method that is missing", "QT_IM_MODULE", "nothing");
}

void TestAppStart::windowAppears()
{
    QFETCH(QByteArray, variable);
    QFETCH(QString, value);
    ViewerTree tree;
    if (variable == "FONTCONFIG_FILE") {
        QVERIFY(tree.write("no-fonts.conf", "<?xml version=\"1.0\"?>\n"
                                            "<!DOCTYPE fontconfig SYSTEM \"fonts.dtd\">\n"
                                            "<fontconfig><dir>/nowhere</dir></fontconfig>\n"));
        value = tree.path("no-fonts.conf");
    }
    tree.environment.insert(QString::fromLatin1(variable), value);
    Program program(tree, kViewer, certificate());
    QVERIFY(!program.window().isEmpty());
    QVERIFY(program.says(kReady));
}

void TestAppStart::windowAppearsOnARemoteDisplay()
{
    const RemoteDisplay display;
    ViewerTree tree;
    tree.environment.insert(QStringLiteral("DISPLAY"), display.name());
    Program program(tree, kViewer, certificate());
    QVERIFY(program.says(kReady));
    QTRY_VERIFY_WITH_TIMEOUT(display.showsWindow(), Program::kPatienceMs);
}

QTEST_MAIN(TestAppStart)
#include "tst_app_start.moc"
