// RAII owner of a registry key. Not part of the public interface.
#ifndef QEL_REGISTRY_KEY_H
#define QEL_REGISTRY_KEY_H

#include "qelString.h"
#include "strings/Text.h"

#include <windows.h>

/// Opens a key and closes it. If it cannot be opened, every query fails.
class RegistryKey
{
public:
    /**
     * Opens `path` below `hive` for reading; when that fails and `create` is not 0, with all rights, creating it if
     * missing. `view` is KEY_WOW64_32KEY for the 32-bit view, or 0.
     */
    RegistryKey(HKEY hive, const wchar_t* path, int create = 0, REGSAM view = 0)
    {
        HKEY key = nullptr;
        if (RegOpenKeyExW(hive, path, 0, KEY_READ | view, &key) == ERROR_SUCCESS ||
            (create != 0 && RegCreateKeyExW(hive, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS | view,
                                            nullptr, &key, nullptr) == ERROR_SUCCESS))
        {
            m_key = key;
        }
    }

    ~RegistryKey()
    {
        if (m_key != nullptr)
        {
            RegCloseKey(m_key);
        }
    }

    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    /// Reads a value of any type as a string; false leaves `value` alone.
    bool query(const wchar_t* name, qelString& value) const
    {
        TextBuffer buffer;
        DWORD type = REG_SZ;
        DWORD bytes = sizeof(buffer.text);
        if (m_key == nullptr || RegQueryValueExW(m_key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer.text),
                                                 &bytes) != ERROR_SUCCESS)
        {
            return false;
        }
        // The data need not be null-terminated, and may fill the buffer.
        buffer.text[kTextCapacity - 1] = 0;
        value = buffer.text;
        return true;
    }

    /// Reads a value of up to 4 bytes, padded with zeros; false leaves `value` alone.
    bool query(const wchar_t* name, DWORD& value) const
    {
        DWORD number = 0;
        DWORD bytes = sizeof(number);
        if (m_key == nullptr ||
            RegQueryValueExW(m_key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &bytes) != ERROR_SUCCESS)
        {
            return false;
        }
        value = number;
        return true;
    }

private:
    /// Longest readable string in units, terminator included.
    static const size_t kTextCapacity = 4096;

    /// Wiped on destruction: connection strings hold passwords.
    struct TextBuffer
    {
        ~TextBuffer() { qelText::scrub(text, sizeof(text)); }

        wchar_t text[kTextCapacity] = {};
    };

    HKEY m_key = nullptr; ///< null when it could not be opened
};

#endif
