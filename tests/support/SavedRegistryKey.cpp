#include "support/SavedRegistryKey.h"

#include <stdexcept>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace
{
void require(LSTATUS status, const char* what)
{
    if (status != ERROR_SUCCESS)
    {
        throw std::runtime_error(std::string(what) + " failed: " + std::to_string(status));
    }
}

/// A key of the registry, made where it is missing.
class Key
{
public:
    Key(HKEY hive, const std::wstring& path, REGSAM view)
    {
        require(RegCreateKeyExW(hive, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, &m_key, nullptr),
                "creating a key");
    }

    ~Key() { RegCloseKey(m_key); }

    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    operator HKEY() const { return m_key; }

private:
    HKEY m_key = nullptr;
};
} // namespace

qelTest::SavedRegistryKey::SavedRegistryKey(HKEY hive, const std::wstring& path, REGSAM view)
    : m_hive(hive)
    , m_path(path)
    , m_view(view)
{
    for (size_t end = path.size(); end != std::wstring::npos; end = path.rfind(L'\\', end - 1))
    {
        if (!exists(path.substr(0, end)))
        {
            m_missing.push_back(path.substr(0, end));
        }
    }
    if (m_missing.empty())
    {
        keepValues();
        removeKey();
    }
}

qelTest::SavedRegistryKey::~SavedRegistryKey()
{
    try
    {
        if (exists())
        {
            removeKey();
        }
        for (const std::wstring& path : m_missing)
        {
            RegDeleteKeyExW(m_hive, path.c_str(), m_view, 0);
        }
        if (m_missing.empty())
        {
            create();
        }
        for (const Value& value : m_values)
        {
            setBytes(value.name, value.type, value.data.data(), value.data.size());
        }
    }
    catch (const std::exception& error)
    {
        fprintf(stderr, "cannot restore a registry key: %s\n", error.what());
        abort();
    }
}

const std::wstring& qelTest::SavedRegistryKey::path() const
{
    return m_path;
}

bool qelTest::SavedRegistryKey::exists() const
{
    return exists(m_path);
}

void qelTest::SavedRegistryKey::create() const
{
    const Key made(m_hive, m_path, m_view);
}

void qelTest::SavedRegistryKey::setText(const std::wstring& name, const std::wstring& text) const
{
    setBytes(name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

void qelTest::SavedRegistryKey::setNumber(const std::wstring& name, DWORD number) const
{
    setBytes(name, REG_DWORD, &number, sizeof(number));
}

void qelTest::SavedRegistryKey::setBytes(const std::wstring& name, DWORD type, const void* data, size_t bytes) const
{
    // The registry adds a terminator to text when it finds one behind the data, so there must be none.
    std::vector<BYTE> guarded(bytes + 2 * sizeof(wchar_t), 0xFF);
    if (bytes != 0)
    {
        memcpy(guarded.data(), data, bytes);
    }
    const Key key(m_hive, m_path, m_view);
    require(RegSetValueExW(key, name.c_str(), 0, type, guarded.data(), static_cast<DWORD>(bytes)), "writing a value");
    DWORD stored = 0;
    require(RegQueryValueExW(key, name.c_str(), nullptr, nullptr, nullptr, &stored), "measuring a value");
    if (stored != bytes)
    {
        throw std::runtime_error("the registry changed the size of a value");
    }
}

void qelTest::SavedRegistryKey::remove(const std::wstring& name) const
{
    const Key key(m_hive, m_path, m_view);
    require(RegDeleteValueW(key, name.c_str()), "deleting a value");
}

bool qelTest::SavedRegistryKey::exists(const std::wstring& path) const
{
    HKEY key = nullptr;
    const bool found = RegOpenKeyExW(m_hive, path.c_str(), 0, KEY_READ | m_view, &key) == ERROR_SUCCESS;
    if (found)
    {
        RegCloseKey(key);
    }
    return found;
}

void qelTest::SavedRegistryKey::keepValues()
{
    const Key key(m_hive, m_path, m_view);
    DWORD longestName = 0;
    DWORD longestData = 0;
    DWORD count = 0;
    require(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, &longestName,
                             &longestData, nullptr, nullptr),
            "asking about a key");
    for (DWORD i = 0; i < count; ++i)
    {
        std::vector<wchar_t> name(longestName + 1);
        std::vector<BYTE> data(longestData + 1);
        DWORD nameLength = static_cast<DWORD>(name.size());
        DWORD bytes = static_cast<DWORD>(data.size());
        DWORD type = 0;
        require(RegEnumValueW(key, i, name.data(), &nameLength, nullptr, &type, data.data(), &bytes),
                "listing the values of a key");
        data.resize(bytes);
        m_values.push_back({name.data(), type, data});
    }
}

void qelTest::SavedRegistryKey::removeKey() const
{
    require(RegDeleteKeyExW(m_hive, m_path.c_str(), m_view, 0), "deleting a key");
}
