#include "qelTimeUtilities.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <limits.h>
#include <string.h>

#include <chrono>
#include <random>

namespace
{
using Milliseconds = std::chrono::sys_time<std::chrono::milliseconds>;

const long long msInSecond = 1000;
const long long msInMinute = 60 * msInSecond;
const long long msInHour = 60 * msInMinute;
const long long msInDay = 24 * msInHour;

SYSTEMTIME at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0, int millisecond = 0)
{
    SYSTEMTIME time = {};
    time.wYear = static_cast<WORD>(year);
    time.wMonth = static_cast<WORD>(month);
    time.wDay = static_cast<WORD>(day);
    time.wHour = static_cast<WORD>(hour);
    time.wMinute = static_cast<WORD>(minute);
    time.wSecond = static_cast<WORD>(second);
    time.wMilliseconds = static_cast<WORD>(millisecond);
    return time;
}

/// The oracle's way from a count of milliseconds to a record.
SYSTEMTIME recordOf(Milliseconds time)
{
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const long long rest = (time - day).count();
    SYSTEMTIME record = at(static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
                           static_cast<int>(static_cast<unsigned>(date.day())), static_cast<int>(rest / msInHour),
                           static_cast<int>(rest / msInMinute % 60), static_cast<int>(rest / msInSecond % 60),
                           static_cast<int>(rest % msInSecond));
    record.wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding());
    return record;
}

/// And back.
Milliseconds timeOf(const SYSTEMTIME& record)
{
    const std::chrono::sys_days day = std::chrono::year(record.wYear) / static_cast<int>(record.wMonth) / record.wDay;
    return Milliseconds(day) + std::chrono::milliseconds(record.wHour * msInHour + record.wMinute * msInMinute +
                                                         record.wSecond * msInSecond + record.wMilliseconds);
}

bool sameRecord(const SYSTEMTIME& a, const SYSTEMTIME& b)
{
    return memcmp(&a, &b, sizeof a) == 0;
}

int units(long long milliseconds, long long unit)
{
    const long long whole = milliseconds / unit;
    return whole < INT_MIN || whole > INT_MAX ? INT_MIN : static_cast<int>(whole);
}

struct Unit
{
    const char* name;
    long long milliseconds;
    int (*between)(const SYSTEMTIME&, const SYSTEMTIME&, int&);
    int (*toLocal)(const SYSTEMTIME&, int&);
    int (*toSystem)(const SYSTEMTIME&, int&);
};

const Unit allUnits[] = {
    {"seconds", msInSecond, &qelTimeUtilities::getDifferenceBetweenTimesInSeconds,
     &qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInSeconds,
     &qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInSeconds},
    {"minutes", msInMinute, &qelTimeUtilities::getDifferenceBetweenTimesInMinutes,
     &qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInMinutes,
     &qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInMinutes},
    {"hours", msInHour, &qelTimeUtilities::getDifferenceBetweenTimesInHours,
     &qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInHours,
     &qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInHours},
    {"days", msInDay, &qelTimeUtilities::getDifferenceBetweenTimesInDays,
     &qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInDays,
     &qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInDays},
};

/// Checks comparison and difference of two times in every unit, both ways round.
void expectDifference(const SYSTEMTIME& a, const SYSTEMTIME& b, int order, int seconds, int minutes, int hours,
                      int days)
{
    const int expected[] = {seconds, minutes, hours, days};
    for (int i = 0; i < 4; ++i)
    {
        int difference = 12345;
        EXPECT_EQ(allUnits[i].between(a, b, difference), order) << allUnits[i].name;
        EXPECT_EQ(difference, expected[i]) << allUnits[i].name;
        difference = 12345;
        EXPECT_EQ(allUnits[i].between(b, a, difference), -order) << allUnits[i].name;
        EXPECT_EQ(difference, expected[i] == INT_MIN ? INT_MIN : -expected[i]) << allUnits[i].name;
    }
}

int localTimeCalls = 0;
int systemTimeCalls = 0;

