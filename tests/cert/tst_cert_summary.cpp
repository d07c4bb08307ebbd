#include "tests/cert/parsed.h"
#include "tests/support/der.h"
#include "tests/support/message_recorder.h"

#include <ctime>
#include <QtTest>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

using namespace der;

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
    return QStringLiteral(" ") + shown("PXCERTREAD_0006");
}

QString invalidStatus()
{
    return QStringLiteral(" ") + shown("PXCERTREAD_0075");
}

// CertificatePolicies of two policies nobody names.
QByteArray twoPolicies()
{
    const char *other = "2B06010401868D1F0103";
    return extension("551D20", sequence({sequence({oid(kUnknown)}), sequence({oid(other)})}));
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

    void validity_data()
    {
        QTest::addColumn<QByteArray>("notBefore");
        QTest::addColumn<QByteArray>("notAfter");
        QTest::addColumn<bool>("valid");
        const QByteArray impossible = utcTime("251301000000Z");
        QTest::newRow("within") << farPast() << farFuture() << true;
        QTest::newRow("expired") << farPast() << farPast() << false;
        QTest::newRow("not yet valid") << farFuture() << farFuture() << false;
        QTest::newRow("no end") << farPast() << generalizedTime("99991231235959Z") << true;
        QTest::newRow("starts after year 9999")
            << generalizedTime("99991231235959Z") << generalizedTime("99991231235959Z") << false;
        QTest::newRow("end unreadable") << farPast() << impossible << true;
        QTest::newRow("start unreadable") << impossible << farFuture() << true;
        QTest::newRow("start unreadable, expired") << impossible << farPast() << false;
        QTest::newRow("both unreadable") << impossible << impossible << true;
    }
    void validity()
    {
        QFETCH(QByteArray, notBefore);
        QFETCH(QByteArray, notAfter);
        QFETCH(bool, valid);
        QCOMPARE(statusOf(parseValid(notBefore, notAfter)),
                 valid ? validStatus() : invalidStatus());
    }

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

    void policiesAreThePurposes()
    {
        Certificate certificate;
        certificate.extensions = twoPolicies();
        QCOMPARE(statusOf(parse(certificate.encoded())),
                 QStringLiteral(" %1\n      -%2\n      -%3\n      -%4\n      -%5\n\n")
                     .arg(shown("PXCERTREAD_0003"), shown("PXCERTREAD_0004"),
                          shown("PXCERTREAD_0005"), QLatin1String(kUnknownDotted),
                          QStringLiteral("1.3.6.1.4.1.99999.1.3")));
    }

    void expiredCertificateHasNoPurposes()
    {
        Certificate certificate;
        certificate.validity = sequence({farPast(), farPast()});
        certificate.extensions = twoPolicies();
        QCOMPARE(statusOf(parse(certificate.encoded())), invalidStatus());
    }

    void distributionPointsAreNoPurposes()
    {
        Certificate certificate;
        certificate.extensions = extension(
            "551D1F", sequence({sequence({tlv(0xA0, tlv(0xA0, tlv(0x86, "http://x")))})}));
        QCOMPARE(statusOf(parse(certificate.encoded())), validStatus());
    }

    void identityNames_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("text");
        const QByteArray cn = set({attribute(kCommonName, utf8("common"))});
        const QByteArray o = set({attribute(kOrganization, utf8("org"))});
        const QByteArray c = set({attribute(kCountry, utf8("XX"))});
        QTest::newRow("both") << sequence({o, cn}) << "common";
        QTest::newRow("organization alone") << sequence({c, o}) << "org";
        QTest::newRow("neither") << sequence({c}) << "";
        QTest::newRow("empty common name")
            << sequence({set({attribute(kCommonName, utf8(""))}), o}) << "org";
    }
    void identityNames()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, text);
        Certificate certificate;
        certificate.subject = name;
        certificate.issuer = name;
        const Parsed parsed = parse(certificate.encoded());
        QCOMPARE(parsed.blocks.at(1).second, 1);
        QVERIFY(parsed.blocks.at(1).first.startsWith(
            QStringLiteral(" %1:   %3\n\n %2:   %3\n\n ")
                .arg(shown("PXCERTREAD_0007"), shown("PXCERTREAD_0008"), text)));
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
        QCOMPARE(parsed.row("PXCERTREAD_0020").value, QStringLiteral("证é"));
#endif
    }

    void identityDates()
    {
        const Parsed parsed = parseValid(utcTime("250102120000Z"), utcTime("260304120000Z"));
        const auto date = [](int year, int month, int day) {
            const QDateTime time(QDate(year, month, day), QTime(20, 0), Qt::UTC);
            return QLocale::system().toString(time, QLocale::ShortFormat).split(' ').at(0);
        };
        QVERIFY(!date(2025, 1, 2).isEmpty());
        QVERIFY(!date(2025, 1, 2).contains(QStringLiteral("20:00")));
        QVERIFY2(parsed.blocks.at(1).first.endsWith(
                     QStringLiteral("\n\n %1%2 %3   %4")
                         .arg(shown("PXCERTREAD_0009"), date(2025, 1, 2), shown("PXCERTREAD_0010"),
                              date(2026, 3, 4))),
                 qPrintable(parsed.blocks.at(1).first));
    }

    void placeholdersInNamesStayAsTheyAre()
    {
        Certificate certificate;
        certificate.subject = sequence({set({attribute(kCommonName, utf8("%1 %2 100%"))})});
        const Parsed parsed = parse(certificate.encoded());
        QCOMPARE(parsed.row("PXCERTREAD_0020").value, QStringLiteral("%1 %2 100%"));
        QVERIFY(parsed.blocks.at(1).first.contains(QStringLiteral(":   %1 %2 100%\n\n")));
    }
};

QTEST_GUILESS_MAIN(TestCertSummary)
#include "tst_cert_summary.moc"
