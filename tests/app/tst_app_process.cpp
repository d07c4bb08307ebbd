#include "app/instance/instance_channel.h"
#include "app/instance/instance_lock.h"
#include "app/look/program_look.h"
#include "tests/app/viewer_tree.h"

#include <limits>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char *const kLoaded = "mainwindow::loadcertfile end";

QString example(const char *name)
{
    return QStringLiteral(PX_SOURCE_DIR "/examples/") + QLatin1String(name);
}

QImage screen()
{
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage();
}

// The screen when two looks at it are the same.
QImage stillScreen()
{
    QImage before = screen();
    for (int i = 0; i < 100; ++i) {
        QTest::qWait(100);
        QImage now = screen();
        if (now == before)
            break;
        before = now;
    }
    return before;
}

void key(const QString &window, const char *name)
{
    Program::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window,
                      QStringLiteral("key"), QString::fromLatin1(name)});
}

// The guard of the tree's viewers.
InstanceLock lockOf(const ViewerTree &tree)
{
    const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(tree.path("runtime")));
    InstanceLock lock(QStringLiteral("PXViewCertTool   master application"));
    qputenv("XDG_RUNTIME_DIR", before);
    return lock;
}

// The numbers of a picture as a window's property gives it: width, height, pixels.
QStringList numbersOf(const QImage &picture)
{
    const QImage image = picture.convertToFormat(QImage::Format_ARGB32);
    QStringList numbers = {QString::number(image.width()), QString::number(image.height())};
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            numbers.append(QString::number(image.pixel(x, y)));
    }
    return numbers;
}

// Watches whether a file is opened.
class Watch
{
public:
    explicit Watch(const QString &path)
        : m_fd(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        if (::inotify_add_watch(m_fd, QFile::encodeName(path).constData(), IN_OPEN) < 0)
            qFatal("%s can't be watched", qPrintable(path));
    }
    ~Watch() { ::close(m_fd); }
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    bool wasOpened() const
    {
        inotify_event event = {};
        return ::read(m_fd, &event, sizeof event) > 0;
    }

private:
    int m_fd;
};

// How many certificates the model has gone through.
int parsed(Program &program)
{
    return int(
        program.debugLines().count(QStringLiteral("[PXCertificate::parseTBSCertificate] end")));
}

void changeTexts(const ViewerTree &tree, const QByteArray &text, const QByteArray &other)
{
    const char *name = "languages/PXViewCertTool_Lang.ini";
    QFile file(tree.path(name));
    if (!file.open(QIODevice::ReadOnly) || !tree.write(name, file.readAll().replace(text, other)))
        qFatal("the language file can't be changed");
}

} // namespace

// The program as a whole, from outside.
class TestAppProcess : public QObject
{
    Q_OBJECT

private slots:
    void withoutArgument();
    void standsInTheMiddle();
    void standsInTheMiddleOfTheScreenUnderAPanel();
    void saysWhatItDoesInOrder();
    void endsWithTheLoopsValue();
    void furtherArgumentsAreIgnored();
    void bearsTheIcon();
    void appearsOnceItIsLoaded();
    void endsByKey_data();
    void endsByKey();
    void escapeClosesAnOpenListAlone();
    void survivesItsReaders();
    void secondInstanceHandsOver_data();
    void secondInstanceHandsOver();
    void handsOverByMessage();
    void waitsFourSecondsForAnAnswer();
    void whoStartedMeanwhileIsTheFirst();
    void appearsWhenLoadingFails_data();
    void appearsWhenLoadingFails();
    void relativePaths_data();
    void relativePaths();
    void unusualStartFolders_data();
    void unusualStartFolders();
    void theInstallFolderComesFirst();
    void foldersOfTheInstallTreeHideNoFile_data();
    void foldersOfTheInstallTreeHideNoFile();
    void lengthOfTheArgument_data();
    void lengthOfTheArgument();
    void certificateTextAsArgument();
    void brokenCores_data();
    void brokenCores();
    void looksForPluginsBesideItself();
    void languages_data();
    void languages();
    void aMissingKeyShowsItself();
    void labelsKeyIsNotRead_data();
    void labelsKeyIsNotRead();
    void withoutLanguageFile();
    void textsPassThroughTheLocale();
    void darkDesktop();
    void displayChoice_data();
    void displayChoice();
    void takesX11OfBoth();
};

