#include "tests/cert/parsed.h"
#include "tests/support/der.h"
#include "tests/support/message_recorder.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/printed.h"

#include "asn/pxasn.h"
#include "cert/certificate_input.h"

#include <fcntl.h>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace der;

namespace {

QByteArray armour(const QByteArray &certificate)
{
    return "-----BEGIN CERTIFICATE-----\n" + certificate.toBase64() +
           "\n-----END CERTIFICATE-----\n";
}

QByteArray withSerialNumber(const char *hex)
{
    Certificate certificate;
    certificate.serialNumber = integer(hex);
    return certificate.encoded();
}

Parsed load(const QByteArray &path, bool *loaded)
{
    Parsed parsed;
    c_pxcert model(nullptr);
    parsed.listenTo(model);
    *loaded = model.loadfile(path.constData());
    return parsed;
}

} // namespace

/// From a file, or an argument's text, to the certificate's octets.
class TestCertLoad : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QByteArray path(const char *name) const { return QFile::encodeName(m_folder.filePath(name)); }

    QByteArray file(const QByteArray &content) const
    {
        QFile file(m_folder.filePath(QStringLiteral("certificate")));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("could not write the test's file");
        return QFile::encodeName(file.fileName());
    }

private slots:
    void initTestCase()
    {
        c_language::GetLangPtr()->LANG_SetFileName(QString());
        QVERIFY(m_folder.isValid());
    }

    void binaryInputGetsOneZeroOctetMore()
    {
        QCOMPARE(certificate_input::certificateOctets("0\x03\x02\x01"),
                 QByteArray("0\x03\x02\x01\0", 5));
        QCOMPARE(certificate_input::certificateOctets(QByteArray("0\0x", 3)),
                 QByteArray("0\0x\0", 4));
        const QByteArray behindANul = '\0' + armour("x");
        QCOMPARE(certificate_input::certificateOctets(behindANul), behindANul + '\0');
    }

    void firstArmouredBlock()
    {
        const QByteArray certificate = Certificate().encoded();
        QCOMPARE(
            certificate_input::firstArmouredBlock("x\n" + armour(certificate) + armour("other")),
            certificate);
        QCOMPARE(certificate_input::firstArmouredBlock("-----BEGIN CERTIFICATE-----\nMAA="),
                 QByteArray());
        QCOMPARE(certificate_input::firstArmouredBlock(
                     "-----END CERTIFICATE-----\n-----BEGIN CERTIFICATE-----\nMAA=\n"),
                 QByteArray());
        QCOMPARE(certificate_input::firstArmouredBlock(certificate.toBase64() +
                                                       "\n-----END CERTIFICATE-----\n"),
                 QByteArray());
        QCOMPARE(certificate_input::firstArmouredBlock({}), QByteArray());
    }

    void whiteSpaceAroundALineCountsForNothing()
    {
        const QByteArray certificate = Certificate().encoded();
        for (const char *space : {" ", "\t", "\v", "\f", " \t "}) {
            const QByteArray text = "-----BEGIN CERTIFICATE-----\n" + QByteArray(space) + '\n' +
                                    space + certificate.toBase64() + space +
                                    "\n-----END CERTIFICATE-----\n";
            QCOMPARE(certificate_input::firstArmouredBlock(text), certificate);
        }
    }

    // Then all of the text is one element: a certificate, if it is a SEQUENCE.
    void commentThatIsTheBeginningOfAnElement()
    {
        const QByteArray certificate = Certificate().encoded();
        const auto octetsOf = [&](const QByteArray &whole) {
            const QByteArray comment = whole.left(whole.size() - certificate.size()).toBase64();
            return certificate_input::certificateOctets(comment + '\n' + armour(certificate));
        };
        const QByteArray inside = integer("05") + certificate;
        QCOMPARE(octetsOf(tlv(0x04, inside)), certificate);
        QCOMPARE(octetsOf(tlv(0x30, inside)), tlv(0x30, inside));
    }

    void textThatHoldsNoSequenceIsDecodedWhole()
    {
        QCOMPARE(certificate_input::certificateOctets(
                     "-----BEGIN CERTIFICATE-----\nAQID\n!BAUG\n-----END CERTIFICATE-----\n"),
                 QByteArray("\x01\x02\x03\x04\x05\x06"));
        // Nor one that fits.
        QCOMPARE(certificate_input::certificateOctets("MIIB\n" + armour("\x04\x05\x06")),
                 QByteArray("\x30\x82\x01\x04\x05\x06"));
    }

    void armourCountsForNothingWhereverItStands()
    {
        const QByteArray certificate = Certificate().encoded();
        for (const char *end : {"END CERTIFICATE", "END CERT-IFI--CATE", "-----END CERTIFICATE"})
            QCOMPARE(certificate_input::certificateOctets("BEGIN CERTIFICATE\n" +
                                                          certificate.toBase64() + '\n' + end),
                     certificate);
    }

    void linesOfBase64AloneCount()
    {
        const QByteArray alphabet(
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
        const auto octetsOf = [&](const QByteArray &line) {
            return certificate_input::firstArmouredBlock("-----BEGIN CERTIFICATE-----\n" + line +
                                                         "\n-----END CERTIFICATE-----\n");
        };
        for (int i = 0; i < alphabet.size(); ++i)
            QCOMPARE(octetsOf("QUJ" + alphabet.mid(i, 1)).left(2), QByteArray("AB"));
        for (const char other : {'.', ':', '@', '[', '`', '{', '*', ',', '-', '_', ' '})
            QCOMPARE(octetsOf(QByteArray("QUJ") + other + "DRE\nRUZH"), QByteArray("EFG"));
    }

    void documentThatCouldNotBeOpenedIsEmpty()
    {
        PXAsn document(nullptr);
        certificate_input::open(document, tlv(0x04, armour("\x30\x82")));
        QVERIFY(!document.checkTag(0x04));
        QCOMPARE(document.getChildCount(), 0);
    }

    void unreadablePlacesAreRefusedAtOnce()
    {
        const QByteArray folder = QFile::encodeName(m_folder.path());
        const QByteArray fifo = path("fifo");
        QCOMPARE(::mkfifo(fifo.constData(), 0600), 0);
        const QByteArray socketPath = path("socket");
        const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, socketPath.constData(), sizeof address.sun_path);
        if (listener < 0)
            QFAIL("no socket");
        QCOMPARE(::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        const QByteArray dangling = path("dangling");
        QCOMPARE(::symlink("nowhere", dangling.constData()), 0);
        const QByteArray empty = path("empty");
        QVERIFY(QFile(QFile::decodeName(empty)).open(QIODevice::WriteOnly));

        QElapsedTimer timer;
        timer.start();
        for (const QByteArray &place :
             {folder, fifo, socketPath, dangling, empty, path("missing"), QByteArray("/dev/null"),
              QByteArray("/dev/zero"), QByteArray("/dev/tty"), QByteArray("")}) {
            bool loaded = true;
            const Parsed parsed = load(place, &loaded);
            QVERIFY2(!loaded, place.constData());
            QCOMPARE(parsed.blocks.size(), 0);
            QCOMPARE(parsed.rowSignals, 0);
        }
        QVERIFY(timer.elapsed() < 5000);
        ::close(listener);
    }

    void fileThatMayNotBeReadIsRefused()
    {
        const QByteArray place = file(Certificate().encoded());
        QCOMPARE(::chmod(place.constData(), 0), 0);
        QCOMPARE(::chmod(QFile::encodeName(m_folder.path()).constData(), 0755), 0);
        QVERIFY(asOrdinaryUser([&] {
            bool loaded = true;
            load(place, &loaded);
            return !loaded;
        }));
        QVERIFY(QFile::remove(QFile::decodeName(place)));
    }

    void pipeIsReadToItsEnd()
    {
        const QByteArray certificate = withSerialNumber("1111");
        int ends[2] = {};
        QCOMPARE(::pipe(ends), 0);
        const pid_t writer = ::fork();
        if (writer == 0) {
            ::close(ends[0]);
            for (const char octet : certificate) {
                if (::write(ends[1], &octet, 1) != 1)
                    ::_exit(1);
                ::usleep(500);
            }
            ::_exit(0);
        }
        ::close(ends[1]);
        bool loaded = false;
        const Parsed parsed = load("/dev/fd/" + QByteArray::number(ends[0]), &loaded);
        QVERIFY(loaded);
        QCOMPARE(parsed.row(text_keys::kSerialNumber).value, QStringLiteral("1111"));
        ::close(ends[0]);
        QCOMPARE(::waitpid(writer, nullptr, 0), writer);
    }

    void size_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("accepted");
        constexpr qint64 kLimit = 64LL * 1024 * 1024;
        QTest::newRow("10239") << qint64(10239) << true;
        QTest::newRow("10240") << qint64(10240) << true;
        QTest::newRow("10241") << qint64(10241) << true;
        QTest::newRow("the limit") << kLimit << true;
        QTest::newRow("one octet more") << kLimit + 1 << false;
        QTest::newRow("100 MB") << qint64(100) * 1000 * 1000 << false;
    }
    void size()
    {
        QFETCH(qint64, size);
        const QByteArray place = file(withSerialNumber("1111"));
        QVERIFY(QFile::resize(QFile::decodeName(place), size));
        bool loaded = false;
        const Parsed parsed = load(place, &loaded);
        QTEST(loaded, "accepted");
        QCOMPARE(parsed.row(text_keys::kSerialNumber).value, QLatin1String(loaded ? "1111" : ""));
    }

    void largeExtensionIsWhole()
    {
        Certificate certificate;
        certificate.extensions = extension(kUnknown, QByteArray(100000, '\xAB'));
        bool loaded = false;
        const Parsed parsed = load(file(certificate.encoded()), &loaded);
        QCOMPARE(parsed.rows.back().kind, 1);
        QCOMPARE(parsed.rows.back().value.size(), 3 * 100000); // "AB " each, the last a line feed
    }

    void emissionOrder()
    {
        QStringList order;
        MessageRecorder recorder;
        c_pxcert model(nullptr);
        connect(&model, &c_pxcert::result_normal, this, [&](const QString &, int block) {
            order << QStringLiteral("block %1").arg(block);
        });
        connect(&model, &c_pxcert::result_detail, this, [&] { order << QStringLiteral("rows"); });
        QVERIFY(model.parse_cert(Certificate().encoded()));
        QCOMPARE(order, (QStringList{"block 0", "block 1", "rows"}));
        QVERIFY(recorder.messages().contains(QStringLiteral("parse cert end")));
        QCOMPARE(recorder.messages().last(), QStringLiteral("parse cert end2"));
    }

    void everyTruncationIsSafe()
    {
        const QByteArray certificate = Certificate().encoded();
        for (int size = 0; size < certificate.size(); ++size) {
            const Parsed parsed = parse(certificate.left(size));
            QCOMPARE(parsed.blocks.size(), 2);
        }
    }

    void secondParseAddsItsRows()
    {
        c_pxcert model(nullptr);
        Parsed parsed;
        parsed.listenTo(model);
        model.parse_cert(withSerialNumber("1111"));
        const std::size_t rows = parsed.rows.size();
        model.parse_cert(withSerialNumber("2222"));
        QCOMPARE(parsed.rows.size(), 2 * rows);
        QCOMPARE(parsed.rows.at(1).value, QStringLiteral("1111"));
        QCOMPARE(parsed.rows.at(rows + 1).value, QStringLiteral("2222"));
    }

    void sixFieldsAreNotLookedBehind()
    {
        Certificate certificate;
        const QByteArray missing = "(!node || index < 0 || index >= listChild.count()) fail\n";
        QCOMPARE(printedBy([&] { parse(certificate.encoded()); }).count(missing), 1);
        certificate.version.clear();
        QCOMPARE(printedBy([&] { parse(certificate.encoded()); }).count(missing), 0);
    }

    void extensionsAreReadWhateverTheBasicFieldsSay()
    {
        Certificate certificate;
        certificate.subject = tlv(0x05, {});
        certificate.extensions = extension(kUnknown, integer("05"));
        const Parsed parsed = parse(certificate.encoded());
        QVERIFY(!parsed.hasRow(text_keys::kSubject));
        QCOMPARE(parsed.rows.back().value, QStringLiteral("05\n"));
    }

    // The basic fields ask for a SEQUENCE, the extensions for anything that has as many children.
    void fieldsInASetHaveExtensionsAlone()
    {
        Certificate certificate;
        certificate.extensions = extension(kUnknown, integer("05"));
        const Parsed parsed = parse(sequence({tlv(0x31, certificate.tbs())}));
        QCOMPARE(parsed.rows.size(), std::size_t(1));
        QCOMPARE(parsed.rows.back().value, QStringLiteral("05\n"));
    }

    void extensionsAreFoundByTheirPlaceNotByTheirTag()
    {
        Certificate certificate;
        certificate.keyInfo += tlv(0xA0, sequence({extension(kUnknown, integer("05"))}));
        const Parsed parsed = parse(certificate.encoded());
        QCOMPARE(parsed.rows.back().kind, int(detail_node::Extension));
        QCOMPARE(parsed.rows.back().name, QLatin1String(kUnknownDotted));
    }

    void secondParseForgetsTheFirstOnesCurve()
    {
        Certificate certificate;
        certificate.keyInfo = sequence({sequence({oid(kEcPublicKey), oid(kPrime256)}),
                                        tlv(0x03, QByteArray::fromHex("0004"))});
        c_pxcert model(nullptr);
        Parsed parsed;
        parsed.listenTo(model);
        model.parse_cert(certificate.encoded());
        QCOMPARE(parsed.rows.back().name, texts::shown(text_keys::kPublicKeyParameters));
        model.parse_cert(Certificate().encoded());
        QCOMPARE(parsed.rows.back().name, texts::shown(text_keys::kPublicKey));
    }

    void sendmsgDoesNothing()
    {
        MessageRecorder recorder;
        c_pxcert model(nullptr);
        Parsed parsed;
        parsed.listenTo(model);
        model.sendmsg(QStringLiteral("a"), QStringLiteral("b"));
        QCOMPARE(recorder.messages().size(), 0);
        QCOMPARE(parsed.blocks.size() + parsed.rowSignals, 0);
    }

    void signalsStandInTheirPublishedOrder()
    {
        const QMetaObject &meta = c_pxcert::staticMetaObject;
        const int first = meta.methodOffset();
        QCOMPARE(meta.method(first).methodSignature(),
                 QByteArray("result_detail(std::vector<detail_node>)"));
        QCOMPARE(meta.method(first + 1).methodSignature(),
                 QByteArray("result_normal(QString,int)"));
        c_pxcert model(nullptr);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        for (const char *type : {"detail_node", "std::vector<detail_node>"})
            QVERIFY2(QMetaType::type(type) != QMetaType::UnknownType, type);
#endif
        QVERIFY(meta.method(first).parameterType(0) != QMetaType::UnknownType);
    }
};

QTEST_GUILESS_MAIN(TestCertLoad)
#include "tst_cert_load.moc"
