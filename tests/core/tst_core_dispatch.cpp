#include "core/q_dispatch.h"
#include "typed_target.h"

#include <memory>
#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

class Target : public QObject
{
    Q_OBJECT

public:
    QStringList calls;

    Q_INVOKABLE QString configPath()
    {
        calls.append(QStringLiteral("configPath"));
        return QStringLiteral("/etc/orvane");
    }
    Q_INVOKABLE void logDebug(const QString &text) { calls.append(text); }
    Q_INVOKABLE qint64 createComponentObject(const QString &progId, const QString &classId)
    {
        calls.append(progId + QLatin1Char('|') + classId);
        return Q_INT64_C(0x123456789ABCDEF0);
    }
    Q_INVOKABLE QString overloaded(const QString &text) { return QLatin1String("text ") + text; }
    Q_INVOKABLE QString overloaded(int) { return QStringLiteral("number"); }
    Q_INVOKABLE QString overloaded() { return QStringLiteral("nothing"); }
    Q_INVOKABLE int sum(int first, int second = 5) { return first + second; }
    Q_INVOKABLE void makeFolder(const QString &path) { QDir().mkdir(path); }

signals:
    void announced(const QString &);

private slots:
    QString hidden() { return QStringLiteral("a private slot"); }
};

class DerivedTarget : public Target
{
    Q_OBJECT

public:
    Q_INVOKABLE QString derived() { return QStringLiteral("derived"); }
};

} // namespace

class TestCoreDispatch : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void callsWithoutLogDirectory();
    void logDirectoryUnlessSet();
    void logDirectoryThatACallMakes();
    void resultAndArguments();
    void resultNotWanted();
    void worksThroughAnArgumentList();
    void nameIsTrimmed_data();
    void nameIsTrimmed();
    void unknownName_data();
    void unknownName();
    void noTarget();
    void targetMayBeReplaced();
    void overloadsTakeTheFirst();
    void defaultArgumentsCount();
    void inheritedMethodsAreFound();
    void slotsAndSignalsAreFound();
    void unlistedParameter_data();
    void unlistedParameter();
    void traceOfACall();
    void agents();

private:
    // The log's lines without their times; each time is checked.
    QStringList trace() const;

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestCoreDispatch::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(m_directory->isValid());
}

QStringList TestCoreDispatch::trace() const
{
    QFile file(m_directory->filePath(QStringLiteral("tessera_core.log")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression form(
        QStringLiteral("^([01][0-9]|2[0-3]):[0-5][0-9]:[0-5][0-9]: (.*)$"));
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    if (!lines.takeLast().isEmpty())
        return {QStringLiteral("the last line has no end")};
    for (QString &line : lines) {
        const QRegularExpressionMatch match = form.match(line);
        line = match.hasMatch() ? match.captured(2) : QLatin1String("malformed: ") + line;
    }
    return lines;
}

void TestCoreDispatch::callsWithoutLogDirectory()
{
    Target target;
    Q_Dispatch agent(&target);
    agent.setLogDirectory(QDir(m_directory->filePath(QStringLiteral("orvane"))));
    QString result;
    agent.invokeHelper(QStringLiteral("configPath"), &result);
    QCOMPARE(result, QStringLiteral("/etc/orvane"));
    QVERIFY(QDir(m_directory->path()).isEmpty());
}

void TestCoreDispatch::logDirectoryUnlessSet()
{
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(m_directory->path()));
    QVERIFY(QDir(m_directory->path()).mkdir(QStringLiteral("orvane")));
    Q_Dispatch agent;
    qputenv("TMPDIR", before);
    agent.invokeHelper(QStringLiteral("any"), nullptr);
    QVERIFY(QFile::exists(m_directory->filePath(QStringLiteral("orvane/tessera_core.log"))));
}

void TestCoreDispatch::logDirectoryThatACallMakes()
{
    Target target;
    Q_Dispatch agent(&target);
    const QString path = m_directory->path();
    QVERIFY(QDir(path).removeRecursively());
    agent.setLogDirectory(QDir(path));
    agent.invokeHelper(QStringLiteral("makeFolder"), nullptr, &path);
    QCOMPARE(trace(), QStringList(QStringLiteral("QMetaObject::metacall call end")));
}

void TestCoreDispatch::resultAndArguments()
{
    Target target;
    Q_Dispatch agent(&target);
    qint64 result = 0;
    const QString progId = QStringLiteral("prog");
    const QString classId = QStringLiteral("class");
    agent.invokeHelper(QStringLiteral("createComponentObject"), &result, &progId, &classId);
    QCOMPARE(result, Q_INT64_C(0x123456789ABCDEF0));
    QCOMPARE(target.calls, QStringList(QStringLiteral("prog|class")));
}

void TestCoreDispatch::resultNotWanted()
{
    Target target;
    Q_Dispatch agent(&target);
    agent.invokeHelper(QStringLiteral("configPath"), nullptr);
    const QString text = QStringLiteral("text");
    agent.invokeHelper(QStringLiteral("logDebug"), nullptr, &text);
    QCOMPARE(target.calls, QStringList({QStringLiteral("configPath"), text}));
}

void TestCoreDispatch::worksThroughAnArgumentList()
{
    struct Caller
    {
        static void call(Q_Dispatch &agent, const char *name, void *result, ...)
        {
            va_list args;
            va_start(args, result);
            agent.invokeHelperV(QLatin1String(name), result, args);
            va_end(args);
        }
    };
    Target target;
    Q_Dispatch agent(&target);
    int result = 0;
    int first = 40;
    int second = 2;
    Caller::call(agent, "sum", &result, &first, &second);
    QCOMPARE(result, 42);
}

void TestCoreDispatch::nameIsTrimmed_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("as it is") << QStringLiteral("logDebug");
    QTest::newRow("blanks around") << QStringLiteral(" logDebug ");
    QTest::newRow("any white space") << QStringLiteral("\t\n logDebug\r\n ");
}

