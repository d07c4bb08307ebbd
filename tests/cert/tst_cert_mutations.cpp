#include "tests/cert/parsed.h"

#include "cert/certificate_input.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTest>

namespace {

QByteArray fileContent(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Says nothing while thousands of certificates are parsed.
void silence(QtMsgType, const QMessageLogContext &, const QString &) {}

} // namespace

/// Damaged certificates: whatever is left is shown, and nothing else happens.
class TestCertMutations : public QObject
{
    Q_OBJECT

private:
    static void check(const QByteArray &certificate)
    {
        const Parsed parsed = parse(certificate);
        QCOMPARE(parsed.blocks.size(), 2);
        QCOMPARE(parsed.rowSignals, 1);
        for (const detail_node &row : parsed.rows)
            QVERIFY(row.kind == 0 || row.kind == 1);
    }

private slots:
    void initTestCase()
    {
        c_language::GetLangPtr()->LANG_SetFileName(QString());
        qInstallMessageHandler(silence);
    }

    void damaged_data()
    {
        QTest::addColumn<QByteArray>("certificate");
        for (const QString &folder : {QStringLiteral(PX_SOURCE_DIR "/examples"),
                                      QStringLiteral(PX_TEST_DATA "/extensions")}) {
            const QStringList names = QDir(folder).entryList({QStringLiteral("*.pem")});
            for (const QString &name : names)
                QTest::newRow(qPrintable(name)) << certificate_input::certificateOctets(
                    fileContent(folder + QLatin1Char('/') + name));
        }
    }
    void damaged()
    {
        QFETCH(QByteArray, certificate);
        QVERIFY(certificate.size() > 200);
        QRandomGenerator random(static_cast<quint32>(certificate.size()));
        for (int size = 0; size < certificate.size(); size += random.bounded(1, 8))
            check(certificate.left(size));
        for (int round = 0; round < 150; ++round) {
            QByteArray damaged = certificate;
            for (int change = random.bounded(1, 6); change > 0; --change)
                damaged[random.bounded(damaged.size())] = static_cast<char>(random.bounded(256));
            check(damaged);
        }
    }

    void randomOctets()
    {
        QRandomGenerator random(1);
        for (int round = 0; round < 2000; ++round) {
            QByteArray octets(random.bounded(1, 400), '\0');
            for (char &octet : octets)
                octet = static_cast<char>(random.bounded(256));
            // Half of them at least look like a certificate from outside.
            if (round % 2)
                octets.prepend(QByteArray::fromHex("308201003081F0A003020102"));
            check(octets);
        }
    }
};

QTEST_GUILESS_MAIN(TestCertMutations)
#include "tst_cert_mutations.moc"
