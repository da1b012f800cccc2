// Mutated files for readFile(), the line and token readers, and the catalogue of data sources, in guarded memory.
#include "config/DataSourceFixture.h"
#include "hostile/Mutation.h"
#include "qelDataSourcesUtilities.h"
#include "qelFileAccess.h"
#include "support/TemporaryFolder.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace
{
using qelTest::Corpus;
using qelTest::GuardedHeap;
using qelTest::mutated;
using qelTest::SeededRun;
using std::string;
using std::wstring;

void write(const wstring& path, const string& bytes)
{
    FILE* file = nullptr;
    ASSERT_EQ(0, _wfopen_s(&file, path.c_str(), L"wb"));
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
}

wstring fromAnsi(const string& bytes)
{
    const string upToZero = bytes.c_str();
    if (upToZero.empty())
    {
        return wstring();
    }
    wstring wide(upToZero.size(), L'\0');
    const auto length = static_cast<int>(wide.size());
    wide.resize(static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, upToZero.data(), length, &wide[0], length)));
    return wide;
}

/// Whole units only.
wstring unitsOf(const string& bytes, size_t most)
{
    wstring wide;
    for (size_t i = 0; i + 1 < bytes.size() && wide.size() < most; i += 2)
    {
        wide +=
            static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8);
    }
    return wide;
}

struct Content
{
    wstring text; ///< up to the first zero
    size_t units;
};

/// The stated steps of readFile() on the bytes of a file.
Content contentOf(const string& bytes, size_t most)
{
    const string mark = bytes.substr(0, 2);
    if (mark == "\xFF\xFE" || mark == "\xFE\xFF")
    {
        const wstring units = unitsOf(bytes.substr(2), most);
        return {units.c_str(), units.size()};
    }
    if (bytes.size() >= 5 && bytes.compare(2, 3, "\xEF\xBB\xBF") == 0)
    {
        const wstring units = unitsOf(bytes.substr(5), most);
        return {units.c_str(), units.size()};
    }
    const string read = bytes.substr(0, most);
    return {fromAnsi(read), read.size()};
}

string utf16(const string& text)
{
    return qelTest::utf16(text);
}

const Corpus<string>& contents()
{
    static const Corpus<string> corpus = {
        {"two lines\r\nof text\r\n", utf16("sixteen bits"), "\xFE\xFF\x41\x42\x43\x44",
         "ab\xEF\xBB\xBF" + utf16("x").substr(2), "\xEF\xBB\xBF of UTF-8", "12 -7 3.5 word 1e300 99999999999",
         string(700, 'w'), "a\nb\r\rc\x1A\n"},
        {"\xFF\xFE", "\xFE\xFF", "\xEF\xBB\xBF", string(1, '\0'), string(2, '\0'), "\r\n", "\n", " ", "\t",
         string(300, 'x'), string(260, '7'), "\x1A", string("\xD8\0", 2)}};
    return corpus;
}

/// What a text mode makes of bytes or units: a line feed for each "\r\n", and nothing from an end-of-file character on.
template <class Text> Text inTextMode(const Text& text)
{
    Text delivered;
    for (size_t i = 0; i < text.size() && text[i] != 0x1A; ++i)
    {
        const bool isLineEnd = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (!isLineEnd)
        {
            delivered += text[i];
        }
    }
    return delivered;
}

wstring fromUtf8(const string& bytes)
{
    wstring wide(bytes.size(), L'\0');
    const auto length = static_cast<int>(bytes.size());
    wide.resize(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), length, &wide[0], length)));
    return wide;
}

struct Form
{
    bool utf16;
    bool utf8;   ///< else ANSI
    size_t mark; ///< its length
};

/// The mark, else the key, says what the bytes are.
Form formOf(const string& bytes, qelFileAccess::encodeType key)
{
    if (bytes.compare(0, 2, "\xFF\xFE") == 0 || bytes.compare(0, 2, "\xFE\xFF") == 0)
    {
        return {true, false, 2};
    }
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
    {
        return {false, true, 3};
    }
    return {key == qelFileAccess::UTF16LE, key == qelFileAccess::UTF8, 0};
}

