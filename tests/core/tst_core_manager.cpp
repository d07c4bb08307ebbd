#include "tests/support/install_tree.h"

#include <QTest>

namespace {

const char *const kPathLine = "Path = %TREE% \n";

QString fabricatedCore(const QString &kind)
{
    return QStringLiteral(PX_BINARY_DIR "/tests/cores/%1/PXSignatureCoreV10.so").arg(kind);
}

} // namespace

/// Each case is a process of its own in an install tree of its own.
class TestCoreManager : public QObject
{
    Q_OBJECT

private slots:
    void cases_data();
    void cases();
    void coreWithoutTheComponent();
    void debugStreamNamesThePath();
    void pathOutsideAscii();
    void startedThroughALink();
    void libraryThatIsNone_data();
    void libraryThatIsNone();
    void libraryIsTakenFromTheWorkingDirectory();
    void traceOfStartUp();
    void managerIsThereBeforeItsComponent();
};

void TestCoreManager::cases_data()
{
    QTest::addColumn<QString>("core"); // empty: no library
    QTest::addColumn<QString>("words");
    QTest::addColumn<QByteArray>("output"); // without the first "Path" line

    QTest::newRow("no library")
        << QString() << QStringLiteral("init agent mapped cwd path start")
        << QByteArray("init no\nagent null\nmapped no\ncwd %TREE%\npath %TREE%\nstart %START%\n");
    QTest::newRow("no library: calls do nothing")
        << QString()
        << QStringLiteral("config install debug error progress component destroy agent")
        << QByteArray("config \ninstall \ncomponent null\nagent null\n");
    QTest::newRow("no library: signature manager")
        << QString() << QStringLiteral("signatureManager")
        << QByteArray("createComponentObject = 1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013  fail"
                      "manager \"Agent\" of null\nthe same yes\n");

    QTest::newRow("core")
        << QStringLiteral("full") << QStringLiteral("agent target mapped cwd path start")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \nagent \"Agent\"\n"
                      "target yes\nmapped yes\ncwd %TREE%\npath %TREE%\nstart %START%\n");
    QTest::newRow("core: a second init loads nothing again")
        << QStringLiteral("full") << QStringLiteral("init init agent")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                      "init yes\ninit yes\nagent \"Agent\"\n");
    QTest::newRow("core: paths") << QStringLiteral("full") << QStringLiteral("config install")
                                 << QByteArray(
                                        "core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                                        "config /the/configuration\ninstall /the/installation\n");
    QTest::newRow("core: messages")
        << QStringLiteral("full") << QStringLiteral("debug error progress")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                      "core: logDebug [Debug:51]訊息 %1 \ncore: logError [Error:56]message %2 \n"
                      "core: logDebug [open:40] start \n");
    QTest::newRow("core: components")
        << QStringLiteral("full") << QStringLiteral("component unknown")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                      "core: createComponentObject prog class\ncomponent \"component class\"\n"
                      "core: createComponentObject unknown \ncomponent null\n");
    QTest::newRow("core: signature manager")
        << QStringLiteral("full") << QStringLiteral("signatureManager")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                      "core: createComponentObject PXSIGNATUREMANAGER.PXSignatureManager.1 "
                      "1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013\n"
                      "manager \"Agent\" of \"component 1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013\"\n"
                      "the same yes\n");
    QTest::newRow("core: destroy does not call PX_Uninit and leaves the core alone")
        << QStringLiteral("full") << QStringLiteral("destroy agent mapped config destroy")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                      "agent null\nmapped yes\nconfig \n");
    QTest::newRow("core: the agent goes with the core")
        << QStringLiteral("full") << QStringLiteral("destroyAgent")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \nagent gone yes\n");
    QTest::newRow("core: the manager's end is the core's")
        << QStringLiteral("full") << QStringLiteral("signatureManager delete agent mapped path")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                      "core: createComponentObject PXSIGNATUREMANAGER.PXSignatureManager.1 "
                      "1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013\n"
                      "manager \"Agent\" of \"component 1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013\"\n"
                      "the same yes\nmanager gone yes\nagent null\nmapped yes\nPath = %TREE% \n"
                      "core: PX_Init  \ncore: PX_GetSignatureCore null \npath %TREE%\n");
    QTest::newRow("core: another manager's end takes the core along, and not the manager")
        << QStringLiteral("full") << QStringLiteral("another agent")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \nPath = %TREE% \n"
                      "the same yes\nagent null\n");
    QTest::newRow("core: may be had again after destroy")
        << QStringLiteral("full") << QStringLiteral("destroy init agent")
        << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                      "core: PX_Init  \ncore: PX_GetSignatureCore null \n"
                      "init yes\nagent \"Agent\"\n");

    for (const char *missing : {"without_init", "without_uninit", "without_get_signature_core"}) {
        QTest::newRow(missing) << QString(QLatin1String(missing))
                               << QStringLiteral("agent mapped init mapped cwd config")
                               << QByteArray("agent null\nmapped no\ninit no\nmapped no\n"
                                             "cwd %TREE%\nconfig \n");
    }
    // Once it was initialised, only the handle goes; it may be tried again.
    for (const char *failing : {"failing_status", "null_object"}) {
        QTest::newRow(failing)
            << QString(QLatin1String(failing))
            << QStringLiteral("agent mapped init agent config cwd")
            << QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \nagent null\n"
                          "mapped yes\ncore: PX_Init  \ncore: PX_GetSignatureCore null \n"
                          "init no\nagent null\nconfig \ncwd %TREE%\n");
    }
}

