// What the library finds on this machine.
#pragma once

#include <string>
#include <vector>

/// What a test connection to a data source came to.
enum class Connection
{
    untested, ///< there is nothing to connect with
    connected,
    fileMissing,
    failed,
};

struct DataSource
{
    std::wstring name;
    std::wstring platform;
    bool isUsable; ///< the library gave a connection string for it
    Connection connection;
    std::wstring connectionString; ///< its password, where there is one, made unreadable
};

struct Module
{
    unsigned long long base;
    unsigned long size;   ///< in bytes
    std::wstring version; ///< empty for a file without one
    std::wstring path;
};

struct Findings
{
    std::wstring binaries; ///< folders without a trailing backslash, empty when they are not registered
    std::wstring data;
    unsigned long culture;
    std::wstring language;

    int installedDrivers;
    int defaultDriver;   ///< 1 installed, -1 not installed, 0 not known
    std::wstring driver; ///< for new connection strings

    std::wstring configurationFile; ///< as it was named, empty for the installation's own
    std::vector<DataSource> dataSources;
    std::vector<Module> modules; ///< of this process, after all connections were tried
};

/// What to look at.
struct Request
{
    std::wstring configurationFile; ///< empty for the installation's own
    std::wstring platform = L"x64";
    std::vector<std::wstring> names; ///< of data sources
};

/// Asks the library for everything, and connects to each data source. Takes as long as their drivers do.
Findings look(const Request& request);

/// Whether every data source is usable and was connected to.
bool allConnected(const Findings& findings);
