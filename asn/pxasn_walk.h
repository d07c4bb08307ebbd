#pragma once

#include "asn/pxasn.h"

/// Walks a block and all below it, each before its children: along the objects where they are made,
/// along the nodes where they aren't yet. Without recursion, because documents that editing made
/// have no limit of depth. Makes no objects.
class PXAsnBlock::Walk
{
public:
    explicit Walk(const PXAsnBlock &top)
        : m_block(&top)
        , m_node(top.node)
    {
    }

    bool atEnd() const { return m_isAtEnd; }
    /// The node that the walk has come to; null where the object has none.
    const stASN_BLOCK_HEADER *node() const { return m_node; }
    /// Whether nothing is below it.
    bool isLeaf() const { return m_block ? m_block->listChild.isEmpty() : !ASNFirstCell(m_node); }
    /// Levels between it and the block that the walk began with.
    int depth() const { return static_cast<int>(m_open.size()); }
    void next();

private:
    // The children of one block, of which the next is at `index`, or those of a bare node.
    struct Level
    {
        const PXAsnBlock *block;
        int index;
        const stASN_CHILD_CELL *cell;
    };

    bool take(Level &level);

    const PXAsnBlock *m_block; // null: the node has no object yet
    const stASN_BLOCK_HEADER *m_node;
    std::vector<Level> m_open;
    bool m_isAtEnd = false;
};
