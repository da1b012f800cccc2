#include "qelProductDefines.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <wchar.h>

#include <string>

namespace
{
// What the library holds before anything is set; read before the first test runs.
const std::wstring initialName = qelProductDefines::getOVProductName();
const std::wstring initialPath = qelProductDefines::getOVProduct();

const std::wstring prefix = L"Kelvara\\";

std::wstring name()
{
    return qelProductDefines::getOVProductName();
}

std::wstring path()
{
    return qelProductDefines::getOVProduct();
}

void set(const std::wstring& text)
{
    qelProductDefines::setOVProductName(text.c_str());
}

std::wstring letters(size_t count)
{
    std::wstring text(count, L'n');
    for (size_t i = 0; i < count; ++i)
    {
        text[i] = static_cast<wchar_t>(L'a' + i % 26);
    }
    return text;
}

void returnToTheCaller(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {}

int boundedFailures = 0;

/// The runtime's own copy; counts those that it refuses.
errno_t countingCopy(wchar_t* to, size_t capacity, const wchar_t* from)
{
    EXPECT_EQ(capacity, 260u);
    const errno_t error = wcscpy_s(to, capacity, from);
    boundedFailures += error != 0 ? 1 : 0;
    return error;
}

errno_t countingAppend(wchar_t* to, size_t capacity, const wchar_t* from)
{
    EXPECT_EQ(capacity, 260u);
    const errno_t error = wcscat_s(to, capacity, from);
    boundedFailures += error != 0 ? 1 : 0;
    return error;
}

/// Lets the C runtime's failures return, as they do by themselves on msvcrt.
class qelProductDefinesFailure : public testing::Test
{
protected:
    qelProductDefinesFailure()
        : m_before(_set_invalid_parameter_handler(&returnToTheCaller))
    {
        set(L"Before");
    }

    ~qelProductDefinesFailure() override { _set_invalid_parameter_handler(m_before); }

private:
    _invalid_parameter_handler m_before;
};
} // namespace

TEST(qelProductDefines, InitialPairDeliberatelyDoesNotFollowTheRuleOfLaterOnes)
{
    EXPECT_EQ(initialName, L"Orvalis");
    EXPECT_EQ(initialPath, L"Kelvara\\Orvalis\\2020");
}

TEST(qelProductDefines, SettingTheInitialNameGivesAPathWithABackslashAndNoYear)
{
    set(L"Orvalis");
    EXPECT_EQ(name(), L"Orvalis");
    EXPECT_EQ(path(), L"Kelvara\\Orvalis\\");
}

TEST(qelProductDefines, PathIsMakerNameAndBackslash)
{
    set(L"Girder & Söhne \x65E5\x672C");
    EXPECT_EQ(name(), L"Girder & Söhne \x65E5\x672C");
    EXPECT_EQ(path(), L"Kelvara\\Girder & Söhne \x65E5\x672C\\");
    set(L"x");
    EXPECT_EQ(name(), L"x");
    EXPECT_EQ(path(), L"Kelvara\\x\\");
}

TEST(qelProductDefines, EmptyNameGivesTwoBackslashes)
{
    set(L"");
    EXPECT_EQ(name(), L"");
    EXPECT_EQ(path(), L"Kelvara\\\\");
}

TEST(qelProductDefines, PointersStayTheSameAndSeeLaterChanges)
{
    const wchar_t* const keptName = qelProductDefines::getOVProductName();
    const wchar_t* const keptPath = qelProductDefines::getOVProduct();
    set(L"First");
    set(letters(250));
    set(L"Second");
    EXPECT_EQ(qelProductDefines::getOVProductName(), keptName);
    EXPECT_EQ(qelProductDefines::getOVProduct(), keptPath);
    EXPECT_STREQ(keptName, L"Second");
    EXPECT_STREQ(keptPath, L"Kelvara\\Second\\");
}

TEST(qelProductDefines, TakesItsOwnTextsAsTheName)
{
    set(L"Same");
    qelProductDefines::setOVProductName(qelProductDefines::getOVProductName());
    EXPECT_EQ(name(), L"Same");
    EXPECT_EQ(path(), L"Kelvara\\Same\\");
    qelProductDefines::setOVProductName(qelProductDefines::getOVProductName() + 1);
    EXPECT_EQ(name(), L"ame");
    EXPECT_EQ(path(), L"Kelvara\\ame\\");
    qelProductDefines::setOVProductName(qelProductDefines::getOVProduct());
    EXPECT_EQ(name(), L"Kelvara\\ame\\");
    EXPECT_EQ(path(), L"Kelvara\\Kelvara\\ame\\\\");
}

TEST(qelProductDefines, CopiesTheName)
{
    wchar_t text[] = L"Mine";
    qelProductDefines::setOVProductName(text);
    text[0] = L'X';
    EXPECT_EQ(name(), L"Mine");
}

TEST(qelProductDefines, TakesTheLongestNameWhosePathFits)
{
    const std::wstring longest = letters(250);
    set(longest);
    EXPECT_EQ(name(), longest);
    EXPECT_EQ(path(), prefix + longest + L"\\");
    EXPECT_EQ(path().size(), 259u);
}

TEST(qelProductDefines, MayBeCopiedWhichCopiesNothing)
{
    qelProductDefines one;
    const qelProductDefines other;
    set(L"Kept");
    one = other;
    one = qelProductDefines();
    EXPECT_EQ(name(), L"Kept");
}

TEST_F(qelProductDefinesFailure, ANameWithNoRoomForTheLastBackslashEmptiesThePath)
{
    const std::wstring text = letters(251);
    set(text);
    EXPECT_EQ(name(), text);
    EXPECT_EQ(path(), L"");
}

TEST_F(qelProductDefinesFailure, ANameWithNoRoomInThePathLeavesTheBackslashThatFollowsIt)
{
    for (const size_t length : {size_t(252), size_t(259)})
    {
        const std::wstring text = letters(length);
        set(text);
        EXPECT_EQ(name(), text);
        EXPECT_EQ(path(), L"\\");
    }
}

TEST_F(qelProductDefinesFailure, ANameThatDoesNotFitBecomesEmpty)
{
    for (const size_t length : {size_t(260), size_t(261), size_t(100000)})
    {
        set(L"Before");
        set(letters(length));
        EXPECT_EQ(name(), L"");
        EXPECT_EQ(path(), L"Kelvara\\\\");
    }
}

TEST_F(qelProductDefinesFailure, ANullNameBecomesEmpty)
{
    qelProductDefines::setOVProductName(nullptr);
    EXPECT_EQ(name(), L"");
    EXPECT_EQ(path(), L"Kelvara\\\\");
}

TEST_F(qelProductDefinesFailure, WhatDoesNotFitIsHandedToTheRuntimesBoundedCopies)
{
    const qelTest::ImportHook copyHook("wcscpy_s", &countingCopy);
    const qelTest::ImportHook appendHook("wcscat_s", &countingAppend);
    const struct
    {
        size_t length;
        int failures;
    } rows[] = {{0, 0}, {250, 0}, {251, 1}, {252, 1}, {259, 1}, {260, 1}};
    for (const auto& row : rows)
    {
        boundedFailures = 0;
        set(letters(row.length));
        EXPECT_EQ(boundedFailures, row.failures) << row.length;
    }
    boundedFailures = 0;
    qelProductDefines::setOVProductName(nullptr);
    EXPECT_EQ(boundedFailures, 1);
}

TEST_F(qelProductDefinesFailure, ALaterNameThatFitsWorksAsEver)
{
    set(letters(260));
    set(letters(259));
    set(L"After");
    EXPECT_EQ(name(), L"After");
    EXPECT_EQ(path(), L"Kelvara\\After\\");
}
