#include "asn/asn_block.h"

#include "core/core_calls.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

stASN_BLOCK_STRUCT *asStruct(stASN_BLOCK_HEADER *node)
{
    return static_cast<stASN_BLOCK_STRUCT *>(node);
}

template <typename Node>
Node *allocateNode(unsigned char tag, unsigned char rawFlag)
{
    void *memory = std::malloc(sizeof(Node));
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

// Frees one node. Its children, still with their cells, go in front of `behind`.
stASN_CHILD_CELL *freeNode(stASN_BLOCK_HEADER *node, stASN_CHILD_CELL *behind)
{
    stASN_CHILD_CELL *orphans = behind;
    if (!ASNHoldsChildren(node)) {
        std::free(node->content);
    } else if (ASNFirstCell(node)) {
        // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): with a first cell there is a last
        asStruct(node)->lastChild->next = behind;
        orphans = asStruct(node)->firstChild;
    }
    std::free(node);
    return orphans;
}

// Frees cells and all below them: no recursion, and no memory for the way back.
void freeCells(stASN_CHILD_CELL *cell)
{
    while (cell) {
        stASN_CHILD_CELL *next = cell->next;
        stASN_BLOCK_HEADER *node = cell->child;
        std::free(cell);
        cell = node ? freeNode(node, next) : next;
    }
}

} // namespace

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
    if (!parent || !ASNHoldsChildren(parent))
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
    if (node)
        freeCells(freeNode(node, nullptr));
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
    if (ASNHoldsChildren(node)) {
        freeCells(asStruct(node)->firstChild);
        asStruct(node)->firstChild = nullptr;
        asStruct(node)->lastChild = nullptr;
        node->rawFlag = 1;
    } else {
        std::free(node->content);
    }
    node->content = copy;
    node->contentLength = copy ? size : 0;
    return 1;
}
