// The private construction from a range of a character array. No public call hands an array on to it unchanged, so it
// is reached through its exported name.

#include "qelString.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace
{
using Characters = qelArray<wchar_t>;
using Constructor = void (*)(void* where, const Characters& chars, int first, int last);

Constructor constructor()
{
#if defined(_MSC_VER)
    const char* name = "??0qelString@@AEAA@AEBV?$qelArray@_WV?$qelArrayObjectCopyReallocator@_W@@"
                       "V?$qelArrayMemoryController@_W@@@@HH@Z";
#else
    const char* name = "_ZN9qelStringC1ERK8qelArrayIw29qelArrayObjectCopyReallocatorIwE"
                       "24qelArrayMemoryControllerIwEEii";
#endif
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"VarnelQELRoots.dll"), name);
    return reinterpret_cast<Constructor>(reinterpret_cast<void*>(found));
}

Characters characters(const std::wstring& text)
{
    Characters chars;
    for (const wchar_t unit : text)
    {
        chars.append(unit);
    }
    return chars;
}

/// A string built by that construction.
class Built
{
public:
    Built(const std::wstring& text, int first, int last) { constructor()(m_storage, characters(text), first, last); }

    ~Built() { get().~qelString(); }

    qelString& get() { return *reinterpret_cast<qelString*>(m_storage); }
    std::wstring text() { return get().getStringW(); }
    bool isEmptyRepresentation() { return representationOf(get()) == qelString::m_repEmpty; }

private:
    alignas(qelString) unsigned char m_storage[sizeof(qelString)];
};

class qelStringFromCharacters : public testing::Test
{
protected:
    void SetUp() override { ASSERT_NE(constructor(), nullptr); }
};

TEST_F(qelStringFromCharacters, TakesBothEndsOfTheRange)
{
    EXPECT_EQ(Built(L"abcdef", 1, 3).text(), L"bcd");
    EXPECT_EQ(Built(L"abcdef", 0, 5).text(), L"abcdef");
    EXPECT_EQ(Built(L"abcdef", 5, 5).text(), L"f");
    EXPECT_EQ(Built(L"abcdef", 0, 0).text(), L"a");
}

TEST_F(qelStringFromCharacters, GivesEmptyTextForARangeThatIsNone)
{
    EXPECT_TRUE(Built(L"abc", 2, 1).isEmptyRepresentation());
    EXPECT_TRUE(Built(L"abc", 0, 3).isEmptyRepresentation());
    EXPECT_TRUE(Built(L"abc", 3, 3).isEmptyRepresentation());
    EXPECT_TRUE(Built(L"abc", -1, 2).isEmptyRepresentation());
    EXPECT_TRUE(Built(L"abc", 5, 9).isEmptyRepresentation());
}

TEST_F(qelStringFromCharacters, DeliberatelyLeavesNoRepresentationForAnEmptyArray)
{
    Built built(L"", 0, 0);
    EXPECT_EQ(representationOf(built.get()), nullptr);
    // Such a string can still be given a text, and be destroyed.
    built.get() = L"text";
    EXPECT_EQ(built.text(), L"text");
    Built destroyedAsItIs(L"", 0, -1);
    EXPECT_EQ(representationOf(destroyedAsItIs.get()), nullptr);
}

TEST_F(qelStringFromCharacters, AZeroAddsNothingAndEndsNothing)
{
    using std::wstring;
    EXPECT_EQ(Built(wstring(L"a\0b", 3), 0, 2).text(), L"ab");
    EXPECT_EQ(Built(wstring(L"\0\0b", 3), 0, 2).text(), L"b");
    EXPECT_TRUE(Built(wstring(L"\0\0\0", 3), 0, 2).isEmptyRepresentation());
}

TEST_F(qelStringFromCharacters, PercentSignsAreText)
{
    EXPECT_EQ(Built(L"%s%c%n", 0, 5).text(), L"%s%c%n");
}

TEST_F(qelStringFromCharacters, HoldsOneUnitLessThanTheLimit)
{
    Characters chars;
    chars.setPhysicalLength(524288);
    chars.setLogicalLength(524288);
    for (long i = 0; i < 524288; ++i)
    {
        chars[i] = L'n';
    }
    alignas(qelString) unsigned char storage[sizeof(qelString)];
    auto& text = *reinterpret_cast<qelString*>(storage);
    constructor()(storage, chars, 1, 524287);
    EXPECT_EQ(text.length(), 524287);
    text.~qelString();
    constructor()(storage, chars, 0, 524287);
    EXPECT_EQ(representationOf(text), qelString::m_repEmpty);
    text.~qelString();
}

/// The way back, which is private as well.
void appendCharacters(const qelString& text, Characters& chars)
{
    (text.*member(StringToCharacters()))(chars);
}

TEST(qelStringToCharacters, AppendsEveryUnitBehindWhatIsThere)
{
    Characters chars = characters(L"ab");
    appendCharacters(L"cd\xFFFF", chars);
    ASSERT_EQ(chars.length(), 5);
    EXPECT_EQ(std::wstring(&chars[0], 5), L"abcd\xFFFF");
    appendCharacters(L"", chars);
    EXPECT_EQ(chars.length(), 5);
}

TEST(qelStringToCharacters, StayInsideAnArrayWhoseLengthHasFallenBelowZero)
{
    Characters chars;
    chars.removeAt(0);
    ASSERT_EQ(chars.length(), -1);
    appendCharacters(L"ab", chars);
    ASSERT_EQ(chars.length(), 2);
    EXPECT_EQ(std::wstring(&chars[0], 2), L"ab");
}

TEST(qelStringToCharacters, GrowsTheStorageAsAppendingDoes)
{
    Characters chars;
    appendCharacters(L"12345678", chars);
    EXPECT_EQ(chars.physicalLength(), 8);
    appendCharacters(L"9", chars);
    EXPECT_EQ(chars.physicalLength(), 16);
    EXPECT_EQ(chars[8], L'9');
}
} // namespace
