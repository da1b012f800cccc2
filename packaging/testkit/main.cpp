// Runs the test programs of the kit one after the other and sums up how they ended; see docs/test-kit.md.

#include "GoogleTest.h"
#include "Lists.h"
#include "Machine.h"

#include "qelVersion.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdarg.h>
#include <stdexcept>
#include <stdio.h>

namespace
{
using testkit::Outcome;

const unsigned kSecondsOfAProgram = 600;

/// The folders of the kit: this program lies in "bin".
struct Folders
{
    std::filesystem::path kit;
    std::filesystem::path results = kit / L"results";
    std::filesystem::path work = results / L"work";
    std::filesystem::path registry = results / L"registry";
};

/// What is told on the console and in the summary.
class Summary
{
public:
    explicit Summary(const std::filesystem::path& file)
    {
        if (_wfopen_s(&m_file, file.c_str(), L"w") != 0)
        {
            throw std::runtime_error(file.string() + " cannot be written");
        }
    }

    ~Summary() { fclose(m_file); }

    Summary(const Summary&) = delete;
    Summary& operator=(const Summary&) = delete;

    void print(const char* format, ...)
    {
        char text[2000];
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(text, sizeof(text), format, arguments);
        va_end(arguments);
        for (FILE* stream : {stdout, m_file})
        {
            fputs(text, stream);
            fflush(stream);
        }
    }

private:
    FILE* m_file = nullptr;
};

struct Count
{
    int tests = 0;
    int passed = 0;
    int failed = 0;
    int known = 0;
    int skipped = 0;

    Count& operator+=(const Count& other)
    {
        tests += other.tests;
        passed += other.passed;
        failed += other.failed;
        known += other.known;
        skipped += other.skipped;
        return *this;
    }
};

/// Everything that the last part of the summary tells.
struct Totals
{
    Count count;
    int programs = 0;
    std::vector<std::string> failures;
    std::vector<std::string> differences;
    std::vector<std::string> notRun;
    std::vector<std::string> leftOut;
};

std::string nameOf(const testkit::Program& program)
{
    return program.path.substr(program.path.find_last_of('\\') + 1);
}

Count sortOut(const std::string& name, const testkit::Results& results,
              const std::vector<testkit::Difference>& differences, Totals& totals)
{
    Count count;
    for (const std::string& test : results.tests)
    {
        const auto found = results.outcomes.find(test);
        if (found == results.outcomes.end())
        {
            continue; // told by the trouble below
        }
        ++count.tests;
        if (found->second == Outcome::passed || found->second == Outcome::skipped)
        {
            ++(found->second == Outcome::passed ? count.passed : count.skipped);
            continue;
        }
        const auto known = std::find_if(differences.begin(), differences.end(),
                                        [&](const testkit::Difference& difference) { return difference.test == test; });
        if (known != differences.end())
        {
            ++count.known;
            totals.differences.push_back(test + ": " + known->reason);
        }
        else
        {
            ++count.failed;
            totals.failures.push_back(test + (found->second == Outcome::ended ? " ended the program" : "") +
                                      ", see results\\" + name + ".txt");
        }
    }
    if (!results.trouble.empty())
    {
        ++count.failed;
        totals.failures.push_back(name + ": " + results.trouble + ", see results\\" + name + ".txt");
    }
    return count;
}

/// Why the program cannot run here; nothing when it can.
std::string obstacle(const testkit::Program& program)
{
    if (!program.writesRegistry)
    {
        return "";
    }
    if (!testkit::mayWriteToMachineHive())
    {
        return "it needs administrator rights (start the kit with \"Run as administrator\")";
    }
    const std::string application = testkit::installedApplication();
    return application.empty() ? ""
                               : application + " is not empty: the application is installed, or a run was interrupted";
}

void runProgram(const testkit::Program& program, const Folders& folders,
                const std::vector<testkit::Difference>& differences, Summary& summary, Totals& totals)
{
    const std::string name = nameOf(program);
    const std::string reason = obstacle(program);
    if (!reason.empty())
    {
        totals.notRun.push_back(name + ": " + reason);
        summary.print("%-28s not run\n", name.c_str());
        return;
    }

    std::unique_ptr<testkit::SavedRegistry> saved;
    if (program.writesRegistry)
    {
        saved = std::make_unique<testkit::SavedRegistry>(folders.registry.wstring());
    }
    const auto start = std::chrono::steady_clock::now();
    const testkit::Results results =
        testkit::runTests((folders.kit / (program.path + ".exe")).wstring(), folders.work.wstring(),
                          (folders.results / (name + ".txt")).wstring(), kSecondsOfAProgram);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    const Count count = sortOut(name, results, differences, totals);
    totals.count += count;
    ++totals.programs;
    summary.print("%-28s %6d %7d %7d %6d %8d %8.1f\n", name.c_str(), count.tests, count.passed, count.failed,
                  count.known, count.skipped, time.count());
}

void printAll(Summary& summary, const char* title, const std::vector<std::string>& lines)
{
    if (lines.empty())
    {
        return;
    }
    summary.print("\n%s\n", title);
    for (const std::string& line : lines)
    {
        summary.print("  %s\n", line.c_str());
    }
}

std::string now()
{
    SYSTEMTIME time;
    GetLocalTime(&time);
    char text[32];
    snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d", time.wYear, time.wMonth, time.wDay, time.wHour,
             time.wMinute);
    return text;
}

