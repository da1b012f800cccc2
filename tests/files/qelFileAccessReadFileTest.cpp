// readFile(), with and without a key in the open mode.

#include "qelFileAccess.h"

#include "support/AnsiCodePage.h"
#include "support/ImportHook.h"
#include "support/MemorySearch.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <stdint.h>
#include <stdlib.h>
#include <wchar.h>

#include <new>
#include <string>
#include <thread>

using qelTest::ansiBytes;
using qelTest::ansiText;
using qelTest::byCodePage;
using qelTest::bytes;
using qelTest::TestFile;
using qelTest::utf16;

namespace
{
struct Read
{
    size_t count;
    std::wstring text;
};

bool operator==(const Read& a, const Read& b)
{
    return a.count == b.count && a.text == b.text;
}

void PrintTo(const Read& read, std::ostream* out)
{
    *out << read.count << " units:";
    for (wchar_t unit : read.text.substr(0, 40))
    {
        *out << ' ' << std::hex << static_cast<unsigned>(unit) << std::dec;
    }
}

Read readFile(const qelFileAccess& file, size_t maxLength)
{
    qelString contents(L"left over");
    const size_t count = file.readFile(contents, maxLength);
    return {count, contents.getStringW()};
}

Read readContent(const std::string& content, const wchar_t* mode, qelFileAccess::encodeType encoding,
                 size_t maxLength = 1000)
{
    TestFile onDisk(content);
    const qelFileAccess file(onDisk.path(), mode, encoding);
    EXPECT_EQ(file.isOpen(), 1);
    return readFile(file, maxLength);
}

const qelFileAccess::encodeType kKeys[] = {qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF8, qelFileAccess::UTF16LE};

/// The forms that text has in a file. Without a mark it is what the key says, with UNICODE text in the ANSI code page.
enum Form
{
    kUtf16,
    kUtf8,
    kUnmarked
};
const Form kForms[] = {kUtf16, kUtf8, kUnmarked};

std::string inCodePage(UINT codePage, const std::wstring& text)
{
    const int length = static_cast<int>(text.size());
    std::string result(text.size() * 4, 0);
    const int made = WideCharToMultiByte(codePage, 0, text.data(), length, &result[0], static_cast<int>(result.size()),
                                         nullptr, nullptr);
    result.resize(static_cast<size_t>(made));
    return result;
}

std::string inForm(Form form, const std::wstring& text, qelFileAccess::encodeType key)
{
    if (form == kUtf16)
    {
        return utf16(L"\xFEFF" + text);
    }
    if (form == kUtf8)
    {
        return "\xEF\xBB\xBF" + inCodePage(CP_UTF8, text);
    }
    return key == qelFileAccess::UTF16LE ? utf16(text)
                                         : inCodePage(key == qelFileAccess::UTF8 ? CP_UTF8 : CP_ACP, text);
}

/// What readFile() counts for that text in that form: units, but bytes in the ANSI code page.
size_t units(Form form, const std::wstring& text, qelFileAccess::encodeType key)
{
    return form == kUnmarked && key == qelFileAccess::UNICODE_TEXT ? inCodePage(CP_ACP, text).size() : text.size();
}

/// What is read of a file in the ANSI code page.
Read ansi(const std::string& inFile)
{
    return {inFile.size(), qelTest::fromAnsi(inFile)};
}

std::wstring asciiOf(std::wstring text)
{
    for (wchar_t& unit : text)
    {
        unit = unit < 0x80 ? unit : L'x';
    }
    return text;
}

/// What the stream itself delivers, character by character.
std::wstring readCharacters(const qelFileAccess& file)
{
    std::wstring text;
    for (int c = file.getc(); c != static_cast<int>(WEOF); c = file.getc())
    {
        text += static_cast<wchar_t>(c);
    }
    return text;
}

TEST(qelFileAccessReadFileWithKey, DeliversTextWholeAndWithoutItsMark)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : kForms)
        {
            EXPECT_EQ(readContent(inForm(form, L"A\r\n" + ansiText(), key), L"r", key),
                      (Read{units(form, L"A\n" + ansiText(), key), L"A\n" + ansiText()}));
        }
        EXPECT_EQ(readContent(inForm(kUtf16, L"\x4E2D\xD83D\xDE00", key), L"r", key), (Read{3, L"\x4E2D\xD83D\xDE00"}));
        EXPECT_EQ(readContent(inForm(kUtf8, L"\x4E2D\xD83D\xDE00", key), L"r", key), (Read{3, L"\x4E2D\xD83D\xDE00"}));
    }
}

TEST(qelFileAccessReadFileWithKey, TakesASwappedMarkForTheRightOne)
{
    // Some runtimes refuse to open such a file with a key.
    TestFile onDisk(bytes("\xFE\xFF"
                          "A\0B\0"));
    for (const qelFileAccess::encodeType key : kKeys)
    {
        const qelFileAccess file(onDisk.path(), L"r", key);
        EXPECT_EQ(readFile(file, 100), (file.isOpen() != 0 ? Read{2, L"AB"} : Read{0, L""}));
    }
}

TEST(qelFileAccessReadFileWithKey, LeavesLineEndsAndEndOfFileCharactersAloneInBinaryModes)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : kForms)
        {
            const std::wstring text = L"A\r\n\x1A" + ansiText();
            EXPECT_EQ(readContent(inForm(form, text, key), L"rb", key), (Read{units(form, text, key), text}));
        }
    }
}

