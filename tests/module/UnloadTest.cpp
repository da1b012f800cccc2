// The DLL loaded and unloaded while the process runs.

#include <gtest/gtest.h>

#include <windows.h>

namespace
{
TEST(qelUnload, EverythingComesAndGoesWithTheModule)
{
    for (int round = 0; round < 3; ++round)
    {
        ASSERT_EQ(GetModuleHandleW(L"VarnelQELRoots.dll"), nullptr);
        const HMODULE module = LoadLibraryW(L"VarnelQELRoots.dll");
        ASSERT_NE(module, nullptr);
        EXPECT_EQ(GetModuleHandleW(L"VarnelQELRoots.dll"), module);
        EXPECT_TRUE(FreeLibrary(module));
    }
    EXPECT_EQ(GetModuleHandleW(L"VarnelQELRoots.dll"), nullptr);
}

size_t committedMemory()
{
    size_t committed = 0;
    MEMORY_BASIC_INFORMATION region;
    const unsigned char* at = nullptr;
    while (VirtualQuery(at, &region, sizeof region) == sizeof region)
    {
        committed += region.State == MEM_COMMIT ? region.RegionSize : 0;
        at = static_cast<const unsigned char*>(region.BaseAddress) + region.RegionSize;
    }
    return committed;
}

TEST(qelUnload, GivesTheMemoryBack)
{
    // It stays: that of Wine 10 loses 768 KB whenever it goes with the library.
    const HMODULE commonControls = LoadLibraryW(L"comctl32.dll");
    FreeLibrary(LoadLibraryW(L"VarnelQELRoots.dll"));
    const size_t before = committedMemory();
    for (int round = 0; round < 10; ++round)
    {
        FreeLibrary(LoadLibraryW(L"VarnelQELRoots.dll"));
    }
    // The two scratch buffers alone are one and a half megabytes a time.
    EXPECT_LT(committedMemory(), before + 1024 * 1024);
    FreeLibrary(commonControls);
}
} // namespace
