#include "qelFileAccess.h"

#include "support/TestFile.h"

#include <gtest/gtest.h>

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
    return { count, contents.getStringW() };
}

Read readContent(const std::string& content, const wchar_t* mode, qelFileAccess::encodeType encoding,
                 size_t maxLength = 1000)
{
    TestFile onDisk(content);
    const qelFileAccess file(onDisk.path(), mode, encoding);
    EXPECT_EQ(file.isOpen(), 1);
    return readFile(file, maxLength);
}

const qelFileAccess::encodeType kKeys[] = { qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF8, qelFileAccess::UTF16LE };

TEST(qelFileAccessReadFileWithKey, DeliversMarkedAndUnmarkedTextWholeAndWithoutItsMark)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        EXPECT_EQ(readContent(bytes("\xFF\xFE") + utf16(L"A\r\n\x00E9\x20AC"), L"r", key), (Read{ 4, L"A\n\x00E9\x20AC" }));
        EXPECT_EQ(readContent(bytes("\xEF\xBB\xBF" "A\r\n\xC3\xA9\xE2\x82\xAC"), L"r", key), (Read{ 4, L"A\n\x00E9\x20AC" }));
        EXPECT_EQ(readContent(bytes("A\r\n\xE9\x80"), L"r", key), (Read{ 4, L"A\n\x00E9\x20AC" }));
    }
}

TEST(qelFileAccessReadFileWithKey, LeavesLineEndsAloneInBinaryModes)
{
    for (const qelFileAccess::encodeType key : kKeys)
    {
        EXPECT_EQ(readContent(bytes("\xFF\xFE") + utf16(L"A\r\n\x1A\x20AC"), L"rb", key), (Read{ 5, L"A\r\n\x1A\x20AC" }));
        EXPECT_EQ(readContent(bytes("\xEF\xBB\xBF" "A\r\n\x1A\xE2\x82\xAC"), L"rb", key), (Read{ 5, L"A\r\n\x1A\x20AC" }));
        EXPECT_EQ(readContent(bytes("A\r\n\x1A\x80"), L"rb", key), (Read{ 5, L"A\r\n\x1A\x20AC" }));
    }
}

TEST(qelFileAccessReadFile, FollowsTheByteRulesWithoutAKey)
{
    EXPECT_EQ(readContent(bytes("\xFF\xFE" "A\0B\0"), L"rb", qelFileAccess::ANSI), (Read{ 2, L"AB" }));
    EXPECT_EQ(readContent(bytes("\xFE\xFF" "A\0B\0"), L"rb", qelFileAccess::ANSI), (Read{ 2, L"AB" }));
    EXPECT_EQ(readContent(bytes("ab\xEF\xBB\xBF" "A\0B\0"), L"rb", qelFileAccess::ANSI), (Read{ 2, L"AB" }));
    EXPECT_EQ(readContent(bytes("\xEF\xBB\xBFxyz"), L"rb", qelFileAccess::ANSI),
              (Read{ 6, L"\x00EF\x00BB\x00BFxyz" }));
    EXPECT_EQ(readContent(bytes("0123456789"), L"rb", qelFileAccess::ANSI, 4), (Read{ 4, L"0123" }));
}
} // namespace