void WINAPI countingGetLocalTime(SYSTEMTIME* time)
{
    ++localTimeCalls;
    GetLocalTime(time);
}

void WINAPI countingGetSystemTime(SYSTEMTIME* time)
{
    ++systemTimeCalls;
    GetSystemTime(time);
}

/// Compares one of the "to now" forms with the clock read before and after the call.
void expectBracketed(const Unit& unit, int (*toNow)(const SYSTEMTIME&, int&), void(WINAPI* clock)(SYSTEMTIME*),
                     long long offset)
{
    SCOPED_TRACE(std::string(unit.name) + " " + std::to_string(offset));
    SYSTEMTIME before = {};
    clock(&before);
    const Milliseconds time = timeOf(before) + std::chrono::milliseconds(offset);
    int difference = 0;
    const int order = toNow(recordOf(time), difference);
    SYSTEMTIME after = {};
    clock(&after);

    const long long most = (time - timeOf(before)).count();
    const long long least = (time - timeOf(after)).count();
    EXPECT_LE(difference, units(most, unit.milliseconds));
    EXPECT_GE(difference, units(least, unit.milliseconds));
    EXPECT_LE(order, most > 0 ? 1 : most < 0 ? -1 : 0);
    EXPECT_GE(order, least > 0 ? 1 : least < 0 ? -1 : 0);
}

SYSTEMTIME added(const SYSTEMTIME& time, int hours)
{
    SYSTEMTIME result = {};
    EXPECT_NE(qelTimeUtilities::addTime(time, hours, result), 0);
    return result;
}

void expectRefused(const SYSTEMTIME& time, int hours)
{
    SYSTEMTIME result;
    memset(&result, 0x5A, sizeof result);
    const SYSTEMTIME untouched = result;
    EXPECT_EQ(qelTimeUtilities::addTime(time, hours, result), 0);
    EXPECT_TRUE(sameRecord(result, untouched));
}
} // namespace

// Differences ---------------------------------------------------------------------------------------------------------

TEST(qelTimeUtilitiesDifference, IsZeroForEqualTimes)
{
    expectDifference(at(2024, 2, 29, 13, 14, 15, 16), at(2024, 2, 29, 13, 14, 15, 16), 0, 0, 0, 0, 0);
    expectDifference(at(1601, 1, 1), at(1601, 1, 1), 0, 0, 0, 0, 0);
}

TEST(qelTimeUtilitiesDifference, IsFirstMinusSecondTruncatedTowardsZero)
{
    expectDifference(at(2024, 5, 6, 10), at(2024, 5, 6, 10, 0, 59, 900), -1, -59, 0, 0, 0);
    expectDifference(at(2024, 5, 6, 10), at(2024, 5, 6, 11, 30), -1, -5400, -90, -1, 0);
    expectDifference(at(2024, 5, 6, 10), at(2024, 5, 7, 9, 59, 59, 999), -1, -86399, -1439, -23, 0);
    expectDifference(at(2024, 5, 6, 10), at(2024, 5, 7, 10), -1, -86400, -1440, -24, -1);
    expectDifference(at(2024, 5, 6, 10), at(2024, 5, 8, 9, 59, 59, 999), -1, -172799, -2879, -47, -1);
}

TEST(qelTimeUtilitiesDifference, ComparesToTheMillisecondEvenWhereTheDifferenceIsZero)
{
    expectDifference(at(2024, 5, 6, 10, 0, 0, 1), at(2024, 5, 6, 10), 1, 0, 0, 0, 0);
    expectDifference(at(2024, 12, 31, 23, 59, 59, 999), at(2025, 1, 1), -1, 0, 0, 0, 0);
}

TEST(qelTimeUtilitiesDifference, DoesNotLookAtTheDayOfTheWeek)
{
    SYSTEMTIME wrong = at(2024, 5, 6);
    wrong.wDayOfWeek = 5;
    expectDifference(wrong, at(2024, 5, 6), 0, 0, 0, 0, 0);
}

