#include "support/SeededRun.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{
struct Options
{
    unsigned seed = 1;
    int count = 0;
    std::string countName;
    std::string program;
};

Options& options()
{
    static Options theOptions;
    return theOptions;
}

qelTest::SeededRun* runUnderWay = nullptr;

LONG WINAPI printRunUnderWay(EXCEPTION_POINTERS* exception)
{
    std::printf("exception %08lx at %p\n", exception->ExceptionRecord->ExceptionCode,
                exception->ExceptionRecord->ExceptionAddress);
    if (runUnderWay != nullptr)
    {
        runUnderWay->print();
    }
    std::fflush(stdout);
    return EXCEPTION_EXECUTE_HANDLER; // ends the process, without a debugger
}
} // namespace

bool qelTest::SeededRun::readOptions(int argc, char** argv, const char* countOption, int defaultCount)
{
    options().program = argv[0];
    options().countName = countOption;
    options().count = defaultCount;
    for (int i = 1; i < argc; i += 2)
    {
        const bool isSeed = std::strcmp(argv[i], "--seed") == 0;
        if (i + 1 == argc || (!isSeed && std::strcmp(argv[i], countOption) != 0))
        {
            std::fprintf(stderr, "usage: [GoogleTest's options] [--seed N] [%s N]\n", countOption);
            return false;
        }
        if (isSeed)
        {
            options().seed = static_cast<unsigned>(std::strtoul(argv[i + 1], nullptr, 10));
        }
        else
        {
            options().count = std::atoi(argv[i + 1]);
        }
    }
    SetUnhandledExceptionFilter(&printRunUnderWay);
    return true;
}

qelTest::SeededRun::SeededRun(int divisor)
    : m_random(options().seed)
    , m_divisor(divisor)
    , m_count(options().count / divisor)
    , m_step(0)
    , m_outer(runUnderWay)
{
    runUnderWay = this;
}

qelTest::SeededRun::~SeededRun()
{
    runUnderWay = m_outer;
}

bool qelTest::SeededRun::next()
{
    if (testing::Test::HasFailure())
    {
        print();
        return false;
    }
    if (m_step == m_count)
    {
        return false;
    }
    ++m_step;
    return true;
}

void qelTest::SeededRun::print() const
{
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::printf("step %d of seed %u; again: %s --gtest_filter=%s.%s --seed %u %s %d\n", m_step, options().seed,
                options().program.c_str(), test->test_suite_name(), test->name(), options().seed,
                options().countName.c_str(), m_step * m_divisor);
}

std::wstring qelTest::randomText(SeededRun& run, const std::wstring& alphabet, int longest)
{
    std::wstring text;
    for (int left = run.below(longest + 1); left > 0; --left)
    {
        text += alphabet[static_cast<size_t>(run.below(static_cast<int>(alphabet.size())))];
    }
    return text;
}
