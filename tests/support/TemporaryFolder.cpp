#include "support/TemporaryFolder.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace
{
std::wstring unusedName()
{
    static int used = 0;
    return L"qel-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++used);
}
} // namespace

qelTest::TemporaryFolder::TemporaryFolder()
    : m_path((std::filesystem::current_path() / unusedName()).wstring())
{
    std::filesystem::create_directories(m_path);
}

qelTest::TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

const std::wstring& qelTest::TemporaryFolder::path() const
{
    return m_path;
}

std::wstring qelTest::TemporaryFolder::path(const std::wstring& name) const
{
    return m_path + L"\\" + name;
}

std::wstring qelTest::TemporaryFolder::write(const std::wstring& name, const std::string& bytes) const
{
    const std::filesystem::path file = path(name);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream)
    {
        throw std::runtime_error("cannot write " + file.string());
    }
    return file.wstring();
}