TEST(qelFileAccessReadFileWithKey, TranslatesLineEndsTheSameInAllForms)
{
    const struct
    {
        const wchar_t* inFile;
        Read read;
    } cases[] = {
        // clang-format off
        {L"\r\n", {1, L"\n"}},
        {L"\r", {1, L"\r"}},
        {L"\n", {1, L"\n"}},
        {L"a\rb", {3, L"a\rb"}},
        {L"a\r", {2, L"a\r"}},
        {L"\r\r\n", {2, L"\r\n"}},
        {L"\n\r", {2, L"\n\r"}},
        {L"\r\n\r\n", {2, L"\n\n"}},
        {L"\n\r\n\r", {3, L"\n\n\r"}},
        {L"a\r\r\r\n\nb", {6, L"a\r\r\n\nb"}},
        // clang-format on
    };
    for (const auto& item : cases)
    {
        for (const qelFileAccess::encodeType key : kKeys)
        {
            for (const Form form : kForms)
            {
                EXPECT_EQ(readContent(inForm(form, item.inFile, key), L"r", key), item.read) << form;
            }
        }
    }
}

TEST(qelFileAccessReadFileWithKey, EndsAtAnEndOfFileCharacter)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : kForms)
        {
            EXPECT_EQ(readContent(inForm(form, L"ab\x1Axy", key), L"r", key), (Read{2, L"ab"}));
            EXPECT_EQ(readContent(inForm(form, L"\r\x1A", key), L"r", key), (Read{1, L"\r"}));
            EXPECT_EQ(readContent(inForm(form, L"\x1A", key), L"r", key), (Read{0, L""}));
            // Also where more of the file could be read.
            const std::string content = inForm(form, L"ab\x1A" + std::wstring(100, L'x'), key);
            for (size_t length = 3; length < 100; ++length)
            {
                EXPECT_EQ(readContent(content, L"r", key, length), (Read{2, L"ab"}));
            }
        }
    }
}

TEST(qelFileAccessReadFileWithKey, CountsUnitsBehindAZeroThatEndsTheText)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : kForms)
        {
            EXPECT_EQ(readContent(inForm(form, std::wstring(L"ab\0cd", 5), key), L"r", key), (Read{5, L"ab"}));
        }
    }
}

TEST(qelFileAccessReadFileWithKey, TakesTextWithoutAMarkForWhatTheKeySays)
{
    for (const wchar_t* mode : {L"r", L"rb"})
    {
        const std::string utf8 = "<\xC3\xA9\xE2\x82\xAC\xE4\xB8\xAD\xF0\x9F\x98\x80>";
        EXPECT_EQ(readContent(utf8, mode, qelFileAccess::UTF8), (Read{7, L"<\x00E9\x20AC\x4E2D\xD83D\xDE00>"}));
        EXPECT_EQ(readContent(utf16(L"<\x00E9\x4E2D\xD83D\xDE00>"), mode, qelFileAccess::UTF16LE),
                  (Read{6, L"<\x00E9\x4E2D\xD83D\xDE00>"}));
        EXPECT_EQ(readContent("<" + ansiBytes() + ">", mode, qelFileAccess::UNICODE_TEXT),
                  (Read{ansiBytes().size() + 2, L"<" + ansiText() + L">"}));
        // Units whose first bytes look like the mark of another encoding.
        EXPECT_EQ(readContent("\xEB\xAF\xAF\xC2\xBF", mode, qelFileAccess::UTF8), (Read{2, L"\xBBEF\x00BF"}));
    }
    // Half a unit is none.
    EXPECT_EQ(readContent("abc", L"r", qelFileAccess::UTF16LE), (Read{1, L"\x6261"}));
    EXPECT_EQ(readContent("a", L"r", qelFileAccess::UTF16LE), (Read{0, L""}));
    EXPECT_EQ(readContent("\xE4", L"r", qelFileAccess::UTF8), (Read{1, L"\xFFFD"}));
}

