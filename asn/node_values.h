#pragma once

#include "asn/asn_block.h"

#include <QByteArray>
#include <QString>

/// Values of one node in Qt's types, each a copy where nothing else is said. They are empty, or 0,
/// for null and for a node that holds children.
namespace node_values {

/// The largest content that is read as a value or a text. Beyond it, the sizes of texts made from
/// it would no longer fit into an int.
constexpr unsigned int kMostOctets = 512U * 1024 * 1024;

/// The content octets as they are encoded, the unused-bits octet of a BIT STRING included; empty
/// above `kMostOctets`.
QByteArray content(const stASN_BLOCK_HEADER *node);

/// The same without a copy: good as long as the node's content is.
QByteArray contentView(const stASN_BLOCK_HEADER *node);

/// OBJECT IDENTIFIER (X.690, 8.19): its name in the language file's OID section, or dotted text, or
/// nothing when it has none. BIT STRING (8.6): the octets after the unused-bits octet, as Latin-1.
/// UTF8String and BMPString (8.23): their text. Others: the content as Latin-1.
QString text(const stASN_BLOCK_HEADER *node);

/// BIT STRING: the octets after the unused-bits octet. BMPString: its text in UTF-8. Others: the
/// content.
QByteArray octets(const stASN_BLOCK_HEADER *node);

/// INTEGER (X.690, 8.3) of one octet, unsigned. Deliberate: two and four octets are read as the
/// platform stores them, others as 0.
int number(const stASN_BLOCK_HEADER *node);

} // namespace node_values
