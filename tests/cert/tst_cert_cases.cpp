#include "tests/cert/parsed.h"
#include "tests/support/case_file.h"
#include "tests/support/message_recorder.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>
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
        return texts::raw(texts::nameOfIdentifier(identifier));
    }

    // The date and time, or the date alone, that stands in braces, as the system's locale writes
    // it.
    static QString momentOf(const QString &iso)
    {
        const bool isDate = iso.size() == 10;
        const QDateTime time =
            QDateTime::fromString(isDate ? iso + QStringLiteral(" 20:00:00") : iso,
                                  QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        const QString text = QLocale::system().toString(time, QLocale::ShortFormat);
        return isDate ? text.section(QLatin1Char(' '), 0, 0) : text;
    }

    static QString withoutBraces(QString text)
    {
        static const QRegularExpression name(QStringLiteral("\\{([0-9.]+)\\}"));
        for (auto match = name.match(text); match.hasMatch(); match = name.match(text))
            text.replace(match.captured(0), nameOf(match.captured(1)));
        static const QRegularExpression moment(QStringLiteral("\\{([0-9: -]+)\\}"));
        for (auto match = moment.match(text); match.hasMatch(); match = moment.match(text))
            text.replace(match.captured(0), momentOf(match.captured(1)));
        return text;
    }

    // A row's text; the full one behind it where it is another.
    static QStringList textsOf(const detail_node &row)
    {
        return row.value == row.full_value ? QStringList{row.value}
                                           : QStringList{row.value, row.full_value};
    }

    // What a case looks at: "fields", the names of the basic rows; "extensions", the texts of the
    // others; "status", "identity", "log"; or the row of that name.
    static QStringList shownAs(const QString &label, const Parsed &parsed, const QStringList &log)
    {
        if (label == QLatin1String("status"))
            return spelled({parsed.blocks.at(0).first});
        if (label == QLatin1String("identity"))
            return spelled({parsed.blocks.at(1).first});
        if (label == QLatin1String("log"))
            return spelledLines(log);
        QStringList names;
        QStringList texts;
        for (const detail_node &row : parsed.rows) {
            if (row.kind == 0)
                names << row.name;
            if (label == QLatin1String("extensions") ? row.kind == 1 : row.name == label)
                texts << textsOf(row);
        }
        if (label == QLatin1String("fields"))
            return spelledLines(names);
        if (texts.isEmpty() && label != QLatin1String("extensions"))
            return {QStringLiteral("no such row")};
        return spelled(texts);
    }

    static void addCases(const QString &topic)
    {
        QTest::addColumn<Expectations>("expected");
        const QVector<Case> cases = casesOf(topic, QStringLiteral("extensions"));
        QVERIFY(!cases.isEmpty());
        for (const Case &one : cases)
            QTest::newRow(qPrintable(one.name)) << one.expected;
    }

    static QByteArray inputOf(const QString &topic, const QString &name)
    {
        const QString path = QStringLiteral(PX_TEST_DATA "/%1/%2").arg(topic, name);
        return QFile::encodeName(QFile::exists(path) ? path : path + QStringLiteral(".pem"));
    }

    // An argument's text stands for the certificate; everything else is a file.
    static bool show(c_pxcert &model, const QString &topic, const QByteArray &path)
    {
        if (topic != QLatin1String("arguments"))
            return model.loadfile(path.constData());
        QFile text(QFile::decodeName(path));
        return text.open(QIODevice::ReadOnly) && model.parse_cert(text.readAll());
    }

    static void showsWhatIsExpected(const QString &topic)
    {
        QFETCH(Expectations, expected);
        Parsed parsed;
        c_pxcert model(nullptr);
        parsed.listenTo(model);
        MessageRecorder recorder;
        const QString name = QString::fromUtf8(QTest::currentDataTag());
        QVERIFY(show(model, topic, inputOf(topic, name)));
        const QStringList log =
            MessageRecorder::messages().filter(QStringLiteral("[PXCertificate::"));
        QCOMPARE(parsed.blocks.size(), 2);
        QCOMPARE(parsed.blocks.at(0).second, 0);
        QCOMPARE(parsed.blocks.at(1).second, 1);
        QCOMPARE(parsed.rowSignals, 1);
        QVERIFY(!expected.isEmpty());
        for (const auto &[label, lines] : expected) {
            const QString heading = QStringLiteral("@ %1\n").arg(label);
            QCOMPARE(heading + shownAs(label, parsed, log).join(QLatin1Char('\n')),
                     heading + withoutBraces(lines.join(QLatin1Char('\n'))));
        }
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
        QCOMPARE(c_language::GetLangPtr()->section(),
                 qEnvironmentVariable("PX_EXPECTED_SECTION", QStringLiteral("EN"))); // run by hand
        QVERIFY(!nameOf(QStringLiteral("2.5.29.32.0")).isEmpty());
        QVERIFY(nameOf(QStringLiteral("2.5.29.32.0")) != QLatin1String("2.5.29.32.0"));
        QVERIFY(!momentOf(QStringLiteral("2025-01-02")).isEmpty());
        QVERIFY(!momentOf(QStringLiteral("2025-01-02")).contains(QStringLiteral("20:00")));
        QVERIFY(momentOf(QStringLiteral("2025-01-02 20:00:00")).contains(QStringLiteral("20:00")));
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

    void extensions_data() { addCases(QStringLiteral("extensions")); }
    void extensions() { showsWhatIsExpected(QStringLiteral("extensions")); }
    void fields_data() { addCases(QStringLiteral("fields")); }
    void fields() { showsWhatIsExpected(QStringLiteral("fields")); }
    void times_data() { addCases(QStringLiteral("times")); }
    void times() { showsWhatIsExpected(QStringLiteral("times")); }
    void files_data() { addCases(QStringLiteral("files")); }
    void files() { showsWhatIsExpected(QStringLiteral("files")); }
    void arguments_data() { addCases(QStringLiteral("arguments")); }
    void arguments() { showsWhatIsExpected(QStringLiteral("arguments")); }
};

QTEST_GUILESS_MAIN(TestCertCases)
#include "tst_cert_cases.moc"