TEST(qelFileAccessReadFileWithKey, ReadsShortAndMalformedFiles)
{
    const struct
    {
        std::string inFile;
        Read read;
    } cases[] = {
        // clang-format off
        {bytes(""), {0, L""}},
        {bytes("A"), {1, L"A"}},
        {bytes("AB"), {2, L"AB"}},
        {bytes("ABC"), {3, L"ABC"}},
        {bytes("ABCD"), {4, L"ABCD"}},
        {bytes("ABCDE"), {5, L"ABCDE"}},
        {bytes("ab\xEF\xBB\xBF"), ansi("ab\xEF\xBB\xBF")},
        // Marks without text and halves of marks.
        {bytes("\xFF"), ansi("\xFF")},
        {bytes("\xFF\xFE"), {0, L""}},
        {bytes("\xFE" "A"), ansi("\xFE" "A")},
        {bytes("\xEF"), ansi("\xEF")},
        {bytes("\xEF\xBB"), ansi("\xEF\xBB")},
        {bytes("\xEF\xBB\xBF"), {0, L""}},
        {bytes("\xEF\xBB\xBE"), ansi("\xEF\xBB\xBE")},
        {bytes("\xFF\xFF" "A"), ansi("\xFF\xFF" "A")},
        // A second mark is text.
        {bytes("\xFF\xFE\xFF\xFE" "A\0"), {2, L"\xFEFF" L"A"}},
        {bytes("\xEF\xBB\xBF\xEF\xBB\xBF" "A"), {2, L"\xFEFF" L"A"}},
        // Odd numbers of bytes: half a unit is none.
        {bytes("\xFF\xFE" "A"), {0, L""}},
        {bytes("\xFF\xFE" "A\0B"), {1, L"A"}},
        {bytes("\xFF\xFE\r\0\n"), {1, L"\r"}},
        // Surrogates of UTF-16 stay as they are.
        {bytes("\xFF\xFE\x00\xD8" "A\0"), {2, L"\xD800" L"A"}},
        {bytes("\xFF\xFE\x00\xDC\x00\xD8"), {2, L"\xDC00\xD800"}},
        // UTF-8: bytes that can start nothing.
        {bytes("\xEF\xBB\xBF\xFF" "A"), {2, L"\xFFFD" L"A"}},
        {bytes("\xEF\xBB\xBF\x80\xBF"), {2, L"\xFFFD\xFFFD"}},
        {bytes("\xEF\xBB\xBF\xC0\x80"), {2, L"\xFFFD\xFFFD"}},
        {bytes("\xEF\xBB\xBF\xC1\xBF"), {2, L"\xFFFD\xFFFD"}},
        {bytes("\xEF\xBB\xBF\xF5\x80"), {2, L"\xFFFD\xFFFD"}},
        // UTF-8: characters that break off.
        {bytes("\xEF\xBB\xBF\xC3"), {1, L"\xFFFD"}},
        {bytes("\xEF\xBB\xBF\xC3("), {2, L"\xFFFD("}},
        {bytes("\xEF\xBB\xBF\xE2\x82"), {1, L"\xFFFD"}},
        {bytes("\xEF\xBB\xBF\xE2\x82" "A"), {2, L"\xFFFD" L"A"}},
        {bytes("\xEF\xBB\xBF\xF0\x9F\x98"), {1, L"\xFFFD"}},
        {bytes("\xEF\xBB\xBF\xF0\x9F\x98\xC3\xA9"), {2, L"\xFFFD\x00E9"}},
        {bytes("\xEF\xBB\xBF\xC3\r\n"), {2, L"\xFFFD\n"}},
        // UTF-8: the limits of each length.
        {bytes("\xEF\xBB\xBF\x7F\xC2\x80\xDF\xBF"), {3, L"\x007F\x0080\x07FF"}},
        {bytes("\xEF\xBB\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"), {4, L"\x0800\xD7FF\xE000\xFFFF"}},
        {bytes("\xEF\xBB\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"), {4, L"\xD800\xDC00\xDBFF\xDFFF"}},
        // clang-format on
    };
    for (const auto& item : cases)
    {
        EXPECT_EQ(readContent(item.inFile, L"r", qelFileAccess::UNICODE_TEXT), item.read) << &item - &cases[0];
    }
}

TEST(qelFileAccessReadFileWithKey, MakesReplacementCharactersOfWhatIsNotUtf8)
{
    // Overlong forms, a surrogate, and what lies beyond the last character. How many there are is the system's matter.
    for (const char* wrong : {"\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
    {
        wchar_t replaced[8] = {};
        ASSERT_GT(MultiByteToWideChar(CP_UTF8, 0, wrong, -1, replaced, 8), 1);
        const std::wstring expected = std::wstring(L"<") + replaced + L">";
        EXPECT_NE(expected.find(L'\xFFFD'), std::wstring::npos);
        for (const char* mark : {"", "\xEF\xBB\xBF"})
        {
            EXPECT_EQ(readContent(std::string(mark) + "<" + wrong + ">", L"r", qelFileAccess::UTF8),
                      (Read{expected.size(), expected}));
        }
    }
}

TEST(qelFileAccessReadFileWithKey, AgreesWithWhatTheStreamDelivers)
{
    unsigned seed = 20;
    for (int round = 0; round < 100; ++round)
    {
        std::wstring text;
        seed = seed * 1664525 + 1013904223;
        const size_t length = seed >> 8 & 0x3F;
        for (size_t i = 0; i < length; ++i)
        {
            seed = seed * 1664525 + 1013904223;
            text += L"a\r\n\x00E9\x4E2D\r\n\n"[seed >> 16 & 7];
        }
        for (const qelFileAccess::encodeType key : kKeys)
        {
            for (const Form form : kForms)
            {
                // The runtime's locale knows no characters of several bytes.
                const bool inAnsi = form == kUnmarked && key == qelFileAccess::UNICODE_TEXT;
                const std::wstring known = inAnsi ? byCodePage(text, asciiOf(text), asciiOf(text)) : text;
                TestFile onDisk(inForm(form, known, key));
                const qelFileAccess characters(onDisk.path(), L"r", key);
                const std::wstring expected = readCharacters(characters);
                const qelFileAccess whole(onDisk.path(), L"r", key);
                EXPECT_EQ(readFile(whole, 1000), (Read{expected.size(), expected})) << round;
            }
        }
    }
}

TEST(qelFileAccessReadFileWithKey, IsTheSameWhereverTheBlocksEnd)
{
    // However long a block is, its ends fall on every place of the sequence.
    for (size_t shift = 0; shift < 12; ++shift)
    {
        for (const qelFileAccess::encodeType key : kKeys)
        {
            const std::wstring characters =
                key == qelFileAccess::UNICODE_TEXT ? ansiText() : std::wstring(L"\xD83D\xDE00\x20AC");
            std::wstring inFile(shift, L'x');
            std::wstring expected = inFile;
            while (inFile.size() < 200000)
            {
                inFile += L"\r\n" + characters + L"\r";
                expected += L"\n" + characters + L"\r";
            }
            for (const Form form : kForms)
            {
                const std::string content = inForm(form, inFile, key);
                const Read text = readContent(content, L"r", key, 1000000);
                EXPECT_EQ(text.count, units(form, expected, key)) << shift << ' ' << form;
                EXPECT_TRUE(text.text == expected) << shift << ' ' << form;
                const Read binary = readContent(content, L"rb", key, 1000000);
                EXPECT_EQ(binary.count, units(form, inFile, key)) << shift << ' ' << form;
                EXPECT_TRUE(binary.text == inFile) << shift << ' ' << form;
            }
        }
    }
}

TEST(qelFileAccessReadFileWithKey, ReadsBytesThatAreNoUtf8FromAnyBlock)
{
    // One replacement character for each byte: none of them can begin a character, and none is skipped.
    const std::string stray(300001, '\x80');
    EXPECT_EQ(readContent(stray, L"r", qelFileAccess::UTF8, 1000000), (Read{300001, std::wstring(300001, L'\xFFFD')}));
    EXPECT_EQ(readContent(stray, L"r", qelFileAccess::UTF8, 3), (Read{3, std::wstring(3, L'\xFFFD')}));
}

TEST(qelFileAccessReadFileWithKey, IsTheSameWhereverBlocksEndInMalformedText)
{
    // A character of four bytes and three bytes that can begin nothing.
    for (size_t shift = 0; shift < 7; ++shift)
    {
        std::string inFile(shift, 'x');
        std::wstring expected(shift, L'x');
        while (inFile.size() < 200000)
        {
            inFile += "\xF0\x9F\x98\x80\x80\x80\x80";
            expected += L"\xD83D\xDE00\xFFFD\xFFFD\xFFFD";
        }
        const Read read = readContent(inFile, L"r", qelFileAccess::UTF8, 1000000);
        EXPECT_EQ(read.count, expected.size()) << shift;
        EXPECT_TRUE(read.text == expected) << shift;
    }
}

TEST(qelFileAccessReadFileWithKey, TakesHalfALineFeedForNone)
{
    TestFile whole(bytes("\xFF\xFE"
                         "\r\0\n\0"));
    TestFile half(bytes("\xFF\xFE"
                        "\r\0\n"));
    for (int round = 0; round < 2; ++round) // memory that has held a whole one
    {
        const qelFileAccess wholeFile(whole.path(), L"r", qelFileAccess::UNICODE_TEXT);
        EXPECT_EQ(readFile(wholeFile, 1), (Read{1, L"\n"}));
        const qelFileAccess halfFile(half.path(), L"r", qelFileAccess::UNICODE_TEXT);
        EXPECT_EQ(readFile(halfFile, 1), (Read{1, L"\r"}));
    }
}

TEST(qelFileAccessReadFileWithKey, CutsAtMaxLength)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : kForms)
        {
            // A character of one byte in the ANSI code page.
            const std::wstring last(1, byCodePage(L'\x00E9', L'\xFF71', L'e'));
            const std::string content = inForm(form, L"a\r\n\r\nb" + last, key);
            const std::wstring expected = L"a\n\nb" + last;
            for (size_t length = 0; length <= expected.size(); ++length)
            {
                EXPECT_EQ(readContent(content, L"r", key, length), (Read{length, expected.substr(0, length)}));
            }
            EXPECT_EQ(readContent(content, L"r", key, SIZE_MAX), (Read{5, expected}));
        }
    }
    EXPECT_EQ(readContent("\xF0\x9F\x98\x80", L"r", qelFileAccess::UTF8, 1), (Read{1, L"\xD83D"}));
    EXPECT_EQ(readContent(utf16(L"\xD83D\xDE00"), L"r", qelFileAccess::UTF16LE, 1), (Read{1, L"\xD83D"}));
}

