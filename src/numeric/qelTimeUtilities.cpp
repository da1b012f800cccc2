#include "qelTimeUtilities.h"

#include "numeric/Truncation.h"

#include <windows.h>

namespace
{
/// A time as a count of 100-nanosecond ticks.
unsigned long long ticks(const FILETIME& time)
{
    return static_cast<unsigned long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

/// An invalid time gives the beginning of 1601.
FILETIME fileTime(const SYSTEMTIME& time)
{
    FILETIME result = {};
    (void)SystemTimeToFileTime(&time, &result);
    return result;
}

int wholeUnits(long long elapsed, long long unit)
{
    return qelTruncation::toInt32(static_cast<double>(elapsed) / static_cast<double>(unit));
}

SYSTEMTIME localTime()
{
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    return now;
}

SYSTEMTIME systemTime()
{
    SYSTEMTIME now = {};
    GetSystemTime(&now);
    return now;
}
} // namespace

int qelTimeUtilities::getDifferenceBetweenTimesInSeconds(const SYSTEMTIME& a, const SYSTEMTIME& b, int& difference)
{
    long long elapsed = 0;
    const int order = getDifferenceBetweenTimesIn100NanoSeconds(a, b, elapsed);
    difference = wholeUnits(elapsed, m_nano100SecInSecond);
    return order;
}

int qelTimeUtilities::getDifferenceBetweenTimesInMinutes(const SYSTEMTIME& a, const SYSTEMTIME& b, int& difference)
{
    long long elapsed = 0;
    const int order = getDifferenceBetweenTimesIn100NanoSeconds(a, b, elapsed);
    difference = wholeUnits(elapsed, m_nano100SecInMinute);
    return order;
}

int qelTimeUtilities::getDifferenceBetweenTimesInHours(const SYSTEMTIME& a, const SYSTEMTIME& b, int& difference)
{
    long long elapsed = 0;
    const int order = getDifferenceBetweenTimesIn100NanoSeconds(a, b, elapsed);
    difference = wholeUnits(elapsed, m_nano100SecInHour);
    return order;
}

int qelTimeUtilities::getDifferenceBetweenTimesInDays(const SYSTEMTIME& a, const SYSTEMTIME& b, int& difference)
{
    long long elapsed = 0;
    const int order = getDifferenceBetweenTimesIn100NanoSeconds(a, b, elapsed);
    difference = wholeUnits(elapsed, m_nano100SecInDay);
    return order;
}

int qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInSeconds(const SYSTEMTIME& a, int& difference)
{
    return getDifferenceBetweenTimesInSeconds(a, localTime(), difference);
}

int qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInMinutes(const SYSTEMTIME& a, int& difference)
{
    return getDifferenceBetweenTimesInMinutes(a, localTime(), difference);
}

int qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInHours(const SYSTEMTIME& a, int& difference)
{
    return getDifferenceBetweenTimesInHours(a, localTime(), difference);
}

int qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInDays(const SYSTEMTIME& a, int& difference)
{
    return getDifferenceBetweenTimesInDays(a, localTime(), difference);
}

int qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInSeconds(const SYSTEMTIME& a, int& difference)
{
    return getDifferenceBetweenTimesInSeconds(a, systemTime(), difference);
}

int qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInMinutes(const SYSTEMTIME& a, int& difference)
{
    return getDifferenceBetweenTimesInMinutes(a, systemTime(), difference);
}

int qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInHours(const SYSTEMTIME& a, int& difference)
{
    return getDifferenceBetweenTimesInHours(a, systemTime(), difference);
}

int qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInDays(const SYSTEMTIME& a, int& difference)
{
    return getDifferenceBetweenTimesInDays(a, systemTime(), difference);
}

int qelTimeUtilities::addTime(const SYSTEMTIME& time, int hours, SYSTEMTIME& result)
{
    FILETIME shifted = {};
    if (!SystemTimeToFileTime(&time, &shifted))
    {
        return 0;
    }
    // Unsigned, because a large product wraps around 64 bits.
    const unsigned long long amount = static_cast<unsigned long long>(static_cast<long long>(hours)) *
                                      static_cast<unsigned long long>(m_nano100SecInHour);
    const unsigned long long sum = ticks(shifted) + amount;
    shifted.dwLowDateTime = static_cast<DWORD>(sum);
    shifted.dwHighDateTime = static_cast<DWORD>(sum >> 32);
    return FileTimeToSystemTime(&shifted, &result);
}

int qelTimeUtilities::addTimeToLocalTime(int hours, SYSTEMTIME& result)
{
    return addTime(localTime(), hours, result);
}

int qelTimeUtilities::getDifferenceBetweenTimesIn100NanoSeconds(const SYSTEMTIME& a, const SYSTEMTIME& b,
                                                                long long& difference)
{
    const unsigned long long first = ticks(fileTime(a));
    const unsigned long long second = ticks(fileTime(b));
    difference = static_cast<long long>(first - second);
    return first < second ? -1 : first > second ? 1 : 0;
}
