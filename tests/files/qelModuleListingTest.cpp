// File versions and the listing of loaded modules, against what the system reports.

#include "qelLogfile.h"

#include "support/ImportHook.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <tlhelp32.h>

#include <stdint.h>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

using qelTest::ImportHook;
using qelTest::TestFile;

namespace
{
// Failures of the system's calls

BOOL WINAPI refuseVersionInfo(LPCWSTR, DWORD, DWORD, LPVOID)
{
    return FALSE;
}

BOOL WINAPI refuseQuery(LPCVOID, LPCWSTR, LPVOID*, PUINT)
{
    return FALSE;
}

BOOL WINAPI findBlockOfNoSize(LPCVOID block, LPCWSTR, LPVOID* info, PUINT size)
{
    *info = const_cast<void*>(block);
    *size = 0;
    return TRUE;
}

BOOL WINAPI noProcess(HANDLE, PROCESSENTRY32W*)
{
    return FALSE;
}

BOOL WINAPI idleProcess(HANDLE, PROCESSENTRY32W* entry)
{
    entry->th32ProcessID = 0;
    return TRUE;
}

/// Watches the snapshots of the library, and refuses those of one kind.
class Snapshots
{
public:
    explicit Snapshots(DWORD refusedKind = 0, DWORD error = ERROR_ACCESS_DENIED, int refusals = INT_MAX)
        : m_create("CreateToolhelp32Snapshot", &create)
        , m_close("CloseHandle", &close)
    {
        open.clear();
        refused = refusedKind;
        errorCode = error;
        refusalsLeft = refusals;
        asked = 0;
    }

    static size_t leftOpen() { return open.size(); }
    static int asked;

private:
    static HANDLE WINAPI create(DWORD kind, DWORD process)
    {
        ++asked;
        if (kind == refused && refusalsLeft > 0)
        {
            --refusalsLeft;
            SetLastError(errorCode);
            return INVALID_HANDLE_VALUE;
        }
        const HANDLE snapshot = CreateToolhelp32Snapshot(kind, process);
        open[snapshot] = kind;
        return snapshot;
    }

    static BOOL WINAPI close(HANDLE handle)
    {
        open.erase(handle);
        return CloseHandle(handle);
    }

    static std::map<HANDLE, DWORD> open;
    static DWORD refused;
    static DWORD errorCode;
    static int refusalsLeft;

    ImportHook m_create;
    ImportHook m_close;
};

std::map<HANDLE, DWORD> Snapshots::open;
DWORD Snapshots::refused = 0;
DWORD Snapshots::errorCode = 0;
int Snapshots::refusalsLeft = 0;
int Snapshots::asked = 0;

// What the system reports, put together here

std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

std::wstring widened(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

std::string padded(std::string text, size_t width)
{
    if (text.size() < width)
    {
        text.resize(width, ' ');
    }
    return text;
}

std::string hex(DWORD value, int digits)
{
    char text[16];
    sprintf_s(text, "%0*lx", digits, value);
    return text;
}

std::string decimal(DWORD value, size_t digits)
{
    const std::string text = std::to_string(value);
    return std::string(text.size() < digits ? digits - text.size() : 0, '0') + text;
}

std::string versionOf(const std::wstring& path)
{
    DWORD unused = 0;
    std::vector<char> block(GetFileVersionInfoSizeW(path.c_str(), &unused));
    VS_FIXEDFILEINFO* info = nullptr;
    UINT size = 0;
    if (block.empty() || !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&info), &size) || size == 0)
    {
        return "";
    }
    const DWORD high = info->dwFileVersionMS;
    const DWORD low = info->dwFileVersionLS;
    return decimal(high / 65536, 1) + "." + decimal(high % 65536, 2) + "." + decimal(low / 65536, 4) + "." +
           decimal(low % 65536, 4);
}

/// The version that the build gives the library.
std::string projectVersion()
{
    return decimal(QEL_TEST_VERSION_MAJOR, 1) + "." + decimal(QEL_TEST_VERSION_MINOR, 2) + "." +
           decimal(QEL_TEST_VERSION_PATCH, 4) + ".0000";
}

std::string expectedHeading()
{
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring name = wcsrchr(program, L'\\') + 1;
    return narrow(name) + " PID : " + std::to_string(GetCurrentProcessId()) + "\r\n\r\n\r\n" +
           "Base        Size      Version         Path\r\n";
}

