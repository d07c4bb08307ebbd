#include "cert/c_pxcert.h"

#include "asn/pxasn.h"
#include "util/c_language.h"

#include <algorithm>
#include <QDebug>

namespace {

using Values = std::vector<QString>;

QString languageText(const QString &key)
{
    return c_language::GetLangPtr()->GetValue(key);
}

// A critical flag stands before the extension's own values, flattened from its BOOLEAN.
bool isFlag(const QString &value)
{
    return value == QLatin1String("FF") || value == QLatin1String("00");
}

Values::const_iterator afterCriticalFlag(const Values &values)
{
    const bool flagged = !values.empty() && isFlag(values.front());
    return values.begin() + (flagged ? 1 : 0);
}

QString withoutWhiteSpace(QString text)
{
    const auto end = std::remove_if(text.begin(), text.end(), [](QChar c) { return c.isSpace(); });
    text.truncate(static_cast<int>(end - text.begin()));
    return text;
}

// Some types are flattened as characters with blanks between them: "a b c".
bool isSpacedOut(const QString &value)
{
    if (value.size() < 3 || value.size() % 2 == 0)
        return false;
    for (int i = 1; i < value.size(); i += 2) {
        if (value.at(i) != QLatin1Char(' '))
            return false;
    }
    return true;
}

QString everySecondCharacter(const QString &value)
{
    QString text;
    text.reserve(value.size() / 2 + 1);
    for (int i = 0; i < value.size(); i += 2)
        text += value.at(i);
    return text;
}

QString closedUp(const QString &value)
{
    return isSpacedOut(value) ? everySecondCharacter(value) : value;
}

struct FlagName
{
    int bit;
    const char *text;
};

// RFC 5280, 4.2.1.3. Deliberate: Key Encipherment stands before Non-Repudiation.
constexpr FlagName kKeyUsageNames[] = {
    {0x80, "Digital Signature,"},
    {0x20, "Key Encipherment,"},
    {0x40, "Non-Repudiation,"},
    {0x10, "Data Encipherment,"},
    {0x08, "Key Agreement,"},
    {0x04, "Certificate Signing,"},
    {0x02, "Off_line CRL Signing, CRL Signing,"},
    {0x01, "Encipher Only,"},
    {0x8000, "Decipher Only,"},
};

constexpr FlagName kNetscapeTypeNames[] = {
    {0x01, "Object Signing CA,"}, {0x02, "Email CA,"}, {0x04, "SSL CA,"},     {0x08, "Reserved,"},
    {0x10, "Object Signing,"},    {0x20, "Email,"},    {0x40, "SSL Server,"}, {0x80, "SSL Client,"},
};

struct FlagTable
{
    const FlagName *begin;
    const FlagName *end;
};

constexpr FlagTable kKeyUsage = {std::begin(kKeyUsageNames), std::end(kKeyUsageNames)};
constexpr FlagTable kNetscapeType = {std::begin(kNetscapeTypeNames), std::end(kNetscapeTypeNames)};

QString namesOfBits(int bits, const FlagTable &flags)
{
    QString text;
    for (const FlagName *flag = flags.begin; flag != flags.end; ++flag) {
        if (bits & flag->bit)
            text += QLatin1String(flag->text);
    }
    text.chop(1);
    return text;
}

// The flags of a BIT STRING that was flattened as "unused-bits first-octet second-octet ..."; the
// first octet becomes the low one.
int bitsOf(const QString &bitString)
{
    const QByteArray octets = QByteArray::fromHex(bitString.toLatin1());
    const auto octet = [&](int i) {
        return i < octets.size() ? static_cast<unsigned char>(octets.at(i)) : 0;
    };
    return octet(1) | octet(2) << 8;
}

// KeyUsage (RFC 5280, 4.2.1.3) and its Netscape forerunner. A critical flag may stand before.
QString flagsText(const Values &values, const FlagTable *flags)
{
    return values.empty() ? QString() : namesOfBits(bitsOf(values.back()), *flags);
}

// AuthorityInfoAccessSyntax (RFC 5280, 4.2.2.1): method and location in pairs.
QString accessInfoText(const Values &values, const FlagTable *)
{
    QString text;
    int number = 0;
    for (auto value = afterCriticalFlag(values); value != values.end();) {
        const QString method = languageText(*value++);
        const QString url = value != values.end() ? withoutWhiteSpace(*value++) : QString();
        text += QStringLiteral("[%1]Authority Info Access\n    Access Method=%2\n")
                    .arg(QString::number(++number), method) +
                QStringLiteral("    Alternative Name:\n        URL=%1\n").arg(url);
    }
    return text;
}

// BasicConstraints (RFC 5280, 4.2.1.9). Deliberate: the position in the list decides, so a
// path length without a critical flag before it is taken for the CA flag.
QString basicConstraintsText(const Values &values, const FlagTable *)
{
    if (values.size() < 2) {
        const bool isCa = !values.empty() && values.front() == QLatin1String("FF");
        return isCa ? QStringLiteral("Subject Type=CA\nPath Length Constraint=None")
                    : QStringLiteral("Subject Type=End Entity\nPath Length Constraint=None");
    }
    QString text = values[1] == QLatin1String("FF") ? QStringLiteral("Subject Type=CA\n")
                                                    : QStringLiteral("Subject Type=End Entity\n");
    if (values.size() > 2)
        text += QStringLiteral("Path Length Constraint=%1\n").arg(values[2]);
    return text;
}

// SubjectAltName (RFC 5280, 4.2.1.6). Deliberate: every value counts as a DNS name, the critical
// flag too.
QString alternativeNameText(const Values &values, const FlagTable *)
{
    QString text;
    for (const QString &value : values)
        text += QLatin1String("DNS Name=") + withoutWhiteSpace(value) + QLatin1Char('\n');
    return text;
}

// A serial number comes as the octets' hexadecimal text or, from four octets on, as characters.
QString serialText(const QString &value)
{
    constexpr int kShortestCharacterForm = 7;
    if (value.size() % 2 == 0 || value.size() < kShortestCharacterForm)
        return value;
    return QString::fromLatin1(everySecondCharacter(value).toLatin1().toHex(' ').toUpper());
}

// AuthorityKeyIdentifier (RFC 5280, 4.2.1.1): key identifier, issuer as pairs of attribute name
// and value, serial number.
QString authorityKeyText(const Values &values, const FlagTable *)
{
    const QString indent(8, QLatin1Char(' '));
    auto value = afterCriticalFlag(values);
    if (value == values.end())
        return {};
    QString text = QLatin1String("KeyID=") + *value++ + QLatin1Char('\n');
    if (value == values.end())
        return text;
    text += QLatin1String("Certificate Issuer:\n    Directory Address:\n");
    const auto serial = values.end() - 1;
    while (value != serial) {
        const QString name = languageText(closedUp(*value++));
        text += indent + name;
        if (value != serial)
            text += QLatin1Char('=') + closedUp(*value++);
        text += QLatin1Char('\n');
    }
    return text + QLatin1String("Certificate SerialNumber=") + serialText(*serial);
}

QString genericText(const Values &values, const FlagTable *)
{
    QString text;
    for (const QString &value : values)
        text += languageText(value) + QLatin1Char('\n');
    return text;
}

// How an extension is said: from its flattened values, or from their groups by level. It is
// recognised by its name, which is then the text under the key.
struct ExtensionRule
{
    const char *key;
    QString (*fromValues)(const Values &values, const FlagTable *flags);
    const FlagTable *flags;
    QString (c_pxcert::*fromGroups)(std::vector<certpolicy> &items);
};

constexpr ExtensionRule kExtensionRules[] = {
    {"PXCERTREAD_0025", genericText, nullptr, &c_pxcert::make_certnode_certpolicy},
    {"PXCERTREAD_0024", genericText, nullptr, &c_pxcert::make_certnode_crlpoint},
    {"PXCERTREAD_0026", accessInfoText, nullptr, nullptr},
    {"PXCERTREAD_0031", flagsText, &kKeyUsage, nullptr},
    {"PXCERTREAD_0032", flagsText, &kNetscapeType, nullptr},
    {"PXCERTREAD_0030", basicConstraintsText, nullptr, nullptr},
    {"PXCERTREAD_0028", alternativeNameText, nullptr, nullptr},
    {"PXCERTREAD_0027", authorityKeyText, nullptr, nullptr},
};
constexpr ExtensionRule kAnyOther = {nullptr, genericText, nullptr, nullptr};

// The rules with the texts that their keys have in the language in force.
class ExtensionRules
{
public:
    ExtensionRules()
    {
        for (const ExtensionRule &rule : kExtensionRules)
            m_names.push_back(languageText(QLatin1String(rule.key)));
    }

