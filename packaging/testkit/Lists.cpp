#include "Lists.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace
{
typedef std::vector<std::string> Columns;

std::string trimmed(const std::string& text)
{
    const char kBlanks[] = " \t\r";
    const size_t first = text.find_first_not_of(kBlanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

Columns columns(const std::string& line)
{
    Columns parts;
    size_t start = 0;
    for (size_t end = line.find('|'); end != std::string::npos; end = line.find('|', start))
    {
        parts.push_back(trimmed(line.substr(start, end - start)));
        start = end + 1;
    }
    parts.push_back(trimmed(line.substr(start)));
    return parts;
}

std::vector<Columns> readLines(const std::wstring& file)
{
    std::ifstream stream{std::filesystem::path(file)};
    if (!stream)
    {
        throw std::runtime_error(std::filesystem::path(file).string() + " cannot be read");
    }
    std::vector<Columns> lines;
    for (std::string line; std::getline(stream, line);)
    {
        line = trimmed(line);
        if (!line.empty() && line[0] != '#')
        {
            lines.push_back(columns(line));
        }
    }
    return lines;
}

[[noreturn]] void refuse(const std::wstring& file, const Columns& line)
{
    throw std::runtime_error(std::filesystem::path(file).string() + ": the line of " + line[0] + " is not understood");
}
} // namespace

std::vector<testkit::Program> testkit::readPrograms(const std::wstring& file)
{
    std::vector<Program> programs;
    for (const Columns& line : readLines(file))
    {
        if (line.size() == 1)
        {
            programs.push_back({line[0], false, ""});
        }
        else if (line.size() == 2 && line[1] == "registry")
        {
            programs.push_back({line[0], true, ""});
        }
        else if (line.size() == 3 && line[1] == "left out" && !line[2].empty())
        {
            programs.push_back({line[0], false, line[2]});
        }
        else
        {
            refuse(file, line);
        }
    }
    return programs;
}

std::vector<testkit::Difference> testkit::readDifferences(const std::wstring& file, const std::string& system)
{
    std::vector<Difference> differences;
    for (const Columns& line : readLines(file))
    {
        if (line.size() != 3 || line[2].empty() || (line[0] != "windows" && line[0] != "wine" && line[0] != "any"))
        {
            refuse(file, line);
        }
        if (line[0] == system || line[0] == "any")
        {
            differences.push_back({line[1], line[2]});
        }
    }
    return differences;
}
