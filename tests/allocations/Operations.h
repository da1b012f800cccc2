// The exported operations of the library, and what becomes of each when memory runs out in it.
#ifndef QEL_TEST_OPERATIONS_H
#define QEL_TEST_OPERATIONS_H

#include "allocations/Allocations.h"

#include "qelString.h"
#include "qelStringClassArray.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace qelTest
{
/// What an operation left behind: its result, where it has one that counts, and all that it may change.
struct Seen
{
    std::wstring result;
    std::wstring state;
};

inline bool operator==(const Seen& a, const Seen& b)
{
    return a.result == b.result && a.state == b.state;
}

/// One call of an operation, in which an allocation fails or none.
class Trial
{
public:
    Trial(int failAt, allocations::Failing failing)
        : m_failAt(failAt)
        , m_failing(failing)
    {
    }

    /// To be called once: `act` is the operation, `look` tells the state. The operation is called once more when it
    /// changed nothing.
    void operator()(const std::function<void()>& act, const std::function<std::wstring()>& look);

    /// The result of the operation, set by `act`.
    std::wstring result;

    /// A documented result of failure, with the state before.
    void mayGive(const std::wstring& failure) { m_failures.push_back({failure, L""}); }

    /// A documented result of failure, empty for an exception, with another state. As mayLeave(), this makes the
    /// operation one of those that docs/testing.md lists.
    void mayGive(const std::wstring& failure, const std::wstring& state) { m_allowed.push_back({failure, state}); }

    /// Judges what a failure has left by what the operation leaves otherwise.
    using Judge = std::function<bool(const Seen& left, const Seen& otherwise)>;

    /// The same for states that cannot be listed.
    void mayLeave(Judge judge) { m_judge = std::move(judge); }

private:
    friend class Attempt;

    int m_failAt;
    allocations::Failing m_failing;
    int m_count = 0;
    bool m_threw = false;
    bool m_threwSomethingElse = false;
    std::wstring m_before;
    Seen m_seen;
    bool m_again = false;
    Seen m_seenAgain;
    std::vector<Seen> m_failures;
    std::vector<Seen> m_allowed;
    Judge m_judge;
};

struct Operation
{
    enum Kind
    {
        throws, ///< std::bad_alloc, and the state is the one before
        quiet,  ///< tells by its result
        either, ///< throws, and the state is the one before; or tells by its result
        never   ///< allocates nothing
    };

    Kind kind;
    std::vector<std::string> exports; ///< the exported functions that it calls
    std::function<void(Trial&)> body;

    const std::string& name() const { return exports.front(); }
};

using Operations = std::vector<Operation>;
using Names = std::vector<std::string>;
using Body = std::function<void(Trial&)>;

/// The families.
void addStrings(Operations& table);
void addLists(Operations& table);
void addRuntime(Operations& table);
void addFiles(Operations& table);
void addConfiguration(Operations& table);
void addNumbering(Operations& table);
void addProgress(Operations& table);
void addNumerics(Operations& table);

inline void throwing(Operations& table, Names names, Body body)
{
    table.push_back({Operation::throws, std::move(names), std::move(body)});
}

inline void quiet(Operations& table, Names names, Body body)
{
    table.push_back({Operation::quiet, std::move(names), std::move(body)});
}

inline void throwingOrQuiet(Operations& table, Names names, Body body)
{
    table.push_back({Operation::either, std::move(names), std::move(body)});
}

inline void withoutMemory(Operations& table, Names names, Body body)
{
    table.push_back({Operation::never, std::move(names), std::move(body)});
}

inline std::wstring wide(const qelString& text)
{
    return text.getStringW();
}

inline std::wstring number(long long value)
{
    return std::to_wstring(value);
}

/// All that can be seen of a list.
template <class List> std::wstring listed(const List& list)
{
    std::wstring seen = number(list.physicalLength()) + L":";
    for (long i = 0; i < list.length(); ++i)
    {
        seen += L"[" + wide(list[i]) + L"]";
    }
    return seen;
}

/// An operation that changes the string that begins as `start`.
template <class Change> void changes(Operations& table, Names names, const wchar_t* start, Change change)
{
    throwing(table, std::move(names), [=](Trial& trial) {
        qelString text(start);
        trial([&] { change(text); }, [&] { return wide(text); });
    });
}

/// An operation that returns a string.
template <class Make> void makes(Operations& table, Names names, Make make)
{
    throwing(table, std::move(names), [=](Trial& trial) {
        qelString made(L"none yet");
        trial([&] { made = make(); }, [&] { return wide(made); });
    });
}

/// The same function called for the text HEA 200.
template <class Make> void makesOfText(Operations& table, Names names, Make make)
{
    throwing(table, std::move(names), [=](Trial& trial) {
        const qelString text(L"HEA 200");
        qelString made(L"none yet");
        trial([&] { made = make(text); }, [&] { return wide(made) + wide(text); });
    });
}
} // namespace qelTest

#endif