/// What readFile() gives of a file that is opened with a key.
Content contentByKey(const string& bytes, qelFileAccess::encodeType key, bool textMode, size_t most)
{
    const Form form = formOf(bytes, key);
    const string text = bytes.substr(form.mark);
    if (!form.utf16 && !form.utf8)
    {
        const string read = (textMode ? inTextMode(text) : text).substr(0, most);
        return {fromAnsi(read), read.size()};
    }
    const wstring all = form.utf16 ? unitsOf(text, string::npos) : fromUtf8(text);
    const wstring units = (textMode ? inTextMode(all) : all).substr(0, most);
    return {units.c_str(), units.size()};
}

bool isContinuation(char c)
{
    return (c & 0xC0) == 0x80;
}

/// The same text of UTF-8 with a question mark for the first byte of any character that breaks off: at the end of what
/// it converts, Wine takes characters behind such a byte for a part of it. Other malformed text stays.
string withoutBrokenCharacters(string text)
{
    for (size_t i = 0; i < text.size(); ++i)
    {
        const int first = static_cast<unsigned char>(text[i]);
        const size_t more = first < 0xC2 || first > 0xF4 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
        for (size_t k = 1; k <= more; ++k)
        {
            if (i + k >= text.size() || !isContinuation(text[i + k]))
            {
                text[i] = '?';
            }
        }
    }
    return text;
}

/// readFile() takes UTF-8 in blocks of so many bytes.
const int kBlock = 0x10000;

/// A file with or without a mark; where it `isLong`, the first block ends in its hostile part or close to it.
string contentFor(SeededRun& run, qelFileAccess::encodeType key, bool isLong)
{
    static const string marks[] = {"", "", "\xFF\xFE", "\xEF\xBB\xBF", "\xEF\xBB\xBF", "\xFE\xFF"};
    static const string fillings[] = {"x",
                                      "x\r\n",
                                      "\xF0\x9F\x98\x80",
                                      "\xE2\x82\xAC\r\n",
                                      "\x80",
                                      qelTest::utf16(L"x"),
                                      qelTest::utf16(L"\r\n"),
                                      qelTest::utf16(L"\xD83D\xDE00")};
    static const Corpus<string> corpus = {
        {"one\r\ntwo\r\n", "<\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80>\r\n", "\xF0\x9F\x98\x80\xF0\x9F\x98\x80\r\n\r\n",
         qelTest::utf16(L"one\r\n\x20AC\xD83D\xDE00\r\n"), qelTest::utf16(L"\r\r\n\xD83D\r\n\xDE00"),
         "\xE9\x80\r\n\r\r\n"},
        {"\r\n", "\r", "\n", "\x1A", "\xF0\x9F\x98\x80", "\xE2\x82\xAC", "\xC3", "\xE2\x82", "\xF0\x9F\x98",
         "\x80\x80\x80\x80\x80", "\xEF\xBB\xBF", "\xFF\xFE", string(1, '\0'), qelTest::utf16(L"\r"),
         qelTest::utf16(L"\n"), qelTest::utf16(L"\x1A"), qelTest::utf16(L"\xD83D")}};
    const string mark = run.pick(marks);
    const string text = mutated(run, corpus);
    string filling;
    if (isLong)
    {
        const string& piece = run.pick(fillings);
        // The block ends in the text, or up to four bytes before or behind it.
        const int before = run.below(static_cast<int>(text.size()) + 9) - 4;
        while (static_cast<int>(filling.size()) < kBlock - before)
        {
            filling += piece;
        }
        filling.resize(static_cast<size_t>(kBlock - before));
    }
    const string bytes = mark + filling + text;
    const Form form = formOf(bytes, key);
    return form.utf8 ? bytes.substr(0, form.mark) + withoutBrokenCharacters(bytes.substr(form.mark)) : bytes;
}
} // namespace