TEST(qelTimeUtilitiesDifference, ThatDoesNotFit32BitsIsTheSmallestIntegerInBothDirections)
{
    // 2^31 - 1 and 2^31 seconds after the first of January 1970.
    const SYSTEMTIME start = at(1970, 1, 1);
    expectDifference(at(2038, 1, 19, 3, 14, 7), start, 1, INT_MAX, 35791394, 596523, 24855);
    expectDifference(at(2038, 1, 19, 3, 14, 7, 999), start, 1, INT_MAX, 35791394, 596523, 24855);
    expectDifference(at(2038, 1, 19, 3, 14, 8), start, 1, INT_MIN, 35791394, 596523, 24855);
    // 4083 years and more: 2^31 minutes later.
    expectDifference(at(6053, 1, 23, 2, 8), start, 1, INT_MIN, INT_MIN, 35791394, 1491308);
}

TEST(qelTimeUtilitiesDifference, ReachesOverAllYearsThatARecordCanHold)
{
    // The last year is 30827: 29,226 years are 10,674,577 days or so; the oracle counts them.
    const SYSTEMTIME first = at(1601, 1, 1);
    const SYSTEMTIME last = at(30827, 12, 31, 23, 59, 59, 999);
    const long long span = (timeOf(last) - timeOf(first)).count();
    expectDifference(last, first, 1, INT_MIN, INT_MIN, units(span, msInHour), units(span, msInDay));
}

TEST(qelTimeUtilitiesDifference, CountsARecordThatIsNoTimeAsTheBeginningOf1601)
{
    const SYSTEMTIME beginning = at(1601, 1, 1);
    for (const SYSTEMTIME& wrong : {at(2024, 13, 1), at(2024, 0, 1), at(2024, 2, 30), at(2024, 4, 31), at(2024, 1, 0),
                                    at(1600, 12, 31), at(2024, 1, 1, 24), at(2024, 1, 1, 0, 60),
                                    at(2024, 1, 1, 0, 0, 60), at(2024, 1, 1, 0, 0, 0, 1000), SYSTEMTIME()})
    {
        expectDifference(wrong, beginning, 0, 0, 0, 0, 0);
        expectDifference(at(1601, 1, 3), wrong, 1, 172800, 2880, 48, 2);
        expectDifference(wrong, wrong, 0, 0, 0, 0, 0);
    }
}

TEST(qelTimeUtilitiesDifference, AgreesWithTheCalendarOnEveryDayFrom1601To2400)
{
    using namespace std::chrono;
    const Milliseconds reference = sys_days(year(2000) / 2 / 29) + hours(12) + milliseconds(345);
    const SYSTEMTIME referenceRecord = recordOf(reference);
    std::mt19937_64 engine(20260301);
    int days = 0;
    for (sys_days day = year(1601) / 1 / 1; day < sys_days(year(2401) / 1 / 1); day += std::chrono::days(1), ++days)
    {
        const Milliseconds time = Milliseconds(day) + milliseconds(static_cast<long long>(engine() % msInDay));
        const SYSTEMTIME record = recordOf(time);
        const long long span = (time - reference).count();
        for (const Unit& unit : allUnits)
        {
            int difference = 0;
            ASSERT_EQ(unit.between(record, referenceRecord, difference), span < 0 ? -1 : span > 0 ? 1 : 0) << days;
            ASSERT_EQ(difference, units(span, unit.milliseconds)) << unit.name << ", day " << days;
        }
    }
    EXPECT_EQ(days, 800 * 365 + 194) << "194 leap years";
}

// Differences to now --------------------------------------------------------------------------------------------------

TEST(qelTimeUtilitiesNow, LiesBetweenTwoReadingsOfTheClock)
{
    for (const Unit& unit : allUnits)
    {
        for (const long long offset : {0LL, 1LL, -1LL, 90 * msInSecond, -90 * msInSecond, 36 * msInHour + 500,
                                       -36 * msInHour - 500, 400 * msInDay, -400 * msInDay})
        {
            expectBracketed(unit, unit.toLocal, &GetLocalTime, offset);
            expectBracketed(unit, unit.toSystem, &GetSystemTime, offset);
        }
    }
}