    const ExtensionRule &of(const QString &name) const
    {
        const auto found = std::find(m_names.begin(), m_names.end(), name);
        return found != m_names.end() ? kExtensionRules[found - m_names.begin()] : kAnyOther;
    }

private:
    std::vector<QString> m_names;
};

// Calls `block(number, texts)` for each group of items: one at the lowest level starts a group, and
// those below it belong to it. Groups are numbered from 1, and their blocks joined and trimmed.
template <typename MakeBlock>
QString groupedBlocks(std::vector<certpolicy> &items, const MakeBlock &block)
{
    if (items.empty())
        return {};
    const auto byLevel = [](const certpolicy &a, const certpolicy &b) { return a.level < b.level; };
    const int lowest = std::min_element(items.begin(), items.end(), byLevel)->level;
    if (items.front().level != lowest)
        items.insert(items.begin(), certpolicy{QString(), lowest});

    QString text;
    Values group;
    int number = 0;
    for (const certpolicy &item : items) {
        if (item.level == lowest && !group.empty()) {
            text += block(number, group);
            group.clear();
        }
        if (item.level == lowest)
            ++number;
        group.push_back(throughLocal8Bit(languageText(item.text)));
    }
    return (text + block(number, group)).trimmed();
}

// Extension ::= SEQUENCE { extnID, critical DEFAULT FALSE, extnValue } (RFC 5280, 4.1). All that
// follows the identifier is flattened into one list, the critical flag first.
bool extensionText(c_pxcert &model, const ExtensionRule &rule, PXAsnBlock &extension, QString &text)
{
    Values values;
    std::vector<certpolicy> items;
    int level = 0;
    for (int i = 1; i < extension.getChildCount(); ++i) {
        PXAsnBlock *part = extension.getChild(i, 0);
        if (!part) {
            qDebug() << "[PXCertificate::parseTBSCertificate] ...tbsCertificate value fail";
            return false;
        }
        if (rule.fromGroups)
            part->get_extendata_certpolicy(items, level);
        else
            part->get_extendata(values);
    }
    text = rule.fromGroups ? (model.*rule.fromGroups)(items) : rule.fromValues(values, rule.flags);
    return true;
}

QString firstOf(const Values &values)
{
    return values.empty() ? QString() : values.front();
}

} // namespace

