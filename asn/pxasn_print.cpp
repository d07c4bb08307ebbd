#include "asn/leaf_text.h"
#include "asn/pxasn.h"

#include <cstdio>

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

const TagForm &formOf(int tag)
{
    for (const TagForm &known : kTags) {
        if (known.tag == tag)
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

QString PXAsnBlock::printData_ex() const
{
    const QByteArray content = contentOctets();
    switch (formOf(type()).form) {
    case Form::Text:
        return toString();
    case Form::Time:
        return timeText(content);
    case Form::Characters:
        return leaf_text::characters(content);
    case Form::HexOrCharacters:
        return leaf_text::hexOrCharacters(content);
    case Form::Hex:
        break;
    }
    return leaf_text::hex(content);
}

QString PXAsnBlock::printData() const
{
    const QByteArray content = contentOctets();
    QString value;
    switch (formOf(type()).form) {
    case Form::Text:
        value = toString();
        break;
    case Form::Time:
        value = timeText(content);
        break;
    case Form::Characters:
    case Form::HexOrCharacters:
        value = leaf_text::characters(content) + QLatin1String(content.isEmpty() ? "" : " ");
        break;
    case Form::Hex:
        value = leaf_text::hex(content) + QLatin1String(content.isEmpty() ? "" : " ");
        break;
    }
    return QLatin1String(" { ") + value + QLatin1Char('}');
}

QString PXAsnBlock::print() const
{
    if (!node)
        return QStringLiteral("None");
    const TagForm &form = formOf(type());
    const QString name = QLatin1String(form.name);
    return form.nameOnly
               ? name
               : name + QLatin1String("       length =") + QString::number(printData().size());
}

QString PXAsnBlock::myprint() const
{
    if (listChild.isEmpty())
        return printData() + QLatin1Char('\n');
    QString text;
    for (const PXAsnBlock *child : listChild)
        text += child->myprint();
    return text;
}

void PXAsnBlock::dump(int indent) const
{
    const QByteArray line = (QString(indent * 4, QLatin1Char(' ')) + print()).toUtf8();
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    for (const PXAsnBlock *child : listChild)
        child->dump(indent + 1);
}

std::string PXAsnBlock::get_basedata() const
{
    if (listChild.isEmpty()) {
        const QByteArray text = printData().toLocal8Bit();
        return std::string(text.constData(), static_cast<std::size_t>(text.size())) + ": ";
    }
    std::string text;
    for (const PXAsnBlock *child : listChild)
        text += child->get_basedata();
    return text;
}
