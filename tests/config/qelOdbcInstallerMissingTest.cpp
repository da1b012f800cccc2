// Runs on a system whose ODBC installer library cannot be loaded; see CMakeLists.txt.

#include "qelDataSourcesUtilities.h"

#include "config/DataSourceFixture.h"
#include "support/MessageBoxes.h"

#include <gtest/gtest.h>

using qelTest::Answer;
using qelTest::SeenBox;

namespace
{
const wchar_t kCaption[] = L"ODBC Installer Error";

/// The number of boxes, each of which says what it should.
size_t countBoxes(qelTest::MessageBoxes& boxes)
{
    const std::vector<SeenBox> seen = boxes.seen();
    for (const SeenBox& box : seen)
    {
        EXPECT_EQ(box.text, L"The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system.");
        EXPECT_TRUE(box.hasInformationIcon);
        EXPECT_EQ(box.buttons, std::vector<std::wstring>{L"OK"});
    }
    return seen.size();
}

class qelOdbcInstallerMissing : public qelTest::DataSourceTest
{
protected:
    qelTest::MessageBoxes m_boxes{kCaption};
};

TEST_F(qelOdbcInstallerMissing, GivesNoDriversAndTellsTheUserOnEveryCall)
{
    EXPECT_EQ(qelDataSourcesUtilities::readInstalledOdbcDrivers(), 0);
    EXPECT_EQ(countBoxes(m_boxes), 1u);
    EXPECT_EQ(qelDataSourcesUtilities::readInstalledOdbcDrivers(), 0);
    EXPECT_EQ(countBoxes(m_boxes), 2u);
}

TEST_F(qelOdbcInstallerMissing, LeavesTheDefaultDriverUnknownAndPreferred)
{
    EXPECT_EQ(qelDataSourcesUtilities::defaultODBCDriverIsInstalled(), 0);
    qelString driver;
    EXPECT_EQ(qelDataSourcesUtilities::getOdbcDriverName(driver), 1);
    EXPECT_STREQ(driver.getStringW(), qelTest::kDefaultDriver);
    qelString connection = L"DRIVER={Varnel ODBC Driver}";
    EXPECT_EQ(qelDataSourcesUtilities::replaceAlternateDriver(connection), 1);
    EXPECT_STREQ(connection.getStringW(), L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)}");
    EXPECT_EQ(qelDataSourcesUtilities::defaultDriverIsUsedInAllDataSources(), 0);
    EXPECT_EQ(countBoxes(m_boxes), 4u);
}

TEST_F(qelOdbcInstallerMissing, IsNotNoticedForAnEmptyConnectionString)
{
    qelString connection;
    EXPECT_EQ(qelDataSourcesUtilities::replaceAlternateDriver(connection), 0);
    EXPECT_EQ(countBoxes(m_boxes), 0u);
}

TEST_F(qelOdbcInstallerMissing, IsToldOnceForTheQuestionAndOnceForEachConnectionStringThatIsRead)
{
    m_userConnections.setText(L"PelionProfiles2020", L"DBQ=profiles.mdb");
    configureElements("<DataSource Name=\"A\" Platform=\"x64\" Value=\"a\"/>"
                      "<DataSource Name=\"B\" Platform=\"x64\" Value=\"\"/>");
    EXPECT_EQ(ask(L"A"), (Answer{0, L"a"}));
    EXPECT_EQ(countBoxes(m_boxes), 3u);
    EXPECT_EQ(ask(L"A"), (Answer{0, L"a"}));
    EXPECT_EQ(countBoxes(m_boxes), 4u);
}
} // namespace
