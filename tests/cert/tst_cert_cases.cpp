#include "tests/cert/parsed.h"

#include "util/c_util.h"

#include <QFile>
#include <QRegularExpression>
#include <QtTest>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

/// Certificates of another tool's making with the texts they are shown with, in the language that
/// the client configuration names; the suite runs this in all three.
class TestCertCases : public QObject
{
    Q_OBJECT

private:
    // The language file's name of an identifier, by way of both its sections.
    static QString nameOf(const QString &identifier)
    {
        QString key;
        c_util().GetKeyValue("PXViewCertTool_Lang.ini", QStringLiteral("OID"), identifier, key);
        return c_language::GetLangPtr()->GetValue(key);
    }

    static QString withNames(QString text)
    {
        static const QRegularExpression place(QStringLiteral("\\{([0-9.]+)\\}"));
        for (auto match = place.match(text); match.hasMatch(); match = place.match(text))
            text.replace(match.captured(0), nameOf(match.captured(1)));
        return text;
    }

    static Parsed load(const char *name)
    {
        Parsed parsed;
        c_pxcert model(nullptr);
        parsed.listenTo(model);
        model.loadfile(PX_TEST_DATA "/extensions/" + QByteArray(name) + ".pem");
        return parsed;
    }

private slots:
    void initTestCase()
    {
        c_language::GetLangPtr()->LANG_SetFileName(QString());
        QCOMPARE(c_language::GetLangPtr()->section(), qEnvironmentVariable("PX_EXPECTED_SECTION"));
        QVERIFY(!nameOf(QStringLiteral("2.5.29.32.0")).isEmpty());
        QVERIFY(nameOf(QStringLiteral("2.5.29.32.0")) != QLatin1String("2.5.29.32.0"));
    }

    void recognisedExtensionsHaveTheirNames_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("key");
        QTest::newRow("policies") << "2.5.29.32"
                                  << "PXCERTREAD_0025";
        QTest::newRow("points") << "2.5.29.31"
                                << "PXCERTREAD_0024";
        QTest::newRow("access") << "1.3.6.1.5.5.7.1.1"
                                << "PXCERTREAD_0026";
        QTest::newRow("usage") << "2.5.29.15"
                               << "PXCERTREAD_0031";
        QTest::newRow("Netscape") << "2.16.840.1.113730.1.1"
                                  << "PXCERTREAD_0032";
        QTest::newRow("constraints") << "2.5.29.19"
                                     << "PXCERTREAD_0030";
        QTest::newRow("names") << "2.5.29.17"
                               << "PXCERTREAD_0028";
        QTest::newRow("authority") << "2.5.29.35"
                                   << "PXCERTREAD_0027";
    }
    void recognisedExtensionsHaveTheirNames()
    {
        QFETCH(QString, identifier);
        QFETCH(QString, key);
        const QString name = c_language::GetLangPtr()->GetValue(key);
        QVERIFY(name != key);
        QCOMPARE(nameOf(identifier), name);
    }

    void poorLocaleCostsCharactersAlone()
    {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        QTextCodec *before = QTextCodec::codecForLocale();
        const Parsed rich = load("policies-practice-and-notice");
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        const Parsed poor = load("policies-practice-and-notice");
        QTextCodec::setCodecForLocale(before);
        const auto degraded = [](const QString &text) {
            return QString::fromLatin1(text.toLatin1());
        };
        QCOMPARE(poor.rows.size(), rich.rows.size());
        for (std::size_t i = 0; i < rich.rows.size(); ++i) {
            QCOMPARE(poor.rows[i].name, degraded(rich.rows[i].name));
            const bool isPolicies = i + 1 == rich.rows.size();
            QCOMPARE(poor.rows[i].full_value,
                     isPolicies ? degraded(rich.rows[i].full_value) : rich.rows[i].full_value);
        }
        for (int i = 0; i < rich.blocks.size(); ++i)
            QCOMPARE(poor.blocks[i].first, degraded(rich.blocks[i].first));
        const bool isEnglish = c_language::GetLangPtr()->section() == QLatin1String("EN");
        QCOMPARE(poor.blocks[0].first == rich.blocks[0].first, isEnglish);
        QCOMPARE(poor.blocks[1].first == rich.blocks[1].first, isEnglish);
        QVERIFY(poor.rows.back().full_value != rich.rows.back().full_value);
#endif
    }

    void extensions_data()
    {
        QTest::addColumn<QStringList>("texts");
        QFile file(QStringLiteral(PX_TEST_DATA "/extensions/cases.txt"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString all = QString::fromUtf8(file.readAll());
        const QStringList cases = all.split(QStringLiteral("\n== ")).mid(1);
        for (const QString &part : cases) {
            QStringList texts = {QString()};
            bool begun = false;
            const QStringList lines = part.split(QLatin1Char('\n')).mid(1);
            for (const QString &line : lines) {
                if (line == QLatin1String("--")) {
                    texts << QString();
                    begun = false;
                } else if (line.startsWith(QLatin1Char('>'))) {
                    texts.last() += (begun ? QStringLiteral("\n") : QString()) + line.mid(2);
                    begun = true;
                }
            }
            QTest::newRow(qPrintable(part.section(QLatin1Char('\n'), 0, 0))) << texts;
        }
    }
    void extensions()
    {
        QFETCH(QStringList, texts);
        Parsed parsed;
        c_pxcert model(nullptr);
        parsed.listenTo(model);
        const QString path = QStringLiteral(PX_TEST_DATA "/extensions/%1.pem")
                                 .arg(QString::fromUtf8(QTest::currentDataTag()));
        QVERIFY(model.loadfile(QFile::encodeName(path).constData()));
        QStringList shownTexts;
        for (const detail_node &row : parsed.rows) {
            if (row.kind != 1)
                continue;
            shownTexts << row.full_value;
            QCOMPARE(row.value, row.full_value);
        }
        QStringList expected;
        for (const QString &text : texts)
            expected << withNames(text);
        QCOMPARE(shownTexts, expected);
    }
};

QTEST_GUILESS_MAIN(TestCertCases)
#include "tst_cert_cases.moc"
