// The same failures where the system itself brings them about: a full disk, what may only be read, a file that is gone,
// one that somebody else has opened, a stream that was closed.

#include "qelDataSourcesUtilities.h"
#include "qelFileAccess.h"
#include "qelLogfile.h"
#include "qelRuntime.h"

#include "support/TemporaryFolder.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <io.h>

#include <cerrno>
#include <cstdlib>

namespace
{
using qelTest::contentOf;

/// Opens a file so that nobody else may.
class Exclusively
{
public:
    explicit Exclusively(const std::wstring& path)
        : m_file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr))
    {
        EXPECT_NE(m_file, INVALID_HANDLE_VALUE);
    }

    Exclusively(const Exclusively&) = delete;
    Exclusively& operator=(const Exclusively&) = delete;
    ~Exclusively() { CloseHandle(m_file); }

private:
    HANDLE m_file;
};

/// Files that this process has open. Of other handles the system makes its own from time to time.
int openFiles()
{
    int count = 0;
    for (size_t value = 4; value < 0x1000; value += 4)
    {
        count += GetFileType(reinterpret_cast<HANDLE>(value)) == FILE_TYPE_DISK ? 1 : 0;
    }
    return count;
}

class RealFailure : public testing::Test
{
protected:
    RealFailure() { qelLogfile::setLogStatus(1); }

    ~RealFailure() override
    {
        qelLogfile::setLogStatus(0);
        EXPECT_EQ(openFiles(), m_files);
    }

    std::wstring path(const wchar_t* name = L"file.txt") const { return m_folder.path(name); }
    qelString named(const wchar_t* name = L"file.txt") const { return qelString(path(name).c_str()); }
    std::wstring write(const std::string& content) const { return m_folder.write(L"file.txt", content); }

    const qelTest::TemporaryFolder m_folder;
    const int m_files = openFiles();
};

// A full disk

const wchar_t kFull[] = L"Z:\\dev\\full";

class FullDisk : public RealFailure
{
protected:
    void SetUp() override
    {
        FILE* const file = _wfopen(kFull, L"w");
        if (file == nullptr)
        {
            GTEST_SKIP() << "no disk of this machine is known to be full";
        }
        (void)fclose(file);
    }
};

/// Whether one of many calls reports a failure: the first ones only fill the buffer of the stream.
template <class Write> bool failsSooner(const Write& write)
{
    for (int i = 0; i < 100; ++i)
    {
        if (write() < 0)
        {
            return true;
        }
    }
    return false;
}

const std::string kLine(1000, 'x');

TEST_F(FullDisk, TakesNoTextOfAFile)
{
    const qelFileAccess file(kFull, L"w", qelFileAccess::ANSI);
    ASSERT_EQ(file.isOpen(), 1);
    EXPECT_TRUE(failsSooner([&] { return file.puts(kLine.c_str()); }));
}

TEST_F(FullDisk, TakesNoMarkOfAFile)
{
    EXPECT_EQ(qelFileAccess(kFull, L"w", qelFileAccess::UTF8).isOpen(), 0);
    EXPECT_EQ(qelFileAccess(kFull, L"w", qelFileAccess::UTF16LE).isOpen(), 0);
}

TEST_F(FullDisk, TakesNoTextOfAStream)
{
    FILE* stream = nullptr;
    qelfopen(&stream, kFull, L"w");
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(failsSooner([&] { return qelfputs(kLine.c_str(), stream); }));
    qelfclose(stream);
}

TEST_F(FullDisk, LosesLogLinesSilently)
{
    // The result is the one of the formatted write, which goes to the buffer of the stream.
    EXPECT_EQ(qelLogfile(kFull).appendWithSave(L"text"), 1);
    qelLogfile::logToFile(kFull, L"text");
    qelLogfile::listModules(kFull);
}

// What may only be read

class ReadOnly : public RealFailure
{
protected:
    ReadOnly()
    {
        write("before");
        SetFileAttributesW(path().c_str(), FILE_ATTRIBUTE_READONLY);
    }

    void SetUp() override
    {
        FILE* const file = _wfopen(path().c_str(), L"r+");
        if (file != nullptr)
        {
            (void)fclose(file);
            GTEST_SKIP() << "this user may write to what may only be read, as root may under Wine";
        }
    }

