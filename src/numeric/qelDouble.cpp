#include "qelDouble.h"

#include "numeric/Truncation.h"

#include <math.h>

namespace
{
const double smallestStep = 1e-10;
const double largestOffset = 0.9999;

/// 10 to the power of `digits`. Up to 1e22 that is a value of its own, which the power function gives as well.
double powerOfTen(unsigned short digits)
{
    static const double exact[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const unsigned short count = sizeof(exact) / sizeof(exact[0]);
    return digits < count ? exact[digits] : pow(10.0, static_cast<double>(digits));
}
} // namespace

double qelDouble::round(double value, unsigned short digits, double step)
{
    if (step > smallestStep)
    {
        // Truncation, not floor, for negative values too. Deliberate.
        value = step * qelTruncation::toInt32((value + step / 2) / step);
    }
    const double factor = powerOfTen(digits);
    return floor(factor * value + 0.5) / factor;
}

long qelDouble::longRound(const double& value, double offset)
{
    if (offset < MinRoundOffset || offset > largestOffset)
    {
        offset = MinRoundOffset;
    }
    return qelTruncation::toInt32(value < 0 ? value - offset : value + offset);
}
