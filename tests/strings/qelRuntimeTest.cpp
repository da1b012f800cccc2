#define _CRT_SECURE_NO_WARNINGS // strerror says what to expect

#include "qelRuntime.h"

#include "qelString.h"

#include "support/ImportHook.h"
#include "support/OpenHandles.h"
#include "support/TemporaryFolder.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <wchar.h>

#include <string>
#include <vector>

using qelTest::contentOf;
using qelTest::openHandles;
using qelTest::TemporaryFolder;

namespace
{
// The three forms of every wrapper under common names, so that one test body covers them all.

struct Narrow
{
    using Char = char;
    static inline const auto copy = &qelstrcpy;
    static inline const auto copyCount = &qelstrncpy;
    static inline const auto append = &qelstrcat;
    static inline const auto appendCount = &qelstrncat;
    static inline const auto upper = &qelstrupr;
    static inline const auto lower = &qelstrlwr;
    static inline const auto fill = &qelstrset;
    static inline const auto environment = &qeldupenv;
    static inline const auto token = &qelstrtok;
    static inline const auto split = &qelsplitpath;
    static inline const auto join = &qelmakepath;
    static inline const auto time = &qelstrtime;
    static inline const auto date = &qelstrdate;
    static inline const auto fromInt = &qelitoa;
    static inline const auto fromLong = &qelltoa;
    static inline const auto error = &qelstrerror;
    static inline const auto search = &qelsearchenv;
};

struct Six
{
    using Char = unsigned short;
    static inline const auto copy = &qelwcscpy6;
    static inline const auto copyCount = &qelwcsncpy6;
    static inline const auto append = &qelwcscat6;
    static inline const auto appendCount = &qelwcsncat6;
    static inline const auto upper = &qelwcsupr6;
    static inline const auto lower = &qelwcslwr6;
    static inline const auto fill = &qelwcsset6;
    static inline const auto environment = &qelwdupenv6;
    static inline const auto token = &qelwcstok6;
    static inline const auto split = &qelwsplitpath6;
    static inline const auto join = &qelwmakepath6;
    static inline const auto time = &qelwstrtime6;
    static inline const auto date = &qelwstrdate6;
    static inline const auto fromInt = &qelitow6;
    static inline const auto fromLong = &qelltow6;
    static inline const auto error = &qelwcserror6;
    static inline const auto search = &qelwsearchenv6;
    static inline const auto automation = &qelGetBSTR6;
};

struct Eight
{
    using Char = wchar_t;
    static inline const auto copy = &qelwcscpy8;
    static inline const auto copyCount = &qelwcsncpy8;
    static inline const auto append = &qelwcscat8;
    static inline const auto appendCount = &qelwcsncat8;
    static inline const auto upper = &qelwcsupr8;
    static inline const auto lower = &qelwcslwr8;
    static inline const auto fill = &qelwcsset8;
    static inline const auto environment = &qelwdupenv8;
    static inline const auto token = &qelwcstok8;
    static inline const auto split = &qelwsplitpath8;
    static inline const auto join = &qelwmakepath8;
    static inline const auto time = &qelwstrtime8;
    static inline const auto date = &qelwstrdate8;
    static inline const auto fromInt = &qelitow8;
    static inline const auto fromLong = &qelltow8;
    static inline const auto error = &qelwcserror8;
    static inline const auto search = &qelwsearchenv8;
    static inline const auto automation = &qelGetBSTR8;
};

/// ASCII text in the form's characters.
template <typename Char> std::vector<Char> in(const std::string& text)
{
    std::vector<Char> result;
    for (const char c : text)
    {
        result.push_back(static_cast<Char>(c));
    }
    result.push_back(0);
    return result;
}

template <typename Char> std::string out(const Char* text)
{
    std::string result;
    for (; *text != 0; ++text)
    {
        result.push_back(static_cast<char>(*text));
    }
    return result;
}

/// Room for a result, filled with '#' so that a write past the stated capacity shows.
template <typename Char> class Room
{
public:
    explicit Room(const std::string& text = "###")
    {
        for (Char& c : m_data)
        {
            c = '#';
        }
        const std::vector<Char> start = in<Char>(text);
        for (size_t i = 0; i < start.size(); ++i)
        {
            m_data[i] = start[i];
        }
    }

    operator Char*() { return m_data; }

    std::string text() const { return out(m_data); }

    bool isUntouchedFrom(size_t index) const
    {
        for (size_t i = index; i < kSize; ++i)
        {
            if (m_data[i] != '#')
            {
                return false;
            }
        }
        return true;
    }

    static const size_t kSize = 400;

private:
    Char m_data[kSize];
};

void ignoreInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, uintptr_t) {}

/// Lets the runtime return its error codes where it would end the process.
class ReturningFailures
{
public:
    ReturningFailures()
        : m_previous(_set_invalid_parameter_handler(ignoreInvalidParameter))
    {
    }

    ~ReturningFailures() { _set_invalid_parameter_handler(m_previous); }

private:
    _invalid_parameter_handler m_previous;
};

template <typename Form> class qelRuntime : public testing::Test
{
    ReturningFailures m_failures;
};

template <typename Form> class qelRuntimeWide : public qelRuntime<Form>
{
};

using AllForms = testing::Types<Narrow, Six, Eight>;
using WideForms = testing::Types<Six, Eight>;
TYPED_TEST_SUITE(qelRuntime, AllForms, );
TYPED_TEST_SUITE(qelRuntimeWide, WideForms, );

// Copying and appending

TYPED_TEST(qelRuntime, CopiesTextThatFitsExactly)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::copy(room, 6, in<Char>("model").data()), 0);
    EXPECT_EQ(room.text(), "model");
    EXPECT_TRUE(room.isUntouchedFrom(6));
}

TYPED_TEST(qelRuntime, EmptiesTheTargetWhenACopyIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::copy(room, 5, in<Char>("model").data()), ERANGE);
    EXPECT_EQ(room.text(), "");
    EXPECT_TRUE(room.isUntouchedFrom(5));
}

TYPED_TEST(qelRuntime, RefusesToCopyWithoutTargetSourceOrCapacity)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::copy(nullptr, 5, in<Char>("a").data()), EINVAL);
    EXPECT_EQ(TypeParam::copy(room, 0, in<Char>("a").data()), EINVAL);
    EXPECT_EQ(room.text(), "###");
    EXPECT_EQ(TypeParam::copy(room, 5, nullptr), EINVAL);
    EXPECT_EQ(room.text(), "");
}

TYPED_TEST(qelRuntime, CopiesNoMoreThanTheCount)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::copyCount(room, 4, in<Char>("model").data(), 3), 0);
    EXPECT_EQ(room.text(), "mod");
    EXPECT_EQ(TypeParam::copyCount(room, 10, in<Char>("ab").data(), 9), 0);
    EXPECT_EQ(room.text(), "ab");
    EXPECT_EQ(TypeParam::copyCount(room, 10, in<Char>("ab").data(), 0), 0);
    EXPECT_EQ(room.text(), "");
}

TYPED_TEST(qelRuntime, EmptiesTheTargetWhenACountedCopyIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::copyCount(room, 3, in<Char>("model").data(), 3), ERANGE);
    EXPECT_EQ(room.text(), "");
    EXPECT_TRUE(room.isUntouchedFrom(3 + 1));
}

