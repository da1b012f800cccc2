// The DLL as the loader sees it.

#include "qelString.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

namespace
{
HMODULE library()
{
    // Named by something in it, so that this program imports it.
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(qelString::m_repEmpty), &module);
    return module;
}

template <class T> const T* at(DWORD offset)
{
    return reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(library()) + offset);
}

const IMAGE_NT_HEADERS& headers()
{
    return *at<IMAGE_NT_HEADERS>(static_cast<DWORD>(at<IMAGE_DOS_HEADER>(0)->e_lfanew));
}

DWORD directory(size_t entry)
{
    return headers().OptionalHeader.DataDirectory[entry].VirtualAddress;
}

std::vector<std::string> importedDlls()
{
    std::vector<std::string> names;
    for (const auto* dll = at<IMAGE_IMPORT_DESCRIPTOR>(directory(IMAGE_DIRECTORY_ENTRY_IMPORT)); dll->Name != 0; ++dll)
    {
        names.push_back(at<char>(dll->Name));
    }
    return names;
}

std::vector<std::string> exportedNames()
{
    const auto& exports = *at<IMAGE_EXPORT_DIRECTORY>(directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
    const DWORD* offsets = at<DWORD>(exports.AddressOfNames);
    std::vector<std::string> names;
    for (DWORD i = 0; i < exports.NumberOfNames; ++i)
    {
        names.push_back(at<char>(offsets[i]));
    }
    return names;
}

TEST(qelImage, IsTheLibrary)
{
    EXPECT_EQ(library(), GetModuleHandleW(L"VarnelQELRoots.dll"));
    ASSERT_NE(library(), nullptr);
    EXPECT_EQ(headers().FileHeader.Machine, IMAGE_FILE_MACHINE_AMD64);
}

TEST(qelImage, ImportsSystemDllsOnly)
{
    wchar_t system[MAX_PATH];
    ASSERT_NE(GetSystemDirectoryW(system, MAX_PATH), 0U);
    const std::vector<std::string> names = importedDlls();
    ASSERT_FALSE(names.empty());
    for (const std::string& name : names)
    {
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(GetModuleHandleA(name.c_str()), path, MAX_PATH);
        EXPECT_EQ(_wcsnicmp(path, system, wcslen(system)), 0) << name;
    }
}

TEST(qelImage, ImportsNoCompilerRuntime)
{
    for (const std::string& name : importedDlls())
    {
        EXPECT_NE(name.compare(0, 3, "lib"), 0) << name;
    }
}

TEST(qelImage, IsHardened)
{
    const WORD characteristics = headers().OptionalHeader.DllCharacteristics;
    EXPECT_NE(characteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE, 0);
    EXPECT_NE(characteristics & IMAGE_DLLCHARACTERISTICS_NX_COMPAT, 0);
    EXPECT_NE(characteristics & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA, 0);
    EXPECT_EQ(headers().FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED, 0);
    EXPECT_NE(directory(IMAGE_DIRECTORY_ENTRY_BASERELOC), 0U);
}

#if defined(_MSC_VER)
TEST(qelImage, GuardsItsCallsThroughPointers)
{
    EXPECT_NE(headers().OptionalHeader.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_GUARD_CF, 0);
    ASSERT_NE(directory(IMAGE_DIRECTORY_ENTRY_LOAD_CONFIG), 0U);
    const auto& configuration = *at<IMAGE_LOAD_CONFIG_DIRECTORY64>(directory(IMAGE_DIRECTORY_ENTRY_LOAD_CONFIG));
    EXPECT_NE(configuration.GuardFlags & IMAGE_GUARD_CF_INSTRUMENTED, 0U);
    EXPECT_NE(configuration.GuardFlags & IMAGE_GUARD_CF_FUNCTION_TABLE_PRESENT, 0U);
    EXPECT_NE(configuration.GuardCFFunctionTable, 0U);
    EXPECT_NE(configuration.GuardCFFunctionCount, 0U);
    EXPECT_NE(configuration.GuardCFCheckFunctionPointer, 0U);
}
#endif

TEST(qelImage, NoSectionIsWritableAndExecutable)
{
    const auto* sections = reinterpret_cast<const IMAGE_SECTION_HEADER*>(
        reinterpret_cast<const unsigned char*>(&headers().OptionalHeader) + headers().FileHeader.SizeOfOptionalHeader);
    for (WORD i = 0; i < headers().FileHeader.NumberOfSections; ++i)
    {
        const DWORD both = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
        EXPECT_NE(sections[i].Characteristics & both, both) << i;
    }
}

#if defined(__GNUC__)
TEST(qelImage, CarriesNoTimeOfBuild)
{
    EXPECT_EQ(headers().FileHeader.TimeDateStamp, 0U);
    EXPECT_EQ(at<IMAGE_EXPORT_DIRECTORY>(directory(IMAGE_DIRECTORY_ENTRY_EXPORT))->TimeDateStamp, 0U);
}
#endif

TEST(qelImage, ExportsNothingOfTheCompilerRuntime)
{
    const std::vector<std::string> names = exportedNames();
    EXPECT_FALSE(names.empty());
    for (const std::string& name : names)
    {
        for (const char* foreign : {"_ZSt", "_ZNSt", "_ZNKSt", "_ZN9__gnu_cxx", "_ZN10__cxxabiv", "__cxa", "__gxx",
                                    "_Znw", "_Zna", "_Zdl", "_Zda", "pthread", "DllMain", "N5boost"})
        {
            EXPECT_EQ(name.find(foreign), std::string::npos) << name;
        }
    }
}

TEST(qelImage, CarriesAVersionResource)
{
    EXPECT_NE(FindResourceW(library(), MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16)), nullptr);
}
} // namespace
