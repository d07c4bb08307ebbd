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
    QString result;
    result.reserve(text.size() / 2 + 1);
    for (int i = 0; i < text.size(); i += 2)
        result += text.at(i);
    return result;
}

} // namespace

QString hex(const QByteArray &octets)
{
    return QString::fromLatin1(octets.toHex(' ').toUpper());
}

QString characters(const QByteArray &octets)
{
    QString text;
    text.reserve(octets.size() * 2);
    for (const char octet : octets) {
        text += QLatin1Char(octet);
        text += QLatin1Char(' ');
    }
    text.chop(1);
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
