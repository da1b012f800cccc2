#include "qelDataSourcesUtilities.h"

#include "config/DataSourceFixture.h"
#include "support/AnsiCodePage.h"
#include "support/FailingAllocation.h"
#include "support/DebugOutput.h"

#include <gtest/gtest.h>

#include <locale.h>

#include <algorithm>
#include <chrono>
#include <type_traits>

using qelTest::Answer;

namespace
{
std::wstring text(const qelString& string)
{
    return string.getStringW();
}

// The record

TEST(qelDataSource, IsEmptyByDefault)
{
    const qelDataSource source;
    EXPECT_EQ(source.m_Name.isEmpty(), 1);
    EXPECT_EQ(source.m_Platform.isEmpty(), 1);
    EXPECT_EQ(source.m_ConnectionString.isEmpty(), 1);
}

TEST(qelDataSource, TakesNameConnectionStringAndPlatformInThisOrder)
{
    const qelDataSource source(L"name", L"connection", L"platform");
    EXPECT_EQ(text(source.m_Name), L"name");
    EXPECT_EQ(text(source.m_ConnectionString), L"connection");
    EXPECT_EQ(text(source.m_Platform), L"platform");
}

TEST(qelDataSource, KeepsItsFieldsInTheStatedOrder)
{
    const qelDataSource source;
    const char* start = reinterpret_cast<const char*>(&source);
    EXPECT_EQ(reinterpret_cast<const char*>(&source.m_Name) - start, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&source.m_Platform) - start, 24);
    EXPECT_EQ(reinterpret_cast<const char*>(&source.m_ConnectionString) - start, 40);
    EXPECT_EQ(sizeof(source), 56u);
    EXPECT_TRUE(std::has_virtual_destructor<qelDataSource>::value);
}

TEST(qelDataSource, CopiesAllThreeTexts)
{
    const qelDataSource source(L"name", L"connection", L"platform");
    const qelDataSource copied(source);
    qelDataSource assigned(L"a", L"b", L"c");
    assigned = source;
    for (const qelDataSource& copy : {copied, assigned})
    {
        EXPECT_EQ(text(copy.m_Name), L"name");
        EXPECT_EQ(text(copy.m_ConnectionString), L"connection");
        EXPECT_EQ(text(copy.m_Platform), L"platform");
    }
}

TEST(qelDataSource, SurvivesAssignmentToItself)
{
    qelDataSource source(L"name", L"connection", L"platform");
    const qelDataSource& same = source;
    source = same;
    EXPECT_EQ(text(source.m_Name), L"name");
    EXPECT_EQ(text(source.m_ConnectionString), L"connection");
    EXPECT_EQ(text(source.m_Platform), L"platform");
}

TEST(qelDataSource, EqualsByNameAndPlatformWithoutRegardToCase)
{
    const qelDataSource source(L"Mapping", L"connection", L"x64");
    EXPECT_TRUE(source == qelDataSource(L"MAPPING", L"connection", L"X64"));
    EXPECT_FALSE(source == qelDataSource(L"Mappings", L"connection", L"x64"));
    EXPECT_FALSE(source == qelDataSource(L"Mapping", L"connection", L"x86"));
}

TEST(qelDataSource, EqualsWhateverTheConnectionString)
{
    EXPECT_TRUE(qelDataSource(L"Mapping", L"one", L"x64") == qelDataSource(L"Mapping", L"other", L"x64"));
}

// Splitting, and connection strings for files

struct Split
{
    int result;
    std::wstring head;
    std::wstring file;
};

Split split(const wchar_t* connection)
{
    qelString head = L"head from before";
    qelString file = L"file from before";
    const int result = qelDataSourcesUtilities::splitConnectionString(connection, head, file);
    return {result, text(head), text(file)};
}

TEST(qelDataSourcesSplit, CutsBehindTheKeyAndKeepsAllThatFollows)
{
    const Split parts = split(L"DRIVER={x};DBQ=D:\\m.mdb;X=1");
    EXPECT_EQ(parts.result, 1);
    EXPECT_EQ(parts.head, L"DRIVER={x};DBQ=");
    EXPECT_EQ(parts.file, L"D:\\m.mdb;X=1");
}

TEST(qelDataSourcesSplit, EmptiesBothPartsWithoutKey)
{
    for (const wchar_t* connection : {L"DRIVER={x}", L"", L"DBQ", L"dbq=a.mdb"})
    {
        const Split parts = split(connection);
        EXPECT_EQ(parts.result, 0);
        EXPECT_EQ(parts.head, L"");
        EXPECT_EQ(parts.file, L"");
    }
}

TEST(qelDataSourcesSplit, CutsAtTheFirstOfSeveralKeys)
{
    const Split parts = split(L"DBQ=a;DBQ=b");
    EXPECT_EQ(parts.result, 1);
    EXPECT_EQ(parts.head, L"DBQ=");
    EXPECT_EQ(parts.file, L"a;DBQ=b");
}

