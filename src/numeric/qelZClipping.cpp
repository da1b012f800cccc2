#include "qelZClipping.h"

qelZClipping::qelZClipping()
    : qelZClipping(eZClip_Default, kClipUpperDefault, kClipLowerDefault)
{
}

qelZClipping::qelZClipping(eZClip mode, double first, double second)
    : m_mode(mode)
    , m_first(first)
    , m_second(second)
{
}

int qelZClipping::operator==(const qelZClipping& other) const
{
    return m_mode == other.m_mode && m_first == other.m_first && m_second == other.m_second ? 1 : 0;
}

int qelZClipping::operator!=(const qelZClipping& other) const
{
    return *this == other ? 0 : 1;
}
