#pragma once

#include "asn/asn_block.h"

#include <QByteArray>
#include <utility>
#include <vector>

/// DER read a second way, by what asn/asn_block.h says of a parse: by value, child by child,
/// without a look ahead. For comparing with; it is neither quick nor small.
struct SecondReading
{
    unsigned char tag = 0; ///< 0, which no element has, where nothing could be read
    int size = 0;          ///< octets of all of it
    QByteArray content;
    std::vector<SecondReading> children;
    bool holdsChildren = false; ///< though there may be none

    /// The child at `index` if it has this tag, any tag for `ASN_TAG_ANY`; else an empty reading.
    const SecondReading &child(std::size_t index, int wanted = ASN_TAG_ANY) const
    {
        static const SecondReading none;
        const bool fits =
            index < children.size() && (wanted == ASN_TAG_ANY || children[index].tag == wanted);
        return fits ? children[index] : none;
    }

    explicit operator bool() const { return tag != 0; }
};

/// Reads elements from octets, one behind the other.
class SecondReader
{
public:
    explicit SecondReader(QByteArray octets)
        : m_octets(std::move(octets))
    {
    }

    /// The first element, with all that is below.
    SecondReading root()
    {
        int at = 0;
        return element(m_octets, at, 0);
    }

private:
    // The content's length, which begins at `at`, moved to the content; -1 when there is none.
    static int takeLength(const QByteArray &octets, int &at)
    {
        constexpr int kLongForm = 0x80;
        const auto octet = [&] { return static_cast<unsigned char>(octets.at(at++)); };
        if (at >= octets.size())
            return -1;
        const int first = octet();
        const int more = first < kLongForm ? 0 : first - kLongForm;
        qint64 length = first < kLongForm ? first : 0;
        if (more > 4 || more > octets.size() - at)
            return -1;
        for (int i = 0; i < more; ++i)
            length = length * 256 + octet();
        return length <= octets.size() - at ? static_cast<int>(length) : -1;
    }

    SecondReading element(const QByteArray &octets, int &at, int depth)
    {
        SecondReading reading;
        if (depth == ASN_MAX_DEPTH || at >= octets.size())
            return {};
        const auto tag = static_cast<unsigned char>(octets.at(at));
        m_isExtended = m_isExtended || tag == ASN_TAG_EXTENSIONS;
        int behind = at + 1;
        const int length = ASN_TAGVALID(tag) ? takeLength(octets, behind) : -1;
        if (length < 0)
            return {};
        reading.tag = tag;
        reading.content = octets.mid(behind, length);
        reading.size = behind + length - at;
        at = behind + length;
        readChildren(reading, depth + 1);
        return reading;
    }

    void readChildren(SecondReading &reading, int depth)
    {
        const bool isConstructed = ASNIsConstructed(reading.tag);
        if (!isConstructed && (reading.tag != ASN_TAG_OCTET_STRING || !m_isExtended))
            return;
        int at = 0;
        while (SecondReading child = element(reading.content, at, depth))
            reading.children.push_back(std::move(child));
        // An OCTET STRING either holds elements and nothing else, or is a leaf.
        if (!isConstructed && at < reading.content.size())
            reading.children.clear();
        reading.holdsChildren = isConstructed || !reading.children.empty();
    }

    QByteArray m_octets;
    bool m_isExtended = false;
};
