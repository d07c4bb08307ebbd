#include "asn/pxasn.h"

#include "asn/node_values.h"
#include "asn/octet_view.h"
#include "core/core_calls.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <QDebug>
#include <utility>

namespace {

AsnBlockPtr parsed(const QByteArray &der)
{
    const OctetView octets = viewOf(der);
    errno = 0;
    AsnBlockPtr root(ASNAddByData(nullptr, octets.data, octets.size));
    if (!root && errno == ENOMEM)
        throw std::bad_alloc();
    return root;
}

} // namespace

PXAsnBlock::PXAsnBlock(QObject *parent)
    : QObject(parent)
{
}

PXAsnBlock::~PXAsnBlock()
{
    deleteChildren();
}

int PXAsnBlock::load(stASN_BLOCK_HEADER *block)
{
    std::vector<stASN_BLOCK_HEADER *> nodes = childrenOf(block);
    if (!block || std::count(nodes.begin(), nodes.end(), nullptr) > 0)
        return 0;
    const bool isLoaded = !listChild.isEmpty();
    addPlaces(std::move(nodes));
    node = block; // what throws has thrown by now
    if (isLoaded || document() != this)
        shareNodes();
    return 1;
}

int PXAsnBlock::type() const
{
    return node ? node->tag : 0;
}

bool PXAsnBlock::checkTag(int tag) const
{
    return node && node->tag == tag;
}

int PXAsnBlock::getChildCount() const
{
    return static_cast<int>(listChild.count());
}

QByteArray PXAsnBlock::contentOctets() const
{
    return node_values::content(node);
}

PXAsnBlock::operator QString() const
{
    return node_values::text(node);
}

PXAsnBlock::operator QByteArray() const
{
    return node_values::octets(node);
}

PXAsnBlock::operator int() const
{
    return node_values::number(node);
}

QString PXAsnBlock::toString() const
{
    return *this;
}

QByteArray PXAsnBlock::toByteArray() const
{
    return *this;
}

int PXAsnBlock::toInt() const
{
    return *this;
}

PXAsn::PXAsn(QObject *parent)
    : PXAsnBlock(parent)
{
}

PXAsn::~PXAsn()
{
    close();
}

int PXAsn::open(const QByteArray &data)
{
    qDebug("[PXAsn::open]...");
    core_calls::sendProgress("open", 40, " start");
    if (data.isEmpty())
        return 0;
    AsnBlockPtr root = parsed(data);
    if (!root)
        root = parsed(QByteArray::fromBase64(data));
    // A parse leaves the switch as it found or set it; each document starts anew.
    g_bExtend = 0;
    if (!root)
        return 0;
    close();
    ASNUpdate(root.get());
    if (!load(root.get()))
        return 0;
    root.release(); // NOLINT(bugprone-unused-return-value): `load` made it this object's
    core_calls::sendProgress("open", 66, " end");
    return 1;
}

void PXAsn::close()
{
    const AsnBlockPtr root(node); // this object may be told to forget it, too
    deleteChildren();
    forgetNodes(root.get(), true);
    sharesNodes = false;
    node = nullptr;
}
