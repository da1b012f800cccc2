/**
 * @file
 * @brief Reads the Windows registry.
 */
#ifndef QEL_REGISTRY_H
#define QEL_REGISTRY_H

#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Reads the Windows registry; all members are static.
 * @ingroup configuration
 *
 * Reads strings and 32-bit numbers from the machine's and the user's hive, and the product's settings: culture and
 * language of the user interface, folders of binaries and data, registered connection strings.
 *
 * getRegValue() and getPathBinary() read the machine's hive only, getRegValueCurrentUser() the user's only.
 * getCurrentCultureId(), getCurrentLanguage(), getPathData() and getDatabaseConnectionsString() ask both, and the
 * user's value wins.
 *
 * @par Example
 * @code
 * // "DataPath" of the installation is "D:\Data\".
 * qelRegistry::getPathData();                                               // == L"D:\\Data"
 *
 * qelString folder = L"C:\\Temp";                                            // stays when nothing is registered
 * qelRegistry::getRegValue(L"Software\\Kelvara\\Plotting", L"Spool", folder); // == 0
 * folder;                                                                   // == L"C:\\Temp"
 * @endcode
 *
 * @par Threads
 * Not thread-safe, like qelString; only getCurrentCultureId() and getCurrentLanguage() are thread-safe.
 *
 * @par Cost
 * Every call reads the registry; nothing is cached.
 *
 * @par Failure
 * Nothing is logged. A missing key or value and denied access give the result 0 and leave the argument as it was, or
 * give the fallback that the member names.
 *
 * @par Keys and rights
 * Keys are paths relative to the hive, without its name: `Software\Kelvara\Orvalis\2020`. An empty value name is the
 * key's default value. Keys are opened for reading. Only when that fails and `create` is not 0 is the key opened with
 * all rights, and created if missing; no member ever writes a value.
 *
 * @par Values
 * Strings are read whatever the type of the value: environment references are not expanded, and other data are taken as
 * raw 16-bit units, up to the first 0. A string has at most 4095 units; a value of more than 8192 bytes is not read,
 * and of 4096 units without a terminator the last is dropped. Numbers are read whatever the type too: a value of less
 * than 4 bytes is padded with zeros, a longer one is not read.
 */
class QEL_API qelRegistry
{
public:
    qelRegistry() = delete;

    /// @name The machine's hive (HKEY_LOCAL_MACHINE)
    /// The user's values do not count. `view32` chooses the 32-bit view of the registry.
    /// @{

    /**
     * Reads a string; 1 when it was read, else 0. Whatever the result, one trailing backslash is then removed from
     * `value`, unless that is all it holds.
     */
    static int getRegValue(const qelString& key, const qelString& valueName, qelString& value, int create = 0,
                           bool view32 = false);

    /// Reads a number; 1 when it was read, else 0.
    static int getRegValue(const qelString& key, const qelString& valueName, unsigned long& value, int create = 0,
                           bool view32 = false);
    /// @}

    /// @name The user's hive (HKEY_CURRENT_USER)
    /// The machine's values do not count.
    /// @{

    /// Reads a string exactly as stored; 1 when it was read, else 0.
    static int getRegValueCurrentUser(const qelString& key, const qelString& valueName, qelString& value,
                                      int create = 0);

    /// Reads a number; 1 when it was read, else 0.
    static int getRegValueCurrentUser(const qelString& key, const qelString& valueName, int& value, int create = 0);
    /// @}

    /// @name Culture and language of the user interface
    /// @{

    /**
     * Culture identifier (LCID) of the value "Language", the user's before the machine's. Without either it is 9,
     * neutral English.
     */
    static unsigned long getCurrentCultureId();

    /**
     * Primary language identifier of that culture: 5 Czech, 7 German, 12 French, 19 Dutch, 21 Polish, 25 Russian, else
     * 9 English. Deliberately only cs-CZ, de-DE, fr-FR, fr-CA, nl-NL, pl-PL and ru-RU are known; other variants of
     * these languages count as English.
     */
    static unsigned long getCurrentLanguage();
    /// @}

    /// @name The installation
    /// @{

    /// The key that holds the values "Language", "BinPath" and "DataPath".
    static const qelString getRegPathEnvironment();

    /// The machine's "BinPath", with up to two trailing backslashes removed; empty when it cannot be read.
    static qelString getPathBinary(bool view32 = false);

    /**
     * "DataPath", the user's before the machine's; empty when neither can be read. One trailing backslash is removed
     * from the user's, up to two from the machine's. The user's counts even when empty; one too long to read counts as
     * missing. `view32` applies to the machine's only.
     */
    static qelString getPathData(bool view32 = false);

    /// The connection string registered as `name`, the user's (even when empty) before the machine's; empty when there
    /// is none.
    static qelString getDatabaseConnectionsString(qelString name);
    /// @}

private:
    /// Longest path that Windows accepts, terminator included.
    enum : int
    {
        kMaxPath = 260
    };

    static const wchar_t RegPathEnvironment[kMaxPath]; ///< key of the installation's values
    static const wchar_t RegDatabase[kMaxPath];        ///< key of the registered connection strings
};

#endif
