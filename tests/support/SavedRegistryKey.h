// Registry keys for tests, given back as they were.
#ifndef QEL_TEST_SAVED_REGISTRY_KEY_H
#define QEL_TEST_SAVED_REGISTRY_KEY_H

#include <windows.h>

#include <string>
#include <vector>

namespace qelTest
{
/**
 * A key of the real registry that a test may use. It is missing at first: its values are kept aside and it is deleted.
 * At the end the values come back, and the key and those of its parents that did not exist before are deleted. Throws
 * std::runtime_error when the registry refuses.
 */
class SavedRegistryKey
{
public:
    /// `view` is KEY_WOW64_64KEY or KEY_WOW64_32KEY.
    SavedRegistryKey(HKEY hive, const std::wstring& path, REGSAM view = KEY_WOW64_64KEY);
    ~SavedRegistryKey();

    SavedRegistryKey(const SavedRegistryKey&) = delete;
    SavedRegistryKey& operator=(const SavedRegistryKey&) = delete;

    const std::wstring& path() const;
    bool exists() const;

    /// Each makes the key where it is missing.
    void create() const;
    void setText(const std::wstring& name, const std::wstring& text) const;
    void setNumber(const std::wstring& name, DWORD number) const;

    /// Stores the bytes as they are, terminated or not.
    void setBytes(const std::wstring& name, DWORD type, const void* data, size_t bytes) const;

    void remove(const std::wstring& name) const;

private:
    struct Value
    {
        std::wstring name;
        DWORD type;
        std::vector<BYTE> data;
    };

    bool exists(const std::wstring& path) const;
    void keepValues();
    void removeKey() const;

    HKEY m_hive;
    std::wstring m_path;
    REGSAM m_view;
    std::vector<std::wstring> m_missing; ///< this key and its parents that did not exist, the deepest first
    std::vector<Value> m_values;         ///< what the key held
};
} // namespace qelTest

#endif
