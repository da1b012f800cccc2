#include "support/ImportHook.h"

#include "support/ImportTable.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace
{
void** entryOf(void* module, const std::string& name)
{
    for (const qelTest::Import& import : qelTest::importsOf(module))
    {
        if (import.name == name)
        {
            return import.entry;
        }
    }
    throw std::runtime_error("the module does not import " + name);
}
} // namespace

qelTest::ImportHook::ImportHook(const char* name, void* replacement)
    : ImportHook(GetModuleHandleW(L"VarnelQELRoots.dll"), name, replacement)
{
}

qelTest::ImportHook::ImportHook(void* module, const char* name, void* replacement)
    : m_entry(entryOf(module, name))
    , m_original(*m_entry)
{
    setImport(m_entry, replacement);
}

qelTest::ImportHook::~ImportHook()
{
    setImport(m_entry, m_original);
}