TYPED_TEST(qelRuntime, CutsACountedCopyOnRequest)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::copyCount(room, 4, in<Char>("model").data(), _TRUNCATE), STRUNCATE);
    EXPECT_EQ(room.text(), "mod");
    EXPECT_EQ(TypeParam::copyCount(room, 6, in<Char>("model").data(), _TRUNCATE), 0);
    EXPECT_EQ(room.text(), "model");
}

TYPED_TEST(qelRuntime, RefusesACountedCopyWithoutTargetOrSource)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::copyCount(nullptr, 4, in<Char>("a").data(), 1), EINVAL);
    EXPECT_EQ(TypeParam::copyCount(room, 0, in<Char>("a").data(), 1), EINVAL);
    EXPECT_EQ(room.text(), "###");
    EXPECT_EQ(TypeParam::copyCount(room, 4, nullptr, 1), EINVAL);
    EXPECT_EQ(room.text(), "");
    EXPECT_EQ(TypeParam::copyCount(nullptr, 0, nullptr, 0), 0);
}

TYPED_TEST(qelRuntime, AppendsTextThatFitsExactly)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("IPE");
    EXPECT_EQ(TypeParam::append(room, 7, in<Char>("200").data()), 0);
    EXPECT_EQ(room.text(), "IPE200");
    EXPECT_TRUE(room.isUntouchedFrom(7));
}

TYPED_TEST(qelRuntime, EmptiesTheTargetWhenAnAppendedTextIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("IPE");
    EXPECT_EQ(TypeParam::append(room, 6, in<Char>("200").data()), ERANGE);
    EXPECT_EQ(room.text(), "");
    EXPECT_TRUE(room.isUntouchedFrom(6));
}

TYPED_TEST(qelRuntime, RefusesToAppendWithoutTargetSourceOrCapacity)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("IPE");
    EXPECT_EQ(TypeParam::append(nullptr, 7, in<Char>("a").data()), EINVAL);
    EXPECT_EQ(TypeParam::append(room, 0, in<Char>("a").data()), EINVAL);
    EXPECT_EQ(room.text(), "IPE");
    EXPECT_EQ(TypeParam::append(room, 7, nullptr), EINVAL);
    EXPECT_EQ(room.text(), "");
}

TYPED_TEST(qelRuntime, AppendsNoMoreThanTheCount)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("IPE");
    EXPECT_EQ(TypeParam::appendCount(room, 6, in<Char>("200").data(), 2), 0);
    EXPECT_EQ(room.text(), "IPE20");
    EXPECT_TRUE(room.isUntouchedFrom(6));
    EXPECT_EQ(TypeParam::appendCount(room, 6, nullptr, 0), 0);
    EXPECT_EQ(room.text(), "IPE20");
}

TYPED_TEST(qelRuntime, EmptiesTheTargetWhenACountedAppendIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("IPE");
    EXPECT_EQ(TypeParam::appendCount(room, 5, in<Char>("200").data(), 2), ERANGE);
    EXPECT_EQ(room.text(), "");
}

TYPED_TEST(qelRuntime, CutsACountedAppendOnRequest)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("IPE");
    EXPECT_EQ(TypeParam::appendCount(room, 5, in<Char>("200").data(), _TRUNCATE), STRUNCATE);
    EXPECT_EQ(room.text(), "IPE2");
}

TYPED_TEST(qelRuntime, RefusesACountedAppendWithoutTargetSourceOrTerminator)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("IPE");
    EXPECT_EQ(TypeParam::appendCount(nullptr, 5, in<Char>("a").data(), 1), EINVAL);
    EXPECT_EQ(TypeParam::appendCount(room, 0, in<Char>("a").data(), 1), EINVAL);
    EXPECT_EQ(room.text(), "IPE");
    EXPECT_EQ(TypeParam::appendCount(room, 5, nullptr, 1), EINVAL);
    EXPECT_EQ(room.text(), "");
    Room<Char> full("IPE");
    EXPECT_EQ(TypeParam::appendCount(full, 3, in<Char>("a").data(), 1), EINVAL);
    EXPECT_EQ(full.text(), "");
}

// Changing in place

TYPED_TEST(qelRuntime, ConvertsLetterCaseInPlace)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("Rib 7a-Z");
    EXPECT_EQ(TypeParam::upper(room, 9), 0);
    EXPECT_EQ(room.text(), "RIB 7A-Z");
    EXPECT_EQ(TypeParam::lower(room, 9), 0);
    EXPECT_EQ(room.text(), "rib 7a-z");
    EXPECT_TRUE(room.isUntouchedFrom(9));
}

TYPED_TEST(qelRuntime, RefusesToConvertTextWithoutTerminatorInTheCapacity)
{
    using Char = typename TypeParam::Char;
    Room<Char> upper("Rib");
    EXPECT_EQ(TypeParam::upper(upper, 3), EINVAL);
    EXPECT_EQ(upper.text(), "");
    Room<Char> lower("Rib");
    EXPECT_EQ(TypeParam::lower(lower, 3), EINVAL);
    EXPECT_EQ(lower.text(), "");
}

TYPED_TEST(qelRuntime, RefusesToConvertWithoutBuffer)
{
    EXPECT_EQ(TypeParam::upper(nullptr, 3), EINVAL);
    EXPECT_EQ(TypeParam::lower(nullptr, 3), EINVAL);
}

TYPED_TEST(qelRuntime, LeavesABufferOfNoCapacityAloneWhenConverting)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("Rib");
    EXPECT_EQ(TypeParam::upper(room, 0), EINVAL);
    EXPECT_EQ(TypeParam::lower(room, 0), EINVAL);
    EXPECT_EQ(room.text(), "Rib");
}

TYPED_TEST(qelRuntime, SetsEveryElementBeforeTheTerminator)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("beam");
    EXPECT_EQ(TypeParam::fill(room, 5, 'x'), 0);
    EXPECT_EQ(room.text(), "xxxx");
    EXPECT_TRUE(room.isUntouchedFrom(5));
    Room<Char> roomy("ab");
    EXPECT_EQ(TypeParam::fill(roomy, 100, '-'), 0);
    EXPECT_EQ(roomy.text(), "--");
    EXPECT_TRUE(roomy.isUntouchedFrom(3));
}

TYPED_TEST(qelRuntime, SetsNothingInAnEmptyText)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("");
    EXPECT_EQ(TypeParam::fill(room, 1, 'x'), 0);
    EXPECT_EQ(room.text(), "");
    EXPECT_TRUE(room.isUntouchedFrom(1));
}

TYPED_TEST(qelRuntime, RefusesToSetTextWithoutTerminatorInTheCapacity)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("beam");
    errno = 0;
    EXPECT_EQ(TypeParam::fill(room, 4, 'x'), EINVAL);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(room.text(), "");
    EXPECT_TRUE(room.isUntouchedFrom(5));
}

TYPED_TEST(qelRuntime, RefusesToSetWithoutBufferOrCapacity)
{
    using Char = typename TypeParam::Char;
    Room<Char> room("beam");
    EXPECT_EQ(TypeParam::fill(nullptr, 4, 'x'), EINVAL);
    EXPECT_EQ(TypeParam::fill(room, 0, 'x'), EINVAL);
    EXPECT_EQ(room.text(), "beam");
}

