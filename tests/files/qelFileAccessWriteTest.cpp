// write() and puts(), checked by the bytes in the file.

#include "qelFileAccess.h"

#include "support/AnsiCodePage.h"
#include "support/ImportHook.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <stdint.h>
#include <stdlib.h>
#include <wchar.h>

#include <new>
#include <string>

using qelTest::ansiBytes;
using qelTest::ansiText;
using qelTest::byCodePage;
using qelTest::bytes;
using qelTest::TestFile;
using qelTest::utf16;

namespace
{
const unsigned short* units(const wchar_t* text)
{
    return reinterpret_cast<const unsigned short*>(text);
}

/// What a new file holds after `use` had it open.
template <typename Use>
std::string written(qelFileAccess::encodeType encoding, const Use& use, const wchar_t* mode = L"w")
{
    TestFile onDisk;
    {
        const qelFileAccess file(onDisk.path(), mode, encoding);
        EXPECT_EQ(file.isOpen(), 1);
        use(file);
    }
    return onDisk.get();
}

/// UTF-8 of well-formed UTF-16.
std::string utf8(const std::wstring& text)
{
    std::string result;
    for (size_t i = 0; i < text.size(); ++i)
    {
        unsigned c = text[i];
        if (c >= 0xD800 && c < 0xDC00)
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00U);
        }
        const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        const unsigned lead[] = {0, 0xC0, 0xE0, 0xF0};
        result += static_cast<char>(lead[more] | c >> (6 * more));
        for (int at = more - 1; at >= 0; --at)
        {
            result += static_cast<char>(0x80 | (c >> (6 * at) & 0x3F));
        }
    }
    return result;
}

const char kUtf8Mark[] = "\xEF\xBB\xBF";

/// What `use` adds to a file that begins with the mark of UTF-8, opened with a key.
template <typename Use> std::string addedToUtf8(qelFileAccess::encodeType key, const Use& use)
{
    TestFile onDisk{std::string(kUtf8Mark)};
    use(qelFileAccess(onDisk.path(), L"a", key));
    return onDisk.get().substr(3);
}

const qelFileAccess::encodeType kAll[] = {qelFileAccess::ANSI, qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF8,
                                          qelFileAccess::UTF16LE};
const qelFileAccess::encodeType kKeys[] = {qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF8, qelFileAccess::UTF16LE};

std::string afterPuts(qelFileAccess::encodeType encoding, const wchar_t* text)
{
    return written(encoding, [&](const qelFileAccess& file) {
        const int result = file.puts(text);
        EXPECT_GE(result, 0);
        EXPECT_NE(result, static_cast<int>(WEOF));
    });
}

TEST(qelFileAccessWrite, FormatsTheSameFromAllThreeForms)
{
    const auto use = [](const qelFileAccess& file) {
        EXPECT_EQ(file.write("%d|%s|%.2f\n", 42, L"ab", 1.5), 11);
        EXPECT_EQ(file.write(L"%d|%s|%.2f\n", 42, L"ab", 1.5), 11);
        EXPECT_EQ(file.write(units(L"%d|%s|%.2f\n"), 42, L"ab", 1.5), 11);
    };
    EXPECT_EQ(written(qelFileAccess::ANSI, use), "42|ab|1.50\r\n42|ab|1.50\r\n42|ab|1.50\r\n");
    EXPECT_EQ(written(qelFileAccess::UTF8, use), "\xEF\xBB\xBF"
                                                 "42|ab|1.50\r\n42|ab|1.50\r\n42|ab|1.50\r\n");
    const std::string wide = utf16(L"\xFEFF"
                                   L"42|ab|1.50\r\n42|ab|1.50\r\n42|ab|1.50\r\n");
    EXPECT_EQ(written(qelFileAccess::UNICODE_TEXT, use), wide);
    EXPECT_EQ(written(qelFileAccess::UTF16LE, use), wide);
}

int countRefused(const wchar_t*, va_list)
{
    return -1;
}

