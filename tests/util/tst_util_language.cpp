#include "tests/support/install_tree.h"
#include "tests/support/message_recorder.h"
#include "tests/util/utf8_text.h"
#include "util/c_language.h"
#include "util/c_util.h"
#include "util/file_descriptor.h"
#include "util/text_keys.h"

#include <fcntl.h>
#include <QElapsedTimer>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char *kConfigurationFile = "settings/PXClientConfig.dll";
constexpr const char *kLanguageFile = "PXViewCertTool_Lang.ini";

QByteArray configuration(const QByteArray &code)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<PXClientConfig>\n <Language>\n  "
           "<PXClient>" +
           code + "</PXClient>\n </Language>\n</PXClientConfig>\n";
}

} // namespace

class TestUtilLanguage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void currentLanguage_data();
    void currentLanguage();
    void currentLanguageLeavesItsOutput();

    void section_data();
    void section();
    void missingConfiguration_data();
    void missingConfiguration();
    void pipeAsConfiguration();
    void configurationIsReadAgain();
    void longConfiguration_data();
    void longConfiguration();
    void debugStreamTellsTheSteps_data();
    void debugStreamTellsTheSteps();

    void oneObject();
    void fileName();
    void lookups();
    void lookupsFollowTheFile();
    void missingLanguageFile();
    void keyValueOfAFile();

    void shippedConfigurations_data();
    void shippedConfigurations();
    void withoutCore();
    void withCore_data();
    void withCore();

private:
    // A table whose suite's configuration is `content`.
    c_language table(const QByteArray &content) const
    {
        m_tree->write(kConfigurationFile, content);
        return c_language();
    }
    // The name by which tables, which look below the install path, find the tree's file. It goes
    // down from where the folder really lies, since it may be a link.
    QString named(const char *relative) const
    {
        const QDir languages(c_language::GetLangPtr()->languageFilePath(QString()));
        return QDir(languages.canonicalPath()).relativeFilePath(m_tree->path(relative));
    }

    QScopedPointer<InstallTree> m_tree;
};

void TestUtilLanguage::initTestCase()
{
    QVERIFY(QDir(c_language::GetLangPtr()->languageFilePath(QString())).exists());
}

void TestUtilLanguage::init()
{
    m_tree.reset(new InstallTree);
    qputenv("PX_CONFIG_PATH", QFile::encodeName(m_tree->path()));
}

