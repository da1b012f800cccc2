// What a log file holds, but for the times in it.
#ifndef QEL_TEST_LOG_TEXT_H
#define QEL_TEST_LOG_TEXT_H

#include <windows.h>

#include <stdio.h>

#include <string>

namespace qelTest
{
/// Knows which times of day lines can bear that were written since it was made.
class LogText
{
public:
    LogText() { GetLocalTime(&m_begin); }

    /// `content` with each "[hh:mm:ss]" written since then as "[now]"; any other time stays as it is.
    std::string withoutTimes(std::string content) const
    {
        for (size_t at = content.find('['); at != std::string::npos; at = content.find('[', at + 1))
        {
            if (content.size() > at + 9 && content[at + 9] == ']' && isNow(content.substr(at + 1, 8)))
            {
                content.replace(at, 10, "[now]");
            }
        }
        return content;
    }

private:
    bool isNow(const std::string& time) const
    {
        SYSTEMTIME now;
        GetLocalTime(&now);
        const ULONGLONG second = 10000000;
        // One second more, for the begun one.
        const ULONGLONG end = value(now) + second;
        for (ULONGLONG at = value(m_begin); at <= end; at += second)
        {
            if (time == text(at))
            {
                return true;
            }
        }
        return false;
    }

    static ULONGLONG value(const SYSTEMTIME& time)
    {
        FILETIME file;
        SystemTimeToFileTime(&time, &file);
        return (static_cast<ULONGLONG>(file.dwHighDateTime) << 32) | file.dwLowDateTime;
    }

    static std::string text(ULONGLONG at)
    {
        const FILETIME file = {static_cast<DWORD>(at), static_cast<DWORD>(at >> 32)};
        SYSTEMTIME time;
        FileTimeToSystemTime(&file, &time);
        char digits[16];
        sprintf_s(digits, "%02d:%02d:%02d", time.wHour, time.wMinute, time.wSecond);
        return digits;
    }

    SYSTEMTIME m_begin;
};
} // namespace qelTest

#endif