void TestAppProcess::withoutArgument()
{
    const ViewerTree tree;
    const Watch languageFile(tree.path("languages/PXViewCertTool_Lang.ini"));
    const QImage before = stillScreen();
    QVERIFY(!languageFile.wasOpened());
    Program program(tree, kViewer, {});
    bool appeared = false;
    while (program.isRunning())
        appeared = appeared || screen() != before;
    QCOMPARE(program.end(), 0);
    QVERIFY(!appeared);
    QVERIFY(!program.debugLines().contains(QLatin1String(kReady)));
    // The window was built: the core was loaded, the language was chosen and its texts were read.
    QVERIFY(languageFile.wasOpened());
    QVERIFY(program.outputLines().contains(QStringLiteral("Path = ") +
                                           QDir(tree.path()).canonicalPath() + QLatin1Char(' ')));
    QVERIFY(!program.debugLines().filter(QStringLiteral("PXClientConfig.dll")).isEmpty());
}

void TestAppProcess::standsInTheMiddle()
{
    const ViewerTree tree;
    Program program(tree, kViewer, {example("server.pem")});
    const QString window = program.window();
    QVERIFY(!window.isEmpty());
    QCOMPARE(QGuiApplication::primaryScreen()->size(), QSize(1920, 1080));
    QCOMPARE(Program::place(window), QRect(742, 191, 436, 697));
}

// The middle is the whole screen's, whatever a desktop's panels leave of it.
void TestAppProcess::standsInTheMiddleOfTheScreenUnderAPanel()
{
    const auto xprop = [](const QString &arguments) {
        return QProcess::execute(QStringLiteral("xprop"), arguments.split(QLatin1Char(' ')));
    };
    QCOMPARE(
        xprop(QStringLiteral("-root -f _NET_WORKAREA 32c -set _NET_WORKAREA 300,200,1620,880")), 0);
    QTRY_COMPARE(QGuiApplication::primaryScreen()->availableGeometry(), QRect(300, 200, 1620, 880));
    const ViewerTree tree;
    Program program(tree, kViewer, {example("server.pem")});
    const QRect place = Program::place(program.window());
    QCOMPARE(xprop(QStringLiteral("-root -remove _NET_WORKAREA")), 0);
    QCOMPARE(place, QRect(742, 191, 436, 697));
}

void TestAppProcess::saysWhatItDoesInOrder()
{
    const ViewerTree tree;
    Program program(tree, kViewer, {example("server.pem")});
    QVERIFY(program.says(kReady));
    const QStringList lines = program.debugLines();
    QVERIFY(lines.indexOf(QLatin1String(kLoaded)) >= 0);
    QVERIFY(lines.indexOf(QLatin1String(kLoaded)) < lines.indexOf(QLatin1String(kReady)));
    QVERIFY(!lines.contains(QStringLiteral("this is already running")));
    QCOMPARE(QFile::symLinkTarget(QStringLiteral("/proc/%1/cwd").arg(program.id())),
             QDir(tree.path()).canonicalPath());
}

// A core that tells from inside what is seen as each line is written, and ends the loop with 7.
void TestAppProcess::endsWithTheLoopsValue()
{
    const ViewerTree tree;
    tree.install("tests/cores/watching/PXSignatureCoreV10.so", "bin/PXSignatureCoreV10.so");
    Program program(tree, kViewer, {example("server.pem")});
    QCOMPARE(program.end(), 7);
    QVERIFY(program.debugLines().contains(QStringLiteral("hidden: ") + QLatin1String(kLoaded)));
    QVERIFY(program.debugLines().contains(QStringLiteral("shown: ") + QLatin1String(kReady)));
}

void TestAppProcess::furtherArgumentsAreIgnored()
{
    const ViewerTree tree;
    Program program(tree, kViewer, {example("server.pem"), example("ca.pem"), example("ca.pem")});
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), 1);
    const ViewerTree otherTree;
    Program other(otherTree, kViewer, {QStringLiteral("/nowhere"), example("ca.pem")});
    QVERIFY(other.says(kReady));
    QCOMPARE(parsed(other), 0);
}

