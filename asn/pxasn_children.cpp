#include "asn/asn_walk.h"
#include "asn/pxasn_element.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

// Visits an object and all below it of its document, each before its children are listed.
template <typename Visit>
void forEachBelow(PXAsnBlock *top, const Visit &visit)
{
    std::vector<PXAsnBlock *> blocks = {top};
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        visit(*blocks[i]);
        for (QObject *child : blocks[i]->children()) {
            auto *block = qobject_cast<PXAsnBlock *>(child);
            if (block && !qobject_cast<PXAsn *>(block))
                blocks.push_back(block);
        }
    }
}

} // namespace

// Children before their parents, which would end them by recursion, and without memory: there may
// be none left. Siblings go front to back: each is then the first that its parent's own list is
// searched for.
void PXAsnBlock::deleteChildren()
{
    m_nodesAtPlaces.clear();
    PXAsnBlock *block = this;
    while (!listChild.isEmpty()) { // and then it is this one again
        PXAsnBlock *child = block->listChild.isEmpty() ? nullptr : block->listChild.constFirst();
        if (block->listChild.isEmpty()) {
            block = static_cast<PXAsnBlock *>(block->parent());
        } else if (child && !child->listChild.isEmpty()) {
            block = child;
        } else {
            block->listChild.removeFirst();
            delete child;
        }
    }
}

// In one walk: of millions, the cells take far longer to come by than what is made of them.
std::vector<stASN_BLOCK_HEADER *> PXAsnBlock::childrenOf(const stASN_BLOCK_HEADER *block)
{
    std::vector<stASN_BLOCK_HEADER *> nodes;
    for (const stASN_CHILD_CELL *cell = ASNFirstCell(block); cell; cell = cell->next)
        nodes.push_back(cell->child);
    return nodes;
}

void PXAsnBlock::addPlaces(std::vector<stASN_BLOCK_HEADER *> nodes)
{
    const auto before = static_cast<std::size_t>(listChild.count());
    const std::size_t count = before + nodes.size();
    listChild.reserve(static_cast<int>(count));
    if (before > 0) {
        m_nodesAtPlaces.resize(before, nullptr);
        nodes.insert(nodes.begin(), m_nodesAtPlaces.begin(), m_nodesAtPlaces.end());
    }
    m_nodesAtPlaces = std::move(nodes);
    for (std::size_t i = before; i < count; ++i)
        listChild.append(nullptr);
}

stASN_BLOCK_HEADER *PXAsnBlock::nodeAtPlace(int index) const
{
    const auto place = static_cast<std::size_t>(index);
    return place < m_nodesAtPlaces.size() ? m_nodesAtPlaces[place] : nullptr;
}

PXAsnBlock *PXAsnBlock::getChild(int index, int checkType) const
{
    return PXAsnElement(this).getChild(index, checkType) ? childAt(index) : nullptr;
}

PXAsnBlock *PXAsnBlock::childAt(int index) const
{
    PXAsnBlock *&child = listChild[index];
    if (!child && nodeAtPlace(index)) {
        auto made = std::make_unique<PXAsnBlock>(nullptr);
        made->node = nodeAtPlace(index);
        made->addPlaces(childrenOf(made->node));
        // Not by the constructor, which in Qt 5 undoes too much where memory ends within it.
        made->setParent(const_cast<PXAsnBlock *>(this));
        child = made.release();
    }
    return child;
}

void PXAsnBlock::makeChildren()
{
    for (int i = 0; i < static_cast<int>(m_nodesAtPlaces.size()); ++i)
        childAt(i);
    m_nodesAtPlaces = {};
}

void PXAsnBlock::release(int index) const
{
    if (index < 0 || !nodeAtPlace(index))
        return;
    delete listChild.at(index);
    listChild[index] = nullptr;
}

// The object that all others of the document are below.
PXAsnBlock *PXAsnBlock::document()
{
    PXAsnBlock *block = this;
    while (!qobject_cast<PXAsn *>(block)) {
        auto *above = qobject_cast<PXAsnBlock *>(block->parent());
        if (!above)
            break;
        block = above;
    }
    return block;
}

void PXAsnBlock::shareNodes()
{
    PXAsnBlock *all = document();
    forEachBelow(all->sharesNodes ? this : all, [](PXAsnBlock &block) { block.makeChildren(); });
    all->sharesNodes = true;
}

void PXAsnBlock::forgetNodes(const stASN_BLOCK_HEADER *top, bool isTopIncluded)
{
    PXAsnBlock *all = document();
    if (!all->sharesNodes)
        return;
    std::vector<const stASN_BLOCK_HEADER *> ending;
    for (AsnWalk walk(top); walk.node(); walk.next()) {
        if (isTopIncluded || walk.node() != top)
            ending.push_back(walk.node());
    }
    std::sort(ending.begin(), ending.end());
    forEachBelow(all, [&ending](PXAsnBlock &block) {
        if (std::binary_search(ending.begin(), ending.end(), block.node))
            block.node = nullptr;
    });
}
