#include "asn/pxasn.h"

#include "asn/asn_values.h"
#include "asn/octet_view.h"
#include "core/core_calls.h"
#include "pxcpp/code_convert.h"
#include "util/texts.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <QDebug>

namespace {

QString latin1(const QByteArray &octets)
{
    return QString::fromLatin1(octets.constData(), octets.size());
}

QString identifierText(const QByteArray &content)
{
    const OctetView octets = viewOf(content);
    char text[ASN_MAX_OID_TEXT + 1];
    unsigned int length = sizeof text;
    if (!ASNGetOIDName(octets.data, octets.size, text, &length))
        return {};
    return texts::nameOfIdentifier(QString::fromLatin1(text, static_cast<int>(length)));
}

// The converters may write a whole character beyond the size they are told.
constexpr int kConverterOverrun = 6;

QString textOfBmp(const QByteArray &content)
{
    const int length = static_cast<int>(content.size());
    const int size = length * 2 + 1;
    QByteArray utf8(size + kConverterOverrun, '\0');
    const int written =
        code_unicode_to_utf8_reversebyte_BYTE(content.constData(), length / 2, utf8.data(), size);
    return QString::fromUtf8(utf8.constData(), written);
}

QByteArray octetsOfBmp(const QByteArray &content)
{
    const int length = static_cast<int>(content.size());
    const int units = length / 2;
    if (units == 0)
        return {};
    std::vector<unsigned int> widened(static_cast<std::size_t>(units) + 1, 0);
    for (std::size_t i = 0; i + 1 < widened.size(); ++i)
        std::memcpy(&widened[i], content.constData() + 2 * i, 2);
    const int size = length * 2 + 1;
    QByteArray utf8(size + kConverterOverrun, '\0');
    utf8.truncate(code_unicode_to_utf8_reversebyte(widened.data(), units, utf8.data(), size));
    return utf8;
}

AsnBlockPtr parsed(const QByteArray &der)
{
    const OctetView octets = viewOf(der);
    return AsnBlockPtr(ASNAddByData(nullptr, octets.data, octets.size));
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

// Front to back: each child is then the first that its parent's own list is searched for.
void PXAsnBlock::deleteChildren()
{
    qDeleteAll(listChild);
    listChild.clear();
}

int PXAsnBlock::load(stASN_BLOCK_HEADER *block)
{
    if (!block)
        return 0;
    deleteChildren();
    for (const stASN_CHILD_CELL *cell = ASNFirstCell(block); cell; cell = cell->next) {
        auto child = std::make_unique<PXAsnBlock>(this);
        if (!child->load(cell->child))
            return 0;
        listChild.append(child.release());
    }
    node = block;
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

PXAsnBlock *PXAsnBlock::getChild(int index, int checkType) const
{
    if (!node || index < 0 || index >= listChild.count()) {
        std::puts("(!node || index < 0 || index >= listChild.count()) fail");
        return nullptr;
    }
    PXAsnBlock *block = listChild.at(index);
    if (!block) {
        std::puts("PXAsnBlock* block = listChild.at(index); fail");
        return nullptr;
    }
    if (checkType != ASN_TAG_ANY && !block->checkTag(checkType)) {
        std::puts("!block->checkTag(checkType) fail ");
        return nullptr;
    }
    return block;
}

QByteArray PXAsnBlock::contentOctets() const
{
    if (!node || ASNIsConstructed(node->tag) || node->rawFlag != 1 || !node->content ||
        node->contentLength > kMostValueOctets)
        return {};
    return copyOf({node->content, node->contentLength});
}

PXAsnBlock::operator QString() const
{
    const QByteArray content = contentOctets();
    switch (type()) {
    case ASN_TAG_OBJECT_IDENTIFIER:
        return identifierText(content);
    case ASN_TAG_BIT_STRING:
        return latin1(content.mid(1));
    case ASN_TAG_UTF8_STRING:
        return QString::fromUtf8(content.constData(), content.size());
    case ASN_TAG_BMP_STRING:
        return textOfBmp(content);
    default:
        return latin1(content);
    }
}

PXAsnBlock::operator QByteArray() const
{
    QByteArray content = contentOctets();
    switch (type()) {
    case ASN_TAG_BIT_STRING:
        return content.mid(1);
    case ASN_TAG_BMP_STRING:
        return octetsOfBmp(content);
    default:
        return content;
    }
}

PXAsnBlock::operator int() const
{
    const QByteArray content = contentOctets();
    if (type() != ASN_TAG_INTEGER)
        return 0;
    if (content.size() == 1)
        return static_cast<unsigned char>(content.at(0));
    if (content.size() != 2 && content.size() != 4)
        return 0;
    unsigned int value = 0;
    for (auto octet = content.crbegin(); octet != content.crend(); ++octet)
        value = value << 8 | static_cast<unsigned char>(*octet);
    return static_cast<int>(value);
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

int PXAsnBlock::get_extendata(std::vector<QString> &values) const
{
    if (listChild.isEmpty() && node)
        values.push_back(printData_ex());
    for (const PXAsnBlock *child : listChild)
        child->get_extendata(values);
    return 1;
}

int PXAsnBlock::get_extendata_certpolicy(std::vector<certpolicy> &items, int &level) const
{
    if (listChild.isEmpty() && node)
        items.push_back({printData_ex(), level});
    for (const PXAsnBlock *child : listChild) {
        ++level;
        child->get_extendata_certpolicy(items, level);
    }
    --level;
    return 1;
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
    qDebug() << "[PXAsn::open]...";
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
    ASNDeleteBlock(node);
    node = nullptr;
    deleteChildren();
}
