#include "support/ImportHook.h"

#include "qelRegistry.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <stdexcept>

namespace
{
int calls = 0;

LSTATUS WINAPI refuse(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY)
{
    ++calls;
    return ERROR_ACCESS_DENIED;
}

TEST(ImportHook, CatchesTheCallsOfTheLibraryWhileItLives)
{
    calls = 0;
    {
        const qelTest::ImportHook hook("RegOpenKeyExW", &refuse);
        qelRegistry::getPathBinary();
        EXPECT_EQ(calls, 1);
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &key), ERROR_SUCCESS);
        RegCloseKey(key);
        EXPECT_EQ(calls, 1) << "a call of the test itself";
    }
    qelRegistry::getPathBinary();
    EXPECT_EQ(calls, 1);
}

TEST(ImportHook, RefusesAFunctionThatIsNotImported)
{
    EXPECT_THROW(qelTest::ImportHook("NoSuchFunction", &refuse), std::runtime_error);
}
} // namespace