TYPED_TEST(qelRuntime, WalksOverTokensWithAContext)
{
    using Char = typename TypeParam::Char;
    Room<Char> text(",,a;bc,;d;");
    const std::vector<Char> delimiters = in<Char>(",;");
    Char* context = nullptr;
    std::vector<std::string> tokens;
    for (Char* token = TypeParam::token(text, delimiters.data(), &context); token != nullptr;
         token = TypeParam::token(nullptr, delimiters.data(), &context))
    {
        tokens.push_back(out(token));
    }
    EXPECT_EQ(tokens, (std::vector<std::string>{"a", "bc", "d"}));
    EXPECT_EQ(TypeParam::token(nullptr, delimiters.data(), &context), nullptr);
}

TYPED_TEST(qelRuntime, KeepsTheContextsOfTwoTokenWalksApart)
{
    using Char = typename TypeParam::Char;
    Room<Char> first("a b");
    Room<Char> second("c-d");
    const std::vector<Char> blank = in<Char>(" ");
    const std::vector<Char> dash = in<Char>("-");
    Char* firstContext = nullptr;
    Char* secondContext = nullptr;
    Char* token = TypeParam::token(first, blank.data(), &firstContext);
    EXPECT_EQ(token, static_cast<Char*>(first));
    EXPECT_EQ(out(token), "a");
    EXPECT_EQ(out(TypeParam::token(second, dash.data(), &secondContext)), "c");
    EXPECT_EQ(out(TypeParam::token(nullptr, blank.data(), &firstContext)), "b");
    EXPECT_EQ(out(TypeParam::token(nullptr, dash.data(), &secondContext)), "d");
}

TYPED_TEST(qelRuntime, FindsNoTokenAmongDelimitersOnly)
{
    using Char = typename TypeParam::Char;
    Room<Char> text(";;");
    Char* context = nullptr;
    EXPECT_EQ(TypeParam::token(text, in<Char>(";").data(), &context), nullptr);
}

TYPED_TEST(qelRuntime, RefusesATokenWalkWithoutDelimitersContextOrText)
{
    using Char = typename TypeParam::Char;
    Room<Char> text("a;b");
    Char* context = nullptr;
    EXPECT_EQ(TypeParam::token(nullptr, in<Char>(";").data(), &context), nullptr);
    EXPECT_EQ(TypeParam::token(text, nullptr, &context), nullptr);
    EXPECT_EQ(TypeParam::token(text, in<Char>(";").data(), nullptr), nullptr);
    EXPECT_EQ(text.text(), "a;b");
}

// Environment

/// An environment variable of this process's runtime for as long as a test needs it.
class Variable
{
public:
    explicit Variable(const std::wstring& value) { _wputenv_s(L"QEL_RUNTIME_TEST", value.c_str()); }

    ~Variable() { _wputenv_s(L"QEL_RUNTIME_TEST", L""); }
};

TYPED_TEST(qelRuntime, CopiesAnEnvironmentVariableForTheCaller)
{
    using Char = typename TypeParam::Char;
    const Variable variable(L"Stahlbau 42");
    Char* value = nullptr;
    size_t length = 0;
    ASSERT_EQ(TypeParam::environment(&value, &length, in<Char>("QEL_RUNTIME_TEST").data()), 0);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(out(value), "Stahlbau 42");
    EXPECT_EQ(length, 12u);
    value[0] = 'X';
    Char* again = nullptr;
    ASSERT_EQ(TypeParam::environment(&again, nullptr, in<Char>("QEL_RUNTIME_TEST").data()), 0);
    EXPECT_EQ(out(again), "Stahlbau 42");
    free(again);
    free(value);
}

TYPED_TEST(qelRuntime, CopiesALongEnvironmentVariableWhole)
{
    using Char = typename TypeParam::Char;
    const Variable variable(std::wstring(20000, L'v'));
    Char* value = nullptr;
    size_t length = 0;
    ASSERT_EQ(TypeParam::environment(&value, &length, in<Char>("QEL_RUNTIME_TEST").data()), 0);
    EXPECT_EQ(out(value), std::string(20000, 'v'));
    EXPECT_EQ(length, 20001u);
    free(value);
}

TYPED_TEST(qelRuntime, GivesNullAndNoErrorForAMissingEnvironmentVariable)
{
    using Char = typename TypeParam::Char;
    Char some = 0;
    Char* value = &some;
    size_t length = 7;
    EXPECT_EQ(TypeParam::environment(&value, &length, in<Char>("QEL_NO_SUCH_VARIABLE").data()), 0);
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(length, 0u);
}

TYPED_TEST(qelRuntime, RefusesAnEnvironmentVariableWithoutNameOrPlaceForIt)
{
    using Char = typename TypeParam::Char;
    Char some = 0;
    Char* value = &some;
    size_t length = 7;
    errno = 0;
    EXPECT_EQ(TypeParam::environment(&value, &length, nullptr), EINVAL);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(TypeParam::environment(nullptr, &length, in<Char>("PATH").data()), EINVAL);
}

TYPED_TEST(qelRuntimeWide, CopiesEnvironmentVariablesBeyondTheAnsiCodePage)
{
    using Char = typename TypeParam::Char;
    const std::wstring text = L"St\u0119pel \u9244";
    const Variable variable(text);
    Char* value = nullptr;
    size_t length = 0;
    ASSERT_EQ(TypeParam::environment(&value, &length, in<Char>("QEL_RUNTIME_TEST").data()), 0);
    EXPECT_EQ(std::wstring(value, value + length - 1), text);
    free(value);
}

// With the UCRT there is nothing to replace: what this test provokes happens within it.
#if !defined(_UCRT) && !defined(_MSC_VER)

void* refuseToAllocate(size_t)
{
    return nullptr;
}

TYPED_TEST(qelRuntime, SaysWhenThereIsNoMemoryForAnEnvironmentVariable)
{
    using Char = typename TypeParam::Char;
    const Variable variable(L"Stahlbau");
    const std::vector<Char> name = in<Char>("QEL_RUNTIME_TEST");
    Char some = 0;
    Char* value = &some;
    size_t length = 7;
    int result = 0;
    {
        const qelTest::ImportHook hook("malloc", &refuseToAllocate);
        result = TypeParam::environment(&value, &length, name.data());
    }
    EXPECT_EQ(result, ENOMEM);
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(length, 0u);
}

#endif

std::string ascii(const std::wstring& text)
{
    return out(text.c_str());
}

TYPED_TEST(qelRuntime, FindsAFileInTheFoldersOfAnEnvironmentVariable)
{
    using Char = typename TypeParam::Char;
    const TemporaryFolder folder;
    const std::string path = ascii(folder.write(L"profiles.dat", "x"));
    const Variable variable(L"C:\\no such folder;" + folder.path());
    Room<Char> room;
    EXPECT_EQ(
        TypeParam::search(in<Char>("profiles.dat").data(), in<Char>("QEL_RUNTIME_TEST").data(), room, path.size() + 1),
        0);
    EXPECT_EQ(room.text(), path);
    EXPECT_TRUE(room.isUntouchedFrom(path.size() + 1));
}

