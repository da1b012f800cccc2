#include "support/ImportHook.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace
{
template <class T> T* at(HMODULE module, size_t offset)
{
    return reinterpret_cast<T*>(reinterpret_cast<char*>(module) + offset);
}

// Place of the function's address in the import table; null when the module does not import it.
void** importEntry(HMODULE module, const std::string& name)
{
    const auto* dos = at<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = at<IMAGE_NT_HEADERS>(module, static_cast<size_t>(dos->e_lfanew));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* dll = at<IMAGE_IMPORT_DESCRIPTOR>(module, imports); dll->Name != 0; ++dll)
    {
        const auto* names = at<IMAGE_THUNK_DATA>(module, dll->OriginalFirstThunk);
        auto** entries = at<void*>(module, dll->FirstThunk);
        for (size_t i = 0; names[i].u1.AddressOfData != 0; ++i)
        {
            if (!IMAGE_SNAP_BY_ORDINAL(names[i].u1.Ordinal) &&
                name == at<IMAGE_IMPORT_BY_NAME>(module, names[i].u1.AddressOfData)->Name)
            {
                return &entries[i];
            }
        }
    }
    return nullptr;
}

void write(void** entry, void* function)
{
    DWORD protection = 0;
    if (!VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &protection))
    {
        throw std::runtime_error("the import table cannot be written");
    }
    *entry = function;
    VirtualProtect(entry, sizeof(*entry), protection, &protection);
}
} // namespace

qelTest::ImportHook::ImportHook(const char* name, void* replacement)
    : ImportHook(GetModuleHandleW(L"VarnelQELRoots.dll"), name, replacement)
{
}

qelTest::ImportHook::ImportHook(void* module, const char* name, void* replacement)
    : m_entry(importEntry(static_cast<HMODULE>(module), name))
    , m_original(nullptr)
{
    if (m_entry == nullptr)
    {
        throw std::runtime_error(std::string("the module does not import ") + name);
    }
    m_original = *m_entry;
    write(m_entry, replacement);
}

qelTest::ImportHook::~ImportHook()
{
    write(m_entry, m_original);
}
