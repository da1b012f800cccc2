// What the machine is, and the part of its registry that the tests write to.
#ifndef TESTKIT_MACHINE_H
#define TESTKIT_MACHINE_H

#include <string>

namespace testkit
{
bool isWine();

/// "Windows 10.0.19045", with "Wine 8.0 as" in front under Wine.
std::string systemName();

/// Whether this process may write to the machine's hive. Tried, since Wine 10 denies that it is elevated and lets it.
bool mayWriteToMachineHive();

/// The place of the application's values, where it is installed on this machine; else nothing.
std::string installedApplication();

/**
 * The registry as it was: the list of ODBC drivers, of which the tests make their own for a while, is kept in a file
 * and comes back at the end. What tests have left below the application's keys, which must be empty at first, is
 * removed.
 */
class SavedRegistry
{
public:
    /// Keeps the list in `folder`. Throws std::runtime_error when that fails.
    explicit SavedRegistry(const std::wstring& folder);
    ~SavedRegistry();

    SavedRegistry(const SavedRegistry&) = delete;
    SavedRegistry& operator=(const SavedRegistry&) = delete;

    /// Brings back the list that a run before has left in `folder` when it was interrupted; whether there was one.
    static bool restore(const std::wstring& folder);

private:
    std::wstring m_folder;
};
} // namespace testkit

#endif
