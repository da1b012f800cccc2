/**
 * @file
 * @brief The library's single way to the Windows registry.
 */
#ifndef QEL_REGISTRY_H
#define QEL_REGISTRY_H

#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Reading access to the registry; all members are static.
 * @ingroup configuration
 *
 * Reads text and 32-bit numbers from the machine's and the user's hive, and answers on top of that what the product
 * asks again and again: which culture and language the user interface has, where binaries and data lie, and which
 * connection string is registered under a name.
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
 * @par Ownership
 * Results are texts of the caller's own. No key stays open between calls.
 *
 * @par Threads
 * As qelString; getCurrentCultureId() and getCurrentLanguage() can be called on any thread.
 *
 * @par Cost
 * Every call goes to the registry and nothing is kept between calls. Ask once and keep the answer where it is needed
 * often.
 *
 * @par Failure
 * Nothing is thrown or logged. A missing key or value or a refused access gives the result 0 and leaves the value as
 * the caller set it, or else gives the fallback that the member names.
 *
 * @par Keys and rights
 * Keys are paths relative to the hive, without its name: `Software\Kelvara\Orvalis\2020`. The empty value name is a
 * key's default value. Keys are opened for reading. Only where `create` is not 0 and the key cannot be opened is it
 * asked for with all rights, and created where it does not exist; no member ever writes a value.
 *
 * @par Values
 * Text is read whatever the type of the value: environment references are not expanded, and other data come as their
 * raw bytes taken for 16-bit units, up to the first 0 unit. A text has at most 4095 units; a value of more than 8192
 * bytes is not read, and of 4096 units without a terminator the last is dropped. Numbers are values of 4 bytes,
 * whatever their type; a shorter value is completed with zeros, a longer one is not read.
 */
class QEL_API qelRegistry
{
public:
    qelRegistry() = delete;

    /// @name The machine's hive (HKEY_LOCAL_MACHINE)
    /// A value of the user's does not count here. `view32` chooses the 32-bit view of the registry.
    /// @{

    /**
     * Reads a text; 1 when it was read, else 0. Whatever the result, `value` then loses one trailing backslash, unless
     * it is nothing but that backslash.
     */
    static int getRegValue(const qelString& key, const qelString& valueName, qelString& value, int create = 0,
                           bool view32 = false);

    /// Reads a number; 1 when it was read, else 0.
    static int getRegValue(const qelString& key, const qelString& valueName, unsigned long& value, int create = 0,
                           bool view32 = false);
    /// @}

    /// @name The user's hive (HKEY_CURRENT_USER)
    /// A value of the machine's does not count here.
    /// @{

    /// Reads a text exactly as it is stored; 1 when it was read, else 0.
    static int getRegValueCurrentUser(const qelString& key, const qelString& valueName, qelString& value,
                                      int create = 0);

    /// Reads a number; 1 when it was read, else 0.
    static int getRegValueCurrentUser(const qelString& key, const qelString& valueName, int& value, int create = 0);
    /// @}

    /// @name Culture and language of the user interface
    /// @{

    /**
     * Culture identifier (LCID) of the value "Language", the user's before the machine's. Without either it is 9, the
     * neutral code of English.
     */
    static unsigned long getCurrentCultureId();

    /**
     * Primary language identifier of that culture: 5 Czech, 7 German, 12 French, 19 Dutch, 21 Polish, 25 Russian, else
     * 9 English. Deliberately only cs-CZ, de-DE, fr-FR, fr-CA, nl-NL, pl-PL and ru-RU are known: other variants of
     * these languages are English.
     */
    static unsigned long getCurrentLanguage();
    /// @}

    /// @name The installation
    /// @{

    /// The key that holds the values "Language", "BinPath" and "DataPath".
    static const qelString getRegPathEnvironment();

    /// The machine's "BinPath" without up to two trailing backslashes; empty when it cannot be read.
    static qelString getPathBinary(bool view32 = false);

    /**
     * "DataPath", the user's before the machine's; empty when neither can be read. The user's loses one trailing
     * backslash, the machine's up to two. The user's counts even when it is empty; one too long to read counts as
     * missing. `view32` concerns the machine's only.
     */
    static qelString getPathData(bool view32 = false);

    /// The connection string registered as `name`, the user's (even when empty) before the machine's; empty without.
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