TEST(qelFileAccessReadFileWithKey, GoesOnBehindEveryLengthOfText)
{
    const std::wstring inFile = L"a\r\n\r\n\x4E2D\r\x20AC-\x00E9\x00E9\x4E2D\x4E2D\r\n0123456789\r\n.";
    const std::wstring expected = L"a\n\n\x4E2D\r\x20AC-\x00E9\x00E9\x4E2D\x4E2D\n0123456789\n.";
    for (const qelFileAccess::encodeType key : {qelFileAccess::UTF8, qelFileAccess::UTF16LE})
    {
        for (const Form form : kForms)
        {
            for (size_t length = 0; length <= expected.size(); ++length)
            {
                TestFile onDisk(inForm(form, inFile, key));
                const qelFileAccess file(onDisk.path(), L"r", key);
                EXPECT_EQ(readFile(file, length), (Read{length, expected.substr(0, length)}));
                EXPECT_EQ(readCharacters(file), expected.substr(length)) << key << ' ' << form << ' ' << length;
            }
        }
    }
}

TEST(qelFileAccessReadFileWithKey, GoesOnBehindWhatWasRead)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : {kUtf16, kUtf8})
        {
            TestFile onDisk(inForm(form, L"a\r\n" + ansiText() + L"\r\n\x20AC\r\n", key));
            const qelFileAccess file(onDisk.path(), L"r", key);
            EXPECT_EQ(readFile(file, 2), (Read{2, L"a\n"}));
            EXPECT_EQ(file.eof(), 0);
            qelString line;
            EXPECT_EQ(std::wstring(file.getStringW(line, 100).getStringW()), ansiText() + L"\n");
            EXPECT_EQ(readCharacters(file), L"\x20AC\n");
        }
    }
}

TEST(qelFileAccessReadFileWithKey, MeetsTheEndOfTheFileWhenItAsksForMore)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : kForms)
        {
            for (const wchar_t* text : {L"ab", L"ab\x1Axy"})
            {
                TestFile onDisk(inForm(form, text, key));
                const qelFileAccess file(onDisk.path(), L"r", key);
                EXPECT_EQ(readFile(file, 2).count, 2u);
                EXPECT_EQ(file.eof(), 0);
                EXPECT_EQ(readFile(file, 3).count, 2u);
                EXPECT_NE(file.eof(), 0);
            }
        }
    }
}

