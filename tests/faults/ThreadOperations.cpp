#include "faults/Operations.h"

#include "qelRegExWrapper.h"
#include "qelThreadsPool.h"

#include "tasks/PoolTest.h"

using namespace qelTest;

namespace
{
const int kWorkers = 2;

/// Waits until the workers have ended, those that there are.
class Workers
{
public:
    explicit Workers(const qelThreadsPool& pool)
    {
        for (int i = 0; i < kWorkers; ++i)
        {
            HANDLE handle = nullptr;
            if (DuplicateHandle(GetCurrentProcess(), workerOf(pool, i), GetCurrentProcess(), &handle, SYNCHRONIZE,
                                FALSE, 0))
            {
                m_handles.push_back(handle);
            }
        }
    }

    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    ~Workers()
    {
        for (HANDLE handle : m_handles)
        {
            CloseHandle(handle);
        }
    }

    size_t count() const { return m_handles.size(); }

    void awaitEnd() const
    {
        for (HANDLE handle : m_handles)
        {
            WaitForSingleObject(handle, 30000);
        }
    }

private:
    std::vector<HANDLE> m_handles;
};

std::string ran()
{
    std::atomic<int> count(0);
    qelThreadsPool pool(kWorkers);
    const Workers workers(pool);
    for (int i = 0; i < 3; ++i)
    {
        pool.QueueTask(&increment, &count);
    }
    pool.WaitForThreadsToFinishWork();
    workers.awaitEnd();
    return std::to_string(count) + " tasks ran";
}

HANDLE WINAPI refuseThread(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD, DWORD*)
{
    return nullptr;
}

std::string ranWithoutThreads()
{
    void* const create = importedCalls->redirect("CreateThread", reinterpret_cast<void*>(&refuseThread));
    const std::string said = ran();
    importedCalls->redirect("CreateThread", create);
    return said;
}

/// Whether workers that have nothing to do wait for the event once, instead of looking at the queue all the time.
std::string idle()
{
    std::atomic<int> count(0);
    std::string said;
    qelThreadsPool pool(kWorkers);
    const Workers workers(pool);
    pool.QueueTask(&increment, &count);
    (void)comesTrue([&] { return count == 1 || workers.count() == 0; });
    Sleep(20);
    const long before = importedCalls->count("WaitForSingleObject");
    Sleep(20);
    said = importedCalls->count("WaitForSingleObject") - before > 10 ? "busy" : "idle";
    pool.WaitForThreadsToFinishWork();
    workers.awaitEnd();
    return said;
}

std::string matchedDeeply()
{
    qelRegExWrapper wrapper;
    wrapper.setRegularExpression(L"(a|b)*");
    std::wstring text;
    for (int i = 0; i < 20000; ++i)
    {
        text += L"ab";
    }
    qelArray<qelString> groups;
    return wrapper.match(qelString(text.c_str()), groups) ? "a match" : "no match";
}
} // namespace

Area qelTest::threadOperations()
{
    return {
        "Threads and fibers",
        {
            Operation("qelThreadsPool", "3 tasks ran", ran)
                .fails("CreateEventW", "0 tasks ran")
                .fails("CreateThread", "0 tasks ran", "all")
                .fails("CreateThread", "3 tasks ran")
                .fails("GetModuleHandleExW", "0 tasks ran", "1,all")
                .fails("GetModuleHandleExW", "3 tasks ran")
                .ignores({"CloseHandle", "WaitForMultipleObjects"})
                .ignoresAtTimes({"ResetEvent", "WaitForSingleObject"}),
            Operation("qelThreadsPool without threads", "0 tasks ran", ranWithoutThreads)
                .ignores({"CreateEventW", "CreateThread", "GetModuleHandleExW", "FreeLibrary", "CloseHandle"}),
            Operation("qelThreadsPool, idle", "idle", idle)
                .fails("WaitForSingleObject", "busy or idle", "all")
                .fails("ResetEvent", "busy or idle", "all")
                .ignores({"ResetEvent", "CreateEventW", "CreateThread", "GetModuleHandleExW", "WaitForSingleObject",
                          "WaitForMultipleObjects", "CloseHandle"}),
            Operation("qelRegExWrapper::match, needs a large stack", "a match", matchedDeeply)
                .fails("ConvertThreadToFiberEx", "no match")
                .fails("CreateFiberEx", "no match"),
        },
    };
}
