#include "tests/asn/tree.h"
#include "tests/support/message_recorder.h"

#include "asn/pxasn.h"

#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

namespace {

QByteArray certificateIn(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray text = file.readAll();
    const auto start = text.indexOf("-----BEGIN CERTIFICATE-----");
    const auto end = text.indexOf("-----END CERTIFICATE-----");
    return start < 0 ? text : QByteArray::fromBase64(text.mid(start + 27, end - start - 27));
}

int octetsOfTree(const stASN_BLOCK_HEADER *node)
{
    return static_cast<int>(ASNGetBlockLength(node));
}

// "offset:depth:header:content", as the independent reader numbers the elements. It looks into no
// OCTET STRING.
void positions(const stASN_BLOCK_HEADER *node, int offset, int depth, QStringList &list)
{
    const int header = 1 + node->lengthOctetCount;
    list << QStringLiteral("%1:%2:%3:%4")
                .arg(offset)
                .arg(depth)
                .arg(header)
                .arg(octetsOfTree(node) - header);
    if (!ASNIsConstructed(node->tag))
        return;
    int childOffset = offset + header;
    for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next) {
        positions(cell->child, childOffset, depth + 1, list);
        childOffset += octetsOfTree(cell->child);
    }
}

// The first identifier octet that is not accepted, in the content of constructed elements and of
// OCTET STRINGs that hold a SEQUENCE; 0 when all are.
int refusedTag(QByteArray content)
{
    while (!content.isEmpty()) {
        const auto tag = static_cast<unsigned char>(content.at(0));
        const auto size = static_cast<int>(
            ASNCalcBlockLength(octets(content), static_cast<unsigned int>(content.size())));
        if (size == 0 || !ASN_TAGVALID(tag))
            return tag;
        const int lengthOctet = static_cast<unsigned char>(content.at(1));
        const int header = lengthOctet > 0x80 ? 2 + lengthOctet - 0x80 : 2;
        const bool holdsSequence =
            tag == ASN_TAG_OCTET_STRING && size > header && content.at(header) == '\x30';
        if (ASNIsConstructed(tag) || holdsSequence) {
            const int refused = refusedTag(content.mid(header, size - header));
            if (refused != 0)
                return refused;
        }
        content = content.mid(size);
    }
    return 0;
}

QStringList independentPositions(const QByteArray &der, QString &errors)
{
    QProcess process;
    process.start(QStringLiteral("openssl"),
                  {QStringLiteral("asn1parse"), QStringLiteral("-inform"), QStringLiteral("DER")});
    process.write(der);
    process.closeWriteChannel();
    process.waitForFinished();
    errors = QString::fromUtf8(process.readAllStandardError()) + process.errorString();
    QStringList list;
    static const QRegularExpression line(
        QStringLiteral("^ *(\\d+):d=(\\d+) +hl=(\\d+) +l= *(\\d+) "));
    const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    for (const QByteArray &text : lines) {
        const QRegularExpressionMatch match = line.match(QString::fromUtf8(text));
        if (match.hasMatch())
            list << match.capturedTexts().mid(1).join(QLatin1Char(':'));
    }
    return list;
}

} // namespace

/// Certificates that nobody here made: Debian's authorities, and those shipped as examples.
class TestAsnCertificates : public QObject
{
    Q_OBJECT

private:
    QScopedPointer<MessageRecorder> m_debugStream;

private slots:
    void init() { m_debugStream.reset(new MessageRecorder); }
    void cleanup()
    {
        m_debugStream.reset();
        g_bExtend = 0;
    }

    void files_data()
    {
        QTest::addColumn<QString>("path");
        int count = 0;
        for (const char *folder : {"/usr/share/ca-certificates", PX_SOURCE_DIR "/examples"}) {
            QDirIterator files(QString::fromUtf8(folder), {"*.crt", "*.pem"}, QDir::Files,
                               QDirIterator::Subdirectories);
            for (; files.hasNext(); ++count) {
                const QString path = files.next();
                QTest::newRow(qPrintable(files.fileName())) << path;
            }
        }
        QVERIFY2(count > 100, "package ca-certificates is missing");
    }

    void files()
    {
        QFETCH(QString, path);
        const QByteArray der = certificateIn(path);
        PXAsn document(nullptr);
        QCOMPARE(document.open(der), 1);
        QCOMPARE(document.getChildCount(), 3);
        const int refused = refusedTag(der);
        if (refused != 0) {
            m_debugStream.reset();
            qInfo("holds an identifier octet that is refused: %02X", unsigned(refused));
            QVERIFY(document.build().size() < der.size());
            return;
        }
        QCOMPARE(document.build().toHex(), der.toHex());
        QVERIFY(!document.myprint().isEmpty());
        PXAsn fromText(nullptr);
        QCOMPARE(fromText.open(der.toBase64()), 1);
        QCOMPARE(fromText.build().toHex(), der.toHex());

        const AsnBlockPtr root = parsed(der);
        ASNUpdate(root.get());
        QStringList found;
        positions(root.get(), 0, 0, found);
        QString errors;
        const QStringList expected = independentPositions(der, errors);
        QVERIFY2(!expected.isEmpty(), qPrintable(errors));
        QCOMPARE(found, expected);
    }
};

QTEST_GUILESS_MAIN(TestAsnCertificates)
#include "tst_asn_certificates.moc"