TEST(qelFileAccessReadFileWithKey, ReadsTheWholeFileFromAnyPosition)
{
    for (const Form form : kForms)
    {
        const qelFileAccess::encodeType key = qelFileAccess::UNICODE_TEXT;
        TestFile onDisk(inForm(form, L"one\r\ntwo\r\n", key));
        qelFileAccess file(onDisk.path(), L"r", key);
        qelString line;
        file.getStringW(line, 100);
        EXPECT_EQ(readFile(file, 100), (Read{8, L"one\ntwo\n"}));
        EXPECT_EQ(readFile(file, 100), (Read{8, L"one\ntwo\n"}));
        EXPECT_GT(file.getFileLength(), 0);
        EXPECT_EQ(readFile(file, 100), (Read{8, L"one\ntwo\n"}));
    }
}

TEST(qelFileAccessReadFileWithKey, KeepsTheTranslationOfTheStream)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        TestFile onDisk(inForm(kUtf8, L"ab", key));
        {
            qelFileAccess file(onDisk.path(), L"r+", key);
            EXPECT_EQ(readFile(file, 100), (Read{2, L"ab"}));
            EXPECT_EQ(file.seek(0, 2), 0);
            EXPECT_EQ(file.write(L"\x00E9\n"), 2);
        }
        EXPECT_EQ(onDisk.get(), bytes("\xEF\xBB\xBF"
                                      "ab\xC3\xA9\r\n"));
    }
    for (const qelFileAccess::encodeType key : {qelFileAccess::UTF8, qelFileAccess::UTF16LE})
    {
        TestFile onDisk(inForm(kUnmarked, L"ab", key));
        {
            qelFileAccess file(onDisk.path(), L"r+", key);
            EXPECT_EQ(readFile(file, 100), (Read{2, L"ab"}));
            EXPECT_EQ(file.seek(0, 2), 0);
            EXPECT_EQ(file.write(L"\x00E9"), 1);
        }
        EXPECT_EQ(onDisk.get(), inForm(kUnmarked, L"ab\x00E9", key));
    }
}

TEST(qelFileAccessReadFileWithKey, SeesWhatTheSameStreamWrote)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        TestFile onDisk;
        const qelFileAccess file(onDisk.path(), L"w+", key);
        EXPECT_GE(file.puts((L"one\n" + ansiText()).c_str()), 0);
        EXPECT_EQ(readFile(file, 100), (Read{6, L"one\n" + ansiText()}));
    }
}

TEST(qelFileAccessReadFileWithKey, GivesNothingFromWhatCannotBeReadAsAFile)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        TestFile onDisk;
        {
            const qelFileAccess onlyWritten(onDisk.path(), L"w", key);
            EXPECT_GE(onlyWritten.puts(L"a"), 0);
            EXPECT_EQ(readFile(onlyWritten, 100), (Read{0, L""}));
            EXPECT_GE(onlyWritten.puts(L"b"), 0);
        }
        EXPECT_EQ(onDisk.get(),
                  key == qelFileAccess::UTF8 ? "\xEF\xBB\xBF" + bytes("ab") : "\xFF\xFE" + bytes("a\0b\0"));
        const qelFileAccess device(L"NUL", L"r", key);
        EXPECT_EQ(readFile(device, 100), (Read{0, L""}));
    }
}

/// What a stream at the end of a pipe delivers, with or without a readFile() first.
std::wstring readPipe(bool wholeFileFirst)
{
    const std::wstring name = L"\\\\.\\pipe\\qel" + std::to_wstring(GetCurrentProcessId());
    const HANDLE pipe =
        CreateNamedPipeW(name.c_str(), PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0, nullptr);
    EXPECT_NE(pipe, INVALID_HANDLE_VALUE);
    std::thread writer([pipe] {
        ConnectNamedPipe(pipe, nullptr);
        DWORD written = 0;
        WriteFile(pipe, "0123456789", 10, &written, nullptr);
        FlushFileBuffers(pipe);
        CloseHandle(pipe);
    });
    std::wstring text;
    {
        const qelFileAccess file(name.c_str(), L"r", qelFileAccess::UNICODE_TEXT);
        EXPECT_EQ(file.isOpen(), 1);
        if (wholeFileFirst)
        {
            EXPECT_EQ(readFile(file, 100), (Read{0, L""}));
        }
        text = readCharacters(file);
    }
    writer.join();
    return text;
}

TEST(qelFileAccessReadFileWithKey, LeavesWhatComesThroughAPipeAlone)
{
    const std::wstring text = readPipe(false);
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(readPipe(true), text);
}

TEST(qelFileAccessReadFileWithKey, ReadsAFileByItsLengthInBytes)
{
    const std::wstring text = L"<Orvalis>\r\n<DataSource Name=\"" + ansiText() + L"\"/>\r\n</Orvalis>\r\n";
    std::wstring expected = text;
    for (size_t at = expected.find(L'\r'); at != std::wstring::npos; at = expected.find(L'\r'))
    {
        expected.erase(at, 1);
    }
    for (const Form form : kForms)
    {
        TestFile onDisk(inForm(form, text, qelFileAccess::UNICODE_TEXT));
        qelFileAccess file(onDisk.path(), L"r", qelFileAccess::UNICODE_TEXT);
        const long length = file.getFileLength();
        ASSERT_GT(length, 0);
        EXPECT_EQ(readFile(file, static_cast<size_t>(length)),
                  (Read{units(form, expected, qelFileAccess::UNICODE_TEXT), expected}));
    }
}

