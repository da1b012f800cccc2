#include "allocations/Operations.h"

#include "qelDouble.h"
#include "qelMathUtilities.h"
#include "qelProfTypeDSTVValues.h"
#include "qelThreadsPool.h"
#include "qelTimeUtilities.h"
#include "qelZClipping.h"

#include <windows.h>

#include <atomic>
#include <optional>

using namespace qelTest;

namespace
{
using Roots = qelMathUtilities::Roots;

template <class Solve> void solves(Operations& table, const char* name, Solve solve)
{
    throwing(table, {name}, [=](Trial& trial) {
        Roots roots;
        trial([&] { solve(roots); },
              [&] {
                  std::wstring seen = number(roots.physicalLength()) + L":";
                  for (long i = 0; i < roots.length(); ++i)
                  {
                      seen += std::to_wstring(roots[i]) + L" ";
                  }
                  return seen;
              });
    });
}

void nothing(void*) {}

void addPool(Operations& table)
{
    throwing(table, {"qelThreadsPool::qelThreadsPool(int)"}, [](Trial& trial) {
        std::optional<qelThreadsPool> pool;
        trial([&] { pool.emplace(2); }, [&] { return number(pool ? 1 : 0); });
        if (pool)
        {
            pool->WaitForThreadsToFinishWork();
        }
    });
    throwing(table, {"qelThreadsPool::QueueTask(void (*)(void*), void*)"}, [](Trial& trial) {
        qelThreadsPool pool(0);
        int queued = 0;
        trial(
            [&] {
                pool.QueueTask(&nothing, nullptr);
                ++queued;
            },
            [&] { return number(queued); });
    });
    throwing(table, {"qelThreadsPool::qelThreadsPool(qelThreadsPool const&)"}, [](Trial& trial) {
        qelThreadsPool pool(0);
        pool.QueueTask(&nothing, nullptr);
        pool.QueueTask(&nothing, nullptr);
        std::optional<qelThreadsPool> copy;
        trial([&] { copy.emplace(pool); }, [&] { return number(copy ? 1 : 0); });
    });
    throwing(table, {"qelThreadsPool::operator=(qelThreadsPool const&)"}, [](Trial& trial) {
        qelThreadsPool pool(0);
        pool.QueueTask(&nothing, nullptr);
        pool.QueueTask(&nothing, nullptr);
        qelThreadsPool other(0);
        int assigned = 0;
        trial(
            [&] {
                other = pool;
                assigned = 1;
            },
            [&] { return number(assigned); });
    });
    withoutMemory(table, {"qelThreadsPool::WaitForThreadsToFinishWork()", "qelThreadsPool::~qelThreadsPool()"},
                  [](Trial& trial) {
                      std::optional<qelThreadsPool> pool(std::in_place, 2);
                      pool->QueueTask(&nothing, nullptr);
                      trial(
                          [&] {
                              pool->WaitForThreadsToFinishWork();
                              pool.reset();
                          },
                          [] { return std::wstring(); });
                  });
}
} // namespace

// NOLINTBEGIN(bugprone-suspicious-missing-comma): names that take two lines
void qelTest::addNumerics(Operations& table)
{
    addPool(table);
    solves(table, "qelMathUtilities::QuadraticSolver(double, double, double, qelArray<double>&)",
           [](Roots& roots) { qelMathUtilities::QuadraticSolver(1, -6, 2, roots); });
    solves(table, "qelMathUtilities::CubicSolver(double, double, double, double, qelArray<double>&)",
           [](Roots& roots) { qelMathUtilities::CubicSolver(1, -6, 11, -6, roots); });
    solves(table, "qelMathUtilities::QuarticSolver(double, double, double, double, double, qelArray<double>&)",
           [](Roots& roots) { qelMathUtilities::QuarticSolver(1, -10, 35, -50, 24, roots); });
    makes(table, {"qelProfTypeDSTVValues::getProftypeString() const"}, [] {
        qelProfTypeDSTVValues values;
        values.setDSTVType(eDSTV_I);
        return values.getProftypeString();
    });
    withoutMemory(
        table,
        {"qelProfTypeDSTVValues::qelProfTypeDSTVValues()",
         "qelDouble::longRound(double const&, double)",
         "qelDouble::round(double, unsigned short, double)",
         "qelZClipping::qelZClipping()",
         "qelZClipping::qelZClipping(eZClip, double, double)",
         "qelZClipping::operator==(qelZClipping const&) const",
         "qelZClipping::operator!=(qelZClipping const&) const",
         "qelTimeUtilities::addTime(_SYSTEMTIME const&, int, _SYSTEMTIME&)",
         "qelTimeUtilities::addTimeToLocalTime(int, _SYSTEMTIME&)",
         "qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInDays(_SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInHours(_SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInMinutes(_SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInSeconds(_SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInDays(_SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInHours(_SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInMinutes(_SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimeAndSystemTimeInSeconds(_SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimesIn100NanoSeconds(_SYSTEMTIME const&, _SYSTEMTIME const&, long "
         "long&)",
         "qelTimeUtilities::getDifferenceBetweenTimesInDays(_SYSTEMTIME const&, _SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimesInHours(_SYSTEMTIME const&, _SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimesInMinutes(_SYSTEMTIME const&, _SYSTEMTIME const&, int&)",
         "qelTimeUtilities::getDifferenceBetweenTimesInSeconds(_SYSTEMTIME const&, _SYSTEMTIME const&, int&)"},
        [](Trial& trial) {
            trial(
                [&] {
                    using Time = qelTimeUtilities;
                    const qelProfTypeDSTVValues values;
                    const qelZClipping standard;
                    const qelZClipping clipping(eZClip_Default, 1, -1);
                    SYSTEMTIME now;
                    SYSTEMTIME then;
                    GetLocalTime(&now);
                    int difference = 0;
                    Time::addTime(now, 1, then);
                    Time::addTimeToLocalTime(1, then);
                    Time::getDifferenceBetweenTimeAndLocalTimeInDays(now, difference);
                    Time::getDifferenceBetweenTimeAndLocalTimeInHours(now, difference);
                    Time::getDifferenceBetweenTimeAndLocalTimeInMinutes(now, difference);
                    Time::getDifferenceBetweenTimeAndLocalTimeInSeconds(now, difference);
                    Time::getDifferenceBetweenTimeAndSystemTimeInDays(now, difference);
                    Time::getDifferenceBetweenTimeAndSystemTimeInHours(now, difference);
                    Time::getDifferenceBetweenTimeAndSystemTimeInMinutes(now, difference);
                    Time::getDifferenceBetweenTimeAndSystemTimeInSeconds(now, difference);
                    Time::getDifferenceBetweenTimesInDays(now, then, difference);
                    Time::getDifferenceBetweenTimesInHours(now, then, difference);
                    Time::getDifferenceBetweenTimesInMinutes(now, then, difference);
                    Time::getDifferenceBetweenTimesInSeconds(now, then, difference);
                    trial.result =
                        standard == clipping || !(standard != clipping) ||
                                qelDouble::round(2.345, 2, 0.0) + static_cast<double>(qelDouble::longRound(2.9, 0.0)) ==
                                    0.0
                            ? L"wrong"
                            : L"right";
                },
                [] { return std::wstring(); });
        });
}
// NOLINTEND(bugprone-suspicious-missing-comma)
