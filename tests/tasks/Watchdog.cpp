// Ends the test program when it hangs, with the name of the test that does. Part of every program it is linked into.

#include <gtest/gtest.h>

#include <windows.h>

#include <stdio.h>

namespace
{
const DWORD kLimit = 150000; // ms

DWORD WINAPI watch(void*)
{
    Sleep(kLimit);
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    fprintf(stderr, "hang in %s.%s\n", test != nullptr ? test->test_suite_name() : "?",
            test != nullptr ? test->name() : "?");
    fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 3);
    return 0;
}

const bool watched = CloseHandle(CreateThread(nullptr, 0, &watch, nullptr, 0, nullptr)) != FALSE;
} // namespace