Folders prepareFolders()
{
    wchar_t path[32768] = {};
    GetModuleFileNameW(nullptr, path, 32768);
    const Folders folders{std::filesystem::path(path).parent_path().parent_path()};
    std::filesystem::create_directories(folders.work);
    // Reports of a run before would stand before those of this one.
    for (const auto& entry : std::filesystem::directory_iterator(folders.results))
    {
        if (entry.path().extension() == L".txt")
        {
            std::filesystem::remove(entry.path());
        }
    }
    // Files that the tests make stay in the kit.
    SetEnvironmentVariableW(L"TEMP", folders.work.c_str());
    SetEnvironmentVariableW(L"TMP", folders.work.c_str());
    return folders;
}

int runKit()
{
    const Folders folders = prepareFolders();
    const std::vector<testkit::Program> programs = testkit::readPrograms(folders.kit / L"programs.txt");
    const std::vector<testkit::Difference> differences =
        testkit::readDifferences(folders.kit / L"known-differences.txt", testkit::isWine() ? "wine" : "windows");
    Summary summary(folders.results / L"summary.txt");
    Totals totals;

    summary.print("VarnelQELRoots " QEL_VERSION_TEXT ", test kit for x64 (" TESTKIT_ABI ")\n");
    summary.print("%s, %s administrator rights, %s\n", testkit::systemName().c_str(),
                  testkit::mayWriteToMachineHive() ? "with" : "without", now().c_str());
    if (testkit::SavedRegistry::restore(folders.registry.wstring()))
    {
        summary.print(
            "A run before this one was interrupted; the list of ODBC drivers that it had kept is restored.\n");
    }
    summary.print("\n%-28s %6s %7s %7s %6s %8s %8s\n", "PROGRAM", "TESTS", "PASSED", "FAILED", "KNOWN", "SKIPPED",
                  "SECONDS");
    for (const testkit::Program& program : programs)
    {
        if (program.leftOut.empty())
        {
            runProgram(program, folders, differences, summary, totals);
        }
        else
        {
            totals.leftOut.push_back(nameOf(program) + ": " + program.leftOut);
        }
    }

    printAll(summary, "Not in the kit:", totals.leftOut);
    printAll(summary, "Not run:", totals.notRun);
    printAll(summary, "Failed, as is known of this system:", totals.differences);
    printAll(summary, "FAILED:", totals.failures);
    const Count& count = totals.count;
    summary.print(
        "\n%d programs, %d tests: %d passed, %d failed, %d known to differ, %d skipped; %d programs not run\n",
        totals.programs, count.tests, count.passed, count.failed, count.known, count.skipped,
        static_cast<int>(totals.notRun.size()));
    const bool good = count.failed == 0 && totals.programs != 0;
    summary.print("%s\n", !good ? "FAILED" : totals.notRun.empty() ? "PASSED" : "PASSED, as far as it has run");
    return good ? 0 : 1;
}
} // namespace

int main()
{
    // A program that crashes does so without a window that waits for somebody.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    try
    {
        return runKit();
    }
    catch (const std::exception& failure)
    {
        fprintf(stderr, "The test kit cannot run: %s\n", failure.what());
        return 2;
    }
}
