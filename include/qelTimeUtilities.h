/**
 * @file
 * @brief Differences between calendar times; adding hours.
 */
#ifndef QEL_TIME_UTILITIES_H
#define QEL_TIME_UTILITIES_H

#include "qelExport.h"

struct _SYSTEMTIME;

/**
 * @brief Differences between calendar times, and adding hours to them; all members are static.
 * @ingroup numerics
 *
 * Every difference function compares its two times and returns -1 when the first is earlier, 0 when they are equal, 1
 * when it is later. The difference is first minus second, truncated towards zero to the unit (59.9 seconds are 0
 * minutes, -1.5 hours are -1). Times are Windows `SYSTEMTIME` records, declared in windows.h.
 *
 * @par Example
 * @code
 * SYSTEMTIME saved = {};
 * saved.wYear = 2020;
 * saved.wMonth = 2;
 * saved.wDay = 28;
 * SYSTEMTIME later = {};
 * qelTimeUtilities::addTime(saved, 48, later) != 0;                           // == true
 * later.wMonth;                                                               // == 3
 * later.wDay;                                                                 // == 1
 *
 * int days = 0;
 * qelTimeUtilities::getDifferenceBetweenTimesInDays(saved, later, days);      // == -1, it is earlier
 * days;                                                                       // == -2
 * @endcode
 *
 * @par Failure
 * In differences, an invalid time silently counts as the beginning of the year 1601. The day of the week is ignored. A
 * difference that does not fit 32 bits is -2,147,483,648 whatever its sign: for seconds, beyond about 68 years.
 */
class QEL_API qelTimeUtilities
{
public:
    /// @name Between two times
    /// @{

    /// Sets `difference` to `a` - `b` in whole seconds.
    static int getDifferenceBetweenTimesInSeconds(const _SYSTEMTIME& a, const _SYSTEMTIME& b, int& difference);

    /// Sets `difference` to `a` - `b` in whole minutes.
    static int getDifferenceBetweenTimesInMinutes(const _SYSTEMTIME& a, const _SYSTEMTIME& b, int& difference);

    /// Sets `difference` to `a` - `b` in whole hours.
    static int getDifferenceBetweenTimesInHours(const _SYSTEMTIME& a, const _SYSTEMTIME& b, int& difference);

    /// Sets `difference` to `a` - `b` in whole days.
    static int getDifferenceBetweenTimesInDays(const _SYSTEMTIME& a, const _SYSTEMTIME& b, int& difference);
    /// @}

    /// @name Between a time and the current local time
    /// @{

    /// Sets `difference` to `a` - the current local time in whole seconds.
    static int getDifferenceBetweenTimeAndLocalTimeInSeconds(const _SYSTEMTIME& a, int& difference);

    /// Sets `difference` to `a` - the current local time in whole minutes.
    static int getDifferenceBetweenTimeAndLocalTimeInMinutes(const _SYSTEMTIME& a, int& difference);

    /// Sets `difference` to `a` - the current local time in whole hours.
    static int getDifferenceBetweenTimeAndLocalTimeInHours(const _SYSTEMTIME& a, int& difference);

    /// Sets `difference` to `a` - the current local time in whole days.
    static int getDifferenceBetweenTimeAndLocalTimeInDays(const _SYSTEMTIME& a, int& difference);
    /// @}

    /// @name Between a time and the current UTC time
    /// @{

    /// Sets `difference` to `a` - the current UTC time in whole seconds.
    static int getDifferenceBetweenTimeAndSystemTimeInSeconds(const _SYSTEMTIME& a, int& difference);

    /// Sets `difference` to `a` - the current UTC time in whole minutes.
    static int getDifferenceBetweenTimeAndSystemTimeInMinutes(const _SYSTEMTIME& a, int& difference);

    /// Sets `difference` to `a` - the current UTC time in whole hours.
    static int getDifferenceBetweenTimeAndSystemTimeInHours(const _SYSTEMTIME& a, int& difference);

    /// Sets `difference` to `a` - the current UTC time in whole days.
    static int getDifferenceBetweenTimeAndSystemTimeInDays(const _SYSTEMTIME& a, int& difference);
    /// @}

    /**
     * Adds hours, which may be negative. `result` may be `time` itself and gets its day of the week too. Returns
     * non-zero on success; 0, leaving `result` alone, when `time` or the sum is invalid (years 1601 to 30827 are
     * valid). More than 256,204,778 hours are not refused: they wrap around 64 bits of ticks.
     */
    static int addTime(const _SYSTEMTIME& time, int hours, _SYSTEMTIME& result);

    /// addTime() to the current local time.
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
