#include "qelRegistry.h"

#include <gtest/gtest.h>

namespace
{
TEST(qelRegistryEnvironment, NamesTheKeyOfTheInstallation)
{
    EXPECT_STREQ(qelRegistry::getRegPathEnvironment().getStringW(), L"Software\\Kelvara\\Orvalis\\2020");
}
} // namespace
