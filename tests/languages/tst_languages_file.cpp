#include "tests/languages/tables.h"
#include "util/c_language.h"
#include "util/c_util.h"
#include "util/qt_compat.h"

#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QSettings>
#include <QTest>

using tables::cell;

namespace {

constexpr const char *kLanguages[] = {"CN", "TW", "EN"};
constexpr const char *kFileName = "PXViewCertTool_Lang.ini";

// The file that the programs of the build tree read.
QString builtFile()
{
    return QStringLiteral(PX_BINARY_DIR "/languages/") + QLatin1String(kFileName);
}

QSettings &settings()
{
    static QSettings settings(builtFile(), QSettings::IniFormat);
    readAsUtf8(settings);
    return settings;
}

QStringList keysOf(const char *section)
{
    settings().beginGroup(QLatin1String(section));
    QStringList keys = settings().allKeys();
    settings().endGroup();
    keys.sort();
    return keys;
}

// The language table of a viewer whose suite speaks `language`.
const c_language &tableOf(const char *language)
{
    static QHash<QByteArray, c_language> tables;
    if (!tables.contains(language)) {
        qputenv("PX_CONFIG_PATH", QByteArray(PX_BINARY_DIR "/settings/") + language);
        tables[language].LANG_SetFileName(QString());
    }
    return tables[language];
}

// What the section OID says for an identifier; empty when it says nothing.
QString underOid(const QString &oid)
{
    QString value;
    c_util().GetKeyValue(kFileName, QStringLiteral("OID"), oid, value);
    return value;
}

} // namespace

class TestLanguagesFile : public QObject
{
    Q_OBJECT

private slots:
    void isWhatTheTablesSay();
    void holdsEveryValueQuotedAndEveryKeyInAscii();
    void hasTheSameKeysInEveryLanguage();
    void hasNoKeyThatACertificateCouldHoldAsAValue();
    void readsBack_data();
    void readsBack();
    void namesIdentifiers_data();
    void namesIdentifiers();
    void keepsShortNamesOfAttributes_data();
    void keepsShortNamesOfAttributes();
    void namesNoTwoRowsAlike_data();
    void namesNoTwoRowsAlike();
    void capitalisesEnglishNamesOfExtensions();
};

void TestLanguagesFile::isWhatTheTablesSay()
{
    QProcess process;
    process.start(QStringLiteral(PX_SOURCE_DIR "/tools/generate_languages.py"),
                  {QStringLiteral("--check")});
    QVERIFY2(process.waitForFinished(), qPrintable(process.errorString()));
    QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());

    QFile shipped(QStringLiteral(PX_SOURCE_DIR "/languages/") + QLatin1String(kFileName));
    QFile built(builtFile());
    QVERIFY(shipped.open(QIODevice::ReadOnly) && built.open(QIODevice::ReadOnly));
    QCOMPARE(built.readAll(), shipped.readAll());
}

void TestLanguagesFile::holdsEveryValueQuotedAndEveryKeyInAscii()
{
    QFile file(builtFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString content = QString::fromUtf8(file.readAll());
    const QRegularExpression line(
        QStringLiteral(R"(^(|;.*|\[[A-Z]+\]|[A-Za-z0-9_.]+="([^"\\]|\\["\\])+")$)"));
    const QStringList lines = content.split(QLatin1Char('\n'));
    QVERIFY(lines.size() > 1000);
    for (const QString &each : lines)
        QVERIFY2(line.match(each).hasMatch(), qPrintable(each));
}

void TestLanguagesFile::hasTheSameKeysInEveryLanguage()
{
    const QStringList keys = keysOf("EN");
    QVERIFY(!keys.isEmpty());
    QCOMPARE(keysOf("CN"), keys);
    QCOMPARE(keysOf("TW"), keys);

    // And none that nothing uses: what is not the program's own text belongs to an identifier.
    QStringList names;
    const QStringList identifiers = keysOf("OID");
    for (const QString &oid : identifiers)
        names.append(underOid(oid));
    for (const QString &key : keys)
        QVERIFY2(key.startsWith(QLatin1String("PXCERTREAD_")) ||
                     key.startsWith(QLatin1String("PXVIEW_")) || names.contains(key),
                 qPrintable(key));
}

// Values of a certificate are looked up as well, so a key must not look like one.
void TestLanguagesFile::hasNoKeyThatACertificateCouldHoldAsAValue()
{
    const QRegularExpression key(
        QStringLiteral("^PX((CERTREAD|VIEW)_[0-9]{4}|OID_[0-9]+(_[0-9]+)+)$"));
    for (const char *language : kLanguages) {
        const QStringList keys = keysOf(language);
        for (const QString &each : keys)
            QVERIFY2(key.match(each).hasMatch(), qPrintable(each));
    }
}

void TestLanguagesFile::readsBack_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *language, const QString &key, const tables::Row &row) {
        QTest::addRow("%s %s", language, qPrintable(key))
            << QString::fromLatin1(language) << key << tables::text(cell(row, language));
    };
    const auto texts = tables::read("texts.tsv");
    const auto names = tables::read("oids.tsv");
    for (const char *language : kLanguages) {
        for (const tables::Row &row : texts)
            add(language, cell(row, "key"), row);
        for (const tables::Row &row : names)
            add(language, tables::keyOf(cell(row, "oid")), row);
    }
}