void TestCoreDispatch::nameIsTrimmed()
{
    QFETCH(QString, name);
    Target target;
    Q_Dispatch agent(&target);
    const QString text = QStringLiteral("text");
    agent.invokeHelper(name, nullptr, &text);
    QCOMPARE(target.calls, QStringList(text));
}

void TestCoreDispatch::unknownName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a beginning of a name") << QStringLiteral("log");
    QTest::newRow("more than a name") << QStringLiteral("logDebugs");
    QTest::newRow("the end of a name") << QStringLiteral("Debug");
    QTest::newRow("another case") << QStringLiteral("logdebug");
    QTest::newRow("a blank within") << QStringLiteral("log Debug");
    QTest::newRow("a whole signature") << QStringLiteral("logDebug(QString)");
    QTest::newRow("with the bracket") << QStringLiteral("logDebug(");
    QTest::newRow("outside ASCII") << QString::fromUtf8("證書");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << QString(QLatin1String(""));
    QTest::newRow("blanks") << QStringLiteral("   ");
}

void TestCoreDispatch::unknownName()
{
    QFETCH(QString, name);
    Target target;
    Q_Dispatch agent(&target);
    agent.setLogDirectory(QDir(m_directory->path()));
    QString result = QStringLiteral("preset");
    const QString text = QStringLiteral("text");
    agent.invokeHelper(name, &result, &text);
    QCOMPARE(result, QStringLiteral("preset"));
    QVERIFY(target.calls.isEmpty());
    QCOMPARE(trace(), QStringList({QLatin1String("methodName=") + name,
                                   QStringLiteral("QTCORE____ERROR: findMethodIndex fail!!!cnt")}));
}

void TestCoreDispatch::noTarget()
{
    Q_Dispatch agent;
    QVERIFY(!agent.target());
    agent.setLogDirectory(QDir(m_directory->path()));
    QString result = QStringLiteral("preset");
    agent.invokeHelper(QStringLiteral("configPath"), &result);
    QCOMPARE(result, QStringLiteral("preset"));
    QCOMPARE(trace(), QStringList(QStringLiteral("methodName=configPath")));
}

void TestCoreDispatch::targetMayBeReplaced()
{
    Target first;
    DerivedTarget second;
    Q_Dispatch agent(&first);
    QString result;
    agent.invokeHelper(QStringLiteral("derived"), &result);
    QCOMPARE(result, QString());
    agent.setTarget(&second);
    QCOMPARE(agent.target(), &second);
    agent.invokeHelper(QStringLiteral("derived"), &result);
    QCOMPARE(result, QStringLiteral("derived"));
}

void TestCoreDispatch::overloadsTakeTheFirst()
{
    Target target;
    Q_Dispatch agent(&target);
    QString result;
    const QString text = QStringLiteral("argument");
    agent.invokeHelper(QStringLiteral("overloaded"), &result, &text);
    QCOMPARE(result, QStringLiteral("text argument"));
}

void TestCoreDispatch::defaultArgumentsCount()
{
    // The form with all parameters comes first, so all of them must be given.
    Target target;
    Q_Dispatch agent(&target);
    agent.setLogDirectory(QDir(m_directory->path()));
    int result = 0;
    int first = 1;
    int second = 2;
    agent.invokeHelper(QStringLiteral("sum"), &result, &first, &second);
    QCOMPARE(result, 3);
    QVERIFY(trace().contains(QStringLiteral("methodName=sum::paramCount=2")));
}

