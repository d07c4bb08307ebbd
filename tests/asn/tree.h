#pragma once

#include "asn/asn_block.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

inline const unsigned char *octets(const QByteArray &data)
{
    return reinterpret_cast<const unsigned char *>(data.constData());
}

inline AsnBlockPtr parsed(const QByteArray &data)
{
    return AsnBlockPtr(ASNAddByData(nullptr, octets(data), static_cast<unsigned int>(data.size())));
}

inline AsnBlockPtr leafOf(unsigned char tag, const QByteArray &content)
{
    AsnBlockPtr leaf(ASNAddSample(tag, nullptr));
    ASNSetBlockData(leaf.get(), octets(content), static_cast<unsigned int>(content.size()));
    return leaf;
}

/// A tree as text: "30(02:05,04:)" is a SEQUENCE of the INTEGER 5 and an empty OCTET STRING that is
/// a leaf, "04()" one that holds children, "none" no tree.
inline QString outline(const stASN_BLOCK_HEADER *node)
{
    if (!node)
        return QStringLiteral("none");
    const QString tag = QStringLiteral("%1").arg(node->tag, 2, 16, QLatin1Char('0')).toUpper();
    const bool isLeaf = node->rawFlag == 1;
    if (isLeaf) {
        const QByteArray content(reinterpret_cast<const char *>(node->content),
                                 static_cast<int>(node->contentLength));
        return tag + QLatin1Char(':') + QString::fromLatin1(content.toHex().toUpper());
    }
    QStringList children;
    for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next)
        children << outline(cell->child);
    return tag + QLatin1Char('(') + children.join(QLatin1Char(',')) + QLatin1Char(')');
}

/// The tree's DER, with lengths made right before.
inline QByteArray encoded(stASN_BLOCK_HEADER *node)
{
    ASNUpdate(node);
    QByteArray der(static_cast<int>(ASNGetBlockLength(node)), '\xEE');
    const int built = ASNBuildData(node, reinterpret_cast<unsigned char *>(der.data()),
                                   static_cast<unsigned int>(der.size()));
    return built ? der : QByteArray("not built");
}
