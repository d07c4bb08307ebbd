#pragma once

#include "asn/asn_tags.h"

#include <memory>

/// A tree of DER elements (X.690): parsing, lengths, re-encoding and editing, as free functions
/// over plain records.
///
/// Results are 1 for success and 0 for failure, or a pointer that is null on failure; after a
/// failure trees and outputs are as they were, where nothing else is said. Nothing is thrown, and
/// nothing printed. Null is taken for a node anywhere, and fails.
///
/// Lengths of a tree are right after `ASNUpdate` on its root, until the next change: `ASNUpdate`,
/// then `ASNGetBlockLength` for the size of a buffer, then `ASNBuildData`.
///
/// A tree may be of any depth, as editing can make it: nothing here recurs along it. Only a parse
/// has limits.
///
/// A node ends with `ASNDeleteBlock` on it or on a node above it, `ASNRemoveChild` on it or on a
/// node above it, and `ASNSetBlockData` on an OCTET STRING above it; nothing else moves or ends
/// nodes. A leaf's `content` ends with its node, and with `ASNSetBlockData` on it.
///
/// Single-threaded: `g_bExtend` is state of the process.

struct stASN_CHILD_CELL;

// Without gaps, a leaf has 24 octets and a node with children 40: the heap gives out just these,
// and 16 more for one more. There may be millions.
#pragma pack(push, 4)

/// One element. A node owns its subtree: the cells, the children and a leaf's content, each a block
/// of the heap.
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
    unsigned int contentLength; ///< octets of a leaf's content; 0 in a node with children
};

/// A node that can hold children: its tag has the constructed bit or is OCTET STRING. A leaf is
/// allocated without this part, so it may be reached only through `ASNFirstCell`.
struct stASN_BLOCK_STRUCT : stASN_BLOCK_HEADER
{
    stASN_CHILD_CELL *firstChild;
    stASN_CHILD_CELL *lastChild;
};

#pragma pack(pop)

struct stASN_CHILD_CELL
{
    stASN_BLOCK_HEADER *child;
    stASN_CHILD_CELL *next;
};

/// How deep a parse goes, the outermost element having depth 1. Certificates end at about 12; 128
/// levels of the parser fit on any thread's stack. What is nested deeper does not parse, and an
/// OCTET STRING at the last level stays a leaf.
constexpr int ASN_MAX_DEPTH = 128;

/// How many elements the tree of a parse has. Certificates have hundreds, the largest revocation
/// lists some million. A tree of so many, which two octets each can ask for, takes 256 MiB. What
/// comes behind does not parse, and an OCTET STRING that would hold more stays a leaf.
constexpr unsigned int ASN_MAX_ELEMENTS = 4U * 1024 * 1024;

// Reading.

/// The extension switch. While it is 1, an OCTET STRING is parsed as encapsulated DER when its
/// content is a complete run of accepted elements: what extnValue holds (RFC 5280, 4.1). Set by the
/// first identifier octet 0xA3 that a parse meets; a parse never clears it, its caller does.
extern unsigned char g_bExtend;

/// 1 when the parser accepts the identifier octet. Deliberate: the set is what X.509 certificates
/// use; it is also what ends the attempt to read an OCTET STRING's content as DER.
int ASN_TAGVALID(unsigned char tag);

/// Parses one element (X.690, 8.1) from the start of `data` (`size` octets; what follows the
/// element is left alone). The new node is `parent`'s last child, or the caller's when that is
/// null. Nothing points into `data` afterwards. Null, and `parent` as it was, when it does not
/// parse.
///
/// A child that does not parse ends its parent's list and is dropped with all that follows it.
/// Time and memory are linear in `size`.
stASN_BLOCK_HEADER *ASNAddByData(stASN_BLOCK_HEADER *parent, const unsigned char *data,
                                 unsigned int size);

/// Octets of the element at `data`, header included; 0 when it does not fit into `available` or its
/// length has an unsupported form (`DerCursor::next`).
unsigned int ASNCalcBlockLength(const unsigned char *data, unsigned int available);

// Lengths and writing.

