#include "Check.h"

#include "qelDouble.h"
#include "qelMathUtilities.h"
#include "qelProfTypeDSTVValues.h"
#include "qelTimeUtilities.h"
#include "qelZClipping.h"

#include <windows.h>

namespace
{
void showRoots(const char* what, int result, const qelMathUtilities::Roots& roots)
{
    show(what, qelString::integerToString(result));
    for (long i = 0; i < roots.length(); ++i)
    {
        show(what, roots[i]);
    }
}

void checkSolvers()
{
    show("pi", qelMathUtilities::PI);
    qelMathUtilities::Roots roots;
    int result = qelMathUtilities::QuadraticSolver(1, -3, 2, roots);
    CHECK(roots.length() == 2);
    showRoots("quadratic", result, roots);
    roots.setLogicalLength(0);
    result = qelMathUtilities::CubicSolver(1, -6, 11, -6.5, roots);
    showRoots("cubic", result, roots);
    roots.setLogicalLength(0);
    result = qelMathUtilities::QuarticSolver(1, -10, 35, -50, 24, roots);
    showRoots("quartic", result, roots);
}

void checkValues()
{
    CHECK(qelDouble::round(7.3, 0, 5.0) == 5.0 && qelDouble::longRound(2.99999, 0.0) == 3);
    show("rounded", qelDouble::round(2.345, 2, 0.0));
    show("offset", qelDouble::MinRoundOffset);

    qelProfTypeDSTVValues profile;
    profile.setDSTVType(eDSTV_CCS);
    profile.setH1(190.0);
    profile.setU(0.5);
    CHECK(profile.getProftypeString() == L"CCS" && profile.getH1() == 190.0 && profile.getU() == 0.5);

    const qelZClipping first;
    const double upper = qelZClipping::kClipUpperDefault;
    qelZClipping::kClipUpperDefault = 50.0;
    const qelZClipping second;
    CHECK(first != second && first == qelZClipping(eZClip_Default, 20.0, -20.0));
    qelZClipping::kClipUpperDefault = upper;
}

void checkTimes()
{
    SYSTEMTIME early = {};
    early.wYear = 2020;
    early.wMonth = 2;
    early.wDay = 28;
    SYSTEMTIME late = early;
    late.wMonth = 3;
    late.wDay = 1;
    int difference = 0;
    CHECK(qelTimeUtilities::getDifferenceBetweenTimesInDays(early, late, difference) == -1 && difference == -2);
    CHECK(qelTimeUtilities::getDifferenceBetweenTimesInHours(late, early, difference) == 1 && difference == 48);
    CHECK(qelTimeUtilities::addTime(early, 24, late) != 0 && late.wDay == 29 && late.wDayOfWeek == 6);
    CHECK(qelTimeUtilities::getDifferenceBetweenTimeAndLocalTimeInDays(early, difference) == -1);
}
} // namespace

void checkNumbers()
{
    checkSolvers();
    checkValues();
    checkTimes();
}
