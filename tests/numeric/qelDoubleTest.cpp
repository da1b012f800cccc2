#include "qelDouble.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <math.h>

#include <limits>
#include <random>

namespace
{
const double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::numeric_limits<double>::quiet_NaN();

/// The 32-bit truncation by way of 64 bits: what does not fit is the smallest integer.
long truncated(double value)
{
    if (!(fabs(value) < 9e18))
    {
        return LONG_MIN;
    }
    const long long whole = static_cast<long long>(value);
    return whole < LONG_MIN || whole > LONG_MAX ? LONG_MIN : static_cast<long>(whole);
}
} // namespace

TEST(qelDoubleRound, RoundsHalvesUp)
{
    EXPECT_EQ(qelDouble::round(0.5, 0, 0), 1.0);
    EXPECT_EQ(qelDouble::round(2.5, 0, 0), 3.0);
    EXPECT_EQ(qelDouble::round(-0.5, 0, 0), 0.0);
    EXPECT_EQ(qelDouble::round(-2.5, 0, 0), -2.0);
    EXPECT_EQ(qelDouble::round(-2.51, 0, 0), -3.0);
}

TEST(qelDoubleRound, RoundsToDecimals)
{
    EXPECT_EQ(qelDouble::round(2.346, 2, 0), 2.35);
    EXPECT_EQ(qelDouble::round(1234.5678, 3, 0), 1234.568);
    EXPECT_EQ(qelDouble::round(-2.346, 2, 0), -2.35);
    EXPECT_EQ(qelDouble::round(1e9 + 0.25, 1, 0), 1000000000.3);
}

TEST(qelDoubleRound, SeesTheValueAsTheProcessorHoldsIt)
{
    // 1.005 is held as slightly less, and 1.005 * 100 is below 100.5. 2.345 is held as slightly more. 2.675 is held as
    // slightly less, but 2.675 * 100 is rounded to 267.5.
    EXPECT_EQ(qelDouble::round(1.005, 2, 0), 1.0);
    EXPECT_EQ(qelDouble::round(2.345, 2, 0), 2.35);
    EXPECT_EQ(qelDouble::round(2.675, 2, 0), 2.68);
}

TEST(qelDoubleRound, SnapsToTheNearestMultipleOfTheStep)
{
    EXPECT_EQ(qelDouble::round(7.3, 0, 5), 5.0);
    EXPECT_EQ(qelDouble::round(7.5, 0, 5), 10.0);
    EXPECT_EQ(qelDouble::round(7.3, 1, 0.25), 7.3) << "snapped to 7.25, then rounded";
    EXPECT_EQ(qelDouble::round(7.3, 2, 0.25), 7.25);
}

TEST(qelDoubleRound, SnappingTruncatesSoNegativeValuesMayEndOneStepCloserToZero)
{
    EXPECT_EQ(qelDouble::round(-7.3, 0, 5), 0.0);
    EXPECT_EQ(qelDouble::round(-8, 0, 5), -5.0);
    EXPECT_EQ(qelDouble::round(-2.4, 0, 5), 0.0);
    EXPECT_EQ(qelDouble::round(-7.5, 0, 5), -5.0) << "the quotient is a whole number";
    EXPECT_EQ(qelDouble::round(-12.5, 0, 5), -10.0);
}

TEST(qelDoubleRound, SnapsOnlyToStepsAboveTheSmallestOne)
{
    EXPECT_EQ(qelDouble::round(7.3, 0, 0), 7.0);
    EXPECT_EQ(qelDouble::round(7.3, 0, -5), 7.0);
    EXPECT_EQ(qelDouble::round(7.3, 0, notANumber), 7.0);
    // At 1e-10 a quotient of 7.3e10 would not fit 32 bits.
    EXPECT_EQ(qelDouble::round(7.3, 0, 1e-10), 7.0);
    EXPECT_EQ(qelDouble::round(7.3, 1, nextafter(1e-10, 1)), -0.2) << "2^31 steps below zero";
    EXPECT_EQ(qelDouble::round(1e-3, 3, 2e-10), 0.001);
}

TEST(qelDoubleRound, AQuotientBeyond32BitsIsTheSmallestInteger)
{
    EXPECT_EQ(qelDouble::round(2147483647.0, 0, 1), 2147483647.0);
    EXPECT_EQ(qelDouble::round(2147483648.0, 0, 1), -2147483648.0);
    EXPECT_EQ(qelDouble::round(1e10, 0, 1), -2147483648.0);
    EXPECT_EQ(qelDouble::round(1e300, 0, 2), -4294967296.0);
    EXPECT_EQ(qelDouble::round(-1e300, 0, 2), -4294967296.0);
    EXPECT_EQ(qelDouble::round(-2147483648.0, 0, 1), -2147483647.0) << "half a step towards zero, truncated";
    EXPECT_EQ(qelDouble::round(infinity, 0, 1), -2147483648.0);
    EXPECT_EQ(qelDouble::round(-infinity, 0, 1), -2147483648.0);
    EXPECT_EQ(qelDouble::round(notANumber, 0, 1), -2147483648.0);
    EXPECT_EQ(qelDouble::round(1, 0, infinity), -infinity) << "the quotient is infinity / infinity";
}

TEST(qelDoubleRound, WithoutAStepPassesOnWhatIsNoFiniteNumber)
{
    EXPECT_EQ(qelDouble::round(infinity, 2, 0), infinity);
    EXPECT_EQ(qelDouble::round(-infinity, 2, 0), -infinity);
    EXPECT_TRUE(isnan(qelDouble::round(notANumber, 2, 0)));
}

