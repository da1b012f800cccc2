// Boost.Xpressive within limits: the one source file that uses the C++ library.
//
// No header with an exported class belongs in here: GCC would then export the type information of the engine as well.
//
// The engine backtracks by recursion and knows no limits: some patterns keep it busy for longer than the universe
// lasts, and long texts make it run off the stack, which no caller can catch. So it never walks over plain pointers
// here. Its iterators report every move to a Guard, which throws when too many steps were made or the stack is nearly
// used up. What needs more stack than the caller has left is tried once more on a large stack.

#include "strings/PatternSearch.h"

#include "strings/Text.h"

// What the engine merely asserts (that a back reference has a group, for one) must neither become undefined behaviour
// nor end the process.
#define BOOST_ENABLE_ASSERT_HANDLER
#include <boost/xpressive/xpressive_dynamic.hpp>

#include <cstddef>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
/// Conditions that valid patterns break without harm: a quantifier {0} at the end, and an empty quotation.
bool isHarmless(const char* condition)
{
    return std::strcmp(condition, "begin != end") == 0 || std::strcmp(condition, "0 != literal.size()") == 0;
}
} // namespace

namespace boost
{
void assertion_failed(const char* expr, const char*, const char*, long)
{
    if (!isHarmless(expr))
    {
        throw std::logic_error(expr);
    }
}

void assertion_failed_msg(const char* expr, const char*, const char* function, const char* file, long line)
{
    assertion_failed(expr, function, file, line);
}
} // namespace boost

namespace
{
/// Steps of one attempt: some tenths of a second, and far more than any sensible pattern needs for the longest text.
const long kMostSteps = 50000000;

/// Stack that the second attempt gets: enough for a repeated group on the longest text.
const size_t kLargeStack = size_t(256) << 20;

/// Stack that must be left for what lies below a step: a few more calls, and throwing and unwinding.
const size_t kStackReserve = size_t(64) << 10;

/// Stack that linking and destroying the compiled form may need for each unit of the pattern that is not literal. Both
/// follow its chain of nodes by recursion, without a step in between.
const size_t kStackPerNode = 768;

struct StackUsedUp
{
};

struct StepsUsedUp
{
};

/// Counts steps and watches the stack of the thread (or fiber) that made it.
class Guard
{
public:
    Guard()
        : m_stepsLeft(kMostSteps)
        , m_lowest(lowestOfStack() + kStackReserve)
    {
    }

    void step()
    {
        if (--m_stepsLeft < 0 || position() < m_lowest)
        {
            refuse();
        }
    }

    /// Refuses work that goes deep without steps.
    void requireStack(size_t bytes) const
    {
        if (position() < m_lowest || position() - m_lowest < bytes)
        {
            throw StackUsedUp();
        }
    }

private:
    /// `here` is left to its default: a temporary on the caller's stack.
    static uintptr_t position(const char& here = 0) { return reinterpret_cast<uintptr_t>(&here); }

    static uintptr_t lowestOfStack()
    {
        MEMORY_BASIC_INFORMATION stack;
        const char here = 0;
        return VirtualQuery(&here, &stack, sizeof stack) == 0 ? UINTPTR_MAX - kStackReserve
                                                              : reinterpret_cast<uintptr_t>(stack.AllocationBase);
    }

    [[noreturn]] void refuse() const
    {
        if (m_stepsLeft < 0)
        {
            throw StepsUsedUp();
        }
        throw StackUsedUp();
    }

    long m_stepsLeft;
    uintptr_t m_lowest; ///< address below which the stack counts as used up
};

/// A pointer into text whose every move, comparison and copy is a step. Copies count because the engine saves all
/// groups wherever it may have to come back, which is most of its work when there are many.
class GuardedIterator
{
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = wchar_t;
    using difference_type = std::ptrdiff_t;
    using pointer = const wchar_t*;
    using reference = const wchar_t&;

    GuardedIterator()
        : m_at(nullptr)
        , m_guard(nullptr)
    {
    }

    GuardedIterator(const wchar_t* at, Guard& guard)
        : m_at(at)
        , m_guard(&guard)
    {
    }

