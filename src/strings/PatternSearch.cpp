// Boost.Xpressive within limits: the one source file that uses the C++ library.
//
// No header with an exported class belongs in here: GCC would then export the type information of the engine as well.
//
// The engine backtracks by recursion and has no limits: some patterns take practically forever, and long strings
// overflow the stack, which no caller can catch. Before every choice it copies its position in the string or enters an
// alternative. Both are steps reported to a Guard, which throws when the stack is nearly used up or too much time has
// passed. What needs more stack than the caller has left runs on a large one.

#include "strings/PatternSearch.h"

#include "strings/Text.h"

// Some valid patterns fail assertions of the engine, harmlessly.
#define BOOST_DISABLE_ASSERTS
#include <boost/iterator/iterator_adaptor.hpp>
#include <boost/xpressive/xpressive_dynamic.hpp>

#include <algorithm>

// GCC does not inline these by itself, which makes many matches slower by a fifth.
#if defined(__GNUC__)
#define QEL_PATTERN_INLINE __attribute__((always_inline))
#else
#define QEL_PATTERN_INLINE
#endif

namespace xpressive = boost::xpressive;

namespace
{
/// Time limit of one attempt, in milliseconds: several times what a legitimate match takes, as the machine may be busy.
const ULONGLONG kMostTime = 60000;

/// Steps between two looks at the clock.
const int kStepsPerLook = 1024;

/// Enough for a repeated group on the longest string.
const size_t kLargeStack = size_t(256) << 20;

/// Stack that must be left at a step: for a few more calls, and for throwing and unwinding.
const size_t kStackReserve = size_t(64) << 10;

/// Stack for each non-literal unit of the pattern: linking and destroying its compiled form recurse along the chain of
/// nodes without a step in between, and so may a match.
const size_t kStackPerNode = 768;

/// Approximate stack of one repetition of a group.
const size_t kStackPerTurn = 480;

struct StackUsedUp
{
};

struct TimeUsedUp
{
};

/// Do not pass `here`: the default is a temporary on the caller's stack.
uintptr_t stackPosition(const char& here = 0)
{
    return reinterpret_cast<uintptr_t>(&here);
}

uintptr_t lowestOfStack()
{
    MEMORY_BASIC_INFORMATION stack = {};
    VirtualQuery(&stack, &stack, sizeof stack);
    return reinterpret_cast<uintptr_t>(stack.AllocationBase);
}

#if defined(__GNUC__)
// It is read at an address that GCC believes to be an object of size 0.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"
#endif
const NT_TIB& threadBlock()
{
    return *reinterpret_cast<const NT_TIB*>(NtCurrentTeb());
}
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

/// Checks the clock, and the stack of the thread (or fiber) that made it.
class Guard
{
public:
    explicit Guard(size_t stackReserve)
        : m_reserve(stackReserve)
        // Of the part that is in use already. Most matches need no more, and asking for the whole stack takes time.
        , m_lowest(reinterpret_cast<uintptr_t>(threadBlock().StackLimit) + stackReserve)
        , m_end(GetTickCount64() + kMostTime)
        , m_stepsLeft(kStepsPerLook)
    {
    }

    QEL_PATTERN_INLINE void step()
    {
        const char here = 0;
        if (reinterpret_cast<uintptr_t>(&here) < m_lowest || --m_stepsLeft == 0)
        {
            check();
        }
    }

private:
    void check();

    size_t m_reserve;
    uintptr_t m_lowest; ///< address below which the stack counts as used up
    ULONGLONG m_end;
    int m_stepsLeft;
};

void Guard::check()
{
    if (stackPosition() < m_lowest)
    {
        m_lowest = lowestOfStack() + m_reserve;
    }
    if (stackPosition() < m_lowest)
    {
        throw StackUsedUp();
    }
    if (GetTickCount64() >= m_end)
    {
        throw TimeUsedUp();
    }
    m_stepsLeft = kStepsPerLook;
}

/// A pointer into the string, each copy of which is a step. Assignments are not: the engine saves whole groups by
/// assigning.
class GuardedIterator : public boost::iterator_adaptor<GuardedIterator, const wchar_t*>
{
public:
    GuardedIterator()
        : GuardedIterator::iterator_adaptor_(nullptr)
        , m_guard(nullptr)
    {
    }

    GuardedIterator(const wchar_t* at, Guard& guard)
        : GuardedIterator::iterator_adaptor_(at)
        , m_guard(&guard)
    {
    }

    QEL_PATTERN_INLINE GuardedIterator(const GuardedIterator& other)
        : GuardedIterator::iterator_adaptor_(other.base())
        , m_guard(other.m_guard)
    {
        step();
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): it frees nothing
    GuardedIterator& operator=(const GuardedIterator& other)
    {
        base_reference() = other.base();
        m_guard = other.m_guard;
        return *this;
    }

    QEL_PATTERN_INLINE void step() const
    {
        Guard* const guard = m_guard;
        if (guard != nullptr)
        {
            guard->step();
        }
    }

private:
    /// Null in a default iterator. Volatile, so that compilers do not copy both members in one instruction, which
    /// stalls where one of them has just been written.
    Guard* volatile m_guard;
};

using Regex = xpressive::basic_regex<GuardedIterator>;
using Groups = xpressive::match_results<GuardedIterator>;
using Characters = xpressive::regex_traits<wchar_t>;

/// The engine's own tokens, but skips a quantifier in a comment, at which the engine would loop forever.
class Tokens : public xpressive::compiler_traits<Characters>
{
public:
    using Base = xpressive::compiler_traits<Characters>;
    using Token = xpressive::regex_constants::compiler_token_type;
    using Base::Base;

