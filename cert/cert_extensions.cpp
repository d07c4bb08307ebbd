#include "cert/c_pxcert.h"

#include "asn/pxasn_element.h"
#include "cert/recognised_extensions.h"
#include "util/debug_line.h"
#include "util/texts.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

QString extensionName(const PXAsnElement &identifier)
{
    const texts::AtOnce atOnce;
    return texts::raw(identifier.toString());
}

constexpr RecognisedExtension kAnyOther = {QLatin1String(), extension_texts::anyOther, nullptr};

// Extension ::= SEQUENCE { extnID, critical DEFAULT FALSE, extnValue } (RFC 5280, 4.1). All that
// follows the identifier is flattened into one list, the critical flag first.
bool read(const PXAsnElement &extension, const RecognisedExtension &as, extension_texts::Said &said)
{
    extension_texts::Values values;
    extension_texts::Items items;
    int level = 0;
    PXAsnElement part;
    for (PXAsnChildren parts(extension, 1); parts.next(part);) {
        if (!part) {
            qDebug("[PXCertificate::parseTBSCertificate] ...tbsCertificate value fail");
            return false;
        }
        if (as.fromItems)
            part.get_extendata_certpolicy(items, level);
        else
            part.get_extendata(values);
    }
    said = as.fromItems ? as.fromItems(items) : extension_texts::Said{as.fromValues(values), {}};
    return true;
}

} // namespace

// The recognised extensions by the names that they have in the language in force.
class c_pxcert::ExtensionNames
{
public:
    ExtensionNames()
    {
        const texts::AtOnce atOnce;
        for (const RecognisedExtension &extension : kRecognisedExtensions)
            m_names.push_back(texts::raw(extension.key));
    }

    const RecognisedExtension &named(const QString &name) const
    {
        const auto found = std::find(m_names.begin(), m_names.end(), name);
        return found != m_names.end() ? kRecognisedExtensions[found - m_names.begin()] : kAnyOther;
    }

private:
    std::vector<QString> m_names;
};

bool c_pxcert::parseTBSCertificate_extendata(PXAsnBlock *extensions)
{
    return readExtensions(PXAsnElement(extensions));
}

bool c_pxcert::readExtensions(const PXAsnElement &extensions)
{
    if (!extensions)
        return false;
    const ExtensionNames names;
    PXAsnElement list;
    PXAsnElement extension;
    for (PXAsnChildren lists(extensions); lists.next(list);) {
        for (PXAsnChildren all(list); all.next(extension);) {
            if (!readExtension(extension, names))
                return false;
        }
    }
    qDebug("[PXCertificate::parseExterndCertificate] end");
    return true;
}

bool c_pxcert::readExtension(const PXAsnElement &extension, const ExtensionNames &names)
{
    if (!extension.hasChildren())
        return true;
    const PXAsnElement identifier = extension.getChild(0, ASN_TAG_OBJECT_IDENTIFIER);
    if (!identifier)
        return true;
    const QString name = extensionName(identifier);
    debugLine(name, " count", extension.getChildCount());
    extension_texts::Said said;
    if (!read(extension, names.named(name), said))
        return false;
    addPurposes(std::move(said.purposes));
    m_rows.push_back({texts::throughLocal8Bit(name), said.text, said.text, detail_node::Extension});
    return true;
}

void c_pxcert::addPurposes(std::vector<QString> purposes)
{
    if (m_purposes.empty())
        m_purposes = std::move(purposes);
    else
        m_purposes.insert(m_purposes.end(), purposes.begin(), purposes.end());
}

QString c_pxcert::make_certnode(const QString &name, std::vector<QString> &values)
{
    const ExtensionNames names;
    std::vector<QString> own = values; // the caller keeps the others
    return names.named(name).fromValues(own);
}

QString c_pxcert::make_certnode_certpolicy(std::vector<certpolicy> &items)
{
    std::vector<certpolicy> own = items; // the caller keeps the others
    extension_texts::Said said = extension_texts::policies(own);
    addPurposes(std::move(said.purposes));
    return said.text;
}

QString c_pxcert::make_certnode_crlpoint(std::vector<certpolicy> &items)
{
    std::vector<certpolicy> own = items;
    return extension_texts::distributionPoints(own).text;
}

QString c_pxcert::make_single_certpolicy(int index, std::vector<QString> &values)
{
    return extension_texts::policyBlock(index, values);
}

QString c_pxcert::make_single_crlpoint(int index, std::vector<QString> &values)
{
    return extension_texts::distributionPointBlock(index, values);
}

QString c_pxcert::get_keyusage(int bits)
{
    return extension_texts::keyUsageNames(bits);
}

QString c_pxcert::get_ns_cert_type(int bits)
{
    return extension_texts::netscapeTypeNames(bits);
}
