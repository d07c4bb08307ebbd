#include "asn/asn_block.h"

#include "core/core_calls.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

unsigned char g_bExtend = 0;

namespace {

// A view of octets that somebody else owns.
struct Input
{
    const unsigned char *data;
    unsigned int size;
};

struct ElementSize
{
    unsigned int header;
    unsigned int content;
};

bool holdsChildren(const stASN_BLOCK_HEADER *node)
{
    return ASNIsConstructed(node->tag) || (node->tag == ASN_TAG_OCTET_STRING && node->rawFlag == 0);
}

stASN_BLOCK_STRUCT *asStruct(stASN_BLOCK_HEADER *node)
{
    return static_cast<stASN_BLOCK_STRUCT *>(node);
}

const stASN_BLOCK_STRUCT *asStruct(const stASN_BLOCK_HEADER *node)
{
    return static_cast<const stASN_BLOCK_STRUCT *>(node);
}

// The one place that reads identifier and length octets (X.690, 8.1.3). False when the element does
// not fit into the input or its length has another form.
bool readSize(Input input, ElementSize &size)
{
    constexpr unsigned char kLongForm = 0x80;
    constexpr unsigned int kMostLengthOctets = 4;
    if (input.size < 2)
        return false;
    const unsigned char first = input.data[1];
    // The bare 0x80 of the indefinite form counts as length 0: no end is looked for.
    const unsigned int lengthOctets = first < kLongForm ? 0 : first - kLongForm;
    if (lengthOctets > kMostLengthOctets || input.size - 2 < lengthOctets)
        return false;
    std::uint32_t content = first < kLongForm ? first : 0;
    for (unsigned int i = 0; i < lengthOctets; ++i)
        content = content << 8 | input.data[2 + i];
    size = {2 + lengthOctets, content};
    return content <= input.size - size.header;
}

template <typename Node>
Node *allocateNode(unsigned char tag, unsigned char rawFlag)
{
    void *memory = std::calloc(1, sizeof(Node));
    if (!memory)
        return nullptr;
    Node *node = new (memory) Node{};
    node->tag = tag;
    node->rawFlag = rawFlag;
    return node;
}

// Hands a new node to its parent, if it has one, or deletes it.
stASN_BLOCK_HEADER *linked(stASN_BLOCK_HEADER *node, stASN_BLOCK_HEADER *parent)
{
    if (node && parent && !ASNAppendChild(parent, node)) {
        ASNDeleteBlock(node);
        return nullptr;
    }
    return node;
}

// One parse: how deep it is and how many elements it has met.
class Parser
{
public:
    stASN_BLOCK_HEADER *element(stASN_BLOCK_HEADER *parent, Input input);

private:
    bool isCompleteRun(Input content) const;
    stASN_BLOCK_HEADER *withChildren(stASN_BLOCK_HEADER *parent, unsigned char tag, Input content);
    static stASN_BLOCK_HEADER *leaf(stASN_BLOCK_HEADER *parent, unsigned char tag, Input content);

