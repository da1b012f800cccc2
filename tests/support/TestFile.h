// Files of one test, made, read and deleted beside the C runtime.
#ifndef QEL_TEST_FILE_H
#define QEL_TEST_FILE_H

#include "qelString.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace qelTest
{
/// Bytes given as text, zeros included: bytes("\xFF\xFE" "A\0").
template <size_t Size> std::string bytes(const char (&text)[Size])
{
    return std::string(text, Size - 1);
}

/// The same text as UTF-16LE bytes, without a mark.
inline std::string utf16(const std::wstring& text)
{
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

/// The bytes of a file, which may be open for writing.
inline std::string contentOf(const std::wstring& path)
{
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return "no such file";
    }
    std::string content(GetFileSize(file, nullptr), 0);
    DWORD got = 0;
    ReadFile(file, &content[0], static_cast<DWORD>(content.size()), &got, nullptr);
    CloseHandle(file);
    content.resize(got);
    return content;
}

/// A name in the folder for temporary files; whatever bears it is deleted at the end.
class TestFile
{
public:
    explicit TestFile(const wchar_t* suffix = L".tmp")
    {
        wchar_t folder[MAX_PATH + 1] = {};
        GetTempPathW(MAX_PATH + 1, folder);
        static int made = 0;
        m_path = std::wstring(folder) + L"qel" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                 std::to_wstring(++made) + suffix;
        DeleteFileW(m_path.c_str());
    }

    explicit TestFile(const std::string& content)
        : TestFile()
    {
        set(content);
    }

    ~TestFile()
    {
        DeleteFileW(m_path.c_str());
        RemoveDirectoryW(m_path.c_str());
    }

    TestFile(const TestFile&) = delete;
    TestFile& operator=(const TestFile&) = delete;

    qelString path() const { return qelString(m_path.c_str()); }

    const std::wstring& widePath() const { return m_path; }

    bool exists() const { return GetFileAttributesW(m_path.c_str()) != INVALID_FILE_ATTRIBUTES; }

    void set(const std::string& content) const
    {
        const HANDLE file = CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD written = 0;
        const bool done = WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr) != 0;
        CloseHandle(file);
        if (!done)
        {
            throw std::runtime_error("the file of a test could not be written");
        }
    }

    std::string get() const { return contentOf(m_path); }

private:
    std::wstring m_path;
};
} // namespace qelTest

#endif
