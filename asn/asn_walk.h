#pragma once

#include "asn/asn_block.h"

#include <cstddef>
#include <vector>

/// Walks a subtree, each node before its children:
///
///     for (AsnWalk walk(top); walk.node(); walk.next())
///
/// Without recursion, because a tree that editing made has no limit of depth; the walk's own memory
/// is a pointer for each level. Borrows the tree, whose children stay as they are meanwhile.
class AsnWalk
{
public:
    explicit AsnWalk(const stASN_BLOCK_HEADER *top)
        : m_node(top)
    {
    }

    /// The node that the walk has come to; null at the end.
    const stASN_BLOCK_HEADER *node() const { return m_node; }

    /// Levels between it and the node that the walk began with.
    std::size_t depth() const { return m_open.size(); }

    /// On to the next node, the first child when there is one.
    void next()
    {
        if (const stASN_CHILD_CELL *children = ASNFirstCell(m_node))
            m_open.push_back(children);
        skip();
    }

    /// On to the next node that is not below this one.
    void skip()
    {
        m_node = nullptr;
        while (!m_node && !m_open.empty()) {
            if (const stASN_CHILD_CELL *cell = m_open.back()) {
                m_node = cell->child;
                m_open.back() = cell->next;
            } else {
                m_open.pop_back();
            }
        }
    }

private:
    const stASN_BLOCK_HEADER *m_node;
    std::vector<const stASN_CHILD_CELL *> m_open; // of each level, the child that comes next
};