// Soon after it is shown.
void TestAppProcess::bearsTheIcon()
{
    const ViewerTree tree;
    Program program(tree, kViewer, {example("server.pem")});
    const QString window = program.window();
    QVERIFY(!window.isEmpty());
    const QIcon icon(QStringLiteral(PX_SOURCE_DIR "/app/img/res/stamp.ico"));
    const QList<QSize> sizes = icon.availableSizes();
    QVERIFY(!sizes.isEmpty());
    int all = 0; // each size's width, height and pixels
    for (const QSize &size : sizes)
        all += 2 + size.width() * size.height();
    QTRY_COMPARE_WITH_TIMEOUT(Program::icon(window).size(), all, Program::kPatienceMs);
    const QStringList first = numbersOf(icon.pixmap(sizes.constFirst()).toImage());
    QCOMPARE(Program::icon(window).mid(0, first.size()), first);
}

// A certificate that takes its time, from a pipe: nothing is shown until it is there.
void TestAppProcess::appearsOnceItIsLoaded()
{
    const ViewerTree tree;
    QFile certificate(example("server.pem"));
    QVERIFY(certificate.open(QIODevice::ReadOnly));
    const QByteArray pipe = QFile::encodeName(tree.path("pipe"));
    QCOMPARE(::mkfifo(pipe.constData(), S_IRUSR | S_IWUSR), 0);
    QFile writer(tree.path("pipe"));
    QVERIFY(writer.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    const QImage before = stillScreen();

    Program program(tree, kViewer, {tree.path("pipe")});
    QTRY_VERIFY_WITH_TIMEOUT(!program.debugLines().filter(QStringLiteral("read succ")).isEmpty(),
                             Program::kPatienceMs);
    QTest::qWait(500);
    QVERIFY(program.isRunning());
    QCOMPARE(screen(), before);

    QVERIFY(writer.write(certificate.readAll()) > 0);
    writer.close();
    QVERIFY(!program.window().isEmpty());
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), 1);
}

void TestAppProcess::endsByKey_data()
{
    QTest::addColumn<QByteArray>("key");
    for (const char *name : {"Escape", "ctrl+w", "ctrl+q"})
        QTest::newRow(name) << QByteArray(name);
}

void TestAppProcess::endsByKey()
{
    QFETCH(QByteArray, key);
    const ViewerTree tree;
    Program program(tree, kViewer, {example("server.pem")});
    const QString window = program.window();
    QVERIFY(!window.isEmpty());
    ::key(window, key.constData());
    QCOMPARE(program.end(), 0);
}

// The toolkit's own test keys don't take the way of a real one, on which the window hears it, too.
void TestAppProcess::escapeClosesAnOpenListAlone()
{
    const ViewerTree tree;
    Program program(tree, kViewer, {example("server.pem")});
    const QString window = program.window();
    QVERIFY(!window.isEmpty());
    const auto shown = [&program] {
        return Program::xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                 QStringLiteral("--pid"), QString::number(program.id())})
            .split(QLatin1Char('\n'))
            .size();
    };
    ::key(window, "Right");
    ::key(window, "alt+s");
    ::key(window, "space");
    QTRY_COMPARE(shown(), 2);
    ::key(window, "Escape");
    QTRY_COMPARE(shown(), 1);
    QTest::qWait(300); // in which it would end
    QVERIFY(program.isRunning());
    ::key(window, "Escape");
    QCOMPARE(program.end(), 0);
}

// What it prints goes to a process that has ended, as a file manager may have that started it.
void TestAppProcess::survivesItsReaders()
{
    const ViewerTree tree;
    const QString script = tree.path("bin/unheard");
    QVERIFY(tree.write("bin/unheard", "#!/bin/bash\n"
                                      "exec \"${0%/*}/PXViewCertTool\" \"$@\" > >(:) 2>&1\n"));
    QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner));
    Program program(tree, "unheard", {example("server.pem")});
    const QString window = program.window();
    QVERIFY(!window.isEmpty());
    ::key(window, "Escape");
    QCOMPARE(program.end(), 0);
}

void TestAppProcess::secondInstanceHandsOver_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("another file") << QStringList{example("ca.pem")};
    QTest::newRow("no file") << QStringList();
}

void TestAppProcess::secondInstanceHandsOver()
{
    QFETCH(QStringList, arguments);
    const ViewerTree tree;
    Program first(tree, kViewer, {example("server.pem")});
    QVERIFY(!first.window().isEmpty());
    QVERIFY(first.says(kReady));
    const QImage before = stillScreen();
    const QStringList said = first.debugLines();

    Program second(tree, kViewer, arguments);
    QCOMPARE(second.end(), 0);
    QVERIFY(second.debugLines().contains(QStringLiteral("this is already running")));
    QVERIFY(!second.outputLines().join(QLatin1Char('\n')).contains(QLatin1String("Path")));

    QCOMPARE(stillScreen(), before);
    QCOMPARE(first.debugLines(), said);
    QVERIFY(first.isRunning());
}

