#include "faults/Page.h"

#include "faults/Faults.h"
#include "faults/Operations.h"

#include <vector>

using namespace qelTest;

namespace
{
std::string code(const std::string& text)
{
    return "`" + text + "`";
}

std::string shown(const std::string& result)
{
    const std::string between = " or ";
    const size_t end = result.find(between);
    return end == std::string::npos
               ? code(result)
               : code(result.substr(0, end)) + between + shown(result.substr(end + between.size()));
}

/// " (calls 1, 2)", " (call 1, all together)"
std::string which(std::string numbers)
{
    if (numbers.empty())
    {
        return std::string();
    }
    const size_t all = numbers.find("all");
    const std::string last = all == std::string::npos ? "" : "all together";
    numbers = numbers.substr(0, all);
    while (!numbers.empty() && numbers.back() == ',')
    {
        numbers.pop_back();
    }
    std::string text = numbers.empty() ? "" : (numbers.find(',') == std::string::npos ? "call " : "calls ") + numbers;
    for (size_t comma = text.find(','); comma != std::string::npos; comma = text.find(',', comma + 1))
    {
        text.replace(comma, 1, ", ");
    }
    return " (" + text + (text.empty() || last.empty() ? "" : ", ") + last + ")";
}

/// The function as code, and behind it how and when it fails.
std::string named(const Outcome& outcome)
{
    const size_t colon = outcome.call.find(": ");
    const std::string how = colon == std::string::npos ? "" : ", " + outcome.call.substr(colon + 2);
    return code(outcome.call.substr(0, colon)) + how + which(outcome.which);
}

/// A row for each outcome, with all the calls that lead to it.
std::string rowsOf(const Operation& operation)
{
    std::vector<std::pair<std::string, std::string>> rows;
    for (const Outcome& outcome : operation.outcomes())
    {
        bool added = false;
        for (auto& row : rows)
        {
            if (row.first == outcome.result)
            {
                row.second += ", " + named(outcome);
                added = true;
            }
        }
        if (!added)
        {
            rows.emplace_back(outcome.result, named(outcome));
        }
    }
    std::string text;
    std::string first = operation.name() + ": " + shown(operation.normal());
    for (const auto& row : rows)
    {
        const bool unchanged = row.first == operation.normal();
        text += "| " + first + " | " + row.second + " | " + (unchanged ? "the same" : shown(row.first)) + " |\n";
        first.clear();
    }
    return text;
}
} // namespace

std::string qelTest::pageOfSystemCalls()
{
    std::string text;
    for (const Area& area : areas())
    {
        text += std::string("### ") + area.name +
                "\n\n| operation and its result | what fails | result then |\n|---|---|---|\n";
        for (const Operation& operation : area.operations)
        {
            text += rowsOf(operation);
        }
        text += "\n";
    }
    text += "### How they fail\n\n| function | failure |\n|---|---|\n";
    std::string before;
    for (const Fault& fault : faults())
    {
        if (before == fault.call)
        {
            text.insert(text.size() - 3, std::string("; ") + fault.how);
            continue;
        }
        before = fault.call;
        text += "| " + code(fault.call) + (fault.alias == nullptr ? "" : ", with the UCRT " + code(fault.alias)) +
                " | " + fault.how + " |\n";
    }
    text += "\n### What does not fail here\n\n| reason | functions |\n|---|---|\n";
    for (const Spared& group : spared())
    {
        std::string calls;
        for (const char* call : group.calls)
        {
            calls += (calls.empty() ? "" : ", ") + code(call);
        }
        text += std::string("| ") + group.reason + " | " + calls + " |\n";
    }
    return text;
}