void TestLanguagesFile::readsBack()
{
    QFETCH(QString, language);
    QFETCH(QString, key);
    QFETCH(QString, text);
    QVERIFY(!text.isEmpty());

    const QString path = language + QLatin1Char('/') + key;
    QCOMPARE(settings().value(path).toString(), text);

    const c_language &table = tableOf(language.toLatin1().constData());
    QCOMPARE(table.section(), language);
    QCOMPARE(table.GetValue(key), text);
}

void TestLanguagesFile::namesIdentifiers_data()
{
    QTest::addColumn<QString>("oid");
    QTest::addColumn<QString>("key");
    int count = int(tables::read("attributes.tsv").size());
    const QVector<tables::Row> named = tables::read("oids.tsv");
    for (const tables::Row &row : named) {
        const QString oid = cell(row, "oid");
        QTest::addRow("%s", qPrintable(oid)) << oid << tables::keyOf(oid);
        ++count;
    }
    const QVector<tables::Row> texts = tables::read("texts.tsv");
    for (const tables::Row &row : texts) {
        const QString oid = cell(row, "oid");
        if (oid.isEmpty())
            continue;
        QTest::addRow("%s", qPrintable(oid)) << oid << cell(row, "key");
        ++count;
    }
    QCOMPARE(keysOf("OID").size(), count);
    QVERIFY(count >= 461);
}

void TestLanguagesFile::namesIdentifiers()
{
    QFETCH(QString, oid);
    QFETCH(QString, key);
    QCOMPARE(underOid(oid), key);
    for (const char *language : kLanguages) {
        QString name;
        QVERIFY2(tableOf(language).GetValue(key, name), language);
        QVERIFY2(name != key && name != oid && name == name.trimmed(), qPrintable(name));
    }
}

void TestLanguagesFile::keepsShortNamesOfAttributes_data()
{
    QTest::addColumn<QString>("oid");
    QTest::addColumn<QString>("name");
    // Those the model compares with, whatever the table says.
    QTest::addRow("common name") << QStringLiteral("2.5.4.3") << QStringLiteral("CN");
    QTest::addRow("organization") << QStringLiteral("2.5.4.10") << QStringLiteral("O");
    const QVector<tables::Row> attributes = tables::read("attributes.tsv");
    for (const tables::Row &row : attributes) {
        const QString oid = cell(row, "oid");
        QTest::addRow("%s", qPrintable(oid)) << oid << cell(row, "short name");
    }
}

void TestLanguagesFile::keepsShortNamesOfAttributes()
{
    QFETCH(QString, oid);
    QFETCH(QString, name);
    QCOMPARE(underOid(oid), name);
    for (const char *language : kLanguages)
        QCOMPARE(tableOf(language).GetValue(name), name);
}

void TestLanguagesFile::namesNoTwoRowsAlike_data()
{
    QTest::addColumn<QString>("language");
    for (const char *language : kLanguages)
        QTest::addRow("%s", language) << QString::fromLatin1(language);
}

// A click on a row shows every row of the same name, so only rows for the same thing may share one.
void TestLanguagesFile::namesNoTwoRowsAlike()
{
    QFETCH(QString, language);
    const QStringList groups{QStringLiteral("Row"),       QStringLiteral("Extension"),
                             QStringLiteral("SCT"),       QStringLiteral("Netscape"),
                             QStringLiteral("Microsoft"), QStringLiteral("QC statement")};
    QStringList names;
    const QVector<tables::Row> texts = tables::read("texts.tsv");
    for (const tables::Row &row : texts) {
        if (groups.contains(cell(row, "group")))
            names.append(row.value(language));
    }
    const QVector<tables::Row> named = tables::read("oids.tsv");
    for (const tables::Row &row : named) {
        if (groups.contains(cell(row, "group")))
            names.append(row.value(language));
    }
    QVERIFY(names.size() > 100);
    QSet<QString> seen;
    for (const QString &name : qAsConst(names)) {
        QVERIFY2(!seen.contains(name), qPrintable(name));
        seen.insert(name);
    }
}

// Names stand below each other in the table, so one in another style is seen. What a name says in
// brackets is a remark.
void TestLanguagesFile::capitalisesEnglishNamesOfExtensions()
{
    const QRegularExpression remark(QStringLiteral(R"( \(.*\)$)"));
    const QRegularExpression smallWord(QStringLiteral(R"(\b(?!of\b|the\b|v[0-9])[a-z])"));
    int count = 0;
    const QVector<tables::Row> identifiers = tables::read("oids.tsv");
    for (const tables::Row &row : identifiers) {
        if (cell(row, "group") != QLatin1String("Extension"))
            continue;
        const QString name = cell(row, "EN").remove(remark);
        QVERIFY2(!name.contains(smallWord), qPrintable(name));
        ++count;
    }
    QVERIFY(count > 50);
}

QTEST_GUILESS_MAIN(TestLanguagesFile)
#include "tst_languages_file.moc"
