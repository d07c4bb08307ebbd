#include "asn/pxasn_walk.h"

void PXAsnBlock::Walk::next()
{
    m_open.push_back({m_block, 0, ASNFirstCell(m_node)});
    while (!m_open.empty() && !take(m_open.back()))
        m_open.pop_back();
    m_isAtEnd = m_open.empty();
}

// Comes to the next child of a level, if there is one.
bool PXAsnBlock::Walk::take(Level &level)
{
    if (!level.block) {
        if (!level.cell)
            return false;
        m_node = level.cell->child;
        level.cell = level.cell->next;
        return true;
    }
    if (level.index == level.block->listChild.count())
        return false;
    m_block = level.block->listChild.at(level.index);
    m_node = m_block ? m_block->node : level.block->nodeAtPlace(level.index);
    ++level.index;
    return true;
}
