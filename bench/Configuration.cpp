// The registry and the catalogue of data sources.

#include "Families.h"
#include "Plain.h"

#include "qelDataSourcesUtilities.h"
#include "qelRegistry.h"
#include "support/SavedRegistryKey.h"
#include "support/TemporaryFolder.h"

#include <windows.h>

#ifdef QEL_BENCH_PUGIXML
#include <pugixml.hpp>
#endif

#include <cwchar>
#include <cwctype>
#include <unordered_map>

using namespace qelBench;
using std::string;
using std::wstring;

namespace
{
const wchar_t kBenchKey[] = L"Software\\Kelvara\\Benchmark";

wstring readRawly(const wchar_t* key, const wchar_t* name)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, key, 0, KEY_READ, &opened) != ERROR_SUCCESS)
    {
        return L"";
    }
    wchar_t text[4096] = {};
    DWORD bytes = sizeof text - sizeof(wchar_t);
    RegQueryValueExW(opened, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &bytes);
    RegCloseKey(opened);
    return text;
}

void addRegistry(Table& table)
{
    Row row{"read a registry value", "29 units", "raw calls", 1.05,
            "Both sides make the same calls of the system, whose times vary: 0.80 to 6.3 in one run."};
    row.clock = Clock::wall;
    table.add(row, [] {
        const auto key = std::make_shared<const qelTest::SavedRegistryKey>(HKEY_CURRENT_USER, kBenchKey);
        key->setText(L"Folder", sections(29));
        const auto ours = [key, path = qelString(kBenchKey), name = qelString(L"Folder")] {
            qelString text;
            qelRegistry::getRegValueCurrentUser(path, name, text);
            return text;
        };
        return sides(ours, [] { return readRawly(kBenchKey, L"Folder"); });
    });
}

wstring nameOf(long entry)
{
    return L"Catalogue of profiles " + std::to_wstring(entry);
}

wstring connectionOf(long entry)
{
    // With a built-in name in it the text is handed out as it is.
    return L"DSN=QELMapping2020;SERVER=office;DATABASE=" + std::to_wstring(entry);
}

string configurationOf(long entries)
{
    wstring text = L"<?xml version=\"1.0\"?>\n<Root>\n<Orvalis>\n";
    for (long i = 0; i < entries; ++i)
    {
        text += L"<DataSource Name=\"" + nameOf(i) + L"\" Platform=\"x64\" Value=\"" + connectionOf(i) + L"\"/>\n";
    }
    text += L"</Orvalis>\n</Root>\n";
    return narrowed(text);
}

/// Without a driver the library asks the system for one at every question.
class InstalledDriver
{
public:
    InstalledDriver()
        : m_key(HKEY_LOCAL_MACHINE, L"Software\\ODBC\\ODBCINST.INI\\ODBC Drivers")
    {
        m_key.setText(L"Varnel ODBC Driver", L"Installed");
        qelDataSourcesUtilities::readInstalledOdbcDrivers();
    }

private:
    qelTest::SavedRegistryKey m_key;
};

wstring folded(const wstring& text)
{
    wstring result(text);
    for (wchar_t& c : result)
    {
        c = static_cast<wchar_t>(towlower(c));
    }
    return result;
}

struct Catalogue
{
    explicit Catalogue(long entries)
    {
        ours = qelDataSourcesUtilities(folder.write(L"sources.xml", configurationOf(entries)).c_str());
        for (long i = 0; i < entries; ++i)
        {
            theirs[folded(nameOf(i)) + L"\nx64"] = connectionOf(i);
        }
    }

    InstalledDriver driver;
    qelTest::TemporaryFolder folder;
    qelDataSourcesUtilities ours;
    std::unordered_map<wstring, wstring> theirs;
};

void addLookUp(Table& table, long entries, bool missing)
{
    Row row{missing ? "look up a data source, missing" : "look up a data source, last", sizeText(entries, "entries"),
            "hash map by folded name", 3};
    row.reason = missing ? "An unknown name is reported to the debugger, in three calls. Without them 0.15." : "";
    row.clock = Clock::wall;
    table.add(row, [entries, missing] {
        const auto d = std::make_shared<Catalogue>(entries);
        const wstring name = nameOf(missing ? entries : entries - 1);
        const auto ours = [d, ourName = qelString(name.c_str()), platform = qelString(L"x64")] {
            qelString text;
            d->ours.getConnectionString(ourName, text, platform);
            return text;
        };
        const auto theirs = [d, name] {
            const auto found = d->theirs.find(folded(name) + L"\nx64");
            return found == d->theirs.end() ? wstring() : found->second;
        };
        return sides(ours, theirs);
    });
}

/// Reads the catalogue anew with each call: two files in turns, since one that is known is not read again.
class Reader
{
public:
    explicit Reader(long entries)
        : m_last(nameOf(entries - 1).c_str())
    {
        const string bytes = configurationOf(entries);
        m_paths[0] = m_folder.write(L"one.xml", bytes).c_str();
        m_paths[1] = m_folder.write(L"two.xml", bytes).c_str();
    }

    qelString read()
    {
        m_turn ^= 1U;
        qelDataSourcesUtilities sources(m_paths[m_turn]);
        qelString text;
        sources.getConnectionString(m_last, text, L"x64");
        return text;
    }

    wstring path() const { return m_paths[0].getStringW(); }

private:
    InstalledDriver m_driver;
    qelTest::TemporaryFolder m_folder;
    qelString m_paths[2];
    qelString m_last;
    unsigned m_turn = 0;
};

#ifdef QEL_BENCH_PUGIXML
struct Source
{
    wstring name;
    wstring platform;
    wstring connection;
};

wstring readByPugixml(const wstring& path, const wstring& wanted)
{
    pugi::xml_document document;
    document.load_file(path.c_str());
    std::vector<Source> sources;
    for (const pugi::xml_node& node : document.child(L"Root").child(L"Orvalis").children(L"DataSource"))
    {
        sources.push_back(
            {node.attribute(L"Name").value(), node.attribute(L"Platform").value(), node.attribute(L"Value").value()});
    }
    for (const Source& source : sources)
    {
        if (_wcsicmp(source.name.c_str(), wanted.c_str()) == 0 && _wcsicmp(source.platform.c_str(), L"x64") == 0)
        {
            return source.connection;
        }
    }
    return L"";
}

void addReading(Table& table)
{
    const long entries = 4000;
    Row row{"read the catalogue, file included", sizeText(entries, "entries"), "pugixml", 1.5};
    row.clock = Clock::wall;
    table.add(row, [entries] {
        const auto d = std::make_shared<Reader>(entries);
        const wstring path = d->path();
        const wstring name = nameOf(entries - 1);
        return sides([d] { return d->read(); }, [d, path, name] { return readByPugixml(path, name); });
    });
}
#endif
} // namespace

void qelBench::addConfiguration(Table& table)
{
    table.family("Configuration");
    addRegistry(table);
    for (const long entries : {100L, 4000L})
    {
        addLookUp(table, entries, false);
        addLookUp(table, entries, true);
    }
#ifdef QEL_BENCH_PUGIXML
    addReading(table);
#endif
    table.add(Growth{"read a catalogue of n / 8 entries", 1.15}, [](long n) {
        const auto d = std::make_shared<Reader>(n / 8);
        return repeated([d] { return d->read(); });
    });
}
