#include "asn/asn_block.h"
#include "asn/asn_walk.h"

#include <algorithm>
#include <cstring>
#include <vector>

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

// Writes identifier and length octets, and a leaf's content. The octets of the first two; 0, with
// nothing written, when the node does not fit.
unsigned int writeNode(const stASN_BLOCK_HEADER *node, unsigned char *output, unsigned int capacity)
{
    const unsigned int header = 1U + node->lengthOctetCount;
    const unsigned int content = node->contentLength;
    if (node->totalLength > capacity || capacity < header || capacity - header < content)
        return 0;
    output[0] = node->tag;
    std::memcpy(output + 1, node->lengthOctets, node->lengthOctetCount);
    if (content > 0)
        std::memcpy(output + header, node->content, content);
    return header;
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
    unsigned int sum = 0;
    for (AsnWalk walk(node); walk.node(); walk.next())
        sum += walk.node()->contentLength;
    return sum;
}

int ASNUpdate(stASN_BLOCK_HEADER *node)
{
    struct Open
    {
        stASN_BLOCK_HEADER *node;
        const stASN_CHILD_CELL *nextChild;
        unsigned int content;
    };
    if (!node)
        return 0;
    std::vector<Open> path;
    const auto enter = [&path](stASN_BLOCK_HEADER *entered) {
        path.push_back({entered, ASNFirstCell(entered), entered->contentLength});
    };
    for (enter(node); !path.empty();) {
        Open &last = path.back();
        if (const stASN_CHILD_CELL *cell = last.nextChild) {
            last.nextChild = cell->next;
            if (cell->child)
                enter(cell->child);
            continue;
        }
        storeLength(last.node, last.content);
        const unsigned int total = last.node->totalLength;
        path.pop_back();
        if (!path.empty())
            path.back().content += total;
    }
    return 1;
}

int ASNBuildData(const stASN_BLOCK_HEADER *node, unsigned char *output, unsigned int capacity)
{
    if (!output)
        return 0;
    // Where the next node of each level goes: as far behind the one before as that one's own length
    // says, which is too little in a tree that was changed and not updated.
    std::vector<unsigned int> positions = {0};
    unsigned int header = 0;
    for (AsnWalk walk(node); walk.node(); header > 0 ? walk.next() : walk.skip()) {
        const std::size_t depth = walk.depth();
        const unsigned int position = positions[depth];
        header = writeNode(walk.node(), output + position, capacity - position);
        if (header == 0 && depth == 0)
            return 0;
        positions[depth] += std::min(walk.node()->totalLength, capacity - position);
        positions.resize(depth + 2);
        positions[depth + 1] = position + header;
    }
    return node ? 1 : 0;
}
