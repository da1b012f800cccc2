#include "GoogleTest.h"

#include "Process.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdio.h>

namespace
{
using testkit::Outcome;

std::string contentOf(const std::wstring& file)
{
    std::ifstream stream(std::filesystem::path(file), std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

/// The name of a test behind `mark`, wherever that stands in the line: tests may write without ending their lines.
std::string nameBehind(const std::string& mark, const std::string& line)
{
    const size_t at = line.find(mark);
    if (at == std::string::npos)
    {
        return "";
    }
    const std::string rest = line.substr(at + mark.size());
    return rest.substr(0, rest.find_first_of(" ,\r"));
}

std::string described(unsigned long code)
{
    if (code == testkit::kTimedOut)
    {
        return "took too long";
    }
    char text[40];
    snprintf(text, sizeof(text), "exit code %lu (0x%lX)", code, code);
    return text;
}

/// A filter for the tests without an outcome, in a file: a command line has no room for so many names.
void writeFilter(const std::wstring& file, const testkit::Results& results)
{
    std::ofstream stream{std::filesystem::path(file)};
    stream << "--gtest_filter=";
    for (const std::string& test : results.tests)
    {
        if (results.outcomes.count(test) == 0)
        {
            stream << test << ':';
        }
    }
    stream << '\n';
}

/// Programs that run each test in a process of its own report the failed ones and their number only.
bool reportsFailuresOnly(const std::string& text)
{
    return text.find(" tests, each in a process of its own: ") != std::string::npos;
}
} // namespace

std::vector<std::string> testkit::listedTests(const std::string& text)
{
    std::vector<std::string> tests;
    std::istringstream lines(text);
    std::string suite;
    for (std::string line; std::getline(lines, line);)
    {
        const std::string name = line.substr(0, line.find_first_of("#\r"));
        const size_t first = name.find_first_not_of(' ');
        const size_t last = name.find_last_not_of(' ');
        if (first == std::string::npos)
        {
            continue;
        }
        if (first == 0)
        {
            suite = name[last] == '.' ? name.substr(0, last + 1) : "";
        }
        else if (!suite.empty())
        {
            tests.push_back(suite + name.substr(first, last - first + 1));
        }
    }
    return tests;
}

std::string testkit::readReport(const std::string& text, std::map<std::string, Outcome>& outcomes)
{
    std::istringstream lines(text);
    std::string begun;
    for (std::string line; std::getline(lines, line);)
    {
        const std::string started = nameBehind("[ RUN      ] ", line);
        if (!started.empty())
        {
            begun = started;
            continue;
        }
        const struct
        {
            const char* mark;
            Outcome outcome;
        } endings[] = {{"[       OK ] ", Outcome::passed},
                       {"[  FAILED  ] ", Outcome::failed},
                       {"[  SKIPPED ] ", Outcome::skipped}};
        for (const auto& ending : endings)
        {
            const std::string name = nameBehind(ending.mark, line);
            // Not the counts at the end ("3 tests, listed below:").
            if (name.find('.') != std::string::npos)
            {
                outcomes[name] = ending.outcome;
                begun = name == begun ? "" : begun;
            }
        }
    }
    return begun;
}

testkit::Results testkit::runTests(const std::wstring& program, const std::wstring& folder, const std::wstring& output,
                                   unsigned seconds)
{
    const std::wstring quoted = L'"' + program + L'"';
    const std::wstring list = output + L".list";
    const std::wstring filter = output + L".filter";
    Results results;
    // On a busy machine Wine fails now and then to start a program.
    for (int attempt = 0; attempt < 3 && results.tests.empty(); ++attempt)
    {
        run(quoted + L" --gtest_list_tests", folder, list, seconds);
        results.tests = listedTests(contentOf(list));
        DeleteFileW(list.c_str());
    }
    if (results.tests.empty())
    {
        results.trouble = "it lists no tests";
        return results;
    }

    std::wstring command = quoted;
    for (;;)
    {
        const size_t before = contentOf(output).size();
        const unsigned long code = run(command, folder, output, seconds);
        const std::string report = contentOf(output).substr(before);
        const std::string begun = readReport(report, results.outcomes);
        if (reportsFailuresOnly(report))
        {
            for (const std::string& test : results.tests)
            {
                results.outcomes.emplace(test, Outcome::passed);
            }
        }
        if (!begun.empty())
        {
            results.outcomes[begun] = Outcome::ended;
        }

        size_t failed = 0;
        size_t missing = 0;
        for (const std::string& test : results.tests)
        {
            const auto found = results.outcomes.find(test);
            missing += found == results.outcomes.end();
            failed += found != results.outcomes.end() &&
                      (found->second == Outcome::failed || found->second == Outcome::ended);
        }
        if (missing == 0 || begun.empty())
        {
            // Nothing is left, or nothing tells what to leave out of another run.
            if (missing != 0)
            {
                results.trouble = std::to_string(missing) + " tests did not run, " + described(code);
            }
            else if (failed == 0 && code != 0)
            {
                results.trouble = "every test passed, and yet: " + described(code);
            }
            break;
        }
        writeFilter(filter, results);
        command = quoted + L" --gtest_flagfile=\"" + filter + L'"';
    }
    DeleteFileW(filter.c_str());
    return results;
}
