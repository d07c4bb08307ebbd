#pragma once

#include "asn/pxasn.h"

/// An element at or below a block, for who only reads: it says what its `PXAsnBlock` would, and
/// none is made for it. It goes along the objects where they are made, along the nodes where they
/// aren't yet, so that it sees what was edited.
///
/// Borrows both, which stay as they are while it is used. Cheap to copy.
class PXAsnElement
{
public:
    /// None: it has no node, and nothing below it.
    PXAsnElement() = default;
    /// What the block stands for; none for null.
    explicit PXAsnElement(const PXAsnBlock *block);

    /// Whether there is one.
    explicit operator bool() const { return m_block || m_node; }
    /// Null for none, and where the object has none.
    const stASN_BLOCK_HEADER *node() const { return m_node; }
    bool checkTag(int tag) const { return m_node && m_node->tag == tag; }
    bool hasChildren() const;
    /// Linear in their number, where there is no object.
    int getChildCount() const;
    /// As `PXAsnBlock::getChild`, its fixed texts on standard output included. Linear in `index`,
    /// where there is no object: `PXAsnChildren` is for all of them.
    PXAsnElement getChild(int index, int checkType) const;
    /// What `getChild` does with `checkType`: false, and told, for another tag.
    bool isOfType(int checkType) const;

    QByteArray contentOctets() const; ///< `node_values::content`
    QString toString() const;         ///< `node_values::text`
    QByteArray toByteArray() const;   ///< `node_values::octets`
    int toInt() const;                ///< `node_values::number`

    /// As `PXAsnBlock` has them.
    int get_extendata(std::vector<QString> &values) const;
    int get_extendata_certpolicy(std::vector<certpolicy> &items, int &level) const;

private:
    friend class PXAsnChildren;

    const PXAsnBlock *m_block = nullptr; ///< null: the node has no object yet
    const stASN_BLOCK_HEADER *m_node = nullptr;
};

/// The children of an element, one after the other:
///
///     PXAsnElement child;
///     for (PXAsnChildren children(parent); children.next(child);)
class PXAsnChildren
{
public:
    /// From the one at `first` on, counted from 0.
    explicit PXAsnChildren(const PXAsnElement &parent, int first = 0);

    /// False, with `child` as it was, when there is no other.
    bool next(PXAsnElement &child);

private:
    const PXAsnBlock *m_block;
    int m_index;                    ///< of the next, where there is an object
    const stASN_CHILD_CELL *m_cell; ///< of the next, where there is none
};