// The program's side of what instances agree on, met by the guard's own classes.
void TestAppProcess::handsOverByMessage()
{
    const ViewerTree tree;
    InstanceLock lock = lockOf(tree);
    QCOMPARE(lock.acquire(), InstanceLock::Result::Held);
    InstanceServer server;
    QVERIFY(server.listen(lock.socketPath()));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    Program second(tree, kViewer, {example("server.pem")});
    QVERIFY(QTest::qWaitFor([&] { return !second.isRunning(); }, Program::kPatienceMs));
    QCOMPARE(second.end(), 0);
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("raise_window_noop"));
}

void TestAppProcess::waitsFourSecondsForAnAnswer()
{
    const ViewerTree tree;
    InstanceLock lock = lockOf(tree);
    QCOMPARE(lock.acquire(), InstanceLock::Result::Held);
    qint64 shortest = std::numeric_limits<qint64>::max(); // a busy machine adds to it
    for (int i = 0; i < 4 && shortest > 4900; ++i) {
        Program second(tree, kViewer, {example("server.pem")});
        QVERIFY(second.says("this is already running"));
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(second.end(), 0);
        shortest = qMin(shortest, timer.elapsed());
    }
    QVERIFY2(shortest > 3500 && shortest < 4900, qPrintable(QString::number(shortest)));
}

// Another becomes the first one while this one waits for the display, having found none.
void TestAppProcess::whoStartedMeanwhileIsTheFirst()
{
    ViewerTree tree;
    constexpr int kPortOfTheFirst = 6000;
    QTcpServer display;
    QVERIFY(display.listen(QHostAddress::LocalHost));
    tree.environment.insert(
        QStringLiteral("DISPLAY"),
        QStringLiteral("127.0.0.1:%1").arg(display.serverPort() - kPortOfTheFirst));
    tree.environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    Program second(tree, kViewer, {example("server.pem")});
    QVERIFY(display.waitForNewConnection(Program::kPatienceMs));
    InstanceLock lock = lockOf(tree);
    QCOMPARE(lock.acquire(), InstanceLock::Result::Held);
    InstanceServer server;
    QVERIFY(server.listen(lock.socketPath()));
    QSignalSpy received(&server, &InstanceServer::messageReceived);
    display.close();
    QVERIFY(QTest::qWaitFor([&] { return !second.isRunning(); }, Program::kPatienceMs));
    QCOMPARE(second.end(), 0);
    QVERIFY(second.debugLines().contains(QStringLiteral("this is already running")));
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("raise_window_noop"));
}

void TestAppProcess::appearsWhenLoadingFails_data()
{
    QTest::addColumn<QString>("argument");
    QTest::newRow("nothing there") << QStringLiteral("/nowhere/at.all");
    QTest::newRow("empty name") << QString();
    QTest::newRow("directory") << QStringLiteral("/");
    QTest::newRow("device") << QStringLiteral("/dev/zero");
    QTest::newRow("long nonsense") << QStringLiteral("nonsense").repeated(1000);
}

void TestAppProcess::appearsWhenLoadingFails()
{
    QFETCH(QString, argument);
    const ViewerTree tree;
    Program program(tree, kViewer, {argument});
    QVERIFY(!program.window().isEmpty());
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), 0);
    QCOMPARE(program.debugLines().contains(QLatin1String(kLoaded)), argument.size() > 255);
}

void TestAppProcess::relativePaths_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<int>("certificates");
    QTest::newRow("name") << QString::fromUtf8("a 证书.pem") << 1;
    QTest::newRow("dotted") << QString::fromUtf8("./a 证书.pem") << 1;
    QTest::newRow("up and down") << QString::fromUtf8("../elsewhere/a 证书.pem") << 1;
    QTest::newRow("nothing there") << QStringLiteral("b.pem") << 0;
}

void TestAppProcess::relativePaths()
{
    QFETCH(QString, argument);
    QFETCH(int, certificates);
    const ViewerTree tree;
    tree.startBeside("server.pem", QString::fromUtf8("a 证书.pem"));
    Program program(tree, kViewer, {argument});
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), certificates);
}