// The wrapper holds Extensions ::= SEQUENCE OF Extension.
bool c_pxcert::parseTBSCertificate_extendata(PXAsnBlock *extensions)
{
    if (!extensions)
        return false;
    const ExtensionRules rules;
    for (int i = 0; i < extensions->getChildCount(); ++i) {
        PXAsnBlock *list = extensions->getChild(i, 0);
        for (int j = 0; j < list->getChildCount(); ++j) {
            PXAsnBlock *extension = list->getChild(j, 0);
            if (extension->getChildCount() == 0)
                continue;
            PXAsnBlock *identifier = extension->getChild(0, ASN_TAG_OBJECT_IDENTIFIER);
            if (!identifier)
                continue;
            const QString name = languageText(identifier->toString());
            qDebug() << name << " count" << extension->getChildCount();
            QString text;
            if (!extensionText(*this, rules.of(name), *extension, text))
                return false;
            m_rows.push_back({throughLocal8Bit(name), text, text, 1});
        }
    }
    qDebug() << "[PXCertificate::parseExterndCertificate] end";
    return true;
}

QString c_pxcert::make_certnode(const QString &name, std::vector<QString> &values)
{
    const ExtensionRules rules;
    const ExtensionRule &rule = rules.of(name);
    return rule.fromValues(values, rule.flags);
}

QString c_pxcert::make_certnode_certpolicy(std::vector<certpolicy> &items)
{
    return groupedBlocks(items, [this](int number, Values &policy) {
        m_purposes.push_back(policy.front());
        return make_single_certpolicy(number, policy);
    });
}

QString c_pxcert::make_certnode_crlpoint(std::vector<certpolicy> &items)
{
    return groupedBlocks(
        items, [this](int number, Values &point) { return make_single_crlpoint(number, point); });
}

QString c_pxcert::make_single_certpolicy(int index, std::vector<QString> &values)
{
    const QString number = QString::number(index);
    QString text = QStringLiteral("[%1]Certificate Policy:\n    Policy Identifier=%2\n")
                       .arg(number, firstOf(values));
    for (std::size_t j = 1; j < values.size(); ++j) {
        if (j % 2 == 1)
            text += QStringLiteral("    [%1,%2]Policy Qualifier Info:\n"
                                   "        Policy Qualifier Id=%3\n")
                        .arg(number, QString::number(j / 2 + 1), values[j]);
        else
            text += QStringLiteral("        Qualifier:\n               %1\n")
                        .arg(withoutWhiteSpace(values[j]));
    }
    return text;
}

QString c_pxcert::make_single_crlpoint(int index, std::vector<QString> &values)
{
    constexpr std::size_t kUrlAndOnePair = 3;
    QString text = QStringLiteral("[%1]CRL Distribution Point\n    Distribution Point Name:\n"
                                  "        Full Name:\nURL=%2\n")
                       .arg(QString::number(index), firstOf(values));
    if (values.size() < kUrlAndOnePair)
        return text;
    text += QLatin1String("   CRL Issuer:\n       Directory Address:\n");
    const QString indent(12, QLatin1Char(' '));
    for (std::size_t j = 1; j + 1 < values.size(); j += 2)
        text += indent + values[j] + QLatin1Char('=') + values[j + 1] + QLatin1Char('\n');
    return text;
}

QString c_pxcert::get_keyusage(int bits)
{
    return namesOfBits(bits, kKeyUsage);
}

QString c_pxcert::get_ns_cert_type(int bits)
{
    return namesOfBits(bits, kNetscapeType);
}