/// Makes a folder the current one for a while.
class CurrentFolder
{
public:
    explicit CurrentFolder(const std::wstring& path)
    {
        GetCurrentDirectoryW(MAX_PATH, m_before);
        EXPECT_TRUE(SetCurrentDirectoryW(path.c_str()));
    }

    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

    ~CurrentFolder() { SetCurrentDirectoryW(m_before); }

private:
    wchar_t m_before[MAX_PATH] = {};
};

TYPED_TEST(qelRuntime, FindsAFileInTheCurrentFolderFirst)
{
    using Char = typename TypeParam::Char;
    const TemporaryFolder folder;
    const std::string path = ascii(folder.write(L"notepad.exe", "not the one in the folders of PATH"));
    const CurrentFolder current(folder.path());
    Room<Char> room;
    EXPECT_EQ(TypeParam::search(in<Char>("notepad.exe").data(), in<Char>("PATH").data(), room, path.size() + 1), 0);
    EXPECT_EQ(room.text(), path);
}

TYPED_TEST(qelRuntime, EmptiesTheResultWhenThePathInTheCurrentFolderIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    const TemporaryFolder folder;
    const std::string path = ascii(folder.write(L"notepad.exe", "not the one in the folders of PATH"));
    const CurrentFolder current(folder.path());
    Room<Char> room;
    EXPECT_EQ(TypeParam::search(in<Char>("notepad.exe").data(), in<Char>("PATH").data(), room, path.size()), ERANGE);
    EXPECT_EQ(room.text(), "");
}

TYPED_TEST(qelRuntime, EmptiesTheResultWhenTheFoundPathIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    const TemporaryFolder folder;
    const std::string path = ascii(folder.write(L"profiles.dat", "x"));
    const Variable variable(folder.path());
    Room<Char> room;
    EXPECT_EQ(
        TypeParam::search(in<Char>("profiles.dat").data(), in<Char>("QEL_RUNTIME_TEST").data(), room, path.size()),
        ERANGE);
    EXPECT_EQ(room.text(), "");
}

TYPED_TEST(qelRuntime, FindsNothingWhenFileOrVariableIsMissing)
{
    using Char = typename TypeParam::Char;
    const TemporaryFolder folder;
    const Variable variable(folder.path());
    Room<Char> room;
    EXPECT_EQ(TypeParam::search(in<Char>("no such file").data(), in<Char>("QEL_RUNTIME_TEST").data(), room, 300),
              ENOENT);
    EXPECT_EQ(room.text(), "");
    Room<Char> other;
    EXPECT_EQ(TypeParam::search(in<Char>("no such file").data(), in<Char>("QEL_NO_SUCH_VARIABLE").data(), other, 300),
              ENOENT);
    EXPECT_EQ(other.text(), "");
}

TYPED_TEST(qelRuntime, FindsNoFileOfTheEmptyName)
{
    using Char = typename TypeParam::Char;
    for (const size_t capacity : {300u, 1u})
    {
        Room<Char> room;
        errno = 0;
        EXPECT_EQ(TypeParam::search(in<Char>("").data(), in<Char>("PATH").data(), room, capacity), ENOENT);
        EXPECT_EQ(errno, ENOENT);
        EXPECT_EQ(room.text(), "");
    }
}

TYPED_TEST(qelRuntime, SearchesNoFoldersWithoutAVariable)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::search(in<Char>("no such file").data(), nullptr, room, 300), ENOENT);
    EXPECT_EQ(room.text(), "");
}

TYPED_TEST(qelRuntime, RefusesToSearchWithoutNameOrResult)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    const std::vector<Char> variable = in<Char>("PATH");
    EXPECT_EQ(TypeParam::search(nullptr, variable.data(), room, 300), EINVAL);
    EXPECT_EQ(TypeParam::search(in<Char>("a").data(), variable.data(), nullptr, 300), EINVAL);
    EXPECT_EQ(TypeParam::search(in<Char>("a").data(), variable.data(), room, 0), EINVAL);
}

TYPED_TEST(qelRuntimeWide, FindsAFileWithANameBeyondTheAnsiCodePage)
{
    using Char = typename TypeParam::Char;
    const TemporaryFolder folder;
    const std::wstring file = L"p\u0142yta \u9244.dat";
    const std::wstring path = folder.write(file, "x");
    const Variable variable(folder.path());
    const std::vector<Char> name(file.c_str(), file.c_str() + file.size() + 1);
    Char result[300] = {};
    EXPECT_EQ(TypeParam::search(name.data(), in<Char>("QEL_RUNTIME_TEST").data(), result, 300), 0);
    EXPECT_EQ(std::wstring(result, result + path.size() + 1), std::wstring(path.c_str(), path.size() + 1));
}

// Paths

TYPED_TEST(qelRuntime, SplitsAPathIntoPartsThatFitExactly)
{
    using Char = typename TypeParam::Char;
    Room<Char> drive, dir, fname, ext;
    const std::vector<Char> path = in<Char>("c:\\Kernel\\Data/model.1.mdb");
    EXPECT_EQ(TypeParam::split(path.data(), drive, 3, dir, 14, fname, 8, ext, 5), 0);
    EXPECT_EQ(drive.text(), "c:");
    EXPECT_EQ(dir.text(), "\\Kernel\\Data/");
    EXPECT_EQ(fname.text(), "model.1");
    EXPECT_EQ(ext.text(), ".mdb");
    EXPECT_TRUE(drive.isUntouchedFrom(4) && dir.isUntouchedFrom(14) && fname.isUntouchedFrom(8));
    EXPECT_TRUE(ext.isUntouchedFrom(5));
}

TYPED_TEST(qelRuntime, LeavesMissingPartsOfAPathEmpty)
{
    using Char = typename TypeParam::Char;
    Room<Char> drive, dir, fname, ext;
    EXPECT_EQ(TypeParam::split(in<Char>("model").data(), drive, 3, dir, 20, fname, 20, ext, 20), 0);
    EXPECT_EQ(drive.text() + "|" + dir.text() + "|" + fname.text() + "|" + ext.text(), "||model|");
}

TYPED_TEST(qelRuntime, EmptiesAllPartsOfAPathWhenOneIsTooLong)
{
    using Char = typename TypeParam::Char;
    const std::vector<Char> path = in<Char>("c:\\Data\\model.mdb");
    const size_t exact[4] = {3, 7, 6, 5};
    for (size_t small = 0; small < 4; ++small)
    {
        size_t capacity[4];
        for (size_t i = 0; i < 4; ++i)
        {
            capacity[i] = i == small ? exact[i] - 1 : exact[i];
        }
        Room<Char> drive, dir, fname, ext;
        EXPECT_EQ(
            TypeParam::split(path.data(), drive, capacity[0], dir, capacity[1], fname, capacity[2], ext, capacity[3]),
            ERANGE)
            << small;
        EXPECT_EQ(drive.text() + dir.text() + fname.text() + ext.text(), "") << small;
    }
}

TYPED_TEST(qelRuntime, LeavesOutPartsOfAPathWithNullBuffers)
{
    using Char = typename TypeParam::Char;
    Room<Char> fname;
    const std::vector<Char> path = in<Char>("c:\\Data\\model.mdb");
    EXPECT_EQ(TypeParam::split(path.data(), nullptr, 0, nullptr, 0, fname, 6, nullptr, 0), 0);
    EXPECT_EQ(fname.text(), "model");
}

