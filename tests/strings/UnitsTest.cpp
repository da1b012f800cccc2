// The loops with vector instructions, each beside its plain twin: every short length at every alignment, between two
// pages that nobody may touch.

#include "strings/Units.h"

#include "support/GuardedMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using qelTest::GuardedBuffer;

namespace
{
// Enough for a block of 64 units, what is before it and what is behind it.
const size_t kMost = 150;

/// Units that look alike, by byte and by sign.
const wchar_t kUnits[] = {L'a', 0x0100, 0x6100, 0x8000, 0xFF00, 0xFFFF, 0x0161, 0x00FF};

/// The same ones for each `seed`.
std::vector<wchar_t> mixed(size_t length, size_t seed)
{
    std::vector<wchar_t> units;
    size_t state = seed * 2654435761U + 1;
    for (size_t i = 0; i < length; ++i)
    {
        state = state * 6364136223846793005U + 1442695040888963407U;
        units.push_back(kUnits[(state >> 33) % 8]);
    }
    return units;
}

/// Calls `check` with texts of every short length, each right before a closed page and so at every alignment.
template <class Check> void forTexts(const Check& check)
{
    for (size_t length = 0; length <= kMost; ++length)
    {
        const std::vector<wchar_t> units = mixed(length, length);
        GuardedBuffer<wchar_t> guarded(length);
        std::copy(units.begin(), units.end(), guarded.get());
        check(static_cast<const wchar_t*>(guarded.get()), length);
    }
}

/// A buffer as a string has it: whole chunks, zeros behind the terminator. It ends before a closed page.
class OwnBuffer
{
public:
    explicit OwnBuffer(const std::vector<wchar_t>& units)
        : m_length((units.size() / qelUnits::kPerChunk + 1) * qelUnits::kPerChunk)
        , m_buffer(m_length)
    {
        std::fill(m_buffer.get(), m_buffer.get() + m_length, L'\0');
        std::copy(units.begin(), units.end(), m_buffer.get());
    }

    wchar_t* get() { return m_buffer.get(); }
    size_t capacity() const { return m_length; }

private:
    size_t m_length;
    GuardedBuffer<wchar_t> m_buffer;
};
} // namespace

TEST(qelUnits, MeasuresAsThePlainLoop)
{
    for (size_t length = 0; length <= kMost; ++length)
    {
        for (size_t behind = 1; behind <= 70; ++behind)
        {
            GuardedBuffer<wchar_t> text(length + behind);
            const std::vector<wchar_t> units = mixed(length + behind, behind);
            std::copy(units.begin(), units.end(), text.get());
            text[length] = 0;
            for (const size_t limit : {size_t{0}, size_t{1}, length / 2, length, length + 1, SIZE_MAX})
            {
                ASSERT_EQ(qelUnits::measure(text.get(), limit), qelUnits::plain::measure(text.get(), limit))
                    << length << " units, " << behind << " behind them, limit " << limit;
            }
        }
    }
}

TEST(qelUnits, MeasuresBytesAsThePlainLoop)
{
    for (size_t length = 0; length <= kMost; ++length)
    {
        for (size_t behind = 1; behind <= 70; ++behind)
        {
            GuardedBuffer<char> text(length + behind);
            std::fill(text.get(), text.get() + length + behind, static_cast<char>(length % 2 == 0 ? 0x80 : 1));
            text[length] = 0;
            for (const size_t limit : {size_t{0}, size_t{1}, length / 2, length, length + 1, SIZE_MAX})
            {
                ASSERT_EQ(qelUnits::measure(text.get(), limit), qelUnits::plain::measure(text.get(), limit))
                    << length << " bytes, " << behind << " behind them, limit " << limit;
            }
        }
    }
}

TEST(qelUnits, MeasuresUpToTheLimitWhereThereIsNoTerminator)
{
    forTexts([](const wchar_t* text, size_t length) { ASSERT_EQ(qelUnits::measure(text, length), length); });
}

TEST(qelUnits, MeasuresTextAtAnOddAddress)
{
    GuardedBuffer<char> bytes(41);
    std::fill(bytes.get(), bytes.get() + 39, 'x');
    bytes[39] = 0;
    bytes[40] = 0;
    void* odd = bytes.get() + 1;
    EXPECT_EQ(qelUnits::measure(static_cast<const wchar_t*>(odd), SIZE_MAX), 19U);
}

TEST(qelUnits, TellsOnlyZeroFromOtherUnits)
{
    std::vector<wchar_t> text(130, L'x');
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit)
    {
        text[100] = static_cast<wchar_t>(unit);
        text[129] = 0;
        ASSERT_EQ(qelUnits::measure(text.data(), SIZE_MAX), unit == 0 ? 100U : 129U) << unit;
    }
}

TEST(qelUnits, MeasuresBuffersOfStringsAsThePlainLoop)
{
    for (size_t length = 0; length <= kMost; ++length)
    {
        OwnBuffer text(mixed(length, length));
        for (size_t limit = 0; limit <= length + 10; ++limit)
        {
            ASSERT_EQ(qelUnits::measureOwn(text.get(), limit), qelUnits::plain::measure(text.get(), limit));
        }
        ASSERT_EQ(qelUnits::measureOwn(text.get(), SIZE_MAX), length);
    }
}

TEST(qelUnits, FindsTheFirstDifferenceAsThePlainLoop)
{
    for (size_t length = 0; length <= 40; ++length)
    {
        const std::vector<wchar_t> units = mixed(length, length);
        OwnBuffer same(units);
        for (size_t at = 0; at <= length; ++at)
        {
            OwnBuffer other(units);
            other.get()[at] ^= at < length ? 0x8000 : 0;
            ASSERT_EQ(qelUnits::firstDifference(same.get(), other.get()),
                      qelUnits::plain::firstDifference(same.get(), other.get()))
                << length << " units, other at " << at;
        }
    }
}