void TestAppProcess::unusualStartFolders_data()
{
    QTest::addColumn<QByteArray>("goThere");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<int>("certificates");
    QTest::newRow("of a name outside UTF-8")
        << QByteArray("name=$(printf 'x\\377') && mkdir $name && mv one.pem $name && cd $name")
        << QStringLiteral("one.pem") << 1;
    // A relative path does not become an absolute one.
    QTest::newRow("that is gone") << QByteArray("mkdir gone && cd gone && rmdir ../gone")
                                  << example("server.pem").mid(1) << 0;
}

void TestAppProcess::unusualStartFolders()
{
    QFETCH(QByteArray, goThere);
    QFETCH(QString, argument);
    QFETCH(int, certificates);
    const ViewerTree tree;
    tree.startBeside("server.pem", QStringLiteral("one.pem"));
    QVERIFY(tree.write("bin/start",
                       "#!/bin/sh\n" + goThere + " && exec \"${0%start}PXViewCertTool\" \"$1\"\n"));
    QVERIFY(QFile::setPermissions(tree.path("bin/start"), QFile::ReadOwner | QFile::ExeOwner));
    Program program(tree, "start", {argument});
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), certificates);
}

void TestAppProcess::theInstallFolderComesFirst()
{
    const ViewerTree tree;
    QVERIFY(tree.add(example("server.pem"), "one.pem"));
    QVERIFY(tree.write("../elsewhere/one.pem", "no certificate"));
    Program program(tree, kViewer, {QStringLiteral("one.pem")});
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), 1);
}

void TestAppProcess::foldersOfTheInstallTreeHideNoFile_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"bin", "languages", "./bin"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestAppProcess::foldersOfTheInstallTreeHideNoFile()
{
    QFETCH(QString, name);
    const ViewerTree tree;
    QVERIFY(QFileInfo(tree.path(name.toLatin1().constData())).isDir());
    tree.startBeside("server.pem", name);
    Program program(tree, kViewer, {name});
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), 1);
}

void TestAppProcess::lengthOfTheArgument_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("certificates");
    QTest::newRow("255") << 255 << 1;
    QTest::newRow("256") << 256 << 0;
}

void TestAppProcess::lengthOfTheArgument()
{
    QFETCH(int, length);
    QFETCH(int, certificates);
    const ViewerTree tree;
    // As typed it counts, not as it is found: the place it stands for is longer in both cases.
    const QString name =
        QString(100, QLatin1Char('d')) + QLatin1Char('/') + QString(length - 101, QLatin1Char('f'));
    QCOMPARE(name.size(), length);
    QVERIFY(QDir(tree.elsewhere()).mkdir(name.section(QLatin1Char('/'), 0, 0)));
    tree.startBeside("server.pem", name);
    Program program(tree, kViewer, {name});
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), certificates);
}

