#pragma once

#include <QByteArray>

/// What the program's argument means. What the octets stand for that it leads to,
/// `cert/certificate_input.h` says.
namespace certificate_argument {

/// Whether the argument is no path but the certificate itself: more than 255 octets.
bool isCertificate(const QByteArray &argument);

/// The file that an argument means as a path. By now the working directory is the install
/// directory: what is relative and names no file there means the directory that the program was
/// started from, if it names one there. In the encoding of the file system.
QByteArray filePath(const QByteArray &argument);

} // namespace certificate_argument
