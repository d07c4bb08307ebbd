#pragma once

#include "asn/asn_tags.h"

#include <memory>

/// A tree of DER elements (X.690): parsing, lengths, re-encoding and editing, as free functions
/// over plain records. Results are 1 for success and 0 for failure, or a pointer that is null on
/// failure; nothing is thrown or printed.
///
/// Single-threaded: `g_bExtend` is state of the process.

struct stASN_CHILD_CELL;

/// One element. A node owns its subtree: the cells, the children and a leaf's content.
struct stASN_BLOCK_HEADER
{
    unsigned char tag;              ///< the identifier octet, class and constructed bit included
    unsigned char rawFlag;          ///< 1: holds octets (a leaf); 0: holds children
    unsigned char lengthOctets[5];  ///< as `ASNUpdate` computed them, most significant first
    unsigned char lengthOctetCount; ///< 1 to 5; 0 until `ASNUpdate` has run
    unsigned int totalLength;       ///< octets of the whole element; 0 until `ASNUpdate` has run
    union
    {
        unsigned char *content; ///< of a leaf: owned, null when empty
        /// Of a node with children: the parent it was created for, not owned; null when it has none
        /// and when it was parsed. Never read as content.
        stASN_BLOCK_HEADER *parent;
    };
    unsigned int contentLength; ///< octets of a leaf's content
};

/// A node that can hold children: its tag has the constructed bit or is OCTET STRING. A leaf is
/// allocated without this part, so it may be reached only through `ASNFirstCell`.
struct stASN_BLOCK_STRUCT : stASN_BLOCK_HEADER
{
    stASN_CHILD_CELL *firstChild;
    stASN_CHILD_CELL *lastChild;
};

struct stASN_CHILD_CELL
{
    stASN_BLOCK_HEADER *child;
    stASN_CHILD_CELL *next;
};

/// Limits of one parse: what is nested deeper (the outermost element has depth 1) or comes after so
/// many elements does not parse.
constexpr int ASN_MAX_DEPTH = 128;
constexpr unsigned int ASN_MAX_ELEMENTS = 4U * 1024 * 1024;

/// The extension switch. While it is 1, an OCTET STRING is parsed as encapsulated DER when its
/// content is a complete run of accepted elements. Set by the first identifier octet 0xA3 that a
/// parse meets; a parse never clears it, its caller does.
extern unsigned char g_bExtend;

/// 1 when the parser accepts the identifier octet. Deliberate: the set is what X.509 certificates
/// use; it is also what ends the attempt to read an OCTET STRING's content as DER.
int ASN_TAGVALID(unsigned char tag);

/// Parses one element from the start of `data` (`size` octets; what follows the element is left
/// alone) and appends it to `parent` when one is given. Null when it does not parse. All lengths of
/// the new nodes are 0 until `ASNUpdate` is called on the root.
///
/// A child that does not parse ends its parent's list and is dropped with all that follows it.
stASN_BLOCK_HEADER *ASNAddByData(stASN_BLOCK_HEADER *parent, const unsigned char *data,
                                 unsigned int size);

/// Octets of the element at `data`, header included; 0 when it does not fit into `available` or its
/// length has an unsupported form. 0x80 counts as an empty content (X.690, 8.1.3.6 is not
/// supported).
unsigned int ASNCalcBlockLength(const unsigned char *data, unsigned int available);

/// Octets that the DER length of `contentLength` takes: 1 to 5.
unsigned int ASNCalcLengthBytes(unsigned int contentLength);

/// The stored total length; 0 for null.
unsigned int ASNGetBlockLength(const stASN_BLOCK_HEADER *node);

/// Content octets of a leaf. Deliberate: of a node with children the sum over its leaves, without
/// any child's tag and length octets.
unsigned int ASNGetDataLength(const stASN_BLOCK_HEADER *node);

/// Computes length octets and total lengths of the whole subtree. 0 for null.
int ASNUpdate(stASN_BLOCK_HEADER *node);

/// Writes the subtree's DER, `ASNGetBlockLength(node)` octets after `ASNUpdate`. 0, with nothing
/// written, for null or when that exceeds `capacity`. Of a tree that was changed since, what fits
/// is written, by the lengths as they are.
int ASNBuildData(const stASN_BLOCK_HEADER *node, unsigned char *output, unsigned int capacity);

/// A new empty node for children, linked nowhere. Null for a tag that can't have any.
stASN_BLOCK_HEADER *ASNCreateStruct(unsigned char tag, stASN_BLOCK_HEADER *parent);

/// A new empty constructed node, appended to `parent` when one is given. Null for other tags.
/// Tells the signature core's log.
stASN_BLOCK_HEADER *ASNAddStruct(unsigned char tag, stASN_BLOCK_HEADER *parent);

/// A new empty leaf, appended to `parent` when one is given. Null for a constructed tag.
stASN_BLOCK_HEADER *ASNAddSample(unsigned char tag, stASN_BLOCK_HEADER *parent);

/// Appends `child`, which `parent` then owns. 0 for a parent that is null or a leaf.
int ASNAppendChild(stASN_BLOCK_HEADER *parent, stASN_BLOCK_HEADER *child);

/// The cell of the first child, or null: the way to walk all children in linear time.
const stASN_CHILD_CELL *ASNFirstCell(const stASN_BLOCK_HEADER *node);

/// The child at `index`, still owned by the node; null when there is none.
stASN_BLOCK_HEADER *ASNGetChild(const stASN_BLOCK_HEADER *node, int index);

/// Unlinks and deletes the child at `index`. 0 when there is none.
int ASNRemoveChild(stASN_BLOCK_HEADER *node, int index);

/// Deletes the subtree; null is ignored. A linked node goes by `ASNRemoveChild` instead.
void ASNDeleteBlock(stASN_BLOCK_HEADER *node);

/// Replaces a leaf's content by a copy of `size` octets; null or 0 octets empty it. An OCTET STRING
/// that holds children loses them and becomes a leaf. 0 for null, for a constructed node and when
/// memory is exhausted; the old content then stays.
int ASNSetBlockData(stASN_BLOCK_HEADER *node, const unsigned char *data, unsigned int size);

struct AsnBlockDeleter
{
    void operator()(stASN_BLOCK_HEADER *node) const { ASNDeleteBlock(node); }
};

/// Owns a subtree that is linked nowhere.
using AsnBlockPtr = std::unique_ptr<stASN_BLOCK_HEADER, AsnBlockDeleter>;