void TestAppProcess::certificateTextAsArgument()
{
    QFile file(example("server.pem"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const ViewerTree tree;
    Program program(tree, kViewer, {QString::fromLatin1(file.readAll())});
    QVERIFY(program.says(kReady));
    QCOMPARE(parsed(program), 1);
}

void TestAppProcess::brokenCores_data()
{
    QTest::addColumn<QByteArray>("kind");
    for (const char *kind : {"", "without_init", "without_uninit", "without_get_signature_core",
                             "failing_status", "null_object"})
        QTest::newRow(*kind ? kind : "none") << QByteArray(kind);
}

// Without a core nothing names the language file: the window shows the keys, and its title as the
// form has it.
void TestAppProcess::brokenCores()
{
    QFETCH(QByteArray, kind);
    const ViewerTree tree;
    if (kind.isEmpty())
        QVERIFY(QFile::remove(tree.path("bin/PXSignatureCoreV10.so")));
    else
        tree.install("tests/cores/" + kind + "/PXSignatureCoreV10.so", "bin/PXSignatureCoreV10.so");
    Program program(tree, kViewer, {example("server.pem")});
    const QString window = program.window();
    QVERIFY(!window.isEmpty());
    QVERIFY(program.says(kReady));
    QCOMPARE(Program::xdotool({QStringLiteral("getwindowname"), window}),
             QString::fromUtf8("证书查看器"));
    Program probe(tree, "window_probe", {});
    QCOMPARE(probe.end(), 0);
    QVERIFY(probe.outputLines().contains(QStringLiteral("caption=PXCERTREAD_0039")));
}

void TestAppProcess::looksForPluginsBesideItself()
{
    ViewerTree tree;
    QVERIFY(QDir(tree.path("bin")).mkdir(QStringLiteral("plugins")));
    tree.environment.insert(QStringLiteral("QT_DEBUG_PLUGINS"), QStringLiteral("1"));
    Program program(tree, kViewer, {example("server.pem")});
    QVERIFY(program.says(kReady));
    const QString folder = QDir(tree.path("bin/plugins")).canonicalPath();
    QVERIFY(!program.debugLines().filter(folder).isEmpty());
}

void TestAppProcess::languages_data()
{
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("font");
    QTest::addColumn<QString>("selector");
    const QString simplified = QStringLiteral("noto sans cjk sc");
    const QString traditional = QStringLiteral("noto sans cjk tc");
    QTest::newRow("CN") << QByteArray("CN") << QString::fromUtf8("证书查看器") << simplified
                        << QString::fromUtf8("显示:");
    QTest::newRow("TW") << QByteArray("TW") << QString::fromUtf8("憑證檢視器") << traditional
                        << QString::fromUtf8("顯示:");
    QTest::newRow("EN") << QByteArray("EN") << QStringLiteral("Certificate Viewer") << simplified
                        << QStringLiteral("Show:");
}

void TestAppProcess::languages()
{
    QFETCH(QByteArray, section);
    QFETCH(QString, title);
    QFETCH(QString, font);
    QFETCH(QString, selector);
    ViewerTree tree;
    tree.speak(section);
    Program program(tree, kViewer, {example("server.pem")});
    const QString window = program.window();
    QCOMPARE(Program::xdotool({QStringLiteral("getwindowname"), window}), title);
    Program probe(tree, "window_probe", {});
    QCOMPARE(probe.end(), 0);
    QVERIFY(probe.outputLines().contains(QStringLiteral("title=") + title));
    QVERIFY(probe.outputLines().contains(QStringLiteral("caption=") + title));
    QVERIFY(probe.outputLines().contains(QStringLiteral("font=") + font));
    QVERIFY(probe.outputLines().contains(QStringLiteral("selector=") + selector));
    QVERIFY(probe.outputLines().filter(QStringLiteral("PXCERTREAD")).isEmpty());
}

void TestAppProcess::aMissingKeyShowsItself()
{
    const ViewerTree tree;
    changeTexts(tree, "PXCERTREAD_0039=", "PXCERTREAD_0038=");
    Program probe(tree, "window_probe", {});
    QCOMPARE(probe.end(), 0);
    QVERIFY(probe.outputLines().contains(QStringLiteral("caption=PXCERTREAD_0039")));
    QVERIFY(probe.outputLines().contains(QStringLiteral("tab=General")));
    QVERIFY(probe.outputLines().contains(QString::fromUtf8("title=证书查看器")));
}

void TestAppProcess::labelsKeyIsNotRead_data()
{
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<QString>("name");
    QTest::newRow("beside the text") << QByteArray("Show(&S)") << QStringLiteral("Show");
    QTest::newRow("alone") << QByteArray("(&S)") << QString();
    QTest::newRow("not opened") << QByteArray("Show &S)") << QStringLiteral("Show S)");
    QTest::newRow("not closed") << QByteArray("Show (&S") << QStringLiteral("Show (S");
}

// However somebody writes it into the language file.
void TestAppProcess::labelsKeyIsNotRead()
{
    QFETCH(QByteArray, label);
    QFETCH(QString, name);
    const ViewerTree tree;
    changeTexts(tree, "\"&Show:\"", '"' + label + '"');
    Program probe(tree, "window_probe", {});
    QCOMPARE(probe.end(), 0);
    QVERIFY(probe.outputLines().contains(QStringLiteral("selector=") + name));
}

void TestAppProcess::withoutLanguageFile()
{
    const ViewerTree tree;
    QVERIFY(QFile::remove(tree.path("languages/PXViewCertTool_Lang.ini")));
    Program probe(tree, "window_probe", {});
    QCOMPARE(probe.end(), 0);
    for (const char *line :
         {"caption=PXCERTREAD_0039", "tab=PXCERTREAD_0066", "tab=PXCERTREAD_0067",
          "entry=PXCERTREAD_0011", "entry=PXCERTREAD_0012", "entry=PXCERTREAD_0013", "spoken="})
        QVERIFY2(probe.outputLines().contains(QLatin1String(line)), line);
}

// What the locale's encoding does not hold is lost.
void TestAppProcess::textsPassThroughTheLocale()
{
    ViewerTree tree;
    tree.speak("TW");
    Program probe(tree, "window_probe", {QStringLiteral("ISO-8859-1")});
    QCOMPARE(probe.end(), 0);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QVERIFY(probe.outputLines().contains(QString::fromUtf8("caption=?????")));
    QCOMPARE(probe.outputLines().filter(QStringLiteral("tab=")),
             QStringList({"tab=??", "tab=????"}));
#else
    QVERIFY(probe.outputLines().contains(QString::fromUtf8("caption=憑證檢視器")));
#endif
}

// A dark theme of the desktop changes no pixel.
void TestAppProcess::darkDesktop()
{
    const auto look = [](const ViewerTree &tree) {
        Program program(tree, kViewer, {example("server.pem")});
        const QString window = program.window();
        key(window, "Right");
        return window.isEmpty() ? QImage() : stillScreen().copy(Program::place(window));
    };
    const QImage light = look(ViewerTree());
    QVERIFY(!light.isNull());

    ViewerTree dark;
    QByteArray colours = "[KDE]\nwidgetStyle=Windows\n";
    for (const char *group : {"Window", "View", "Button", "Selection", "Tooltip"}) {
        colours += "[Colors:" + QByteArray(group) +
                   "]\nBackgroundNormal=20,20,20\nBackgroundAlternate=30,30,30\n"
                   "ForegroundNormal=240,240,240\nForegroundInactive=200,200,200\n"
                   "ForegroundLink=80,80,255\nForegroundVisited=200,80,255\n";
    }
    QVERIFY(dark.write("config/kdeglobals", colours));
    dark.environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dark.path("config"));
    dark.environment.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("KDE"));
    dark.environment.insert(QStringLiteral("KDE_FULL_SESSION"), QStringLiteral("true"));
    dark.environment.insert(QStringLiteral("KDE_SESSION_VERSION"), QStringLiteral("5"));
    dark.environment.insert(QStringLiteral("QT_STYLE_OVERRIDE"), QStringLiteral("windows"));
    QCOMPARE(look(dark), light);
}

