#include "support/ImportTable.h"

#include <windows.h>

#include <stdexcept>

namespace
{
template <class T> T* at(HMODULE module, size_t offset)
{
    return reinterpret_cast<T*>(reinterpret_cast<char*>(module) + offset);
}
} // namespace

std::vector<qelTest::Import> qelTest::importsOf(void* handle)
{
    auto* module = static_cast<HMODULE>(handle);
    const auto* dos = at<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = at<IMAGE_NT_HEADERS>(module, static_cast<size_t>(dos->e_lfanew));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    std::vector<Import> found;
    for (auto* dll = at<IMAGE_IMPORT_DESCRIPTOR>(module, imports); dll->Name != 0; ++dll)
    {
        const auto* names = at<IMAGE_THUNK_DATA>(module, dll->OriginalFirstThunk);
        auto** entries = at<void*>(module, dll->FirstThunk);
        for (size_t i = 0; names[i].u1.AddressOfData != 0; ++i)
        {
            if (!IMAGE_SNAP_BY_ORDINAL(names[i].u1.Ordinal))
            {
                found.push_back({at<IMAGE_IMPORT_BY_NAME>(module, names[i].u1.AddressOfData)->Name, &entries[i]});
            }
        }
    }
    return found;
}

std::vector<qelTest::Import> qelTest::importsOfLibrary()
{
    return importsOf(GetModuleHandleW(L"VarnelQELRoots.dll"));
}

void qelTest::setImport(void** entry, void* function)
{
    DWORD protection = 0;
    if (!VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &protection))
    {
        throw std::runtime_error("the import table cannot be written");
    }
    *entry = function;
    VirtualProtect(entry, sizeof(*entry), protection, &protection);
}
