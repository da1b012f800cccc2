// The functions that a module imports.
#ifndef QEL_TEST_IMPORT_TABLE_H
#define QEL_TEST_IMPORT_TABLE_H

#include <string>
#include <vector>

namespace qelTest
{
/// A function that is imported by name.
struct Import
{
    std::string name;
    void** entry; ///< its place in the import table, which holds its address
};

/// All of a module, given by its handle.
std::vector<Import> importsOf(void* module);

/// Those of the DLL under test.
std::vector<Import> importsOfLibrary();

/// Puts a function into a place of the import table. Throws std::runtime_error when it cannot be written.
void setImport(void** entry, void* function);
} // namespace qelTest

#endif
