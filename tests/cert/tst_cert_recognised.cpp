#include "tests/cert/recognised.h"
#include "util/c_language.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

namespace {

QString contentOf(const char *page)
{
    QFile file(QStringLiteral(PX_SOURCE_DIR "/docs/") + QLatin1String(page));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The keys that are written out, `0025` or `PXCERTREAD_0025`, from `beginning` to the next blank
// line.
QStringList keysIn(const QString &page, const QString &beginning)
{
    const auto from = page.indexOf(beginning);
    const QString part =
        from < 0 ? QString() : page.mid(from, page.indexOf(QLatin1String("\n\n"), from) - from);
    static const QRegularExpression key(QStringLiteral("`(?:PXCERTREAD_)?(\\d{4})`"));
    QStringList keys;
    for (auto match = key.globalMatch(part); match.hasNext();)
        keys << QStringLiteral("PXCERTREAD_") + match.next().captured(1);
    keys.sort();
    return keys;
}

} // namespace

/// What lists the recognised extensions besides the model: the language file and two pages.
class TestCertRecognised : public QObject
{
    Q_OBJECT

private slots:
    // The model tells an extension by its name, so no other identifier may bear it.
    void eachHasANameOfItsOwn_data()
    {
        QTest::addColumn<QByteArray>("language");
        for (const char *language : {"CN", "TW", "EN"})
            QTest::newRow(language) << QByteArray(language);
    }
    void eachHasANameOfItsOwn()
    {
        QFETCH(QByteArray, language);
        qputenv("PX_CONFIG_PATH", PX_BINARY_DIR "/settings/" + language);
        c_language table;
        table.LANG_SetFileName(QString());
        QCOMPARE(table.section(), QString::fromLatin1(language));
        const QStringList identifiers = recognised::allIdentifiers();
        for (const RecognisedExtension &extension : kRecognisedExtensions) {
            const QString key = extension.key;
            const QString name = table.GetValue(key);
            QVERIFY2(name != key, qPrintable(key));
            QStringList bearers;
            for (const QString &identifier : identifiers) {
                if (table.GetValue(recognised::underOid(identifier)) == name)
                    bearers << identifier;
            }
            QCOMPARE(bearers, QStringList{recognised::identifierOf(extension)});
        }
    }

    void pagesListThem_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("beginning");
        QTest::newRow("rows.md") << contentOf("rows.md") << "| extension | key |";
        QTest::newRow("configuration.md")
            << contentOf("configuration.md") << "- An extension is recognised by its name.";
    }
    void pagesListThem()
    {
        QFETCH(QString, page);
        QFETCH(QString, beginning);
        QStringList keys;
        for (const RecognisedExtension &extension : kRecognisedExtensions)
            keys << extension.key;
        keys.sort();
        QCOMPARE(keysIn(page, beginning), keys);
    }
};

QTEST_GUILESS_MAIN(TestCertRecognised)
#include "tst_cert_recognised.moc"