std::string expectedRows()
{
    std::string rows;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
    MODULEENTRY32W module = {};
    module.dwSize = sizeof(module);
    for (BOOL more = Module32FirstW(snapshot, &module); more; more = Module32NextW(snapshot, &module))
    {
        const DWORD base = static_cast<DWORD>(reinterpret_cast<uintptr_t>(module.modBaseAddr) & 0xFFFFFFFF);
        rows += "0x" + hex(base, 8) + "  0x" + padded(hex(module.modBaseSize, 1), 8) +
                padded(versionOf(module.szExePath), 16) + narrow(module.szExePath) + "\r\n";
    }
    CloseHandle(snapshot);
    return rows;
}

std::wstring libraryPath()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(GetModuleHandleW(L"VarnelQELRoots.dll"), path, MAX_PATH);
    return path;
}

/// A version resource with a block of numbers, or without one.
std::vector<uint16_t> versionResource(const VS_FIXEDFILEINFO* info)
{
    const size_t units = info == nullptr ? 0 : sizeof(*info) / 2;
    std::vector<uint16_t> block(20 + units);
    block[0] = static_cast<uint16_t>(block.size() * 2);
    block[1] = static_cast<uint16_t>(units * 2);
    const wchar_t key[] = L"VS_VERSION_INFO";
    memcpy(&block[3], key, sizeof key);
    if (info != nullptr)
    {
        memcpy(&block[20], info, sizeof(*info));
    }
    return block;
}

/// A copy of the library with another version resource.
std::unique_ptr<TestFile> fileWith(std::vector<uint16_t> resource)
{
    auto file = std::make_unique<TestFile>(L".dll");
    CopyFileW(libraryPath().c_str(), file->widePath().c_str(), FALSE);
    const HANDLE update = BeginUpdateResourceW(file->widePath().c_str(), TRUE);
    const BOOL replaced = UpdateResourceW(update, MAKEINTRESOURCEW(16), MAKEINTRESOURCEW(1), 0x0409, resource.data(),
                                          static_cast<DWORD>(resource.size() * 2));
    EXPECT_TRUE(replaced && EndUpdateResourceW(update, FALSE));
    return file;
}

std::unique_ptr<TestFile> fileOfVersion(WORD major, WORD minor, WORD build, WORD revision)
{
    VS_FIXEDFILEINFO info = {};
    info.dwSignature = 0xFEEF04BD;
    info.dwStrucVersion = 0x10000;
    info.dwFileVersionMS = static_cast<DWORD>(MAKELONG(minor, major));
    info.dwFileVersionLS = static_cast<DWORD>(MAKELONG(revision, build));
    return fileWith(versionResource(&info));
}

int readVersion(const std::wstring& path, std::wstring& version)
{
    qelString name(path.c_str());
    qelString text(version.c_str());
    const int result = qelLogfile::GetFileVersion(name, text);
    EXPECT_EQ(name, qelString(path.c_str()));
    version = text.getStringW();
    return result;
}

void expectNoVersion(const std::wstring& path)
{
    std::wstring version = L"unchanged";
    EXPECT_EQ(readVersion(path, version), 0);
    EXPECT_EQ(version, L"unchanged");
}

void expectVersion(const std::wstring& path, const std::wstring& expected)
{
    std::wstring version = L"replaced";
    EXPECT_EQ(readVersion(path, version), 1);
    EXPECT_EQ(version, expected);
}

TEST(qelLogfileGetFileVersion, ReadsTheVersionOfThisLibrary)
{
    expectVersion(libraryPath(), widened(projectVersion()));
}

TEST(qelLogfileGetFileVersion, FillsMinorToTwoDigitsAndBuildAndRevisionToFour)
{
    expectVersion(fileOfVersion(1, 2, 3, 4)->widePath(), L"1.02.0003.0004");
    expectVersion(fileOfVersion(10, 0, 19041, 1)->widePath(), L"10.00.19041.0001");
    expectVersion(fileOfVersion(0, 0, 0, 0)->widePath(), L"0.00.0000.0000");
    expectVersion(fileOfVersion(65535, 65534, 65533, 65532)->widePath(), L"65535.65534.65533.65532");
}

TEST(qelLogfileGetFileVersion, ReadsTheVersionOfASystemLibrary)
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(GetModuleHandleW(L"kernel32.dll"), path, MAX_PATH);
    const std::string expected = versionOf(path);
    EXPECT_FALSE(expected.empty());
    expectVersion(path, widened(expected));
}

TEST(qelLogfileGetFileVersion, TakesOneTextForBoth)
{
    qelString text(libraryPath().c_str());
    EXPECT_EQ(qelLogfile::GetFileVersion(text, text), 1);
    EXPECT_EQ(text.getStringW(), widened(projectVersion()));
}

