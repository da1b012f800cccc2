// Reading of bytes, lines, tokens and characters.

#include "qelFileAccess.h"

#include "WineDifferences.h"
#include "support/AnsiCodePage.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <stdint.h>
#include <wchar.h>
#include <wctype.h>

#include <vector>

using qelTest::ansiBytes;
using qelTest::ansiText;
using qelTest::byCodePage;
using qelTest::bytes;
using qelTest::TestFile;
using qelTest::utf16;

namespace
{
const qelFileAccess::encodeType kAll[] = {qelFileAccess::ANSI, qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF8,
                                          qelFileAccess::UTF16LE};

/// `text` in the form that a new file of this encoding has.
std::string encoded(qelFileAccess::encodeType encoding, const std::string& text)
{
    switch (encoding)
    {
    case qelFileAccess::UTF8:
        return "\xEF\xBB\xBF" + text;
    case qelFileAccess::ANSI:
        return text;
    default:
        return utf16(L"\xFEFF" + std::wstring(text.begin(), text.end()));
    }
}

std::vector<std::wstring> lines(const std::string& content, qelFileAccess::encodeType encoding, int maxCount)
{
    TestFile onDisk(content);
    const qelFileAccess file(onDisk.path(), L"r", encoding);
    std::vector<std::wstring> result;
    while (file.eof() == 0 && result.size() < 20)
    {
        qelString line(L"left over");
        const qelString copy = file.getStringW(line, maxCount);
        EXPECT_TRUE(copy == line);
        result.push_back(line.getStringW());
    }
    return result;
}

typedef std::vector<std::wstring> Lines;

TEST(qelFileAccessRead, ReadsBytesAndElements)
{
    TestFile onDisk(bytes("0123456789"));
    const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    char buffer[12] = {};
    EXPECT_EQ(file.read(buffer, 4, 1), 1u);
    EXPECT_EQ(std::string(buffer, 4), "0123");
    EXPECT_EQ(file.read(buffer, 4, 3), 1u);
    EXPECT_EQ(std::string(buffer, 6), "456789");
}

TEST(qelFileAccessRead, ReturnsZeroWhereThereIsNothingToReadInto)
{
    TestFile onDisk(bytes("0123456789"));
    const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    char buffer[4] = {};
    EXPECT_EQ(file.read(nullptr, 1, 4), 0u);
    EXPECT_EQ(file.read(buffer, 0, 4), 0u);
    EXPECT_EQ(file.read(buffer, 4, 0), 0u);
    EXPECT_EQ(file.read(buffer, SIZE_MAX / 2, 3), 0u);
    EXPECT_EQ(file.read(buffer, 1, 1), 1u);
    EXPECT_EQ(buffer[0], '0');
}

TEST(qelFileAccessRead, EndsAtAnEndOfFileCharacter)
{
    TestFile onDisk(bytes("\xEF\xBB\xBF\x1A"
                          "abc"));
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::UTF8);
    char buffer[4] = {};
    EXPECT_EQ(file.read(buffer, 1, 4), qelTest::readAtEndOfFileCharacter());
}

TEST(qelFileAccessLines, KeepsTheLineFeedAndTranslatesLineEnds)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        EXPECT_EQ(lines(encoded(encoding, "one\r\n\r\ntwo\nend"), encoding, 100),
                  (Lines{L"one\n", L"\n", L"two\n", L"end"}));
    }
}

TEST(qelFileAccessLines, GivesAnEmptyLineAtTheEnd)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        EXPECT_EQ(lines(encoded(encoding, "one\r\n"), encoding, 100), (Lines{L"one\n", L""}));
        EXPECT_EQ(lines("", encoding, 100), (Lines{L""}));
    }
}

TEST(qelFileAccessLines, CountsTheTerminatorInMaxCount)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        EXPECT_EQ(lines(encoded(encoding, "abcde\r\n"), encoding, 4), (Lines{L"abc", L"de\n", L""}));
        EXPECT_EQ(lines(encoded(encoding, "ab"), encoding, 2), (Lines{L"a", L"b", L""}));
    }
}

TEST(qelFileAccessLines, ReadsNothingForAMaxCountBelowTwo)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        TestFile onDisk(encoded(encoding, "abc"));
        const qelFileAccess file(onDisk.path(), L"r", encoding);
        for (const int maxCount : {1, 0, -1, INT32_MIN})
        {
            qelString line(L"left over");
            EXPECT_EQ(file.getStringW(line, maxCount).isEmpty(), 1);
            EXPECT_EQ(line.isEmpty(), 1);
        }
        qelString line;
        EXPECT_STREQ(file.getStringW(line, 100).getStringW(), L"abc");
    }
}

TEST(qelFileAccessLines, CutsLongLinesAtTheLineBuffer)
{
    const std::string content = std::string(600, 'x') + "\r\n";
    for (const int maxCount : {512, 513, 100000, INT32_MAX})
    {
        for (const qelFileAccess::encodeType encoding : {qelFileAccess::ANSI, qelFileAccess::UTF8})
        {
            EXPECT_EQ(lines(encoded(encoding, content), encoding, maxCount),
                      (Lines{std::wstring(511, 'x'), std::wstring(89, 'x') + L"\n", L""}));
        }
        for (const qelFileAccess::encodeType encoding : {qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF16LE})
        {
            EXPECT_EQ(lines(encoded(encoding, content), encoding, maxCount),
                      (Lines{std::wstring(255, 'x'), std::wstring(255, 'x'), std::wstring(90, 'x') + L"\n", L""}));
        }
    }
}