TEST(qelFileAccessWrite, WritesWhatTheRuntimeCannotMeasureBeforehand)
{
    const qelTest::ImportHook hook("_vscwprintf", &countRefused);
    for (const qelFileAccess::encodeType key : kKeys)
    {
        const std::string expected = key == qelFileAccess::UTF8 ? "\xEF\xBB\xBF"
                                                                  "42|ab"
                                                                : utf16(L"\xFEFF"
                                                                        L"42|ab");
        EXPECT_EQ(written(key, [](const qelFileAccess& file) { EXPECT_EQ(file.write(L"%d|%s", 42, L"ab"), 5); }),
                  expected);
    }
}

int printRefused(wchar_t*, size_t, const wchar_t*, va_list)
{
    return -1;
}

TEST(qelFileAccessWrite, WritesNothingWhereTheRuntimeRefusesToFormat)
{
    const qelTest::ImportHook hook("vswprintf_s", &printRefused);
    for (const qelFileAccess::encodeType key : kKeys)
    {
        EXPECT_EQ(written(key, [](const qelFileAccess& file) { EXPECT_LT(file.write(L"%d", 42), 0); }),
                  written(key, [](const qelFileAccess&) {}));
    }
}

int putRefused(const wchar_t*, FILE*)
{
    return -1;
}

TEST(qelFileAccessPuts, FailsAtAnyNegativeResultOfTheRuntime)
{
    const qelTest::ImportHook hook("fputws", &putRefused);
    for (const qelFileAccess::encodeType key : kKeys)
    {
        const TestFile onDisk;
        EXPECT_EQ(qelFileAccess(onDisk.path(), L"w", key).puts(L"abc"), EOF);
    }
}

TEST(qelFileAccessWrite, WritesZerosLikeOtherUnits)
{
    EXPECT_EQ(written(qelFileAccess::UTF16LE, [](const qelFileAccess& file) { EXPECT_EQ(file.write(L"a%cb", 0), 3); }),
              utf16(std::wstring(L"\xFEFF"
                                 L"a\0b",
                                 4)));
    EXPECT_EQ(written(qelFileAccess::UTF8, [](const qelFileAccess& file) { EXPECT_EQ(file.write(L"a%cb", 0), 3); }),
              bytes("\xEF\xBB\xBF"
                    "a\0b"));
}

TEST(qelFileAccessWrite, TakesWideStringsEvenWithAnEightBitFormat)
{
    EXPECT_EQ(written(qelFileAccess::UTF16LE, [](const qelFileAccess& file) { file.write("%s-%S", L"\x4E2D", "x"); }),
              utf16(L"\xFEFF\x4E2D-x"));
}

TEST(qelFileAccessWrite, ConvertsAnEightBitFormatFromTheAnsiCodePage)
{
    EXPECT_EQ(written(qelFileAccess::UTF16LE,
                      [](const qelFileAccess& file) { EXPECT_EQ(file.write(ansiBytes().c_str()), 2); }),
              utf16(L"\xFEFF" + ansiText()));
}

TEST(qelFileAccessWrite, TranslatesAsTheKeySays)
{
    EXPECT_EQ(written(qelFileAccess::UTF8,
                      [](const qelFileAccess& file) { EXPECT_EQ(file.write(L"\x4E2D%c", L'\x20AC'), 2); }),
              bytes("\xEF\xBB\xBF\xE4\xB8\xAD\xE2\x82\xAC"));
}

TEST(qelFileAccessWrite, WritesNothingForEmptyAndNullFormats)
{
    const auto use = [](const qelFileAccess& file) {
        EXPECT_EQ(file.write(""), 0);
        EXPECT_EQ(file.write(L""), 0);
        EXPECT_EQ(file.write(units(L"")), 0);
        EXPECT_EQ(file.write(static_cast<const char*>(nullptr)), 0);
        EXPECT_EQ(file.write(static_cast<const wchar_t*>(nullptr)), 0);
        EXPECT_EQ(file.write(static_cast<const unsigned short*>(nullptr)), 0);
    };
    EXPECT_EQ(written(qelFileAccess::ANSI, use), "");
    EXPECT_EQ(written(qelFileAccess::UTF16LE, use), bytes("\xFF\xFE"));
}

