#include "asn/pxasn_walk.h"

void PXAsnWalk::next()
{
    m_open.emplace_back(m_element);
    while (!m_open.empty() && !m_open.back().next(m_element))
        m_open.pop_back();
    m_isAtEnd = m_open.empty();
}
