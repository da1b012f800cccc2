#include "qelDebugInterfaces.h"

#include <windows.h>

#include <limits.h>
#include <stdint.h>

void qelDebugInterfaces::setCurrentContextInitiator(void* initiator)
{
    m_ContextInitiators.append(initiator);
}

void qelDebugInterfaces::contextInitiatorEnd(void* initiator)
{
    if (!m_ContextInitiators.isEmpty() && m_ContextInitiators.last() == initiator)
    {
        m_ContextInitiators.removeAt(m_ContextInitiators.length() - 1);
    }
}

void qelDebugInterfaces::objectConstructed(const qelString& className, void* object)
{
    DebugInfo info;
    info.initiator = m_ContextInitiators.isEmpty() ? nullptr : m_ContextInitiators.last();
    info.className = className;
    info.object = object;
    // The array itself grows linearly, too slow for a long list.
    if (m_Info.length() == m_Info.physicalLength() && m_Info.length() < LONG_MAX / 2)
    {
        m_Info.setPhysicalLength(m_Info.length() * 2);
    }
    m_Info.append(info);
}

void qelDebugInterfaces::objectDestroied(const qelString& className, void* object)
{
    qelString name(className);
    const int index = getIndexAt(name, object);
    if (index >= 0)
    {
        m_Info[index].destroyed = 1;
    }
}

void qelDebugInterfaces::clearAllDebugInfo(void* initiator)
{
    long kept = 0;
    for (long i = 0; initiator != nullptr && i < m_Info.length(); ++i)
    {
        if (m_Info[i].initiator != initiator)
        {
            m_Info[kept++] = m_Info[i];
        }
    }
    m_Info.setLogicalLength(kept);
}

int qelDebugInterfaces::entriesNumber()
{
    return m_Info.length();
}

void qelDebugInterfaces::showResults(void* initiator)
{
    bool headed = false;
    int running = 0;
    for (long i = 0; i < m_Info.length(); ++i)
    {
        const DebugInfo& info = m_Info[i];
        if (initiator != nullptr && info.initiator != initiator)
        {
            continue;
        }
        if (info.destroyed == 0)
        {
            qelString text;
            if (!headed)
            {
                headed = true;
                qelOutputDebugString(text.format(L"\n Coclasses not destructed:"));
            }
            const auto address = static_cast<unsigned>(reinterpret_cast<uintptr_t>(info.object));
            qelOutputDebugString(
                text.format(L"\n %d [%d] %08x %s", static_cast<int>(i), running, address, info.className.getStringW()));
        }
        ++running;
    }
}

int qelDebugInterfaces::getIndexAt(qelString& className, void* object)
{
    for (long i = 0; i < m_Info.length(); ++i)
    {
        const DebugInfo& info = m_Info[i];
        if (info.object == object && info.destroyed == 0 && info.className == className)
        {
            return i;
        }
    }
    return -1;
}

void qelWinMessage::messageBox(const qelString& text)
{
    static_assert((MB_OK | MB_ICONINFORMATION) == 64, "one button and the information icon");
    MessageBoxW(nullptr, text.getStringW(), L"Orvalis", MB_OK | MB_ICONINFORMATION);
}