TEST(qelFileAccessWrite, WritesLongTextWhole)
{
    const std::wstring text(100000, L'\x00E9');
    EXPECT_EQ(written(qelFileAccess::UTF16LE,
                      [&](const qelFileAccess& file) { EXPECT_EQ(file.write(L"%s", text.c_str()), 100000); }),
              utf16(L"\xFEFF" + text));
}

TEST(qelFileAccessWrite, KeepsAllCharactersOutsideTheBasicPlaneInUtf8)
{
    std::wstring text;
    std::wstring inFile;
    for (unsigned c = 0x10000; c < 0x110000; ++c)
    {
        const wchar_t pair[] = {static_cast<wchar_t>(0xD7C0 + (c >> 10)), static_cast<wchar_t>(0xDC00 + (c & 0x3FF)),
                                0};
        text += pair;
        inFile += pair;
        if (c % 7 == 0)
        {
            text += L"\n";
            inFile += L"\r\n";
        }
    }
    const std::string expected = utf8(inFile);
    for (const qelFileAccess::encodeType key : kKeys)
    {
        const std::string added = addedToUtf8(key, [&](const qelFileAccess& file) {
            EXPECT_EQ(file.write(L"%s", text.c_str()), static_cast<int>(text.size()));
        });
        EXPECT_TRUE(added == expected) << key;
    }
}

TEST(qelFileAccessWrite, KeepsSurrogatePairsWhereverTheyStand)
{
    for (size_t before = 0; before < 600; ++before)
    {
        const std::wstring text = std::wstring(before, L'\n') + L"\xD83D\xDE00\xD83D\xDE01.";
        const std::string inFile = written(qelFileAccess::UTF8, [&](const qelFileAccess& file) {
            EXPECT_EQ(file.write(L"%s", text.c_str()), static_cast<int>(text.size()));
        });
        EXPECT_EQ(inFile.substr(3 + 2 * before), "\xF0\x9F\x98\x80\xF0\x9F\x98\x81.") << before;
    }
}

TEST(qelFileAccessWrite, KeepsSurrogatePairsThatComeInTwoCalls)
{
    for (size_t before = 0; before < 600; ++before)
    {
        const std::wstring first = std::wstring(before, L'x') + L"\xD83D";
        const std::string inFile = written(qelFileAccess::UTF8, [&](const qelFileAccess& file) {
            EXPECT_EQ(file.write(L"%s", first.c_str()), static_cast<int>(first.size()));
            EXPECT_EQ(file.write(L"%c%s", L'\xDE00', L"-\xD83D"), 3);
            EXPECT_EQ(file.write(L"\xDE01"), 1);
        });
        EXPECT_EQ(inFile.substr(3 + before), "\xF0\x9F\x98\x80-\xF0\x9F\x98\x81") << before;
    }
}

TEST(qelFileAccessWrite, KeepsSurrogatePairsWhoseHalvesComeAlone)
{
    for (size_t before = 0; before < 600; ++before)
    {
        const std::wstring first(before, L'x');
        const std::string inFile = written(qelFileAccess::UTF8, [&](const qelFileAccess& file) {
            EXPECT_EQ(file.write(first.c_str()), static_cast<int>(before));
            EXPECT_EQ(file.write(L"\xD83D"), 1);
            EXPECT_EQ(file.write(L"\xDE00"), 1);
        });
        EXPECT_EQ(inFile.substr(3 + before), "\xF0\x9F\x98\x80") << before;
    }
}

TEST(qelFileAccessPuts, KeepsSurrogatePairsInUtf8)
{
    // Written by puts(), whole text gets into a UTF-8 file when the file's mark overrules the key.
    for (const qelFileAccess::encodeType key : {qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF16LE})
    {
        for (size_t before = 0; before < 600; ++before)
        {
            const std::wstring text = std::wstring(before, L'x') + L"\xD83D\xDE00\xD83D";
            const std::string added = addedToUtf8(key, [&](const qelFileAccess& file) {
                EXPECT_EQ(file.puts(text.c_str()), 0);
                EXPECT_EQ(file.puts(L"\xDE01"), 0);
            });
            EXPECT_EQ(added.substr(before), "\xF0\x9F\x98\x80\xF0\x9F\x98\x81") << before;
        }
    }
}

