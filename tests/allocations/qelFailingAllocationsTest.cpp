// Every exported operation, with each of its allocations failing: once and for good, in a process that has used it
// before ("warm") and as the first of its process ("cold"). Run with --whole it does all of it, otherwise a sample of
// the cold ones.

#include "allocations/Operations.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#if defined(__GNUC__)
#include <cxxabi.h>
#endif

namespace qelTest
{
/// Judges a trial of an operation by one in which nothing failed.
class Attempt
{
public:
    Attempt(const Operation& operation, int failAt, allocations::Failing failing)
        : m_operation(operation)
        , m_trial(failAt, failing)
    {
        const size_t before = allocations::live();
        operation.body(m_trial);
        m_kept = static_cast<long>(allocations::live()) - static_cast<long>(before);
    }

    int allocationCount() const { return m_trial.m_count; }

    /// Whether the operation got as far as the allocation that was to fail.
    bool failed() const { return m_trial.m_failAt >= 0 && m_trial.m_failAt < m_trial.m_count; }

    /// Blocks that are there afterwards and were not before.
    long kept() const { return m_kept; }

    /// Whether some failures of the operation may leave another state than the one before or after it.
    bool mayLeaveAnotherState() const { return !m_trial.m_allowed.empty() || m_trial.m_judge != nullptr; }

    /// Whether this one did.
    bool leftAnotherState(const Attempt& reference) const
    {
        const std::wstring& state = m_trial.m_seen.state;
        return state != m_trial.m_before && state != reference.m_trial.m_seen.state;
    }

    /// What is wrong, or nothing.
    std::string fault(const Attempt& reference) const
    {
        std::string fault = outcome(reference.m_trial);
        if (fault.empty() && m_trial.m_again && !(m_trial.m_seenAgain == reference.m_trial.m_seen))
        {
            fault = "does not succeed afterwards: " + text(m_trial.m_seenAgain) + " instead of " +
                    text(reference.m_trial.m_seen);
        }
        return fault;
    }

private:
    std::string outcome(const Trial& reference) const
    {
        if (m_trial.m_threwSomethingElse)
        {
            return "throws something else";
        }
        if (!failed())
        {
            return m_trial.m_seen == reference.m_seen && !m_trial.m_threw
                       ? ""
                       : "differs without a failure: " + text(m_trial.m_seen);
        }
        const bool mayThrow = m_operation.kind != Operation::quiet;
        const bool mayReturn = m_operation.kind != Operation::throws;
        if (m_trial.m_threw)
        {
            return !mayThrow ? "throws"
                   : m_trial.m_seen.state == m_trial.m_before || isListed(reference)
                       ? ""
                       : "throws and leaves " + text(m_trial.m_seen) + " instead of " + text({L"", m_trial.m_before});
        }
        return !mayReturn ? "does not throw" : isAllowed(reference) ? "" : "gives " + text(m_trial.m_seen);
    }

    bool isListed(const Trial& reference) const
    {
        const std::vector<Seen>& allowed = m_trial.m_allowed;
        return std::find(allowed.begin(), allowed.end(), m_trial.m_seen) != allowed.end() ||
               (m_trial.m_judge && m_trial.m_judge(m_trial.m_seen, reference.m_seen));
    }

    bool isAllowed(const Trial& reference) const
    {
        const Seen& seen = m_trial.m_seen;
        const auto isFailure = [&](const Seen& failure) {
            return failure.result == seen.result && m_trial.m_before == seen.state;
        };
        return seen == reference.m_seen || isListed(reference) ||
               std::any_of(m_trial.m_failures.begin(), m_trial.m_failures.end(), isFailure);
    }

    static std::string text(const Seen& seen)
    {
        std::string text = "\"";
        for (wchar_t c : seen.result + L" / " + seen.state)
        {
            text += c < 128 ? static_cast<char>(c) : '?';
        }
        return text + "\"";
    }

    const Operation& m_operation;
    Trial m_trial;
    long m_kept = 0;
};
} // namespace qelTest

using namespace qelTest;
using allocations::Failing;

