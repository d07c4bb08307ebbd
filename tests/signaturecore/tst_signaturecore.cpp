#include "tests/support/install_tree.h"

#include <memory>
#include <QLibrary>
#include <QTest>

namespace {

constexpr const char *kCore = PX_BINARY_DIR "/bin/PXSignatureCoreV10.so";
constexpr const char *kFile = "settings/PXClientConfig.dll";

// A tree with the default core, as the viewer is installed; nothing in the environment chooses.
std::unique_ptr<InstallTree> treeWithCore()
{
    auto tree = std::make_unique<InstallTree>();
    for (const char *name : {"PX_CONFIG_PATH", "XDG_CONFIG_HOME", "LANGUAGE", "LC_ALL",
                             "LC_MESSAGES", "LANG", "QT_LOGGING_RULES", "QT_LOGGING_CONF"})
        tree->environment.remove(QLatin1String(name));
    return tree->addProgram("core_probe") &&
                   tree->add(QLatin1String(kCore), "bin/PXSignatureCoreV10.so")
               ? std::move(tree)
               : nullptr;
}

// The last line of what the probe prints.
QByteArray answer(const InstallTree &tree, const char *word)
{
    const InstallTree::Outcome outcome =
        tree.run("core_probe", {QStringLiteral("manager"), QLatin1String(word)});
    return outcome.output.trimmed().split('\n').constLast();
}

} // namespace

class TestSignatureCore : public QObject
{
    Q_OBJECT

private slots:
    void exportsTheEntryPoints();
    void givesTheSameObjectEachTime();
    void uninitTakesNothingAway();
    void offersTheMethods_data();
    void offersTheMethods();
    void knowsNoComponent();
    void installPathIsTheParent();
    void configPathFromTheEnvironment_data();
    void configPathFromTheEnvironment();
    void configPathOfTheUser_data();
    void configPathOfTheUser();
    void configPathForTheLanguage_data();
    void configPathForTheLanguage();
    void logIsOffUnlessSwitchedOn_data();
    void logIsOffUnlessSwitchedOn();
};

void TestSignatureCore::exportsTheEntryPoints()
{
    QLibrary library{QLatin1String(kCore)};
    for (const char *name : {"PX_Init", "PX_Uninit", "PX_GetSignatureCore"})
        QVERIFY2(library.resolve(name), name);
}

void TestSignatureCore::givesTheSameObjectEachTime()
{
    QLibrary library{QLatin1String(kCore)};
    using GetCore = int (*)(QObject **);
    const auto getCore = reinterpret_cast<GetCore>(library.resolve("PX_GetSignatureCore"));
    QObject *first = nullptr;
    QObject *second = nullptr;
    QCOMPARE(getCore(&first), 0);
    QCOMPARE(getCore(&second), 0);
    QVERIFY(first);
    QCOMPARE(first, second);
}

// The suite's programs never call it; what another calls must leave the object as it is.
void TestSignatureCore::uninitTakesNothingAway()
{
    QLibrary library{QLatin1String(kCore)};
    using Call = void (*)();
    using GetCore = int (*)(QObject **);
    const auto getCore = reinterpret_cast<GetCore>(library.resolve("PX_GetSignatureCore"));
    for (const char *name : {"PX_Init", "PX_Uninit"})
        reinterpret_cast<Call>(library.resolve(name))();
    QObject *core = nullptr;
    QCOMPARE(getCore(&core), 0);
    QString path;
    QVERIFY(QMetaObject::invokeMethod(core, "installPath", Q_RETURN_ARG(QString, path)));
    QCOMPARE(path,
             QFileInfo(QLatin1String(kCore)).dir().absolutePath().section(QLatin1Char('/'), 0, -2));
}

void TestSignatureCore::offersTheMethods_data()
{
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<QByteArray>("type");
    QTest::newRow("configPath") << QByteArray("configPath()") << QByteArray("QString");
    QTest::newRow("installPath") << QByteArray("installPath()") << QByteArray("QString");
    QTest::newRow("logDebug") << QByteArray("logDebug(QString)") << QByteArray("void");
    QTest::newRow("logError") << QByteArray("logError(QString)") << QByteArray("void");
    QTest::newRow("createComponentObject")
        << QByteArray("createComponentObject(QString,QString)") << QByteArray("qlonglong");
}

void TestSignatureCore::offersTheMethods()
{
    QFETCH(QByteArray, signature);
    QFETCH(QByteArray, type);
    QLibrary library{QLatin1String(kCore)};
    using GetCore = int (*)(QObject **);
    const auto getCore = reinterpret_cast<GetCore>(library.resolve("PX_GetSignatureCore"));
    QObject *core = nullptr;
    QCOMPARE(getCore(&core), 0);
    const int index = core->metaObject()->indexOfMethod(signature.constData());
    QVERIFY(index >= 0);
    QCOMPARE(QByteArray(core->metaObject()->method(index).typeName()), type);
}