TEST(qelFileAccessWrite, WritesAHalfOfAPairInUtf8AsAReplacementCharacter)
{
    const std::string replacement = "\xEF\xBF\xBD";
    const auto added = [](const wchar_t* first, const wchar_t* second, bool moves) {
        return addedToUtf8(qelFileAccess::UTF8, [&](const qelFileAccess& file) {
            EXPECT_EQ(file.write(first), static_cast<int>(wcslen(first)));
            if (moves)
            {
                EXPECT_EQ(file.seek(0, 2), 0);
            }
            EXPECT_EQ(file.write(second), static_cast<int>(wcslen(second)));
        });
    };
    EXPECT_EQ(added(L"\xD83D", L"", false), replacement);
    EXPECT_EQ(added(L"a\xDE00", L"b", false), "a" + replacement + "b");
    EXPECT_EQ(added(L"a\xD83D", L"b", false), "a" + replacement + "b");
    EXPECT_EQ(added(L"\xD83D", L"\xD83D\xDE00", false), replacement + "\xF0\x9F\x98\x80");
    // Moving in the file ends what was begun.
    EXPECT_EQ(added(L"\xD83D", L"\xDE00", true), replacement + replacement);
}

TEST(qelFileAccessWrite, KeepsPairsAndTheirHalvesInUtf16)
{
    for (const qelFileAccess::encodeType key : {qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF16LE})
    {
        EXPECT_EQ(written(key,
                          [](const qelFileAccess& file) {
                              EXPECT_EQ(file.write(L"\xD83D\xDE00\n\xD83D"), 4);
                              EXPECT_EQ(file.write(L"\xDE00\xDE00"), 2);
                          }),
                  utf16(L"\xFEFF\xD83D\xDE00\r\n\xD83D\xDE00\xDE00"));
    }
}

TEST(qelFileAccessWrite, WritesNoncharactersAndZeros)
{
    const auto use = [](const qelFileAccess& file) { EXPECT_EQ(file.write(L"a\xFFFF%c\xD83D\xDE00%cb", 0, 0), 7); };
    EXPECT_EQ(written(qelFileAccess::UTF8, use), kUtf8Mark + bytes("a\xEF\xBF\xBF\0\xF0\x9F\x98\x80\0b"));
    EXPECT_EQ(written(qelFileAccess::UTF16LE, use), utf16(std::wstring(L"\xFEFF"
                                                                       L"a\xFFFF\0\xD83D\xDE00\0b",
                                                                       8)));
}

TEST(qelFileAccessWrite, WritesUtf8WithoutAMarkIntoAFileThatHasNone)
{
    TestFile onDisk(bytes("first\r\n"));
    {
        const qelFileAccess file(onDisk.path(), L"a", qelFileAccess::UTF8);
        EXPECT_EQ(file.write(L"\x4E2D\n"), 2);
    }
    EXPECT_EQ(onDisk.get(), "first\r\n\xE4\xB8\xAD\r\n");
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::UTF8);
    qelString text;
    EXPECT_EQ(file.readFile(text, 100), 8u);
    EXPECT_STREQ(text.getStringW(), L"first\n\x4E2D\n");
}

TEST(qelFileAccessWrite, FailsForUnicodeOnTextThatAnAnsiFileCannotTake)
{
    // Without a mark, UNICODE is ANSI, in the code page of the C runtime's locale.
    TestFile onDisk(bytes("a"));
    {
        const qelFileAccess file(onDisk.path(), L"a", qelFileAccess::UNICODE_TEXT);
        EXPECT_EQ(file.write(L"%s", L"\x00E9"), 1);
        EXPECT_LT(file.write(L"%s", L"\x4E2D"), 0);
        EXPECT_LT(file.write(L"%s", L"\xD83D\xDE00"), 0);
        EXPECT_EQ(file.puts(L"\x4E2D"), EOF);
    }
    EXPECT_EQ(onDisk.get(), "a\xE9");
}

