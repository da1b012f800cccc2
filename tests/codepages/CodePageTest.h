// Tests of behaviour that an ANSI code page must have; they are skipped with any other.
#ifndef QEL_CODE_PAGE_TEST_H
#define QEL_CODE_PAGE_TEST_H

#include <gtest/gtest.h>

#include <windows.h>

namespace qelTest
{
template <UINT CodePage> class CodePageTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (GetACP() != CodePage)
        {
            GTEST_SKIP() << "the ANSI code page is not " << CodePage;
        }
    }
};
} // namespace qelTest

#endif