void TestSignatureCore::knowsNoComponent()
{
    const auto tree = treeWithCore();
    QVERIFY(tree);
    QCOMPARE(answer(*tree, "component"), QByteArray("component null"));
}

void TestSignatureCore::installPathIsTheParent()
{
    const auto tree = treeWithCore();
    QVERIFY(tree);
    QCOMPARE(answer(*tree, "install"), "install " + tree->path().toUtf8());
}

void TestSignatureCore::configPathFromTheEnvironment_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected"); // below the tree unless absolute
    QTest::newRow("set") << QStringLiteral("/somewhere/else") << QStringLiteral("/somewhere/else");
    QTest::newRow("outside ASCII") << QString::fromUtf8("/證書") << QString::fromUtf8("/證書");
    QTest::newRow("empty") << QString(QLatin1String("")) << QStringLiteral("settings/EN");
    QTest::newRow("not set") << QString() << QStringLiteral("settings/EN");
}

void TestSignatureCore::configPathFromTheEnvironment()
{
    QFETCH(QString, value);
    QFETCH(QString, expected);
    const auto tree = treeWithCore();
    QVERIFY(tree);
    tree->environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    if (!value.isNull())
        tree->environment.insert(QStringLiteral("PX_CONFIG_PATH"), value);
    const QString path = QDir(tree->path()).absoluteFilePath(expected);
    QCOMPARE(answer(*tree, "config"), "config " + path.toUtf8());
}

void TestSignatureCore::configPathOfTheUser_data()
{
    QTest::addColumn<QString>("configHome"); // "@" stands for the tree; null: not set
    QTest::addColumn<QString>("file");       // the configuration that the user has
    QTest::addColumn<QString>("expected");
    const QString shipped = QStringLiteral("@/settings/EN");
    const QString own = QStringLiteral("@/home/.config/orvane/");
    const QString other = QStringLiteral("@/xdg/orvane/");
    const QString file = QLatin1String(kFile);

    QTest::newRow("not set, has one") << QString() << own + file << own.chopped(1);
    QTest::newRow("not set, has none") << QString() << QString() << shipped;
    QTest::newRow("set, has one") << QStringLiteral("@/xdg") << other + file << other.chopped(1);
    QTest::newRow("set, has one elsewhere") << QStringLiteral("@/xdg") << own + file << shipped;
    QTest::newRow("set, has the folder alone")
        << QStringLiteral("@/xdg") << other + QLatin1String("settings/other") << shipped;
    QTest::newRow("empty") << QString(QLatin1String("")) << own + file << own.chopped(1);
    // The install folder is the working directory: a relative path would lead there.
    QTest::newRow("relative") << QStringLiteral("xdg") << other + file << shipped;
    QTest::newRow("relative, has one") << QStringLiteral("xdg") << own + file << own.chopped(1);
}

void TestSignatureCore::configPathOfTheUser()
{
    QFETCH(QString, configHome);
    QFETCH(QString, file);
    QFETCH(QString, expected);
    const auto tree = treeWithCore();
    QVERIFY(tree);
    tree->environment.insert(QStringLiteral("HOME"), tree->path("home"));
    if (!configHome.isNull())
        tree->environment.insert(QStringLiteral("XDG_CONFIG_HOME"),
                                 configHome.replace(QLatin1Char('@'), tree->path()));
    if (!file.isEmpty())
        QVERIFY(tree->write(file.mid(2).toLatin1().constData(), "<any/>"));
    expected.replace(QLatin1Char('@'), tree->path());
    QCOMPARE(answer(*tree, "config"), "config " + expected.toUtf8());
}

