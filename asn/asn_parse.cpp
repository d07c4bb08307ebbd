#include "asn/asn_block.h"
#include "asn/der_cursor.h"

unsigned char g_bExtend = 0;

namespace {

// One parse: how deep it is and how many elements it has met.
class Parser
{
public:
    stASN_BLOCK_HEADER *element(stASN_BLOCK_HEADER *parent, DerCursor &cursor);
    bool ranOutOfMemory() const { return m_ranOutOfMemory; }

private:
    AsnBlockPtr nodeOf(const DerElement &element);
    static bool isRunOfElements(OctetView content);
    AsnBlockPtr withChildren(unsigned char tag, DerCursor &children);
    static AsnBlockPtr leaf(const DerElement &element);

    int m_openElements = 0;
    unsigned int m_count = 0;
    bool m_ranOutOfMemory = false;
};

stASN_BLOCK_HEADER *Parser::element(stASN_BLOCK_HEADER *parent, DerCursor &cursor)
{
    if (cursor.identifier() == ASN_TAG_EXTENSIONS)
        g_bExtend = 1;
    DerElement element;
    if (m_openElements == ASN_MAX_DEPTH || m_count == ASN_MAX_ELEMENTS ||
        !ASN_TAGVALID(cursor.identifier()) || !cursor.next(element))
        return nullptr;
    ++m_count;
    // From here on nothing but memory can be missing.
    AsnBlockPtr node = nodeOf(element);
    if (!node || (parent && !ASNAppendChild(parent, node.get()))) {
        m_ranOutOfMemory = true;
        return nullptr;
    }
    return node.release();
}

AsnBlockPtr Parser::nodeOf(const DerElement &element)
{
    DerCursor children(element.content);
    if (ASNIsConstructed(element.tag))
        return withChildren(element.tag, children);
    if (element.tag == ASN_TAG_OCTET_STRING && g_bExtend && isRunOfElements(element.content)) {
        const unsigned int count = m_count;
        AsnBlockPtr node = withChildren(element.tag, children);
        if (!node || children.atEnd())
            return node;
        m_count = count; // there were too many, or they are too deep: none of them stays
    }
    return leaf(element);
}

// Whether all that an OCTET STRING holds is elements that parse. The headers tell, because what is
// in a constructed one never fails it, and an OCTET STRING can always be a leaf. So nothing is
// built to be thrown away, with contents copied at every level of it, and the time stays linear in
// the input. Only that they are too many, or too deep, shows later.
bool Parser::isRunOfElements(OctetView content)
{
    if (content.size == 0)
        return false;
    DerCursor run(content);
    DerElement child;
    while (ASN_TAGVALID(run.identifier()) && run.next(child))
        continue;
    return run.atEnd();
}

// The children that parse; the cursor stays before the first that doesn't.
AsnBlockPtr Parser::withChildren(unsigned char tag, DerCursor &children)
{
    AsnBlockPtr node(ASNCreateStruct(tag, nullptr));
    if (!node)
        return nullptr;
    ++m_openElements;
    while (element(node.get(), children))
        continue;
    --m_openElements;
    return node;
}

AsnBlockPtr Parser::leaf(const DerElement &element)
{
    AsnBlockPtr node(ASNAddSample(element.tag, nullptr));
    if (!node || !ASNSetBlockData(node.get(), element.content.data, element.content.size))
        return nullptr;
    return node;
}

} // namespace

int ASN_TAGVALID(unsigned char tag)
{
    return (tag >= 0x01 && tag <= 0x0A) || tag == 0x0C || tag == 0x0D ||
           (tag >= 0x12 && tag <= 0x1E) || tag == 0x30 || tag == 0x31 ||
           (tag >= 0xA0 && tag <= 0xA4) || tag == 0x80 || tag == 0x82 || tag == 0x86;
}

stASN_BLOCK_HEADER *ASNAddByData(stASN_BLOCK_HEADER *parent, const unsigned char *data,
                                 unsigned int size)
{
    DerCursor cursor({data, data ? size : 0});
    Parser parser;
    AsnBlockPtr node(parser.element(nullptr, cursor));
    // A tree that lacks what memory had no room for would be another one.
    if (parser.ranOutOfMemory() || (node && parent && !ASNAppendChild(parent, node.get())))
        return nullptr;
    return node.release();
}

unsigned int ASNCalcBlockLength(const unsigned char *data, unsigned int available)
{
    DerCursor cursor({data, data ? available : 0});
    DerElement element;
    return cursor.next(element) ? element.size : 0;
}