TYPED_TEST(qelRuntime, RefusesToSplitWithoutPathOrWithHalfABuffer)
{
    using Char = typename TypeParam::Char;
    Room<Char> drive, dir, fname, ext;
    EXPECT_EQ(TypeParam::split(nullptr, drive, 3, dir, 20, fname, 20, ext, 20), EINVAL);
    const std::vector<Char> path = in<Char>("c:\\a");
    EXPECT_EQ(TypeParam::split(path.data(), nullptr, 3, dir, 20, fname, 20, ext, 20), EINVAL);
    EXPECT_EQ(TypeParam::split(path.data(), drive, 3, dir, 0, fname, 20, ext, 20), EINVAL);
}

TYPED_TEST(qelRuntime, JoinsAPathThatFitsExactlyAndAddsSeparators)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::join(room, 18, in<Char>("c").data(), in<Char>("\\Data").data(), in<Char>("model").data(),
                              in<Char>("mdb").data()),
              0);
    EXPECT_EQ(room.text(), "c:\\Data\\model.mdb");
    EXPECT_TRUE(room.isUntouchedFrom(18));
    EXPECT_EQ(TypeParam::join(room, 18, in<Char>("c:").data(), in<Char>("\\Data\\").data(), in<Char>("model").data(),
                              in<Char>(".mdb").data()),
              0);
    EXPECT_EQ(room.text(), "c:\\Data\\model.mdb");
}

TYPED_TEST(qelRuntime, EmptiesTheTargetWhenAJoinedPathIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::join(room, 17, in<Char>("c").data(), in<Char>("\\Data").data(), in<Char>("model").data(),
                              in<Char>("mdb").data()),
              ERANGE);
    EXPECT_EQ(room.text(), "");
    EXPECT_TRUE(room.isUntouchedFrom(17));
}

TYPED_TEST(qelRuntime, JoinsAPathFromThePartsThatAreThere)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::join(room, 20, nullptr, in<Char>("").data(), in<Char>("model").data(), nullptr), 0);
    EXPECT_EQ(room.text(), "model");
    EXPECT_EQ(TypeParam::join(room, 20, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(room.text(), "");
}

TYPED_TEST(qelRuntime, RefusesToJoinWithoutTargetOrCapacity)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::join(nullptr, 20, nullptr, nullptr, in<Char>("a").data(), nullptr), EINVAL);
    EXPECT_EQ(TypeParam::join(room, 0, nullptr, nullptr, in<Char>("a").data(), nullptr), EINVAL);
    EXPECT_EQ(room.text(), "###");
}

// Time

std::string clock(const char* format, bool date)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    char text[40];
    if (date)
    {
        snprintf(text, sizeof text, format, now.wMonth, now.wDay, now.wYear % 100);
    }
    else
    {
        snprintf(text, sizeof text, format, now.wHour, now.wMinute, now.wSecond);
    }
    return text;
}

TYPED_TEST(qelRuntime, GivesTheLocalTimeOfDay)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    const std::string before = clock("%02d:%02d:%02d", false);
    EXPECT_EQ(TypeParam::time(room, 9), 0);
    const std::string after = clock("%02d:%02d:%02d", false);
    EXPECT_TRUE(room.text() == before || room.text() == after) << room.text() << ", expected " << before;
    EXPECT_TRUE(room.isUntouchedFrom(9));
}

TYPED_TEST(qelRuntime, GivesTheLocalDate)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    const std::string before = clock("%02d/%02d/%02d", true);
    EXPECT_EQ(TypeParam::date(room, 9), 0);
    const std::string after = clock("%02d/%02d/%02d", true);
    EXPECT_TRUE(room.text() == before || room.text() == after) << room.text() << ", expected " << before;
    EXPECT_TRUE(room.isUntouchedFrom(9));
}

TYPED_TEST(qelRuntime, EmptiesTheBufferWhenTimeOrDateIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    Room<Char> time;
    EXPECT_EQ(TypeParam::time(time, 8), ERANGE);
    EXPECT_EQ(time.text(), "");
    EXPECT_TRUE(time.isUntouchedFrom(8));
    Room<Char> date;
    EXPECT_EQ(TypeParam::date(date, 8), ERANGE);
    EXPECT_EQ(date.text(), "");
    EXPECT_TRUE(date.isUntouchedFrom(8));
}

TYPED_TEST(qelRuntime, RefusesTimeAndDateWithoutBuffer)
{
    EXPECT_EQ(TypeParam::time(nullptr, 9), EINVAL);
    EXPECT_EQ(TypeParam::date(nullptr, 9), EINVAL);
}

TEST(qelLocaltime, BreaksATimeDownInTheZoneOfTheSystem)
{
    // In winter and in summer of one year, against the system's own conversion.
    for (const long long when : {1234567890LL, 1248000000LL})
    {
        const long long ticks = when * 10000000LL + 116444736000000000LL;
        FILETIME file;
        file.dwLowDateTime = static_cast<DWORD>(ticks);
        file.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
        SYSTEMTIME utc, expected;
        ASSERT_TRUE(FileTimeToSystemTime(&file, &utc));
        ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &utc, &expected));

        tm result = {};
        ASSERT_EQ(qellocaltime(&result, &when), 0);
        EXPECT_EQ(result.tm_year + 1900, expected.wYear);
        EXPECT_EQ(result.tm_mon + 1, expected.wMonth);
        EXPECT_EQ(result.tm_mday, expected.wDay);
        EXPECT_EQ(result.tm_hour, expected.wHour);
        EXPECT_EQ(result.tm_min, expected.wMinute);
        EXPECT_EQ(result.tm_sec, expected.wSecond);
        EXPECT_EQ(result.tm_wday, expected.wDayOfWeek);
    }
}

TEST(qelLocaltime, BreaksATimeDownInTheZoneOfTheEnvironment)
{
    wchar_t* before = nullptr;
    ASSERT_EQ(qelwdupenv8(&before, nullptr, L"TZ"), 0);
    _wputenv_s(L"TZ", L"QEL-3");
    _tzset();
    const long long when = 1234567890; // 2009-02-13 23:31:30 UTC
    tm result = {};
    EXPECT_EQ(qellocaltime(&result, &when), 0);
    _wputenv_s(L"TZ", before == nullptr ? L"" : before);
    _tzset();
    free(before);
    EXPECT_EQ(result.tm_year, 109);
    EXPECT_EQ(result.tm_mon, 1);
    EXPECT_EQ(result.tm_mday, 14);
    EXPECT_EQ(result.tm_hour, 2);
    EXPECT_EQ(result.tm_min, 31);
    EXPECT_EQ(result.tm_sec, 30);
    EXPECT_EQ(result.tm_wday, 6);
    EXPECT_EQ(result.tm_yday, 44);
    EXPECT_EQ(result.tm_isdst, 0);
}

TEST(qelLocaltime, TakesTimesPastTheYear2038)
{
    const long long when = 4102444800LL + 43200; // noon of 2100-01-01, UTC
    tm result = {};
    ASSERT_EQ(qellocaltime(&result, &when), 0);
    EXPECT_GE(result.tm_year, 199);
    EXPECT_LE(result.tm_year, 200);
}