void TestCoreManager::cases()
{
    QFETCH(QString, core);
    QFETCH(QString, words);
    QFETCH(QByteArray, output);
    const InstallTree tree;
    QVERIFY(tree.addProgram("core_probe"));
    if (!core.isEmpty())
        QVERIFY(tree.add(fabricatedCore(core), "bin/PXSignatureCoreV10.so"));
    const QStringList arguments = (QLatin1String("manager ") + words).split(QLatin1Char(' '));
    const InstallTree::Outcome outcome = tree.run("core_probe", arguments);
    QVERIFY2(outcome.ended, outcome.errors.constData());
    QCOMPARE(outcome.status, 0);
    QByteArray expected = kPathLine + output;
    expected.replace("%TREE%", tree.path().toUtf8());
    expected.replace("%START%", QFileInfo(tree.elsewhere()).canonicalFilePath().toUtf8());
    QCOMPARE(QString::fromUtf8(outcome.output), QString::fromUtf8(expected));
    QVERIFY(!QDir(tree.temporary() + QLatin1String("/orvane")).exists());
}

void TestCoreManager::coreWithoutTheComponent()
{
    InstallTree tree;
    QVERIFY(tree.addProgram("core_probe"));
    QVERIFY(tree.add(fabricatedCore(QStringLiteral("full")), "bin/PXSignatureCoreV10.so"));
    tree.environment.insert(QStringLiteral("NO_COMPONENT"), QStringLiteral("1"));
    const InstallTree::Outcome outcome =
        tree.run("core_probe", {QStringLiteral("manager"), QStringLiteral("signatureManager")});
    QVERIFY(outcome.output.endsWith(
        "core: createComponentObject PXSIGNATUREMANAGER.PXSignatureManager.1 "
        "1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013\n"
        "createComponentObject = 1F3A9C52-7B4D-4E21-A8C6-2D90E5B7F013  fail"
        "manager \"Agent\" of null\nthe same yes\n"));
}

void TestCoreManager::debugStreamNamesThePath()
{
    const InstallTree tree;
    QVERIFY(tree.addProgram("core_probe"));
    const InstallTree::Outcome outcome = tree.run("core_probe", {QStringLiteral("manager")});
    QCOMPARE(outcome.errors, "path: \"" + tree.path().toUtf8() + "\"\n");
}

void TestCoreManager::pathOutsideAscii()
{
    const InstallTree tree(QString::fromUtf8("證書 тест"));
    QVERIFY(tree.addProgram("core_probe"));
    QVERIFY(tree.add(fabricatedCore(QStringLiteral("full")), "bin/PXSignatureCoreV10.so"));
    const InstallTree::Outcome outcome =
        tree.run("core_probe", {QStringLiteral("manager"), QStringLiteral("agent")});
    QCOMPARE(outcome.output, "Path = " + tree.path().toUtf8() +
                                 " \ncore: PX_Init  \ncore: PX_GetSignatureCore null \n"
                                 "agent \"Agent\"\n");
}

void TestCoreManager::startedThroughALink()
{
    // The install path is where the executable really lies.
    const InstallTree tree;
    QVERIFY(tree.addProgram("core_probe"));
    const InstallTree links;
    QVERIFY(QFile::link(tree.path("bin/core_probe"), links.path("bin/core_probe")));
    const InstallTree::Outcome outcome =
        links.run("core_probe", {QStringLiteral("path"), QStringLiteral("cwd")});
    const QByteArray path = tree.path().toUtf8();
    QCOMPARE(outcome.output, "Path = " + path + " \npath " + path + "\ncwd " + path + "\n");
}