TEST(qelUnits, FindsAMismatchAsThePlainLoop)
{
    forTexts([](const wchar_t* text, size_t length) {
        std::vector<wchar_t> other(text, text + length);
        ASSERT_EQ(qelUnits::mismatch(text, other.data(), length), length);
        for (size_t at = 0; at < length; ++at)
        {
            other[at] ^= 0x0100;
            ASSERT_EQ(qelUnits::mismatch(text, other.data(), length), at) << length;
            other[at] ^= 0x0100;
        }
    });
}

TEST(qelUnits, FindsAPairAsThePlainLoop)
{
    forTexts([](const wchar_t* text, size_t length) {
        for (size_t distance = 0; distance < std::min<size_t>(length, 12); ++distance)
        {
            for (const wchar_t first : kUnits)
            {
                const wchar_t* end = text + length - distance;
                ASSERT_EQ(qelUnits::findPair(text, end, first, distance, L'a'),
                          qelUnits::plain::findPair(text, end, first, distance, L'a'))
                    << length;
            }
        }
    });
}

TEST(qelUnits, FindsTheLastUnitAsThePlainLoop)
{
    forTexts([](const wchar_t* text, size_t length) {
        for (size_t cut = 0; cut < std::min<size_t>(length, 20); ++cut)
        {
            for (const wchar_t unit : {L'a', wchar_t(0x8000), L'z'})
            {
                const wchar_t* end = text + length - cut;
                ASSERT_EQ(qelUnits::findLast(text, end, unit), qelUnits::plain::findLast(text, end, unit)) << length;
            }
        }
    });
}

TEST(qelUnits, FindsAndSkipsMembersAsThePlainLoops)
{
    for (size_t count = 0; count <= qelUnits::FewUnits::kMost; ++count)
    {
        qelUnits::FewUnits set = {};
        for (size_t i = 0; i < count; ++i)
        {
            set.add(i < 7 ? kUnits[i] : static_cast<wchar_t>(L'A' + i));
        }
        forTexts([&set](const wchar_t* text, size_t length) {
            const wchar_t* end = text + length;
            for (const wchar_t* from = text; from < end && from - text < 20; ++from)
            {
                ASSERT_EQ(qelUnits::findMember(from, end, set), qelUnits::plain::findMember(from, end, set));
                ASSERT_EQ(qelUnits::skipMembers(from, end, set), qelUnits::plain::skipMembers(from, end, set));
                ASSERT_EQ(qelUnits::skipMembersBack(from, end, set), qelUnits::plain::skipMembersBack(from, end, set));
            }
        });
    }
}

TEST(qelUnits, SkipsLongRunsOfMembers)
{
    const qelUnits::FewUnits blanks = {2, L" \t"};
    for (size_t length = 0; length <= kMost; ++length)
    {
        for (size_t at = 0; at <= length; ++at)
        {
            GuardedBuffer<wchar_t> text(length);
            std::fill(text.get(), text.get() + length, L' ');
            if (at < length)
            {
                text[at] = L'x';
            }
            const wchar_t* end = text.get() + length;
            ASSERT_EQ(qelUnits::skipMembers(text.get(), end, blanks), text.get() + at);
            ASSERT_EQ(qelUnits::skipMembersBack(text.get(), end, blanks), text.get() + (at < length ? at + 1 : 0));
        }
    }
}

TEST(qelUnits, CopiesThatManyUnits)
{
    forTexts([](const wchar_t* text, size_t length) {
        GuardedBuffer<wchar_t> exact(length);
        qelUnits::copy(exact.get(), text, length);
        ASSERT_TRUE(std::equal(text, text + length, exact.get())) << length;

        std::vector<wchar_t> wider(length + 20, L'-');
        qelUnits::copy(wider.data() + 10, text, length);
        ASSERT_EQ(std::count(wider.begin(), wider.begin() + 10, L'-'), 10);
        ASSERT_EQ(std::count(wider.end() - 10, wider.end(), L'-'), 10);
    });
}

TEST(qelUnits, ClearsTheWholeText)
{
    for (size_t length = 0; length <= kMost; ++length)
    {
        OwnBuffer text(mixed(length, 1));
        qelUnits::clear(text.get());
        ASSERT_EQ(std::count(text.get(), text.get() + text.capacity(), L'\0'), static_cast<long>(text.capacity()))
            << length;
    }
}

TEST(qelUnits, WidensAsciiOnly)
{
    for (size_t length = 0; length <= 40; ++length)
    {
        for (size_t at = 0; at <= length; ++at)
        {
            GuardedBuffer<char> text(length);
            GuardedBuffer<wchar_t> units(length);
            for (size_t i = 0; i < length; ++i)
            {
                text[i] = static_cast<char>(1 + i * 7 % 127);
            }
            ASSERT_TRUE(qelUnits::widen(units.get(), text.get(), length));
            ASSERT_TRUE(std::equal(text.get(), text.get() + length, units.get())) << length;
            for (const int other : {0, 0x80, 0xFF})
            {
                if (at < length)
                {
                    text[at] = static_cast<char>(other);
                    ASSERT_FALSE(qelUnits::widen(units.get(), text.get(), length)) << length << " bytes, at " << at;
                    ASSERT_FALSE(qelUnits::plain::widen(units.get(), text.get(), length));
                }
            }
        }
    }
}
