// "host sources": where the installation lies, which drivers it has, and what becomes of its data sources.
#include "Commands.h"
#include "Console.h"

#include "qelDataSourcesUtilities.h"
#include "qelRegistry.h"

namespace
{
struct Options
{
    std::wstring configurationFile; ///< empty for the installation's own
    std::wstring platform = L"x64";
    std::vector<std::wstring> names;
};

bool parse(const Arguments& arguments, Options& options)
{
    for (size_t i = 0; i < arguments.size(); ++i)
    {
        const std::wstring& argument = arguments[i];
        if (argument == L"--config" || argument == L"--platform")
        {
            if (++i == arguments.size())
            {
                printError(L"host sources: a value is missing behind " + argument + L"\n");
                return false;
            }
            (argument == L"--config" ? options.configurationFile : options.platform) = arguments[i];
        }
        else if (argument.compare(0, 2, L"--") == 0)
        {
            printError(L"host sources: there is no option " + argument + L"\n");
            return false;
        }
        else
        {
            options.names.push_back(argument);
        }
    }
    if (options.names.empty())
    {
        options.names = {L"PelionProfiles2020", L"QELMapping2020", L"PelionCurrentProject"};
    }
    return true;
}

std::wstring orNone(const qelString& text)
{
    return text.isEmpty() ? L"(none)" : text.getStringW();
}

std::wstring languageName()
{
    switch (qelRegistry::getCurrentLanguage())
    {
    case 5:
        return L"Czech";
    case 7:
        return L"German";
    case 12:
        return L"French";
    case 19:
        return L"Dutch";
    case 21:
        return L"Polish";
    case 25:
        return L"Russian";
    default:
        return L"English";
    }
}

std::wstring defaultDriverState()
{
    switch (qelDataSourcesUtilities::defaultODBCDriverIsInstalled())
    {
    case 1:
        return L"installed";
    case -1:
        return L"not installed, the alternate driver takes its place";
    default:
        return L"unknown, taken for installed";
    }
}

std::wstring connectionTest(const qelString& connectionString)
{
    if (connectionString.isEmpty())
    {
        return L"not tested";
    }
    switch (qelDataSourcesUtilities::testConnection(connectionString))
    {
    case 1:
        return L"connected";
    case 0:
        return L"database file missing";
    default:
        return L"other failure";
    }
}

void printInstallation()
{
    const std::wstring culture = std::to_wstring(qelRegistry::getCurrentCultureId());
    print(L"Installation\n");
    print(L"  Binaries        " + orNone(qelRegistry::getPathBinary()) + L"\n");
    print(L"  Data            " + orNone(qelRegistry::getPathData()) + L"\n");
    print(L"  Language        " + languageName() + L" (culture " + culture + L")\n");
}

void printDrivers()
{
    qelString chosen;
    qelDataSourcesUtilities::getOdbcDriverName(chosen);
    print(L"ODBC drivers\n");
    print(L"  Installed       " + std::to_wstring(qelDataSourcesUtilities::readInstalledOdbcDrivers()) + L"\n");
    print(L"  Default driver  " + defaultDriverState() + L"\n");
    print(L"  In use          " + orNone(chosen) + L"\n");
}

void printSources(const Options& options)
{
    qelDataSourcesUtilities sources(options.configurationFile.c_str());
    print(L"Data sources, configuration file " +
          (options.configurationFile.empty() ? L"of the installation" : options.configurationFile) + L"\n");

    Table table({L"  NAME", L"PLATFORM", L"RESULT", L"CONNECTION TEST", L"CONNECTION STRING"});
    for (const std::wstring& name : options.names)
    {
        qelString connectionString;
        const int result = sources.getConnectionString(name.c_str(), connectionString, options.platform.c_str());
        table.add({L"  " + name, options.platform, std::to_wstring(result), connectionTest(connectionString),
                   orNone(connectionString)});
    }
    table.print();
}

int run(const Arguments& arguments)
{
    Options options;
    if (!parse(arguments, options))
    {
        return kUsageError;
    }
    printInstallation();
    print(L"\n");
    printDrivers();
    print(L"\n");
    printSources(options);
    return 0;
}
} // namespace

const Command sourcesCommand = {
    L"sources",
    L"connection strings of data sources, and whether they can be opened",
    L"usage: host sources [--config FILE] [--platform PLATFORM] [NAME ...]\n"
    L"\n"
    L"Shows where the installation lies, its language and ODBC drivers, and for each data source NAME the connection\n"
    L"string, whether the library found one that can be used (1) or not (0), and what a test connection came to.\n"
    L"\n"
    L"  --config FILE        configuration file; without it, Configuration\\DatabaseConfiguration.xml below the data\n"
    L"                       folder\n"
    L"  --platform PLATFORM  platform of the data sources; without it, x64\n"
    L"  NAME                 data source; without any, the three that are built in\n"
    L"  --help               show this text\n",
    run,
};
