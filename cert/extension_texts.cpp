#include "cert/extension_texts.h"

#include "asn/leaf_text.h"
#include "util/texts.h"

#include <algorithm>
#include <QStringBuilder>
#include <utility>

namespace extension_texts {
namespace {

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

QString firstOf(const Values &values)
{
    return values.empty() ? QString() : values.front();
}

struct FlagName
{
    int bit;
    const char *text;
};

// Deliberate: Key Encipherment stands before Non-Repudiation.
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

template <std::size_t Size>
QString namesOfBits(int bits, const FlagName (&flags)[Size])
{
    QString text;
    for (const FlagName &flag : flags) {
        if (bits & flag.bit)
            text += QLatin1String(flag.text);
    }
    text.chop(1);
    return text;
}

// A critical flag may stand before the BIT STRING.
int flagsOf(const Values &values)
{
    return values.empty() ? 0 : leaf_text::flags(values.back());
}

// A line for each pair of attribute name and value; an odd one stands alone on its line.
QString attributeLines(Values::const_iterator value, Values::const_iterator end)
{
    const QString indent(8, QLatin1Char(' '));
    QString text;
    while (value != end) {
        text += indent + texts::raw(leaf_text::closedUp(*value++));
        if (value != end)
            text += QLatin1Char('=') + leaf_text::closedUp(*value++);
        text += QLatin1Char('\n');
    }
    return text;
}

// 0 when there are none.
int lowestLevel(const Items &items)
{
    const auto byLevel = [](const certpolicy &a, const certpolicy &b) { return a.level < b.level; };
    const auto lowest = std::min_element(items.begin(), items.end(), byLevel);
    return lowest == items.end() ? 0 : lowest->level;
}

// As many as `eachGroup` finds, or one less.
std::size_t groupsOf(const Items &items)
{
    const int lowest = lowestLevel(items);
    return static_cast<std::size_t>(
        std::count_if(items.begin(), items.end(),
                      [lowest](const certpolicy &item) { return item.level == lowest; }));
}

// Calls `take(texts)` for each group of items: one at the lowest level starts a group, and those
// below it belong to it. Items before the first such one belong to a group that an empty text
// heads.
template <typename Take>
void eachGroup(Items &items, const Take &take)
{
    if (items.empty())
        return;
    const int lowest = lowestLevel(items);
    Values group;
    if (items.front().level != lowest)
        group.push_back(texts::shown(QString()));
    for (certpolicy &item : items) {
        if (item.level == lowest && !group.empty()) {
            take(group);
            group.clear();
        }
        group.push_back(texts::shown(std::exchange(item.text, {})));
    }
    take(group);
}

} // namespace

QString keyUsage(Values &values)
{
    return keyUsageNames(flagsOf(values));
}

QString netscapeType(Values &values)
{
    return netscapeTypeNames(flagsOf(values));
}

QString keyUsageNames(int bits)
{
    return namesOfBits(bits, kKeyUsageNames);
}

QString netscapeTypeNames(int bits)
{
    return namesOfBits(bits, kNetscapeTypeNames);
}

QString basicConstraints(Values &values)
{
    const bool alone = values.size() < 2;
    const QString flag = alone ? firstOf(values) : values[1];
    const QString subject = flag == QLatin1String("FF")
                                ? QStringLiteral("Subject Type=CA\n")
                                : QStringLiteral("Subject Type=End Entity\n");
    if (alone)
        return subject + QLatin1String("Path Length Constraint=None");
    return values.size() > 2
               ? subject + QStringLiteral("Path Length Constraint=%1\n").arg(values[2])
               : subject;
}

QString alternativeName(Values &values)
{
    QString text;
    for (QString &value : values)
        text += QLatin1String("DNS Name=") % withoutWhiteSpace(std::exchange(value, {})) %
                QLatin1Char('\n');
    return text;
}

QString accessInfo(Values &values)
{
    QString text;
    int number = 0;
    for (auto value = afterCriticalFlag(values); value != values.end();) {
        const QString method = texts::raw(*value++);
        const QString url = value != values.end() ? withoutWhiteSpace(*value++) : QString();
        text += QStringLiteral("[%1]Authority Info Access\n    Access Method=%2\n")
                    .arg(QString::number(++number), method) +
                QStringLiteral("    Alternative Name:\n        URL=%1\n").arg(url);
    }
    return text;
}

QString authorityKey(Values &values)
{
    const auto keyIdentifier = afterCriticalFlag(values);
    if (keyIdentifier == values.end())
        return {};
    QString text = QLatin1String("KeyID=") + *keyIdentifier + QLatin1Char('\n');
    const auto issuer = keyIdentifier + 1;
    if (issuer == values.end())
        return text;
    const auto serial = values.end() - 1;
    return text + QLatin1String("Certificate Issuer:\n    Directory Address:\n") +
           attributeLines(issuer, serial) + QLatin1String("Certificate SerialNumber=") +
           leaf_text::asHex(*serial);
}

QString anyOther(Values &values)
{
    QString text;
    for (QString &value : values) {
        text += texts::raw(std::exchange(value, {}));
        text += QLatin1Char('\n');
    }
    return text;
}

Said policies(Items &items)
{
    Said said;
    said.purposes.reserve(groupsOf(items));
    eachGroup(items, [&](const Values &policy) {
        said.purposes.push_back(policy.front());
        said.text += policyBlock(static_cast<int>(said.purposes.size()), policy);
    });
    said.text = std::move(said.text).trimmed();
    return said;
}

Said distributionPoints(Items &items)
{
    QString text;
    int number = 0;
    eachGroup(items, [&](const Values &point) { text += distributionPointBlock(++number, point); });
    return {std::move(text).trimmed(), {}};
}

QString policyBlock(int number, const Values &values)
{
    const QString policy = QString::number(number);
    QString text = QStringLiteral("[%1]Certificate Policy:\n    Policy Identifier=%2\n")
                       .arg(policy, firstOf(values));
    for (std::size_t j = 1; j < values.size(); ++j) {
        if (j % 2 == 1)
            text += QStringLiteral("    [%1,%2]Policy Qualifier Info:\n"
                                   "        Policy Qualifier Id=%3\n")
                        .arg(policy, QString::number(j / 2 + 1), values[j]);
        else
            text += QStringLiteral("        Qualifier:\n               %1\n")
                        .arg(withoutWhiteSpace(values[j]));
    }
    return text;
}

QString distributionPointBlock(int number, const Values &values)
{
    constexpr std::size_t kUrlAndOnePair = 3;
    QString text = QStringLiteral("[%1]CRL Distribution Point\n    Distribution Point Name:\n"
                                  "        Full Name:\nURL=%2\n")
                       .arg(QString::number(number), firstOf(values));
    if (values.size() < kUrlAndOnePair)
        return text;
    text += QLatin1String("   CRL Issuer:\n       Directory Address:\n");
    const QString indent(12, QLatin1Char(' '));
    for (std::size_t j = 1; j + 1 < values.size(); j += 2)
        text += indent + values[j] + QLatin1Char('=') + values[j + 1] + QLatin1Char('\n');
    return text;
}

} // namespace extension_texts
