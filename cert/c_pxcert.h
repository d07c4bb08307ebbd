#pragma once

#include "asn/certpolicy.h"
#include "cert/detail_node.h"
#include "cert/summary_block.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <vector>

class PXAsnBlock;
class PXAsnElement;

/// The certificate model: turns one X.509 certificate (RFC 5280) into detail rows and a summary in
/// two blocks of text, and hands both out through its signals, which are emitted from within the
/// parsing call.
///
/// One object serves one certificate: a second parse adds its rows after the first's. Whatever
/// arrives, nothing is thrown; a certificate that decodes in part gives the rows made so far.
/// Blocks that are handed in are borrowed for the call. Time and memory are linear in the
/// certificate's octets; values are kept as UTF-16, and most octets as two or three hexadecimal
/// digits each.
///
/// GUI thread only.
class c_pxcert : public QObject
{
    Q_OBJECT

public:
    /// The two blocks of the summary, by the numbers that `result_normal` gives them.
    enum Block { StatusBlock = 0, IdentityBlock = 1 };

    explicit c_pxcert(QObject *parent);

    /// Reads the file (PEM or DER, see `certificate_input`) and parses it. False, with nothing
    /// emitted, when the file can't be read, is empty or is too large (`c_util::kMaxFileSize`);
    /// false as well when `parse_cert` is; true otherwise, whatever the parse found. `path` is in
    /// the encoding of the file system.
    bool loadfile(const char *path);

    /// Certificate ::= SEQUENCE { tbsCertificate, signatureAlgorithm, signatureValue } (RFC 5280,
    /// 4.1), of which the first alone is read. Parses a certificate (DER, base64 or PEM) and emits
    /// the status block, the identity block and all rows, in this order. True, but where memory
    /// runs out, here or in what is connected: what was emitted by then is not to be shown.
    bool parse_cert(QByteArray certificate);

    /// Whether now lies within the validity period, both bounds included, compared to the second
    /// and as shown: certificate times against the local clock. A bound with impossible fields does
    /// not count, and neither does when one is missing or of another form.
    bool isCertValid() const;

    /// Which line feeds of the text that `result_normal` gave last for this block the program
    /// itself wrote, in their order; the others stand in the certificate's values. Empty before.
    const std::vector<bool> &ownLineFeeds(int block) const;

    /// Part of the published interface; deliberately does nothing.
    void sendmsg(const QString &first, const QString &second);

    /// Version to subject public key info of the document's TBSCertificate (RFC 5280, 4.1.2).
    /// False at the first field that can't be read, or for null; rows made before stay.
    bool parseTBSCertificate_basedata(PXAsnBlock *document);

    /// AttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY } (RFC 5280, 4.1.2.4)
    /// of the issuer or the subject. `line` receives "name= value", `value` the value; a common
    /// name or an organization is kept for the summary, the last of each. False, with nothing
    /// received, for null and when type or value is missing.
    bool parseTBSIssuer(PXAsnBlock *attribute, QString &line, QString &value);
    bool parseTBSSubject(PXAsnBlock *attribute, QString &line, QString &value);

    /// "YYMMDDhhmmssZ" (below 50 is 20YY) and "YYYYMMDDhhmmssZ" (RFC 5280, 4.1.2.5) as a UTC
    /// date-time. Deliberate: it is eight hours later than written. A text of another length gives
    /// a null date-time, one with impossible fields an invalid one.
    static QDateTime fromUTCTime(const QString &text);
    static QDateTime fromGeneralizedTime(const QString &text);

    /// extensions [3] EXPLICIT SEQUENCE OF Extension (RFC 5280, 4.1.2.9): a row for every extension
    /// below the wrapper `extensions`. False for null or at the first extension that can't be read;
    /// rows made before stay.
    bool parseTBSCertificate_extendata(PXAsnBlock *extensions);

    // The wording of extensions; `extension_texts` holds the productions. The lists that are handed
    // in stay as they are.

    /// The text of an extension named `name`, from its values in the order they stand.
    QString make_certnode(const QString &name, std::vector<QString> &values);

    /// The texts of certificate policies and of CRL distribution points, grouped by level. The
    /// policies' names are added to the purposes that the status block lists.
    QString make_certnode_certpolicy(std::vector<certpolicy> &items);
    QString make_certnode_crlpoint(std::vector<certpolicy> &items);

    /// The block of one policy, and of one distribution point; `index` is its number.
    QString make_single_certpolicy(int index, std::vector<QString> &values);
    QString make_single_crlpoint(int index, std::vector<QString> &values);

    /// The names of the bits that are set, joined with ",". The low octet of `bits` is the BIT
    /// STRING's first octet (bit 0 is 0x80), the next its second.
    QString get_keyusage(int bits);
    QString get_ns_cert_type(int bits);

    /// Appends a row of a basic field whose full value is its value.
    void add_node(const QString &name, const QString &value);

signals:
    // The order is published: a signal's index follows it.
    void result_detail(std::vector<detail_node> rows); ///< a copy of all rows
    void result_normal(QString text, int block);       ///< `block` is a `Block`

private:
    class ExtensionNames;

    void readCertificate(QByteArray certificate);

    bool readBasicFields(const PXAsnElement &tbs);

    // One field of the TBSCertificate each; none is a missing field.
    bool readVersion(const PXAsnElement &tbs, int &next); ///< `next` moves on to the field after it
    bool readSerialNumber(const PXAsnElement &serialNumber);
    bool readSignatureAlgorithm(const PXAsnElement &signature);
    bool readName(const PXAsnElement &name, const char *field, QLatin1String rowKey,
                  QString &commonName, QString &organization);
    bool readValidity(const PXAsnElement &validity);
    bool readPublicKey(const PXAsnElement &keyInfo);
    bool parseAttribute(const PXAsnElement &attribute, QString &line, QString &value,
                        QString &commonName, QString &organization);

    bool readExtensions(const PXAsnElement &extensions);
    /// One extension: a row, and its purposes; neither when it has no identifier.
    bool readExtension(const PXAsnElement &extension, const ExtensionNames &names);
    void addPurposes(std::vector<QString> purposes);

    SummaryBlock statusBlock() const;
    SummaryBlock identityBlock() const;
    void emitResults();
    void tell(Block number, SummaryBlock block);

    int m_version = 0; ///< as encoded: 0 is v1, 2 is v3
    QString m_serialNumber;
    QString m_signatureAlgorithm;
    QString m_issuerO;
    QString m_issuerCN;
    QString m_subjectCN;
    QString m_subjectO;
    QDateTime m_notBefore;
    QDateTime m_notAfter;
    QString m_validFrom; ///< both as they are shown; empty as long as there are none
    QString m_validTo;
    QString m_publicKeyAlgorithm;
    QString m_publicKeyParameter; ///< the named curve; empty when there is none
    QByteArray m_publicKey;
    std::vector<QString> m_purposes;
    std::vector<detail_node> m_rows;
    std::vector<bool> m_ownLineFeeds[2]; ///< of each block
};