void TestSignatureCore::configPathForTheLanguage_data()
{
    QTest::addColumn<QStringList>("variables");
    QTest::addColumn<QString>("section");
    const auto row = [](const char *variables, const char *section) {
        QTest::newRow(variables[0] == '\0' ? "nothing set" : variables)
            << QString(QLatin1String(variables)).split(QLatin1Char(' '), Qt::SkipEmptyParts)
            << QString(QLatin1String(section));
    };
    row("", "EN");
    row("LC_ALL=C", "EN");
    row("LC_ALL=C.UTF-8", "EN");
    row("LC_ALL=POSIX", "EN");
    row("LC_ALL=en_US.UTF-8", "EN");
    row("LC_ALL=de_DE.UTF-8", "EN");
    row("LC_ALL=ja_JP.UTF-8", "EN");
    row("LC_ALL=ko_KR.UTF-8", "EN");
    row("LC_ALL=xx_nonsense", "EN");
    row("LC_ALL=zh_CN.UTF-8", "CN");
    row("LC_ALL=zh_CN.GB18030", "CN");
    row("LC_ALL=zh_SG.UTF-8", "CN");
    row("LC_ALL=zh_MY", "CN");
    row("LC_ALL=zh", "CN");
    row("LC_ALL=zh_Hans", "CN");
    row("LC_ALL=zh-Hans", "CN");
    row("LC_ALL=zh_Hans_HK", "CN");
    row("LC_ALL=zh_TW.UTF-8", "TW");
    row("LC_ALL=zh_TW.Big5", "TW");
    row("LC_ALL=zh_TW.UTF-8@stroke", "TW");
    row("LC_ALL=zh_HK.UTF-8", "TW");
    row("LC_ALL=zh_MO", "TW");
    row("LC_ALL=zh_Hant", "TW");
    row("LC_ALL=zh-Hant", "TW");
    row("LC_ALL=zh_Hant_CN", "TW");
    row("LC_ALL=yue_HK.UTF-8", "TW");
    row("LANG=zh_TW.UTF-8", "TW");
    row("LANG=en_US.UTF-8 LC_MESSAGES=zh_TW.UTF-8", "TW");
    row("LANG=zh_TW.UTF-8 LC_MESSAGES=en_US.UTF-8", "EN");
    row("LANG=zh_TW.UTF-8 LC_MESSAGES=zh_TW.UTF-8 LC_ALL=de_DE.UTF-8", "EN");
    row("LANG=de_DE.UTF-8 LC_TIME=zh_CN.UTF-8 LC_NUMERIC=zh_CN.UTF-8", "EN");
    row("LANG=zh_CN.UTF-8 LC_TIME=de_DE.UTF-8 LC_NUMERIC=de_DE.UTF-8", "CN");
    row("LANG=en_US.UTF-8 LANGUAGE=zh_TW:zh:en", "TW");
    row("LANG=zh_TW.UTF-8 LANGUAGE=zh_CN:zh:en", "CN");
    row("LANG=de_DE.UTF-8 LANGUAGE=de:zh_TW", "EN");
}

void TestSignatureCore::configPathForTheLanguage()
{
    QFETCH(QStringList, variables);
    QFETCH(QString, section);
    const auto tree = treeWithCore();
    QVERIFY(tree);
    for (const QString &variable : qAsConst(variables))
        tree->environment.insert(variable.section(QLatin1Char('='), 0, 0),
                                 variable.section(QLatin1Char('='), 1));
    QCOMPARE(QString::fromUtf8(answer(*tree, "config")),
             QLatin1String("config ") + tree->path("settings/") + QLatin1Char('/') + section);
}

void TestSignatureCore::logIsOffUnlessSwitchedOn_data()
{
    QTest::addColumn<QString>("rules");
    QTest::addColumn<bool>("debug");
    QTest::addColumn<bool>("error");
    QTest::newRow("no rules") << QString() << false << false;
    QTest::newRow("another category") << QStringLiteral("orvane.other=true") << false << false;
    QTest::newRow("on") << QStringLiteral("orvane.core=true") << true << true;
    QTest::newRow("debug") << QStringLiteral("orvane.core.debug=true") << true << false;
    QTest::newRow("errors") << QStringLiteral("orvane.core.critical=true") << false << true;
}

void TestSignatureCore::logIsOffUnlessSwitchedOn()
{
    QFETCH(QString, rules);
    QFETCH(bool, debug);
    QFETCH(bool, error);
    const auto tree = treeWithCore();
    QVERIFY(tree);
    tree->environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    tree->environment.insert(QStringLiteral("QT_LOGGING_RULES"), rules);
    const InstallTree::Outcome outcome =
        tree->run("core_probe",
                  {QStringLiteral("manager"), QStringLiteral("debug"), QStringLiteral("error")});
    QVERIFY(outcome.ended);
    QByteArray expected = "path: \"" + tree->path().toUtf8() + "\"\n";
    if (debug)
        expected += "orvane.core: [Debug:51]訊息 %1\n";
    if (error)
        expected += "orvane.core: [Error:56]message %2\n";
    QCOMPARE(QString::fromUtf8(outcome.errors), QString::fromUtf8(expected));
    QVERIFY(!outcome.output.contains("message"));
}

QTEST_GUILESS_MAIN(TestSignatureCore)
#include "tst_signaturecore.moc"
