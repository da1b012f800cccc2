// Two processes that use the library for a given time, side by side: neither may hold more at the end than when it had
// used everything once.

#include "qelBalancedTree.h"
#include "qelDataSourcesUtilities.h"
#include "qelLogfile.h"
#include "qelProgressCtrl.h"
#include "qelRegExWrapper.h"
#include "qelStringClassArray.h"
#include "qelThreadsPool.h"

#include "soak/ProcessCounts.h"
#include "support/StartProcess.h"
#include "support/TemporaryFolder.h"
#include "tasks/PoolTest.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <memory>
#include <string>

using qelTest::counted;
using qelTest::ProcessCounts;

namespace
{
// Of the command line.
int seconds = 4;
std::wstring folderOfFirst; ///< empty in the first process

const DWORD kPassed = 77; // not 0, which Wine reports for a process that a stack overflow has ended
const int kRoundsBefore = 5;
const int kRoundsOfALog = 100;

void usePools()
{
    std::atomic<int> ran(0);
    qelThreadsPool pool(3);
    const qelTest::WorkersWatch workers(pool, 3);
    for (int i = 0; i < 50; ++i)
    {
        pool.QueueTask(&qelTest::increment, &ran);
    }
    const qelThreadsPool copy(pool);
    pool.WaitForThreadsToFinishWork();
    ASSERT_EQ(ran, 50);

    // One that is destroyed with tasks pending; `ran` outlives its workers.
    auto second = std::make_unique<qelThreadsPool>(2);
    const qelTest::WorkersWatch secondWorkers(*second, 2);
    for (int i = 0; i < 50; ++i)
    {
        second->QueueTask(&qelTest::increment, &ran);
    }
    second.reset();
    ASSERT_TRUE(workers.end() && secondWorkers.end());
}

/// Both processes write to the log `shared`; the other one is this process's own.
void useLogs(const std::wstring& shared, const std::wstring& own, int round)
{
    qelLogfile log(shared.c_str());
    qelLogfile::setLogStatus(1);
    if (round % kRoundsOfALog == 0)
    {
        log.reset();
        DeleteFileW(own.c_str());
    }
    for (int i = 0; i < 20; ++i)
    {
        log.appendWithSave(L"A line that two processes write.\n");
        qelLogfile::logToFile(own.c_str(), L"A line of this process.");
    }
    qelLogfile::setLogStatus(0);
    if (round % 20 == 0)
    {
        qelLogfile::listModules((own + L".modules").c_str());
    }
}

/// Reads the catalogue anew: each round has the other one of two configuration files.
void useCatalogue(const qelTest::TemporaryFolder& folder, int round)
{
    const wchar_t* name = round % 2 == 0 ? L"even.xml" : L"odd.xml";
    qelDataSourcesUtilities sources(folder.path(name).c_str());
    qelString connection;
    ASSERT_EQ(sources.getConnectionString(L"Own", connection, L"x64"), 1);
    ASSERT_STREQ(connection.getStringW(), round % 2 == 0 ? L"PelionCurrentProject even" : L"PelionCurrentProject odd");
    ASSERT_EQ(sources.getConnectionString(L"Unknown", connection, L"x64"), 0);
}

std::string configuration(const char* value)
{
    std::string elements;
    for (int i = 0; i < 50; ++i)
    {
        elements += "<DataSource Name=\"Other" + std::to_string(i) + "\" Platform=\"x64\" Value=\"v\"/>\r\n";
    }
    return "<Orvalis>\r\n" + elements + "<DataSource Name=\"Own\" Platform=\"x64\" Value=\"PelionCurrentProject " +
           value + "\"/>\r\n</Orvalis>\r\n";
}

class Entry : public qelBalancedTreeEntry
{
public:
    explicit Entry(int key)
        : m_key(key)
        , m_text(qelString::integerToString(key, 10))
    {
    }

