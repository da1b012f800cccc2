#include "support/ImportHook.h"

#include "support/ImportTable.h"

#include <stdexcept>
#include <string>

namespace
{
void** entryOf(const std::string& name)
{
    for (const qelTest::Import& import : qelTest::importsOfLibrary())
    {
        if (import.name == name)
        {
            return import.entry;
        }
    }
    throw std::runtime_error("the DLL does not import " + name);
}
} // namespace

qelTest::ImportHook::ImportHook(const char* name, void* replacement)
    : m_entry(entryOf(name))
    , m_original(*m_entry)
{
    setImport(m_entry, replacement);
}

qelTest::ImportHook::~ImportHook()
{
    setImport(m_entry, m_original);
}