TEST(qelDataSourcesSplit, GivesAnEmptyFileWhenTheKeyEndsTheText)
{
    const Split parts = split(L"X=1;DBQ=");
    EXPECT_EQ(parts.result, 1);
    EXPECT_EQ(parts.head, L"X=1;DBQ=");
    EXPECT_EQ(parts.file, L"");
}

TEST(qelDataSourcesSplit, MaySplitATextIntoItself)
{
    qelString connection = L"X=1;DBQ=a";
    qelString file;
    EXPECT_EQ(qelDataSourcesUtilities::splitConnectionString(connection, connection, file), 1);
    EXPECT_EQ(text(connection), L"X=1;DBQ=");
    EXPECT_EQ(text(file), L"a");
}

TEST(qelDataSourcesForFile, NamesTheInstalledDefaultDriverAndTheFileUnchanged)
{
    qelString connection;
    EXPECT_EQ(qelDataSourcesUtilities::getConnectionStringForFile(L"..\\a b;%s.mdb", connection), 1);
    EXPECT_EQ(text(connection), L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};UID=;PWD=;DBQ=..\\a b;%s.mdb");
}

TEST(qelDataSourcesForFile, TakesAnEmptyFileName)
{
    qelString connection = L"from before";
    EXPECT_EQ(qelDataSourcesUtilities::getConnectionStringForFile(L"", connection), 1);
    EXPECT_EQ(text(connection), L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};UID=;PWD=;DBQ=");
}

// The object

TEST(qelDataSourcesUtilities, HoldsNothingButItsVirtualDestructor)
{
    EXPECT_EQ(sizeof(qelDataSourcesUtilities), sizeof(void*));
    EXPECT_TRUE(std::has_virtual_destructor<qelDataSourcesUtilities>::value);
    EXPECT_TRUE(std::is_copy_constructible<qelDataSourcesUtilities>::value);
    EXPECT_TRUE(std::is_copy_assignable<qelDataSourcesUtilities>::value);
}

// Which file is read, and when

class qelDataSourcesConfigurationFile : public qelTest::DataSourceTest
{
protected:
    static std::string element(const std::string& value)
    {
        return qelTest::configuration("<DataSource Name=\"Own\" Platform=\"x64\" Value=\"" + value + "\"/>");
    }

    /// Constructs an object with this path, and forgets it again.
    static void mention(const std::wstring& path) { const qelDataSourcesUtilities sources(path.c_str()); }
};

TEST_F(qelDataSourcesConfigurationFile, IsBelowTheDataFolderByDefault)
{
    m_userInstallation.setText(L"DataPath", m_folder.path(L"data"));
    m_folder.write(L"data\\Configuration\\DatabaseConfiguration.xml", element("default file"));
    use(L"");
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"default file"}));
}

TEST_F(qelDataSourcesConfigurationFile, IsBelowTheMachinesDataFolderWithoutOneOfTheUser)
{
    m_userInstallation.remove(L"DataPath");
    m_machineInstallation.setText(L"DataPath", m_folder.path(L"shared\\"));
    m_folder.write(L"shared\\Configuration\\DatabaseConfiguration.xml", element("shared file"));
    use(L"");
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"shared file"}));
}

TEST_F(qelDataSourcesConfigurationFile, ByDefaultIsTheSameAsNamedInFull)
{
    m_userInstallation.setText(L"DataPath", m_folder.path(L"data"));
    const std::wstring file = m_folder.write(L"data\\Configuration\\DatabaseConfiguration.xml", element("first"));
    use(L"");
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
    m_folder.write(L"data\\Configuration\\DatabaseConfiguration.xml", element("second"));
    use(file);
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
}

TEST_F(qelDataSourcesConfigurationFile, IsNotReadBeforeTheFirstQuestion)
{
    use(m_folder.path(L"late.xml"));
    m_folder.write(L"late.xml", element("written late"));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"written late"}));
}

TEST_F(qelDataSourcesConfigurationFile, IsReadOnceOnly)
{
    const std::wstring file = configure(element("first"));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
    DeleteFileW(file.c_str());
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
}

TEST_F(qelDataSourcesConfigurationFile, IsNotReadAgainWhenNamedAgainInAnyLetterCase)
{
    use(m_folder.write(L"same.xml", element("first")));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
    m_folder.write(L"same.xml", element("second"));
    mention(m_folder.path(L"same.xml"));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
    mention(m_folder.path(L"SAME.XML"));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
}

TEST_F(qelDataSourcesConfigurationFile, IsReadAgainAfterADifferentOneWasNamed)
{
    use(m_folder.write(L"same.xml", element("first")));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
    m_folder.write(L"same.xml", element("second"));
    mention(m_folder.path(L"other.xml"));
    mention(m_folder.path(L"same.xml"));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"second"}));
}

TEST_F(qelDataSourcesConfigurationFile, IsSharedByAllObjects)
{
    configure(element("first"));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
    mention(m_folder.write(L"other.xml", element("other")));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"other"}));
}

TEST_F(qelDataSourcesConfigurationFile, IsNotNamedByCopies)
{
    configure(element("first"));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
    qelDataSourcesUtilities copy(*m_sources);
    copy = *m_sources;
    qelString connection;
    EXPECT_EQ(copy.getConnectionString(L"Own", connection, L"x64"), 0);
    EXPECT_EQ(text(connection), L"first");
}

