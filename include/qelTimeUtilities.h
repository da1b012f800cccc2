/**
 * @file
 * @brief Distances between calendar times, and times shifted by whole hours.
 *
 * Times are Windows `SYSTEMTIME` records; include windows.h to fill one.
 *
 * @code
 * int days = 0;
 * if (qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInDays(saved, days) < 0)
 *     printf("saved %d days ago\n", -days);
 * @endcode
 *
 * Every difference operation returns the comparison of its two times: -1 when the first is earlier, 0 when they are
 * equal, 1 when it is later. The difference is first time minus second time, truncated towards zero to the unit (59.9
 * seconds are 0 minutes, -1.5 hours are -1). A difference that does not fit 32 bits is -2,147,483,648 whatever its
 * sign, which happens to seconds beyond about 68 years.
 *
 * The day of the week of a record is not looked at. A record that is no valid time counts as the beginning of the year
 * 1601 in differences; nothing reports it. Free of state, so any thread may call.
 */
#ifndef QEL_TIME_UTILITIES_H
#define QEL_TIME_UTILITIES_H

#include "qelExport.h"

struct _SYSTEMTIME;

/// Static operations only.
class QEL_API qelTimeUtilities
{
public:
    /// @name Between two times
    /// @{
    static int getDifferenceBetweenTimesInSeconds(const _SYSTEMTIME& a, const _SYSTEMTIME& b, int& difference);
    static int getDifferenceBetweenTimesInMinutes(const _SYSTEMTIME& a, const _SYSTEMTIME& b, int& difference);
    static int getDifferenceBetweenTimesInHours(const _SYSTEMTIME& a, const _SYSTEMTIME& b, int& difference);
    static int getDifferenceBetweenTimesInDays(const _SYSTEMTIME& a, const _SYSTEMTIME& b, int& difference);
    /// @}

    /// @name Between a time and the current local time
    /// @{
    static int getDifferenceBetweenTimeAndLocalTimeInSeconds(const _SYSTEMTIME& a, int& difference);
    static int getDifferenceBetweenTimeAndLocalTimeInMinutes(const _SYSTEMTIME& a, int& difference);
    static int getDifferenceBetweenTimeAndLocalTimeInHours(const _SYSTEMTIME& a, int& difference);
    static int getDifferenceBetweenTimeAndLocalTimeInDays(const _SYSTEMTIME& a, int& difference);
    /// @}

    /// @name Between a time and the current UTC time
    /// @{
    static int getDifferenceBetweenTimeAndSystemTimeInSeconds(const _SYSTEMTIME& a, int& difference);
    static int getDifferenceBetweenTimeAndSystemTimeInMinutes(const _SYSTEMTIME& a, int& difference);
    static int getDifferenceBetweenTimeAndSystemTimeInHours(const _SYSTEMTIME& a, int& difference);
    static int getDifferenceBetweenTimeAndSystemTimeInDays(const _SYSTEMTIME& a, int& difference);
    /// @}

    /**
     * Adds whole hours, whatever the name suggests; a negative amount goes back. `result` may be the same record and
     * gets its day of the week as well. Returns non-zero on success; 0, with `result` unchanged, when `time` or the sum
     * is no valid time (the years 1601 to 30827 are). An amount beyond 256,204,778 hours is not refused: it wraps
     * around 64 bits of ticks.
     */
    static int addTime(const _SYSTEMTIME& time, int hours, _SYSTEMTIME& result);

    /// addTime() on the current local time.
    static int addTimeToLocalTime(int hours, _SYSTEMTIME& result);

private:
    static int getDifferenceBetweenTimesIn100NanoSeconds(const _SYSTEMTIME& a, const _SYSTEMTIME& b,
                                                         long long& difference); // in ticks

    // Ticks of 100 nanoseconds.
    static const long long m_nano100SecInSecond = 10000000LL;
    static const long long m_nano100SecInMinute = 600000000LL;
    static const long long m_nano100SecInHour = 36000000000LL;
    static const long long m_nano100SecInDay = 864000000000LL;
};

#endif
