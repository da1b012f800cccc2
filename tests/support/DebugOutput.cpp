#include "support/DebugOutput.h"

#include <windows.h>

namespace
{
// Debug output is an exception that a debugger, or a handler like this one, takes: wide from Windows 10 on, narrow
// before.
const DWORD kWide = 0x4001000A;
const DWORD kNarrow = 0x40010006;

std::vector<std::wstring> collected;

LONG CALLBACK collect(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == kWide)
    {
        collected.push_back(reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]));
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    if (record.ExceptionCode == kNarrow)
    {
        const char* text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
        wchar_t wide[1000] = {};
        MultiByteToWideChar(CP_ACP, 0, text, -1, wide, 999);
        collected.push_back(wide);
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    return EXCEPTION_CONTINUE_SEARCH;
}
} // namespace

qelTest::DebugOutput::DebugOutput()
    : m_handler(nullptr)
{
    collected.clear();
    m_handler = AddVectoredExceptionHandler(1, reinterpret_cast<PVECTORED_EXCEPTION_HANDLER>(collect));
}

qelTest::DebugOutput::~DebugOutput()
{
    RemoveVectoredExceptionHandler(m_handler);
}

const std::vector<std::wstring>& qelTest::DebugOutput::texts() const
{
    return collected;
}