TEST(qelFileAccessWrite, TellsAFailureInTheSameWayForEveryEncoding)
{
    TestFile onDisk(bytes("\xFF\xFE"
                          "a\0"));
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        for (const wchar_t* text : {L"text", L"\xD83D\xDE00"})
        {
            const qelFileAccess file(onDisk.path(), L"r", encoding);
            EXPECT_LT(file.write(L"%s", text), 0) << encoding;
            EXPECT_LT(file.write("%s", text), 0) << encoding;
            EXPECT_LT(file.write(units(L"%s"), text), 0) << encoding;
            EXPECT_EQ(file.puts(text), EOF) << encoding;
        }
    }
    EXPECT_EQ(onDisk.get(), bytes("\xFF\xFE"
                                  "a\0"));
}

/// Refuses blocks of this size and more.
size_t refusedFrom = SIZE_MAX;

void* limitedMalloc(size_t size)
{
    return size >= refusedFrom ? nullptr : malloc(size);
}

TEST(qelFileAccessWrite, LeavesTheFileAsItWasWhenMemoryIsShort)
{
    const std::wstring text(1000, L'x');
    EXPECT_EQ(written(qelFileAccess::UTF8,
                      [&](const qelFileAccess& file) {
                          EXPECT_EQ(file.write(L"a"), 1);
                          {
                              const qelTest::ImportHook hook("malloc", &limitedMalloc);
                              refusedFrom = 2000;
                              EXPECT_THROW(file.write(L"%s", text.c_str()), std::bad_alloc);
                              refusedFrom = SIZE_MAX;
                          }
                          EXPECT_EQ(file.write(L"b"), 1);
                      }),
              std::string(kUtf8Mark) + "ab");
}

TEST(qelFileAccessPuts, WritesTheNarrowFormForAnsi)
{
    EXPECT_EQ(afterPuts(qelFileAccess::ANSI, (L"a" + ansiText() + L"\n").c_str()), "a" + ansiBytes() + "\r\n");
    EXPECT_EQ(afterPuts(static_cast<qelFileAccess::encodeType>(7), ansiText().c_str()), ansiBytes());
    EXPECT_EQ(afterPuts(qelFileAccess::ANSI, L"\x0B85!"), byCodePage("?!", "?!", "\xE0\xAE\x85!"));
}

TEST(qelFileAccessPuts, WritesTheWideFormForUnicodeAndUtf16)
{
    EXPECT_EQ(afterPuts(qelFileAccess::UNICODE_TEXT, L"\x4E2D\xD83D\xDE00\n"), utf16(L"\xFEFF\x4E2D\xD83D\xDE00\r\n"));
    EXPECT_EQ(afterPuts(qelFileAccess::UTF16LE, L"\x4E2D\xD83D\xDE00\n"), utf16(L"\xFEFF\x4E2D\xD83D\xDE00\r\n"));
}

TEST(qelFileAccessPuts, WritesLoneSurrogatesAsTheyAre)
{
    EXPECT_EQ(afterPuts(qelFileAccess::UTF16LE, L"\xDE00\xD83D"), utf16(L"\xFEFF\xDE00\xD83D"));
}

// Deliberate: of the encodings with a key only UNICODE and UTF16LE take the wide path.
TEST(qelFileAccessPuts, WritesTheNarrowFormAsUtf8ForUtf8)
{
    const char* const expected =
        byCodePage("\xEF\xBB\xBF\xC3\xA9\xE2\x82\xAC\r\n", "\xEF\xBB\xBF\xE3\x82\xBD\xEF\xBD\xB1\r\n",
                   "\xEF\xBB\xBF\xC3\xA9\xE2\x82\xAC\r\n");
    EXPECT_EQ(afterPuts(qelFileAccess::UTF8, (ansiText() + L"\n").c_str()), expected);
    EXPECT_EQ(afterPuts(qelFileAccess::UTF8, L"<\x0B85>"),
              byCodePage("\xEF\xBB\xBF<?>", "\xEF\xBB\xBF<?>", "\xEF\xBB\xBF<\xE0\xAE\x85>"));
}

