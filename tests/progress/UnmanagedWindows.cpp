// Under Wine, on a display without a window manager, each window that goes would wait two seconds for the manager's
// answer. Its driver reads this setting when a program makes its first window.

#include "support/SavedRegistryKey.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <memory>

namespace
{
class UnmanagedWindows : public testing::Environment
{
public:
    void SetUp() override
    {
        if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr)
        {
            m_key = std::make_unique<qelTest::SavedRegistryKey>(
                HKEY_CURRENT_USER, L"Software\\Wine\\AppDefaults\\qelProgressTest.exe\\X11 Driver");
            m_key->setText(L"Managed", L"N");
        }
    }

    void TearDown() override { m_key.reset(); }

private:
    std::unique_ptr<qelTest::SavedRegistryKey> m_key;
};

testing::Environment* const unmanagedWindows = testing::AddGlobalTestEnvironment(new UnmanagedWindows);
} // namespace