    int compare(const qelBalancedTreeEntry& other) const override
    {
        const int key = dynamic_cast<const Entry&>(other).m_key;
        return key < m_key ? -1 : key > m_key ? 1 : 0;
    }

private:
    int m_key;
    qelString m_text;
};

void useTree(int round)
{
    qelBalancedTree tree;
    for (int i = 0; i < 500; ++i)
    {
        auto entry = std::make_unique<Entry>((i * 331 + round) % 500);
        ASSERT_EQ(tree.insert(entry.release()), qelBalancedTreeEntry::eNoError);
    }
    for (int i = 0; i < 500; i += 2)
    {
        ASSERT_EQ(tree.remove(Entry(i)), qelBalancedTreeEntry::eNoError);
    }
    ASSERT_EQ(tree.search(Entry(2)), nullptr);
    ASSERT_NE(tree.search(Entry(3)), nullptr);
}

void useStrings(int round)
{
    qelStringClassArray list;
    for (int i = 0; i < 100; ++i)
    {
        qelString text;
        text.format(L"part %d of round %d", (i * 37) % 100, round);
        list.append(text);
    }
    qelRegExWrapper expression;
    expression.setRegularExpression(L"part ([0-9]+) of round [0-9]+");
    qelArray<qelString> results;
    ASSERT_TRUE(expression.match(list[0], results));
    ASSERT_STREQ(list[0].getStringA(), ("part 0 of round " + std::to_string(round)).c_str());
}

void useDialog()
{
    ASSERT_EQ(qelProgressCtrl::activate(L"Soak"), 1);
    for (int percent = 20; percent <= 100; percent += 20)
    {
        qelProgressCtrl::setPercentage(percent);
    }
    qelProgressCtrl::reset();
}

/// Everything once.
void useAll(const qelTest::TemporaryFolder& folder, const std::wstring& sharedLog, int round)
{
    usePools();
    useLogs(sharedLog, folder.path(L"own.log"), round);
    useCatalogue(folder, round);
    useTree(round);
    useStrings(round);
    useDialog();
}

void print(const char* when, const ProcessCounts& counts, int rounds)
{
    printf("%s process, %s: %s, %s, %s, %d rounds\n", folderOfFirst.empty() ? "first" : "second", when,
           counted(counts.blocks, "block").c_str(), counted(counts.handles, "handle").c_str(),
           counted(counts.threads, "thread").c_str(), rounds);
    fflush(stdout);
}

/// This program once more, which writes to the same log.
class SecondProcess
{
public:
    explicit SecondProcess(const std::wstring& folder)
    {
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, path, MAX_PATH);
        const std::wstring command =
            L"\"" + std::wstring(path) + L"\" --seconds " + std::to_wstring(seconds) + L" --second \"" + folder + L"\"";
        EXPECT_TRUE(qelTest::startProcess(command, m_process));
    }

    SecondProcess(const SecondProcess&) = delete;
    SecondProcess& operator=(const SecondProcess&) = delete;

    ~SecondProcess()
    {
        TerminateProcess(m_process.hProcess, 1);
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
    }

    bool passes()
    {
        DWORD code = 1;
        return WaitForSingleObject(m_process.hProcess, 60000) == WAIT_OBJECT_0 &&
               GetExitCodeProcess(m_process.hProcess, &code) && code == kPassed;
    }

private:
    PROCESS_INFORMATION m_process = {};
};

TEST(qelSoak, KeepsBlocksHandlesAndThreadsOfTwoProcesses)
{
    const qelTest::TemporaryFolder folder;
    folder.write(L"even.xml", configuration("even"));
    folder.write(L"odd.xml", configuration("odd"));
    const std::wstring sharedLog = (folderOfFirst.empty() ? folder.path() : folderOfFirst) + L"\\shared.log";
    std::unique_ptr<SecondProcess> second;
    if (folderOfFirst.empty())
    {
        second = std::make_unique<SecondProcess>(folder.path());
    }
    qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow().switchOn();

    const qelTest::LibraryBlocks counting;
    int round = 0;
    while (round < kRoundsBefore && !HasFatalFailure())
    {
        useAll(folder, sharedLog, round++);
    }
    const ProcessCounts before = ProcessCounts::now();
    print("before", before, round);
    // An even number of rounds, so that the catalogue is the same.
    for (const ULONGLONG end = GetTickCount64() + 1000ull * static_cast<unsigned>(seconds);
         (GetTickCount64() < end || (round - kRoundsBefore) % 2 != 0) && !HasFatalFailure();)
    {
        useAll(folder, sharedLog, round++);
    }
    const ProcessCounts after = ProcessCounts::now();
    print("after", after, round);
    EXPECT_GT(round, kRoundsBefore);
    EXPECT_EQ(after.blocks, before.blocks);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_TRUE(second == nullptr || second->passes());
}
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i + 1 < argc; i += 2)
    {
        const std::string name = argv[i];
        if (name == "--seconds")
        {
            seconds = atoi(argv[i + 1]);
        }
        else if (name == "--second")
        {
            folderOfFirst = std::wstring(argv[i + 1], argv[i + 1] + strlen(argv[i + 1]));
        }
    }
    const int result = RUN_ALL_TESTS();
    return !folderOfFirst.empty() && result == 0 ? static_cast<int>(kPassed) : result;
}