TEST(HostileFiles, AreReadWholeByTheStatedSteps)
{
    const qelTest::TemporaryFolder folder;
    const wstring path = folder.path() + L"\\content.txt";
    SeededRun run(20);
    const GuardedHeap heap;
    while (run.next())
    {
        const string bytes = mutated(run, contents());
        write(path, bytes);
        const size_t most = run.oneIn(2) ? bytes.size() : static_cast<size_t>(run.below(40));
        const qelFileAccess file(path.c_str(), L"rb", qelFileAccess::ANSI);
        qelString text = L"before";
        const size_t units = file.readFile(text, most);
        const Content expected = contentOf(bytes, most);
        EXPECT_EQ(expected.units, units);
        EXPECT_EQ(expected.text, text.getStringW());
    }
}

TEST(HostileFiles, AreReadWholeWithEveryKeyAndMode)
{
    static const qelFileAccess::encodeType keys[] = {qelFileAccess::UNICODE_TEXT, qelFileAccess::UTF8,
                                                     qelFileAccess::UTF16LE};
    const qelTest::TemporaryFolder folder;
    const wstring path = folder.path() + L"\\content.txt";
    SeededRun run(20);
    const GuardedHeap heap;
    while (run.next())
    {
        const qelFileAccess::encodeType key = run.pick(keys);
        const bool isLong = run.oneIn(5);
        const string bytes = contentFor(run, key, isLong);
        write(path, bytes);
        const int units = isLong ? kBlock / run.between(1, 2) + run.between(-8, 8) : run.below(40);
        const size_t most = run.oneIn(2) ? bytes.size() : static_cast<size_t>(units);
        for (const bool textMode : {false, true})
        {
            const qelFileAccess file(path.c_str(), textMode ? L"r" : L"rb", key);
            if (file.isOpen() == 0)
            {
                // Some runtimes refuse this mark.
                EXPECT_EQ("\xFE\xFF", bytes.substr(0, 2));
                continue;
            }
            const Content expected = contentByKey(bytes, key, textMode, most);
            // Each time from the start.
            for (int reading = 0; reading < 2; ++reading)
            {
                qelString text = L"before";
                EXPECT_EQ(expected.units, file.readFile(text, most));
                EXPECT_TRUE(expected.text == text.getStringW()) << "key " << key << (textMode ? ", text" : ", binary")
                                                                << ", " << bytes.size() << " bytes, most " << most;
            }
        }
    }
}

TEST(HostileFiles, LinesAndTokensEndSomewhere)
{
    static const qelFileAccess::encodeType encodings[] = {qelFileAccess::ANSI, qelFileAccess::UNICODE_TEXT,
                                                          qelFileAccess::UTF8, qelFileAccess::UTF16LE};
    const qelTest::TemporaryFolder folder;
    const wstring path = folder.path() + L"\\content.txt";
    SeededRun run(20);
    const GuardedHeap heap;
    while (run.next())
    {
        const string bytes = mutated(run, contents());
        write(path, bytes);
        qelFileAccess file(path.c_str(), L"r", run.pick(encodings));
        ASSERT_EQ(1, file.isOpen());
        qelString text;
        int number = 0;
        double real = 0;
        for (int call = 0; call < 30; ++call)
        {
            switch (run.below(6))
            {
            case 0:
                EXPECT_LT(file.getStringW(text, 256).length(), 256);
                break;
            case 1:
                EXPECT_LE(file.readString(text), 1);
                EXPECT_LT(text.length(), 256);
                break;
            case 2:
                EXPECT_LE(file.readInt(number), 1);
                break;
            case 3:
                EXPECT_LE(file.readDouble(real), 1);
                break;
            case 4:
                EXPECT_LE(file.readFile(text, static_cast<size_t>(run.below(50))), 50U);
                break;
            default:
                EXPECT_EQ(static_cast<long>(bytes.size()), file.getFileLength());
            }
        }
    }
}

