// qelDiagnose: what the library finds on this machine.
#include "write.h"

#include "Console.h"

#include "qelVersion.h"

namespace
{
const int kAllConnected = 0;
const int kNotAllConnected = 1;
const int kUsageError = 2;

const wchar_t* const kHelp =
    L"usage: qelDiagnose [--config FILE] [--platform PLATFORM] [--json] [NAME ...]\n"
    L"\n"
    L"Shows what VarnelQELRoots.dll, which must lie beside this program, finds on this machine: where the\n"
    L"installation lies, its language and ODBC drivers; for each data source NAME the connection string, whether\n"
    L"the library found one that can be used (1) or not (0), and what a test connection came to; and the modules\n"
    L"loaded by then, drivers included. Run it as the user who has the problem. It changes nothing. Passwords are\n"
    L"not shown.\n"
    L"\n"
    L"  --config FILE        configuration file; without it, Configuration\\DatabaseConfiguration.xml below the data\n"
    L"                       folder\n"
    L"  --platform PLATFORM  platform of the data sources; without it, x64\n"
    L"  --json               print one JSON object instead\n"
    L"  --version            print the version this program was built for\n"
    L"  --help               show this text\n"
    L"  NAME                 data source; without any, the three that are built in\n"
    L"\n"
    L"Output to a file or a pipe is UTF-8. Exit status: 0 when every data source was connected to, 1 when one was\n"
    L"not, 2 when the command line is wrong.\n";

struct Options
{
    Request request;
    bool wantsHelp = false;
    bool wantsVersion = false;
    bool wantsJson = false;
    std::wstring mistake; ///< what is wrong with the command line; empty when nothing is
};

Options parse(const std::vector<std::wstring>& arguments)
{
    Options options;
    for (size_t i = 0; i < arguments.size(); ++i)
    {
        const std::wstring& argument = arguments[i];
        if (argument == L"--help")
        {
            options.wantsHelp = true;
        }
        else if (argument == L"--version")
        {
            options.wantsVersion = true;
        }
        else if (argument == L"--json")
        {
            options.wantsJson = true;
        }
        else if (argument == L"--config" || argument == L"--platform")
        {
            if (++i == arguments.size())
            {
                options.mistake = L"a value is missing behind " + argument;
                break;
            }
            (argument == L"--config" ? options.request.configurationFile : options.request.platform) = arguments[i];
        }
        else if (argument.compare(0, 1, L"-") == 0)
        {
            options.mistake = L"there is no option " + argument;
            break;
        }
        else
        {
            options.request.names.push_back(argument);
        }
    }
    if (options.request.names.empty())
    {
        options.request.names = {L"PelionProfiles2020", L"QELMapping2020", L"PelionCurrentProject"};
    }
    return options;
}
} // namespace

// NOLINTNEXTLINE(misc-use-internal-linkage): the runtime starts it
int wmain(int argc, wchar_t** argv)
{
    const Options options = parse(std::vector<std::wstring>(argv + 1, argv + argc));
    if (options.wantsHelp)
    {
        print(kHelp);
        return 0;
    }
    if (!options.mistake.empty())
    {
        printError(L"qelDiagnose: " + options.mistake + L"\n\n" + kHelp);
        return kUsageError;
    }
    if (options.wantsVersion)
    {
        print(L"qelDiagnose " QEL_VERSION_TEXT L"\n");
        return 0;
    }
    const Findings findings = look(options.request);
    options.wantsJson ? writeJson(findings) : writeText(findings);
    return allConnected(findings) ? kAllConnected : kNotAllConnected;
}
