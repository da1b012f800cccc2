// Texts around the greatest length, and memory that must not be touched.

#include "qelString.h"
#include "support/GuardedMemory.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

namespace
{
const size_t kLimit = 524288;
const size_t kLengths[] = {kLimit - 1, kLimit, kLimit + 1, kLimit + 4, 2 * kLimit};

size_t cut(size_t length)
{
    return length < kLimit ? length : kLimit;
}

std::wstring pattern(size_t length)
{
    std::wstring text(length, L'\0');
    for (size_t i = 0; i < length; ++i)
    {
        text[i] = static_cast<wchar_t>(L'a' + i % 23);
    }
    return text;
}

std::string narrowed(const std::wstring& text)
{
    std::string narrow;
    for (const wchar_t unit : text)
    {
        narrow += static_cast<char>(unit);
    }
    return narrow;
}

bool holds(const qelString& text, const std::wstring& expected)
{
    return text.length() == static_cast<int>(expected.size()) && text.getStringW() == expected;
}

TEST(qelStringLimit, WideTextIsCutAtTheLimit)
{
    for (const size_t length : kLengths)
    {
        const std::wstring source = pattern(length);
        const std::wstring expected = source.substr(0, cut(length));
        EXPECT_TRUE(holds(qelString(source.c_str()), expected)) << length;
        qelString assigned(L"before");
        EXPECT_TRUE(holds(assigned = source.c_str(), expected)) << length;
    }
}

TEST(qelStringLimit, UnitsAreCutAtTheLimit)
{
    for (const size_t length : kLengths)
    {
        const std::wstring source = pattern(length);
        const auto* units = reinterpret_cast<const unsigned short*>(source.c_str());
        const std::wstring expected = source.substr(0, cut(length));
        EXPECT_TRUE(holds(qelString(units), expected)) << length;
        qelString assigned(L"before");
        EXPECT_TRUE(holds(assigned = units, expected)) << length;
        EXPECT_TRUE(holds(assigned.setFromUnsignedShortString(units), expected)) << length;
    }
}

TEST(qelStringLimit, NarrowTextIsCutAtTheLimit)
{
    for (const size_t length : kLengths)
    {
        const std::wstring wide = pattern(length);
        const std::string source = narrowed(wide);
        const std::wstring expected = wide.substr(0, cut(length));
        EXPECT_TRUE(holds(qelString(source.c_str()), expected)) << length;
        qelString assigned(L"before");
        EXPECT_TRUE(holds(assigned = source.c_str(), expected)) << length;
    }
}

TEST(qelStringLimit, NarrowFormOfTheLongestTextIsWhole)
{
    const std::wstring wide = pattern(kLimit);
    EXPECT_EQ(narrowed(wide), qelString(wide.c_str()).getStringA());
}

TEST(qelStringLimit, LongestTextIsSharedComparedAndShortened)
{
    const std::wstring source = pattern(kLimit);
    const qelString text(source.c_str());
    const qelString other(source.c_str());
    EXPECT_TRUE(text == other);
    EXPECT_TRUE(text > qelString(source.substr(1).c_str()) || text < qelString(source.substr(1).c_str()));
    EXPECT_TRUE(holds(text >> 1, source.substr(1)));
    EXPECT_EQ((text >> 524288).isEmpty(), 1);
    EXPECT_EQ((text >> 524287).length(), 1);
}

TEST(qelStringLimit, ConcatenationHoldsOneUnitLess)
{
    const std::wstring half = pattern(kLimit / 2);
    const qelString front(half.c_str());
    const qelString fits(half.c_str() + 1);
    EXPECT_TRUE(holds(front + fits, half + half.substr(1)));
    qelString appended(front);
    appended += fits;
    EXPECT_TRUE(holds(appended, half + half.substr(1)));
}

TEST(qelStringLimit, LongerConcatenationGivesEmptyTextAndLeavesTheOperands)
{
    const std::wstring half = pattern(kLimit / 2);
    const qelString front(half.c_str());
    const qelString back(front);
    const qelString sum = front + back;
    EXPECT_EQ(representationOf(sum), qelString::m_repEmpty);
    EXPECT_TRUE(holds(front, half));
    qelString appended(front);
    appended += appended;
    EXPECT_EQ(representationOf(appended), qelString::m_repEmpty);
    EXPECT_EQ(appended.length(), 0);
    EXPECT_TRUE(holds(back, half));
    const qelString whole(pattern(kLimit).c_str());
    EXPECT_EQ((whole + qelString()).isEmpty(), 1);
    EXPECT_EQ((whole + whole).isEmpty(), 1);
    EXPECT_EQ((qelString() + whole).isEmpty(), 1);
}

TEST(qelStringLimit, SetAtWorksUpToOneUnitBelowTheLimit)
{
    std::wstring source = pattern(kLimit - 1);
    qelString text(source.c_str());
    text.setAt(524286, L'!');
    source[524286] = L'!';
    EXPECT_TRUE(holds(text, source));
    // Over the terminator in the last place of the buffer: the text then has the greatest length.
    text.setAt(524287, L'?');
    EXPECT_TRUE(holds(text, source + L'?'));
    // A text of that length does not fit the buffer together with its terminator.
    text.setAt(0, L'x');
    EXPECT_EQ(representationOf(text), qelString::m_repEmpty);
}

TEST(qelStringGuard, ReadsNoFurtherThanTheTerminator)
{
    for (size_t length = 0; length < 20; ++length)
    {
        const std::wstring expected = pattern(length);
        const std::string narrow = narrowed(expected);
        qelTest::GuardedBuffer<wchar_t> wide(length + 1);
        qelTest::GuardedBuffer<char> bytes(length + 1);
        for (size_t i = 0; i <= length; ++i)
        {
            wide[i] = expected.c_str()[i];
            bytes[i] = narrow.c_str()[i];
        }
        EXPECT_TRUE(holds(qelString(wide.get()), expected));
        EXPECT_TRUE(holds(qelString(reinterpret_cast<unsigned short*>(wide.get())), expected));
        EXPECT_TRUE(holds(qelString(bytes.get()), expected));
        qelString text;
        EXPECT_TRUE(holds(text = wide.get(), expected));
        EXPECT_TRUE(holds(text = reinterpret_cast<unsigned short*>(wide.get()), expected));
        EXPECT_TRUE(holds(text = bytes.get(), expected));
    }
}

TEST(qelStringGuard, ForeignTextIsMeasuredAtAnyAddress)
{
    // Zeros before and behind the text; odd addresses, too.
    for (size_t offset = 0; offset < 70; ++offset)
    {
        for (const size_t length : {0u, 1u, 7u, 31u, 32u, 33u, 63u, 64u, 65u, 200u})
        {
            alignas(64) unsigned char room[70 + 2 * 201] = {};
            const std::wstring wide(length, L'\x0100');
            memcpy(room + offset, wide.c_str(), length * sizeof(wchar_t));
            ASSERT_EQ(qelString(reinterpret_cast<const wchar_t*>(room + offset)).length(), static_cast<int>(length))
                << offset;
            memset(room, 0, sizeof room);
            memset(room + offset, 'n', length);
            ASSERT_EQ(qelString(reinterpret_cast<const char*>(room + offset)).length(), static_cast<int>(length))
                << offset;
        }
    }
}

TEST(qelStringGuard, ReadsNoFurtherThanTheLimitWhereThereIsNoTerminator)
{
    const std::wstring expected(kLimit, L'n');
    qelTest::GuardedBuffer<wchar_t> wide(kLimit);
    for (size_t i = 0; i < kLimit; ++i)
    {
        wide[i] = L'n';
    }
    EXPECT_TRUE(holds(qelString(wide.get()), expected));
    qelString text;
    EXPECT_TRUE(holds(text = wide.get(), expected));
    EXPECT_TRUE(holds(text = reinterpret_cast<unsigned short*>(wide.get()), expected));

    CPINFO page;
    ASSERT_TRUE(GetCPInfo(CP_ACP, &page));
    const size_t most = kLimit * page.MaxCharSize;
    qelTest::GuardedBuffer<char> narrow(most);
    for (size_t i = 0; i < most; ++i)
    {
        narrow[i] = 'n';
    }
    EXPECT_TRUE(holds(qelString(narrow.get()), expected));
    EXPECT_TRUE(holds(text = narrow.get(), expected));
}

TEST(qelStringGuard, OperationsStayInsideTheirOwnBlocks)
{
    const qelTest::GuardedHeap heap;
    for (size_t length = 0; length < 24; ++length)
    {
        const std::wstring source = pattern(length);
        const std::string narrow = narrowed(source);
        const qelString text(source.c_str());
        EXPECT_TRUE(holds(text, source));
        EXPECT_EQ(narrow, text.getStringA());
        EXPECT_TRUE(holds(qelString(narrow.c_str()), source));
        EXPECT_TRUE(holds(text + text, source + source));
        EXPECT_TRUE(text == qelString(source.c_str()));
        EXPECT_TRUE(qelString((source + L"x").c_str()) > text);
        EXPECT_TRUE(holds(text >> 1, length == 0 ? source : source.substr(1)));
        qelString changed(text);
        changed.setAt(0, L'Z');
        changed += changed;
        (void)changed.getStringA();
        changed = changed.getStringA();
        changed = changed.getStringW() + changed.length();
        changed = text;
        EXPECT_TRUE(holds(changed, source));
    }
}

TEST(qelStringGuard, LongestTextStaysInsideItsBlock)
{
    const qelTest::GuardedHeap heap;
    const std::wstring source = pattern(kLimit);
    const qelString text(source.c_str());
    EXPECT_TRUE(holds(text, source));
    EXPECT_EQ(narrowed(source), text.getStringA());
    EXPECT_TRUE(holds(qelString(text.getStringA()), source));
}
} // namespace
