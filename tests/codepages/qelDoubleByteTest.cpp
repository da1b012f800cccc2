// The Japanese ANSI code page, 932: characters of one and of two bytes. The second byte may be any ASCII character from
// 0x40 on, the backslash and the vertical bar among them.

#include "codepages/CodePageTest.h"
#include "qelFileAccess.h"
#include "qelLogfile.h"
#include "qelString.h"
#include "support/AnsiCodePage.h"
#include "support/GuardedMemory.h"
#include "support/LogText.h"
#include "support/MemorySearch.h"
#include "support/TestFile.h"

#include <locale.h>
#include <string.h>
#include <time.h>

#include <string>
#include <utility>
#include <vector>

using qelTest::bytes;
using qelTest::fromAnsi;
using qelTest::GuardedBuffer;
using qelTest::TestFile;

namespace
{
class DoubleByte : public qelTest::CodePageTest<932>
{
};

const size_t kLongest = 524288;

std::wstring wide(const qelString& text)
{
    return text.getStringW();
}

/// U+30BD, whose second byte is a backslash, and U+8868, the same.
const char kSo[] = "\x83\x5C";
const char kHyo[] = "\x95\x5C";

/// `count` characters of two bytes.
std::string pairs(size_t count)
{
    std::string result;
    for (size_t i = 0; i < count; ++i)
    {
        result += kSo;
    }
    return result;
}

/// A mixture of characters of one and two bytes as bytes and as text.
std::pair<std::string, std::wstring> mixture(unsigned& seed, size_t length)
{
    const char* const narrow[] = {"a", kSo, "\xB1", "\x82\xA0", kHyo, "\\", "\x83\x40", "\x83\x7C"};
    const wchar_t* const units = L"a\x30BD\xFF71\x3042\x8868\\\x30A1\x30DD";
    std::pair<std::string, std::wstring> result;
    for (size_t i = 0; i < length; ++i)
    {
        seed = seed * 1664525 + 1013904223;
        const unsigned which = seed >> 20 & 7;
        result.first += narrow[which];
        result.second += units[which];
    }
    return result;
}

TEST_F(DoubleByte, TextIsConvertedBothWaysWhateverTheMixture)
{
    const qelTest::GuardedHeap heap;
    unsigned seed = 7;
    for (size_t length = 0; length < 100; ++length)
    {
        const auto mixed = mixture(seed, length);
        GuardedBuffer<char> source(mixed.first.size() + 1);
        memcpy(source.get(), mixed.first.c_str(), mixed.first.size() + 1);
        EXPECT_EQ(wide(qelString(source.get())), mixed.second);
        EXPECT_EQ(mixed.first, qelString(mixed.second.c_str()).getStringA());
    }
}

TEST_F(DoubleByte, AFirstByteWithoutASecondIsWhatTheSystemMakesOfIt)
{
    const qelTest::GuardedHeap heap;
    for (const std::string source : {"\x83", "a\x83", "\x83\x5C\x83", "\x83\x83"})
    {
        GuardedBuffer<char> guarded(source.size() + 1);
        memcpy(guarded.get(), source.c_str(), source.size() + 1);
        EXPECT_EQ(wide(qelString(guarded.get())), std::wstring(fromAnsi(source).c_str()));
    }
}

TEST_F(DoubleByte, NarrowFormHasAQuestionMarkForEachUnitThatTheCodePageLacks)
{
    EXPECT_STREQ(qelString(L"\x0B85\x30BD").getStringA(), "?\x83\x5C");
    EXPECT_STREQ(qelString(L"\xD83D\xDE00\x30BD").getStringA(), "??\x83\x5C");
}

TEST_F(DoubleByte, TheLongestTextTakesTwoBytesForEachUnit)
{
    const std::string source = pairs(kLongest);
    GuardedBuffer<char> guarded(source.size() + 1);
    memcpy(guarded.get(), source.c_str(), source.size() + 1);
    const qelString text(guarded.get());
    EXPECT_TRUE(wide(text) == std::wstring(kLongest, L'\x30BD'));
    EXPECT_TRUE(source == text.getStringA());
    EXPECT_TRUE(wide(qelString((source + kSo).c_str())) == std::wstring(kLongest, L'\x30BD'));
    // One character of one byte moves all others by half a character.
    EXPECT_TRUE(wide(qelString(("a" + source).c_str())) == L"a" + std::wstring(kLongest - 1, L'\x30BD'));
}

TEST_F(DoubleByte, NarrowTextWithoutTerminatorIsReadToTwiceTheGreatestLength)
{
    GuardedBuffer<char> guarded(2 * kLongest);
    memcpy(guarded.get(), pairs(kLongest).data(), 2 * kLongest);
    EXPECT_TRUE(wide(qelString(guarded.get())) == std::wstring(kLongest, L'\x30BD'));
}

TEST_F(DoubleByte, NarrowFormAndWhatWasTriedForItAreWiped)
{
    const char secret[] = "\x94\x5C\x8F\x5C";
    const size_t count = 64;
    {
        qelString text;
        for (size_t i = 0; i < count; ++i)
        {
            text += L"\x80FD\x5341";
        }
        ASSERT_EQ(strlen(text.getStringA()), count * 4);
        // The narrow form, and no other block that was too small for it.
        EXPECT_EQ(qelTest::occurrencesInHeaps(secret, 4), count);
    }
    EXPECT_EQ(qelTest::occurrencesInHeaps(secret, 4), 0u);
}

TEST_F(DoubleByte, AByteStandsForItsOwnCharacterOnly)
{
    qelString text(L"a\x30BD\xFF71\\");
    text.setAt(0, '\xB1');
    EXPECT_EQ(wide(text), L"\xFF71\x30BD\xFF71\\");
    EXPECT_EQ(text.replace('\\', '/'), 1);
    EXPECT_EQ(wide(text), L"\xFF71\x30BD\xFF71/");
    EXPECT_EQ(text.replace('\xB1', '\xB2'), 2);
    EXPECT_EQ(wide(text), L"\xFF72\x30BD\xFF72/");
    text.removeAll('\x5C');
    EXPECT_EQ(wide(text), L"\xFF72\x30BD\xFF72/");
    text.removeAll('\xB2');
    EXPECT_EQ(wide(text), L"\x30BD/");
}

TEST_F(DoubleByte, HalfACharacterStandsForWhatTheSystemMakesOfIt)
{
    const std::wstring half = fromAnsi("\x83").c_str();
    qelString text(L"abc");
    text.setAt(1, '\x83');
    EXPECT_EQ(wide(text), half.empty() ? L"a" : L"a" + half + L"c");
    qelString replaced(L"abc");
    EXPECT_EQ(replaced.replace('b', '\x83'), 1);
    EXPECT_EQ(wide(replaced), half.empty() ? L"a" : L"a" + half + L"c");
}

// Deliberate: the positions are those of bytes, as many as the text has units.
TEST_F(DoubleByte, FindLastOfSearchesAsManyBytesAsThereAreUnits)
{
    const qelString text(L"\x30BD"
                         L"A");
    EXPECT_EQ(text.find_last_of('A'), -1);
    EXPECT_EQ(text.find_last_of('\\'), 1);
    EXPECT_EQ(text.find_last_of('\x83'), 0);
    EXPECT_EQ(text.find_last_of(L'A'), 1);
    EXPECT_EQ(text.find_last_of(L'\\'), -1);
}

TEST_F(DoubleByte, SecondBytesAreNoSeparators)
{
    qelString path("C:\\\x83\x5C\\\x95\x5C.txt");
    qelArray<qelString> tokens;
    qelString::getTokens(path, tokens, qelString("\\"));
    ASSERT_EQ(tokens.length(), 3);
    EXPECT_EQ(wide(tokens[0]), L"C:");
    EXPECT_EQ(wide(tokens[1]), L"\x30BD");
    EXPECT_EQ(wide(tokens[2]), L"\x8868.txt");
    // A vertical bar, and the same as a quote.
    qelString bars("\x83\x7C|\x83\x7C");
    qelString::getTokens(bars, tokens, qelString("|"), qelString("\\"));
    ASSERT_EQ(tokens.length(), 2);
    EXPECT_EQ(wide(tokens[0]), L"\x30DD");
    EXPECT_EQ(wide(tokens[1]), L"\x30DD");
}

TEST_F(DoubleByte, SecondBytesArePartOfNamesInPaths)
{
    const qelString path("C:\\\x83\x5C\\\x95\x5C\x83\x5C.\x83\x5C");
    qelString drive;
    qelString folder;
    qelString name;
    qelString extension;
    path.SplitPath(drive, folder, name, extension);
    EXPECT_EQ(wide(drive), L"C:");
    EXPECT_EQ(wide(folder), L"\\\x30BD\\");
    EXPECT_EQ(wide(name), L"\x8868\x30BD");
    EXPECT_EQ(wide(extension), L".\x30BD");
    qelString made;
    // A folder that ends in the second byte of a character gets its backslash.
    made.MakePath(drive, qelString("\\\x83\x5C"), name, extension);
    EXPECT_STREQ(made.getStringA(), "C:\\\x83\x5C\\\x95\x5C\x83\x5C.\x83\x5C");
}

TEST_F(DoubleByte, NarrowFormatsTakeAndGiveCharactersOfTwoBytes)
{
    qelString text;
    text.format("\x83\x5C%s%d\x95\x5C", "\x83\x7C", 5);
    EXPECT_EQ(wide(text), L"\x30BD\x30DD"
                          L"5\x8868");
}

TEST_F(DoubleByte, NarrowFormatsAreLimitedInBytes)
{
    qelString text;
    text.format("%sa", pairs(kLongest / 2 - 1).c_str());
    EXPECT_TRUE(wide(text) == std::wstring(kLongest / 2 - 1, L'\x30BD') + L"a");
}

TEST_F(DoubleByte, TimesAreLimitedInBytes)
{
    tm when = {};
    when.tm_hour = 5;
    qelString text(L"old");
    text.formatTime(5, "\x83\x5C%H", &when);
    EXPECT_EQ(wide(text), L"\x30BD"
                          L"05");
    text.formatTime(4, "\x83\x5C%H", &when);
    EXPECT_EQ(wide(text), L"");
}

std::wstring decoded(const char* text)
{
    qelString result(L"old");
    result.setFromMIFString(text);
    return wide(result);
}

TEST_F(DoubleByte, MifTextWithoutEscapesIsAnsi)
{
    EXPECT_EQ(decoded("\x83\x5C\xB1|"), L"\x30BD\xFF71|");
}

// Deliberate: escapes are looked for byte by byte.
TEST_F(DoubleByte, ASecondByteCanBeginAMifEscape)
{
    // 0x83, then the bytes 0x83 and 0x41 of the escape.
    EXPECT_EQ(decoded("\x83\x5CM+18341"), L"\x30E3"
                                          L"A");
    // An escape that is cut short leaves half a character.
    EXPECT_EQ(decoded("a\x83\x5CM+0A"), std::wstring(fromAnsi("a\x83").c_str()));
}

TEST_F(DoubleByte, AMifEscapeCanEndInHalfACharacter)
{
    EXPECT_EQ(decoded("\\M+04183\x5C"), L"A\x30BD");
    EXPECT_EQ(decoded("\\M+04183"), std::wstring(fromAnsi("A\x83").c_str()));
}

/// The lines of a file, as many as asked for.
std::vector<std::wstring> lines(const std::string& content, int maxCount, size_t count)
{
    const TestFile onDisk(content);
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::ANSI);
    std::vector<std::wstring> result;
    for (size_t i = 0; i < count; ++i)
    {
        qelString line;
        file.getStringW(line, maxCount);
        result.push_back(wide(line));
    }
    return result;
}