void TestCoreManager::libraryThatIsNone_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("this is no library\n");
    QTest::newRow("cut short") << QByteArray("\x7F"
                                             "ELF\2\1\1\0",
                                             8);
}

void TestCoreManager::libraryThatIsNone()
{
    QFETCH(QByteArray, content);
    const InstallTree tree;
    QVERIFY(tree.addProgram("core_probe"));
    QVERIFY(tree.write("bin/PXSignatureCoreV10.so", content));
    const InstallTree::Outcome outcome = tree.run(
        "core_probe", {QStringLiteral("manager"), QStringLiteral("init"), QStringLiteral("agent")});
    QVERIFY(outcome.ended);
    // Nothing is reported.
    QCOMPARE(outcome.output, "Path = " + tree.path().toUtf8() + " \ninit no\nagent null\n");
    QCOMPARE(outcome.errors, "path: \"" + tree.path().toUtf8() + "\"\n");
}

void TestCoreManager::libraryIsTakenFromTheWorkingDirectory()
{
    // Without a manager nothing has changed the working directory.
    const InstallTree tree;
    QVERIFY(tree.addProgram("core_probe"));
    QVERIFY(tree.add(fabricatedCore(QStringLiteral("full")), "bin/PXSignatureCoreV10.so"));
    InstallTree::Outcome outcome = tree.run("core_probe", {QStringLiteral("init")});
    QCOMPARE(outcome.output, QByteArray("init no\n"));
    QVERIFY(QDir(tree.elsewhere()).mkdir(QStringLiteral("bin")));
    QVERIFY(QFile::copy(fabricatedCore(QStringLiteral("full")),
                        tree.elsewhere() + QLatin1String("/bin/PXSignatureCoreV10.so")));
    outcome = tree.run("core_probe", {QStringLiteral("init")});
    QCOMPARE(outcome.output,
             QByteArray("core: PX_Init  \ncore: PX_GetSignatureCore null \ninit yes\n"));
}

void TestCoreManager::traceOfStartUp()
{
    const InstallTree tree;
    QVERIFY(tree.addProgram("core_probe"));
    QVERIFY(tree.add(fabricatedCore(QStringLiteral("full")), "bin/PXSignatureCoreV10.so"));
    QVERIFY(QDir(tree.temporary()).mkdir(QStringLiteral("orvane")));
    const InstallTree::Outcome outcome =
        tree.run("core_probe",
                 {QStringLiteral("manager"), QStringLiteral("config"), QStringLiteral("debug")});
    QVERIFY(outcome.ended);
    QFile log(tree.temporary() + QLatin1String("/orvane/tessera_core.log"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QByteArrayList lines = log.readAll().split('\n');
    constexpr int kTimeSize = 10; // with the colon and the blank
    for (QByteArray &line : lines)
        line = line.mid(kTimeSize);
    QCOMPARE(lines,
             QByteArrayList({"methodName=configPath", "methodName=configPath::paramCount=0",
                             "QMetaObject::metacall call in", "QMetaObject::metacall call end",
                             "methodName=logDebug", "methodName=logDebug::paramCount=1",
                             "paramTypeName=QString", "QMetaObject::metacall call in",
                             "QMetaObject::metacall call end", ""}));
}

// A core that moves the temporary directory when it is asked for the component: the manager's trace
// stays where it was.
void TestCoreManager::managerIsThereBeforeItsComponent()
{
    InstallTree tree;
    QVERIFY(tree.addProgram("core_probe"));
    QVERIFY(tree.add(fabricatedCore(QStringLiteral("full")), "bin/PXSignatureCoreV10.so"));
    QVERIFY(QDir().mkpath(tree.temporary() + QLatin1String("/orvane")));
    QVERIFY(QDir().mkpath(tree.elsewhere() + QLatin1String("/orvane")));
    tree.environment.insert(QStringLiteral("NEXT_TMPDIR"), tree.elsewhere());
    const InstallTree::Outcome outcome =
        tree.run("core_probe", {QStringLiteral("manager"), QStringLiteral("callManager")});
    QVERIFY(outcome.ended);
    QFile log(tree.temporary() + QLatin1String("/orvane/tessera_core.log"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QVERIFY(log.readAll().contains("methodName=any\n"));
}

QTEST_GUILESS_MAIN(TestCoreManager)
#include "tst_core_manager.moc"
