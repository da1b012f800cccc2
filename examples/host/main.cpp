// A small host of the library: what a CAD application asks of it, command by command, from a console.
#include "Commands.h"
#include "Console.h"

#include <algorithm>

namespace
{
// NOLINTNEXTLINE(cppcoreguidelines-interfaces-global-init): where the commands are is known before what they hold
const Command* const commands[] = {
    &diagnoseCommand,
    &numberCommand,
    &sectionCommand,
    &progressCommand,
};

std::wstring usage()
{
    std::wstring text = L"usage: host COMMAND [OPTION ...]\n"
                        L"       host [COMMAND] --help\n"
                        L"\n"
                        L"Shows what the VarnelQELRoots library does for an application.\n"
                        L"\n"
                        L"Commands:\n";
    for (const Command* command : commands)
    {
        std::wstring name = command->name;
        name.resize(12, L' ');
        text += L"  " + name + command->summary + L"\n";
    }
    return text;
}

const Command* findCommand(const std::wstring& name)
{
    for (const Command* command : commands)
    {
        if (name == command->name)
        {
            return command;
        }
    }
    return nullptr;
}

bool asksForHelp(const Arguments& options)
{
    return std::find(options.begin(), options.end(), L"--help") != options.end();
}
} // namespace

// NOLINTNEXTLINE(misc-use-internal-linkage): the runtime starts it
int wmain(int argc, wchar_t** argv)
{
    Arguments options(argv + 1, argv + argc);
    if (options.empty())
    {
        printError(usage());
        return kUsageError;
    }
    if (options.front() == L"--help")
    {
        print(usage());
        return 0;
    }

    const Command* command = findCommand(options.front());
    if (command == nullptr)
    {
        printError(L"host: there is no command \"" + options.front() + L"\"\n\n" + usage());
        return kUsageError;
    }
    options.erase(options.begin());
    if (asksForHelp(options))
    {
        print(command->help);
        return 0;
    }
    return command->run(options);
}
