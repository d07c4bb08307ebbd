#include "cert/c_pxcert.h"
#include "tests/support/der.h"
#include "util/c_language.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace der;

namespace {

constexpr int kSize = 8 * 1024 * 1024;

QByteArray armoured(const QByteArray &lines)
{
    return "-----BEGIN CERTIFICATE-----\n" + lines + "-----END CERTIFICATE-----\n";
}

QByteArray withName(const QByteArray &name)
{
    Certificate certificate;
    certificate.subject = sequence({set({attribute(kCommonName, tlv(0x0C, name))})});
    return certificate.encoded();
}

QByteArray withKey(const QByteArray &key)
{
    Certificate certificate;
    certificate.keyInfo = sequence({sequence({oid(kRsaEncryption)}), tlv(0x03, key)});
    return certificate.encoded();
}

QByteArray withExtension(const QByteArray &value)
{
    Certificate certificate;
    certificate.extensions = extension(kUnknown, value);
    return certificate.encoded();
}

QByteArray withExtensions(const QByteArray &extensions)
{
    Certificate certificate;
    certificate.extensions = extensions;
    return certificate.encoded();
}

// Seven octets each.
QByteArray withPolicies(int count)
{
    const QByteArray policies = sequence({oid("2A0304")}).repeated(count);
    return withExtensions(extension("551D20", tlv(0x30, policies)));
}

// The most memory that this process has had so far, in octets.
qint64 peak()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray all = status.readAll();
    const auto at = all.indexOf("VmHWM:");
    return all.mid(at + 6, all.indexOf(" kB", at) - at - 6).trimmed().toLongLong() * 1024;
}

// Loads the file and tells how many times `kSize` that took at most.
int load(const char *path)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    c_language::GetLangPtr()->LANG_SetFileName(QString());
    const qint64 before = peak();
    c_pxcert(nullptr).loadfile(path);
    return static_cast<int>((peak() - before) / kSize) + 1;
}

} // namespace

/// What large files cost: so many times their size at most.
class TestCertMemory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("a sanitizer has memory of its own");
#endif
    }

    void peak_data()
    {
        constexpr int kOfAName = QT_VERSION < QT_VERSION_CHECK(6, 0, 0) ? 12 : 15; // as measured
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("times");
        QTest::newRow("zeros") << QByteArray(kSize, '\0') << 5;
        QTest::newRow("a and NUL") << QByteArray("a\0", 2).repeated(kSize / 2) << 5;
        QTest::newRow("UTF-16") << QByteArray("M\0I\0\r\0\n\0", 8).repeated(kSize / 8) << 5;
        QTest::newRow("0xFF") << QByteArray(kSize, '\xFF') << 5;
        QTest::newRow("armour around lines of a character")
            << armoured(QByteArray("A\n").repeated(kSize / 2)) << 5;
        QTest::newRow("armour around one line") << armoured(QByteArray(kSize, 'A') + '\n') << 5;
        QTest::newRow("beginnings of armour")
            << QByteArray("BEGIN CERTIFICATE").repeated(kSize / 17) << 5;
        QTest::newRow("name") << withName(QByteArray(kSize, 'n')) << kOfAName;
        QTest::newRow("extension") << withExtension(QByteArray(kSize, '\xAB')) << 12;
        QTest::newRow("extensions")
            << withExtensions(QByteArray("\x30\0", 2).repeated(900000)) << 14;
        QTest::newRow("extensions that say something")
            << withExtensions(extension("551D0E", tlv(0x04, "k")).repeated(kSize / 12)) << 45;
        QTest::newRow("policies") << withPolicies(kSize / 7) << 60;
        QTest::newRow("key") << withKey(QByteArray(kSize, '\xAB')) << 12;
    }
    void peak()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, times);
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        // In a process of its own, whose memory is new.
        QProcess loader;
        loader.start(QCoreApplication::applicationFilePath(),
                     {QStringLiteral("--load"), file.fileName()});
        QVERIFY(loader.waitForFinished(120000) && loader.exitStatus() == QProcess::NormalExit);
        const int taken = loader.exitCode();
        QVERIFY2(taken > 0 && taken <= times, qPrintable(QString::number(taken)));
    }
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && QByteArray("--load") == argv[1])
        return load(argv[2]);
    TestCertMemory test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_cert_memory.moc"