TEST(qelLocaltime, RefusesTimesOutOfRangeAndNullArguments)
{
    const ReturningFailures failures;
    tm result = {};
    const long long early = -100000;
    EXPECT_EQ(qellocaltime(&result, &early), EINVAL);
    EXPECT_EQ(result.tm_year, -1);
    EXPECT_EQ(result.tm_sec, -1);
    EXPECT_EQ(qellocaltime(&result, nullptr), EINVAL);
    const long long when = 0;
    EXPECT_EQ(qellocaltime(nullptr, &when), EINVAL);
}

// Numbers and error texts

struct NumberCase
{
    int value;
    int radix;
    const char* text;
};

const NumberCase kNumbers[] = {
    {0, 10, "0"},
    {-12, 10, "-12"},
    {INT_MAX, 10, "2147483647"},
    {35, 36, "z"},
    {255, 16, "ff"},
    {INT_MIN, 10, "-2147483648"},
    {-1, 16, "ffffffff"},
    {-255, 8, "37777777401"},
    {-1, 2, "11111111111111111111111111111111"},
    {1295, 36, "zz"},
    {5, 2, "101"},
    {INT_MIN, 16, "80000000"},
};

TYPED_TEST(qelRuntime, WritesIntegersThatFitExactly)
{
    using Char = typename TypeParam::Char;
    for (const NumberCase& number : kNumbers)
    {
        const size_t size = strlen(number.text) + 1;
        Room<Char> fromInt;
        EXPECT_EQ(TypeParam::fromInt(number.value, fromInt, size, number.radix), 0);
        EXPECT_EQ(fromInt.text(), number.text);
        EXPECT_TRUE(size < 4 || fromInt.isUntouchedFrom(size));
        Room<Char> fromLong;
        EXPECT_EQ(TypeParam::fromLong(number.value, fromLong, size, number.radix), 0);
        EXPECT_EQ(fromLong.text(), number.text);
        EXPECT_TRUE(size < 4 || fromLong.isUntouchedFrom(size));
    }
}

TYPED_TEST(qelRuntime, EmptiesTheBufferWhenAnIntegerIsOneTooLong)
{
    using Char = typename TypeParam::Char;
    for (const NumberCase& number : kNumbers)
    {
        const size_t size = strlen(number.text);
        Room<Char> fromInt;
        EXPECT_EQ(TypeParam::fromInt(number.value, fromInt, size, number.radix), ERANGE) << number.text;
        EXPECT_EQ(fromInt.text(), "");
        EXPECT_TRUE(fromInt.isUntouchedFrom(size < 4 ? 4 : size));
        Room<Char> fromLong;
        EXPECT_EQ(TypeParam::fromLong(number.value, fromLong, size, number.radix), ERANGE) << number.text;
        EXPECT_EQ(fromLong.text(), "");
        EXPECT_TRUE(fromLong.isUntouchedFrom(size < 4 ? 4 : size));
    }
}

TYPED_TEST(qelRuntime, RefusesIntegersOfAnUnknownRadix)
{
    using Char = typename TypeParam::Char;
    for (const int radix : {-10, 0, 1, 37})
    {
        Room<Char> fromInt;
        EXPECT_EQ(TypeParam::fromInt(7, fromInt, 40, radix), EINVAL) << radix;
        EXPECT_EQ(fromInt.text(), "");
        Room<Char> fromLong;
        EXPECT_EQ(TypeParam::fromLong(7, fromLong, 40, radix), EINVAL) << radix;
        EXPECT_EQ(fromLong.text(), "");
    }
}

TYPED_TEST(qelRuntime, RefusesIntegersWithoutBufferOrCapacity)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::fromInt(7, nullptr, 40, 10), EINVAL);
    EXPECT_EQ(TypeParam::fromLong(7, nullptr, 40, 10), EINVAL);
    EXPECT_EQ(TypeParam::fromInt(7, room, 0, 10), EINVAL);
    EXPECT_EQ(TypeParam::fromLong(7, room, 0, 10), EINVAL);
    EXPECT_EQ(room.text(), "###");
}

TEST(qelGcvt, WritesTheStatedNumberOfSignificantDigits)
{
    Room<char> room;
    EXPECT_EQ(qelgcvt(room, 6, 3.14159, 4), 0);
    EXPECT_EQ(room.text(), "3.142");
    EXPECT_TRUE(room.isUntouchedFrom(6));
    EXPECT_EQ(qelgcvt(room, 20, -0.5, 3), 0);
    EXPECT_EQ(room.text(), "-0.5");
    // Only the form of the exponent differs between runtimes.
    EXPECT_EQ(qelgcvt(room, 20, -1.5e30, 4), 0);
    EXPECT_EQ(room.text().substr(0, 6), "-1.5e+");
    EXPECT_EQ(strtod(room, nullptr), -1.5e30);
}

TEST(qelGcvt, EmptiesTheBufferWhenTheNumberIsTooLong)
{
    const ReturningFailures failures;
    Room<char> room;
    EXPECT_EQ(qelgcvt(room, 5, 3.14159, 4), 0);
    EXPECT_EQ(qelgcvt(room, 4, 3.14159, 4), ERANGE);
    EXPECT_EQ(room.text(), "");
    EXPECT_TRUE(room.isUntouchedFrom(6));
    EXPECT_EQ(qelgcvt(nullptr, 20, 1.5, 4), EINVAL);
}

TYPED_TEST(qelRuntime, GivesTheMessagesOfTheRuntime)
{
    using Char = typename TypeParam::Char;
    for (int number = -1; number <= 43; ++number)
    {
        const std::string expected = strerror(number);
        Room<Char> room;
        EXPECT_EQ(TypeParam::error(room, Room<Char>::kSize, number), 0) << number;
        EXPECT_EQ(room.text(), expected) << number;
        Room<Char> exact;
        EXPECT_EQ(TypeParam::error(exact, expected.size() + 1, number), 0) << number;
        EXPECT_EQ(exact.text(), expected) << number;
        EXPECT_TRUE(exact.isUntouchedFrom(expected.size() + 1)) << number;
    }
}

TYPED_TEST(qelRuntime, CutsAMessageThatIsTooLong)
{
    using Char = typename TypeParam::Char;
    const std::string whole = strerror(ENOENT);
    for (const size_t capacity : {whole.size(), size_t(5), size_t(1)})
    {
        Room<Char> room;
        EXPECT_EQ(TypeParam::error(room, capacity, ENOENT), 0);
        EXPECT_EQ(room.text(), whole.substr(0, capacity - 1));
        EXPECT_TRUE(room.isUntouchedFrom(capacity < 4 ? 4 : capacity));
    }
}

TYPED_TEST(qelRuntime, RefusesAMessageWithoutBufferOrCapacity)
{
    using Char = typename TypeParam::Char;
    Room<Char> room;
    EXPECT_EQ(TypeParam::error(nullptr, 40, ENOENT), EINVAL);
    EXPECT_EQ(TypeParam::error(room, 0, ENOENT), EINVAL);
    EXPECT_EQ(room.text(), "###");
}

// Automation strings