TEST(qelTimeUtilitiesNow, EachFormReadsItsOwnClockOnce)
{
    const qelTest::ImportHook local("GetLocalTime", &countingGetLocalTime);
    const qelTest::ImportHook system("GetSystemTime", &countingGetSystemTime);
    for (const Unit& unit : allUnits)
    {
        int difference = 0;
        localTimeCalls = systemTimeCalls = 0;
        unit.toLocal(at(2024, 1, 1), difference);
        EXPECT_EQ(localTimeCalls, 1) << unit.name;
        EXPECT_EQ(systemTimeCalls, 0) << unit.name;
        unit.toSystem(at(2024, 1, 1), difference);
        EXPECT_EQ(localTimeCalls, 1) << unit.name;
        EXPECT_EQ(systemTimeCalls, 1) << unit.name;
    }
    localTimeCalls = systemTimeCalls = 0;
    SYSTEMTIME result = {};
    qelTimeUtilities::addTimeToLocalTime(1, result);
    EXPECT_EQ(localTimeCalls, 1);
    EXPECT_EQ(systemTimeCalls, 0);
}

TEST(qelTimeUtilitiesNow, CountsARecordThatIsNoTimeAsTheBeginningOf1601)
{
    for (const Unit& unit : allUnits)
    {
        int fromWrong = 0;
        int fromBeginning = 0;
        EXPECT_EQ(unit.toSystem(at(2024, 13, 1), fromWrong), -1);
        EXPECT_EQ(unit.toSystem(at(1601, 1, 1), fromBeginning), -1);
        EXPECT_NEAR(fromWrong, fromBeginning, 10) << unit.name;
    }
}

// Adding hours --------------------------------------------------------------------------------------------------------

TEST(qelTimeUtilitiesAddTime, AddsHoursNotOtherUnits)
{
    EXPECT_TRUE(sameRecord(added(at(2024, 5, 6, 7, 8, 9, 10), 1), recordOf(timeOf(at(2024, 5, 6, 8, 8, 9, 10)))));
    EXPECT_TRUE(sameRecord(added(at(2024, 5, 6, 7, 8, 9, 10), -8), recordOf(timeOf(at(2024, 5, 5, 23, 8, 9, 10)))));
}

TEST(qelTimeUtilitiesAddTime, CrossesMonthsAndYears)
{
    EXPECT_TRUE(sameRecord(added(at(2024, 3, 1), -24), recordOf(timeOf(at(2024, 2, 29)))));
    EXPECT_TRUE(sameRecord(added(at(2000, 3, 1), -24), recordOf(timeOf(at(2000, 2, 29)))));
    EXPECT_TRUE(sameRecord(added(at(1900, 3, 1), -24), recordOf(timeOf(at(1900, 2, 28)))));
    EXPECT_TRUE(sameRecord(added(at(2023, 2, 28, 12), 24), recordOf(timeOf(at(2023, 3, 1, 12)))));
    EXPECT_TRUE(
        sameRecord(added(at(2024, 12, 31, 23, 59, 59, 999), 1), recordOf(timeOf(at(2025, 1, 1, 0, 59, 59, 999)))));
    EXPECT_TRUE(sameRecord(added(at(2025, 1, 1), -1), recordOf(timeOf(at(2024, 12, 31, 23)))));
    EXPECT_TRUE(sameRecord(added(at(2024, 1, 1), 366 * 24), recordOf(timeOf(at(2025, 1, 1)))));
}

TEST(qelTimeUtilitiesAddTime, FillsInTheDayOfTheWeek)
{
    SYSTEMTIME wrong = at(2024, 2, 29);
    wrong.wDayOfWeek = 1;
    EXPECT_EQ(added(wrong, 0).wDayOfWeek, 4) << "a Thursday";
}