void TestAppProcess::displayChoice_data()
{
    QTest::addColumn<QByteArray>("wayland");
    QTest::addColumn<QByteArray>("x11");
    QTest::addColumn<QByteArray>("chosen");
    QTest::addColumn<QByteArray>("platform");
    const QByteArray none;
    QTest::newRow("X11 alone") << none << QByteArray(":0") << none << none;
    QTest::newRow("both") << QByteArray("wayland-0") << QByteArray(":0") << none
                          << QByteArray("xcb");
    QTest::newRow("Wayland alone") << QByteArray("wayland-0") << none << none << none;
    QTest::newRow("chosen") << QByteArray("wayland-0") << QByteArray(":0") << QByteArray("wayland")
                            << QByteArray("wayland");
    QTest::newRow("nothing") << none << none << none << none;
}

void TestAppProcess::displayChoice()
{
    QFETCH(QByteArray, wayland);
    QFETCH(QByteArray, x11);
    QFETCH(QByteArray, chosen);
    QFETCH(QByteArray, platform);
    const std::pair<const char *, QByteArray> variables[] = {
        {"WAYLAND_DISPLAY", wayland}, {"DISPLAY", x11}, {"QT_QPA_PLATFORM", chosen}};
    QList<QByteArray> before;
    for (const auto &[name, value] : variables) {
        before.append(qgetenv(name));
        value.isEmpty() ? qunsetenv(name) : qputenv(name, value);
    }
    program_look::chooseDisplay();
    const QByteArray result = qgetenv("QT_QPA_PLATFORM");
    for (const auto &[name, value] : variables)
        qputenv(name, before.takeFirst());
    QCOMPARE(result, platform);
}

// Where the toolkit would look for Wayland first.
void TestAppProcess::takesX11OfBoth()
{
    ViewerTree tree;
    tree.environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    tree.environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    tree.environment.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-0"));
    Program program(tree, kViewer, {example("server.pem")});
    QVERIFY(!program.window().isEmpty());
    QCOMPARE(program.debugLines().filter(QStringLiteral("wayland")), QStringList());
}

QTEST_MAIN(TestAppProcess)
#include "tst_app_process.moc"