TEST_F(qelDataSourcesConfigurationFile, LeavesTheBuiltInSourcesAloneWhenMissingOrEmpty)
{
    m_userConnections.setText(L"QELMapping2020", L"QELMapping2020");
    use(m_folder.path(L"missing.xml"));
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{1, L"QELMapping2020"}));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L""}));
    configure("");
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{1, L"QELMapping2020"}));
    EXPECT_EQ(ask(L"Own"), (Answer{0, L""}));
}

// Built-in data sources

class qelDataSourcesBuiltIn : public qelTest::DataSourceTest
{
protected:
    void SetUp() override { configureElements(""); }
};

TEST_F(qelDataSourcesBuiltIn, AreFoundWithoutRegardToCase)
{
    m_machineConnections.setText(L"PelionProfiles2020", L"DSN=PelionProfiles2020");
    EXPECT_EQ(ask(L"pelionprofiles2020", L"X64"), (Answer{1, L"DSN=PelionProfiles2020"}));
}

TEST_F(qelDataSourcesBuiltIn, ComeFromTheUsersRegistryFirst)
{
    m_machineConnections.setText(L"QELMapping2020", L"DSN=QELMapping2020 of the machine");
    m_userConnections.setText(L"QELMapping2020", L"DSN=QELMapping2020 of the user");
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{1, L"DSN=QELMapping2020 of the user"}));
}

TEST_F(qelDataSourcesBuiltIn, AreMeantForOnePlatformOnly)
{
    m_userConnections.setText(L"PelionProfiles2020", L"DSN=PelionProfiles2020");
    m_userConnections.setText(L"QELMapping2020", L"DSN=QELMapping2020");
    for (const wchar_t* name : {L"PelionProfiles2020", L"QELMapping2020", L"PelionCurrentProject"})
    {
        EXPECT_EQ(ask(name, L"x86"), (Answer{0, L""}));
    }
}

TEST_F(qelDataSourcesBuiltIn, WithoutRegisteredConnectionAreEmptyAndFail)
{
    EXPECT_EQ(ask(L"PelionProfiles2020"), (Answer{0, L""}));
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesBuiltIn, TakeTheirPlaceInTheCatalogueEvenWhenEmpty)
{
    configureElements("<DataSource Name=\"QELMapping2020\" Platform=\"x64\" Value=\"of the file\"/>");
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesBuiltIn, WinOverTheConfigurationFile)
{
    m_userConnections.setText(L"QELMapping2020", L"QELMapping2020 of the registry");
    configureElements("<DataSource Name=\"qelmapping2020\" Platform=\"X64\" Value=\"QELMapping2020 of the file\"/>"
                      "<DataSource Name=\"QELMapping2020\" Platform=\"x86\" Value=\"QELMapping2020 for x86\"/>");
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{1, L"QELMapping2020 of the registry"}));
    EXPECT_EQ(ask(L"QELMapping2020", L"x86"), (Answer{1, L"QELMapping2020 for x86"}));
}

