#pragma once

#include "asn/certpolicy.h"
#include "cert/detail_node.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <vector>

class PXAsnBlock;

/// The certificate model: turns one X.509 certificate (RFC 5280) into detail rows and a summary in
/// two blocks of text, and hands both out through its signals, which are emitted from within the
/// parsing call.
///
/// One object serves one certificate: a second parse adds its rows after the first's. Whatever
/// arrives, nothing is thrown; a certificate that decodes in part gives the rows made so far.
class c_pxcert : public QObject
{
    Q_OBJECT

public:
    explicit c_pxcert(QObject *parent);

    /// Reads the file (PEM or DER) and parses it. False, with nothing emitted, when the file can't
    /// be read, is empty or is too large; true otherwise, whatever the parse found. `path` is in
    /// the encoding of the file system.
    bool loadfile(const char *path);

    /// Parses a certificate (DER, base64 or PEM) and emits both summary blocks and the rows.
    /// Always true.
    bool parse_cert(QByteArray certificate);

    /// Whether now lies within the validity period, both bounds included, compared to the second
    /// and as shown: certificate times against the local clock. A bound with impossible fields does
    /// not count, and neither does when one is missing or of another form.
    bool isCertValid() const;

    /// Part of the published interface; deliberately does nothing.
    void sendmsg(const QString &first, const QString &second);

    /// Version to subject public key info of the document's TBSCertificate (RFC 5280, 4.1.2).
    /// False at the first field that can't be read; rows made before stay.
    bool parseTBSCertificate_basedata(PXAsnBlock *document);

    /// One AttributeTypeAndValue (RFC 5280, 4.1.2.4) of the issuer or the subject. `line` receives
    /// "name= value", `value` the value. False when type or value can't be read.
    bool parseTBSIssuer(PXAsnBlock *attribute, QString &line, QString &value);
    bool parseTBSSubject(PXAsnBlock *attribute, QString &line, QString &value);

    /// "YYMMDDhhmmssZ" and "YYYYMMDDhhmmssZ" (RFC 5280, 4.1.2.5) as a UTC date-time eight hours
    /// later than written. A text of another length gives a null date-time, one with impossible
    /// fields an invalid one.
    static QDateTime fromUTCTime(const QString &text);
    static QDateTime fromGeneralizedTime(const QString &text);

    /// A row of kind 1 for every extension below the [3] wrapper (RFC 5280, 4.1.2.9). False for
    /// null or at the first extension that can't be read; rows made before stay.
    bool parseTBSCertificate_extendata(PXAsnBlock *extensions);

    /// The text of an extension named `name`, from its values in the order they stand.
    QString make_certnode(const QString &name, std::vector<QString> &values);

    /// The texts of certificate policies and of CRL distribution points, grouped by level.
    QString make_certnode_certpolicy(std::vector<certpolicy> &items);
    QString make_certnode_crlpoint(std::vector<certpolicy> &items);

    /// The block of one policy: identifier, then qualifier id and qualifier in pairs.
    QString make_single_certpolicy(int index, std::vector<QString> &values);

    /// The block of one distribution point: URL, then attribute name and value of the CRL issuer in
    /// pairs.
    QString make_single_crlpoint(int index, std::vector<QString> &values);

    /// The names of the bits that are set. The low octet of `bits` is the BIT STRING's first octet
    /// (bit 0 is 0x80), the next its second.
    QString get_keyusage(int bits);
    QString get_ns_cert_type(int bits);

    /// Appends a row of kind 0 whose full value is its value.
    void add_node(const QString &name, const QString &value);

signals:
    // The order is published: a signal's index follows it.
    void result_detail(std::vector<detail_node> rows);
    void result_normal(QString text, int block); ///< block 0 is the status, 1 the identity

private:
    using AttributeParser = bool (c_pxcert::*)(PXAsnBlock *, QString &, QString &);

    // One field of the TBSCertificate each; a null block is a missing field.
    bool readVersion(PXAsnBlock *tbs, int &next); ///< `next`: the index of the field after it
    bool readSerialNumber(PXAsnBlock *serialNumber);
    bool readSignatureAlgorithm(PXAsnBlock *signature);
    bool readName(PXAsnBlock *name, const char *field, QLatin1String rowKey,
                  AttributeParser parseAttributeOf);
    bool readValidity(PXAsnBlock *validity);
    bool readPublicKey(PXAsnBlock *keyInfo);
    bool parseAttribute(PXAsnBlock *attribute, QString &line, QString &value, QString &commonName,
                        QString &organization);

    QString statusBlock() const;
    QString identityBlock() const;

    int m_version = 0; ///< as encoded: 0 is v1, 2 is v3
    QString m_serialNumber;
    QString m_signatureAlgorithm;
    QString m_issuerO;
    QString m_issuerCN;
    QString m_subjectCN;
    QString m_subjectO;
    QDateTime m_notBefore;
    QDateTime m_notAfter;
    QString m_publicKeyAlgorithm;
    QString m_publicKeyParameter; ///< the named curve; empty when there is none
    QByteArray m_publicKey;
    std::vector<QString> m_purposes;
    std::vector<detail_node> m_rows;
};
