#include "asn/pxasn_element.h"

#include "asn/node_values.h"

#include <cstdio>

PXAsnElement::PXAsnElement(const PXAsnBlock *block)
    : m_block(block)
    , m_node(block ? block->node : nullptr)
{
}

bool PXAsnElement::hasChildren() const
{
    return m_block ? !m_block->listChild.isEmpty() : ASNFirstCell(m_node) != nullptr;
}

int PXAsnElement::getChildCount() const
{
    if (m_block)
        return m_block->getChildCount();
    int count = 0;
    for (const stASN_CHILD_CELL *cell = ASNFirstCell(m_node); cell; cell = cell->next)
        ++count;
    return count;
}

PXAsnElement PXAsnElement::getChild(int index, int checkType) const
{
    PXAsnElement child;
    if (!m_node || index < 0 || !PXAsnChildren(*this, index).next(child)) {
        std::puts("(!node || index < 0 || index >= listChild.count()) fail");
        return {};
    }
    if (!child) {
        std::puts("PXAsnBlock* block = listChild.at(index); fail");
        return {};
    }
    return child.isOfType(checkType) ? child : PXAsnElement();
}

bool PXAsnElement::isOfType(int checkType) const
{
    if (checkType == ASN_TAG_ANY || checkTag(checkType))
        return true;
    std::puts("!block->checkTag(checkType) fail ");
    return false;
}

QByteArray PXAsnElement::contentOctets() const
{
    return node_values::content(m_node);
}

QString PXAsnElement::toString() const
{
    return node_values::text(m_node);
}

QByteArray PXAsnElement::toByteArray() const
{
    return node_values::octets(m_node);
}

int PXAsnElement::toInt() const
{
    return node_values::number(m_node);
}

PXAsnChildren::PXAsnChildren(const PXAsnElement &parent, int first)
    : m_block(parent.m_block)
    , m_index(first)
    , m_cell(m_block ? nullptr : ASNFirstCell(parent.m_node))
{
    while (m_cell && first-- > 0)
        m_cell = m_cell->next;
}

bool PXAsnChildren::next(PXAsnElement &child)
{
    if (!m_block) {
        if (!m_cell)
            return false;
        child.m_block = nullptr;
        child.m_node = m_cell->child;
        m_cell = m_cell->next;
        return true;
    }
    if (m_index >= m_block->listChild.count())
        return false;
    child = PXAsnElement(m_block->listChild.at(m_index));
    if (!child)
        child.m_node = m_block->nodeAtPlace(m_index);
    ++m_index;
    return true;
}