void TestUtilLanguage::currentLanguage_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QString>("code");
    const auto row = [](const char *name, const QByteArray &xml, const char *code) {
        QTest::newRow(name) << xml << (code != nullptr) << QString::fromLatin1(code);
    };
    constexpr const char *kNone = nullptr;
    row("as it should be", configuration("GBC_"), "GBC_");
    row("any root", "<x><Language><PXClient>ENG_</PXClient></Language></x>", "ENG_");
    row("any text", configuration("anything"), "anything");
    row("blanks stay", configuration(" GBC_ "), " GBC_ ");
    row("Latin-1", configuration("\xC3\xA9"), "\xC3\xA9");
    row("entities", configuration("&lt;&#65;&amp;"), "<A&");
    row("CDATA", configuration("<![CDATA[GBB_]]>"), "GBB_");
    row("pieces around a comment", configuration("GB<!-- x -->B_"), "GBB_");
    row("a comment before", configuration("<!-- x -->GBB_"), "GBB_");
    row("pieces of CDATA", configuration("G<![CDATA[B]]><![CDATA[B]]>_"), "GBB_");
    row("text before an element", configuration("GBB_<x/>y"), "GBB_");
    row("byte order mark", "\xEF\xBB\xBF" + configuration("GBB_"), "GBB_");
    row("comments around",
        "<!-- a --><x><!-- b --><Language><!-- c --><PXClient>GBB_</PXClient>"
        "</Language></x><!-- d -->",
        "GBB_");
    row("other elements before",
        "<x><Other/><Language><Other/><PXClient>GBB_</PXClient>"
        "</Language></x>",
        "GBB_");
    row("attributes", "<x a='1'><Language b='2'><PXClient c='3'>GBB_</PXClient></Language></x>",
        "GBB_");
    row("the first of two clients",
        "<x><Language><PXClient>GBB_</PXClient><PXClient>ENG_</PXClient>"
        "</Language></x>",
        "GBB_");
    row("the first of two languages",
        "<x><Language><PXClient>GBB_</PXClient></Language><Language>"
        "<PXClient>ENG_</PXClient></Language></x>",
        "GBB_");
    row("what comes after NUL is not read", configuration("GBB_") + QByteArray("\0<broken", 8),
        "GBB_");

    row("empty text", configuration(""), kNone);
    row("empty CDATA", configuration("<![CDATA[]]>"), kNone);
    row("an element before the text", configuration("<x/>GBB_"), kNone);
    row("an element for a text", configuration("<x/>"), kNone);
    row("no client", "<x><Language><Other>GBB_</Other></Language></x>", kNone);
    row("no client in the first of two languages",
        "<x><Language/><Language><PXClient>GBB_</PXClient></Language></x>", kNone);
    row("empty first client", "<x><Language><PXClient/><PXClient>GBB_</PXClient></Language></x>",
        kNone);
    row("no language", "<x><PXClient>GBB_</PXClient></x>", kNone);
    row("language as root", "<Language><PXClient>GBB_</PXClient></Language>", kNone);
    row("language too deep", "<x><y><Language><PXClient>GBB_</PXClient></Language></y></x>", kNone);
    row("another case", "<x><language><pxclient>GBB_</pxclient></language></x>", kNone);
    row("no root", "<?xml version=\"1.0\"?>\n<!-- nothing -->", kNone);
    row("nothing", "", kNone);
    row("blanks", " \n ", kNone);
    row("text", "GBB_", kNone);
    row("cut short", configuration("GBB_").left(90), kNone);
    row("crossed elements", "<x><Language><PXClient>GBB_</Language></PXClient></x>", kNone);
    row("random octets", QByteArray::fromHex("8912FF00AB3C5E7F3C3C3C"), kNone);
    row("deep", QByteArray("<x>").repeated(100000), kNone);
}

void TestUtilLanguage::currentLanguage()
{
    QFETCH(QByteArray, xml);
    QFETCH(bool, found);
    QFETCH(QString, code);
    QString language;
    QCOMPARE(c_util().GetCurLang(xml.constData(), language), found);
    QCOMPARE(language, code);
}

void TestUtilLanguage::currentLanguageLeavesItsOutput()
{
    QString language = QStringLiteral("preset");
    QVERIFY(!c_util().GetCurLang("<x/>", language));
    QCOMPARE(language, QStringLiteral("preset"));
}

void TestUtilLanguage::section_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("section");
    const auto row = [](const char *code, const char *section) {
        QTest::newRow(code) << configuration(code) << text(section);
    };
    row("GBC_", "CN");
    row("GBB_", "TW");
    row("ENG_", "EN");
    row("gbc_", "CN");
    row("gbb_", "CN");
    row("eng_", "CN");
    row("GBC", "CN");
    row("GBB", "CN");
    row("ENG", "CN");
    row("GBB_ ", "CN");
    row(" ENG_", "CN");
    row("ENG_x", "CN");
    row("TW", "CN");
    row("", "CN");
    QTest::newRow("no XML") << QByteArray("ENG_") << text("CN");
    QTest::newRow("no language") << QByteArray("<x/>") << text("CN");
    QTest::newRow("no client") << QByteArray("<x><Language/></x>") << text("CN");
    QTest::newRow("nothing") << QByteArray() << text("CN");
}

void TestUtilLanguage::section()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, section);
    QCOMPARE(table(content).section(), section);
}

