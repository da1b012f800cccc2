#include "qelRegistry.h"

#include "config/RegistryKey.h"

namespace
{
const unsigned long kNeutralEnglish = 9;

REGSAM viewOf(bool view32)
{
    return view32 ? KEY_WOW64_32KEY : 0;
}

// A root such as "\" keeps its only character.
void dropTrailingBackslash(qelString& path)
{
    const int length = path.length();
    if (length >= 2 && path[length - 1] == L'\\')
    {
        path = path.left(length - 1);
    }
}
} // namespace

int qelRegistry::getRegValue(const qelString& key, const qelString& valueName, qelString& value, int create,
                             bool view32)
{
    const RegistryKey opened(HKEY_LOCAL_MACHINE, key.getStringW(), create, viewOf(view32));
    qelString path(value);
    const bool read = opened.query(valueName.getStringW(), path);
    // Deliberately also after a failure: then the caller's default loses its backslash.
    dropTrailingBackslash(path);
    value = path;
    return read ? 1 : 0;
}

int qelRegistry::getRegValue(const qelString& key, const qelString& valueName, unsigned long& value, int create,
                             bool view32)
{
    const RegistryKey opened(HKEY_LOCAL_MACHINE, key.getStringW(), create, viewOf(view32));
    return opened.query(valueName.getStringW(), value) ? 1 : 0;
}

int qelRegistry::getRegValueCurrentUser(const qelString& key, const qelString& valueName, qelString& value, int create)
{
    const RegistryKey opened(HKEY_CURRENT_USER, key.getStringW(), create);
    return opened.query(valueName.getStringW(), value) ? 1 : 0;
}

int qelRegistry::getRegValueCurrentUser(const qelString& key, const qelString& valueName, int& value, int create)
{
    const RegistryKey opened(HKEY_CURRENT_USER, key.getStringW(), create);
    DWORD number = 0;
    if (!opened.query(valueName.getStringW(), number))
    {
        return 0;
    }
    value = static_cast<int>(number);
    return 1;
}

unsigned long qelRegistry::getCurrentCultureId()
{
    DWORD culture = kNeutralEnglish;
    if (!RegistryKey(HKEY_CURRENT_USER, RegPathEnvironment).query(L"Language", culture))
    {
        RegistryKey(HKEY_LOCAL_MACHINE, RegPathEnvironment).query(L"Language", culture);
    }
    return culture;
}

unsigned long qelRegistry::getCurrentLanguage()
{
    // Deliberately only these identifiers: other variants of these languages count as English.
    switch (getCurrentCultureId())
    {
    case 0x405: // cs-CZ
        return LANG_CZECH;
    case 0x407: // de-DE
        return LANG_GERMAN;
    case 0x40C: // fr-FR
    case 0xC0C: // fr-CA
        return LANG_FRENCH;
    case 0x413: // nl-NL
        return LANG_DUTCH;
    case 0x415: // pl-PL
        return LANG_POLISH;
    case 0x419: // ru-RU
        return LANG_RUSSIAN;
    default:
        return LANG_ENGLISH;
    }
}

// NOLINTNEXTLINE(readability-const-return-type): part of the exported name for hosts of Visual C++
const qelString qelRegistry::getRegPathEnvironment()
{
    return qelString(RegPathEnvironment);
}

qelString qelRegistry::getPathBinary(bool view32)
{
    qelString path;
    getRegValue(RegPathEnvironment, L"BinPath", path, 0, view32);
    dropTrailingBackslash(path);
    return path;
}

qelString qelRegistry::getPathData(bool view32)
{
    qelString path;
    if (!RegistryKey(HKEY_CURRENT_USER, RegPathEnvironment).query(L"DataPath", path))
    {
        getRegValue(RegPathEnvironment, L"DataPath", path, 0, view32);
    }
    dropTrailingBackslash(path);
    return path;
}

qelString qelRegistry::getDatabaseConnectionsString(qelString name)
{
    qelString connection;
    if (!RegistryKey(HKEY_CURRENT_USER, RegDatabase).query(name.getStringW(), connection))
    {
        RegistryKey(HKEY_LOCAL_MACHINE, RegDatabase).query(name.getStringW(), connection);
    }
    return connection;
}
