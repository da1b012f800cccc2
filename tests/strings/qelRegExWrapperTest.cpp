#include "qelRegExWrapper.h"
#include "strings/TextSupport.h"
#include "support/ImportHook.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

// The rows below say of every pattern what the engine gives, the few included that break its debugging conditions.
#define BOOST_DISABLE_ASSERTS
#include <boost/xpressive/xpressive_dynamic.hpp>

#include <windows.h>

#include <malloc.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

using qelTest::isShared;
using qelTest::plain;

namespace
{
typedef std::vector<std::wstring> Texts;

struct Outcome
{
    bool matched;
    Texts texts;

    bool operator==(const Outcome& other) const { return matched == other.matched && texts == other.texts; }
};

void PrintTo(const Outcome& outcome, std::ostream* out)
{
    *out << (outcome.matched ? "match" : "no match");
    for (const std::wstring& text : outcome.texts)
    {
        *out << " <";
        for (wchar_t unit : text)
        {
            *out << (unit < 128 ? static_cast<char>(unit) : '#');
        }
        *out << '>';
    }
}

Texts listed(const qelArray<qelString>& results)
{
    Texts texts;
    for (long i = 0; i < results.length(); ++i)
    {
        texts.push_back(plain(results[i]));
    }
    return texts;
}

Outcome matched(const std::wstring& pattern, const std::wstring& text)
{
    qelRegExWrapper wrapper;
    wrapper.setRegularExpression(pattern.c_str());
    qelArray<qelString> results;
    const bool matches = wrapper.match(text.c_str(), results);
    return {matches, listed(results)};
}

/// What the engine says by itself.
Outcome expected(const std::wstring& pattern, const std::wstring& text)
{
    namespace xpr = boost::xpressive;
    Outcome outcome = {false, {}};
    try
    {
        const xpr::wsregex regex = xpr::wsregex::compile(pattern);
        xpr::wsmatch groups;
        outcome.matched = xpr::regex_match(text, groups, regex);
        for (size_t i = 0; outcome.matched && i < groups.size(); ++i)
        {
            if (groups[i].length() > 0)
            {
                outcome.texts.push_back(groups[i].str());
            }
        }
    }
    catch (const std::exception&)
    {
        outcome.matched = false;
    }
    return outcome;
}

std::wstring times(size_t count, const std::wstring& text)
{
    std::wstring result;
    result.reserve(count * text.size());
    while (count-- > 0)
    {
        result += text;
    }
    return result;
}

/// Runs something in a thread with a stack of that size.
void inThread(size_t stackSize, const std::function<void()>& work)
{
    struct Entry
    {
        static DWORD WINAPI run(void* function)
        {
            (*static_cast<const std::function<void()>*>(function))();
            return 0;
        }
    };
    std::function<void()> copy(work);
    HANDLE thread = CreateThread(nullptr, stackSize, Entry::run, &copy, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(nullptr, thread);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

const size_t kSmallStack = 256 * 1024;

/// A clock by which the minute that a match may take is over in a fifth of a second.
ULONGLONG WINAPI fastClock()
{
    return GetTickCount64() * 300;
}

/// Far above what the limits allow a call to take by the fast clock, far below what it would take without them.
const std::chrono::seconds kBoundedTime(60);

void expectGivesUp(const std::wstring& pattern, const std::wstring& text)
{
    const qelTest::ImportHook hook("GetTickCount64", fastClock);
    const auto begin = std::chrono::steady_clock::now();
    const Outcome outcome = matched(pattern, text);
    EXPECT_EQ((Outcome{false, {}}), outcome);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kBoundedTime);
}

ULONGLONG elapsed = 0;
bool clockWasRead = false;

/// A clock that stands still at 0 when it is read first, and at another time from then on.
ULONGLONG WINAPI jumpingClock()
{
    const ULONGLONG now = clockWasRead ? elapsed : 0;
    clockWasRead = true;
    return now;
}

Outcome matchedAfter(ULONGLONG milliseconds, const std::wstring& pattern, const std::wstring& text)
{
    const qelTest::ImportHook hook("GetTickCount64", jumpingClock);
    clockWasRead = false;
    elapsed = milliseconds;
    return matched(pattern, text);
}

/// Bytes at the far end of a thread's stack that some work leaves alone.
class UntouchedStack
{
public:
    /// Fills all of the stack below the caller but what the guard pages need.
#if defined(__GNUC__)
    __attribute__((noinline))
#else
    __declspec(noinline)
#endif
    void
    fill()
    {
        MEMORY_BASIC_INFORMATION stack = {};
        VirtualQuery(&stack, &stack, sizeof stack);
        const char* const lowest = static_cast<const char*>(stack.AllocationBase);
        const size_t size = static_cast<size_t>(reinterpret_cast<const char*>(&stack) - lowest) - kForGuardPages;
        void* const memory = _alloca(size);
        volatile unsigned char* const filled = static_cast<volatile unsigned char*>(memory);
        for (size_t i = 0; i < size; ++i)
        {
            filled[i] = kFilling;
        }
        m_filled = filled;
        m_below = static_cast<size_t>(static_cast<const char*>(memory) - lowest);
    }

    size_t measure() const
    {
        size_t untouched = 0;
        while (m_filled[untouched] == kFilling)
        {
            ++untouched;
        }
        return m_below + untouched;
    }

private:
    static const unsigned char kFilling = 0xA5;
    static const size_t kForGuardPages = 24 * 1024;

    const volatile unsigned char* m_filled = nullptr;
    size_t m_below = 0;
};

#if defined(__GNUC__)
// The block of the thread is read at an address that GCC believes to be an object of size 0.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"
#endif
/// Some systems put all of a stack in use when a thread starts. This says that little more is in use than its maker is.
class PartOfTheStackInUse
{
public:
    PartOfTheStackInUse()
        : m_block(reinterpret_cast<NT_TIB*>(NtCurrentTeb()))
        , m_lowest(m_block->StackLimit)
    {
        char* const here = reinterpret_cast<char*>(this);
        if (here - static_cast<char*>(m_lowest) > kFarMore)
        {
            m_block->StackLimit = here - kLittleMore;
        }
    }

    PartOfTheStackInUse(const PartOfTheStackInUse&) = delete;
    PartOfTheStackInUse& operator=(const PartOfTheStackInUse&) = delete;

    ~PartOfTheStackInUse()
    {
        if (m_block->StackLimit > m_lowest)
        {
            m_block->StackLimit = m_lowest;
        }
    }

private:
    static const ptrdiff_t kLittleMore = 16 * 1024;
    static const ptrdiff_t kFarMore = 512 * 1024;

    NT_TIB* m_block;
    void* m_lowest;
};
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

long fibersMade = 0;

void* WINAPI countingFiber(SIZE_T commit, SIZE_T reserve, DWORD flags, LPFIBER_START_ROUTINE start, void* parameter)
{
    ++fibersMade;
    return CreateFiberEx(commit, reserve, flags, start, parameter);
}

long allocationsLeft = 0;

/// Fails once. That the exception itself can be allocated is up to the compiler's runtime.
void* failingMalloc(size_t size)
{
    return allocationsLeft-- == 0 ? nullptr : malloc(size);
}

void* WINAPI refusingFiber(SIZE_T, SIZE_T, DWORD, LPFIBER_START_ROUTINE, void*)
{
    return nullptr;
}

/// Patterns that are valid more often than not, with back references to existing groups only.
class RandomPattern
{
public:
    explicit RandomPattern(qelTest::RandomText& random)
        : m_random(random)
        , m_groups(0)
    {
    }

    std::wstring make(int depth)
    {
        std::wstring pattern = sequence(depth);
        while (m_random.number(0, 3) == 0)
        {
            pattern += L'|' + sequence(depth);
        }
        return pattern;
    }

private:
    std::wstring sequence(int depth)
    {
        std::wstring result;
        for (int left = m_random.number(0, 3); left > 0; --left)
        {
            result += atom(depth) + quantifier();
        }
        return result;
    }

    std::wstring atom(int depth)
    {
        static const wchar_t* const kSimple[] = {
            L"a",        L"b",        L"ab",      L".",    L"[ab]",        L"[^a]",  L"\\w",    L"\\d",
            L"[a-c]",    L"x",        L"^",       L"$",    L"\\b",         L"(?i)",  L"(?-i)",  L"(?-s)",
            L"(?#note)", L"\\Qa.\\E", L"\\Q\\Eb", L"(?:)", L"[[:alpha:]]", L"\\x61", L"[^\\d]", L"\n"};
        static const wchar_t* const kOpening[] = {L"(?:", L"(?=", L"(?!", L"(?>", L"(?<=", L"(?<!"};
        const int kind = m_random.number(0, depth > 0 ? 9 : 5);
        if (kind < 5 || depth < 0)
        {
            return kSimple[m_random.number(0, 23)];
        }
        if (kind == 5)
        {
            return m_groups > 0 ? L"\\" + std::to_wstring(m_random.number(1, m_groups)) : L"b";
        }
        if (kind < 9)
        {
            const std::wstring inner = make(depth - 1);
            ++m_groups;
            return L"(" + inner + L")";
        }
        return kOpening[m_random.number(0, 5)] + make(depth - 1) + L")";
    }

    std::wstring quantifier()
    {
        static const wchar_t* const kQuantifiers[] = {L"*",   L"+",     L"?",      L"*?",   L"+?",  L"?\?",
                                                      L"{2}", L"{1,2}", L"{0,1}?", L"{2,}", L"{0}", L"{0,2}"};
        return m_random.number(0, 2) == 0 ? kQuantifiers[m_random.number(0, 11)] : L"";
    }

    qelTest::RandomText& m_random;
    int m_groups; ///< groups closed so far, at most; none is opened again
};
} // namespace

// ---------------------------------------------------------------------------------------------------- the pattern

TEST(qelRegExWrapper, StartsWithTheEmptyPattern)
{
    qelRegExWrapper wrapper;
    qelArray<qelString> results;
    EXPECT_TRUE(wrapper.match(L"", results));
    EXPECT_FALSE(wrapper.match(L"a", results));
    EXPECT_EQ(0, results.length());
}

TEST(qelRegExWrapper, KeepsThePatternUntilAnotherOneIsSet)
{
    qelRegExWrapper wrapper;
    qelArray<qelString> results;
    wrapper.setRegularExpression(L"a+");
    EXPECT_TRUE(wrapper.match(L"aa", results));
    EXPECT_TRUE(wrapper.match(L"a", results));
    wrapper.setRegularExpression(L"b");
    EXPECT_FALSE(wrapper.match(L"a", results));
    EXPECT_TRUE(wrapper.match(L"b", results));
    wrapper.setRegularExpression(L"");
    EXPECT_FALSE(wrapper.match(L"b", results));
    EXPECT_TRUE(wrapper.match(L"", results));
}

TEST(qelRegExWrapper, KeepsACopyOfThePattern)
{
    qelRegExWrapper wrapper;
    {
        qelString pattern(L"a(b)");
        wrapper.setRegularExpression(pattern);
        pattern = L"other";
    }
    qelArray<qelString> results;
    EXPECT_TRUE(wrapper.match(L"ab", results));
}

TEST(qelRegExWrapper, AcceptsAnInvalidPatternAndAValidOneAfterIt)
{
    qelRegExWrapper wrapper;
    qelArray<qelString> results;
    wrapper.setRegularExpression(L"(");
    EXPECT_FALSE(wrapper.match(L"(", results));
    wrapper.setRegularExpression(L"\\(");
    EXPECT_TRUE(wrapper.match(L"(", results));
}

TEST(qelRegExWrapper, CopiesTakeThePatternAndPartFromTheirSource)
{
    qelRegExWrapper original;
    original.setRegularExpression(L"a");
    qelRegExWrapper copy(original);
    qelRegExWrapper assigned;
    assigned.setRegularExpression(L"x");
    assigned = original;
    original.setRegularExpression(L"b");

    qelArray<qelString> results;
    EXPECT_TRUE(copy.match(L"a", results));
    EXPECT_FALSE(copy.match(L"b", results));
    EXPECT_TRUE(assigned.match(L"a", results));
    EXPECT_FALSE(assigned.match(L"x", results));
    EXPECT_TRUE(original.match(L"b", results));
}

TEST(qelRegExWrapper, SharesItsPatternAndReleasesIt)
{
    const qelString pattern(L"a");
    const int before = shareCountOf(pattern);
    {
        qelRegExWrapper original;
        original.setRegularExpression(pattern);
        EXPECT_EQ(before + 1, shareCountOf(pattern));
        const qelRegExWrapper copy(original);
        qelRegExWrapper assigned;
        assigned = original;
        EXPECT_EQ(before + 3, shareCountOf(pattern));
        assigned.setRegularExpression(L"b");
        EXPECT_EQ(before + 2, shareCountOf(pattern));
    }
    EXPECT_EQ(before, shareCountOf(pattern));
}

TEST(qelRegExWrapper, SurvivesAssignmentToItself)
{
    qelRegExWrapper wrapper;
    wrapper.setRegularExpression(L"a(b)");
    const qelRegExWrapper& same = wrapper;
    EXPECT_EQ(&wrapper, &(wrapper = same));
    qelArray<qelString> results;
    EXPECT_TRUE(wrapper.match(L"ab", results));
}

// ---------------------------------------------------------------------------------------------------- the results

TEST(qelRegExWrapperMatch, SkipsAGroupThatTookNoPart)
{
    EXPECT_EQ((Outcome{true, {L"ac"}}), matched(L"a(b)?c", L"ac"));
    EXPECT_EQ((Outcome{true, {L"abc", L"b"}}), matched(L"a(b)?c", L"abc"));
}

TEST(qelRegExWrapperMatch, SkipsAGroupThatMatchedEmptyText)
{
    EXPECT_EQ((Outcome{true, {L"ac", L"c"}}), matched(L"a(b*)(c)", L"ac"));
    EXPECT_EQ((Outcome{true, {L"a"}}), matched(L"()a()", L"a"));
}

TEST(qelRegExWrapperMatch, AppendsNothingForAnEmptyTextThatMatches)
{
    EXPECT_EQ((Outcome{true, {}}), matched(L"a*", L""));
    EXPECT_EQ((Outcome{true, {}}), matched(L"(a)?", L""));
}

TEST(qelRegExWrapperMatch, NeedsTheWholeText)
{
    EXPECT_EQ((Outcome{false, {}}), matched(L"b", L"abc"));
    EXPECT_EQ((Outcome{false, {}}), matched(L"a", L"ab"));
    EXPECT_EQ((Outcome{false, {}}), matched(L"b", L"ab"));
    EXPECT_EQ((Outcome{true, {L"abc"}}), matched(L".b.", L"abc"));
}

TEST(qelRegExWrapperMatch, ListsGroupsInTheOrderOfTheirOpeningParentheses)
{
    EXPECT_EQ((Outcome{true, {L"HEA 200x10", L"HEA", L"A", L"200x10", L"200", L"10"}}),
              matched(L"(HE([ABM])) ((\\d+)x(\\d+))", L"HEA 200x10"));
}

TEST(qelRegExWrapperMatch, FailsForAnInvalidPatternWhateverTheText)
{
    for (const wchar_t* pattern : {L"(", L")", L"a(b", L"a)", L"[a", L"*", L"+a", L"a{2,1}", L"\\", L"(?<n", L"[b-a]"})
    {
        EXPECT_EQ((Outcome{false, {}}), matched(pattern, L""));
        EXPECT_EQ((Outcome{false, {}}), matched(pattern, L"a"));
        EXPECT_EQ((Outcome{false, {}}), matched(pattern, pattern));
    }
}

TEST(qelRegExWrapperMatch, AppendsBehindWhatTheResultsHold)
{
    qelRegExWrapper wrapper;
    wrapper.setRegularExpression(L"(a)(b)");
    qelArray<qelString> results;
    results.append(L"old");
    EXPECT_TRUE(wrapper.match(L"ab", results));
    EXPECT_TRUE(wrapper.match(L"ab", results));
    EXPECT_EQ((Texts{L"old", L"ab", L"a", L"b", L"ab", L"a", L"b"}), listed(results));
}

TEST(qelRegExWrapperMatch, LeavesTheResultsAloneWhenNothingMatches)
{
    qelRegExWrapper wrapper;
    qelArray<qelString> results;
    results.append(L"old");
    wrapper.setRegularExpression(L"(a)(b)");
    EXPECT_FALSE(wrapper.match(L"ac", results));
    wrapper.setRegularExpression(L"(a");
    EXPECT_FALSE(wrapper.match(L"a", results));
    const qelTest::ImportHook hook("GetTickCount64", fastClock);
    wrapper.setRegularExpression(L"(a+)+b");
    EXPECT_FALSE(wrapper.match(times(100, L"a").c_str(), results));
    EXPECT_EQ((Texts{L"old"}), listed(results));
    EXPECT_EQ(8, results.physicalLength());
}

TEST(qelRegExWrapperMatch, TakesATextThatIsAnElementOfTheResults)
{
    qelRegExWrapper wrapper;
    wrapper.setRegularExpression(times(20, L"(.)").c_str());
    qelArray<qelString> results(1, 1);
    results.append(L"abcdefghijklmnopqrst");
    EXPECT_TRUE(wrapper.match(results[0], results));
    ASSERT_EQ(22, results.length());
    EXPECT_EQ(L"abcdefghijklmnopqrst", plain(results[0]));
    EXPECT_EQ(L"abcdefghijklmnopqrst", plain(results[1]));
    EXPECT_EQ(L"a", plain(results[2]));
    EXPECT_EQ(L"t", plain(results[21]));
}

TEST(qelRegExWrapperMatch, TakesATextInASpareSlotThatTheResultsOverwrite)
{
    qelRegExWrapper wrapper;
    wrapper.setRegularExpression(L"(.)(.)");
    qelArray<qelString> results(1, 1);
    results.append(L"ab");
    results.setLogicalLength(0);
    EXPECT_TRUE(wrapper.match(results[0], results));
    EXPECT_EQ((Texts{L"ab", L"a", L"b"}), listed(results));
}

TEST(qelRegExWrapperMatch, LeavesTheTextAsItIs)
{
    const qelString text(L"ab");
    const qelString before(text);
    qelRegExWrapper wrapper;
    wrapper.setRegularExpression(L"(a)b");
    qelArray<qelString> results;
    EXPECT_TRUE(wrapper.match(text, results));
    EXPECT_TRUE(isShared(before, text));
    results[0].setAt(0, L'x');
    EXPECT_EQ(L"ab", plain(text));
}

TEST(qelRegExWrapperMatch, HandlesUnitsBeyondLatin)
{
    EXPECT_EQ((Outcome{true, {L"\x4E2D\x00E4", L"\x00E4"}}), matched(L"\x4E2D(\x00E4)", L"\x4E2D\x00E4"));
    EXPECT_EQ((Outcome{true, {L"\x4E2D", L"\x4E2D"}}), matched(L"([\x4E00-\x9FFF])", L"\x4E2D"));
    // A character outside the basic plane takes two units, and so two dots.
    EXPECT_EQ((Outcome{true, {L"\xD83D\xDE00"}}), matched(L"..", L"\xD83D\xDE00"));
    EXPECT_EQ((Outcome{false, {}}), matched(L".", L"\xD83D\xDE00"));
}

// ------------------------------------------------------------------------------------------------- against the engine

TEST(qelRegExWrapperEngine, GivesWhatTheEngineGivesByItself)
{
    struct Row
    {
        const wchar_t* pattern;
        const wchar_t* text;
        bool matches; ///< worked out by hand, so that two equal mistakes show
    };
    const Row rows[] = {
        // groups
        {L"(a)(b)(c)", L"abc", true},
        {L"((a)(b))c", L"abc", true},
        {L"(?:a)(b)", L"ab", true},
        {L"((((a))))", L"a", true},
        {L"(?P<name>a)(?P=name)", L"aa", true},
        {L"(?P<name>a)(?P<name>b)", L"ab", false},
        {L"(?>a+)ab", L"aaab", false},
        {L"(?>a+)b", L"aaab", true},
        {L"(?<name>a)", L"a", false},
        // alternation
        {L"a|b", L"b", true},
        {L"a|ab", L"ab", true},
        {L"(a|ab)(c|bcd)(d*)", L"abcd", true},
        {L"(a|)b", L"b", true},
        {L"|a", L"a", true},
        {L"a||b", L"", true},
        {L"(IPE|HEA|HEB) (100|200)", L"HEB 200", true},
        {L"(IPE|HEA|HEB) (100|200)", L"HEC 200", false},
        // classes
        {L"[abc]+", L"cab", true},
        {L"[^abc]+", L"xyz", true},
        {L"[^abc]+", L"xaz", false},
        {L"[a-z0-9_]+", L"az_09", true},
        {L"[]a]+", L"a]", true},
        {L"[a-]+", L"-a-", true},
        {L"[\\d.]+", L"3.14", true},
        {L"[[:alpha:]]+", L"abc", true},
        {L"[[:digit:][:space:]]+", L"1 2", true},
        {L"\\w+\\s\\d+", L"ab 12", true},
        {L"\\W\\S\\D", L"-ab", true},
        {L"\\D+", L"12", false},
        {L".\\..", L"a.b", true},
        {L"\\x41\\u0042", L"AB", true},
        {L"\\t\\n\\r", L"\t\n\r", true},
        {L"(?i)hEa", L"HEA", true},
        {L"(?i)[a-f]+", L"AbC", true},
        {L"(?i:a)b", L"Ab", true},
        {L"x(?i:a)b", L"xAb", true},
        {L"x(?i:a)b", L"xAB", false},
        {L"(?i:a)b", L"AB", true}, // options of a group at the very beginning hold for the whole pattern
        {L"a(?-i)B", L"ab", false},
        {L"\\Qa.b*\\E", L"a.b*", true},
        // quantifiers
        {L"a*", L"", true},
        {L"a+", L"", false},
        {L"a?", L"aa", false},
        {L"a{3}", L"aaa", true},
        {L"a{3}", L"aa", false},
        {L"a{2,}", L"aaaa", true},
        {L"a{1,3}", L"aaaa", false},
        {L"a{0}", L"", true},
        {L"(ab){2}", L"abab", true},
        {L"(ab){2,3}c", L"abababc", true},
        {L"(a*)*", L"aaa", true},
        {L"(a*)+", L"", true},
        {L"(a|b)*c", L"ababc", true},
        {L"(?:a|bc)+d", L"abcad", true},
        {L"a**", L"a", false},
        // lazy quantifiers
        {L"(a+?)(a*)", L"aaa", true},
        {L"(a*?)(a*)", L"aaa", true},
        {L"(a?"
         L"?)(a?)",
         L"a", true},
        {L"(a{1,2}?)(a*)", L"aaa", true},
        {L"<(.+?)>.*", L"<a><b>", true},
        // captures inside repeated groups
        {L"(?:(a)|b)*", L"ab", true},
        {L"(?:(a)|(b))*", L"aba", true},
        {L"((a)|b)+", L"ab", true},
        {L"(z)((a+)?(b+)?(c))*", L"zaacbbbcac", true},
        // look-ahead and look-behind
        {L"(?=a)ab", L"ab", true},
        {L"(?=b)ab", L"ab", false},
        {L"(?!b)ab", L"ab", true},
        {L"(?!a)ab", L"ab", false},
        {L"(?=(a+))a*b", L"aab", true},
        {L"a(?=b)", L"ab", false},
        {L"a(?<=a)b", L"ab", true},
        {L"a(?<=b)b", L"ab", false},
        {L"a(?<!b)b", L"ab", true},
        {L"a(?<!a)b", L"ab", false},
        {L"(?<=a+)b", L"ab", false},
        {L"\\bab\\b", L"ab", true},
        {L"a\\bb", L"ab", false},
        {L"a\\Bb", L"ab", true},
        // back references
        {L"(a+)b\\1", L"aabaa", true},
        {L"(a+)b\\1", L"aabaaa", false},
        {L"(.)(.)\\2\\1", L"abba", true},
        {L"(a)?\\1b", L"b", false},
        {L"(a\\1)", L"a", false},
        {L"(?i)(a)\\1", L"aA", true},
        // empty groups
        {L"()", L"", true},
        {L"a()b", L"ab", true},
        {L"(?:)a", L"a", true},
        {L"(|a)+", L"aa", true},
        {L"(?#note)a", L"a", true},
        {L"(?#\\)[(|.{2})a(?#)b", L"ab", true},
        // lone braces and brackets
        {L"{", L"{", true},
        {L"a{", L"a{", false},
        {L"a{b", L"a{b", false},
        {L"{a", L"{a", true},
        {L"a}", L"a}", true},
        {L"a\\{b", L"a{b", true},
        {L"}", L"}", true},
        {L"]", L"]", true},
        {L"a{,2}", L"aa", false},
        // line ends
        {L".", L"\n", true},
        {L"a.b", L"a\r\nb", false},
        {L"(?-s)a.b", L"a\nb", false},
        {L"^ab$", L"ab", true},
        {L"a\\n^b$", L"a\nb", true},
        {L"a$\\nb", L"a\nb", true},
        // invalid
        {L"(", L"", false},
        {L"a)", L"a)", false},
        {L"[", L"[", false},
        {L"[a", L"a", false},
        {L"?", L"?", false},
        {L"a{2,1}", L"aa", false},
        {L"\\", L"\\", false},
        {L"(?", L"(?", false},
        {L"(?<a>b)", L"b", false},
        {L"[z-a]", L"z", false},
        {L"[[:none:]]", L"n", false},
        // what else differs from ECMAScript
        {L"[]", L"", false},
        {L"[^]", L"a", false},
        {L"[]]", L"]", false},
        {L"[^]a]", L"b", true},
        {L"(?=a)*a", L"a", false},
        {L"^*a", L"a", false},
        {L"(?:)+a", L"a", false},
        {L"\\k", L"k", true},
        {L"\\1(a)", L"a", false},
        {L"ab(?<=ab|c)", L"ab", false},
        {L"ab(?<=ab|cd)", L"ab", true},
        {L"\\p{L}", L"a", false},
        {L"\\Aa\\Z", L"a", true},
        {L"\\e", L"\x1B", true},
        {L"(?-m)a\n^b", L"a\nb", false},
        {L"(?-s)a.b", L"a\rb", true},
        {L"(?x)a b # note", L"ab", true},
        {L"(?i)\x00E4", L"\x00C4", false},
        {L"(?:(?i:a)b)", L"AB", false},
    };
    for (const Row& row : rows)
    {
        const Outcome raw = expected(row.pattern, row.text);
        EXPECT_EQ(raw, matched(row.pattern, row.text)) << std::string(row.pattern, row.pattern + wcslen(row.pattern));
        EXPECT_EQ(row.matches, raw.matched) << std::string(row.pattern, row.pattern + wcslen(row.pattern));
    }
}

TEST(qelRegExWrapperEngine, GivesWhatTheEngineGivesForRandomPatterns)
{
    qelTest::RandomText random(20240229);
    int matches = 0;
    for (int i = 0; i < 4000; ++i)
    {
        const std::wstring pattern = RandomPattern(random).make(2);
        for (int j = 0; j < 4; ++j)
        {
            const std::wstring text = random.text<wchar_t>(L"aabbxA1\n", 6);
            const Outcome raw = expected(pattern, text);
            matches += raw.matched ? 1 : 0;
            ASSERT_EQ(raw, matched(pattern, text))
                << std::string(pattern.begin(), pattern.end()) << "  on  " << std::string(text.begin(), text.end());
        }
    }
    EXPECT_GT(matches, 500);
}

// ---------------------------------------------------------------------------------------------------------- the limits

TEST(qelRegExWrapperComments, MayHoldQuantifiers)
{
    EXPECT_EQ((Outcome{true, {L"x"}}), matched(L"(?#a?b)x", L"x"));
    EXPECT_EQ((Outcome{true, {L"xy"}}), matched(L"x(?#*)(?#+?{2}**)y", L"xy"));
    EXPECT_EQ((Outcome{true, {L"xxy", L"xx"}}), matched(L"(x+(?#\\)?))y", L"xxy"));
    EXPECT_EQ((Outcome{false, {}}), matched(L"x(?#a?", L"x")) << "no end";
    EXPECT_EQ((Outcome{false, {}}), matched(L"x(?#a?)*", L"x"))
        << "a quantifier behind a comment has nothing to repeat";
    EXPECT_EQ((Outcome{false, {}}), matched(L"(?#a)?x", L"x"));
}

TEST(qelRegExWrapperLimits, RefuseNothingThatTheEngineFinishes)
{
    const std::wstring xml =
        L"<name>n</name><path>p</path>" + times(100, L"<item><name>x</name><file>y</file></item>\n");
    const std::wstring pattern = L".*<name>(.*)</name>.*<path>(.*)</path>.*";
    EXPECT_EQ((Outcome{true, {xml, L"n", L"p"}}), expected(pattern, xml));
    EXPECT_EQ((Outcome{true, {xml, L"n", L"p"}}), matched(pattern, xml));

    const std::wstring foos = L"bar foo bar " + times(4000, L"foo ");
    EXPECT_EQ((Outcome{true, {foos}}), matched(L".*foo.*bar.*", foos));
}

TEST(qelRegExWrapperLimits, LeaveAMatchManyTimesTenSecondsButNotMinutes)
{
    const std::wstring text = L"bar foo bar " + times(500, L"foo ");
    EXPECT_TRUE(matchedAfter(40000, L".*foo.*bar.*", text).matched);
    EXPECT_FALSE(matchedAfter(90000, L".*foo.*bar.*", text).matched);
}

TEST(qelRegExWrapperLimits, EndWhatWouldNeverEnd)
{
    const std::wstring units = times(200, L"a");
    expectGivesUp(L"(a+)+b", units);
    expectGivesUp(L"(a*)*b", units);
    expectGivesUp(L"(a|a)*b", units);
    expectGivesUp(L"(.*)(.*)(.*)(.*)(.*)(.*)(.*)b", units);
    expectGivesUp(L"(?:a+)+b", times(500000, L"a"));
    expectGivesUp(L"(?:(?=(a+))a)*(a+)+b", units);
}

TEST(qelRegExWrapperLimits, EndChoicesThatNeverMoveOn)
{
    for (const wchar_t* choice : {L"(?:|)", L"(|)", L"()?", L"(?:^|)", L"(?:a?)?", L"(?>)?", L"(?:|\\b)"})
    {
        expectGivesUp(times(60, choice) + L"(?!)", L"a");
    }
    expectGivesUp(times(60, L"(?:a|[ab])") + L"x", times(61, L"a"));
    expectGivesUp(times(40, L"(") + L"a*" + times(40, L")*") + L"x", L"b");
}

TEST(qelRegExWrapperLimits, HoldOnASmallStack)
{
    inThread(kSmallStack, [] {
        expectGivesUp(L"(a+)+b", times(200, L"a"));
        expectGivesUp(L"(a+)+b", times(500000, L"a"));
        expectGivesUp(L"(?:(?:a|bc)+d?)+x", times(500000, L"a"));
    });
}

TEST(qelRegExWrapperLimits, LeaveRoomForRepeatedGroupsOnLongTextsWhateverTheStack)
{
    const std::wstring text = times(20000, L"ab");
    const Outcome repeated = {true, {text, L"b"}};
    EXPECT_EQ(repeated, matched(L"(a|b)*", text));
    inThread(kSmallStack, [&] { EXPECT_EQ(repeated, matched(L"(a|b)*", text)); });
}

TEST(qelRegExWrapperLimits, LeaveRoomForARepeatedGroupOnTheLongestText)
{
    const std::wstring text = times(524287, L"a");
    EXPECT_EQ((Outcome{true, {text, L"a"}}), matched(L"(a|b)*", text));
}

TEST(qelRegExWrapperLimits, LeaveRoomForSimplePatternsOnTheLongestTexts)
{
    const std::wstring text = times(500000, L"a");
    for (const wchar_t* pattern : {L"a*", L".*", L"[a-z]+", L"(?:a|b)*", L"(.*)", L".*a.*a.*", L".*?", L"(?=.*a).*"})
    {
        const Outcome outcome = matched(pattern, text);
        EXPECT_TRUE(outcome.matched) << std::string(pattern, pattern + wcslen(pattern));
        EXPECT_EQ(text, outcome.texts.empty() ? L"" : outcome.texts[0]);
    }
    EXPECT_EQ((Outcome{false, {}}), matched(L"a*b", text));
    EXPECT_EQ((Outcome{true, {text}}), matched(text, text)) << "a long literal pattern";
}

TEST(qelRegExWrapperLimits, HoldForLongAndDeeplyNestedPatterns)
{
    const qelTest::ImportHook hook("GetTickCount64", fastClock);
    const auto tryAll = [] {
        for (size_t count : {100U, 5000U})
        {
            const std::wstring nested = times(count, L"(") + L"a" + times(count, L")");
            const Outcome outcome = matched(nested, L"a");
            EXPECT_EQ(outcome.matched ? count + 1 : 0, outcome.texts.size());
            matched(times(count, L"(") + L"a" + times(count, L")*"), L"aa");
            matched(times(count, L"(?:"), L"a");
            matched(times(count, L"(?=a"), L"a");
            matched(times(count, L"aa*"), L"a");
            matched(times(count, L"(a|b)?"), L"a");
            matched(times(count, L"(?#)"), L"a");
            matched(times(count, L"a{0}"), L"a");
            matched(times(count, L"a|"), L"b");
            matched(times(count, L"[a"), L"b");
            matched(times(count, L"\\1"), L"b");
        }
    };
    tryAll();
    inThread(kSmallStack, tryAll);
    matched(times(170000, L"(") + L"a" + times(170000, L")"), L"a");
    matched(times(260000, L"a?"), L"a");
    matched(times(524288, L"("), L"a");
    matched(times(524288, L"."), L"a");
}

TEST(qelRegExWrapperLimits, LeaveRoomForLongPatternsWhateverTheStack)
{
    const auto tryAll = [] {
        EXPECT_EQ(1001U, matched(times(1000, L"(") + L"a" + times(1000, L")"), L"a").texts.size());
        EXPECT_TRUE(matched(times(5000, L"a?"), times(5000, L"a")).matched);
        EXPECT_TRUE(matched(times(20000, L"IPE|HEA|") + L"X", L"X").matched);
    };
    tryAll();
    inThread(kSmallStack, tryAll);
}

TEST(qelRegExWrapperLimits, NestTwentyThousandGroupsButNotTwoHundredThousand)
{
    const auto nested = [](size_t count) { return times(count, L"(") + L"a" + times(count, L")"); };
    EXPECT_EQ(20001U, matched(nested(20000), L"a").texts.size());
    EXPECT_FALSE(matched(nested(200000), L"a").matched);
    EXPECT_TRUE(matched(times(20000, L"(?:") + L"a" + times(20000, L")"), L"a").matched);
}

TEST(qelRegExWrapperLimits, AdmitSome349000SpecialCharacters)
{
    // Where all of them take part in the match, it needs some stack as well.
    EXPECT_TRUE(matched(times(300000, L"."), times(300000, L"a")).matched);
    EXPECT_TRUE(matched(L"x|" + times(345000, L"."), L"x").matched);
    EXPECT_FALSE(matched(L"x|" + times(355000, L"."), L"x").matched);
}

/// Processor time of this thread, in units of 100 ns: other programs take none of it.
unsigned long long threadTime()
{
    FILETIME created;
    FILETIME ended;
    ULARGE_INTEGER kernel;
    ULARGE_INTEGER user;
    static_assert(sizeof(FILETIME) == sizeof(ULARGE_INTEGER), "the same two halves");
    GetThreadTimes(GetCurrentThread(), &created, &ended, reinterpret_cast<FILETIME*>(&kernel),
                   reinterpret_cast<FILETIME*>(&user));
    return user.QuadPart;
}

TEST(qelRegExWrapperLimits, TakeNestedGroupsInAFractionOfASecond)
{
    const std::wstring nested = times(50000, L"(") + L"a" + times(50000, L")");
    const unsigned long long begin = threadTime();
    EXPECT_TRUE(matched(nested, L"a").matched);
    EXPECT_LT(threadTime() - begin, 20000000u) << "time that grows with their square would take some seconds";
}

TEST(qelRegExWrapperLimits, LeaveTheLastPartOfTheCallersStackAlone)
{
    size_t untouched = 0;
    bool matches = false;
    inThread(kSmallStack, [&] {
        const std::wstring text = times(3000, L"a") + times(3000, L"b");
        UntouchedStack stack;
        stack.fill();
        fibersMade = 0;
        const qelTest::ImportHook hook("CreateFiberEx", countingFiber);
        matches = matched(L"a(?R)?b", text).matched;
        untouched = stack.measure();
    });
    EXPECT_TRUE(matches);
    EXPECT_EQ(1, fibersMade) << "or the stack was not used up";
    EXPECT_GT(untouched, 32U * 1024);
    EXPECT_LT(untouched, 72U * 1024);
}

TEST(qelRegExWrapperLimits, TakeALargeStackForLongTextsOnly)
{
    const qelTest::ImportHook hook("CreateFiberEx", countingFiber);
    inThread(1024 * 1024, [&] {
        fibersMade = 0;
        EXPECT_TRUE(matched(L"(x|y)*", times(700, L"xy")).matched);
        EXPECT_TRUE(matched(L"[xy]*", times(100000, L"xy")).matched);
        EXPECT_EQ(0, fibersMade);
        EXPECT_TRUE(matched(L"(x|y)*", times(4000, L"xy")).matched);
        EXPECT_EQ(1, fibersMade);
    });
}

TEST(qelRegExWrapperLimits, TryNoSmallStackForARepeatedGroupOnALongText)
{
    size_t untouched = 0;
    inThread(kSmallStack, [&] {
        const std::wstring text = times(4000, L"xy");
        UntouchedStack stack;
        stack.fill();
        EXPECT_TRUE(matched(L"(x|y)*", text).matched);
        untouched = stack.measure();
    });
    EXPECT_GT(untouched, kSmallStack / 2) << "most of it was used first";
}

TEST(qelRegExWrapperLimits, PutMoreOfTheStackInUseWhereThatIsNeeded)
{
    const qelTest::ImportHook hook("CreateFiberEx", countingFiber);
    bool matches = false;
    inThread(1024 * 1024, [&] {
        const std::wstring text = times(700, L"xy");
        const PartOfTheStackInUse part;
        fibersMade = 0;
        matches = matched(L"(x|y)*", text).matched;
    });
    EXPECT_TRUE(matches);
    EXPECT_EQ(0, fibersMade);
}

TEST(qelRegExWrapperLimits, HoldForPatternsThatCallThemselves)
{
    const qelTest::ImportHook hook("GetTickCount64", fastClock);
    EXPECT_EQ((Outcome{true, {L"aabb", L"aabb"}}), matched(L"(a(?R)?b)", L"aabb"));
    EXPECT_TRUE(matched(L"a(?R)?b", times(5000, L"a") + times(5000, L"b")).matched);
    matched(L"a(?R)?b", times(250000, L"a") + times(250000, L"b"));
    matched(L"(?R)", L"a");
    matched(L"(?:(?R)|a)(?R)", times(1000, L"a"));
    inThread(kSmallStack, [] {
        EXPECT_TRUE(matched(L"a(?R)?b", times(5000, L"a") + times(5000, L"b")).matched);
        matched(L"a(?R)?b", times(250000, L"a") + times(250000, L"b"));
    });
}

TEST(qelRegExWrapperLimits, ABackReferenceToAGroupThatDoesNotExistMatchesNothing)
{
    EXPECT_EQ((Outcome{true, {L"a"}}), matched(L"(?:\\9|a)", L"a"));
    EXPECT_EQ((Outcome{true, {L"aab", L"aa", L"b"}}), matched(L"(a+)(b|\\7)", L"aab"));
    EXPECT_EQ((Outcome{false, {}}), matched(L"a\\9", L"a"));
    EXPECT_EQ((Outcome{false, {}}), matched(L"\\1", L""));
    EXPECT_EQ((Outcome{false, {}}), matched(times(300, L"(?>(?:ab|c)+x)") + L"\\9", times(300, L"abx")));
    EXPECT_TRUE(matched(L"a|\\9", L"a").matched) << "it is never reached";
}

TEST(qelRegExWrapperLimits, WorkInsideAFiberAndLeaveTheThreadAsItWas)
{
    const std::wstring text = times(20000, L"ab");
    inThread(kSmallStack, [&] {
        EXPECT_TRUE(matched(L"(a|b)*", text).matched);
        EXPECT_FALSE(IsThreadAFiber());
        void* const own = ConvertThreadToFiber(nullptr);
        EXPECT_TRUE(matched(L"(a|b)*", text).matched);
        EXPECT_TRUE(IsThreadAFiber());
        EXPECT_EQ(own, ConvertThreadToFiber(nullptr) == nullptr ? own : nullptr) << "already one";
        ConvertFiberToThread();
    });
}

TEST(qelRegExWrapperLimits, HoldWhileAnExceptionIsUnderWay)
{
    struct MatchesWhenDestroyed
    {
        Outcome& outcome;
        ~MatchesWhenDestroyed() { outcome = matched(L"(a|b)*", times(20000, L"ab")); }
    };
    Outcome outcome = {false, {}};
    try
    {
        MatchesWhenDestroyed object = {outcome};
        throw 1;
    }
    catch (int)
    {
        expectGivesUp(L"(a+)+b", times(100, L"a"));
    }
    EXPECT_TRUE(outcome.matched);
}

TEST(qelRegExWrapperMemory, RunningOutAnywhereIsFalseAndKeepsWhatWasAppended)
{
    qelRegExWrapper wrapper;
    wrapper.setRegularExpression(L"(?:(a)|[b-c]x|(?=(d))d)+?(?P<rest>e.*)(?R)?");
    const qelString text(L"abxdefg");
    const Texts all = {L"abxdefg", L"a", L"d", L"efg"};
    bool matches = false;
    bool keptSome = false;
    long failures = 0;
    for (long allowed = 0; !matches && allowed < 10000; ++allowed)
    {
        qelArray<qelString> results(0, 1);
        {
            const qelTest::ImportHook hook("malloc", failingMalloc);
            allocationsLeft = allowed;
            matches = wrapper.match(text, results);
        }
        const Texts got = listed(results);
        ASSERT_LE(got.size(), all.size());
        EXPECT_TRUE(std::equal(got.begin(), got.end(), all.begin()));
        keptSome = keptSome || (!matches && !got.empty());
        failures += matches ? 0 : 1;
        if (matches)
        {
            EXPECT_EQ(all, got);
        }
    }
    EXPECT_TRUE(matches);
    EXPECT_TRUE(keptSome);
    EXPECT_GT(failures, 20);
}

void* WINAPI refusingToConvert(void*, DWORD)
{
    return nullptr;
}

TEST(qelRegExWrapperMemory, RunningOutForBecomingAFiberIsFalse)
{
    const std::wstring text = times(20000, L"ab");
    const qelTest::ImportHook hook("ConvertThreadToFiberEx", refusingToConvert);
    inThread(kSmallStack, [&] {
        EXPECT_EQ((Outcome{false, {}}), matched(L"(a|b)*", text));
        EXPECT_FALSE(IsThreadAFiber());
    });
}

TEST(qelRegExWrapperMemory, RunningOutForBecomingAFiberLeavesTheCallersStack)
{
    const std::wstring text = times(20000, L"ab");
    const qelTest::ImportHook hook("ConvertThreadToFiberEx", refusingToConvert);
    inThread(kSmallStack, [&] { EXPECT_TRUE(matched(L"(x|y)*[ab]*", text).matched); });
}

TEST(qelRegExWrapperMemory, RunningOutForTheLargeStackIsFalse)
{
    const std::wstring text = times(20000, L"ab");
    const qelTest::ImportHook hook("CreateFiberEx", refusingFiber);
    inThread(kSmallStack, [&] {
        EXPECT_EQ((Outcome{false, {}}), matched(L"(a|b)*", text));
        EXPECT_FALSE(IsThreadAFiber());
    });
}
