#include "write.h"

#include "Console.h"

namespace
{
std::wstring orNone(const std::wstring& text)
{
    return text.empty() ? L"(none)" : text;
}

std::wstring describe(Connection connection)
{
    switch (connection)
    {
    case Connection::untested:
        return L"not tested";
    case Connection::connected:
        return L"connected";
    case Connection::fileMissing:
        return L"database file missing";
    default:
        return L"other failure";
    }
}

std::wstring describeDefaultDriver(int state)
{
    switch (state)
    {
    case 1:
        return L"installed";
    case -1:
        return L"not installed, the alternate driver takes its place";
    default:
        return L"unknown, taken for installed";
    }
}
} // namespace

std::wstring hexadecimal(unsigned long long value)
{
    std::wstring digits;
    for (; value != 0 || digits.size() < 8; value /= 16)
    {
        digits.insert(digits.begin(), L"0123456789abcdef"[value % 16]);
    }
    return L"0x" + digits;
}

void writeText(const Findings& findings)
{
    print(L"Installation\n"
          L"  Binaries        " +
          orNone(findings.binaries) + L"\n  Data            " + orNone(findings.data) + L"\n  Language        " +
          findings.language + L" (culture " + std::to_wstring(findings.culture) + L")\n\n");

    print(L"ODBC drivers\n"
          L"  Installed       " +
          std::to_wstring(findings.installedDrivers) + L"\n  Default driver  " +
          describeDefaultDriver(findings.defaultDriver) + L"\n  In use          " + orNone(findings.driver) + L"\n\n");

    print(L"Data sources, configuration file " +
          (findings.configurationFile.empty() ? L"of the installation" : findings.configurationFile) + L"\n");
    Table sources({L"  NAME", L"PLATFORM", L"RESULT", L"CONNECTION TEST", L"CONNECTION STRING"});
    for (const DataSource& source : findings.dataSources)
    {
        sources.add({L"  " + source.name, source.platform, source.isUsable ? L"1" : L"0", describe(source.connection),
                     orNone(source.connectionString)});
    }
    sources.print();

    print(L"\nModules of this program\n");
    Table modules({L"BASE", L"SIZE", L"VERSION", L"PATH"});
    for (const Module& module : findings.modules)
    {
        modules.add({hexadecimal(module.base), hexadecimal(module.size), module.version, module.path});
    }
    modules.print();
}
