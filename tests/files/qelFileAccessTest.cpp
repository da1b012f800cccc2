// Opening, closing, encodings, positions, and the operations on files and folders.

#include "qelFileAccess.h"

#include "support/OpenHandles.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <errno.h>
#include <stdlib.h>

#include <new>
#include <type_traits>
#include <vector>

using qelTest::bytes;
using qelTest::openHandles;
using qelTest::TestFile;

// The header has to give the host's macro back.
#ifndef UNICODE
#error "UNICODE was lost"
#endif

namespace
{
static_assert(sizeof(qelFileAccess) == 24, "three pointers wide");
static_assert(std::has_virtual_destructor<qelFileAccess>::value, "meant to be derived from");
static_assert(std::is_same<std::underlying_type<qelFileAccess::encodeType>::type, int>::value, "fixed type");
static_assert(std::is_copy_constructible<qelFileAccess>::value && std::is_copy_assignable<qelFileAccess>::value,
              "member-wise copies");

#pragma push_macro("UNICODE")
#undef UNICODE
static_assert(qelFileAccess::UNICODE == 1, "the enumerator under its own name");
#pragma pop_macro("UNICODE")

static_assert(qelFileAccess::ANSI == 0 && qelFileAccess::UNICODE_TEXT == 1 && qelFileAccess::UTF8 == 2 &&
                  qelFileAccess::UTF16LE == 3,
              "stated values");

/// What an opened and at once closed file holds.
std::string newFile(const wchar_t* mode, qelFileAccess::encodeType encoding)
{
    TestFile onDisk;
    {
        const qelFileAccess file(onDisk.path(), mode, encoding);
        EXPECT_EQ(file.isOpen(), 1);
        EXPECT_EQ(file.getCodingMethod(), encoding);
        EXPECT_EQ(file.write(L"x"), 1);
    }
    return onDisk.get();
}

TEST(qelFileAccess, HasNoFileAndEncodingAnsiByDefault)
{
    const qelFileAccess file;
    EXPECT_EQ(file.isOpen(), 0);
    EXPECT_EQ(file.getCodingMethod(), qelFileAccess::ANSI);
}

TEST(qelFileAccess, OpensNothingForAnEmptyNameButKeepsTheEncoding)
{
    const qelFileAccess file(qelString(), L"w", qelFileAccess::UTF16LE);
    EXPECT_EQ(file.isOpen(), 0);
    EXPECT_EQ(file.getCodingMethod(), qelFileAccess::UTF16LE);
}

TEST(qelFileAccess, KeepsTheEncodingWhenTheOpenFails)
{
    TestFile onDisk(L" missing.tmp");
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::UTF8);
    EXPECT_EQ(file.isOpen(), 0);
    EXPECT_EQ(file.getCodingMethod(), qelFileAccess::UTF8);
}