    ~ReadOnly() override
    {
        SetFileAttributesW(path().c_str(), FILE_ATTRIBUTE_NORMAL);
        EXPECT_EQ(contentOf(path()), "before");
    }
};

TEST_F(ReadOnly, FileOpensForReadingOnly)
{
    EXPECT_EQ(qelFileAccess(named(), L"w", qelFileAccess::ANSI).isOpen(), 0);
    EXPECT_EQ(qelFileAccess(named(), L"a", qelFileAccess::UTF8).isOpen(), 0);
    EXPECT_EQ(qelFileAccess(named(), L"r+", qelFileAccess::ANSI).isOpen(), 0);
    EXPECT_EQ(qelFileAccess(named(), L"r", qelFileAccess::ANSI).isOpen(), 1);
    FILE* stream = nullptr;
    EXPECT_EQ(qelfopen(&stream, named(), L"w"), 0);
    EXPECT_EQ(stream, nullptr);
}

TEST_F(ReadOnly, LogStaysAsItWas)
{
    qelLogfile log(named());
    EXPECT_EQ(log.appendWithSave(L"text"), 0);
    EXPECT_EQ(log.reset(), 1);
    qelLogfile::logToFile(named(), L"text");
    qelLogfile::listModules(named());
}

TEST_F(ReadOnly, FileIsNotRemoved)
{
    EXPECT_EQ(qelFileAccess::removeFile(named()), -1);
    EXPECT_EQ(qelFileExists(named()), 1);
}

/// A folder in which this user may not write. tools/long/system-calls.sh names one.
TEST_F(RealFailure, FolderThatMayOnlyBeReadTakesNoFile)
{
    const wchar_t* const folder = _wgetenv(L"QEL_READ_ONLY_FOLDER");
    if (folder == nullptr)
    {
        GTEST_SKIP() << "QEL_READ_ONLY_FOLDER names no such folder";
    }
    const std::wstring inside = std::wstring(folder) + L"\\";
    const qelString file((inside + L"new.txt").c_str());
    EXPECT_EQ(qelFileAccess(file, L"w", qelFileAccess::ANSI).isOpen(), 0);
    EXPECT_EQ(qelLogfile(file).appendWithSave(L"text"), 0);
    qelLogfile::logToFile(file, L"text");
    qelLogfile::listModules(file);
    EXPECT_EQ(qelFileExists(file), 0);
    EXPECT_EQ(qelFileAccess::makeDir((inside + L"folder").c_str()), -1);

    const qelString there((inside + L"there.txt").c_str());
    ASSERT_EQ(qelFileExists(there), 1);
    EXPECT_EQ(qelFileAccess(there, L"r", qelFileAccess::ANSI).isOpen(), 1);
    EXPECT_EQ(qelFileAccess::renameFile(there, file), -1);
    // Wine says 0 all the same.
    (void)qelFileAccess::removeFile(there);
    EXPECT_EQ(qelFileExists(there), 1);
}

// A file that is gone

TEST_F(RealFailure, LogThatIsGoneIsMadeAgain)
{
    qelLogfile log(named());
    EXPECT_EQ(log.appendWithSave(L"first"), 1);
    DeleteFileW(path().c_str());
    EXPECT_EQ(log.appendWithSave(L"second"), 1);
    EXPECT_EQ(contentOf(path()).substr(11), "second");
}

TEST_F(RealFailure, FileThatIsGone)
{
    write("text");
    DeleteFileW(path().c_str());
    EXPECT_EQ(qelFileAccess(named(), L"r", qelFileAccess::ANSI).isOpen(), 0);
    EXPECT_EQ(qelFileExists(named()), 0);
    EXPECT_EQ(qelFileAccess::removeFile(named()), -1);
    EXPECT_EQ(qelFileAccess::renameFile(named(), named(L"other.txt")), -1);
    qelString version = L"before";
    qelString file = named();
    EXPECT_EQ(qelLogfile::GetFileVersion(file, version), 0);
    EXPECT_STREQ(version.getStringW(), L"before");
    EXPECT_EQ(qelDataSourcesUtilities::testConnection((L"DRIVER={No such driver};DBQ=" + path()).c_str()), 0);
}

