#pragma once

#include "tests/asn/tree.h"

#include "asn/pxasn.h"

/// Shows a block's node, which is no part of its interface.
class Shown : public PXAsn
{
public:
    Shown()
        : PXAsn(nullptr)
    {
    }
    QString tree() const { return outline(node); }
    stASN_BLOCK_HEADER *root() const { return node; }
};