    int m_openElements = 0;
    unsigned int m_count = 0;
};

stASN_BLOCK_HEADER *Parser::element(stASN_BLOCK_HEADER *parent, Input input)
{
    if (input.size == 0)
        return nullptr;
    const unsigned char tag = input.data[0];
    if (tag == ASN_TAG_EXTENSIONS)
        g_bExtend = 1;
    ElementSize size = {};
    if (m_openElements == ASN_MAX_DEPTH || m_count == ASN_MAX_ELEMENTS || !ASN_TAGVALID(tag) ||
        !readSize(input, size))
        return nullptr;
    ++m_count;
    const Input content = {input.data + size.header, size.content};
    if (ASNIsConstructed(tag) ||
        (tag == ASN_TAG_OCTET_STRING && g_bExtend && isCompleteRun(content)))
        return withChildren(parent, tag, content);
    return leaf(parent, tag, content);
}

// Whether an element's content is a run of elements that all parse and end with it. The headers
// tell: a constructed element parses whatever it holds, and an OCTET STRING can always be a leaf.
// So no attempt is made and thrown away, and the time stays linear in the input.
bool Parser::isCompleteRun(Input content) const
{
    if (content.size == 0 || m_openElements + 1 == ASN_MAX_DEPTH)
        return false;
    while (content.size > 0) {
        ElementSize size = {};
        if (!ASN_TAGVALID(content.data[0]) || !readSize(content, size))
            return false;
        content.data += size.header + size.content;
        content.size -= size.header + size.content;
    }
    return true;
}

stASN_BLOCK_HEADER *Parser::withChildren(stASN_BLOCK_HEADER *parent, unsigned char tag,
                                         Input content)
{
    stASN_BLOCK_HEADER *node = ASNCreateStruct(tag, nullptr);
    if (!node)
        return nullptr;
    ++m_openElements;
    while (content.size > 0 && element(node, content)) {
        const unsigned int used = ASNCalcBlockLength(content.data, content.size);
        content.data += used;
        content.size -= used;
    }
    --m_openElements;
    return linked(node, parent);
}

stASN_BLOCK_HEADER *Parser::leaf(stASN_BLOCK_HEADER *parent, unsigned char tag, Input content)
{
    AsnBlockPtr node(ASNAddSample(tag, nullptr));
    if (!node || !ASNSetBlockData(node.get(), content.data, content.size))
        return nullptr;
    return linked(node.release(), parent);
}

// The shortest form (X.690, 10.1).
void storeLength(stASN_BLOCK_HEADER *node, unsigned int content)
{
    const unsigned int count = ASNCalcLengthBytes(content);
    node->lengthOctetCount = static_cast<unsigned char>(count);
    node->lengthOctets[0] = static_cast<unsigned char>(count == 1 ? content : 0x80 | (count - 1));
    for (unsigned int i = 1; i < count; ++i)
        node->lengthOctets[i] = static_cast<unsigned char>(content >> 8 * (count - 1 - i));
    node->totalLength = 1 + count + content;
}

void deleteChildren(stASN_BLOCK_STRUCT *node)
{
    for (stASN_CHILD_CELL *cell = node->firstChild; cell;) {
        stASN_CHILD_CELL *next = cell->next;
        ASNDeleteBlock(cell->child);
        std::free(cell);
        cell = next;
    }
    node->firstChild = nullptr;
    node->lastChild = nullptr;
}

} // namespace

int ASN_TAGVALID(unsigned char tag)
{
    return (tag >= 0x01 && tag <= 0x0A) || tag == 0x0C || tag == 0x0D ||
           (tag >= 0x12 && tag <= 0x1E) || tag == 0x30 || tag == 0x31 ||
           (tag >= 0xA0 && tag <= 0xA4) || tag == 0x80 || tag == 0x82 || tag == 0x86;
}

stASN_BLOCK_HEADER *ASNAddByData(stASN_BLOCK_HEADER *parent, const unsigned char *data,
                                 unsigned int size)
{
    return data ? Parser().element(parent, {data, size}) : nullptr;
}

unsigned int ASNCalcBlockLength(const unsigned char *data, unsigned int available)
{
    ElementSize size = {};
    return data && readSize({data, available}, size) ? size.header + size.content : 0;
}

unsigned int ASNCalcLengthBytes(unsigned int contentLength)
{
    if (contentLength < 128)
        return 1;
    if (contentLength < 256)
        return 2;
    if (contentLength < 65536)
        return 3;
    return contentLength <= 0xFFFFFF ? 4 : 5;
}

unsigned int ASNGetBlockLength(const stASN_BLOCK_HEADER *node)
{
    return node ? node->totalLength : 0;
}

unsigned int ASNGetDataLength(const stASN_BLOCK_HEADER *node)
{
    if (!node)
        return 0;
    if (!holdsChildren(node))
        return node->contentLength;
    unsigned int sum = 0;
    for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next)
        sum += ASNGetDataLength(cell->child);
    return sum;
}

int ASNUpdate(stASN_BLOCK_HEADER *node)
{
    if (!node)
        return 0;
    unsigned int content = node->contentLength;
    if (holdsChildren(node)) {
        content = 0;
        for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next) {
            ASNUpdate(cell->child);
            content += ASNGetBlockLength(cell->child);
        }
    }
    storeLength(node, content);
    return 1;
}