    GuardedIterator(const GuardedIterator& other)
        : m_at(other.m_at)
        , m_guard(other.m_guard)
    {
        step();
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is given back here
    GuardedIterator& operator=(const GuardedIterator& other)
    {
        m_at = other.m_at;
        m_guard = other.m_guard;
        step();
        return *this;
    }

    const wchar_t* base() const { return m_at; }

    reference operator*() const
    {
        step();
        return *m_at;
    }

    GuardedIterator& operator++() { return *this += 1; }
    GuardedIterator& operator--() { return *this += -1; }

    GuardedIterator operator++(int)
    {
        const GuardedIterator old(*this);
        ++*this;
        return old;
    }

    GuardedIterator operator--(int)
    {
        const GuardedIterator old(*this);
        --*this;
        return old;
    }

    GuardedIterator& operator+=(difference_type count)
    {
        step();
        m_at += count;
        return *this;
    }

    GuardedIterator& operator-=(difference_type count) { return *this += -count; }

    friend GuardedIterator operator+(GuardedIterator i, difference_type count) { return i += count; }
    // Not every C++ library uses all of these.
    [[maybe_unused]] friend GuardedIterator operator-(GuardedIterator i, difference_type count) { return i += -count; }
    friend difference_type operator-(const GuardedIterator& a, const GuardedIterator& b) { return a.m_at - b.m_at; }

    friend bool operator==(const GuardedIterator& a, const GuardedIterator& b)
    {
        a.step();
        return a.m_at == b.m_at;
    }

    friend bool operator!=(const GuardedIterator& a, const GuardedIterator& b) { return !(a == b); }
    [[maybe_unused]] friend bool operator<(const GuardedIterator& a, const GuardedIterator& b)
    {
        return a.m_at < b.m_at;
    }

private:
    void step() const
    {
        if (m_guard != nullptr)
        {
            m_guard->step();
        }
    }

    const wchar_t* m_at;
    Guard* m_guard; ///< null in an iterator to nothing
};

struct Piece
{
    const wchar_t* begin;
    size_t length;
};

/// One call's work, done on whichever stack is large enough.
struct Job
{
    const wchar_t* pattern;
    const wchar_t* text;
    std::vector<Piece> groups; ///< what took part and is not empty, from the whole text on
    bool matched;
    bool stackUsedUp;
    void* caller; ///< fiber to go back to
};

/// Upper bound of the nodes chained one behind the other in the compiled form: a run of literals makes only one.
size_t countNodes(const wchar_t* pattern)
{
    size_t nodes = 1;
    for (const wchar_t* at = pattern; *at != 0; ++at)
    {
        if (wcschr(L"\\.[(){*+?|^$", *at) != nullptr)
        {
            ++nodes;
        }
    }
    return nodes;
}

/// Compiles and matches; throws whatever goes wrong.
void search(Job& job)
{
    using Regex = boost::xpressive::basic_regex<GuardedIterator>;
    using Groups = boost::xpressive::match_results<GuardedIterator>;

    Guard guard;
    guard.requireStack(countNodes(job.pattern) * kStackPerNode);

    const GuardedIterator patternBegin(job.pattern, guard);
    const GuardedIterator patternEnd(job.pattern + qelText::measure(job.pattern), guard);
    const Regex regex = Regex::compile(patternBegin, patternEnd);

    const GuardedIterator begin(job.text, guard);
    const GuardedIterator end(job.text + qelText::measure(job.text), guard);
    Groups groups;
    job.matched = boost::xpressive::regex_match(begin, end, groups, regex);
    for (const auto& group : groups)
    {
        if (group.matched && group.first != group.second)
        {
            const Piece piece = {group.first.base(), static_cast<size_t>(group.second - group.first)};
            job.groups.push_back(piece);
        }
    }
}

void forget(Job& job)
{
    job.matched = false;
    job.groups.clear();
}

void attempt(Job& job) noexcept
{
    job.stackUsedUp = false;
    try
    {
        search(job);
    }
    catch (const StackUsedUp&)
    {
        job.stackUsedUp = true;
        forget(job);
    }
    catch (...)
    {
        forget(job);
    }
}

void CALLBACK attemptInFiber(void* job)
{
    attempt(*static_cast<Job*>(job));
    SwitchToFiber(static_cast<Job*>(job)->caller);
}

#if defined(__GNUC__)
// GetCurrentFiber() reads the thread's block at an address that GCC takes for an object of no size.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"
#endif
void* currentFiber()
{
    return IsThreadAFiber() != FALSE ? GetCurrentFiber() : nullptr;
}
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

/// A fiber rather than a thread: the caller may hold the loader's lock, under which a thread would never start.
void attemptOnLargeStack(Job& job)
{
    void* const current = currentFiber();
    job.caller = current != nullptr ? current : ConvertThreadToFiberEx(nullptr, FIBER_FLAG_FLOAT_SWITCH);
    if (job.caller == nullptr)
    {
        return;
    }
    // Committed at once: memory that runs out while a stack grows cannot be caught.
    void* fiber = CreateFiberEx(kLargeStack, kLargeStack, FIBER_FLAG_FLOAT_SWITCH, attemptInFiber, &job);
    if (fiber != nullptr)
    {
        SwitchToFiber(fiber);
        DeleteFiber(fiber);
    }
    if (current == nullptr)
    {
        ConvertFiberToThread();
    }
}

/// A buffer for the text of one group, wiped before it is freed.
class GroupText
{
public:
    explicit GroupText(const Piece& piece)
        : m_text(piece.begin, piece.length)
    {
    }

    GroupText(const GroupText&) = delete;
    GroupText& operator=(const GroupText&) = delete;

    ~GroupText() { qelText::scrub(m_text.data(), m_text.size() * sizeof(wchar_t)); }

    const wchar_t* get() const { return m_text.c_str(); }

private:
    std::wstring m_text;
};

} // namespace

bool qelPattern::match(const wchar_t* pattern, const wchar_t* text, GroupSink sink, void* context) noexcept
{
    try
    {
        Job job = {pattern, text, {}, false, false, nullptr};
        attempt(job);
        if (job.stackUsedUp)
        {
            attemptOnLargeStack(job);
        }
        for (const Piece& piece : job.groups)
        {
            sink(context, GroupText(piece).get());
        }
        return job.matched;
    }
    catch (...)
    {
        return false;
    }
}