TEST(qelFileAccessPuts, KeepsEveryCharacterOfTheCodePageThroughUtf8)
{
    // Control Z, line ends and what code page 1252 leaves open aside.
    std::wstring text;
    for (int byte = 0x20; byte < 0x100; ++byte)
    {
        const char narrow = static_cast<char>(byte);
        wchar_t unit = 0;
        const bool known = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, &narrow, 1, &unit, 1) == 1;
        if (known && (unit < 0x7F || unit >= 0xA0))
        {
            text += unit;
        }
    }
    ASSERT_GT(text.size(), byCodePage(95u, 95u, 94u));
    TestFile onDisk;
    qelFileAccess(onDisk.path(), L"w", qelFileAccess::UTF8).puts(text.c_str());
    qelString line;
    qelFileAccess(onDisk.path(), L"r", qelFileAccess::UTF8).getStringW(line, 512);
    EXPECT_EQ(std::wstring(line.getStringW()), text);
}

TEST(qelFileAccessPuts, AddsNoLineEnd)
{
    EXPECT_EQ(written(qelFileAccess::ANSI,
                      [](const qelFileAccess& file) {
                          file.puts(L"a");
                          file.puts(L"");
                          file.puts(qelString());
                          file.puts(L"b");
                      }),
              "ab");
}

TEST(qelFileAccessPuts, WritesLongTextWhole)
{
    const std::wstring text(524288, byCodePage(L'\x00E9', L'\xFF71', L'\x00E9'));
    std::string inUtf8;
    std::string inAnsi;
    for (size_t i = 0; i < text.size(); ++i)
    {
        inUtf8 += byCodePage("\xC3\xA9", "\xEF\xBD\xB1", "\xC3\xA9");
        inAnsi += byCodePage("\xE9", "\xB1", "\xC3\xA9");
    }
    EXPECT_TRUE(afterPuts(qelFileAccess::UTF8, text.c_str()) == "\xEF\xBB\xBF" + inUtf8);
    EXPECT_TRUE(afterPuts(qelFileAccess::UTF16LE, text.c_str()) == utf16(L"\xFEFF" + text));
    EXPECT_TRUE(afterPuts(qelFileAccess::ANSI, text.c_str()) == inAnsi);
}

TEST(qelFileAccessFullDisk, ReportsWhatCouldNotBeWritten)
{
    qelFileAccess file(L"Z:\\dev\\full", L"w", qelFileAccess::ANSI);
    if (file.isOpen() == 0)
    {
        GTEST_SKIP() << "only the Unix device stands for a full disk here";
    }
    const std::wstring text(50000, L'x');
    EXPECT_EQ(file.puts(text.c_str()), EOF);
    EXPECT_LT(file.write(L"%s", text.c_str()), 0);
    EXPECT_LT(file.write("%s", text.c_str()), 0);
    file.close();
    EXPECT_EQ(file.isOpen(), 0);
    for (const qelFileAccess::encodeType key : kKeys)
    {
        EXPECT_EQ(qelFileAccess(L"Z:\\dev\\full", L"w", key).isOpen(), 0) << "there is no room for the mark";
    }
}

TEST(qelFileAccessWrite, FailsInTheSameWayForEveryEncodingWhenTheFileTakesNoMore)
{
    const std::wstring text(50000, L'x');
    std::wstring pairs;
    for (int i = 0; i < 1000; ++i)
    {
        pairs += L"\xD83D\xDE00";
    }
    const std::wstring name = L"\\\\.\\pipe\\qelWrite" + std::to_wstring(GetCurrentProcessId());
    for (const qelFileAccess::encodeType encoding : kAll)
    {
        const HANDLE reader =
            CreateNamedPipeW(name.c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0, nullptr);
        ASSERT_NE(reader, INVALID_HANDLE_VALUE);
        const qelFileAccess file(name.c_str(), L"w", encoding);
        EXPECT_EQ(file.isOpen(), 1) << encoding;
        CloseHandle(reader);
        EXPECT_LT(file.write(L"%s", text.c_str()), 0) << encoding;
        EXPECT_LT(file.write("%s", text.c_str()), 0) << encoding;
        EXPECT_LT(file.write(L"%s", pairs.c_str()), 0) << encoding;
        EXPECT_EQ(file.puts(text.c_str()), EOF) << encoding;
    }
}
} // namespace