TEST(qelDoubleRound, HasNoResultForMoreDigitsThanAnExponentHolds)
{
    EXPECT_DOUBLE_EQ(qelDouble::round(1e-300, 308, 0), 1e-300);
    EXPECT_TRUE(isnan(qelDouble::round(1.5, 309, 0)));
    EXPECT_TRUE(isnan(qelDouble::round(1.5, 65535, 0)));
}

TEST(qelDoubleRound, GivesTheOraclesBits)
{
    const double powers[] = {1,    1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                             1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22, 1e23};
    const double stepValues[] = {0, -1, 1e-10, 1e-6, 0.001, 0.1, 0.25, 0.3, 1, 5, 12.5, 1000};
    std::mt19937_64 engine(20260201);
    std::uniform_real_distribution<double> exponents(-6, 12);
    for (int i = 0; i < 200000; ++i)
    {
        const double magnitude = pow(10.0, exponents(engine));
        const double value = i % 2 == 0 ? magnitude : -magnitude;
        const size_t digits = engine() % (sizeof powers / sizeof powers[0]);
        const double step = stepValues[engine() % (sizeof stepValues / sizeof stepValues[0])];
        double snapped = value;
        if (step > 1e-10)
        {
            const double raised = value + step / 2;
            const double quotient = raised / step;
            snapped = step * truncated(quotient);
        }
        const double scaled = powers[digits] * snapped;
        const double expected = floor(scaled + 0.5) / powers[digits];
        ASSERT_EQ(qelDouble::round(value, static_cast<unsigned short>(digits), step), expected)
            << value << ", " << digits << ", " << step;
    }
}

TEST(qelDoubleLongRound, RemovesRepresentationNoiseWithTheSmallestOffset)
{
    EXPECT_EQ(qelDouble::MinRoundOffset, 0.0001);
    EXPECT_EQ(qelDouble::longRound(2.99999, 0), 3);
    EXPECT_EQ(qelDouble::longRound(2.9998, 0), 2);
    EXPECT_EQ(qelDouble::longRound(-2.99999, 0), -3);
    EXPECT_EQ(qelDouble::longRound(-2.9998, 0), -2);
}

TEST(qelDoubleLongRound, RoundsHalvesAwayFromZeroWithHalfAnOffset)
{
    EXPECT_EQ(qelDouble::longRound(2.5, 0.5), 3);
    EXPECT_EQ(qelDouble::longRound(2.49, 0.5), 2);
    EXPECT_EQ(qelDouble::longRound(-2.5, 0.5), -3);
    EXPECT_EQ(qelDouble::longRound(-2.49, 0.5), -2);
}

TEST(qelDoubleLongRound, TakesOffsetsFromTheSmallestToTheLargest)
{
    EXPECT_EQ(qelDouble::longRound(2.00015, 0.9999), 3);
    EXPECT_EQ(qelDouble::longRound(2.00015, nextafter(0.9999, 1)), 2) << "too large, so 0.0001";
    EXPECT_EQ(qelDouble::longRound(2.00015, 1), 2);
    EXPECT_EQ(qelDouble::longRound(2.7, 1), 2);
    EXPECT_EQ(qelDouble::longRound(2.00015, infinity), 2);
    EXPECT_EQ(qelDouble::longRound(2.9995, 0.0006), 3);
    EXPECT_EQ(qelDouble::longRound(2.9999, -0.5), 3) << "too small, so 0.0001";
    EXPECT_EQ(qelDouble::longRound(2.99985, nextafter(0.0001, 0)), 2);
    EXPECT_EQ(qelDouble::longRound(2.99985, 0.0002), 3);
    EXPECT_EQ(qelDouble::longRound(0.99992, 0.00005), 1) << "0.99992 and 0.00005 would be below 1";
}

TEST(qelDoubleLongRound, TreatsBothZerosAsNotNegative)
{
    EXPECT_EQ(qelDouble::longRound(0.0, 0.5), 0);
    EXPECT_EQ(qelDouble::longRound(-0.0, 0.9999), 0);
    EXPECT_EQ(qelDouble::longRound(-1e-300, 0.9999), 0);
}

TEST(qelDoubleLongRound, AResultBeyond32BitsIsTheSmallestInteger)
{
    EXPECT_EQ(qelDouble::longRound(2147483647.0, 0.9), LONG_MAX);
    EXPECT_EQ(qelDouble::longRound(2147483647.5, 0.5), LONG_MIN);
    EXPECT_EQ(qelDouble::longRound(2147483648.0, 0), LONG_MIN);
    EXPECT_EQ(qelDouble::longRound(-2147483648.0, 0.9), LONG_MIN);
    EXPECT_EQ(qelDouble::longRound(-2147483647.0, 0.5), -LONG_MAX);
    EXPECT_EQ(qelDouble::longRound(-2147483649.0, 0), LONG_MIN);
    EXPECT_EQ(qelDouble::longRound(1e300, 0), LONG_MIN);
    EXPECT_EQ(qelDouble::longRound(-infinity, 0), LONG_MIN);
    EXPECT_EQ(qelDouble::longRound(infinity, 0), LONG_MIN);
    EXPECT_EQ(qelDouble::longRound(notANumber, 0), LONG_MIN);
}

TEST(qelDoubleLongRound, AnOffsetThatIsNoNumberIsUsedAsItIs)
{
    EXPECT_EQ(qelDouble::longRound(1, notANumber), LONG_MIN);
}

TEST(qelDoubleLongRound, MayBeGivenATemporaryOrAVariable)
{
    double value = 41.99999;
    EXPECT_EQ(qelDouble::longRound(value, 0), 42);
    EXPECT_EQ(value, 41.99999);
}