TEST_F(RealFailure, FolderOfTheLogThatIsGone)
{
    CreateDirectoryW(path(L"folder").c_str(), nullptr);
    qelLogfile log(named(L"folder\\own.log"));
    EXPECT_EQ(log.appendWithSave(L"text"), 1);
    DeleteFileW(path(L"folder\\own.log").c_str());
    ASSERT_TRUE(RemoveDirectoryW(path(L"folder").c_str()));
    EXPECT_EQ(log.appendWithSave(L"text"), 0);
    EXPECT_EQ(log.reset(), 1);
}

// A file that somebody else has opened for himself

TEST_F(RealFailure, FileOfSomebodyElse)
{
    write("before");
    {
        const Exclusively other(path());
        EXPECT_EQ(qelFileAccess(named(), L"r", qelFileAccess::ANSI).isOpen(), 0);
        EXPECT_EQ(qelFileAccess(named(), L"w", qelFileAccess::UTF8).isOpen(), 0);
        EXPECT_EQ(qelFileAccess::removeFile(named()), -1);
        EXPECT_EQ(qelFileAccess::renameFile(named(), named(L"other.txt")), -1);
        EXPECT_EQ(qelFileExists(named()), 1);

        qelLogfile log(named());
        EXPECT_EQ(log.appendWithSave(L"text"), 0);
        EXPECT_EQ(log.reset(), 1);
        qelLogfile::logToFile(named(), L"text");
        qelLogfile::listModules(named());
        qelString version = L"before";
        qelString file = named();
        EXPECT_EQ(qelLogfile::GetFileVersion(file, version), 0);
    }
    EXPECT_EQ(contentOf(path()), "before");
    EXPECT_EQ(qelLogfile(named()).appendWithSave(L"text"), 1);
}

TEST_F(RealFailure, ConfigurationFileOfSomebodyElseCountsAsMissing)
{
    const std::wstring file = write("<Orvalis><DataSource Platform=\"x64\" Name=\"Own\" Value=\"DBQ=own\"/></Orvalis>");
    const Exclusively other(file);
    qelDataSourcesUtilities sources{qelString(file.c_str())};
    qelString connection = L"before";
    EXPECT_EQ(sources.getConnectionString(L"Own", connection, L"x64"), 0);
    EXPECT_EQ(connection.isEmpty(), 1);
}

// A stream that was closed

TEST_F(RealFailure, ClosedFileGivesNothing)
{
    write("text");
    qelFileAccess file(named(), L"r+", qelFileAccess::ANSI);
    file.close();
    qelString text = L"before";
    int number = 7;
    char buffer[8] = {};
    EXPECT_EQ(file.isOpen(), 0);
    EXPECT_EQ(file.write(L"text"), 0);
    EXPECT_EQ(file.puts(L"text"), 0);
    EXPECT_EQ(file.read(buffer, 1, 8), 0U);
    EXPECT_EQ(file.readString(text), 0);
    EXPECT_STREQ(text.getStringW(), L"before");
    EXPECT_EQ(file.readInt(number), 0);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(file.getc(), 0);
    EXPECT_EQ(file.eof(), 1);
    EXPECT_EQ(file.seek(0, 0), -1);
    EXPECT_EQ(file.getFileLength(), 0);
    EXPECT_EQ(file.readFile(text, 8), 0U);
    EXPECT_EQ(text.isEmpty(), 1);
    file.close();
}

#if !defined(_UCRT) && !defined(_MSC_VER)
// With the UCRT a closed descriptor is an invalid parameter, which ends the process.
TEST_F(RealFailure, StreamWhoseDescriptorWasClosedGivesErrors)
{
    write("text");
    FILE* stream = nullptr;
    qelfopen(&stream, named(), L"r+");
    ASSERT_NE(stream, nullptr);
    _close(_fileno(stream));
    char buffer[8] = {};
    EXPECT_EQ(qelfread(buffer, 1, 8, stream), 0U);
    EXPECT_EQ(qelfgets(buffer, 8, stream), nullptr);
    EXPECT_EQ(qelfclose(stream), EOF);
    EXPECT_EQ(contentOf(path()), "text");
}
#endif
} // namespace