void TestCoreDispatch::inheritedMethodsAreFound()
{
    DerivedTarget target;
    Q_Dispatch agent(&target);
    QString result;
    agent.invokeHelper(QStringLiteral("configPath"), &result);
    QCOMPARE(result, QStringLiteral("/etc/orvane"));
    // What every object has comes first of all.
    QSignalSpy destroyed(&target, &QObject::destroyed);
    QObject *argument = &target;
    agent.invokeHelper(QStringLiteral("destroyed"), nullptr, &argument);
    QCOMPARE(destroyed.size(), 1);
    QCOMPARE(destroyed.at(0).at(0).value<QObject *>(), argument);
}

void TestCoreDispatch::slotsAndSignalsAreFound()
{
    Target target;
    Q_Dispatch agent(&target);
    QString result;
    agent.invokeHelper(QStringLiteral("hidden"), &result);
    QCOMPARE(result, QStringLiteral("a private slot"));
    QSignalSpy announced(&target, &Target::announced);
    agent.invokeHelper(QStringLiteral("announced"), nullptr, &result);
    QCOMPARE(announced.size(), 1);
    QCOMPARE(announced.at(0).at(0).toString(), result);
}

void TestCoreDispatch::unlistedParameter_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QStringList>("types");
    QTest::newRow("a structure") << QStringLiteral("takeUnlisted")
                                 << QStringList(QStringLiteral("Unlisted"));
    QTest::newRow("a list") << QStringLiteral("takeQObjectList")
                            << QStringList(QStringLiteral("QObjectList"));
    QTest::newRow("after good ones")
        << QStringLiteral("takeLastUnlisted")
        << QStringList(
               {QStringLiteral("int"), QStringLiteral("QString"), QStringLiteral("Unlisted")});
}

void TestCoreDispatch::unlistedParameter()
{
    QFETCH(QString, method);
    QFETCH(QStringList, types);
    TypedTarget target;
    Q_Dispatch agent(&target);
    agent.setLogDirectory(QDir(m_directory->path()));
    int result = 7;
    int first = 1;
    QString second;
    Unlisted third;
    agent.invokeHelper(method, &result, &first, &second, &third);
    QVERIFY(!target.received.has_value());
    QCOMPARE(result, 7);
    QStringList expected = {
        QLatin1String("methodName=") + method,
        QStringLiteral("methodName=%1::paramCount=%2").arg(method).arg(types.size())};
    for (const QString &type : qAsConst(types))
        expected.append(QLatin1String("paramTypeName=") + type);
    expected.append(QString::fromUtf8("参数错误"));
    QCOMPARE(trace(), expected);
}

void TestCoreDispatch::traceOfACall()
{
    Target target;
    Q_Dispatch agent(&target);
    agent.setLogDirectory(QDir(m_directory->path()));
    qint64 result = 0;
    const QString text = QStringLiteral("text");
    agent.invokeHelper(QStringLiteral("createComponentObject"), &result, &text, &text);
    agent.invokeHelper(QStringLiteral("configPath"), nullptr);
    QCOMPARE(trace(), QStringList({QStringLiteral("methodName=createComponentObject"),
                                   QStringLiteral("methodName=createComponentObject::paramCount=2"),
                                   QStringLiteral("paramTypeName=QString"),
                                   QStringLiteral("paramTypeName=QString"),
                                   QStringLiteral("QMetaObject::metacall call in"),
                                   QStringLiteral("QMetaObject::metacall call end"),
                                   QStringLiteral("methodName=configPath"),
                                   QStringLiteral("methodName=configPath::paramCount=0"),
                                   QStringLiteral("QMetaObject::metacall call in"),
                                   QStringLiteral("QMetaObject::metacall call end")}));
}

void TestCoreDispatch::agents()
{
    Target target;
    {
        PXSignatureCoreAgent core(&target);
        PXSignatureManagerAgent manager;
        QCOMPARE(core.target(), &target);
        QVERIFY(!manager.target());
        const QObject *object = &core;
        QVERIFY(qobject_cast<const Q_Dispatch *>(object));
        QVERIFY(!qobject_cast<const Q_ComponentLib *>(object));
        object = &manager;
        QVERIFY(qobject_cast<const Q_ComponentLib *>(object));
        manager.setTarget(&target);
        QString result;
        manager.invokeHelper(QStringLiteral("configPath"), &result);
        QCOMPARE(result, QStringLiteral("/etc/orvane"));
    }
    // They go through the virtual destructor, and leave their target alone.
    QSignalSpy destroyed(&target, &QObject::destroyed);
    std::unique_ptr<QObject> agent = std::make_unique<PXSignatureCoreAgent>(&target);
    QSignalSpy agentDestroyed(agent.get(), &QObject::destroyed);
    agent.reset();
    QCOMPARE(agentDestroyed.size(), 1);
    QCOMPARE(destroyed.size(), 0);
}

QTEST_GUILESS_MAIN(TestCoreDispatch)
#include "tst_core_dispatch.moc"
