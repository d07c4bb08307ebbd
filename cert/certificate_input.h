#pragma once

#include <QByteArray>

class PXAsn;

/// What the octets that a user hands over stand for. A path never gets here: which file the
/// program's argument names, and when it is a certificate itself, `app/certificate_argument.h`
/// says.
///
/// The order of attempts, for an argument that is a certificate from step 3 on:
///
/// 1. A file whose text, up to the first NUL, contains "BEGIN CERTIFICATE" is PEM (RFC 7468). If
///    everything but armour, wherever it stands, is base64 of one SEQUENCE, it is that; else the
///    first armoured block, if that is one; else whichever begins with the longer SEQUENCE that
///    fits, the former when none does.
/// 2. Any other file is taken as it is, with one zero octet behind.
/// 3. The octets are DER, else base64 of DER (`PXAsn::open`).
/// 4. If what was opened is no SEQUENCE and the octets hold an armoured block, that is opened
///    instead, as in step 3.
///
/// What follows a SEQUENCE is dropped, in a file as in a block. All of it is linear in the octets;
/// beside those of a file no more than twice as many are held at a time.
namespace certificate_input {

/// Steps 1 and 2: the octets of the certificate that a file stands for. Of several armoured
/// certificates, and of text around them, the first certificate is taken.
QByteArray certificateOctets(QByteArray fileContent);

/// Steps 3 and 4. A document that could not be opened is empty: it has no node and no children.
void open(PXAsn &document, const QByteArray &certificate);

/// The base64-decoded text between the first "-----BEGIN CERTIFICATE-----" and the next
/// "-----END CERTIFICATE-----", without lines that are no base64 (those of white space or a
/// comment, but not a plain word); empty when there is no such pair. A line ends with CR, LF or
/// both.
QByteArray firstArmouredBlock(const QByteArray &text);

} // namespace certificate_input