int ASNBuildData(const stASN_BLOCK_HEADER *node, unsigned char *output, unsigned int capacity)
{
    // The lengths of a tree that was changed and not updated say too little: what is written here
    // counts as well.
    if (!node || !output || node->totalLength > capacity || capacity < 1U + node->lengthOctetCount)
        return 0;
    if (!holdsChildren(node) && capacity - 1U - node->lengthOctetCount < node->contentLength)
        return 0;
    unsigned int position = 0;
    output[position++] = node->tag;
    std::memcpy(output + position, node->lengthOctets, node->lengthOctetCount);
    position += node->lengthOctetCount;
    if (holdsChildren(node)) {
        for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next) {
            if (ASNGetBlockLength(cell->child) > capacity - position)
                break;
            ASNBuildData(cell->child, output + position, capacity - position);
            position += ASNGetBlockLength(cell->child);
        }
    } else if (node->contentLength > 0)
        std::memcpy(output + position, node->content, node->contentLength);
    return 1;
}

stASN_BLOCK_HEADER *ASNCreateStruct(unsigned char tag, stASN_BLOCK_HEADER *parent)
{
    if (!ASNIsConstructed(tag) && tag != ASN_TAG_OCTET_STRING)
        return nullptr;
    stASN_BLOCK_HEADER *node = allocateNode<stASN_BLOCK_STRUCT>(tag, 0);
    if (node)
        node->parent = parent;
    return node;
}

stASN_BLOCK_HEADER *ASNAddStruct(unsigned char tag, stASN_BLOCK_HEADER *parent)
{
    if (!ASNIsConstructed(tag))
        return nullptr;
    stASN_BLOCK_HEADER *node = linked(ASNCreateStruct(tag, parent), parent);
    if (node)
        core_calls::sendProgress("ASNAddStruct", 108, " end");
    return node;
}

stASN_BLOCK_HEADER *ASNAddSample(unsigned char tag, stASN_BLOCK_HEADER *parent)
{
    return ASNIsConstructed(tag) ? nullptr
                                 : linked(allocateNode<stASN_BLOCK_HEADER>(tag, 1), parent);
}

int ASNAppendChild(stASN_BLOCK_HEADER *parent, stASN_BLOCK_HEADER *child)
{
    if (!parent || !holdsChildren(parent))
        return 0;
    auto *cell = static_cast<stASN_CHILD_CELL *>(std::malloc(sizeof(stASN_CHILD_CELL)));
    if (!cell)
        return 0;
    *cell = {child, nullptr};
    stASN_BLOCK_STRUCT *owner = asStruct(parent);
    (owner->lastChild ? owner->lastChild->next : owner->firstChild) = cell;
    owner->lastChild = cell;
    return 1;
}

const stASN_CHILD_CELL *ASNFirstCell(const stASN_BLOCK_HEADER *node)
{
    return node && holdsChildren(node) ? asStruct(node)->firstChild : nullptr;
}

stASN_BLOCK_HEADER *ASNGetChild(const stASN_BLOCK_HEADER *node, int index)
{
    if (index < 0)
        return nullptr;
    const stASN_CHILD_CELL *cell = ASNFirstCell(node);
    while (cell && index-- > 0)
        cell = cell->next;
    return cell ? cell->child : nullptr;
}

int ASNRemoveChild(stASN_BLOCK_HEADER *node, int index)
{
    if (index < 0 || !ASNFirstCell(node))
        return 0;
    stASN_BLOCK_STRUCT *owner = asStruct(node);
    stASN_CHILD_CELL *before = nullptr;
    stASN_CHILD_CELL *cell = owner->firstChild;
    for (; cell && index > 0; --index) {
        before = cell;
        cell = cell->next;
    }
    if (!cell)
        return 0;
    (before ? before->next : owner->firstChild) = cell->next;
    if (!cell->next)
        owner->lastChild = before;
    ASNDeleteBlock(cell->child);
    std::free(cell);
    return 1;
}

void ASNDeleteBlock(stASN_BLOCK_HEADER *node)
{
    if (!node)
        return;
    if (holdsChildren(node))
        deleteChildren(asStruct(node));
    else
        std::free(node->content);
    std::free(node);
}

int ASNSetBlockData(stASN_BLOCK_HEADER *node, const unsigned char *data, unsigned int size)
{
    if (!node || ASNIsConstructed(node->tag))
        return 0;
    unsigned char *copy = nullptr;
    if (data && size > 0) {
        copy = static_cast<unsigned char *>(std::malloc(size));
        if (!copy)
            return 0;
        std::memcpy(copy, data, size);
    }
    if (holdsChildren(node)) {
        deleteChildren(asStruct(node));
        node->rawFlag = 1;
    } else {
        std::free(node->content);
    }
    node->content = copy;
    node->contentLength = copy ? size : 0;
    return 1;
}