TEST_F(qelDataSourcesBuiltIn, NameTheInstalledDriver)
{
    m_userConnections.setText(L"PelionProfiles2020", L"DRIVER={Varnel ODBC Driver};X=PelionProfiles2020");
    m_userConnections.setText(L"QELMapping2020", L"DRIVER={Varnel ODBC Driver};X=QELMapping2020");
    EXPECT_EQ(ask(L"PelionProfiles2020"),
              (Answer{1, L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};X=PelionProfiles2020"}));
    EXPECT_EQ(ask(L"QELMapping2020"),
              (Answer{1, L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};X=QELMapping2020"}));
}

TEST_F(qelDataSourcesBuiltIn, CurrentProjectUsesTheHeadOfTheProfilesAndShowsTheDataFolderTwice)
{
    m_userConnections.setText(L"PelionProfiles2020", L"DRIVER={Varnel ODBC Driver};UID=u;DBQ=D:\\profiles.mdb;X=1");
    EXPECT_EQ(ask(L"PelionCurrentProject"), (Answer{1, L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};UID=u;"
                                                       L"DBQ=D:\\Data\\D:\\Data\\Kernel\\Data\\model.mdb"}));
}

TEST_F(qelDataSourcesBuiltIn, CurrentProjectKeepsItsPathWhenTheHeadNamesABuiltInSource)
{
    m_userConnections.setText(L"PelionProfiles2020", L"DSN=PelionProfiles2020;DBQ=profiles.mdb");
    EXPECT_EQ(ask(L"PelionCurrentProject"),
              (Answer{1, L"DSN=PelionProfiles2020;DBQ=D:\\Data\\Kernel\\Data\\model.mdb"}));
}

TEST_F(qelDataSourcesBuiltIn, CurrentProjectTakesNothingBehindTheKeyFromTheProfiles)
{
    m_userConnections.setText(L"PelionProfiles2020", L"DBQ=PelionProfiles2020.mdb");
    EXPECT_EQ(ask(L"PelionCurrentProject"), (Answer{1, L"DBQ=D:\\Data\\D:\\Data\\Kernel\\Data\\model.mdb"}));
}

TEST_F(qelDataSourcesBuiltIn, CurrentProjectIsABarePathWithoutDatabaseKeyInTheProfiles)
{
    m_userConnections.setText(L"PelionProfiles2020", L"DSN=something");
    EXPECT_EQ(ask(L"PelionCurrentProject"), (Answer{0, L"D:\\Data\\Kernel\\Data\\model.mdb"}));
}

TEST_F(qelDataSourcesBuiltIn, CurrentProjectFollowsTheMachinesDataFolder)
{
    m_userInstallation.remove(L"DataPath");
    m_machineInstallation.setText(L"DataPath", L"E:\\Shared\\");
    EXPECT_EQ(ask(L"PelionCurrentProject"), (Answer{0, L"E:\\Shared\\Kernel\\Data\\model.mdb"}));
}

// Answers

class qelDataSourcesAnswer : public qelTest::DataSourceTest
{
protected:
    /// The answer for a data source of the configuration file with this connection string.
    Answer answerFor(const std::string& value)
    {
        configureElements("<DataSource Name=\"Own\" Platform=\"x64\" Value=\"" + value + "\"/>");
        return ask(L"Own");
    }
};

TEST_F(qelDataSourcesAnswer, HasTheDataFolderBehindTheDatabaseKey)
{
    EXPECT_EQ(answerFor("DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};DBQ=Projects\\a.mdb"),
              (Answer{1, L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};DBQ=D:\\Data\\Projects\\a.mdb"}));
}

TEST_F(qelDataSourcesAnswer, KeepsWhatFollowsTheDatabaseFile)
{
    EXPECT_EQ(answerFor("DBQ=a.mdb;UID=me;PWD=p"), (Answer{1, L"DBQ=D:\\Data\\a.mdb;UID=me;PWD=p"}));
}

TEST_F(qelDataSourcesAnswer, HasTheDataFolderInFrontOfAnAbsolutePathToo)
{
    EXPECT_EQ(answerFor("DBQ=C:\\a.mdb"), (Answer{1, L"DBQ=D:\\Data\\C:\\a.mdb"}));
    EXPECT_EQ(answerFor("DBQ=D:\\Data\\a.mdb"), (Answer{1, L"DBQ=D:\\Data\\D:\\Data\\a.mdb"}));
    EXPECT_EQ(answerFor("DBQ=\\\\server\\a.mdb"), (Answer{1, L"DBQ=D:\\Data\\\\\\server\\a.mdb"}));
}

TEST_F(qelDataSourcesAnswer, HasTheDataFolderBehindTheFirstOfSeveralKeys)
{
    EXPECT_EQ(answerFor("DBQ=a;DBQ=b"), (Answer{1, L"DBQ=D:\\Data\\a;DBQ=b"}));
}

TEST_F(qelDataSourcesAnswer, HasOnlyTheBackslashWithoutDataFolder)
{
    m_userInstallation.setText(L"DataPath", L"");
    EXPECT_EQ(answerFor("DBQ=a.mdb"), (Answer{1, L"DBQ=\\a.mdb"}));
}

TEST_F(qelDataSourcesAnswer, HasTheMachinesDataFolderWithoutOneOfTheUser)
{
    m_userInstallation.remove(L"DataPath");
    m_machineInstallation.setText(L"DataPath", L"E:\\Shared\\");
    EXPECT_EQ(answerFor("DBQ=a.mdb"), (Answer{1, L"DBQ=E:\\Shared\\a.mdb"}));
}

TEST_F(qelDataSourcesAnswer, FollowsTheDataFolderOfTheMoment)
{
    EXPECT_EQ(answerFor("DBQ=a.mdb"), (Answer{1, L"DBQ=D:\\Data\\a.mdb"}));
    m_userInstallation.setText(L"DataPath", L"E:\\Moved");
    EXPECT_EQ(ask(L"Own"), (Answer{1, L"DBQ=E:\\Moved\\a.mdb"}));
}

TEST_F(qelDataSourcesAnswer, IsUnchangedWhereItNamesABuiltInSourceAnywhere)
{
    EXPECT_EQ(answerFor("DBQ=my PelionProfiles2020.mdb"), (Answer{1, L"DBQ=my PelionProfiles2020.mdb"}));
    EXPECT_EQ(answerFor("DBQ=QELMapping2020"), (Answer{1, L"DBQ=QELMapping2020"}));
    EXPECT_EQ(answerFor("PelionCurrentProject;DBQ=a"), (Answer{1, L"PelionCurrentProject;DBQ=a"}));
    EXPECT_EQ(answerFor("DSN=PelionCurrentProject"), (Answer{1, L"DSN=PelionCurrentProject"}));
}

TEST_F(qelDataSourcesAnswer, LooksForBuiltInNamesAndTheKeyInTheirOwnLetterCase)
{
    EXPECT_EQ(answerFor("DBQ=pelionprofiles2020.mdb"), (Answer{1, L"DBQ=D:\\Data\\pelionprofiles2020.mdb"}));
    EXPECT_EQ(answerFor("dbq=a.mdb"), (Answer{0, L"dbq=a.mdb"}));
}

TEST_F(qelDataSourcesAnswer, IsZeroWithTheTextWhereThereIsNeitherKeyNorBuiltInName)
{
    EXPECT_EQ(answerFor("DSN=other;UID=me"), (Answer{0, L"DSN=other;UID=me"}));
}

TEST_F(qelDataSourcesAnswer, IsZeroAndEmptyForAnEmptyConnectionString)
{
    const qelTest::DebugOutput debugger;
    EXPECT_EQ(answerFor(""), (Answer{0, L""}));
    EXPECT_TRUE(debugger.texts().empty());
}

TEST_F(qelDataSourcesAnswer, NamesTheInstalledDriver)
{
    EXPECT_EQ(answerFor("DRIVER={Varnel ODBC Driver};"),
              (Answer{0, L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};"}));
}

TEST_F(qelDataSourcesAnswer, ToAnUnknownNameIsZeroEmptyAndToldToTheDebuggerInThreeTexts)
{
    configureElements("<DataSource Name=\"Own\" Platform=\"x64\" Value=\"v\"/>");
    const qelTest::DebugOutput debugger;
    EXPECT_EQ(ask(L"Unknown %s"), (Answer{0, L""}));
    EXPECT_EQ(debugger.texts(),
              (std::vector<std::wstring>{L"\n Connection string not found for datasource '", L"Unknown %s", L"'\n"}));
}

TEST_F(qelDataSourcesAnswer, DependsOnThePlatform)
{
    configureElements("<DataSource Name=\"Own\" Platform=\"x86\" Value=\"small\"/>"
                      "<DataSource Name=\"Own\" Platform=\"ARM\" Value=\"cool\"/>");
    EXPECT_EQ(ask(L"own", L"X86"), (Answer{0, L"small"}));
    EXPECT_EQ(ask(L"OWN", L"arm"), (Answer{0, L"cool"}));
    EXPECT_EQ(ask(L"Own", L"x64"), (Answer{0, L""}));
    EXPECT_EQ(ask(L"Own", L""), (Answer{0, L""}));
}

TEST_F(qelDataSourcesAnswer, IsTheFirstOfSeveralEntries)
{
    configureElements("<DataSource Name=\"Own\" Platform=\"x64\" Value=\"first\"/>"
                      "<DataSource Name=\"Own\" Platform=\"x64\" Value=\"second\"/>");
    EXPECT_EQ(ask(L"Own"), (Answer{0, L"first"}));
}

TEST_F(qelDataSourcesAnswer, MayReplaceTheTextThatHeldTheName)
{
    configureElements("<DataSource Name=\"Own\" Platform=\"x64\" Value=\"v\"/>");
    qelString both = L"Own";
    EXPECT_EQ(m_sources->getConnectionString(both, both, L"x64"), 0);
    EXPECT_EQ(text(both), L"v");
}

// What the reader of the configuration file accepts. The values have no "DBQ=", so they are answered as they are.

class qelDataSourcesText : public qelTest::DataSourceTest
{
protected:
    const std::string m_good = "<DataSource Name=\"Good\" Platform=\"x64\" Value=\"good\"/>";

    /// Whether a good element that follows these is still read.
    bool isReadAfter(const std::string& elements)
    {
        configureElements(elements + m_good);
        return ask(L"Good") == Answer{0, L"good"};
    }
};

TEST_F(qelDataSourcesText, TakesAttributesInAnyOrder)
{
    configureElements("<DataSource Value=\"1\" Name=\"A\" Platform=\"x64\"/>"
                      "<DataSource Platform=\"x64\" Value=\"2\" Name=\"B\"/>"
                      "<DataSource Name=\"C\" Value=\"3\" Platform=\"x64\"/>");
    EXPECT_EQ(ask(L"A"), (Answer{0, L"1"}));
    EXPECT_EQ(ask(L"B"), (Answer{0, L"2"}));
    EXPECT_EQ(ask(L"C"), (Answer{0, L"3"}));
}

TEST_F(qelDataSourcesText, TakesElementsOverSeveralLinesAndWithoutSpaceBetween)
{
    configureElements("<DataSource\r\n\tName = \"A\"\r\n\tPlatform = \"x64\"\r\n\tValue = \"1\"\r\n\t/><DataSource "
                      "Name=\"B\"Platform=\"x64\"Value=\"2\"/>");
    EXPECT_EQ(ask(L"A"), (Answer{0, L"1"}));
    EXPECT_EQ(ask(L"B"), (Answer{0, L"2"}));
}

TEST_F(qelDataSourcesText, SkipsElementsThatLackAnAttributeAndReadsTheOthers)
{
    EXPECT_TRUE(isReadAfter("<DataSource Name=\"A\" Platform=\"x64\"/>"));
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
    EXPECT_TRUE(isReadAfter("<DataSource Name=\"A\" Value=\"v\"/>"));
    EXPECT_EQ(ask(L"A", L""), (Answer{0, L""}));
    EXPECT_TRUE(isReadAfter("<DataSource Platform=\"x64\" Value=\"v\"/>"));
    EXPECT_EQ(ask(L""), (Answer{0, L""}));
    EXPECT_TRUE(isReadAfter("<DataSource/>"));
}

TEST_F(qelDataSourcesText, SkipsElementsWithAnUnfinishedValue)
{
    EXPECT_TRUE(isReadAfter("<DataSource Name=\"A\" Platform=\"x64\" Value=\"v/>"));
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
    EXPECT_TRUE(isReadAfter("<DataSource Name=\"A\" Platform=\"x64\" Value=\"/>"));
    EXPECT_TRUE(isReadAfter("<DataSource Name=\"A\" Platform=\"x64\" Value=v/>"));
    EXPECT_TRUE(isReadAfter("<DataSource Name='A' Platform='x64' Value='v'/>"));
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, TakesEmptyValues)
{
    configureElements("<DataSource Name=\"\" Platform=\"\" Value=\"nameless\"/>");
    EXPECT_EQ(ask(L"", L""), (Answer{0, L"nameless"}));
}

TEST_F(qelDataSourcesText, MatchesNamesInTheirOwnLetterCase)
{
    EXPECT_TRUE(isReadAfter("<DataSource name=\"A\" Platform=\"x64\" Value=\"v\"/>"));
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
    EXPECT_TRUE(isReadAfter("<datasource Name=\"A\" Platform=\"x64\" Value=\"v\"/>"));
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, TrimsTabsLineFeedsAndSpacesOffAllThreeValues)
{
    configureElements("<DataSource Name=\" \t\nA B\n\" Platform=\"\tx64 \" Value=\"\n v w\t \"/>");
    EXPECT_EQ(ask(L"A B"), (Answer{0, L"v w"}));
}

TEST_F(qelDataSourcesText, TrimsAValueOfBlanksToNothing)
{
    configureElements("<DataSource Name=\"A\" Platform=\"x64\" Value=\" \t \"/>");
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, TakesAnAttributeByTheFirstPlaceOfItsName)
{
    // "Name" is found within the value of Platform; what follows between the next two quotes is no name at all.
    configureElements("<DataSource Platform=\"Name\" Name=\"A\" Value=\"v\"/>");
    EXPECT_EQ(ask(L"Name=", L"Name"), (Answer{0, L"v"}));
    EXPECT_EQ(ask(L"A", L"Name"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, TakesAttributeNamesAsPartsOfLongerOnes)
{
    configureElements("<DataSource ShortName=\"A\" ThePlatformIs=\"x64\" ValueText=\"v\" Name=\"B\"/>");
    EXPECT_EQ(ask(L"A"), (Answer{0, L"v"}));
    EXPECT_EQ(ask(L"B"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, TakesElementNamesAsBeginningsOfLongerOnes)
{
    configureElements("<DataSources><DataSource Name=\"A\" Platform=\"x64\" Value=\"v\"/></DataSources>" + m_good);
    EXPECT_EQ(ask(L"A"), (Answer{0, L"v"}));
    EXPECT_EQ(ask(L"Good"), (Answer{0, L"good"}));
}

TEST_F(qelDataSourcesText, DecodesNoEntities)
{
    configureElements("<DataSource Name=\"A&amp;B\" Platform=\"x64\" Value=\"&quot;v&quot;\"/>");
    EXPECT_EQ(ask(L"A&amp;B"), (Answer{0, L"&quot;v&quot;"}));
}

TEST_F(qelDataSourcesText, KnowsNoComments)
{
    configureElements("<!-- <DataSource Name=\"A\" Platform=\"x64\" Value=\"commented out\"/> -->");
    EXPECT_EQ(ask(L"A"), (Answer{0, L"commented out"}));
}

TEST_F(qelDataSourcesText, EndsAnElementAtTheFirstCloseEvenInsideAValue)
{
    EXPECT_TRUE(isReadAfter("<DataSource Name=\"A\" Platform=\"x64\" Value=\"a/>b\"/>"));
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, StepsOverACloseThatBelongsToSomethingBefore)
{
    EXPECT_TRUE(isReadAfter("<Other/><Another a=\"b\" />\n/> "));
}

TEST_F(qelDataSourcesText, TakesWhatIsNotSelfClosingTogetherWithTheNextElement)
{
    configureElements("<DataSource Name=\"A\" Platform=\"x64\" Value=\"v\"></DataSource>" + m_good);
    EXPECT_EQ(ask(L"A"), (Answer{0, L"v"}));
    EXPECT_EQ(ask(L"Good"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, StopsAtAnElementThatIsNotClosedInTheSection)
{
    configure("<Orvalis>" + m_good + "<DataSource Name=\"A\" Platform=\"x64\" Value=\"v\"</Orvalis>/>");
    EXPECT_EQ(ask(L"Good"), (Answer{0, L"good"}));
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, CountsOnlyWithinTheSection)
{
    configure(m_good + "<Orvalis><DataSource Name=\"A\" Platform=\"x64\" Value=\"v\"/></Orvalis>"
                       "<DataSource Name=\"B\" Platform=\"x64\" Value=\"v\"/>");
    EXPECT_EQ(ask(L"A"), (Answer{0, L"v"}));
    EXPECT_EQ(ask(L"Good"), (Answer{0, L""}));
    EXPECT_EQ(ask(L"B"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, IgnoresASecondSection)
{
    configure("<Orvalis><DataSource Name=\"A\" Platform=\"x64\" Value=\"v\"/></Orvalis><Orvalis>" + m_good +
              "</Orvalis>");
    EXPECT_EQ(ask(L"A"), (Answer{0, L"v"}));
    EXPECT_EQ(ask(L"Good"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, EndsTheSectionAtTheFirstClosingTagWhateverItBelongsTo)
{
    configure("<Orvalis><Orvalis>" + m_good +
              "</Orvalis><DataSource Name=\"A\" Platform=\"x64\" Value=\"v\"/></Orvalis>");
    EXPECT_EQ(ask(L"Good"), (Answer{0, L"good"}));
    EXPECT_EQ(ask(L"A"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, HasNoSectionWithoutBothTagsInOrder)
{
    for (const std::string& content :
         {m_good, "<Orvalis>" + m_good, m_good + "</Orvalis>", "</Orvalis><Orvalis>" + m_good,
          "</Orvalis><Orvalis>" + m_good + "</Orvalis>", "<orvalis>" + m_good + "</orvalis>",
          "<Orvalis a=\"b\">" + m_good + "</Orvalis>", "<Orvalis >" + m_good + "</Orvalis>"})
    {
        configure(content);
        EXPECT_EQ(ask(L"Good"), (Answer{0, L""})) << content;
    }
}

TEST_F(qelDataSourcesText, MayHaveAnEmptySection)
{
    configure("<Orvalis></Orvalis>");
    EXPECT_EQ(ask(L"Good"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesText, TakesElementsThatFillTheSectionToItsEnd)
{
    configure("<Orvalis>" + m_good + "</Orvalis>");
    EXPECT_EQ(ask(L"Good"), (Answer{0, L"good"}));
}

TEST_F(qelDataSourcesText, IsReadFromUtf16WithAMark)
{
    configure(qelTest::utf16(qelTest::configuration(m_good)));
    EXPECT_EQ(ask(L"Good"), (Answer{0, L"good"}));
}

TEST_F(qelDataSourcesText, IsReadFromUtf8WithAMarkNonAsciiCharactersIncluded)
{
    configure("\xEF\xBB\xBF" + qelTest::configuration("<DataSource Name=\"Tr\xC3\xA4ger \xCE\xA9\" Platform=\"x64\" "
                                                      "Value=\"\xE2\x82\xAC \xF0\x9F\x8F\x97\"/>"));
    EXPECT_EQ(ask(L"Tr\u00E4ger \u03A9"), (Answer{0, L"\u20AC \U0001F3D7"}));
}

TEST_F(qelDataSourcesText, IsReadThroughTheAnsiCodePageWithoutAMark)
{
    configureElements("<DataSource Name=\"" + qelTest::ansiBytes() + "\" Platform=\"x64\" Value=\"v\"/>");
    EXPECT_EQ(ask(qelTest::ansiText().c_str()), (Answer{0, L"v"}));
}

TEST_F(qelDataSourcesText, MayHaveThousandsOfElements)
{
    std::string elements;
    for (int i = 0; i < 5000; ++i)
    {
        elements += "<DataSource Name=\"S" + std::to_string(i) + "\" Platform=\"x64\" Value=\"v" + std::to_string(i) +
                    "\"/>\r\n";
    }
    configureElements(elements);
    EXPECT_EQ(ask(L"S0"), (Answer{0, L"v0"}));
    EXPECT_EQ(ask(L"S4999"), (Answer{0, L"v4999"}));
    EXPECT_EQ(ask(L"S5000"), (Answer{0, L""}));
}

// Finding one among many

class qelDataSourcesAmongMany : public qelTest::DataSourceTest
{
protected:
    /// Elements "S0", "S1" ... with the values "v0", "v1" ...
    static std::string elements(int count)
    {
        std::string text;
        for (int i = 0; i < count; ++i)
        {
            const std::string number = std::to_string(i);
            text += "<DataSource Name=\"S" + number + "\" Platform=\"x64\" Value=\"v" + number + "\"/>\n";
        }
        return text;
    }

    /// Shortest time of a search for a name, in microseconds.
    double fastest(const wchar_t* wanted)
    {
        const qelString name = wanted;
        const qelString platform = L"x64";
        qelString connection;
        double best = 1e9;
        for (int sample = 0; sample < 50; ++sample)
        {
            const auto begin = std::chrono::steady_clock::now();
            for (int i = 0; i < 20; ++i)
            {
                m_sources->getConnectionString(name, connection, platform);
            }
            const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - begin;
            best = std::min(best, took.count() / 20);
        }
        EXPECT_EQ(connection.isEmpty(), 0);
        return best;
    }
};

TEST_F(qelDataSourcesAmongMany, AreFoundEachByItsName)
{
    configureElements(elements(3000));
    for (int i = 0; i < 3000; ++i)
    {
        const std::wstring number = std::to_wstring(i);
        ASSERT_EQ(ask((L"s" + number).c_str(), L"X64"), (Answer{0, L"v" + number}));
    }
    EXPECT_EQ(ask(L"S3000"), (Answer{0, L""}));
    EXPECT_EQ(ask(L"S1", L"x86"), (Answer{0, L""}));
    EXPECT_EQ(ask(L"S1x", L"64"), (Answer{0, L""}));
    EXPECT_EQ(ask(L"", L""), (Answer{0, L""}));
}

TEST_F(qelDataSourcesAmongMany, AreTheFirstOfThoseThatAreEqualWithoutRegardToCase)
{
    configureElements(elements(500) + "<DataSource Name=\"Kind\" Platform=\"X86\" Value=\"first\"/>" +
                      "<DataSource Name=\"KIND\" Platform=\"x86\" Value=\"second\"/>" + elements(500) +
                      "<DataSource Name=\"kind\" Platform=\"x86\" Value=\"third\"/>" +
                      "<DataSource Name=\"s7\" Platform=\"x64\" Value=\"last\"/>");
    for (const wchar_t* name : {L"Kind", L"KIND", L"kind", L"kIND"})
    {
        EXPECT_EQ(ask(name, L"x86"), (Answer{0, L"first"}));
    }
    EXPECT_EQ(ask(L"s7"), (Answer{0, L"v7"}));
}

TEST_F(qelDataSourcesAmongMany, FollowTheLocaleOfTheQuestionNotThatOfTheFirstOne)
{
    configure("\xEF\xBB\xBF" +
              qelTest::configuration(elements(100) + "<DataSource Name=\"Tr\xC3\xA4ger\" Platform=\"x64\" "
                                                     "Value=\"v\"/>"));
    EXPECT_EQ(ask(L"TR\u00C4GER"), (Answer{0, L""})) << "letters from A to Z only";
    ASSERT_NE(setlocale(LC_CTYPE, "German_Germany.1252"), nullptr);
    const Answer german = ask(L"TR\u00C4GER");
    setlocale(LC_CTYPE, "C");
    EXPECT_EQ(german, (Answer{0, L"v"}));
}

TEST_F(qelDataSourcesAmongMany, AreForgottenWithTheirFile)
{
    configureElements(elements(10));
    EXPECT_EQ(ask(L"S9"), (Answer{0, L"v9"}));
    // As many entries again, so that nothing but the names tells one catalogue from the other.
    std::string others = elements(10);
    std::replace(others.begin(), others.end(), 'S', 'T');
    std::string::size_type at = 0;
    while ((at = others.find("DataTource", at)) != std::string::npos)
    {
        others.replace(at, 10, "DataSource");
    }
    configureElements(others);
    EXPECT_EQ(ask(L"T9"), (Answer{0, L"v9"}));
    EXPECT_EQ(ask(L"S9"), (Answer{0, L""}));
}

TEST_F(qelDataSourcesAmongMany, TakeNoLongerToFindThanAmongFew)
{
    configureElements(elements(10));
    const double few = fastest(L"S9");
    configureElements(elements(4000));
    EXPECT_LT(fastest(L"S3999"), 10 * few);
}

// Lack of memory

TEST_F(qelDataSourcesAmongMany, AreAllThereAfterAnyFailedAllocation)
{
    m_userConnections.setText(L"PelionProfiles2020", L"{Varnel ODBC Driver}PelionProfiles2020;DBQ=p");
    m_userConnections.setText(L"QELMapping2020", L"{Varnel ODBC Driver}QELMapping2020");
    const qelString name = L"S11";
    const qelString platform = L"x64";
    qelString connection;
    int failures = 0;
    for (bool failed = true; failed; failures += failed ? 1 : 0)
    {
        configureElements(elements(12));
        {
            const qelTest::FailingAllocation failing(failures);
            try
            {
                m_sources->getConnectionString(name, connection, platform);
            }
            catch (...)
            {
            }
            failed = failing.happened();
        }
        ASSERT_EQ(ask(L"PelionProfiles2020"),
                  (Answer{1, L"{Microsoft Access Driver (*.mdb, *.accdb)}PelionProfiles2020;DBQ=p"}));
        ASSERT_EQ(ask(L"QELMapping2020"), (Answer{1, L"{Microsoft Access Driver (*.mdb, *.accdb)}QELMapping2020"}));
        ASSERT_EQ(ask(L"PelionCurrentProject"),
                  (Answer{1, L"{Microsoft Access Driver (*.mdb, *.accdb)}PelionProfiles2020;DBQ="
                             L"D:\\Data\\Kernel\\Data\\model.mdb"}));
        for (int i = 0; i < 12; ++i)
        {
            const std::wstring number = std::to_wstring(i);
            ASSERT_EQ(ask((L"S" + number).c_str()), (Answer{0, L"v" + number})) << "allocation " << failures;
        }
    }
    EXPECT_GT(failures, 40);
}
} // namespace
