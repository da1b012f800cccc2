// File versions and the listing of loaded modules.

#include "qelLogfile.h"

#include "files/LogStream.h"
#include "qelRuntime.h"

#include <windows.h>

#include <tlhelp32.h>

#include <stdint.h>
#include <stdlib.h>

namespace
{
const int kTries = 10;

/// A snapshot of processes or modules.
class Snapshot
{
public:
    explicit Snapshot(DWORD what)
        : m_handle(CreateToolhelp32Snapshot(what, 0))
    {
        // Fails with this error while modules are loaded or unloaded; retrying is the documented remedy.
        for (int tries = 1; !isValid() && GetLastError() == ERROR_BAD_LENGTH && tries < kTries; ++tries)
        {
            m_handle = CreateToolhelp32Snapshot(what, 0);
        }
    }

    ~Snapshot()
    {
        if (isValid())
        {
            CloseHandle(m_handle);
        }
    }

    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

    bool isValid() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE handle() const { return m_handle; }

private:
    HANDLE m_handle;
};

/// The version resource of a file, if any.
class VersionResource
{
public:
    explicit VersionResource(const wchar_t* fileName)
        : m_block(nullptr)
    {
        DWORD unused = 0;
        const DWORD size = GetFileVersionInfoSizeW(fileName, &unused);
        void* block = size > 0 ? malloc(size) : nullptr;
        if (block != nullptr && GetFileVersionInfoW(fileName, 0, size, block))
        {
            m_block = block;
        }
        else
        {
            free(block);
        }
    }

    ~VersionResource() { free(m_block); }

    VersionResource(const VersionResource&) = delete;
    VersionResource& operator=(const VersionResource&) = delete;

    /// The version numbers, or null.
    const VS_FIXEDFILEINFO* fixedInfo() const
    {
        void* info = nullptr;
        UINT size = 0;
        const bool found = m_block != nullptr && VerQueryValueW(m_block, L"\\", &info, &size) != 0;
        // A resource without the block gives a size of 0.
        return found && size >= sizeof(VS_FIXEDFILEINFO) ? static_cast<const VS_FIXEDFILEINFO*>(info) : nullptr;
    }

private:
    void* m_block;
};

bool findThisProcess(const Snapshot& processes, PROCESSENTRY32W& entry)
{
    if (!processes.isValid())
    {
        return false;
    }
    entry.dwSize = sizeof(entry);
    const DWORD id = GetCurrentProcessId();
    BOOL more = Process32FirstW(processes.handle(), &entry);
    while (more && entry.th32ProcessID != id)
    {
        more = Process32NextW(processes.handle(), &entry);
    }
    return more != FALSE;
}

void write(const LogStream& log, const qelString& line)
{
    if (log.file() != nullptr)
    {
        qelfprintf(log.file(), L"%s", line.getStringW());
    }
}

void writeHeading(const qelString& fileName, const PROCESSENTRY32W& process, LogPatience& patience)
{
    const LogStream log(fileName, patience);
    qelString line;
    write(log, line.format(L"%s PID : %d\n\n\n", process.szExeFile, static_cast<int>(process.th32ProcessID)));
    write(log, line.format(L"%-12s%-10s%-16s%s\n", L"Base", L"Size", L"Version", L"Path"));
}

void writeRow(const qelString& fileName, const MODULEENTRY32W& module, LogPatience& patience)
{
    qelString path(module.szExePath);
    qelString version;
    qelLogfile::GetFileVersion(path, version);

    // The column has room for the low half of the address.
    const auto base = static_cast<unsigned>(reinterpret_cast<uintptr_t>(module.modBaseAddr));
    const unsigned size = module.modBaseSize;
    qelString line;
    line.format(L"0x%08x  0x%-8x%-16s%s\n", base, size, version.getStringW(), path.getStringW());
    write(LogStream(fileName, patience), line);
}
} // namespace

int qelLogfile::GetFileVersion(qelString& fileName, qelString& version)
{
    const VersionResource resource(fileName.getStringW());
    const VS_FIXEDFILEINFO* info = resource.fixedInfo();
    if (info == nullptr)
    {
        return 0;
    }
    version.format(L"%d.%02d.%04d.%04d", HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                   HIWORD(info->dwFileVersionLS), LOWORD(info->dwFileVersionLS));
    return 1;
}

void qelLogfile::listModules(const qelString& fileName)
{
    const Snapshot processes(TH32CS_SNAPPROCESS);
    PROCESSENTRY32W process;
    if (!findThisProcess(processes, process))
    {
        return;
    }
    const qelString target = LogStream::orCommonLog(fileName);
    LogPatience patience;
    LogStream::reset(target);
    writeHeading(target, process, patience);

    const Snapshot modules(TH32CS_SNAPMODULE);
    if (!modules.isValid())
    {
        return;
    }
    MODULEENTRY32W module;
    module.dwSize = sizeof(module);
    for (BOOL more = Module32FirstW(modules.handle(), &module); more; more = Module32NextW(modules.handle(), &module))
    {
        writeRow(target, module, patience);
    }
}
