#pragma once

#include "asn/pxasn_element.h"

#include <vector>

/// Walks an element and all below it, each before its children. Without recursion, because
/// documents that editing made have no limit of depth. Makes no objects.
class PXAsnWalk
{
public:
    explicit PXAsnWalk(const PXAsnElement &top)
        : m_element(top)
    {
    }

    bool atEnd() const { return m_isAtEnd; }
    /// The node that the walk has come to; null where the object has none.
    const stASN_BLOCK_HEADER *node() const { return m_element.node(); }
    /// Whether nothing is below it.
    bool isLeaf() const { return !m_element.hasChildren(); }
    /// Levels between it and the element that the walk began with.
    int depth() const { return static_cast<int>(m_open.size()); }
    void next();

private:
    PXAsnElement m_element;
    std::vector<PXAsnChildren> m_open; // of each level, what comes next
    bool m_isAtEnd = false;
};