TEST_F(DoubleByte, LinesMayBeCutWithinACharacter)
{
    EXPECT_EQ(lines("a\x83\x5C\x95\x5C\n", 100, 1), (std::vector<std::wstring>{L"a\x30BD\x8868\n"}));
    // The limit counts bytes and the terminator.
    EXPECT_EQ(lines("a\x83\x5C\x95\x5C\n", 3, 3),
              (std::vector<std::wstring>{fromAnsi("a\x83").c_str(), fromAnsi("\x5C\x95").c_str(), L"\\\n"}));
    EXPECT_EQ(lines("a\x83\x5C\x95\x5C\n", 4, 2), (std::vector<std::wstring>{L"a\x30BD", L"\x8868\n"}));
    // 512 bytes at most, whatever is asked for.
    EXPECT_EQ(lines(pairs(256), 1000, 2),
              (std::vector<std::wstring>{fromAnsi(pairs(256).substr(0, 511)).c_str(), L"\\"}));
}

TEST_F(DoubleByte, AFirstByteTakesNoLineEnd)
{
    EXPECT_EQ(lines("\x83\nb\n", 100, 2), (std::vector<std::wstring>{fromAnsi("\x83\n").c_str(), L"b\n"}));
}

std::pair<size_t, std::wstring> readFile(const std::string& content, const wchar_t* mode,
                                         qelFileAccess::encodeType encoding, size_t maxLength)
{
    const TestFile onDisk(content);
    const qelFileAccess file(onDisk.path(), mode, encoding);
    qelString contents(L"old");
    const size_t count = file.readFile(contents, maxLength);
    return {count, wide(contents)};
}

