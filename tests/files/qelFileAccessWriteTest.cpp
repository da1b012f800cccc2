// write() and puts(), checked by the bytes in the file.

#include "qelFileAccess.h"

#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <wchar.h>

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

TEST(qelFileAccessWrite, TakesWideStringsEvenWithAnEightBitFormat)
{
    EXPECT_EQ(written(qelFileAccess::UTF16LE, [](const qelFileAccess& file) { file.write("%s-%S", L"\x4E2D", "x"); }),
              utf16(L"\xFEFF\x4E2D-x"));
}

TEST(qelFileAccessWrite, ConvertsAnEightBitFormatFromTheAnsiCodePage)
{
    EXPECT_EQ(written(qelFileAccess::UTF16LE, [](const qelFileAccess& file) { EXPECT_EQ(file.write("\x80\xE9"), 2); }),
              utf16(L"\xFEFF\x20AC\x00E9"));
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

TEST(qelFileAccessWrite, ReturnsANegativeValueOnAStreamThatIsOnlyRead)
{
    TestFile onDisk(bytes("abc"));
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::ANSI);
    EXPECT_LT(file.write(L"%s", L"text"), 0);
    EXPECT_LT(file.write("text"), 0);
}

TEST(qelFileAccessPuts, WritesTheNarrowFormForAnsi)
{
    EXPECT_EQ(afterPuts(qelFileAccess::ANSI, L"a\x00E9\x20AC\n"), bytes("a\xE9\x80\r\n"));
    EXPECT_EQ(afterPuts(static_cast<qelFileAccess::encodeType>(7), L"a\x00E9"), bytes("a\xE9"));
    EXPECT_EQ(afterPuts(qelFileAccess::ANSI, L"\x4E2D!"), "?!");
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
    EXPECT_EQ(afterPuts(qelFileAccess::UTF8, L"a\x00E9\x20AC\n"), bytes("\xEF\xBB\xBF"
                                                                        "a\xC3\xA9\xE2\x82\xAC\r\n"));
    EXPECT_EQ(afterPuts(qelFileAccess::UTF8, L"<\x4E2D>"), bytes("\xEF\xBB\xBF<?>"));
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
    ASSERT_GT(text.size(), 95u);
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
    const std::wstring text(524288, L'\x00E9');
    std::string narrow = "\xEF\xBB\xBF";
    for (size_t i = 0; i < text.size(); ++i)
    {
        narrow += "\xC3\xA9";
    }
    EXPECT_TRUE(afterPuts(qelFileAccess::UTF8, text.c_str()) == narrow);
    EXPECT_TRUE(afterPuts(qelFileAccess::UTF16LE, text.c_str()) == utf16(L"\xFEFF" + text));
    EXPECT_TRUE(afterPuts(qelFileAccess::ANSI, text.c_str()) == std::string(524288, '\xE9'));
}

TEST(qelFileAccessPuts, ReturnsTheEndOfFileMarkerOnAStreamThatIsOnlyRead)
{
    TestFile onDisk(bytes("\xFF\xFE"
                          "a\0"));
    EXPECT_EQ(qelFileAccess(onDisk.path(), L"r", qelFileAccess::ANSI).puts(L"text"), EOF);
    EXPECT_EQ(qelFileAccess(onDisk.path(), L"r", qelFileAccess::UTF8).puts(L"text"), EOF);
    // The wide call's marker is another one, in some runtimes.
    for (const qelFileAccess::encodeType encoding : {qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF16LE})
    {
        const int result = qelFileAccess(onDisk.path(), L"r", encoding).puts(L"text");
        EXPECT_TRUE(result == EOF || result == static_cast<int>(WEOF)) << encoding << " gave " << result;
    }
    EXPECT_EQ(onDisk.get(), bytes("\xFF\xFE"
                                  "a\0"));
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
}
} // namespace