TEST(qelFileAccess, DoesNotOpenWhatAnotherHasForItselfAlone)
{
    TestFile onDisk(bytes("abc"));
    const HANDLE other = CreateFileW(onDisk.widePath().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    for (const int encoding : {0, 1, 2, 3})
    {
        for (const wchar_t* mode : {L"r", L"w", L"a", L"r+"})
        {
            const qelFileAccess file(onDisk.path(), mode, static_cast<qelFileAccess::encodeType>(encoding));
            EXPECT_EQ(file.isOpen(), 0) << mode << encoding;
        }
    }
    CloseHandle(other);
    EXPECT_EQ(onDisk.get(), "abc");
}

TEST(qelFileAccess, KeepsTheFileFromGoingWhileItIsOpen)
{
    TestFile onDisk(bytes("abc"));
    qelFileAccess file(onDisk.path(), L"r", qelFileAccess::UNICODE_TEXT);
    EXPECT_EQ(qelFileAccess::removeFile(onDisk.path()), -1);
    EXPECT_EQ(file.getc(), 'a');
    file.close();
    EXPECT_EQ(qelFileAccess::removeFile(onDisk.path()), 0);
    EXPECT_EQ(qelFileAccess(onDisk.path(), L"r", qelFileAccess::UNICODE_TEXT).isOpen(), 0);
}

TEST(qelFileAccess, FailsSilentlyForModesThatTheRuntimeDoesNotKnow)
{
    TestFile onDisk(bytes("text"));
    for (const wchar_t* mode : {L"", L"q", L"+r", L", ccs=UNICODE"})
    {
        EXPECT_EQ(qelFileAccess(onDisk.path(), mode, qelFileAccess::ANSI).isOpen(), 0) << mode;
        EXPECT_EQ(qelFileAccess(onDisk.path(), mode, qelFileAccess::UTF8).isOpen(), 0) << mode;
    }
    EXPECT_EQ(onDisk.get(), "text");
}

TEST(qelFileAccess, AppendsTheKeyOfTheEncodingToTheMode)
{
    EXPECT_EQ(newFile(L"w", qelFileAccess::ANSI), "x");
    EXPECT_EQ(newFile(L"w", qelFileAccess::UNICODE_TEXT), bytes("\xFF\xFEx\0"));
    EXPECT_EQ(newFile(L"w", qelFileAccess::UTF8), bytes("\xEF\xBB\xBFx"));
    EXPECT_EQ(newFile(L"w", qelFileAccess::UTF16LE), bytes("\xFF\xFEx\0"));
}

TEST(qelFileAccess, AppendsTheKeyToACopyOfTheMode)
{
    TestFile onDisk;
    const qelString mode(L"w");
    const qelFileAccess file(onDisk.path(), mode, qelFileAccess::UTF8);
    EXPECT_STREQ(mode.getStringW(), L"w");
}

TEST(qelFileAccess, TreatsUnknownEncodingsAsAnsi)
{
    EXPECT_EQ(newFile(L"w", static_cast<qelFileAccess::encodeType>(7)), "x");
    EXPECT_EQ(newFile(L"w", static_cast<qelFileAccess::encodeType>(-1)), "x");
}

TEST(qelFileAccess, WritesTheMarkOnNewFilesOnly)
{
    TestFile onDisk;
    qelFileAccess(onDisk.path(), L"a", qelFileAccess::UTF8).puts(L"a");
    EXPECT_EQ(onDisk.get(), bytes("\xEF\xBB\xBF"
                                  "a"));
    qelFileAccess(onDisk.path(), L"a", qelFileAccess::UTF8).puts(L"b");
    EXPECT_EQ(onDisk.get(), bytes("\xEF\xBB\xBF"
                                  "ab"));
}

TEST(qelFileAccess, LetsTheMarkOfAnExistingFileDecide)
{
    TestFile onDisk(bytes("\xFF\xFE"
                          "a\0"));
    qelFileAccess(onDisk.path(), L"a", qelFileAccess::UTF8).puts(L"b");
    EXPECT_EQ(onDisk.get(), bytes("\xFF\xFE"
                                  "a\0b\0"));
    const qelFileAccess file(onDisk.path(), L"r", qelFileAccess::UTF8);
    qelString line;
    EXPECT_STREQ(file.getStringW(line, 100).getStringW(), L"ab");
}

TEST(qelFileAccess, OpensWideNames)
{
    TestFile onDisk(L"\x4E2D\x6587-\x0416-\x00E9.tmp");
    qelFileAccess(onDisk.path(), L"w", qelFileAccess::ANSI).puts(L"abc");
    ASSERT_TRUE(onDisk.exists());
    EXPECT_EQ(onDisk.get(), "abc");
}

TEST(qelFileAccess, ClosesOnceAndForAll)
{
    TestFile onDisk;
    qelFileAccess file(onDisk.path(), L"w", qelFileAccess::ANSI);
    EXPECT_EQ(file.puts(L"abc"), 0);
    file.close();
    EXPECT_EQ(file.isOpen(), 0);
    EXPECT_EQ(file.getCodingMethod(), qelFileAccess::ANSI);
    EXPECT_EQ(onDisk.get(), "abc");
    file.close();
    EXPECT_EQ(file.isOpen(), 0);
    EXPECT_EQ(qelFileAccess::removeFile(onDisk.path()), 0);
}

TEST(qelFileAccess, ClosesInItsDestructor)
{
    TestFile onDisk;
    {
        const qelFileAccess file(onDisk.path(), L"w", qelFileAccess::ANSI);
        file.puts(L"abc");
    }
    EXPECT_EQ(onDisk.get(), "abc");
    EXPECT_NE(DeleteFileW(onDisk.widePath().c_str()), 0);
}

TEST(qelFileAccess, CopiesOfClosedObjectsAreClosedAndKeepTheEncoding)
{
    TestFile onDisk(bytes("abc"));
    qelFileAccess first(onDisk.path(), L"r", qelFileAccess::UTF8);
    first.close();
    const qelFileAccess second(first);
    EXPECT_EQ(second.isOpen(), 0);
    EXPECT_EQ(second.getCodingMethod(), qelFileAccess::UTF8);
    qelFileAccess third;
    third = second;
    EXPECT_EQ(third.isOpen(), 0);
    EXPECT_EQ(third.getCodingMethod(), qelFileAccess::UTF8);
}

TEST(qelFileAccess, CopiesShareTheOpenStream)
{
    TestFile onDisk(bytes("abc"));
    qelFileAccess first(onDisk.path(), L"r", qelFileAccess::ANSI);
    // Never destroyed: each copy would close the one stream.
    alignas(qelFileAccess) static unsigned char storage[2][sizeof(qelFileAccess)];
    const qelFileAccess& constructed = *new (storage[0]) qelFileAccess(first);
    qelFileAccess& assigned = *new (storage[1]) qelFileAccess;
    assigned = first;
    EXPECT_EQ(first.getc(), 'a');
    EXPECT_EQ(constructed.getc(), 'b');
    EXPECT_EQ(assigned.getc(), 'c');
    EXPECT_EQ(constructed.isOpen(), 1);
}

TEST(qelFileAccess, LosesNoHandles)
{
    TestFile onDisk(bytes("\xEF\xBB\xBF"
                          "abc\r\n"));
    TestFile missing(L" missing.tmp");
    qelString text;
    const auto useAll = [&] {
        for (const int encoding : {0, 1, 2, 3})
        {
            const auto type = static_cast<qelFileAccess::encodeType>(encoding);
            qelFileAccess file(onDisk.path(), L"r", type);
            file.readFile(text, 100);
            qelFileAccess closed(onDisk.path(), L"r", type);
            closed.close();
            const qelFileAccess copy(closed);
            const qelFileAccess failed(missing.path(), L"r", type);
        }
    };
    useAll();
    const int before = openHandles();
    for (int i = 0; i < 50; ++i)
    {
        useAll();
    }
    EXPECT_EQ(openHandles(), before);
}

TEST(qelFileAccessClosed, DoesNothingAndReturnsZero)
{
    TestFile onDisk(bytes("12 abc"));
    qelFileAccess closed(onDisk.path(), L"r+", qelFileAccess::ANSI);
    closed.close();
    for (const int encoding : {0, 1, 2, 3})
    {
        qelFileAccess none(qelString(), L"r", static_cast<qelFileAccess::encodeType>(encoding));
        for (qelFileAccess* file : {&none, &closed})
        {
            static const unsigned short format[] = {'%', 'd', 0};
            EXPECT_EQ(file->write("%d", 1), 0);
            EXPECT_EQ(file->write(L"%d", 1), 0);
            EXPECT_EQ(file->write(format, 1), 0);
            EXPECT_EQ(file->puts(L"text"), 0);

            char buffer[4] = {'k', 'e', 'p', 't'};
            EXPECT_EQ(file->read(buffer, 1, 4), 0u);
            EXPECT_EQ(std::string(buffer, 4), "kept");

            qelString text(L"kept");
            int integer = 77;
            double real = 7.5;
            EXPECT_EQ(file->readString(text), 0);
            EXPECT_STREQ(text.getStringW(), L"kept");
            EXPECT_EQ(file->readInt(integer), 0);
            EXPECT_EQ(integer, 77);
            EXPECT_EQ(file->readDouble(real), 0);
            EXPECT_EQ(real, 7.5);
            EXPECT_EQ(file->getc(), 0);

            EXPECT_EQ(file->getStringW(text, 100).isEmpty(), 1);
            EXPECT_EQ(text.isEmpty(), 1);
            text = L"old";
            EXPECT_EQ(file->readFile(text, 100), 0u);
            EXPECT_EQ(text.isEmpty(), 1);

            EXPECT_NE(file->eof(), 0);
            EXPECT_EQ(file->seek(0, 0), -1);
            EXPECT_EQ(file->getFileLength(), 0);
        }
    }
    EXPECT_EQ(onDisk.get(), "12 abc");
}

TEST(qelFileAccessPosition, SeeksFromStartPositionAndEnd)
{
    TestFile onDisk(bytes("0123456789"));
    const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    char c = 0;
    EXPECT_EQ(file.seek(3, 0), 0);
    EXPECT_EQ(file.read(&c, 1, 1), 1u);
    EXPECT_EQ(c, '3');
    EXPECT_EQ(file.seek(2, 1), 0);
    EXPECT_EQ(file.read(&c, 1, 1), 1u);
    EXPECT_EQ(c, '6');
    EXPECT_EQ(file.seek(-1, 2), 0);
    EXPECT_EQ(file.read(&c, 1, 1), 1u);
    EXPECT_EQ(c, '9');
}

TEST(qelFileAccessPosition, RefusesOriginsAndOffsetsThatDoNotExist)
{
    TestFile onDisk(bytes("0123456789"));
    const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    EXPECT_EQ(file.seek(0, 3), -1);
    EXPECT_EQ(file.seek(0, -1), -1);
    EXPECT_NE(file.seek(-1, 0), 0);
    char c = 0;
    EXPECT_EQ(file.read(&c, 1, 1), 1u);
    EXPECT_EQ(c, '0');
}

TEST(qelFileAccessPosition, FileLengthLeavesThePositionAtTheStart)
{
    TestFile onDisk(bytes("0123456789"));
    qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    char buffer[4] = {};
    EXPECT_EQ(file.read(buffer, 1, 4), 4u);
    EXPECT_EQ(file.getFileLength(), 10);
    EXPECT_EQ(file.read(buffer, 1, 4), 4u);
    EXPECT_EQ(std::string(buffer, 4), "0123");
}

TEST(qelFileAccessPosition, FileLengthCountsBytesWithMarkAndLineEnds)
{
    TestFile onDisk(bytes("\xEF\xBB\xBF"
                          "a\r\n\xE2\x82\xAC"));
    for (const int encoding : {0, 1, 2, 3})
    {
        qelFileAccess file(onDisk.path(), L"r", static_cast<qelFileAccess::encodeType>(encoding));
        EXPECT_EQ(file.getFileLength(), 9);
    }
    TestFile empty(std::string{});
    EXPECT_EQ(qelFileAccess(empty.path(), L"r", qelFileAccess::UNICODE_TEXT).getFileLength(), 0);
}

TEST(qelFileAccessPosition, FileLengthCoversWhatWasJustWritten)
{
    TestFile onDisk;
    qelFileAccess file(onDisk.path(), L"w+", qelFileAccess::UTF16LE);
    file.puts(L"ab");
    EXPECT_EQ(file.getFileLength(), 6);
}

TEST(qelFileAccessPosition, MeetsTheEndOnlyByReadingPastIt)
{
    TestFile onDisk(bytes("ab"));
    const qelFileAccess file(onDisk.path(), L"rb", qelFileAccess::ANSI);
    char buffer[3] = {};
    EXPECT_EQ(file.eof(), 0);
    EXPECT_EQ(file.read(buffer, 1, 2), 2u);
    EXPECT_EQ(file.eof(), 0);
    EXPECT_EQ(file.read(buffer, 1, 1), 0u);
    EXPECT_NE(file.eof(), 0);
    EXPECT_EQ(file.seek(0, 0), 0);
    EXPECT_EQ(file.eof(), 0);
}

TEST(qelFileAccessFolders, RemovesFiles)
{
    TestFile onDisk(bytes("abc"));
    EXPECT_EQ(qelFileAccess::removeFile(onDisk.path()), 0);
    EXPECT_FALSE(onDisk.exists());
    EXPECT_EQ(qelFileAccess::removeFile(onDisk.path()), -1);
    EXPECT_EQ(qelFileAccess::removeFile(qelString()), -1);
}

TEST(qelFileAccessFolders, RenamesFilesButOverwritesNone)
{
    TestFile from(bytes("abc"));
    TestFile to(L"\x0416.tmp");
    EXPECT_EQ(qelFileAccess::renameFile(from.path(), to.path()), 0);
    EXPECT_FALSE(from.exists());
    EXPECT_EQ(to.get(), "abc");
    EXPECT_EQ(qelFileAccess::renameFile(from.path(), to.path()), -1);
    from.set("new");
    EXPECT_EQ(qelFileAccess::renameFile(from.path(), to.path()), -1);
    EXPECT_EQ(to.get(), "abc");
}

TEST(qelFileAccessFolders, MakesFoldersAndCountsExistingOnesAsMade)
{
    TestFile folder(L"\x4E2D folder");
    EXPECT_EQ(qelFileAccess::makeDir(folder.path()), 0);
    EXPECT_NE(GetFileAttributesW(folder.widePath().c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0u);
    EXPECT_EQ(qelFileAccess::makeDir(folder.path()), 0);
}

TEST(qelFileAccessFolders, CountsAFileOfThatNameAsAMadeFolder)
{
    TestFile onDisk(bytes("abc"));
    EXPECT_EQ(qelFileAccess::makeDir(onDisk.path()), 0);
    EXPECT_EQ(onDisk.get(), "abc");
}

TEST(qelFileAccessFolders, ReturnsOtherFailuresWithTheErrorNumberLeftSet)
{
    TestFile missing(L" missing");
    errno = EEXIST;
    EXPECT_EQ(qelFileAccess::makeDir(missing.path() + L"\\below"), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(qelFileAccessFolders, ChangesTheWorkingFolder)
{
    wchar_t before[MAX_PATH] = {};
    ASSERT_NE(GetCurrentDirectoryW(MAX_PATH, before), 0u);
    TestFile folder(L"\x0416 folder");
    ASSERT_EQ(qelFileAccess::makeDir(folder.path()), 0);
    EXPECT_EQ(qelFileAccess::changeWorkingDir(folder.path()), 0);
    wchar_t inside[MAX_PATH] = {};
    EXPECT_NE(GetCurrentDirectoryW(MAX_PATH, inside), 0u);
    EXPECT_NE(std::wstring(inside).find(L"\x0416 folder"), std::wstring::npos);
    EXPECT_EQ(qelFileAccess::changeWorkingDir(before), 0);
    EXPECT_EQ(qelFileAccess::changeWorkingDir(folder.path() + L"\\missing"), -1);
    wchar_t after[MAX_PATH] = {};
    EXPECT_NE(GetCurrentDirectoryW(MAX_PATH, after), 0u);
    EXPECT_STREQ(after, before);
}
} // namespace
