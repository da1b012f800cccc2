// The commands of the host, one file each.
#pragma once

#include <string>
#include <vector>

using Arguments = std::vector<std::wstring>;

/// A command that the user names first on the command line.
struct Command
{
    const wchar_t* name;
    const wchar_t* summary;               ///< one line for the list of commands
    const wchar_t* help;                  ///< what "host NAME --help" prints
    int (*run)(const Arguments& options); ///< gets what stands behind the name; returns the program's exit status
};

/// Exit status for a command line that makes no sense.
const int kUsageError = 2;

extern const Command diagnoseCommand;
extern const Command progressCommand;
extern const Command numberCommand;
extern const Command sectionCommand;
