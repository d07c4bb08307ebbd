#include "asn/node_texts.h"

#include "asn/leaf_text.h"
#include "asn/node_values.h"

namespace node_texts {
namespace {

enum class Form {
    Text,            ///< as the value's own text
    Time,            ///< up to the first NUL, and a blank
    Characters,      ///< a blank between characters
    HexOrCharacters, ///< hexadecimal when short, else characters
    Hex
};

struct TagForm
{
    int tag;
    const char *name;
    Form form;
    bool nameOnly = false; ///< `print` says nothing of the length
};

// X.680, 8.4, and the context-specific tags of certificates.
constexpr TagForm kTags[] = {
    {0x01, "BOOLEAN", Form::Hex},
    {0x02, "INTEGER", Form::Hex},
    {0x03, "BIT STRING", Form::Hex},
    {0x04, "OCTET STRING", Form::Hex},
    {0x05, "NULL", Form::Hex, true},
    {0x06, "OBJECT IDENTIFIER", Form::Text},
    {0x07, "OBJECT DESCRIPTOR", Form::Hex},
    {0x08, "EXTERNAL", Form::Hex},
    {0x09, "REAL", Form::Hex},
    {0x0A, "ENUMERATED", Form::Hex},
    {0x0C, "UTF8 STRING", Form::Text},
    {0x0D, "RELATIVE OID", Form::Hex},
    {0x12, "NUMERIC STRING", Form::Hex},
    {0x13, "PRINTABLE STRING", Form::Characters},
    {0x14, "TELETEX STRING", Form::Hex},
    {0x15, "VIDEOTEX STRING", Form::Hex},
    {0x16, "IA5 STRING", Form::Characters},
    {0x17, "UTC TIME", Form::Time},
    {0x18, "GENERALIZED TIME", Form::Hex},
    {0x19, "GRAPHIC STRING", Form::Hex},
    {0x1A, "VISIBLE STRING", Form::Hex},
    {0x1B, "GENERAL STRING", Form::Hex},
    {0x1C, "UNIVERSAL STRING", Form::Hex},
    {0x1D, "CHARACTER STRING", Form::Hex},
    {0x1E, "BMP STRING", Form::Text},
    {0x30, "SEQUENCE", Form::Hex, true},
    {0x31, "SET", Form::Hex, true},
    {0x82, "UNKNOWN", Form::HexOrCharacters, true},
    {0x86, "UNKNOWN", Form::Characters, true},
    {0xA0, "CONTEXT SPECIFIC", Form::Hex, true},
};
constexpr TagForm kUnknownTag = {0, "UNKNOWN", Form::Hex, true};

const TagForm &formOf(const stASN_BLOCK_HEADER *node)
{
    for (const TagForm &known : kTags) {
        if (node && known.tag == node->tag)
            return known;
    }
    return kUnknownTag;
}

QString timeText(const QByteArray &octets)
{
    return QString::fromLatin1(
               octets.constData(),
               static_cast<int>(qstrnlen(octets.constData(), static_cast<uint>(octets.size())))) +
           QLatin1Char(' ');
}

} // namespace

QString value(const stASN_BLOCK_HEADER *node)
{
    const Form form = formOf(node).form;
    if (form == Form::Text)
        return node_values::text(node);
    const QByteArray octets = node_values::contentView(node);
    switch (form) {
    case Form::Time:
        return timeText(octets);
    case Form::Characters:
        return leaf_text::characters(octets);
    case Form::HexOrCharacters:
        return leaf_text::hexOrCharacters(octets);
    default:
        return leaf_text::hex(octets);
    }
}

QString braced(const stASN_BLOCK_HEADER *node)
{
    const Form form = formOf(node).form;
    QString inside = form == Form::HexOrCharacters
                         ? leaf_text::characters(node_values::contentView(node))
                         : value(node);
    const bool isSpaced = form != Form::Text && form != Form::Time && !inside.isEmpty();
    return QLatin1String(" { ") + inside + QLatin1String(isSpaced ? " }" : "}");
}

QString summary(const stASN_BLOCK_HEADER *node)
{
    if (!node)
        return QStringLiteral("None");
    const TagForm &form = formOf(node);
    const QString name = QLatin1String(form.name);
    return form.nameOnly
               ? name
               : name + QLatin1String("       length =") + QString::number(braced(node).size());
}

} // namespace node_texts
