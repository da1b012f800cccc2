#include "Process.h"

#include <windows.h>

#include <vector>

namespace
{
/// A handle that is closed at the end. INVALID_HANDLE_VALUE and null stand for none.
class Handle
{
public:
    explicit Handle(HANDLE handle)
        : m_handle(handle)
    {
    }
    ~Handle()
    {
        if (m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE)
        {
            CloseHandle(m_handle);
        }
    }

    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    operator HANDLE() const { return m_handle; }

private:
    HANDLE m_handle;
};

HANDLE openInherited(const wchar_t* name, DWORD access, DWORD creation)
{
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    return CreateFileW(name, access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, creation, 0, nullptr);
}
} // namespace

unsigned long testkit::run(const std::wstring& command, const std::wstring& folder, const std::wstring& output,
                           unsigned seconds)
{
    const Handle input(openInherited(L"NUL", GENERIC_READ, OPEN_EXISTING));
    const Handle file(openInherited(output.c_str(), FILE_APPEND_DATA, OPEN_ALWAYS));
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input;
    startup.hStdOutput = file;
    startup.hStdError = file;

    std::vector<wchar_t> text(command.begin(), command.end());
    text.push_back(L'\0');
    PROCESS_INFORMATION started = {};
    if (!CreateProcessW(nullptr, text.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr, folder.c_str(),
                        &startup, &started))
    {
        return kNotStarted;
    }
    const Handle process(started.hProcess);
    const Handle thread(started.hThread);
    // So that what the program starts ends with it. A system that allows no job within a job goes without.
    const Handle job(CreateJobObjectW(nullptr, nullptr));
    const bool inJob = AssignProcessToJobObject(job, process) != 0;
    ResumeThread(thread);
    if (WaitForSingleObject(process, seconds * 1000) != WAIT_OBJECT_0)
    {
        if (!inJob || !TerminateJobObject(job, kTimedOut))
        {
            TerminateProcess(process, kTimedOut);
        }
        WaitForSingleObject(process, INFINITE);
        return kTimedOut;
    }
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    return code;
}
