#include "asn/asn_block.h"

#include <cstring>

namespace {

// The shortest form (X.690, 10.1).
void storeLength(stASN_BLOCK_HEADER *node, unsigned int content)
{
    const unsigned int count = ASNCalcLengthBytes(content);
    node->lengthOctetCount = static_cast<unsigned char>(count);
    node->lengthOctets[0] = static_cast<unsigned char>(count == 1 ? content : 0x80 | (count - 1));
    for (unsigned int i = 1; i < count; ++i)
        node->lengthOctets[i] = static_cast<unsigned char>(content >> 8 * (count - 1 - i));
    node->totalLength = 1 + count + content;
}

} // namespace

unsigned int ASNCalcLengthBytes(unsigned int contentLength)
{
    if (contentLength < 128)
        return 1;
    if (contentLength < 256)
        return 2;
    if (contentLength < 65536)
        return 3;
    return contentLength <= 0xFFFFFF ? 4 : 5;
}

unsigned int ASNGetBlockLength(const stASN_BLOCK_HEADER *node)
{
    return node ? node->totalLength : 0;
}

unsigned int ASNGetDataLength(const stASN_BLOCK_HEADER *node)
{
    if (!node)
        return 0;
    if (!ASNHoldsChildren(node))
        return node->contentLength;
    unsigned int sum = 0;
    for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next)
        sum += ASNGetDataLength(cell->child);
    return sum;
}

int ASNUpdate(stASN_BLOCK_HEADER *node)
{
    if (!node)
        return 0;
    unsigned int content = node->contentLength;
    if (ASNHoldsChildren(node)) {
        content = 0;
        for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next) {
            ASNUpdate(cell->child);
            content += ASNGetBlockLength(cell->child);
        }
    }
    storeLength(node, content);
    return 1;
}

int ASNBuildData(const stASN_BLOCK_HEADER *node, unsigned char *output, unsigned int capacity)
{
    // The lengths of a tree that was changed and not updated say too little: what is written here
    // counts as well.
    if (!node || !output || node->totalLength > capacity || capacity < 1U + node->lengthOctetCount)
        return 0;
    if (!ASNHoldsChildren(node) && capacity - 1U - node->lengthOctetCount < node->contentLength)
        return 0;
    unsigned int position = 0;
    output[position++] = node->tag;
    std::memcpy(output + position, node->lengthOctets, node->lengthOctetCount);
    position += node->lengthOctetCount;
    if (ASNHoldsChildren(node)) {
        for (const stASN_CHILD_CELL *cell = ASNFirstCell(node); cell; cell = cell->next) {
            if (ASNGetBlockLength(cell->child) > capacity - position)
                break;
            ASNBuildData(cell->child, output + position, capacity - position);
            position += ASNGetBlockLength(cell->child);
        }
    } else if (node->contentLength > 0)
        std::memcpy(output + position, node->content, node->contentLength);
    return 1;
}
