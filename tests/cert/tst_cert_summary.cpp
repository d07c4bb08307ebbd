#include "tests/cert/parsed.h"
#include "tests/support/der.h"
#include "tests/support/message_recorder.h"

#include <ctime>
#include <QTest>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

using namespace der;
using texts::shown;

namespace {

// A certificate time that shows as `shown`: certificate times are shown eight hours later.
QByteArray timeThatShows(const QDateTime &shown)
{
    return generalizedTime(QDateTime(shown.date(), shown.time(), Qt::UTC)
                               .addSecs(-28800)
                               .toString(QStringLiteral("yyyyMMddhhmmss'Z'"))
                               .toLatin1()
                               .constData());
}

QByteArray farPast()
{
    return utcTime("500101000000Z");
}

QByteArray farFuture()
{
    return generalizedTime("29991231235959Z");
}

Parsed parseValid(const QByteArray &notBefore, const QByteArray &notAfter)
{
    Certificate certificate;
    certificate.validity = sequence({notBefore, notAfter});
    return parse(certificate.encoded());
}

QString statusOf(const Parsed &parsed)
{
    return parsed.blocks.at(0).first;
}

QString validStatus()
{
    return QStringLiteral(" ") + shown(text_keys::kStatusValid);
}

QString invalidStatus()
{
    return QStringLiteral(" ") + shown(text_keys::kStatusNotValid);
}

} // namespace

/// The rows' record, the two blocks of the general page and the validity test.
class TestCertSummary : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { c_language::GetLangPtr()->LANG_SetFileName(QString()); }
    void cleanup()
    {
        qputenv("TZ", "UTC");
        ::tzset();
    }

    void rowRecord()
    {
        const detail_node empty;
        QVERIFY(empty.name.isEmpty() && empty.value.isEmpty() && empty.full_value.isEmpty());
        QCOMPARE(empty.kind, 0);
        const certpolicy item;
        QVERIFY(item.text.isEmpty());
        QCOMPARE(item.level, 0);
    }

    void addNode()
    {
        c_pxcert model(nullptr);
        Parsed parsed;
        parsed.listenTo(model);
        model.add_node(QStringLiteral("name"), QStringLiteral("value"));
        model.parse_cert({});
        QCOMPARE(parsed.rows.size(), std::size_t(1));
        QCOMPARE(parsed.rows[0].name, QStringLiteral("name"));
        QCOMPARE(parsed.rows[0].value, QStringLiteral("value"));
        QCOMPARE(parsed.rows[0].full_value, QStringLiteral("value"));
        QCOMPARE(parsed.rows[0].kind, 0);
    }

    void emptyModelIsValid() { QVERIFY(c_pxcert(nullptr).isCertValid()); }

    // The bounds count to the second, so the clock must not move on between writing and reading.
    void bounds_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<bool>("isEnd");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<bool>("valid");
        for (const char *zone : {"UTC", "Asia/Taipei", "America/New_York"}) {
            QTest::addRow("ends this second, %s", zone) << QByteArray(zone) << true << 0 << true;
            QTest::addRow("ended a second ago, %s", zone)
                << QByteArray(zone) << true << -1 << false;
            QTest::addRow("starts this second, %s", zone) << QByteArray(zone) << false << 0 << true;
            QTest::addRow("starts in a second, %s", zone)
                << QByteArray(zone) << false << 1 << false;
        }
    }
    void bounds()
    {
        QFETCH(QByteArray, zone);
        qputenv("TZ", zone);
        ::tzset();
        QFETCH(bool, isEnd);
        QFETCH(int, seconds);
        QFETCH(bool, valid);
        const auto secondNow = [] {
            return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmss"));
        };
        for (int attempt = 0; attempt < 20; ++attempt) {
            const QString before = secondNow();
            const QByteArray bound = timeThatShows(QDateTime::currentDateTime().addSecs(seconds));
            const Parsed parsed =
                isEnd ? parseValid(farPast(), bound) : parseValid(bound, farFuture());
            if (before != secondNow())
                continue;
            QCOMPARE(statusOf(parsed), valid ? validStatus() : invalidStatus());
            return;
        }
        QFAIL("the clock never stood still");
    }

    void statusIsWrittenInQuotes()
    {
        MessageRecorder recorder;
        parseValid(farPast(), farFuture());
        QVERIFY(recorder.messages().contains(QLatin1Char('"') + validStatus() + QLatin1Char('"')));
        parseValid(farPast(), farPast());
        QVERIFY(
            recorder.messages().contains(QLatin1Char('"') + invalidStatus() + QLatin1Char('"')));
    }

    void statusWithPurposesIsNotWritten()
    {
        Certificate certificate;
        certificate.extensions = extension("551D20", sequence({sequence({oid(kUnknown)})}));
        MessageRecorder recorder;
        QVERIFY(statusOf(parse(certificate.encoded()))
                    .contains(texts::shown(text_keys::kStatusPurposes)));
        QVERIFY(recorder.messages().filter(texts::shown(text_keys::kStatusPurposes)).isEmpty());
    }

    void lineFeedsAreToldApart()
    {
        Certificate certificate;
        certificate.subject = sequence({set({attribute(kCommonName, utf8("one\ntwo"))})});
        certificate.extensions = extension("551D20", sequence({sequence({oid(kUnknown)})}));
        c_pxcert model(nullptr);
        QVERIFY(model.ownLineFeeds(c_pxcert::StatusBlock).empty());
        QVERIFY(model.parse_cert(certificate.encoded()));
        QCOMPARE(model.ownLineFeeds(c_pxcert::StatusBlock), std::vector<bool>(5, true));
        QCOMPARE(model.ownLineFeeds(c_pxcert::IdentityBlock),
                 (std::vector<bool>{false, true, true, true, true}));
        QCOMPARE(model.ownLineFeeds(2), model.ownLineFeeds(c_pxcert::IdentityBlock));
    }

    void identityNamesGoThroughTheLocale()
    {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        Certificate certificate;
        certificate.subject = sequence({set({attribute(kCommonName, utf8("证é"))})});
        QTextCodec *before = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        const Parsed parsed = parse(certificate.encoded());
        QTextCodec::setCodecForLocale(before);
        QVERIFY(parsed.blocks.at(1).first.contains(QStringLiteral(":   ?é\n\n")));
        QCOMPARE(parsed.row(text_keys::kSubject).value, QStringLiteral("证é"));
#endif
    }
};

QTEST_GUILESS_MAIN(TestCertSummary)
#include "tst_cert_summary.moc"