    Token get_token(GuardedIterator& at, const GuardedIterator& end)
    {
        const Token token = Base::get_token(at, end);
        if (m_inComment && token == xpressive::regex_constants::token_invalid_quantifier)
        {
            ++at;
        }
        m_inComment = m_inComment && token != xpressive::regex_constants::token_group_end;
        return token;
    }

    Token get_group_type(GuardedIterator& at, const GuardedIterator& end, std::wstring& name)
    {
        const Token token = Base::get_group_type(at, end, name);
        m_inComment = token == xpressive::regex_constants::token_comment;
        return token;
    }

private:
    bool m_inComment = false;
};
} // namespace

/// What the engine calls for each alternative. The step is for alternatives that are empty or a single character, which
/// it chooses without a copy.
template <class Next> struct boost::xpressive::detail::alt_match_pred<GuardedIterator, Next>
{
    explicit alt_match_pred(match_state<GuardedIterator>& state)
        : m_state(&state)
    {
    }

    template <class Alternative> bool operator()(const Alternative& alternative) const
    {
        m_state->cur_.step();
        return alternative.template push_match<Next>(*m_state);
    }

    match_state<GuardedIterator>* m_state;
};

namespace
{
/// The work of one call, to be done on a stack that is large enough.
struct Job
{
    const wchar_t* pattern;
    size_t patternLength;
    const wchar_t* text;
    size_t textLength;
    qelPattern::GroupSink sink;
    void* context;
    size_t nodes = 1;     ///< of a chain of the compiled pattern, at most: a run of literals makes only one
    size_t lastDigit = 0; ///< greatest digit that may be a back reference
    bool repeatsGroup = false;
    bool matched = false;
    bool stackUsedUp = false;
    void* caller = nullptr; ///< fiber to go back to
};

/// Finds out what can be told of a pattern before it is compiled.
void survey(Job& job)
{
    for (const wchar_t* at = job.pattern; *at != 0; ++at)
    {
        const wchar_t next = at[1];
        for (const wchar_t other : L"\\.[(){*+?|^$")
        {
            job.nodes += *at == other ? 1U : 0U;
        }
        job.repeatsGroup = job.repeatsGroup || (*at == L')' && (next == L'*' || next == L'+' || next == L'{'));
        if (*at == L'\\' && next >= L'1' && next <= L'9')
        {
            job.lastDigit = (std::max)(job.lastDigit, static_cast<size_t>(next - L'0'));
        }
    }
}

/// Compiles, matches and reports the groups; throws on any failure.
void search(Job& job)
{
    Guard guard(kStackReserve + job.nodes * kStackPerNode);
    const Regex regex = xpressive::regex_compiler<GuardedIterator, Characters, Tokens>().compile(
        GuardedIterator(job.pattern, guard), GuardedIterator(job.pattern + job.patternLength, guard));
    // A back reference to a missing group would make the engine read past its groups. Groups that never match are added
    // for all single digits, the only numbers that the engine does not check.
    size_t& groupCount = xpressive::detail::core_access<GuardedIterator>::get_regex_impl(regex)->mark_count_;
    groupCount = (std::max)(groupCount, job.lastDigit);

    Groups groups;
    const GuardedIterator begin(job.text, guard);
    const GuardedIterator end(job.text + job.textLength, guard);
    if (!xpressive::regex_match(begin, end, groups, regex))
    {
        return;
    }
    for (const auto& group : groups)
    {
        const wchar_t* const first = group.first.base();
        if (group.matched && first != group.second.base())
        {
            job.sink(job.context, static_cast<size_t>(first - job.text),
                     static_cast<size_t>(group.second.base() - first));
        }
    }
    job.matched = true;
}

void attempt(Job& job) noexcept
{
    try
    {
        search(job);
    }
    catch (const StackUsedUp&)
    {
        job.stackUsedUp = true;
    }
    catch (...)
    {
        job.matched = false;
    }
}

void CALLBACK attemptInFiber(void* job)
{
    attempt(*static_cast<Job*>(job));
    SwitchToFiber(static_cast<Job*>(job)->caller);
}

/**
 * False when there is no memory for the stack.
 *
 * A fiber rather than a thread: the caller may hold the loader lock, under which a thread would never start.
 */
bool attemptOnLargeStack(Job& job)
{
    void* const current = IsThreadAFiber() != FALSE ? threadBlock().FiberData : nullptr;
    job.caller = current != nullptr ? current : ConvertThreadToFiberEx(nullptr, FIBER_FLAG_FLOAT_SWITCH);
    if (job.caller == nullptr)
    {
        return false;
    }
    // Committed at once: memory that runs out while a stack grows cannot be caught.
    void* const fiber = CreateFiberEx(kLargeStack, kLargeStack, FIBER_FLAG_FLOAT_SWITCH, attemptInFiber, &job);
    if (fiber != nullptr)
    {
        SwitchToFiber(fiber);
        DeleteFiber(fiber);
    }
    if (current == nullptr)
    {
        ConvertFiberToThread();
    }
    return fiber != nullptr;
}

/// Whether the caller's stack will probably not suffice. Finding out by trying costs far more: throwing out of a deep
/// recursion is slow.
bool goesDeep(const Job& job)
{
    return job.repeatsGroup && job.textLength * kStackPerTurn > stackPosition() - lowestOfStack();
}
} // namespace

bool qelPattern::match(const wchar_t* pattern, const wchar_t* text, GroupSink sink, void* context) noexcept
{
    Job job = {pattern, qelText::measureOwn(pattern), text, qelText::measureOwn(text), sink, context};
    survey(job);
    const bool deep = goesDeep(job);
    if (deep && attemptOnLargeStack(job))
    {
        return job.matched;
    }
    attempt(job);
    if (job.stackUsedUp && !deep)
    {
        attemptOnLargeStack(job);
    }
    return job.matched;
}
