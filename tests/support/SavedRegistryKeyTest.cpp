#include "support/SavedRegistryKey.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
using qelTest::SavedRegistryKey;

const wchar_t kPath[] = L"Software\\VarnelQELRootsTest\\Saved\\Key";

bool exists(const wchar_t* path)
{
    HKEY key = nullptr;
    const bool found = RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
    RegCloseKey(key);
    return found;
}

TEST(SavedRegistryKey, LeavesNothingOfWhatWasMissing)
{
    {
        const SavedRegistryKey key(HKEY_CURRENT_USER, kPath);
        key.setText(L"v", L"text");
        EXPECT_TRUE(exists(kPath));
    }
    EXPECT_FALSE(exists(L"Software\\VarnelQELRootsTest"));
}

TEST(SavedRegistryKey, GivesBackWhatWasThere)
{
    const SavedRegistryKey outer(HKEY_CURRENT_USER, kPath);
    outer.setText(L"text", L"first");
    outer.setBytes(L"bytes", REG_BINARY, "abc", 3);
    {
        const SavedRegistryKey inner(HKEY_CURRENT_USER, kPath);
        EXPECT_FALSE(inner.exists());
        inner.setText(L"text", L"second");
        inner.setText(L"other", L"x");
    }
    wchar_t text[16] = {};
    DWORD size = sizeof(text);
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, kPath, L"text", RRF_RT_REG_SZ, nullptr, text, &size), ERROR_SUCCESS);
    EXPECT_STREQ(text, L"first");
    char bytes[16] = {};
    size = sizeof(bytes);
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, kPath, L"bytes", RRF_RT_REG_BINARY, nullptr, bytes, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(std::string(bytes, size), "abc");
    EXPECT_NE(RegGetValueW(HKEY_CURRENT_USER, kPath, L"other", RRF_RT_ANY, nullptr, nullptr, nullptr), ERROR_SUCCESS);
}
} // namespace
