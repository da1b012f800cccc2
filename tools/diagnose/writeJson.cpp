#include "write.h"

#include "Console.h"

namespace
{
/// A JSON string. What is no Unicode becomes U+FFFD on the way out.
std::wstring quoted(const std::wstring& text)
{
    std::wstring result = L"\"";
    for (const wchar_t unit : text)
    {
        if (unit < L' ')
        {
            result += L"\\u00" + hexadecimal(unit).substr(8);
            continue;
        }
        if (unit == L'"' || unit == L'\\')
        {
            result += L'\\';
        }
        result += unit;
    }
    return result + L'"';
}

std::wstring orNull(const std::wstring& text)
{
    return text.empty() ? L"null" : quoted(text);
}

const wchar_t* nameOf(Connection connection)
{
    switch (connection)
    {
    case Connection::untested:
        return L"\"untested\"";
    case Connection::connected:
        return L"\"connected\"";
    case Connection::fileMissing:
        return L"\"fileMissing\"";
    default:
        return L"\"failed\"";
    }
}

const wchar_t* nameOfDefaultDriver(int state)
{
    return state == 1 ? L"\"installed\"" : state == -1 ? L"\"notInstalled\"" : L"\"unknown\"";
}

/// An array of what `write` makes of each element, one a line.
template <class T, class Write> std::wstring arrayOf(const std::vector<T>& elements, Write write)
{
    std::wstring result = L"[";
    const wchar_t* separator = L"\n    ";
    for (const T& element : elements)
    {
        result += separator + write(element);
        separator = L",\n    ";
    }
    return result + (elements.empty() ? L"]" : L"\n  ]");
}

std::wstring writeSource(const DataSource& source)
{
    return L"{\"name\": " + quoted(source.name) + L", \"platform\": " + quoted(source.platform) + L", \"usable\": " +
           (source.isUsable ? L"true" : L"false") + L", \"connection\": " + nameOf(source.connection) +
           L", \"connectionString\": " + orNull(source.connectionString) + L"}";
}

std::wstring writeModule(const Module& module)
{
    return L"{\"base\": \"" + hexadecimal(module.base) + L"\", \"size\": " + std::to_wstring(module.size) +
           L", \"version\": " + orNull(module.version) + L", \"path\": " + quoted(module.path) + L"}";
}
} // namespace

void writeJson(const Findings& findings)
{
    print(L"{\n  \"installation\": {\"binaries\": " + orNull(findings.binaries) + L", \"data\": " +
          orNull(findings.data) + L", \"language\": " + quoted(findings.language) + L", \"culture\": " +
          std::to_wstring(findings.culture) + L"},\n  \"drivers\": {\"installed\": " +
          std::to_wstring(findings.installedDrivers) + L", \"default\": " +
          nameOfDefaultDriver(findings.defaultDriver) + L", \"inUse\": " + orNull(findings.driver) +
          L"},\n  \"configurationFile\": " + orNull(findings.configurationFile) + L",\n  \"dataSources\": " +
          arrayOf(findings.dataSources, writeSource) + L",\n  \"modules\": " + arrayOf(findings.modules, writeModule) +
          L"\n}\n");
}
