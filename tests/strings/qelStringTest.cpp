#include "qelString.h"

#include <gtest/gtest.h>

namespace
{
TEST(qelString, IsEmptyByDefault)
{
    EXPECT_EQ(qelString().isEmpty(), 1);
}
} // namespace