void TestUtilLanguage::missingConfiguration_data()
{
    QTest::addColumn<QByteArray>("made");
    QTest::newRow("no folder") << QByteArray();
    QTest::newRow("no file") << QByteArray("settings");
}

void TestUtilLanguage::missingConfiguration()
{
    QFETCH(QByteArray, made);
    if (!made.isEmpty())
        QVERIFY(QDir().mkpath(m_tree->path(made.constData())));
    const MessageRecorder recorder;
    QCOMPARE(c_language().section(), text("CN"));
    QCOMPARE(MessageRecorder::messages(),
             QStringList(QLatin1Char('"') + m_tree->path(kConfigurationFile) + QLatin1Char('"')));
}

// What a pipe holds is read; a writer that stays is not waited for.
void TestUtilLanguage::pipeAsConfiguration()
{
    QVERIFY(QDir().mkpath(m_tree->path("settings")));
    const QByteArray path = QFile::encodeName(m_tree->path(kConfigurationFile));
    QCOMPARE(::mkfifo(path.constData(), S_IRUSR | S_IWUSR), 0);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(c_language().section(), text("CN")); // nobody writes

    const FileDescriptor reader(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    QVERIFY(reader >= 0);
    {
        const FileDescriptor writer(::open(path.constData(), O_WRONLY | O_CLOEXEC));
        QCOMPARE(c_language().section(), text("CN")); // the writer is silent
        const QByteArray content = configuration("ENG_");
        QCOMPARE(::write(writer, content.constData(), size_t(content.size())), content.size());
    }
    QCOMPARE(c_language().section(), text("EN"));
    QVERIFY(timer.elapsed() < 5000);
}

void TestUtilLanguage::configurationIsReadAgain()
{
    c_language language = table(configuration("GBB_"));
    QCOMPARE(language.section(), text("TW"));
    QVERIFY(m_tree->write(kConfigurationFile, configuration("ENG_")));
    QCOMPARE(language.section(), text("TW"));
    language.LANG_SetLang();
    QCOMPARE(language.section(), text("EN"));
    // The paths stay as they were asked for.
    qputenv("PX_CONFIG_PATH", "/nowhere");
    language.LANG_SetLang();
    QCOMPARE(language.section(), text("EN"));
    QVERIFY(QFile::remove(m_tree->path(kConfigurationFile)));
    language.LANG_SetLang();
    QCOMPARE(language.section(), text("CN"));
}

void TestUtilLanguage::longConfiguration_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {10238, 10239, 10240, 10241, 1000000})
        QTest::newRow(QByteArray::number(size).constData()) << size;
}

void TestUtilLanguage::longConfiguration()
{
    QFETCH(int, size);
    const QByteArray short_ = configuration("ENG_");
    const QByteArray comment =
        "<!--" + QByteArray(size - static_cast<int>(short_.size()) - 7, 'x') + "-->";
    const QByteArray content =
        QByteArray(short_).insert(short_.indexOf("<PXClientConfig>"), comment);
    QCOMPARE(content.size(), size);
    QCOMPARE(table(content).section(), text("EN"));
}

void TestUtilLanguage::debugStreamTellsTheSteps_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"no XML", "a folder", "too large", "nothing"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

// What exists is told as read, whether or not it can be.
void TestUtilLanguage::debugStreamTellsTheSteps()
{
    QFETCH(QString, kind);
    const QString file = m_tree->path(kConfigurationFile);
    if (kind == QLatin1String("a folder"))
        QVERIFY(QDir().mkpath(file));
    else if (kind != QLatin1String("nothing"))
        QVERIFY(m_tree->write(kConfigurationFile, "no XML"));
    if (kind == QLatin1String("too large"))
        QVERIFY(QFile::resize(file, 65LL * 1024 * 1024));
    const MessageRecorder recorder;
    const c_language language;
    const QString path = QLatin1Char('"') + file + QLatin1Char('"');
    QStringList expected = {path};
    QCOMPARE(language.section(), text("CN"));
    if (kind != QLatin1String("nothing"))
        expected << path + QLatin1String(" read succ");
    QCOMPARE(MessageRecorder::messages(), expected);
}

