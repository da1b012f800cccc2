#include "qelZClipping.h"

#include <gtest/gtest.h>

#include <string.h>

#include <limits>
#include <type_traits>

namespace
{
const double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Puts the process-wide defaults back.
class qelZClippingTest : public testing::Test
{
protected:
    ~qelZClippingTest() override
    {
        qelZClipping::kClipLowerDefault = m_lower;
        qelZClipping::kClipUpperDefault = m_upper;
    }

private:
    const double m_lower = qelZClipping::kClipLowerDefault;
    const double m_upper = qelZClipping::kClipUpperDefault;
};

struct Fields
{
    int mode;
    double first;
    double second;
};

Fields fieldsOf(const qelZClipping& clipping)
{
    const char* const bytes = reinterpret_cast<const char*>(&clipping);
    Fields fields = {};
    memcpy(&fields.mode, bytes, sizeof fields.mode);
    memcpy(&fields.first, bytes + 8, sizeof fields.first);
    memcpy(&fields.second, bytes + 16, sizeof fields.second);
    return fields;
}

void expectFields(const qelZClipping& clipping, int mode, double first, double second)
{
    const Fields fields = fieldsOf(clipping);
    EXPECT_EQ(fields.mode, mode);
    EXPECT_EQ(fields.first, first);
    EXPECT_EQ(fields.second, second);
}

qelZClipping make(int mode, double first, double second)
{
    return qelZClipping(static_cast<eZClip>(mode), first, second);
}

void expectEqual(const qelZClipping& a, const qelZClipping& b)
{
    EXPECT_EQ(a == b, 1);
    EXPECT_EQ(a != b, 0);
}

void expectUnequal(const qelZClipping& a, const qelZClipping& b)
{
    EXPECT_EQ(a == b, 0);
    EXPECT_EQ(a != b, 1);
    EXPECT_EQ(b == a, 0);
    EXPECT_EQ(b != a, 1);
}
} // namespace

TEST_F(qelZClippingTest, IsAPlainValueWhoseComparisonsAreIntegers)
{
    EXPECT_FALSE(std::is_polymorphic<qelZClipping>::value);
    EXPECT_EQ(sizeof(eZClip), 4u);
    const qelZClipping clipping;
    EXPECT_TRUE((std::is_same<decltype(clipping == clipping), int>::value));
    EXPECT_TRUE((std::is_same<decltype(clipping != clipping), int>::value));
}

TEST_F(qelZClippingTest, StartsWithTheDefaultModeAndTheUpperLimitFirst)
{
    EXPECT_EQ(qelZClipping::kClipLowerDefault, -20.0);
    EXPECT_EQ(qelZClipping::kClipUpperDefault, 20.0);
    expectFields(qelZClipping(), 0, 20.0, -20.0);
    EXPECT_EQ(eZClip_Default, 0);
}

TEST_F(qelZClippingTest, ReadsTheDefaultsWhenItIsMade)
{
    const qelZClipping earlier;
    qelZClipping::kClipUpperDefault = 50.0;
    qelZClipping::kClipLowerDefault = -7.5;
    expectFields(qelZClipping(), 0, 50.0, -7.5);
    expectFields(earlier, 0, 20.0, -20.0);
}

TEST_F(qelZClippingTest, StoresGivenValuesUnchanged)
{
    expectFields(make(3, -1.5, 99.25), 3, -1.5, 99.25);
    expectFields(make(-1, 5, 5), -1, 5, 5);
}

TEST_F(qelZClippingTest, CopiesAllThreeFields)
{
    const qelZClipping source = make(7, 1.25, 2.5);
    const qelZClipping copied(source);
    expectFields(copied, 7, 1.25, 2.5);
    qelZClipping assigned;
    assigned = source;
    expectFields(assigned, 7, 1.25, 2.5);
    assigned = static_cast<const qelZClipping&>(assigned);
    expectFields(assigned, 7, 1.25, 2.5);
}

TEST_F(qelZClippingTest, IsEqualWhenModeAndBothLimitsAre)
{
    expectEqual(make(1, 2, 3), make(1, 2, 3));
    expectEqual(make(1, 0.0, -0.0), make(1, -0.0, 0.0));
}

TEST_F(qelZClippingTest, IsUnequalWhenOneFieldDiffers)
{
    expectUnequal(make(1, 2, 3), make(4, 2, 3));
    expectUnequal(make(1, 2, 3), make(1, 4, 3));
    expectUnequal(make(1, 2, 3), make(1, 2, 4));
    expectUnequal(make(1, 2, 3), make(1, 3, 2));
}

TEST_F(qelZClippingTest, ALimitThatIsNoNumberEqualsNothingNotEvenItself)
{
    expectUnequal(make(1, notANumber, 3), make(1, notANumber, 3));
    expectUnequal(make(1, 2, notANumber), make(1, 2, notANumber));
    const qelZClipping clipping = make(1, notANumber, 3);
    EXPECT_EQ(clipping == clipping, 0);
    EXPECT_EQ(clipping != clipping, 1);
}
