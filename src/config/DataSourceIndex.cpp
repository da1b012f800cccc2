#include "config/DataSourceIndex.h"

namespace
{
/// The same for any two units that are equal ignoring case in some locale. I, K and all units outside ASCII count as
/// the same; no other letter from A to Z has case variants outside that range.
unsigned folded(wchar_t unit)
{
    const unsigned lower = unit >= L'A' && unit <= L'Z' ? unit + (L'a' - L'A') : unit;
    return lower < 0x80 && lower != L'i' && lower != L'k' ? lower : 0;
}

unsigned hashOn(unsigned hash, const qelString& text)
{
    const unsigned kPrime = 16777619;
    for (const wchar_t* unit = text.getStringW(); *unit != 0; ++unit)
    {
        hash = (hash ^ folded(*unit)) * kPrime;
    }
    return hash;
}

unsigned hashOf(const qelDataSource& source)
{
    const unsigned kStart = 2166136261;
    return hashOn(hashOn(kStart, source.m_Name), source.m_Platform);
}
} // namespace

long DataSourceIndex::find(const qelArray<qelDataSource>& sources, const qelDataSource& wanted)
{
    if (m_entries != sources.length())
    {
        renew(sources);
    }
    const unsigned hash = hashOf(wanted);
    const unsigned mask = static_cast<unsigned>(m_slots.length()) - 1;
    for (unsigned at = hash & mask;; at = (at + 1) & mask)
    {
        // Equal entries are probed in the order of their positions, so the first one is found first.
        const Slot& slot = m_slots[static_cast<long>(at)];
        if (slot.position < 0 || (slot.hash == hash && sources[slot.position] == wanted))
        {
            return slot.position;
        }
    }
}

void DataSourceIndex::clear()
{
    m_entries = -1;
    m_slots.setPhysicalLength(0);
}

void DataSourceIndex::renew(const qelArray<qelDataSource>& sources)
{
    clear();
    long length = 8;
    while (length / 2 < sources.length())
    {
        length *= 2;
    }
    m_slots.setLogicalLength(length);
    for (long i = 0; i < length; ++i)
    {
        m_slots[i] = {0, -1};
    }
    const unsigned mask = static_cast<unsigned>(length) - 1;
    for (long position = 0; position < sources.length(); ++position)
    {
        const unsigned hash = hashOf(sources[position]);
        unsigned at = hash & mask;
        while (m_slots[static_cast<long>(at)].position >= 0)
        {
            at = (at + 1) & mask;
        }
        m_slots[static_cast<long>(at)] = {hash, position};
    }
    m_entries = sources.length();
}
