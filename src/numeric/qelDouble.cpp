#include "qelDouble.h"

#include "numeric/Truncation.h"

#include <math.h>

namespace
{
const double smallestStep = 1e-10;
const double largestOffset = 0.9999;
} // namespace

double qelDouble::round(double value, unsigned short digits, double step)
{
    if (step > smallestStep)
    {
        // Truncation, not floor: callers rely on what this does to negative values.
        value = step * qelTruncation::toInt32((value + step / 2) / step);
    }
    const double factor = pow(10.0, static_cast<double>(digits));
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