TEST_F(DoubleByte, WholeFilesAreCountedInBytes)
{
    const std::string content = "a\x83\x5C\r\n\x95\x5C\x83\x7C";
    using Read = std::pair<size_t, std::wstring>;
    for (const qelFileAccess::encodeType key : {qelFileAccess::ANSI, qelFileAccess::UNICODE_TEXT})
    {
        EXPECT_EQ(readFile(content, L"rb", key, 100), (Read{9, L"a\x30BD\r\n\x8868\x30DD"}));
        EXPECT_EQ(readFile(content, L"r", key, 100), (Read{8, L"a\x30BD\n\x8868\x30DD"}));
        EXPECT_EQ(readFile(content, L"r", key, 3), (Read{3, L"a\x30BD"}));
        EXPECT_EQ(readFile(content, L"r", key, 2), (Read{2, fromAnsi("a\x83").c_str()}));
        EXPECT_EQ(readFile(content, L"r", key, 7), (Read{7, fromAnsi("a\x83\x5C\n\x95\x5C\x83").c_str()}));
        // Half a character before a line end.
        EXPECT_EQ(readFile("\x83\r\nb", L"r", key, 100), (Read{3, fromAnsi("\x83\nb").c_str()}));
    }
}

TEST_F(DoubleByte, WholeFilesKeepTheLongestText)
{
    for (const qelFileAccess::encodeType key : {qelFileAccess::ANSI, qelFileAccess::UNICODE_TEXT})
    {
        for (const size_t characters : {kLongest - 1, kLongest, kLongest + 1, 2 * kLongest})
        {
            const std::string content = pairs(characters);
            const size_t kept = characters < kLongest ? characters : kLongest;
            const auto even = readFile(content, L"rb", key, SIZE_MAX);
            EXPECT_EQ(even.first, content.size());
            EXPECT_TRUE(even.second == std::wstring(kept, L'\x30BD')) << characters;
            const auto odd = readFile("a" + content, L"rb", key, SIZE_MAX);
            const size_t keptOdd = characters < kLongest ? characters : kLongest - 1;
            EXPECT_EQ(odd.first, content.size() + 1);
            EXPECT_TRUE(odd.second == L"a" + std::wstring(keptOdd, L'\x30BD')) << characters;
        }
    }
}

TEST_F(DoubleByte, LogLinesHoldCharactersOfTwoBytesInALocaleThatHasThem)
{
    const TestFile file;
    const qelTest::LogText now;
    const std::string before = setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(setlocale(LC_CTYPE, "Japanese_Japan.932"), nullptr);
    const int former = qelLogfile::getLogStatus();
    qelLogfile::setLogStatus(1);
    qelLogfile log(file.path());
    EXPECT_EQ(log.appendWithSave(qelString("\x83\x5C\\\x95\x5C\n")), 1);
    qelLogfile::setLogStatus(former);
    setlocale(LC_CTYPE, before.c_str());
    EXPECT_EQ(now.withoutTimes(file.get()), "[now] \x83\x5C\\\x95\x5C\r\n");
}
} // namespace