namespace
{
wstring trimmed(const wstring& text)
{
    const size_t first = text.find_first_not_of(L"\t\n ");
    return first == wstring::npos ? wstring() : text.substr(first, text.find_last_not_of(L"\t\n ") - first + 1);
}

struct Entry
{
    wstring name;
    wstring platform;
    wstring value;
};

/// What lies between the first two quotes behind the word; false when there is no such thing.
bool takeAttribute(const wstring& element, const wchar_t* word, wstring& value)
{
    const size_t at = element.find(word);
    const size_t open = at == wstring::npos ? at : element.find(L'"', at);
    const size_t close = open == wstring::npos ? open : element.find(L'"', open + 1);
    if (close == wstring::npos)
    {
        return false;
    }
    value = trimmed(element.substr(open + 1, close - open - 1));
    return true;
}

/// The stated steps on the text of a configuration.
std::vector<Entry> entriesOf(const wstring& text)
{
    std::vector<Entry> entries;
    const size_t open = text.find(L"<Orvalis>");
    const size_t close = text.find(L"</Orvalis>");
    const size_t begin = open + 9;
    if (open == wstring::npos || close == wstring::npos || begin > close)
    {
        return entries;
    }
    const wstring section = text.substr(begin, close - begin);
    for (size_t at = 0; at < section.size();)
    {
        const size_t tag = section.find(L"<DataSource", at);
        const size_t end = section.find(L"/>", at);
        if (tag == wstring::npos || end == wstring::npos)
        {
            break;
        }
        const size_t from = tag + 11;
        const wstring element = from < end ? section.substr(from, end - from) : wstring();
        Entry entry;
        if (takeAttribute(element, L"Platform", entry.platform) && takeAttribute(element, L"Name", entry.name) &&
            takeAttribute(element, L"Value", entry.value))
        {
            entries.push_back(entry);
        }
        at = end + 2;
    }
    return entries;
}

class HostileConfiguration : public qelTest::DataSourceTest
{
protected:
    HostileConfiguration()
        : m_drivers(HKEY_LOCAL_MACHINE, qelTest::kDriversKey)
    {
        m_drivers.setText(qelTest::kDefaultDriver, L"Installed");
    }

    qelTest::SavedRegistryKey m_drivers;
};
} // namespace

TEST_F(HostileConfiguration, GivesTheFirstEntryOfEachName)
{
    static const Corpus<string> corpus = {
        {qelTest::configuration("<DataSource Name=\"A\" Platform=\"x64\" Value=\"DBQ=a.mdb\"/>"),
         qelTest::configuration(
             "<DataSource Value=\"v\" Name=\" B \" Platform=\"x86\"/>\r\n<DataSource Name=\"A\" Platform=\"x86\" "
             "Value=\"DBQ=b;X=1\" />"),
         qelTest::configuration("")},
        {"<DataSource", "/>", "\"", "Name", "Platform=\"x64\"", "Value", "<Orvalis>", "</Orvalis>", "=", " ",
         "DBQ=", "<DataSource Name=\"C\" Platform=\"\" Value=\"c\"/>", "Name=\"A\""}};
    static const wchar_t* const names[] = {L"A", L"B", L"C", L""};
    SeededRun run(20);
    // Two in turn: the catalogue takes each for a new one.
    const wstring paths[] = {m_folder.path() + L"\\one.xml", m_folder.path() + L"\\two.xml"};
    const GuardedHeap heap;
    while (run.next())
    {
        string text = mutated(run, corpus);
        // Beyond ASCII it depends on the code page, and that is another test's.
        std::replace_if(text.begin(), text.end(), [](char c) { return c < 0 || c == '\x1A' || c == '\r'; }, ' ');
        const wstring& path = paths[run.step() % 2];
        write(path, run.oneIn(2) ? utf16(text) : text);
        use(path);

        std::vector<Entry> entries = entriesOf(wstring(text.begin(), text.end()));
        for (const wchar_t* const name : names)
        {
            for (const wchar_t* const platform : {L"x64", L"x86", L""})
            {
                const auto entry = std::find_if(entries.begin(), entries.end(), [&](const Entry& one) {
                    return _wcsicmp(one.name.c_str(), name) == 0 && _wcsicmp(one.platform.c_str(), platform) == 0;
                });
                const wstring value = entry == entries.end() ? wstring() : entry->value;
                const size_t key = value.find(L"DBQ=");
                const qelTest::Answer expected =
                    key == wstring::npos ? qelTest::Answer{0, value}
                                         : qelTest::Answer{1, wstring(value).insert(key + 4, L"D:\\Data\\")};
                EXPECT_EQ(expected, ask(name, platform)) << text;
            }
        }
    }
}