/// Octets that the shortest DER length (X.690, 10.1) of `contentLength` takes: 1 to 5.
unsigned int ASNCalcLengthBytes(unsigned int contentLength);

/// The stored total length; 0 for null.
unsigned int ASNGetBlockLength(const stASN_BLOCK_HEADER *node);

/// Content octets of a leaf; 0 for null. Deliberate: of a node with children the sum over its
/// leaves, without any child's tag and length octets. Sums wrap in 32 bits. Linear in the subtree.
unsigned int ASNGetDataLength(const stASN_BLOCK_HEADER *node);

/// Computes length octets and total lengths of the whole subtree, in time linear in it. Lengths
/// wrap in 32 bits. 0 for null.
int ASNUpdate(stASN_BLOCK_HEADER *node);

/// Writes the subtree's DER, `ASNGetBlockLength(node)` octets after `ASNUpdate`. 0, with nothing
/// written, for null or when that exceeds `capacity`. Of a tree that was changed since, what fits
/// is written, by the lengths as they are. Linear in the subtree and its octets.
int ASNBuildData(const stASN_BLOCK_HEADER *node, unsigned char *output, unsigned int capacity);

// Nodes and children. A new node's lengths are 0. One that is appended belongs to its parent, any
// other to the caller, who ends it with `ASNDeleteBlock`.

/// A new empty node for children, linked nowhere: `parent` is only noted in it. Null for a tag that
/// can't have any.
stASN_BLOCK_HEADER *ASNCreateStruct(unsigned char tag, stASN_BLOCK_HEADER *parent);

/// A new empty constructed node, appended to `parent` when one is given. Null for other tags, and
/// when `parent` can't have children. Tells the signature core's log.
stASN_BLOCK_HEADER *ASNAddStruct(unsigned char tag, stASN_BLOCK_HEADER *parent);

/// A new empty leaf, appended to `parent` when one is given. Null for a constructed tag, and when
/// `parent` can't have children.
stASN_BLOCK_HEADER *ASNAddSample(unsigned char tag, stASN_BLOCK_HEADER *parent);

/// Appends `child`, which `parent` then owns, in constant time. 0, and the child still the
/// caller's, for a parent that is null or a leaf and when memory is exhausted.
int ASNAppendChild(stASN_BLOCK_HEADER *parent, stASN_BLOCK_HEADER *child);

/// Whether a node's content is children: it is constructed, or an OCTET STRING read as DER.
inline bool ASNHoldsChildren(const stASN_BLOCK_HEADER *node)
{
    return ASNIsConstructed(node->tag) || (node->tag == ASN_TAG_OCTET_STRING && node->rawFlag == 0);
}

/// The cell of the first child, or null: the way to walk all children in linear time.
inline const stASN_CHILD_CELL *ASNFirstCell(const stASN_BLOCK_HEADER *node)
{
    return node && ASNHoldsChildren(node)
               ? static_cast<const stASN_BLOCK_STRUCT *>(node)->firstChild
               : nullptr;
}

/// The child at `index`, from 0, still owned by the node; null when there is none. Linear in
/// `index`.
stASN_BLOCK_HEADER *ASNGetChild(const stASN_BLOCK_HEADER *node, int index);

/// Unlinks the child at `index` and ends its subtree. 0 when there is none.
int ASNRemoveChild(stASN_BLOCK_HEADER *node, int index);

/// Ends the subtree; null is ignored. A linked node goes by `ASNRemoveChild` instead.
void ASNDeleteBlock(stASN_BLOCK_HEADER *node);

/// Replaces a leaf's content by a copy of `size` octets, which may be a part of the old; null or 0
/// octets empty it. An OCTET STRING that holds children loses them and becomes a leaf. 0 for null,
/// for a constructed node and when memory is exhausted; the old content then stays.
int ASNSetBlockData(stASN_BLOCK_HEADER *node, const unsigned char *data, unsigned int size);

struct AsnBlockDeleter
{
    void operator()(stASN_BLOCK_HEADER *node) const { ASNDeleteBlock(node); }
};

/// Owns a subtree that is linked nowhere.
using AsnBlockPtr = std::unique_ptr<stASN_BLOCK_HEADER, AsnBlockDeleter>;