TEST(qelLogfileGetFileVersion, ReturnsZeroAndKeepsTheTextWithoutAVersionResource)
{
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    expectNoVersion(program);
    expectNoVersion(TestFile("no program at all").widePath());
    expectNoVersion(TestFile("").widePath());
}

TEST(qelLogfileGetFileVersion, ReturnsZeroAndKeepsTheTextWithoutAFile)
{
    expectNoVersion(TestFile().widePath());
    expectNoVersion(L"");
    expectNoVersion(L"c:\\");
    expectNoVersion(std::wstring(1000, L'n'));
}

TEST(qelLogfileGetFileVersion, ReturnsZeroAndKeepsTheTextWithoutABlockOfNumbers)
{
    expectNoVersion(fileWith(versionResource(nullptr))->widePath());
    const ImportHook query("VerQueryValueW", &findBlockOfNoSize);
    expectNoVersion(libraryPath());
}

TEST(qelLogfileGetFileVersion, ReturnsZeroAndKeepsTheTextWhenTheSystemRefuses)
{
    {
        const ImportHook read("GetFileVersionInfoW", &refuseVersionInfo);
        expectNoVersion(libraryPath());
    }
    const ImportHook query("VerQueryValueW", &refuseQuery);
    expectNoVersion(libraryPath());
}

TEST(qelLogfileListModules, ShowsWhatTheSystemReports)
{
    const TestFile file;
    qelLogfile::listModules(file.path());
    EXPECT_EQ(file.get(), expectedHeading() + expectedRows());
}

TEST(qelLogfileListModules, ShowsThisLibraryWithItsVersion)
{
    const TestFile file;
    qelLogfile::listModules(file.path());
    EXPECT_NE(file.get().find(padded(projectVersion(), 16) + narrow(libraryPath()) + "\r\n"), std::string::npos);
}

TEST(qelLogfileListModules, ShowsTheLowHalfOfHighAddresses)
{
    const uintptr_t base = reinterpret_cast<uintptr_t>(GetModuleHandleW(L"VarnelQELRoots.dll"));
    ASSERT_GT(base, 0xFFFFFFFFu);
    const TestFile file;
    qelLogfile::listModules(file.path());
    const std::string row = "\n0x" + hex(static_cast<DWORD>(base & 0xFFFFFFFF), 8) + "  0x";
    EXPECT_NE(file.get().find(row), std::string::npos);
}

TEST(qelLogfileListModules, LeavesTheVersionEmptyForAModuleWithoutOne)
{
    const TestFile file;
    qelLogfile::listModules(file.path());
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    EXPECT_NE(file.get().find(std::string(17, ' ') + narrow(program)), std::string::npos);
}

TEST(qelLogfileListModules, StartsAFreshFileEachTime)
{
    const TestFile file("old");
    qelLogfile::listModules(file.path());
    const std::string first = file.get();
    qelLogfile::listModules(file.path());
    EXPECT_EQ(file.get(), first);
    EXPECT_EQ(first.find("PID : "), first.rfind("PID : "));
    EXPECT_EQ(first.find("old"), std::string::npos);
}

TEST(qelLogfileListModules, NeedsNoSwitch)
{
    ASSERT_EQ(qelLogfile::getLogStatus(), 0);
    const TestFile file;
    qelLogfile::listModules(file.path());
    EXPECT_TRUE(file.exists());
}

TEST(qelLogfileListModules, WritesToTheCommonLogWithoutAName)
{
    const wchar_t common[] = L"c:\\Orvalis.log";
    DeleteFileW(common);
    qelLogfile::listModules(L"");
    WIN32_FILE_ATTRIBUTE_DATA info = {};
    EXPECT_TRUE(GetFileAttributesExW(common, GetFileExInfoStandard, &info));
    EXPECT_EQ(info.nFileSizeLow, (expectedHeading() + expectedRows()).size());
    DeleteFileW(common);
}