void TestUtilLanguage::oneObject()
{
    c_language *language = c_language::GetLangPtr();
    QVERIFY(language);
    QCOMPARE(c_language::GetLangPtr(), language);
    QCOMPARE(c_language::_lang, language);
}

void TestUtilLanguage::fileName()
{
    // No name yet: the directory itself is no language file.
    c_language language = table(configuration("ENG_"));
    QCOMPARE(language.GetValue(text_keys::kColumnField), text_keys::kColumnField);
    QVERIFY(m_tree->write("languages/other.ini", "[EN]\nK=other\n"));
    QVERIFY(m_tree->write("languages/plain", "[EN]\nK=plain\n"));
    language.LANG_SetFileName(named("languages/other.ini"));
    QCOMPARE(language.GetValue(text("K")), text("other"));
    // No extension is added.
    language.LANG_SetFileName(named("languages/plain"));
    QCOMPARE(language.GetValue(text("K")), text("plain"));
    language.LANG_SetFileName(named("languages/other"));
    QCOMPARE(language.GetValue(text("K")), text("K"));
    // Empty and null stand for the viewer's own file.
    for (const QString &name : {QString(), QString(QLatin1String(""))}) {
        language.LANG_SetFileName(named("languages/other"));
        language.LANG_SetFileName(name);
        QString value;
        c_util().GetKeyValue(kLanguageFile, text("EN"), text_keys::kColumnField, value);
        QVERIFY(!value.isEmpty());
        QCOMPARE(language.GetValue(text_keys::kColumnField), value);
    }
}

void TestUtilLanguage::lookups()
{
    QVERIFY(m_tree->write("texts.ini",
                          "[CN]\nK=\"簡\"\nO=\"CN alone\"\n[TW]\nK=\"繁\"\nE=\nQ=\"\"\n"
                          "C=a, b\nS=\"a; b\"\n"));
    c_language language = table(configuration("GBB_"));
    language.LANG_SetFileName(named("texts.ini"));
    QString value;
    QVERIFY(language.GetValue(text("K"), value));
    QCOMPARE(value, text("繁"));
    QCOMPARE(language.GetValue(text("K")), text("繁"));
    QVERIFY(language.GetValue(text("S"), value));
    QCOMPARE(value, text("a; b"));
    // Missing, empty, a list, of another section: no text.
    for (const char *key : {"missing", "E", "Q", "C", "O", "k", ""}) {
        value = text("preset");
        QVERIFY2(!language.GetValue(text(key), value), key);
        QVERIFY2(value.isEmpty(), key);
        QCOMPARE(language.GetValue(text(key)), text(key));
    }
}

void TestUtilLanguage::lookupsFollowTheFile()
{
    c_language language = table(configuration("ENG_"));
    language.LANG_SetFileName(named("texts.ini"));
    QCOMPARE(language.GetValue(text("K")), text("K"));
    for (const char *value : {"one", "two", "one"}) {
        QVERIFY(m_tree->write("texts.ini", QByteArray("[EN]\nK=") + value + "\n"));
        QCOMPARE(language.GetValue(text("K")), text(value));
    }
    QVERIFY(QFile::remove(m_tree->path("texts.ini")));
    QCOMPARE(language.GetValue(text("K")), text("K"));
}

void TestUtilLanguage::missingLanguageFile()
{
    c_language language = table(configuration("ENG_"));
    language.LANG_SetFileName(text("missing.ini"));
    const MessageRecorder recorder;
    QCOMPARE(language.GetValue(text("no such key")), text("no such key"));
    QVERIFY(MessageRecorder::messages().isEmpty()); // nothing is logged
}

