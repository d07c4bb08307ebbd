#include "asn/leaf_text.h"

namespace leaf_text {
namespace {

bool isSpacedOut(const QString &text)
{
    if (text.size() < 3 || text.size() % 2 == 0)
        return false;
    for (int i = 1; i < text.size(); i += 2) {
        if (text.at(i) != QLatin1Char(' '))
            return false;
    }
    return true;
}

QString everySecondCharacter(const QString &text)
{
    QString result((text.size() + 1) / 2, Qt::Uninitialized);
    QChar *character = result.data();
    for (int i = 0; i < text.size(); i += 2)
        *character++ = text.at(i);
    return result;
}

} // namespace

QString hex(const QByteArray &octets)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    if (octets.isEmpty())
        return {};
    QString text(octets.size() * 3 - 1, Qt::Uninitialized);
    QChar *end = text.data();
    for (const char octet : octets) {
        const auto value = static_cast<unsigned char>(octet);
        if (end != text.constData())
            *end++ = QLatin1Char(' ');
        *end++ = QLatin1Char(kDigits[value >> 4]);
        *end++ = QLatin1Char(kDigits[value & 0x0F]);
    }
    return text;
}

QString characters(const QByteArray &octets)
{
    if (octets.isEmpty())
        return {};
    QString text(octets.size() * 2 - 1, QLatin1Char(' '));
    QChar *character = text.data();
    for (const char octet : octets) {
        *character = QLatin1Char(octet);
        character += 2;
    }
    return text;
}

QString hexOrCharacters(const QByteArray &octets)
{
    return octets.size() <= kMostHexOctets ? hex(octets) : characters(octets);
}

QString closedUp(const QString &text)
{
    return isSpacedOut(text) ? everySecondCharacter(text) : text;
}

QString asHex(const QString &text)
{
    // An octet takes two characters but for the last, which takes one: an odd number of them.
    constexpr int kShortestCharacters = 2 * (kMostHexOctets + 1) - 1;
    if (text.size() % 2 == 0 || text.size() < kShortestCharacters)
        return text;
    return hex(everySecondCharacter(text).toLatin1());
}

int flags(const QString &bitString)
{
    const QByteArray octets = QByteArray::fromHex(bitString.toLatin1());
    const auto octet = [&](int i) {
        return i < octets.size() ? static_cast<unsigned char>(octets.at(i)) : 0;
    };
    return octet(1) | octet(2) << 8;
}

} // namespace leaf_text
