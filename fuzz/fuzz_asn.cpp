#include "asn/asn_values.h"
#include "fuzz_target.h"

#include <cstdlib>
#include <vector>

namespace {

using Octets = std::vector<unsigned char>;

AsnBlockPtr parsed(const Octets &octets, bool isExtended)
{
    g_bExtend = isExtended ? 1 : 0;
    return AsnBlockPtr(
        ASNAddByData(nullptr, octets.data(), static_cast<unsigned int>(octets.size())));
}

Octets encoded(stASN_BLOCK_HEADER *root)
{
    require(ASNUpdate(root) == 1);
    Octets der(ASNGetBlockLength(root));
    require(ASNBuildData(root, der.data(), static_cast<unsigned int>(der.size())) == 1);
    return der;
}

void readValues(stASN_BLOCK_HEADER *node)
{
    for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next)
        readValues(cell->child);
    unsigned int error = 0;
    require(ASNGetTime(node, &error) == 0 || error == ASN_TIME_OK);
    stASN_BIT_STRING bits = {};
    if (ASNGetBitStringData(node, &bits)) {
        const Octets before = encoded(node);
        require(ASNSetBitStringDataEx(node, &bits) == 1);
        std::free(bits.data);
        require(encoded(node) == before);
    }
    if (node->tag == 0x06) {
        char text[100];
        unsigned int length = sizeof text;
        if (ASNGetOIDName(node->content, node->contentLength, text, &length))
            require(length < sizeof text && text[length] == '\0');
    }
}

// What a parsed tree is written as reads back as the same.
void requireTreeComesBack(const Octets &octets, bool isExtended)
{
    const AsnBlockPtr root = parsed(octets, isExtended);
    if (!root)
        return;
    readValues(root.get());
    const Octets der = encoded(root.get());
    require(der.size() <= octets.size()); // no length is written longer than it was read
    const AsnBlockPtr again = parsed(der, isExtended);
    require(again && encoded(again.get()) == der);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const Octets octets(data, data + size);
    requireTreeComesBack(octets, false);
    requireTreeComesBack(octets, true);
    return 0;
}
