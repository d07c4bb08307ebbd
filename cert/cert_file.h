#pragma once

#include <QByteArray>

/// From the octets of a certificate file to the octets of a certificate.
namespace cert_file {

/// The certificate that the octets of a file stand for: PEM text (RFC 7468) is decoded, anything
/// else is handed on with one zero octet behind it. Of several armoured certificates, and of text
/// around them, the first certificate is taken.
QByteArray certificateOctets(const QByteArray &fileContent);

/// The base64-decoded text between the first "-----BEGIN CERTIFICATE-----" and the next
/// "-----END CERTIFICATE-----", without lines that are no base64; empty when there is no such pair.
QByteArray firstArmouredBlock(const QByteArray &text);

} // namespace cert_file
