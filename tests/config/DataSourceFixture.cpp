#include "config/DataSourceFixture.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>

namespace
{
bool underWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// Never the same twice in one process, so that the catalogue takes every file for a new one.
std::wstring unusedName(const wchar_t* stem)
{
    static int used = 0;
    return stem + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++used);
}
} // namespace

qelTest::TemporaryFolder::TemporaryFolder()
    : m_path((std::filesystem::current_path() / unusedName(L"sources-")).wstring())
{
    std::filesystem::create_directories(m_path);
}

qelTest::TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
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

std::wstring qelTest::driverPath(const std::wstring& path)
{
    if (!underWine())
    {
        return path;
    }
    std::wstring host = path.substr(2);
    std::replace(host.begin(), host.end(), L'\\', L'/');
    return host;
}

std::string qelTest::emptyDatabase()
{
    const char kVersion = 1;
    std::string page("\x00\x01\x00\x00Standard Jet DB\x00", 20);
    page += kVersion;
    page.resize(4096, '\0');
    return page;
}

std::string qelTest::utf16(const std::string& text)
{
    std::string bytes = "\xFF\xFE";
    for (char c : text)
    {
        bytes += c;
        bytes += '\0';
    }
    return bytes;
}

std::string qelTest::configuration(const std::string& elements)
{
    return "<?xml version=\"1.0\"?>\r\n<Root>\r\n<Orvalis>\r\n" + elements + "\r\n</Orvalis>\r\n</Root>\r\n";
}

bool qelTest::operator==(const Answer& a, const Answer& b)
{
    return a.result == b.result && a.connection == b.connection;
}

std::ostream& qelTest::operator<<(std::ostream& stream, const Answer& answer)
{
    return stream << answer.result << ' ' << testing::PrintToString(answer.connection);
}

qelTest::DataSourceTest::DataSourceTest()
    : m_userInstallation(HKEY_CURRENT_USER, kInstallationKey)
    , m_machineInstallation(HKEY_LOCAL_MACHINE, kInstallationKey)
    , m_userConnections(HKEY_CURRENT_USER, kConnectionsKey)
    , m_machineConnections(HKEY_LOCAL_MACHINE, kConnectionsKey)
{
    m_userInstallation.setText(L"DataPath", L"D:\\Data");
}

void qelTest::DataSourceTest::use(const std::wstring& path)
{
    m_sources = std::make_unique<qelDataSourcesUtilities>(path.c_str());
}

std::wstring qelTest::DataSourceTest::configure(const std::string& content)
{
    const std::wstring path = m_folder.write(unusedName(L"configuration-") + L".xml", content);
    use(path);
    return path;
}

std::wstring qelTest::DataSourceTest::configureElements(const std::string& elements)
{
    return configure(configuration(elements));
}

qelTest::Answer qelTest::DataSourceTest::ask(const wchar_t* name, const wchar_t* platform)
{
    qelString connection = L"text from before";
    const int result = m_sources->getConnectionString(name, connection, platform);
    return {result, connection.getStringW()};
}
