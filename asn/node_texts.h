#pragma once

#include "asn/asn_block.h"

#include <QString>

/// Texts of one node for people. Time and memory are linear in its content.
namespace node_texts {

/// The value alone, in the form that its type has (`leaf_text`); a UTCTime up to its first NUL and
/// with a blank behind it. Empty for null and for a node that holds children.
QString value(const stASN_BLOCK_HEADER *node);

/// " { value }", with a blank behind what is neither text nor empty.
QString braced(const stASN_BLOCK_HEADER *node);

/// The type's name, and for most the number of characters of the braced value; "None" for null.
QString summary(const stASN_BLOCK_HEADER *node);

} // namespace node_texts