void TestUtilLanguage::keyValueOfAFile()
{
    QVERIFY(m_tree->write("證書.ini", "[OID]\n2.5.4.3=\"CN\"\nE=\n"));
    const QByteArray name = QFile::encodeName(named("證書.ini"));
    c_util util;
    QString value;
    QVERIFY(util.GetKeyValue(name.constData(), text("OID"), text("2.5.4.3"), value));
    QCOMPARE(value, text("CN"));
    QVERIFY(!util.GetKeyValue(name.constData(), text("OID"), text("E"), value));
    QVERIFY(value.isEmpty());
    value = text("preset");
    QVERIFY(!util.GetKeyValue(name.constData(), text("CN"), text("2.5.4.3"), value));
    QVERIFY(value.isEmpty());
    value = text("preset");
    QVERIFY(!util.GetKeyValue("missing.ini", text("OID"), text("2.5.4.3"), value));
    QVERIFY(value.isEmpty());
}

void TestUtilLanguage::shippedConfigurations_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"CN", "TW", "EN"})
        QTest::newRow(name) << text(name);
}

void TestUtilLanguage::shippedConfigurations()
{
    QFETCH(QString, name);
    qputenv("PX_CONFIG_PATH", QByteArray(PX_BINARY_DIR "/settings/") + name.toLatin1());
    QCOMPARE(c_language().section(), name);
}

void TestUtilLanguage::withoutCore()
{
    // Both paths stay empty, so the files are looked for below the root.
    QVERIFY(m_tree->addProgram("language_probe"));
    QVERIFY(m_tree->write("languages/PXViewCertTool_Lang.ini", "[CN]\nno_such_key=text\n"));
    QVERIFY(m_tree->write(kConfigurationFile, configuration("ENG_")));
    const InstallTree::Outcome outcome = m_tree->run("language_probe", {text("no_such_key")});
    QVERIFY(outcome.ended);
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output,
             "Path = " + m_tree->path().toUtf8() + " \nCN\n/languages/any.ini\nno_such_key\n");
    QCOMPARE(outcome.errors,
             "path: \"" + m_tree->path().toUtf8() + "\"\n\"/settings/PXClientConfig.dll\"\n");
}

void TestUtilLanguage::withCore_data()
{
    QTest::addColumn<QString>("tree");
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QByteArray>("shown");
    QTest::newRow("CN") << text("install") << QByteArray("GBC_") << QByteArray("CN\n证书\n");
    QTest::newRow("TW") << text("install") << QByteArray("GBB_") << QByteArray("TW\n證書\n");
    QTest::newRow("EN") << text("install") << QByteArray("ENG_") << QByteArray("EN\ncertificate\n");
    QTest::newRow("path outside ASCII")
        << text("證書 файл") << QByteArray("ENG_") << QByteArray("EN\ncertificate\n");
}

void TestUtilLanguage::withCore()
{
    QFETCH(QString, tree);
    QFETCH(QByteArray, code);
    QFETCH(QByteArray, shown);
    m_tree.reset(new InstallTree(tree));
    m_tree->environment.insert(text("PX_CONFIG_PATH"), m_tree->path("configuration"));
    QVERIFY(m_tree->addProgram("language_probe"));
    QVERIFY(
        m_tree->add(text(PX_BINARY_DIR "/bin/PXSignatureCoreV10.so"), "bin/PXSignatureCoreV10.so"));
    QVERIFY(m_tree->write("configuration/settings/PXClientConfig.dll", configuration(code)));
    QVERIFY(m_tree->write("languages/PXViewCertTool_Lang.ini",
                          "[CN]\nK=\"证书\"\n[TW]\nK=\"證書\"\n[EN]\nK=\"certificate\"\n"));
    const InstallTree::Outcome outcome = m_tree->run("language_probe", {text("K")});
    const QByteArray path = m_tree->path().toUtf8();
    QCOMPARE(outcome.output,
             "Path = " + path + " \n" + QByteArray(shown).insert(3, path + "/languages/any.ini\n"));
}

QTEST_GUILESS_MAIN(TestUtilLanguage)
#include "tst_util_language.moc"