namespace
{
bool whole = false;
int injections = 0;

/// Operations of which the table says that they may leave another state than the one before or after, and those that
/// did.
std::set<std::string> exceptions;
std::set<std::string> exceptionsMet;

const Operations& table()
{
    static const Operations table = [] {
        Operations all;
        addStrings(all);
        addLists(all);
        addRuntime(all);
        addFiles(all);
        addConfiguration(all);
        addNumbering(all);
        addProgress(all);
        addNumerics(all);
        return all;
    }();
    return table;
}

const char* named(Failing failing)
{
    return failing == Failing::once ? "once" : "for good";
}

/// Each allocation of an operation that has run before.
void failWarm(const Operation& operation, Failing failing)
{
    const Attempt first(operation, -1, failing);
    const Attempt reference(operation, -1, failing);
    EXPECT_EQ(reference.kept(), 0) << operation.name();
    for (int number = 0; number < reference.allocationCount() + 3; ++number)
    {
        const Attempt run(operation, number, failing);
        EXPECT_EQ(run.fault(reference), "") << operation.name() << ", allocation " << number << ' ' << named(failing);
        EXPECT_EQ(run.kept(), 0) << operation.name() << ", allocation " << number << ' ' << named(failing);
        if (run.mayLeaveAnotherState())
        {
            exceptions.insert(operation.name());
        }
        if (!run.failed())
        {
            break;
        }
        if (run.leftAnotherState(reference))
        {
            exceptionsMet.insert(operation.name());
        }
        ++injections;
    }
}

void failAllWarm(Failing failing)
{
    for (const Operation& operation : table())
    {
        if (operation.kind != Operation::never)
        {
            failWarm(operation, failing);
        }
    }
}

TEST(qelFailingAllocations, LeaveTheStateBeforeWhenOneFails)
{
    failAllWarm(Failing::once);
}

TEST(qelFailingAllocations, LeaveTheStateBeforeWhenAllFailFromOneOn)
{
    failAllWarm(Failing::forGood);
}

TEST(qelFailingAllocations, LeaveAnotherStateWhereTheTableSaysSo)
{
    if (testing::UnitTest::GetInstance()->test_to_run_count() != testing::UnitTest::GetInstance()->total_test_count())
    {
        GTEST_SKIP() << "only some tests run";
    }
    EXPECT_EQ(exceptionsMet, exceptions);
}

TEST(qelFailingAllocations, AreThoseOfTheTable)
{
    for (const Operation& operation : table())
    {
        const int warm = Attempt(operation, -1, Failing::once).allocationCount();
        if (operation.kind == Operation::never)
        {
            EXPECT_EQ(warm, 0) << operation.name();
        }
    }
}

// A process of its own for each allocation.

const char kCold[] = "--cold";

/// How such a process ends. Never 0, which Wine reports for one that has lost its stack.
enum Cold : DWORD
{
    eRight = 0x51,
    eWrong,
    eNotReached,
    eNotStarted,
    eTooSlow
};

struct ColdResult
{
    DWORD outcome = 0;
    int kept = 0; ///< blocks, after a success
};

/// In the process itself. The high part of its result is the number of blocks kept.
int runCold(size_t index, int number, Failing failing)
{
    const Operation& operation = table()[index];
    const Attempt run(operation, number, failing);
    if (number >= 0 && !run.failed())
    {
        return eNotReached;
    }
    const Attempt reference(operation, -1, failing);
    const long kept = run.kept() + reference.kept();
    const std::string fault = run.fault(reference);
    if (!fault.empty())
    {
        printf("[ COLD     ] %s, allocation %d %s: %s\n", operation.name().c_str(), number, named(failing),
               fault.c_str());
        return eWrong;
    }
    return static_cast<int>(eRight | static_cast<DWORD>(kept) << 8);
}

class ColdProcess
{
public:
    ColdProcess(size_t index, int number, Failing failing)
    {
        char path[MAX_PATH] = {};
        GetModuleFileNameA(nullptr, path, MAX_PATH);
        std::string command = std::string("\"") + path + "\" " + kCold + " " + std::to_string(index) + " " +
                              std::to_string(number) + " " + (failing == Failing::once ? "1" : "0");
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        m_started = CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                                   &m_process) != FALSE;
    }

    ColdProcess(const ColdProcess&) = delete;
    ColdProcess& operator=(const ColdProcess&) = delete;

    ~ColdProcess()
    {
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
    }

    ColdResult result()
    {
        if (!m_started)
        {
            return {eNotStarted, 0};
        }
        if (WaitForSingleObject(m_process.hProcess, 60000) != WAIT_OBJECT_0)
        {
            TerminateProcess(m_process.hProcess, eTooSlow);
            return {eTooSlow, 0};
        }
        DWORD code = 0;
        GetExitCodeProcess(m_process.hProcess, &code);
        return {code & 0xFF, static_cast<int>(code) >> 8};
    }

private:
    PROCESS_INFORMATION m_process = {};
    bool m_started = false;
};