TEST(qelFileAccessReadFileWithKey, CutsTextAtItsGreatestLengthAndCountsOn)
{
    for (const size_t length : {524287u, 524288u, 524289u, 1200000u})
    {
        std::wstring text(length, L'x');
        text[524286] = L'y';
        const std::wstring kept = text.substr(0, 524288);
        for (const Form form : kForms)
        {
            EXPECT_EQ(readContent(inForm(form, text, qelFileAccess::UNICODE_TEXT), L"r", qelFileAccess::UNICODE_TEXT,
                                  SIZE_MAX),
                      (Read{length, kept}));
        }
    }
}

/// Stands in for the shared buffer: as large as that, with a page behind it that cannot be touched.
class GuardedScratch
{
public:
    GuardedScratch()
        : m_before(qelString::qelStringTempBufferWide)
        , m_pages(VirtualAlloc(nullptr, kBytes + kPage, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE))
    {
        DWORD former = 0;
        EXPECT_NE(VirtualProtect(static_cast<char*>(m_pages) + kBytes, kPage, PAGE_NOACCESS, &former), 0);
        qelString::qelStringTempBufferWide = static_cast<wchar_t*>(m_pages);
    }

    GuardedScratch(const GuardedScratch&) = delete;
    GuardedScratch& operator=(const GuardedScratch&) = delete;

    ~GuardedScratch()
    {
        qelString::qelStringTempBufferWide = m_before;
        VirtualFree(m_pages, 0, MEM_RELEASE);
    }

    /// Whether nothing is left in it.
    bool isClear() const { return std::wstring(static_cast<wchar_t*>(m_pages), kUnits) == std::wstring(kUnits, 0); }

private:
    static const size_t kUnits = 524288;
    static const size_t kBytes = kUnits * sizeof(wchar_t);
    static const size_t kPage = 4096;

    wchar_t* m_before;
    void* m_pages;
};

TEST(qelFileAccessReadFile, StaysInsideTheSharedBufferAndLeavesItClear)
{
    const GuardedScratch scratch;
    for (const size_t length : {2u, 524287u, 524288u, 524289u, 600000u, 1200000u})
    {
        std::wstring text(length, L'x');
        text[length - 2] = L'\r';
        text[length - 1] = L'\n';
        const std::wstring kept = text.substr(0, 524288);
        const std::string marked = inForm(kUtf16, text, qelFileAccess::ANSI);
        EXPECT_EQ(readContent(marked, L"rb", qelFileAccess::ANSI, SIZE_MAX), (Read{length, kept}));
        EXPECT_TRUE(scratch.isClear()) << length;
        for (const Form form : {kUtf16, kUtf8})
        {
            EXPECT_EQ(readContent(inForm(form, text, qelFileAccess::UTF8), L"r", qelFileAccess::UTF8, SIZE_MAX).count,
                      length - 1);
            EXPECT_TRUE(scratch.isClear()) << length;
        }
    }
}

TEST(qelFileAccessReadFile, LeavesTheSharedBufferForBytesClear)
{
    const std::string clear(qelString::kMaxLength, 0);
    memset(qelString::qelStringTempBuffer, 0, clear.size());
    const std::wstring text(200000, L'x');
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : kForms)
        {
            EXPECT_EQ(readContent(inForm(form, text, key), L"r", key, SIZE_MAX), (Read{200000, text}));
            EXPECT_TRUE(std::string(qelString::qelStringTempBuffer, clear.size()) == clear) << key << ' ' << form;
        }
    }
}

TEST(qelFileAccessReadFile, ReadsAnsiTextOfTheGreatestLengthInsideTheSharedBuffer)
{
    const GuardedScratch scratch;
    for (const size_t length : {524287u, 524288u, 524289u, 1048577u})
    {
        const std::string content(length, 'x');
        const Read read = {length, std::wstring(length < 524288 ? length : 524288, L'x')};
        EXPECT_EQ(readContent(content, L"r", qelFileAccess::ANSI, SIZE_MAX), read);
        EXPECT_TRUE(scratch.isClear()) << length;
        EXPECT_EQ(readContent(content, L"r", qelFileAccess::UNICODE_TEXT, SIZE_MAX), read);
        EXPECT_TRUE(scratch.isClear()) << length;
    }
}

/// Refuses blocks of this size and more.
size_t refusedFrom = SIZE_MAX;

void* limitedMalloc(size_t size)
{
    return size >= refusedFrom ? nullptr : malloc(size);
}

TEST(qelFileAccessReadFileWithKey, LeavesEmptyTextAndAUsableStreamWhenMemoryIsShort)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        for (const Form form : kForms)
        {
            const std::wstring text(1000, L'x');
            TestFile onDisk(inForm(form, text, key));
            const qelFileAccess file(onDisk.path(), L"r", key);
            qelString contents(L"left over");
            {
                const qelTest::ImportHook hook("malloc", &limitedMalloc);
                const GuardedScratch scratch;
                refusedFrom = 2000;
                EXPECT_THROW(file.readFile(contents, 2000), std::bad_alloc);
                refusedFrom = SIZE_MAX;
                EXPECT_TRUE(scratch.isClear());
            }
            EXPECT_EQ(contents.isEmpty(), 1);
            EXPECT_EQ(readFile(file, 2000), (Read{1000, text}));
        }
    }
}

TEST(qelFileAccessReadFileWithKey, GivesWhatIsLeftOfAFileThatShrank)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        TestFile onDisk(inForm(kUtf8, L"0123456789", key));
        qelFileAccess file(onDisk.path(), L"r", key);
        const long length = file.getFileLength();
        const HANDLE other = CreateFileW(onDisk.widePath().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         nullptr, OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(other, INVALID_HANDLE_VALUE);
        SetFilePointer(other, 5, nullptr, FILE_BEGIN);
        EXPECT_NE(SetEndOfFile(other), 0);
        CloseHandle(other);
        EXPECT_EQ(readFile(file, static_cast<size_t>(length)), (Read{2, L"01"}));
    }
}

