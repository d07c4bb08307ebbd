#include "tests/app/viewer_tree.h"

/// Which plug-ins the toolkit loads into the viewer, from folders that others than its installer
/// may fill. That of the toolkit's own installation aside, a folder is the installer's, the user's
/// own, by the environment, or whoever's: where the program is started, which is often where the
/// certificate lies.
class TestAppPlugins : public QObject
{
    Q_OBJECT

private slots:
    void decoys_data();
    void decoys();
    void onOtherDisplays();
    void coreWhereItIsStarted();
};

namespace {

const QStringList kEveryKind = {
    QStringLiteral("generic"),      QStringLiteral("iconengines"),
    QStringLiteral("imageformats"), QStringLiteral("platforminputcontexts"),
    QStringLiteral("platforms"),    QStringLiteral("platformthemes"),
    QStringLiteral("styles"),
};

// What is asked for whoever it is of, since the window's icon is a file's.
const QStringList kUnnamed = {QStringLiteral("iconengines"), QStringLiteral("imageformats")};

// The toolkit's own plug-in for the icon's format is found before those beside the program.
QStringList withoutImages(QStringList kinds)
{
    kinds.removeAll(QStringLiteral("imageformats"));
    return kinds;
}

// A decoy of each kind, in folders as the toolkit looks for them.
void fillWithDecoys(const QString &folder)
{
    for (const QString &kind : kEveryKind) {
        QVERIFY(QDir().mkpath(folder + QLatin1Char('/') + kind));
        const QString file = kind + QLatin1String("/decoy_") + kind + QLatin1String(".so");
        QVERIFY(QFile::copy(QLatin1String(PX_BINARY_DIR "/tests/decoys/") + file,
                            folder + QLatin1Char('/') + file));
    }
}

// The environment asks for the decoys where a kind goes by a name.
void nameDecoys(QProcessEnvironment &environment)
{
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("decoy;xcb"));
    for (const char *variable :
         {"QT_QPA_GENERIC_PLUGINS", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "QT_IM_MODULE"})
        environment.insert(QLatin1String(variable), QStringLiteral("decoy"));
}

// What it said by the time its window is shown.
QStringList untilReady(Program &viewer)
{
    const QStringList lines = viewer.debugLines();
    return lines.mid(0, lines.indexOf(QLatin1String(kReady)));
}

QStringList loadedKinds(const QStringList &lines, const QString &folder)
{
    QStringList kinds;
    const QString begin = QLatin1String("decoy ") + folder + QLatin1Char('/');
    const QStringList decoys = lines.filter(QStringLiteral("decoy /"));
    for (const QString &line : decoys)
        kinds << (line.startsWith(begin) ? line.mid(begin.size()).section(QLatin1Char('/'), 0, 0)
                                         : line);
    kinds.sort();
    return kinds;
}

} // namespace

void TestAppPlugins::decoys_data()
{
    QTest::addColumn<QString>("folder"); // below the one that holds the install tree
    QTest::addColumn<bool>("inPluginPath");
    QTest::addColumn<bool>("named");
    QTest::addColumn<QStringList>("loaded");
    const auto row = [](const char *name, const char *folder, bool named, bool inPluginPath,
                        const QStringList &loaded) {
        QTest::newRow(name) << QString::fromLatin1(folder) << inPluginPath << named << loaded;
    };
    row("where it is started", "elsewhere", true, false, {});
    row("plugins where it is started", "elsewhere/plugins", true, false, {});
    row("the install folder", "install", true, false, {});
    row("plugins in the install folder", "install/plugins", true, false, {});
    row("beside the program", "install/bin", true, false, withoutImages(kEveryKind));
    row("beside the program, not named", "install/bin", false, false, withoutImages(kUnnamed));
    row("plugins beside the program", "install/bin/plugins", true, false, kUnnamed);
    row("QT_PLUGIN_PATH", "elsewhere/of the user", true, true, kEveryKind);
    row("QT_PLUGIN_PATH, not named", "elsewhere/of the user", false, true, kUnnamed);
}

void TestAppPlugins::decoys()
{
    QFETCH(QString, folder);
    QFETCH(bool, inPluginPath);
    QFETCH(bool, named);
    QFETCH(QStringList, loaded);
    ViewerTree tree;
    folder = QDir::cleanPath(tree.path("..") + QLatin1Char('/') + folder);
    fillWithDecoys(folder);
    if (inPluginPath)
        tree.environment.insert(QStringLiteral("QT_PLUGIN_PATH"), folder);
    if (named)
        nameDecoys(tree.environment);
    tree.startBeside("server.pem", QStringLiteral("server.pem"));
    Program viewer(tree, "PXViewCertTool", {QStringLiteral("server.pem")});
    const QString window = viewer.window();
    QVERIFY(!window.isEmpty());
    QVERIFY(viewer.says(kReady));
    // The last that is asked for is the icon.
    QTRY_VERIFY_WITH_TIMEOUT(Program::icon(window).size() > 1, Program::kPatienceMs);
    QTest::qWait(100); // what it said by then is read
    QCOMPARE(loadedKinds(viewer.debugLines(), folder), loaded);
    const QStringList early = loadedKinds(untilReady(viewer), folder);
    for (const QString &kind : kUnnamed) // not before the window is there
        QVERIFY(!early.contains(kind));
}

// Whose windows may be a matter of plug-ins.
void TestAppPlugins::onOtherDisplays()
{
    ViewerTree tree;
    const QString folder = tree.path("bin/plugins");
    fillWithDecoys(folder);
    tree.environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    tree.startBeside("server.pem", QStringLiteral("server.pem"));
    Program viewer(tree, "PXViewCertTool", {QStringLiteral("server.pem")});
    QVERIFY(viewer.says(kReady));
    QCOMPARE(loadedKinds(untilReady(viewer), folder), kUnnamed);
}

// Also when the install folder has none.
void TestAppPlugins::coreWhereItIsStarted()
{
    const ViewerTree tree;
    QVERIFY(QFile::remove(tree.path("bin/PXSignatureCoreV10.so")));
    QVERIFY(QDir(tree.elsewhere()).mkdir(QStringLiteral("bin")));
    for (const char *place : {"/bin/PXSignatureCoreV10.so", "/PXSignatureCoreV10.so"})
        QVERIFY(QFile::copy(QStringLiteral(PX_BINARY_DIR "/tests/decoys/generic/decoy_generic.so"),
                            tree.elsewhere() + QLatin1String(place)));
    Program viewer(tree, "PXViewCertTool", {});
    QCOMPARE(viewer.end(), 0);
    QCOMPARE(loadedKinds(viewer.debugLines(), QString()), QStringList());
}

QTEST_GUILESS_MAIN(TestAppPlugins)
#include "tst_app_plugins.moc"
