// Lets every call that an operation makes to the system fail, one after the other and all together, and compares what
// comes out with the table of operations. With --every-call it leaves out none of many equal calls; with --page it
// prints the tables for docs/system-calls.md instead.

#include "faults/Faults.h"
#include "faults/Operations.h"
#include "faults/Page.h"

#include "qelLogfile.h"
#include "qelRegExWrapper.h"

#include "support/ImportedCalls.h"
#include "support/OpenHandles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <tuple>

using namespace qelTest;

namespace
{
/// Of more calls than that, the first and the last are made to fail; the long test takes all.
const long kCallsOfSample = 5;
bool everyCall = false;

/// Handles are given out from the smallest free one, and this program has a few dozen. To look at more takes longer
/// than the operations do.
const size_t kHandles = 0x1000;

/// Blocks of memory that the library has.
std::atomic<long> blocks(0);

void* countedMalloc(size_t bytes)
{
    void* const block = malloc(bytes);
    blocks += block != nullptr ? 1 : 0;
    return block;
}

void* countedCalloc(size_t count, size_t bytes)
{
    void* const block = calloc(count, bytes);
    blocks += block != nullptr ? 1 : 0;
    return block;
}

void* countedRealloc(void* old, size_t bytes)
{
    void* const block = realloc(old, bytes);
    blocks += old == nullptr && block != nullptr ? 1 : 0;
    return block;
}

void countedFree(void* block)
{
    blocks -= block != nullptr ? 1 : 0;
    free(block);
}

int WINAPI countedBox(HWND, LPCWSTR, LPCWSTR, UINT)
{
    ++machine->boxes;
    return IDOK;
}

template <class Function> void redirect(const char* name, Function* function)
{
    for (const std::string& imported : importedCalls->names())
    {
        if (imported == name)
        {
            importedCalls->redirect(name, reinterpret_cast<void*>(function));
        }
    }
}

/// What fails now, for the one who finds the program crashed.
std::string underWay;

LONG WINAPI tellWhatFailed(EXCEPTION_POINTERS*)
{
    (void)std::fprintf(stderr, "crash: %s\n", underWay.c_str());
    return EXCEPTION_CONTINUE_SEARCH;
}

struct Figures
{
    long injections = 0;
    /// Operation, function and number of each call that failed alone, in whatever way.
    std::set<std::tuple<std::string, std::string, long>> calls;
    long operations = 0;
    std::set<std::string> functions;
};

Figures figures;

bool isImported(const std::string& name)
{
    const std::vector<std::string> names = importedCalls->names();
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// The name that the fault's function has in the library's import table; empty when it is not imported.
std::string importedName(const Fault& fault)
{
    for (const char* name : {fault.call, fault.alias})
    {
        if (name != nullptr && isImported(name))
        {
            return name;
        }
    }
    return std::string();
}

/// Whether the result is one of those between which "or" stands.
bool isOneOf(const std::string& result, const std::string& stated)
{
    const std::string between = " or ";
    return (between + stated + between).find(between + result + between) != std::string::npos;
}

/// Runs one operation again and again, each time with another call that fails.
class Trial
{
public:
    explicit Trial(const Operation& operation)
        : m_operation(operation)
    {
    }

    void run()
    {
        beforeTheFirstSuccess();
        runNormally();
        importedCalls->start();
        EXPECT_EQ(m_operation.run(), m_operation.normal()) << m_operation.name();
        importedCalls->stop();
        // Before the counters start again.
        std::vector<std::pair<const Fault*, long>> met;
        for (const Fault& fault : faults())
        {
            const std::string name = importedName(fault);
            const long count = name.empty() ? 0 : importedCalls->count(name);
            if (count != 0)
            {
                met.emplace_back(&fault, count);
            }
        }
        m_blocks = blocks;
        // The system keeps handles of its own once threads have waited for each other: what the library leaves open is
        // left open the second time as well.
        const int keptFirst = failAll(met);
        const Figures once = figures;
        EXPECT_EQ(keptFirst == 0 ? 0 : failAll(met), 0) << m_operation.name() << " leaves handles open";
        figures = once;
        expectThatEveryRowWasUsed();
        ++figures.operations;
        if (everyCall)
        {
            std::printf("%s: %ld injections\n", m_operation.name().c_str(), m_injections);
        }
    }

private:
    void beforeTheFirstSuccess()
    {
        for (const std::string& call : m_operation.callsUntilSuccess())
        {
            for (const Fault& fault : faults())
            {
                if (call == fault.call)
                {
                    fail(fault, 1, 1);
                    fail(fault, 0, 1);
                }
            }
        }
    }

    /// Returns the number of handles that stay open.
    int failAll(const std::vector<std::pair<const Fault*, long>>& met)
    {
        const int handles = openHandles(kHandles);
        for (const auto& fault : met)
        {
            failEachCall(*fault.first, fault.second);
        }
        return openHandles(kHandles) - handles;
    }

    void failEachCall(const Fault& fault, long count)
    {
        for (long number = 1; number <= count; ++number)
        {
            if (everyCall || count <= kCallsOfSample || number < kCallsOfSample || number == count)
            {
                failAndGoOn(fault, number, count);
            }
        }
        failAndGoOn(fault, 0, count);
    }

    void failAndGoOn(const Fault& fault, long number, long count)
    {
        fail(fault, number, count);
        runNormally();
        EXPECT_EQ(blocks, m_blocks) << underWay;
    }

    void fail(const Fault& fault, long number, long count)
    {
        underWay = m_operation.name() + ": " + fault.call + " (" + fault.how + "), " +
                   (number == 0 ? "every call" : "call " + std::to_string(number));
        const std::string name = importedName(fault);
        importedCalls->start(name, fault.failing, number);
        const std::string result = m_operation.run();
        importedCalls->stop();
        if (importedCalls->count(name) < (number == 0 ? 1 : number))
        {
            // Threads do not always make the same calls.
            EXPECT_EQ(result, m_operation.normal()) << underWay;
            return;
        }
        ++figures.injections;
        ++m_injections;
        if (number != 0)
        {
            figures.calls.emplace(m_operation.name(), fault.call, number);
        }
        figures.functions.insert(fault.call);
        const Outcome* const expected = m_operation.expected(fault.call, fault.how, number, count);
        if (expected == nullptr)
        {
            ADD_FAILURE() << underWay << ": no outcome is stated; it is \"" << result << "\"";
            return;
        }
        m_used.insert(expected);
        EXPECT_TRUE(isOneOf(result, expected->result))
            << underWay << ": \"" << result << "\" and not \"" << expected->result << "\"";
    }

    void runNormally() { EXPECT_EQ(m_operation.run(), m_operation.normal()) << "afterwards; " << underWay; }

    void expectThatEveryRowWasUsed() const
    {
#if !defined(_UCRT) && !defined(_MSC_VER)
        for (const Outcome& outcome : m_operation.outcomes())
        {
            // What text takes in UTF-8 is known without a call.
            const bool spared = outcome.call == "GetCPInfo" && GetACP() == CP_UTF8;
            if (!outcome.certain || spared || !isImported(outcome.call.substr(0, outcome.call.find(':'))))
            {
                continue;
            }
            EXPECT_EQ(m_used.count(&outcome), 1U) << m_operation.name() << ": the outcome of " << outcome.call << " "
                                                  << outcome.which << " never came up";
        }
#endif
    }

    const Operation& m_operation;
    std::set<const Outcome*> m_used;
    long m_injections = 0;
    long m_blocks = 0;
};

/// The machine lasts as long as the tests: some of its state is the library's as well.
class Surroundings : public testing::Environment
{
public:
    void SetUp() override
    {
        m_machine = std::make_unique<Machine>();
        machine = m_machine.get();
        m_calls = std::make_unique<ImportedCalls>();
        importedCalls = m_calls.get();
        redirect("malloc", &countedMalloc);
        redirect("calloc", &countedCalloc);
        redirect("realloc", &countedRealloc);
        redirect("free", &countedFree);
        redirect("MessageBoxW", &countedBox);
        SetUnhandledExceptionFilter(&tellWhatFailed);
        useForTheFirstTime();
    }

    void TearDown() override
    {
        machine = nullptr;
        m_machine.reset();
        (void)m_calls.release(); // NOLINT(bugprone-unused-return-value): stays, the library goes on until the end
    }

private:
    /// What takes memory and handles once in a process: an exception of the library, debug output. The first call for
    /// a log empties it.
    static void useForTheFirstTime()
    {
        qelRegExWrapper wrapper;
        wrapper.setRegularExpression(L"(");
        qelArray<qelString> groups;
        wrapper.match(L"text", groups);
        OutputDebugStringW(L"");
        qelLogfile::logToFile(qelString(machine->folder.path(L"first.log").c_str()), L"");
    }

    std::unique_ptr<Machine> m_machine;
    std::unique_ptr<ImportedCalls> m_calls;
};

TEST(FailingSystemCalls, TheTablesNameEveryImportedFunctionOnce)
{
    for (const std::string& name : importedCalls->names())
    {
        int named = 0;
        for (const Fault& fault : faults())
        {
            const bool isFirst = &fault == &faults().front() || std::strcmp(fault.call, (&fault - 1)->call) != 0;
            const bool isAlias = fault.alias != nullptr && name == fault.alias;
            named += isFirst && (name == fault.call || isAlias) ? 1 : 0;
        }
        for (const Spared& group : spared())
        {
            for (const char* call : group.calls)
            {
                named += name == call ? 1 : 0;
            }
        }
        EXPECT_EQ(named, 1) << name << ": a function that the library imports belongs into tests/faults/Faults.cpp, "
                            << "once, among those that fail or among those that do not";
    }
}

class FailingSystemCallsOf : public testing::TestWithParam<size_t>
{
};

TEST_P(FailingSystemCallsOf, GiveTheStatedResultAndLeaveNothingOpen)
{
    for (const Operation& operation : areas()[GetParam()].operations)
    {
        Trial(operation).run();
    }
}

INSTANTIATE_TEST_SUITE_P(Areas, FailingSystemCallsOf, testing::Range(size_t{0}, areas().size()));

class FailingSystemCallsFigures : public testing::TestWithParam<int>
{
};

// With a parameter, so that it runs behind the areas.
TEST_P(FailingSystemCallsFigures, EveryFaultWasMet)
{
    if (testing::UnitTest::GetInstance()->test_to_run_count() != testing::UnitTest::GetInstance()->total_test_count())
    {
        GTEST_SKIP() << "only some tests run";
    }
    for (const Fault& fault : faults())
    {
        EXPECT_TRUE(importedName(fault).empty() || figures.functions.count(fault.call) == 1)
            << fault.call << " is called by none of the operations";
    }
    std::printf("%ld injections at %d calls of %d imported functions in %ld operations\n", figures.injections,
                static_cast<int>(figures.calls.size()), static_cast<int>(figures.functions.size()), figures.operations);
}

INSTANTIATE_TEST_SUITE_P(AtTheEnd, FailingSystemCallsFigures, testing::Values(0));
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i)
    {
        if (std::strcmp(argv[i], "--page") == 0)
        {
            std::fputs(pageOfSystemCalls().c_str(), stdout);
            return 0;
        }
        everyCall = everyCall || std::strcmp(argv[i], "--every-call") == 0;
    }
    testing::AddGlobalTestEnvironment(new Surroundings);
    return RUN_ALL_TESTS();
}