TEST(qelFileAccessLines, ConvertsFromTheAnsiCodePage)
{
    EXPECT_EQ(lines(ansiBytes() + "\n", qelFileAccess::ANSI, 100), (Lines{ansiText() + L"\n", L""}));
    EXPECT_EQ(lines(ansiBytes() + "\n", static_cast<qelFileAccess::encodeType>(7), 100),
              (Lines{ansiText() + L"\n", L""}));
}

// Deliberate: UTF8 takes the 8-bit path, so lines carry no more than the ANSI code page has.
TEST(qelFileAccessLines, KeepsOfUtf8WhatTheAnsiCodePageHas)
{
    // U+20AC, which the Japanese code page lacks, and U+0B85, which only UTF-8 has.
    EXPECT_EQ(lines(bytes("\xEF\xBB\xBF\xE2\x82\xAC\xE0\xAE\x85!\n"), qelFileAccess::UTF8, 100),
              (Lines{byCodePage(L"\x20AC?!\n", L"?\?!\n", L"\x20AC\x0B85!\n"), L""}));
    // U+00F7, which all of them have.
    EXPECT_EQ(lines(bytes("\xC3\xB7"), qelFileAccess::UTF8, 100), (Lines{L"\x00F7"}));
}

TEST(qelFileAccessLines, ReadsWideTextWhole)
{
    const std::string content = utf16(L"\xFEFF\x4E2D\xD83D\xDE00\r\n");
    EXPECT_EQ(lines(content, qelFileAccess::UNICODE_TEXT, 100), (Lines{L"\x4E2D\xD83D\xDE00\n", L""}));
    EXPECT_EQ(lines(content, qelFileAccess::UTF16LE, 100), (Lines{L"\x4E2D\xD83D\xDE00\n", L""}));
    EXPECT_EQ(lines(bytes("\xEF\xBB\xBF\xE4\xB8\xAD\r\n"), qelFileAccess::UNICODE_TEXT, 100),
              (Lines{L"\x4E2D\n", L""}));
}

TEST(qelFileAccessLines, EndsAtAnEndOfFileCharacter)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        EXPECT_EQ(lines(encoded(encoding, "ab\x1Axy\n"), encoding, 100), (Lines{L"ab"}));
    }
}

TEST(qelFileAccessLines, GivesBackWhatPutsWrote)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        TestFile onDisk;
        qelFileAccess(onDisk.path(), L"w", encoding).puts((ansiText() + L"-text\nsecond").c_str());
        const qelFileAccess file(onDisk.path(), L"r", encoding);
        qelString line;
        EXPECT_EQ(std::wstring(file.getStringW(line, 100).getStringW()), ansiText() + L"-text\n");
        EXPECT_STREQ(file.getStringW(line, 100).getStringW(), L"second");
    }
}

TEST(qelFileAccessLines, GivesAnEmptyLineOnAStreamThatIsOnlyWritten)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        TestFile onDisk;
        const qelFileAccess file(onDisk.path(), L"w", encoding);
        qelString line(L"left over");
        EXPECT_EQ(file.getStringW(line, 100).isEmpty(), 1);
        EXPECT_EQ(line.isEmpty(), 1);
    }
}

TEST(qelFileAccessTokens, ReadsIntegersAndStopsAtWhatIsNone)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        TestFile onDisk(encoded(encoding, "  42 x"));
        const qelFileAccess file(onDisk.path(), L"r", encoding);
        int value = 0;
        EXPECT_EQ(file.readInt(value), 1);
        EXPECT_EQ(value, 42);
        EXPECT_EQ(file.readInt(value), 0);
        qelString token;
        EXPECT_EQ(file.readString(token), 1);
        EXPECT_STREQ(token.getStringW(), L"x");
        EXPECT_EQ(file.readInt(value), EOF);
    }
}

TEST(qelFileAccessTokens, ReadsMixedTokensAcrossLines)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        TestFile onDisk(encoded(encoding, "HEA200\t-7\r\n\r\n  1.25e2 end\r\n"));
        const qelFileAccess file(onDisk.path(), L"r", encoding);
        qelString token;
        int integer = 0;
        double real = 0;
        EXPECT_EQ(file.readString(token), 1);
        EXPECT_STREQ(token.getStringW(), L"HEA200");
        EXPECT_EQ(file.readInt(integer), 1);
        EXPECT_EQ(integer, -7);
        EXPECT_EQ(file.readDouble(real), 1);
        EXPECT_EQ(real, 125.0);
        EXPECT_EQ(file.readDouble(real), 0);
        EXPECT_EQ(file.readString(token), 1);
        EXPECT_STREQ(token.getStringW(), L"end");
        EXPECT_EQ(file.readString(token), qelTest::scannedBehindBlanks());
        EXPECT_EQ(file.readDouble(real), EOF);
    }
}