template <typename Form> std::wstring automationText(const qelString& text)
{
    auto* units = Form::automation(text);
    if (units == nullptr)
    {
        return L"null";
    }
    BSTR owned = reinterpret_cast<BSTR>(units);
    const std::wstring result(owned, SysStringLen(owned));
    EXPECT_EQ(owned[result.size()], 0);
    EXPECT_NE(static_cast<const wchar_t*>(owned), text.getStringW());
    SysFreeString(owned);
    return result;
}

TYPED_TEST(qelRuntimeWide, MakesAutomationStringsOfTheWholeText)
{
    EXPECT_EQ(automationText<TypeParam>(L"Tr\u00e4ger \U0001F529"), L"Tr\u00e4ger \U0001F529");
    const std::wstring big(300000, L'x');
    EXPECT_EQ(automationText<TypeParam>(big.c_str()), big);
}

TYPED_TEST(qelRuntimeWide, MakesAnEmptyAutomationStringOfAnEmptyText)
{
    EXPECT_EQ(automationText<TypeParam>(L""), L"");
}

// Files

/// What qelfopen stores, from a pointer that says nothing by itself.
FILE* open(const std::wstring& name, const wchar_t* mode)
{
    FILE* file = reinterpret_cast<FILE*>(static_cast<uintptr_t>(1));
    EXPECT_EQ(qelfopen(&file, name.c_str(), mode), 0);
    return file;
}

TEST(qelFopen, OpensFilesByTheirWideName)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.path(L"Tr\u00e4ger p\u0142yta \u9244.txt");
    FILE* file = open(name, L"wb");
    ASSERT_NE(file, nullptr);
    EXPECT_GE(qelfputs("steel", file), 0);
    EXPECT_EQ(qelfclose(file), 0);
    EXPECT_EQ(contentOf(name), "steel");
}

TEST(qelFopen, HonoursTheMode)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.write(L"mode.txt", "one");
    FILE* file = open(name, L"ab");
    ASSERT_NE(file, nullptr);
    EXPECT_GE(qelfputs("\ntwo", file), 0);
    EXPECT_EQ(qelfclose(file), 0);
    file = open(name, L"a");
    ASSERT_NE(file, nullptr);
    EXPECT_GE(qelfputs("\n", file), 0);
    EXPECT_EQ(qelfclose(file), 0);
    EXPECT_EQ(contentOf(name), "one\ntwo\r\n");
}

TEST(qelFopen, SharesTheFileWithOtherReadersAndWriters)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.write(L"shared.txt", "one");
    FILE* first = open(name, L"r+b");
    FILE* second = open(name, L"r+b");
    EXPECT_NE(first, nullptr);
    EXPECT_NE(second, nullptr);
    EXPECT_EQ(qelfclose(second), 0);
    EXPECT_EQ(qelfclose(first), 0);
}

TEST(qelFopen, ReturnsZeroAndStoresNullOnFailure)
{
    const TemporaryFolder folder;
    EXPECT_EQ(open(folder.path(L"missing.txt"), L"rb"), nullptr);
    EXPECT_EQ(open(folder.path(), L"rb"), nullptr);
    EXPECT_EQ(open(L"", L"rb"), nullptr);
    EXPECT_EQ(open(L"Z:\\no such folder\\file.txt", L"wb"), nullptr);
}

TEST(qelFopen, OpensNothingWithoutAPlaceForTheStream)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.path(L"nothing.txt");
    EXPECT_EQ(qelfopen(nullptr, name.c_str(), L"wb"), 0);
    EXPECT_EQ(GetFileAttributesW(name.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(qelFprintf, WritesNarrowFormatsAndCountsCharacters)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.path(L"narrow.txt");
    FILE* file = open(name, L"wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(qelfprintf(file, "%s=%d %S %.2f|", "length", 42, L"wide", 1.5), 20);
    EXPECT_EQ(qelfprintf(file, "%s", ""), 0);
    EXPECT_EQ(qelfclose(file), 0);
    EXPECT_EQ(contentOf(name), "length=42 wide 1.50|");
}

TEST(qelFprintf, WritesWideFormatsWithWideStrings)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.path(L"wide.txt");
    FILE* file = open(name, L"wb, ccs=UTF-16LE");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(qelfprintf(file, L"%s=%d %S|", L"\u9244", 42, "narrow"), 12);
    EXPECT_EQ(qelfclose(file), 0);
    const std::string bytes = contentOf(name);
    const std::wstring expected = L"\uFEFF\u9244=42 narrow|";
    ASSERT_EQ(bytes.size(), expected.size() * sizeof(wchar_t));
    EXPECT_EQ(memcmp(bytes.data(), expected.data(), bytes.size()), 0);
}

TEST(qelFprintf, ReturnsANegativeValueOnAStreamOpenedForReading)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.write(L"read.txt", "x");
    FILE* narrow = open(name, L"rb");
    ASSERT_NE(narrow, nullptr);
    EXPECT_LT(qelfprintf(narrow, "%d", 1), 0);
    (void)qelfclose(narrow); // some runtimes remember the failure
    FILE* wide = open(name, L"rb");
    ASSERT_NE(wide, nullptr);
    EXPECT_LT(qelfprintf(wide, L"%d", 1), 0);
    (void)qelfclose(wide);
}

TEST(qelFprintf, PrintsTheLetterOfAnUnknownConversion)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.path(L"unknown.txt");
    FILE* file = open(name, L"wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(qelfprintf(file, "%y%d", 7), 2);
    EXPECT_EQ(qelfclose(file), 0);
    EXPECT_EQ(contentOf(name), "y7");
}

TEST(qelFclose, WritesOutAndClosesTheFile)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.path(L"close.txt");
    FILE* file = open(name, L"wb");
    ASSERT_NE(file, nullptr);
    EXPECT_GE(qelfputs("kept", file), 0);
    EXPECT_EQ(qelfclose(file), 0);
    EXPECT_EQ(contentOf(name), "kept");
    EXPECT_TRUE(DeleteFileW(name.c_str()));
}

TEST(qelFeof, IsSetOnlyAfterAReadMetTheEnd)
{
    const TemporaryFolder folder;
    FILE* file = open(folder.write(L"end.txt", "ab"), L"rb");
    ASSERT_NE(file, nullptr);
    char buffer[4];
    EXPECT_EQ(qelfread(buffer, 1, 2, file), 2u);
    EXPECT_EQ(qelfeof(file), 0);
    EXPECT_EQ(qelfread(buffer, 1, 1, file), 0u);
    EXPECT_NE(qelfeof(file), 0);
    EXPECT_EQ(qelfclose(file), 0);
}

TEST(qelFread, CountsWholeElements)
{
    const TemporaryFolder folder;
    FILE* file = open(folder.write(L"elements.bin", "0123456789"), L"rb");
    ASSERT_NE(file, nullptr);
    char buffer[20] = {};
    EXPECT_EQ(qelfread(buffer, 4, 5, file), 2u);
    EXPECT_EQ(std::string(buffer, 8), "01234567");
    EXPECT_EQ(qelfclose(file), 0);
}

