// The version that hosts are compiled against, and what the system says about the built DLL.

#include "qelString.h"
#include "qelVersion.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

namespace
{
const char kText[] = QEL_VERSION_TEXT;

std::wstring pathOfTheDll()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(GetModuleHandleW(L"VarnelQELRoots.dll"), path, MAX_PATH);
    return path;
}

std::vector<char> versionOfTheDll()
{
    const std::wstring path = pathOfTheDll();
    std::vector<char> version(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(version.size()), version.data());
    return version;
}

std::wstring stated(const wchar_t* name)
{
    const std::vector<char> version = versionOfTheDll();
    void* text = nullptr;
    UINT length = 0;
    const std::wstring path = std::wstring(L"\\StringFileInfo\\040904B0\\") + name;
    return VerQueryValueW(version.data(), path.c_str(), &text, &length) ? static_cast<const wchar_t*>(text) : L"";
}

TEST(qelVersion, TextIsMadeOfTheNumbers)
{
    EXPECT_EQ(kText, std::to_string(QEL_VERSION_MAJOR) + "." + std::to_string(QEL_VERSION_MINOR) + "." +
                         std::to_string(QEL_VERSION_PATCH));
}

TEST(qelVersion, TextJoinsWithWideLiterals)
{
    EXPECT_EQ(std::wstring(L"version " QEL_VERSION_TEXT), L"version " + std::wstring(kText, kText + strlen(kText)));
}

TEST(qelVersion, IsTheVersionOfTheProject)
{
    EXPECT_STREQ(QEL_VERSION_TEXT, QEL_TEST_PROJECT_VERSION);
}

TEST(qelVersion, NumbersOfTheDllAreTheHeaders)
{
    // So that this program imports the DLL.
    ASSERT_NE(qelString::m_repEmpty, nullptr);
    const std::vector<char> version = versionOfTheDll();
    void* found = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(version.data(), L"\\", &found, &length));
    const VS_FIXEDFILEINFO& info = *static_cast<const VS_FIXEDFILEINFO*>(found);
    for (const DWORD* halves : {&info.dwFileVersionMS, &info.dwProductVersionMS})
    {
        EXPECT_EQ(HIWORD(halves[0]), QEL_VERSION_MAJOR);
        EXPECT_EQ(LOWORD(halves[0]), QEL_VERSION_MINOR);
        EXPECT_EQ(HIWORD(halves[1]), QEL_VERSION_PATCH);
        EXPECT_EQ(LOWORD(halves[1]), 0);
    }
}

TEST(qelVersion, TextsOfTheDllAreTheHeaders)
{
    ASSERT_NE(qelString::m_repEmpty, nullptr);
    EXPECT_EQ(stated(L"FileVersion"), L"" QEL_VERSION_TEXT);
    EXPECT_EQ(stated(L"ProductVersion"), L"" QEL_VERSION_TEXT);
}
} // namespace
