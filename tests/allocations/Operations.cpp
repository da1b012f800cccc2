#include "allocations/Operations.h"

#include <new>

void qelTest::Trial::operator()(const std::function<void()>& act, const std::function<std::wstring()>& look)
{
    m_before = look();
    result.reserve(64);
    allocations::arm(m_failAt, m_failing);
    try
    {
        act();
    }
    catch (const std::bad_alloc&)
    {
        m_threw = true;
    }
    catch (...)
    {
        m_threwSomethingElse = true;
    }
    m_count = allocations::disarm();
    m_seen = {result, look()};
    if (m_failAt >= 0 && m_failAt < m_count && m_seen.state == m_before)
    {
        m_again = true;
        act();
        m_seenAgain = {result, look()};
    }
}
