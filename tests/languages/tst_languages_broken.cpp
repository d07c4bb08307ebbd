#include "tests/support/install_tree.h"

#include <memory>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

namespace {

constexpr const char *kFile = "languages/PXViewCertTool_Lang.ini";
constexpr const char *kVersionKey = "PXCERTREAD_0014";

QByteArray shippedFile()
{
    QFile file(QStringLiteral(PX_SOURCE_DIR) + QLatin1Char('/') + QLatin1String(kFile));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray inUtf16(const QByteArray &utf8)
{
    const QString text = QString::fromUtf8(utf8.constData(), utf8.size());
    return "\xff\xfe" + QByteArray(reinterpret_cast<const char *>(text.utf16()), 2 * text.size());
}

// The names of a certificate's rows, as a program in the tree gives them.
QStringList rowNames(const InstallTree::Outcome &outcome)
{
    const QJsonObject result = QJsonDocument::fromJson(outcome.output).object();
    QStringList names;
    const QVariantList rows = result.value(QLatin1String("rows")).toArray().toVariantList();
    for (const QVariant &row : rows)
        names.append(row.toMap().value(QStringLiteral("name")).toString());
    return names;
}

} // namespace

// A suite whose language file is not what it should be: keys are shown, and nothing else happens.
class TestLanguagesBroken : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void showsWhatThereIs_data();
    void showsWhatThereIs();
    void showsKeysWithoutFile();
    void readsAFileThatCannotBeWritten();

private:
    void verifyShows(const char *versionName) const;

    std::unique_ptr<InstallTree> m_tree;
};

void TestLanguagesBroken::init()
{
    m_tree = std::make_unique<InstallTree>();
    for (const char *name : {"certrows", "PXViewCertTool", "PXSignatureCoreV10.so"}) {
        const QString program = QStringLiteral(PX_BINARY_DIR "/bin/") + QLatin1String(name);
        QVERIFY(m_tree->add(program, (QByteArray("bin/") + name).constData()));
    }
    m_tree->environment.insert(QStringLiteral("PX_CONFIG_PATH"),
                               QStringLiteral(PX_BINARY_DIR "/settings/EN"));
}

void TestLanguagesBroken::verifyShows(const char *versionName) const
{
    const InstallTree::Outcome rows =
        m_tree->run("certrows", {QStringLiteral(PX_SOURCE_DIR "/examples/server.pem")});
    QVERIFY(rows.ended);
    QCOMPARE(rows.status, 0);
    const QStringList names = rowNames(rows);
    QVERIFY(names.size() > 15);
    QCOMPARE(names.first(), QString::fromUtf8(versionName));

    // Without an argument the viewer builds its window and ends.
    const InstallTree::Outcome viewer = m_tree->run("PXViewCertTool", {});
    QVERIFY(viewer.ended);
    QCOMPARE(viewer.status, 0);
}

void TestLanguagesBroken::showsWhatThereIs_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("name");
    const QByteArray shipped = shippedFile();
    const QByteArray key = kVersionKey;
    const auto section = shipped.indexOf("[EN]");
    const auto entry = shipped.indexOf(key, section);
    QVERIFY(section > 0 && entry > section);

    QTest::newRow("empty") << QByteArray() << key;
    QTest::newRow("no such section") << shipped.left(section) << key;
    QTest::newRow("half a section") << shipped.left(entry) << key;
    QTest::newRow("ends within a value")
        << shipped.left(entry + key.size() + 4) << QByteArray("Ve");
    QTest::newRow("only the section") << "[EN]\n" + key + "=\"V\"\n" << QByteArray("V");
    QTest::newRow("an empty value") << "[EN]\n" + key + "=\"\"\n" << key;
    QTest::newRow("another case") << "[en]\n" + key + "=\"V\"\n" << key;
    QTest::newRow("UTF-16") << inUtf16(shipped) << key;
    QTest::newRow("with a byte order mark") << "\xef\xbb\xbf" + shipped << QByteArray("Version");
    QTest::newRow("with the line ends of another system")
        << QByteArray(shipped).replace("\n", "\r\n") << QByteArray("Version");
    QTest::newRow("no text at all") << QByteArray(100000, '\0') + QByteArray(100000, '\xff') << key;
    QTest::newRow("one endless line") << QByteArray(1000000, '[') << key;
}

void TestLanguagesBroken::showsWhatThereIs()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, name);
    QVERIFY(m_tree->write(kFile, content));
    verifyShows(name.constData());
}

void TestLanguagesBroken::showsKeysWithoutFile()
{
    verifyShows(kVersionKey);
    QVERIFY(!QFileInfo::exists(m_tree->path(kFile))); // nor was one made
    QVERIFY(QDir().mkpath(m_tree->path(kFile)));
    verifyShows(kVersionKey); // a directory of this name
}

void TestLanguagesBroken::readsAFileThatCannotBeWritten()
{
    QVERIFY(m_tree->write(kFile, shippedFile()));
    QFile file(m_tree->path(kFile));
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ReadOther));
    QFile folder(m_tree->path("languages"));
    QVERIFY(folder.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    verifyShows("Version");
    QVERIFY(folder.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), shippedFile());
    QCOMPARE(QDir(m_tree->path("languages")).entryList(QDir::Files).size(), 1); // no lock file left
}

QTEST_GUILESS_MAIN(TestLanguagesBroken)
#include "tst_languages_broken.moc"