TEST(qelTimeUtilitiesAddTime, MayWriteOverItsOwnArgument)
{
    SYSTEMTIME time = at(2024, 2, 28, 23, 30);
    EXPECT_NE(qelTimeUtilities::addTime(time, 1, time), 0);
    EXPECT_TRUE(sameRecord(time, recordOf(timeOf(at(2024, 2, 29, 0, 30)))));

    SYSTEMTIME wrong = at(2024, 13, 1);
    EXPECT_EQ(qelTimeUtilities::addTime(wrong, 1, wrong), 0);
    EXPECT_TRUE(sameRecord(wrong, at(2024, 13, 1)));
}

TEST(qelTimeUtilitiesAddTime, RefusesARecordThatIsNoTime)
{
    expectRefused(at(2024, 13, 1), 1);
    expectRefused(at(2023, 2, 30), 0);
    expectRefused(at(1600, 12, 31, 23), 1);
    expectRefused(SYSTEMTIME(), 0);
}

TEST(qelTimeUtilitiesAddTime, RefusesASumThatIsNoTime)
{
    expectRefused(at(1601, 1, 1), -1);
    expectRefused(at(1601, 1, 1, 5, 59), -6);
    EXPECT_TRUE(sameRecord(added(at(1601, 1, 1, 6), -6), recordOf(timeOf(at(1601, 1, 1)))));
    // 2^63 ticks end in September of the year 30828.
    expectRefused(at(30827, 12, 31), 366 * 24);
    expectRefused(at(2024, 1, 1), 256204778);
}

TEST(qelTimeUtilitiesAddTime, LargeAmountsWrapAround64BitsOfTicks)
{
    // 2^31 - 1 hours are 77,309,411,292 * 10^9 ticks; less four times 2^64 that is 3,522,434,997,161,793,536.
    const SYSTEMTIME result = added(at(1601, 1, 1), INT_MAX);
    const Milliseconds expected = timeOf(at(1601, 1, 1)) + std::chrono::milliseconds(3522434997161793536 / 10000);
    EXPECT_TRUE(sameRecord(result, recordOf(expected)));
}

TEST(qelTimeUtilitiesAddTime, AgreesWithTheCalendarOnEveryDayFrom1601To2400)
{
    using namespace std::chrono;
    std::mt19937_64 engine(20260302);
    for (sys_days day = year(1601) / 1 / 2; day < sys_days(year(2401) / 1 / 1); day += std::chrono::days(1))
    {
        const Milliseconds time = Milliseconds(day) + milliseconds(static_cast<long long>(engine() % msInDay));
        const SYSTEMTIME record = recordOf(time);
        ASSERT_TRUE(sameRecord(added(record, 24), recordOf(time + hours(24))));
        ASSERT_TRUE(sameRecord(added(record, -24), recordOf(time - hours(24))));
        const long long sinceStart = (time - timeOf(at(1601, 1, 1))).count() / msInHour;
        const int shift = static_cast<int>(static_cast<long long>(engine() % 20000000) - sinceStart);
        ASSERT_TRUE(sameRecord(added(record, shift), recordOf(time + hours(shift)))) << shift;
    }
}

TEST(qelTimeUtilitiesAddTime, ToLocalTimeLiesBetweenTwoReadingsOfTheClock)
{
    for (const int hours : {0, 1, -1, 10000, -10000})
    {
        SYSTEMTIME before = {};
        GetLocalTime(&before);
        SYSTEMTIME result = {};
        EXPECT_NE(qelTimeUtilities::addTimeToLocalTime(hours, result), 0);
        SYSTEMTIME after = {};
        GetLocalTime(&after);
        EXPECT_GE(timeOf(result), timeOf(before) + std::chrono::hours(hours));
        EXPECT_LE(timeOf(result), timeOf(after) + std::chrono::hours(hours));
    }
}

TEST(qelTimeUtilitiesAddTime, ToLocalTimeRefusesASumThatIsNoTime)
{
    SYSTEMTIME result = at(1999, 9, 9);
    EXPECT_EQ(qelTimeUtilities::addTimeToLocalTime(-10000000, result), 0);
    EXPECT_TRUE(sameRecord(result, at(1999, 9, 9)));
}
