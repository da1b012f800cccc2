// UTF-8 as ANSI code page: characters of one to four bytes, none that is lacking.

#include "codepages/CodePageTest.h"
#include "qelFileAccess.h"
#include "qelString.h"
#include "support/AnsiCodePage.h"
#include "support/GuardedMemory.h"
#include "support/TestFile.h"

#include <string.h>

#include <string>
#include <utility>

using qelTest::fromAnsi;
using qelTest::GuardedBuffer;
using qelTest::TestFile;

namespace
{
class Utf8Ansi : public qelTest::CodePageTest<CP_UTF8>
{
};

const size_t kLongest = 524288;

std::wstring wide(const qelString& text)
{
    return text.getStringW();
}

std::string repeated(const char* character, size_t count)
{
    std::string result;
    for (size_t i = 0; i < count; ++i)
    {
        result += character;
    }
    return result;
}

TEST_F(Utf8Ansi, TextIsConvertedBothWaysWhateverTheMixture)
{
    const char* const narrow[] = {"a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
    const wchar_t* const units[] = {L"a", L"\x00E9", L"\x20AC", L"\xD83D\xDE00"};
    const qelTest::GuardedHeap heap;
    unsigned seed = 7;
    for (int length = 0; length < 100; ++length)
    {
        std::string source;
        std::wstring expected;
        for (int i = 0; i < length; ++i)
        {
            seed = seed * 1664525 + 1013904223;
            source += narrow[seed >> 20 & 3];
            expected += units[seed >> 20 & 3];
        }
        GuardedBuffer<char> guarded(source.size() + 1);
        memcpy(guarded.get(), source.c_str(), source.size() + 1);
        EXPECT_EQ(wide(qelString(guarded.get())), expected);
        EXPECT_EQ(source, qelString(expected.c_str()).getStringA());
    }
}

TEST_F(Utf8Ansi, HalfASurrogatePairIsTheReplacementCharacterInTheNarrowForm)
{
    EXPECT_STREQ(qelString(L"a\xD83Dz").getStringA(), "a\xEF\xBF\xBDz");
    EXPECT_STREQ(qelString(L"\xDE00").getStringA(), "\xEF\xBF\xBD");
}

TEST_F(Utf8Ansi, BytesThatAreNoUtf8AreReplaced)
{
    EXPECT_EQ(wide(qelString("a\xFFz")), L"a\xFFFDz");
    EXPECT_EQ(wide(qelString("a\xE2\x82")), std::wstring(fromAnsi("a\xE2\x82").c_str()));
}

TEST_F(Utf8Ansi, TheLongestTextTakesThreeBytesForEachUnit)
{
    const std::string source = repeated("\xE2\x82\xAC", kLongest);
    GuardedBuffer<char> guarded(source.size() + 1);
    memcpy(guarded.get(), source.c_str(), source.size() + 1);
    const qelString text(guarded.get());
    EXPECT_TRUE(wide(text) == std::wstring(kLongest, L'\x20AC'));
    EXPECT_TRUE(source == text.getStringA());
    EXPECT_TRUE(wide(qelString((source + "x").c_str())) == std::wstring(kLongest, L'\x20AC'));
}

TEST_F(Utf8Ansi, NoByteBeyondAsciiIsACharacter)
{
    qelString text(L"a\xFFFD\x00E9");
    EXPECT_EQ(text.replace('\xE9', 'x'), 1);
    EXPECT_EQ(wide(text), L"ax\x00E9");
    text.setAt(0, '\xC3');
    EXPECT_EQ(wide(text), L"\xFFFDx\x00E9");
    text.removeAll('\xFF');
    EXPECT_EQ(wide(text), L"x\x00E9");
}

// Deliberate: the positions are those of bytes, as many as the text has units.
TEST_F(Utf8Ansi, FindLastOfSearchesAsManyBytesAsThereAreUnits)
{
    const qelString text(L"\x20AC"
                         L"Ab");
    EXPECT_EQ(text.find_last_of('A'), -1);
    EXPECT_EQ(text.find_last_of('\xE2'), 0);
    EXPECT_EQ(text.find_last_of('\xAC'), 2);
}

TEST_F(Utf8Ansi, FilesWithoutAMarkAreReadWhole)
{
    const std::string content = repeated("\xF0\x9F\x98\x80", 50000) + "\r\n\xE2\x82\xAC";
    std::wstring expected;
    for (int i = 0; i < 50000; ++i)
    {
        expected += L"\xD83D\xDE00";
    }
    for (const qelFileAccess::encodeType key : {qelFileAccess::ANSI, qelFileAccess::UNICODE_TEXT})
    {
        const TestFile onDisk(content);
        const qelFileAccess file(onDisk.path(), L"r", key);
        qelString contents;
        EXPECT_EQ(file.readFile(contents, 1000000), content.size() - 1);
        EXPECT_TRUE(wide(contents) == expected + L"\n\x20AC");
    }
}

TEST_F(Utf8Ansi, WholeFilesKeepTheLongestText)
{
    const std::string content = repeated("\xE2\x82\xAC", kLongest + 1);
    const TestFile onDisk(content);
    const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    qelString contents;
    EXPECT_EQ(file.readFile(contents, SIZE_MAX), content.size());
    EXPECT_TRUE(wide(contents) == std::wstring(kLongest, L'\x20AC'));
}

TEST_F(Utf8Ansi, LinesMayBeCutWithinACharacter)
{
    const TestFile onDisk("\xE2\x82\xAC\xE2\x82\xAC\n");
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::ANSI);
    qelString line;
    EXPECT_EQ(wide(file.getStringW(line, 5)), L"\x20AC" + std::wstring(fromAnsi("\xE2").c_str()));
    EXPECT_EQ(wide(file.getStringW(line, 100)), std::wstring(fromAnsi("\x82\xAC\n").c_str()));
}

TEST_F(Utf8Ansi, NarrowWritesKeepEveryCharacter)
{
    for (const qelFileAccess::encodeType key : {qelFileAccess::ANSI, qelFileAccess::UTF8})
    {
        const TestFile onDisk;
        qelFileAccess(onDisk.path(), L"w", key).puts(L"\x0B85\xD83D\xDE00");
        EXPECT_EQ(onDisk.get(),
                  std::string(key == qelFileAccess::UTF8 ? "\xEF\xBB\xBF" : "") + "\xE0\xAE\x85\xF0\x9F\x98\x80");
    }
}
} // namespace