void failCold(size_t index, Failing failing, bool all)
{
    const std::string& name = table()[index].name();
    const ColdResult reference = ColdProcess(index, -1, failing).result();
    EXPECT_EQ(reference.outcome, eRight) << name;
    for (int number = 0;; ++number)
    {
        const ColdResult result = ColdProcess(index, number, failing).result();
        if (result.outcome == eNotReached)
        {
            return;
        }
        ++injections;
        EXPECT_EQ(result.outcome, eRight) << name << ", allocation " << number << ' ' << named(failing);
        EXPECT_EQ(result.kept, reference.kept) << name << ", allocation " << number << ' ' << named(failing);
        if (!all)
        {
            return;
        }
    }
}

TEST(qelFailingAllocationsCold, LeaveTheStateBefore)
{
    for (size_t index = 0; index < table().size(); ++index)
    {
        if (table()[index].kind == Operation::never)
        {
            continue;
        }
        // Regular expressions use more of the C++ library at first than anything else.
        const bool isMatch = table()[index].name().find("::match(") != std::string::npos;
        if (whole || isMatch)
        {
            failCold(index, Failing::once, true);
        }
        // The sample: every twelfth.
        if (whole || index % 12 == 0)
        {
            failCold(index, Failing::forGood, whole);
        }
    }
}

// That nothing is missing.

#if defined(__GNUC__)
template <class T> const T* at(HMODULE module, DWORD offset)
{
    return reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(module) + offset);
}

std::string readable(const char* name)
{
    int status = 0;
    char* const demangled = abi::__cxa_demangle(name, nullptr, nullptr, &status);
    const std::string result = status == 0 ? demangled : name;
    free(demangled);
    static const std::regex parameters(
        ", qelArray(Object|Mem)CopyReallocator<[^<>]*>, qelArrayMemoryController<[^<>]*> >");
    return std::regex_replace(result, parameters, ">");
}

/// Those of functions: constructors and destructors of one signature count once.
std::set<std::string> exportedFunctions()
{
    const HMODULE library = GetModuleHandleW(L"VarnelQELRoots.dll");
    const auto& headers =
        *at<IMAGE_NT_HEADERS>(library, static_cast<DWORD>(at<IMAGE_DOS_HEADER>(library, 0)->e_lfanew));
    const auto& exports = *at<IMAGE_EXPORT_DIRECTORY>(
        library, headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    const DWORD* const names = at<DWORD>(library, exports.AddressOfNames);
    std::set<std::string> functions;
    for (DWORD i = 0; i < exports.NumberOfNames; ++i)
    {
        const std::string name = readable(at<char>(library, names[i]));
        if (name.find('(') != std::string::npos)
        {
            functions.insert(name);
        }
    }
    return functions;
}

TEST(qelFailingAllocations, CoverEveryExportedFunction)
{
    std::set<std::string> covered = {// Of the one of the process, when the library is loaded.
                                     "qelProcessEvolutionManager::qelProcessEvolutionManager()",
                                     // Private, called by all that makes strings.
                                     "qelStringRepr::qelStringRepr(wchar_t*)"};
    for (const Operation& operation : table())
    {
        covered.insert(operation.exports.begin(), operation.exports.end());
    }
    const std::set<std::string> exported = exportedFunctions();
    EXPECT_GT(exported.size(), 300U);
    for (const std::string& name : exported)
    {
        EXPECT_EQ(covered.count(name), 1U) << "not in the table: " << name;
    }
    for (const std::string& name : covered)
    {
        EXPECT_EQ(exported.count(name), 1U) << "not exported: " << name;
    }
}
#endif

void printFigures()
{
    int operations = 0;
    std::set<std::string> allocating;
    std::set<std::string> all;
    for (const Operation& operation : table())
    {
        all.insert(operation.exports.begin(), operation.exports.end());
        if (operation.kind != Operation::never)
        {
            ++operations;
            allocating.insert(operation.exports.begin(), operation.exports.end());
        }
    }
    printf("figures: %d injections in %d operations (all %d exported functions that allocate; the other %d allocate "
           "nothing); %d operations may leave another state than the one before or after; %d tests failed\n",
           injections, operations, static_cast<int>(allocating.size()),
           static_cast<int>(all.size() - allocating.size()), static_cast<int>(exceptions.size()),
           testing::UnitTest::GetInstance()->failed_test_count());
}
} // namespace

int main(int argc, char** argv)
{
    allocations::watch();
    if (argc == 5 && strcmp(argv[1], kCold) == 0)
    {
        return runCold(static_cast<size_t>(atoi(argv[2])), atoi(argv[3]),
                       argv[4][0] == '1' ? Failing::once : Failing::forGood);
    }
    testing::InitGoogleTest(&argc, argv);
    whole = argc == 2 && strcmp(argv[1], "--whole") == 0;
    const int result = RUN_ALL_TESTS();
    printFigures();
    return result;
}