TEST(qelFileAccessReadFileWithKey, LeavesNoTextBehindInMemory)
{
    // Written from constants, so that the test leaves none behind either; the digits stand where the heap keeps its own
    // notes in a freed block.
    const struct
    {
        const void* content;
        DWORD size;
    } files[] = {
        {L"\uFEFF0123456789012345678901234567890123456789Qx7-secret-Qx7", 110},
        {"\xEF\xBB\xBF"
         "0123456789012345678901234567890123456789Qx7-secret-Qx7",
         57},
        {"0123456789012345678901234567890123456789Qx7-secret-Qx7", 54},
    };
    for (const auto& item : files)
    {
        TestFile onDisk;
        const HANDLE handle =
            CreateFileW(onDisk.widePath().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD written = 0;
        EXPECT_NE(WriteFile(handle, item.content, item.size, &written, nullptr), 0);
        CloseHandle(handle);
        const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::UNICODE_TEXT);
        {
            qelString contents;
            EXPECT_EQ(file.readFile(contents, 100), 54u);
            EXPECT_EQ(qelTest::occurrencesInHeaps(L"7-secret-Qx7", 24), 1u) << item.size;
        }
        EXPECT_EQ(qelTest::occurrencesInHeaps(L"7-secret-Qx7", 24), 0u) << item.size;
        EXPECT_EQ(qelTest::occurrencesInHeaps("7-secret-Qx7", 12), 0u) << item.size;
    }
}

TEST(qelFileAccessReadFile, ReadsUtf16BehindEitherMark)
{
    for (const wchar_t* mode : {L"r", L"rb"})
    {
        EXPECT_EQ(readContent("\xFF\xFE" + bytes("A\0B\0"), mode, qelFileAccess::ANSI), (Read{2, L"AB"}));
        EXPECT_EQ(readContent("\xFE\xFF" + bytes("A\0B\0"), mode, qelFileAccess::ANSI), (Read{2, L"AB"}));
        EXPECT_EQ(readContent("\xFE\xFF" + bytes("A\0B\0"), mode, static_cast<qelFileAccess::encodeType>(7)),
                  (Read{2, L"AB"}));
    }
}

// Deliberate: the UTF-8 mark is looked for at offset 2, and UTF-16 follows it.
TEST(qelFileAccessReadFile, ReadsUtf16BehindAUtf8MarkAtOffsetTwo)
{
    EXPECT_EQ(readContent(bytes("ab\xEF\xBB\xBF") + utf16(L"A\x4E2D"), L"rb", qelFileAccess::ANSI),
              (Read{2, L"A\x4E2D"}));
    EXPECT_EQ(readContent(bytes("ab\xEF\xBB\xBF"), L"rb", qelFileAccess::ANSI), (Read{0, L""}));
}

// Deliberate: at offset 0 the UTF-8 mark is text like any other.
TEST(qelFileAccessReadFile, ReadsAUtf8MarkAtTheStartAsText)
{
    EXPECT_EQ(readContent("\xEF\xBB\xBFxyz", L"rb", qelFileAccess::ANSI), ansi("\xEF\xBB\xBFxyz"));
}

TEST(qelFileAccessReadFile, ReadsOtherFilesThroughTheAnsiCodePage)
{
    const size_t size = ansiBytes().size();
    EXPECT_EQ(readContent(ansiBytes() + "\r\n", L"rb", qelFileAccess::ANSI), (Read{size + 2, ansiText() + L"\r\n"}));
    EXPECT_EQ(readContent(ansiBytes() + "\r\n", L"r", qelFileAccess::ANSI), (Read{size + 1, ansiText() + L"\n"}));
    EXPECT_EQ(readContent(bytes("ab\0cd"), L"rb", qelFileAccess::ANSI), (Read{5, L"ab"}));
}

TEST(qelFileAccessReadFile, LeavesEmptyTextAndAUsableStreamWhenMemoryIsShort)
{
    for (const std::string& content : {std::string(1000, 'x'), "\xFF\xFE" + utf16(std::wstring(1000, L'x'))})
    {
        TestFile onDisk(content);
        const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
        qelString contents(L"left over");
        {
            const qelTest::ImportHook hook("malloc", &limitedMalloc);
            refusedFrom = 2000;
            EXPECT_THROW(file.readFile(contents, 2000), std::bad_alloc);
            refusedFrom = SIZE_MAX;
        }
        EXPECT_EQ(contents.isEmpty(), 1);
        EXPECT_EQ(file.seek(0, 0), 0);
        EXPECT_EQ(readFile(file, 2000), (Read{1000, std::wstring(1000, L'x')}));
    }
}