TEST(qelFgets, ReadsALineOrAsMuchAsFits)
{
    const TemporaryFolder folder;
    FILE* file = open(folder.write(L"lines.txt", "first\nsecond\nlast"), L"rb");
    ASSERT_NE(file, nullptr);
    char buffer[10] = "?";
    EXPECT_EQ(qelfgets(buffer, 10, file), buffer);
    EXPECT_STREQ(buffer, "first\n");
    EXPECT_EQ(qelfgets(buffer, 4, file), buffer);
    EXPECT_STREQ(buffer, "sec");
    EXPECT_EQ(qelfgets(buffer, 10, file), buffer);
    EXPECT_STREQ(buffer, "ond\n");
    EXPECT_EQ(qelfgets(buffer, 10, file), buffer);
    EXPECT_STREQ(buffer, "last");
    EXPECT_EQ(qelfgets(buffer, 10, file), nullptr);
    EXPECT_EQ(qelfclose(file), 0);
}

int readByTheRuntime = 0;

char* emptyLine(char* buffer, int size, FILE*)
{
    readByTheRuntime += size;
    *buffer = 0;
    return buffer;
}

// Wine's runtime gives null for it, others an empty text.
TEST(qelFgets, LeavesRoomForOneByteToTheRuntime)
{
    const TemporaryFolder folder;
    FILE* file = open(folder.write(L"line.txt", "abc"), L"rb");
    ASSERT_NE(file, nullptr);
    char buffer[2] = "?";
    {
        const qelTest::ImportHook hook("fgets", emptyLine);
        readByTheRuntime = 0;
        EXPECT_EQ(qelfgets(buffer, 1, file), buffer);
        EXPECT_EQ(readByTheRuntime, 1);
    }
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(qelfclose(file), 0);
}

TEST(qelFputs, WritesTextWithoutAddingALineEnd)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.path(L"puts.txt");
    FILE* file = open(name, L"wb");
    ASSERT_NE(file, nullptr);
    EXPECT_GE(qelfputs("a\nb", file), 0);
    EXPECT_GE(qelfputs("", file), 0);
    EXPECT_GE(qelfputs("c", file), 0);
    EXPECT_EQ(qelfclose(file), 0);
    EXPECT_EQ(contentOf(name), "a\nbc");
}

TEST(qelFputs, FailsOnAStreamOpenedForReading)
{
    const TemporaryFolder folder;
    FILE* file = open(folder.write(L"read.txt", "x"), L"rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(qelfputs("y", file), EOF);
    (void)qelfclose(file); // some runtimes remember the failure
}

TEST(qelStreams, DoNothingWithoutAStream)
{
    char buffer[4] = "abc";
    EXPECT_LT(qelfprintf(nullptr, "%d", 1), 0);
    EXPECT_LT(qelfprintf(nullptr, L"%d", 1), 0);
    EXPECT_EQ(qelfclose(nullptr), EOF);
    EXPECT_NE(qelfeof(nullptr), 0);
    EXPECT_EQ(qelfread(buffer, 1, 4, nullptr), 0u);
    EXPECT_EQ(qelfgets(buffer, 4, nullptr), nullptr);
    EXPECT_EQ(qelfputs("x", nullptr), EOF);
    EXPECT_STREQ(buffer, "abc");
}

TEST(qelStreams, DoNothingWithoutABufferOrText)
{
    const TemporaryFolder folder;
    FILE* file = open(folder.write(L"kept.txt", "abc"), L"r+b");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(qelfread(nullptr, 1, 4, file), 0u);
    EXPECT_EQ(qelfgets(nullptr, 4, file), nullptr);
    char buffer[4] = "?";
    EXPECT_EQ(qelfgets(buffer, 0, file), nullptr);
    EXPECT_EQ(qelfgets(buffer, -1, file), nullptr);
    EXPECT_STREQ(buffer, "?");
    EXPECT_EQ(qelfputs(nullptr, file), EOF);
    EXPECT_LT(qelfprintf(file, static_cast<const char*>(nullptr)), 0);
    EXPECT_LT(qelfprintf(file, static_cast<const wchar_t*>(nullptr)), 0);
    EXPECT_EQ(qelfgets(buffer, 4, file), buffer);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(qelfclose(file), 0);
}

int exists(const std::wstring& name)
{
    return qelFileExists(name.c_str());
}

TEST(qelFileExists, FindsFilesAndFolders)
{
    const TemporaryFolder folder;
    EXPECT_EQ(exists(folder.path()), 1);
    EXPECT_EQ(exists(folder.write(L"p\u0142yta \u9244.mdb", "x")), 1);
    EXPECT_EQ(exists(folder.path(L"missing.mdb")), 0);
    EXPECT_EQ(exists(folder.path() + L"\\missing\\file.mdb"), 0);
    EXPECT_EQ(qelFileExists(L""), 0);
}

TEST(qelFileExists, HonoursWildcardsInTheName)
{
    const TemporaryFolder folder;
    folder.write(L"model1.mdb", "x");
    EXPECT_EQ(exists(folder.path() + L"\\*.mdb"), 1);
    EXPECT_EQ(exists(folder.path() + L"\\model?.mdb"), 1);
    EXPECT_EQ(exists(folder.path() + L"\\*.accdb"), 0);
    EXPECT_EQ(exists(folder.path() + L"*"), 1);
}

TEST(qelFileExists, FindsNoRootAndNoNameThatEndsInASeparator)
{
    const TemporaryFolder folder;
    EXPECT_EQ(qelFileExists(L"C:\\"), 0);
    EXPECT_EQ(exists(folder.path() + L"\\"), 0);
}

TEST(qelFileExists, LeavesNoHandleOpen)
{
    const TemporaryFolder folder;
    const qelString file(folder.write(L"model1.mdb", "x").c_str());
    folder.write(L"model2.mdb", "x");
    const qelString pattern(folder.path(L"*").c_str());
    const qelString missing(folder.path(L"missing.mdb").c_str());
    EXPECT_EQ(qelFileExists(pattern), 1);
    const int before = openHandles();
    for (int i = 0; i < 50; ++i)
    {
        EXPECT_EQ(qelFileExists(pattern), 1);
        EXPECT_EQ(qelFileExists(file), 1);
        EXPECT_EQ(qelFileExists(missing), 0);
    }
    EXPECT_EQ(openHandles(), before);
}

TEST(qelFclose, LeavesNoHandleOpen)
{
    const TemporaryFolder folder;
    const std::wstring name = folder.write(L"handles.txt", "x");
    const int before = openHandles();
    for (int i = 0; i < 50; ++i)
    {
        EXPECT_EQ(qelfclose(open(name, L"rb")), 0);
    }
    EXPECT_EQ(openHandles(), before);
}
struct Filling
{
    char* buffer;
    size_t capacity;
    int character;
};
Filling filling;

errno_t noteFilling(char* buffer, size_t capacity, int character)
{
    filling = {buffer, capacity, character};
    return ERANGE;
}

// Beside the tests of what comes of it, which need a runtime that has the function.
TEST(qelStrset, HandsEverythingToTheRuntime)
{
    const qelTest::ImportHook hook("_strset_s", &noteFilling);
    char buffer[] = "abc";
    EXPECT_EQ(qelstrset(buffer, sizeof buffer, 'x'), ERANGE);
    EXPECT_EQ(filling.buffer, buffer);
    EXPECT_EQ(filling.capacity, sizeof buffer);
    EXPECT_EQ(filling.character, 'x');
    EXPECT_STREQ(buffer, "abc");
}
} // namespace
