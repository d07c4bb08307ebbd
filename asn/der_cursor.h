#pragma once

#include "asn/octet_view.h"

/// One element as it stands in its octets.
struct DerElement
{
    unsigned char tag = 0; ///< the identifier octet, class and constructed bit included
    unsigned int size = 0; ///< octets of the whole element, header included
    OctetView content;     ///< a part of the octets that it was read from
};

/// Reads one element after the other: the one place that knows how identifier and length octets are
/// encoded (X.690, 8.1.2 and 8.1.3). It owns nothing, and looks at no content.
class DerCursor
{
public:
    explicit DerCursor(OctetView octets)
        : m_rest(octets)
    {
    }

    bool atEnd() const { return m_rest.size == 0; }

    /// The identifier octet that comes next; 0, which no element of ours has, at the end.
    unsigned char identifier() const { return atEnd() ? 0 : m_rest.data[0]; }

    /// Reads the element that comes next and moves past it. False, with cursor and `element` as
    /// they were, at the end, when the element does not fit, and for a length of more than four
    /// octets. The bare 0x80 of the indefinite form (X.690, 8.1.3.6) counts as length 0, and a
    /// length needs not be the shortest form (10.1). Any identifier octet is taken for a whole one.
    bool next(DerElement &element);

private:
    OctetView m_rest;
};

inline bool DerCursor::next(DerElement &element)
{
    constexpr unsigned char kLongForm = 0x80;
    constexpr unsigned int kMostLengthOctets = 4;
    if (m_rest.size < 2)
        return false;
    const unsigned char first = m_rest.data[1];
    const unsigned int lengthOctets = first < kLongForm ? 0 : first - kLongForm;
    if (lengthOctets > kMostLengthOctets || m_rest.size - 2 < lengthOctets)
        return false;
    unsigned int length = first < kLongForm ? first : 0;
    for (unsigned int i = 0; i < lengthOctets; ++i)
        length = length << 8 | m_rest.data[2 + i];
    const unsigned int header = 2 + lengthOctets;
    if (length > m_rest.size - header)
        return false;
    element = {m_rest.data[0], header + length, {m_rest.data + header, length}};
    m_rest = {m_rest.data + element.size, m_rest.size - element.size};
    return true;
}