TEST(qelFileAccessTokens, TranslatesTokensAsTheKeySays)
{
    TestFile onDisk(bytes("\xEF\xBB\xBF\xE4\xB8\xAD\xC3\xA9 x"));
    for (const qelFileAccess::encodeType encoding :
         {qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF8, qelFileAccess::UTF16LE})
    {
        const qelFileAccess file(onDisk.path(), L"r", encoding);
        qelString token;
        EXPECT_EQ(file.readString(token), 1);
        EXPECT_STREQ(token.getStringW(), L"\x4E2D\x00E9");
    }
}

TEST(qelFileAccessTokens, TakesTokensOf255UnitsAndRefusesLongerOnes)
{
    TestFile onDisk(std::string(255, 'a') + " " + std::string(256, 'b') + " " + std::string(3000, 'c'));
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::ANSI);
    qelString token;
    EXPECT_EQ(file.readString(token), 1);
    EXPECT_EQ(std::wstring(token.getStringW()), std::wstring(255, 'a'));
    EXPECT_EQ(file.readString(token), 0);
    EXPECT_EQ(token.isEmpty(), 1);
    TestFile atTheEnd(std::string(256, 'b'));
    EXPECT_EQ(qelFileAccess(atTheEnd.path(), L"r", qelFileAccess::ANSI).readString(token), 0);
    EXPECT_EQ(token.isEmpty(), 1);
}

TEST(qelFileAccessTokens, GivesTheEndOfFileMarkerForEmptyFilesAndBlanks)
{
    const struct
    {
        const char* content;
        int expected;
    } cases[] = {{"", EOF}, {" \t\r\n ", qelTest::scannedBehindBlanks()}};
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        for (const auto& item : cases)
        {
            TestFile onDisk(encoded(encoding, item.content));
            qelString token(L"old");
            EXPECT_EQ(qelFileAccess(onDisk.path(), L"r", encoding).readString(token), item.expected);
            EXPECT_EQ(token.isEmpty(), 1);
            int integer = 77;
            EXPECT_EQ(qelFileAccess(onDisk.path(), L"r", encoding).readInt(integer), item.expected);
            EXPECT_NE(integer, 77);
            double real = 77;
            EXPECT_EQ(qelFileAccess(onDisk.path(), L"r", encoding).readDouble(real), item.expected);
            EXPECT_NE(real, 77);
        }
    }
}

TEST(qelFileAccessTokens, BeginWithAnyCharacterThatIsNoWhiteSpace)
{
    std::wstring starts;
    for (wchar_t unit = 0x21; unit < 0x100; ++unit)
    {
        if (iswspace(unit) == 0)
        {
            starts += unit;
        }
    }
    std::wstring text(L"\xFEFF");
    std::string narrow;
    for (const wchar_t unit : starts)
    {
        text += std::wstring(L"\r\n") + unit + L"z";
        narrow += std::string(" ") + static_cast<char>(unit) + "z";
    }
    TestFile wideOnDisk(utf16(text));
    TestFile narrowOnDisk(narrow);
    const qelFileAccess wideFile(wideOnDisk.path(), L"r", qelFileAccess::UTF16LE);
    const qelFileAccess narrowFile(narrowOnDisk.path(), L"r", qelFileAccess::ANSI);
    qelString token;
    for (const wchar_t unit : starts)
    {
        EXPECT_EQ(wideFile.readString(token), 1);
        EXPECT_EQ(token.getStringW(), std::wstring(1, unit) + L"z");
        EXPECT_EQ(narrowFile.readString(token), 1);
        EXPECT_EQ(token.length(), 2) << static_cast<int>(unit);
    }
}

TEST(qelFileAccessCharacters, AreWideWhateverTheEncoding)
{
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        TestFile onDisk(encoded(encoding, "a\r\nb"));
        const qelFileAccess file(onDisk.path(), L"r", encoding);
        EXPECT_EQ(file.getc(), 'a');
        EXPECT_EQ(file.getc(), '\n');
        EXPECT_EQ(file.getc(), 'b');
        EXPECT_EQ(file.eof(), 0);
        EXPECT_EQ(file.getc(), static_cast<int>(WEOF));
        EXPECT_NE(file.eof(), 0);
    }
    TestFile onDisk(bytes("\xEF\xBB\xBF\xE4\xB8\xAD"));
    EXPECT_EQ(qelFileAccess(onDisk.path(), L"r", qelFileAccess::UTF8).getc(), 0x4E2D);
}

// The character has the value of the end-of-file marker.
TEST(qelFileAccessCharacters, EndAtTheNoncharacterFFFF)
{
    TestFile onDisk(utf16(L"\xFEFF"
                          L"a\xFFFF"
                          L"b"));
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::UTF16LE);
    EXPECT_EQ(file.getc(), 'a');
    EXPECT_EQ(file.getc(), static_cast<int>(WEOF));
    EXPECT_EQ(file.eof(), 0);
    EXPECT_EQ(file.getc(), 'b');
}
} // namespace
