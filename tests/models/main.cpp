#include "support/SeededRun.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    return qelTest::SeededRun::readOptions(argc, argv, "--operations", 100000) ? RUN_ALL_TESTS() : 2;
}
