// What the library does when a system call fails: one table for the tests and for the page docs/system-calls.md.
#ifndef QEL_TEST_OPERATIONS_H
#define QEL_TEST_OPERATIONS_H

#include "qelString.h"

#include "support/ImportedCalls.h"
#include "support/SavedRegistryKey.h"
#include "support/TemporaryFolder.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace qelTest
{
/// What an operation works on: registry keys of its own, and a folder.
struct Machine
{
    SavedRegistryKey userInstallation{HKEY_CURRENT_USER, L"Software\\Kelvara\\Orvalis\\2020"};
    SavedRegistryKey machineInstallation{HKEY_LOCAL_MACHINE, L"Software\\Kelvara\\Orvalis\\2020"};
    SavedRegistryKey userConnections{HKEY_CURRENT_USER, L"Software\\Kelvara\\Varnel\\DatabaseConnections"};
    SavedRegistryKey machineConnections{HKEY_LOCAL_MACHINE, L"Software\\Kelvara\\Varnel\\DatabaseConnections"};
    SavedRegistryKey drivers{HKEY_LOCAL_MACHINE, L"Software\\ODBC\\ODBCINST.INI\\ODBC Drivers"};
    SavedRegistryKey missing{HKEY_LOCAL_MACHINE, L"Software\\Kelvara\\Varnel\\FailingSystemCalls"};
    TemporaryFolder folder;
    int boxes = 0; ///< message boxes that the library has asked for
};

/// The one that operations use; there is none while the page is written.
extern Machine* machine;
extern ImportedCalls* importedCalls;

/// What comes out of an operation where one of its calls fails.
struct Outcome
{
    std::string call;   ///< the function, followed by ": " and how it fails where that makes a difference
    std::string which;  ///< numbers of calls with commas, "last", "all" for all together, or empty for any of these
    std::string result; ///< or several, with " or " between them, where that depends on what the machine has
    bool certain;       ///< whether the operation always makes this call
};

/// One use of the library, and what comes out of it, in words. What is said about it here comes from the headers.
class Operation
{
public:
    Operation(const char* name, const char* normal, std::function<std::string()> run);

    Operation& fails(const char* call, const char* result, const char* which = "");

    /// The result is the normal one, whichever of these calls fail.
    Operation& ignores(std::initializer_list<const char*> calls);

    /// The same for calls that depend on which thread is faster.
    Operation& ignoresAtTimes(std::initializer_list<const char*> calls);

    /// The library calls these only until they have succeeded once.
    Operation& untilSuccess(std::initializer_list<const char*> calls);

    const std::string& name() const { return m_name; }
    const std::string& normal() const { return m_normal; }
    const std::vector<Outcome>& outcomes() const { return m_outcomes; }
    const std::vector<std::string>& callsUntilSuccess() const { return m_untilSuccess; }
    std::string run() const { return m_run(); }

    /// The expected outcome where the call with this number fails, of so many; null where none is stated. Number 0
    /// stands for all calls.
    const Outcome* expected(const std::string& call, const std::string& how, long number, long count) const;

private:
    std::string m_name;
    std::string m_normal;
    std::function<std::string()> m_run;
    std::vector<Outcome> m_outcomes;
    std::vector<std::string> m_untilSuccess;
};

struct Area
{
    const char* name;
    std::vector<Operation> operations;
};

const std::vector<Area>& areas();

Area registryOperations();
Area fileOperations();
Area logOperations();
Area dataSourceOperations();
Area windowOperations();
Area threadOperations();
Area textOperations();

/// ASCII text, or "no text", without a call of the library that could fail.
std::string plain(const wchar_t* text);
std::string plain(const qelString& text);

/// "result, text"
std::string outcome(long long result, const std::string& text);
std::string outcome(long long result, const qelString& text);
std::string outcome(long long result, const char* text);
} // namespace qelTest

#endif