TEST(qelLogfileListModules, ClosesSnapshotsAndFile)
{
    const TestFile file;
    const Snapshots snapshots;
    qelLogfile::listModules(file.path());
    EXPECT_EQ(Snapshots::asked, 2);
    EXPECT_EQ(Snapshots::leftOpen(), 0u);
    const HANDLE alone = CreateFileW(file.widePath().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(alone, INVALID_HANDLE_VALUE);
    CloseHandle(alone);
}

TEST(qelLogfileListModules, LeavesTheFileAloneWithoutASnapshotOfProcesses)
{
    const TestFile file("kept");
    const Snapshots snapshots(TH32CS_SNAPPROCESS);
    qelLogfile::listModules(file.path());
    EXPECT_EQ(file.get(), "kept");
    EXPECT_EQ(Snapshots::asked, 1);
    EXPECT_EQ(Snapshots::leftOpen(), 0u);
}

TEST(qelLogfileListModules, LeavesTheFileAloneWhenTheProcessIsNotFound)
{
    const TestFile file("kept");
    const Snapshots snapshots;
    {
        const ImportHook first("Process32FirstW", &noProcess);
        qelLogfile::listModules(file.path());
    }
    EXPECT_EQ(file.get(), "kept");
    EXPECT_EQ(Snapshots::leftOpen(), 0u);
    const ImportHook first("Process32FirstW", &idleProcess);
    const ImportHook next("Process32NextW", &noProcess);
    qelLogfile::listModules(file.path());
    EXPECT_EQ(file.get(), "kept");
    EXPECT_EQ(Snapshots::leftOpen(), 0u);
}

TEST(qelLogfileListModules, WritesTheHeadingOnlyWithoutASnapshotOfModules)
{
    const TestFile file("old");
    const Snapshots snapshots(TH32CS_SNAPMODULE);
    qelLogfile::listModules(file.path());
    EXPECT_EQ(file.get(), expectedHeading());
    EXPECT_EQ(Snapshots::asked, 2);
    EXPECT_EQ(Snapshots::leftOpen(), 0u);
}

TEST(qelLogfileListModules, TriesAgainWhileModulesComeAndGo)
{
    const TestFile file;
    const Snapshots snapshots(TH32CS_SNAPMODULE, ERROR_BAD_LENGTH, 3);
    qelLogfile::listModules(file.path());
    EXPECT_EQ(Snapshots::asked, 5);
    EXPECT_EQ(Snapshots::leftOpen(), 0u);
    EXPECT_EQ(file.get(), expectedHeading() + expectedRows());
}

TEST(qelLogfileListModules, TriesTenTimes)
{
    const TestFile file;
    const Snapshots snapshots(TH32CS_SNAPMODULE, ERROR_BAD_LENGTH);
    qelLogfile::listModules(file.path());
    // One for the processes.
    EXPECT_EQ(Snapshots::asked, 1 + 10);
    EXPECT_EQ(file.get(), expectedHeading());
}

TEST(qelLogfileListModules, SkipsWhatCannotBeWritten)
{
    const TestFile folder;
    ASSERT_TRUE(CreateDirectoryW(folder.widePath().c_str(), nullptr));
    const Snapshots snapshots;
    qelLogfile::listModules(folder.path());
    qelLogfile::listModules(L"Z:\\no\\such\\folder\\a.log");
    EXPECT_EQ(Snapshots::leftOpen(), 0u);
}

// Another program sees each row as soon as it is written: the file is closed when the next module is looked at.
std::wstring listing;
size_t longest = 0;

DWORD WINAPI watchRows(LPCWSTR path, LPDWORD unused)
{
    const HANDLE alone = CreateFileW(listing.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(alone, INVALID_HANDLE_VALUE);
    const size_t size = GetFileSize(alone, nullptr);
    CloseHandle(alone);
    EXPECT_GT(size, longest);
    longest = size;
    return GetFileVersionInfoSizeW(path, unused);
}

TEST(qelLogfileListModules, ClosesTheFileAfterEachRow)
{
    const TestFile file;
    listing = file.widePath();
    longest = 0;
    const ImportHook query("GetFileVersionInfoSizeW", &watchRows);
    qelLogfile::listModules(file.path());
    EXPECT_GT(longest, expectedHeading().size());
}

// Another program has locked the whole log: the listing waits once, not for every row.

double milliseconds()
{
    LARGE_INTEGER now = {};
    LARGE_INTEGER second = {};
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&second);
    return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(second.QuadPart);
}

BOOL WINAPI refuseLock(HANDLE, DWORD, DWORD, DWORD, DWORD, OVERLAPPED*)
{
    SetLastError(ERROR_LOCK_VIOLATION);
    return FALSE;
}

TEST(qelLogfileListModules, WaitsOnceForALockedLog)
{
    const TestFile file;
    const ImportHook lock("LockFileEx", &refuseLock);
    const double begin = milliseconds();
    qelLogfile::listModules(file.path());
    const double lockedOut = milliseconds() - begin;
    const std::string rows = expectedRows();
    EXPECT_EQ(file.get(), expectedHeading() + rows);
    const auto lines = static_cast<double>(std::count(rows.begin(), rows.end(), '\n'));
    ASSERT_GT(lines, 10);
    // 20 ms for each row would be more, whatever the rows themselves take.
    EXPECT_LT(lockedOut, 20 * lines) << lines << " rows";
}
} // namespace