TEST(qelFileAccessReadFile, ReadsShortAndMalformedFiles)
{
    const struct
    {
        std::string inFile;
        Read read;
    } cases[] = {
        // clang-format off
        {bytes(""), {0, L""}},
        {bytes("a"), {1, L"a"}},
        {bytes("ab"), {2, L"ab"}},
        {bytes("abc"), {3, L"abc"}},
        {bytes("abcd"), {4, L"abcd"}},
        {bytes("abcde"), {5, L"abcde"}},
        {bytes("\xFF"), ansi("\xFF")},
        {bytes("\xFF\xFE"), {0, L""}},
        {bytes("\xFE\xFF"), {0, L""}},
        {bytes("\xFF\xFF"), ansi("\xFF\xFF")},
        {bytes("\xFF\xFE" "A"), {0, L""}},
        {bytes("\xFF\xFE" "A\0B"), {1, L"A"}},
        {bytes("\xFF\xFE\x00\xDC\x00\xD8"), {2, L"\xDC00\xD800"}},
        {bytes("\xFF\xFE" "A\0\0\0B\0"), {3, L"A"}},
        {bytes("ab\xEF\xBB"), ansi("ab\xEF\xBB")},
        {bytes("ab\xEF\xBB\xBE"), ansi("ab\xEF\xBB\xBE")},
        {bytes("ab\xEF\xBB\xBF" "A"), {0, L""}},
        {bytes("a\xEF\xBB\xBF" "A"), ansi("a\xEF\xBB\xBF" "A")},
        // clang-format on
    };
    for (const auto& item : cases)
    {
        EXPECT_EQ(readContent(item.inFile, L"rb", qelFileAccess::ANSI), item.read) << "case " << &item - &cases[0];
    }
}

TEST(qelFileAccessReadFile, CutsAtMaxLength)
{
    EXPECT_EQ(readContent(bytes("0123456789"), L"rb", qelFileAccess::ANSI, 4), (Read{4, L"0123"}));
    EXPECT_EQ(readContent(bytes("0123456789"), L"rb", qelFileAccess::ANSI, 10), (Read{10, L"0123456789"}));
    EXPECT_EQ(readContent(bytes("0123456789"), L"rb", qelFileAccess::ANSI, 0), (Read{0, L""}));
    EXPECT_EQ(readContent(bytes("0123456789"), L"rb", qelFileAccess::ANSI, SIZE_MAX), (Read{10, L"0123456789"}));
    EXPECT_EQ(readContent("\xFF\xFE" + bytes("A\0B\0"), L"rb", qelFileAccess::ANSI, 1), (Read{1, L"A"}));
    EXPECT_EQ(readContent("\xFF\xFE" + bytes("A\0B\0"), L"rb", qelFileAccess::ANSI, 0), (Read{0, L""}));
    EXPECT_EQ(readContent("\xFF\xFE" + bytes("A\0B\0"), L"rb", qelFileAccess::ANSI, SIZE_MAX), (Read{2, L"AB"}));
    EXPECT_EQ(readContent("ab\xEF\xBB\xBF" + bytes("A\0B\0"), L"rb", qelFileAccess::ANSI, 1), (Read{1, L"A"}));
}

TEST(qelFileAccessReadFile, CountsOffsetsFromTheCurrentPosition)
{
    TestFile marked(bytes("xyz\xFF\xFE"
                          "A\0"));
    const qelFileAccess first(marked.path(), L"rb", qelFileAccess::ANSI);
    EXPECT_EQ(first.seek(3, 0), 0);
    EXPECT_EQ(readFile(first, 100), (Read{1, L"A"}));

    TestFile odd(bytes("xyzab\xEF\xBB\xBF"
                       "A\0"));
    const qelFileAccess second(odd.path(), L"rb", qelFileAccess::ANSI);
    EXPECT_EQ(second.seek(3, 0), 0);
    EXPECT_EQ(readFile(second, 100), (Read{1, L"A"}));
}

TEST(qelFileAccessReadFile, GoesBackToTheStartOfTheFileWhenThereIsNoMark)
{
    TestFile onDisk(bytes("abcdefgh"));
    const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    EXPECT_EQ(file.seek(3, 0), 0);
    EXPECT_EQ(readFile(file, 100), (Read{8, L"abcdefgh"}));
    EXPECT_NE(file.eof(), 0);
}

TEST(qelFileAccessReadFile, GoesOnBehindWhatWasRead)
{
    TestFile onDisk(bytes("\xFF\xFE"
                          "A\0B\0"));
    const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    EXPECT_EQ(readFile(file, 1), (Read{1, L"A"}));
    char unit[2] = {};
    EXPECT_EQ(file.read(unit, 1, 2), 2u);
    EXPECT_EQ(unit[0], 'B');
}

TEST(qelFileAccessReadFile, CutsTextAtItsGreatestLengthAndCountsOn)
{
    for (const size_t length : {524287u, 524288u, 524289u, 1200001u})
    {
        std::wstring text(length, L'x');
        text[524286] = L'y';
        const std::wstring kept = text.substr(0, 524288);
        const std::string wide = utf16(text);
        EXPECT_EQ(readContent("\xFF\xFE" + wide, L"rb", qelFileAccess::ANSI, SIZE_MAX), (Read{length, kept}));
        EXPECT_EQ(readContent("ab\xEF\xBB\xBF" + wide, L"rb", qelFileAccess::ANSI, SIZE_MAX), (Read{length, kept}));
        EXPECT_EQ(readContent("\xFF\xFE" + wide, L"rb", qelFileAccess::ANSI, 524290),
                  (Read{length < 524290 ? length : 524290, kept}));
        EXPECT_EQ(readContent(inCodePage(CP_ACP, text), L"rb", qelFileAccess::ANSI, SIZE_MAX), (Read{length, kept}));
    }
}

TEST(qelFileAccessReadFile, CountsAllBytesOfAFileFarBeyondTheLongestText)
{
    const std::string content(2500000, 'x');
    const std::wstring kept(524288, L'x');
    EXPECT_EQ(readContent(content, L"rb", qelFileAccess::ANSI, SIZE_MAX), (Read{2500000, kept}));
    EXPECT_EQ(readContent(content, L"rb", qelFileAccess::ANSI, 2400000), (Read{2400000, kept}));
    EXPECT_EQ(readContent(content, L"r", qelFileAccess::UTF8, 2400000), (Read{2400000, kept}));
}
} // namespace
