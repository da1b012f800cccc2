#include "faults/Operations.h"

#include <sstream>
#include <utility>

qelTest::Machine* qelTest::machine = nullptr;
qelTest::ImportedCalls* qelTest::importedCalls = nullptr;

qelTest::Operation::Operation(const char* name, const char* normal, std::function<std::string()> run)
    : m_name(name)
    , m_normal(normal)
    , m_run(std::move(run))
{
}

qelTest::Operation& qelTest::Operation::fails(const char* call, const char* result, const char* which)
{
    m_outcomes.push_back({call, which, result, true});
    return *this;
}

qelTest::Operation& qelTest::Operation::ignores(std::initializer_list<const char*> calls)
{
    for (const char* call : calls)
    {
        fails(call, m_normal.c_str());
    }
    return *this;
}

qelTest::Operation& qelTest::Operation::ignoresAtTimes(std::initializer_list<const char*> calls)
{
    for (const char* call : calls)
    {
        fails(call, m_normal.c_str());
        m_outcomes.back().certain = false;
    }
    return *this;
}

qelTest::Operation& qelTest::Operation::untilSuccess(std::initializer_list<const char*> calls)
{
    m_untilSuccess.assign(calls.begin(), calls.end());
    return *this;
}

const qelTest::Outcome* qelTest::Operation::expected(const std::string& call, const std::string& how, long number,
                                                     long count) const
{
    const std::string wanted = number == 0 ? "all" : std::to_string(number);
    const Outcome* found = nullptr;
    int best = 0;
    for (const Outcome& outcome : m_outcomes)
    {
        const bool exactly = outcome.call == call + ": " + how;
        if (!exactly && outcome.call != call)
        {
            continue;
        }
        std::istringstream which(outcome.which);
        bool named = false;
        for (std::string one; std::getline(which, one, ',');)
        {
            named = named || one == wanted || (one == "last" && number == count);
        }
        const int fit = (exactly ? 2 : 1) + (named ? 2 : 0);
        if ((named || outcome.which.empty()) && fit > best)
        {
            best = fit;
            found = &outcome;
        }
    }
    return found;
}

const std::vector<qelTest::Area>& qelTest::areas()
{
    static const std::vector<Area> all = {registryOperations(),   fileOperations(),   logOperations(),
                                          dataSourceOperations(), windowOperations(), threadOperations(),
                                          textOperations()};
    return all;
}

std::string qelTest::plain(const wchar_t* text)
{
    std::string result;
    for (; *text != 0; ++text)
    {
        result += *text < 128 ? static_cast<char>(*text) : '#';
    }
    return result.empty() ? "no text" : result;
}

std::string qelTest::plain(const qelString& text)
{
    return plain(text.getStringW());
}

std::string qelTest::outcome(long long result, const std::string& text)
{
    return std::to_string(result) + ", " + text;
}

std::string qelTest::outcome(long long result, const qelString& text)
{
    return outcome(result, plain(text));
}

std::string qelTest::outcome(long long result, const char* text)
{
    return outcome(result, std::string(text));
}
