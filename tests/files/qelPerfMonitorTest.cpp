#include "qelPerfMonitor.h"

#include "files/Logging.h"
#include "strings/TextSupport.h"
#include "support/ImportHook.h"
#include "support/MessageBoxes.h"

#include <gtest/gtest.h>

#include <time.h>

using qelTest::ImportHook;
using qelTest::MessageBoxes;

namespace
{
clock_t now = 0;

clock_t fixedClock()
{
    return now;
}

class qelPerfMonitorLog : public qelTest::Logging
{
};

class qelPerfMonitorBox : public qelPerfMonitorLog
{
};

std::wstring boxText;
std::wstring boxCaption;
UINT boxStyle = 0;
HWND boxOwner = nullptr;

int WINAPI watchBox(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style)
{
    boxOwner = owner;
    boxText = text;
    boxCaption = caption;
    boxStyle = style;
    return IDOK;
}

TEST_F(qelPerfMonitorLog, ShowsStartAndEndOnOneLine)
{
    const ImportHook clock("clock", &fixedClock);
    qelPerfMonitor monitor(m_file.path());
    now = 1200;
    monitor.start(L"Load");
    now = 3450;
    monitor.end(L"Load");
    EXPECT_EQ(content(), "[now] Start = Load : 1200[now] End = Load : 1200 -> 3450 (Diff = 2250)");
}

TEST_F(qelPerfMonitorLog, CountsFromTheLastStart)
{
    const ImportHook clock("clock", &fixedClock);
    qelPerfMonitor monitor(m_file.path());
    now = 10;
    monitor.start(L"a");
    now = 20;
    monitor.start(L"b");
    now = 50;
    monitor.end(L"c");
    now = 70;
    monitor.end(L"d");
    EXPECT_EQ(content(), "[now] Start = a : 10[now] Start = b : 20"
                         "[now] End = c : 20 -> 50 (Diff = 30)[now] End = d : 20 -> 70 (Diff = 50)");
}

TEST_F(qelPerfMonitorLog, CountsFromZeroWithoutAStart)
{
    const ImportHook clock("clock", &fixedClock);
    now = 4321;
    qelPerfMonitor(m_file.path()).end(L"a");
    EXPECT_EQ(content(), "[now] End = a : 0 -> 4321 (Diff = 4321)");
}

TEST_F(qelPerfMonitorLog, CountsAcrossTheWrapOfTheClock)
{
    const ImportHook clock("clock", &fixedClock);
    qelPerfMonitor monitor(m_file.path());
    now = 2147483647;
    monitor.start(L"a");
    now = -2147483647 - 1;
    monitor.end(L"a");
    EXPECT_EQ(content(), "[now] Start = a : 2147483647"
                         "[now] End = a : 2147483647 -> -2147483648 (Diff = 1)");
}

TEST_F(qelPerfMonitorLog, TakesTheTimeOfTheProcess)
{
    qelPerfMonitor monitor(m_file.path());
    const int before = static_cast<int>(clock());
    monitor.start(L"a");
    const int begun = static_cast<int>(clock());
    Sleep(100);
    const int ended = static_cast<int>(clock());
    monitor.end(L"a");
    const int after = static_cast<int>(clock());

    int start = 0;
    int startAgain = 0;
    int end = 0;
    int difference = 0;
    ASSERT_EQ(sscanf_s(content().c_str(), "[now] Start = a : %d[now] End = a : %d -> %d (Diff = %d)", &start,
                       &startAgain, &end, &difference),
              4);
    EXPECT_GE(start, before);
    EXPECT_LE(start, begun);
    EXPECT_EQ(startAgain, start);
    EXPECT_GE(end, ended);
    EXPECT_LE(end, after);
    EXPECT_EQ(difference, end - start);
    EXPECT_GE(difference, 80);
}

TEST_F(qelPerfMonitorLog, DoesNotTakeTheLabelForAFormat)
{
    const ImportHook clock("clock", &fixedClock);
    now = 1;
    qelPerfMonitor monitor(m_file.path());
    monitor.start(L"100%s %d");
    EXPECT_EQ(content(), "[now] Start = 100%s %d : 1");
}

TEST_F(qelPerfMonitorLog, GetsOnlyTheTimeOfDayForALabelThatIsTooLong)
{
    const qelTest::LenientRuntime lenient;
    const qelString longest(std::wstring(qelString::kMaxLength, L'x').c_str());
    qelPerfMonitor monitor(m_file.path());
    monitor.start(longest);
    monitor.end(longest);
    EXPECT_EQ(content(), "[now] [now] ");
}

TEST_F(qelPerfMonitorLog, IsNotWrittenWhileLoggingIsOff)
{
    qelLogfile::setLogStatus(0);
    qelPerfMonitor monitor(m_file.path());
    monitor.start(L"a");
    monitor.end(L"a");
    EXPECT_FALSE(m_file.exists());
}

TEST_F(qelPerfMonitorLog, GetsTheTimeOfAStartWhileLoggingWasOff)
{
    const ImportHook clock("clock", &fixedClock);
    qelPerfMonitor monitor(m_file.path());
    qelLogfile::setLogStatus(0);
    now = 100;
    monitor.start(L"a");
    qelLogfile::setLogStatus(1);
    now = 150;
    monitor.end(L"a");
    EXPECT_EQ(content(), "[now] End = a : 100 -> 150 (Diff = 50)");
}

TEST_F(qelPerfMonitorLog, IsSharedByCopiesWithTheirTimes)
{
    const ImportHook clock("clock", &fixedClock);
    qelPerfMonitor monitor(m_file.path());
    now = 7;
    monitor.start(L"a");
    qelPerfMonitor copied(monitor);
    qelPerfMonitor assigned(L"elsewhere.log");
    assigned = monitor;
    now = 9;
    monitor.start(L"b");
    copied.end(L"c");
    assigned.end(L"d");
    EXPECT_EQ(content(), "[now] Start = a : 7[now] Start = b : 9"
                         "[now] End = c : 7 -> 9 (Diff = 2)[now] End = d : 7 -> 9 (Diff = 2)");
}

TEST_F(qelPerfMonitorLog, HasANameOfAtMost255Units)
{
    std::wstring name = m_file.widePath() + L"-";
    name.resize(300, L'n');
    qelPerfMonitor(name.c_str()).start(L"a");
    EXPECT_TRUE(DeleteFileW(name.substr(0, 255).c_str()));
}

TEST_F(qelPerfMonitorLog, LiesInTheCurrentFolderWithoutAName)
{
    wchar_t before[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(CreateDirectoryW(m_file.widePath().c_str(), nullptr));
    ASSERT_TRUE(SetCurrentDirectoryW(m_file.widePath().c_str()));
    qelPerfMonitor monitor;
    monitor.start(L"a");
    SetCurrentDirectoryW(before);
    EXPECT_TRUE(DeleteFileW((m_file.widePath() + L"\\BriskenPerf.LOG").c_str()));
}

TEST_F(qelPerfMonitorBox, IsARealBoxWithTextIconAndOneButton)
{
    const ImportHook clock("clock", &fixedClock);
    qelPerfMonitor monitor(m_file.path());
    now = 1200;
    monitor.start(L"Load");
    now = 3450;
    MessageBoxes boxes(L"Orvalis");
    monitor.endWithMessageBox(L"Load");
    const std::vector<qelTest::SeenBox> seen = boxes.seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].text, L"Load : 1200 -> 3450 (Diff = 2250)");
    EXPECT_TRUE(seen[0].hasInformationIcon);
    EXPECT_EQ(seen[0].buttons.size(), 1u);
    EXPECT_EQ(content(), "[now] Start = Load : 1200[now] End = Load : 1200 -> 3450 (Diff = 2250)");
}

TEST_F(qelPerfMonitorBox, IsShownWhileLoggingIsOffToo)
{
    qelLogfile::setLogStatus(0);
    const ImportHook clock("clock", &fixedClock);
    now = 5;
    MessageBoxes boxes(L"Orvalis");
    qelPerfMonitor(m_file.path()).endWithMessageBox(L"a");
    const std::vector<qelTest::SeenBox> seen = boxes.seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].text, L"a : 0 -> 5 (Diff = 5)");
    EXPECT_FALSE(m_file.exists());
}

TEST_F(qelPerfMonitorBox, HasStyle64AndNoOwner)
{
    const ImportHook box("MessageBoxW", &watchBox);
    const ImportHook clock("clock", &fixedClock);
    now = 5;
    boxOwner = GetDesktopWindow();
    qelPerfMonitor(m_file.path()).endWithMessageBox(L"a");
    EXPECT_EQ(boxStyle, 64u);
    EXPECT_EQ(boxOwner, nullptr);
    EXPECT_EQ(boxCaption, L"Orvalis");
    EXPECT_EQ(boxText, L"a : 0 -> 5 (Diff = 5)");
}

TEST_F(qelPerfMonitorBox, ShowsTheTimesOfTheLogThatItWasEndedWith)
{
    const ImportHook box("MessageBoxW", &watchBox);
    qelPerfMonitor monitor(m_file.path());
    monitor.start(L"a");
    monitor.endWithMessageBox(L"a");
    const std::string line = std::string(boxText.begin(), boxText.end());
    const std::string log = content();
    ASSERT_GT(log.size(), line.size());
    EXPECT_EQ(log.substr(log.size() - line.size()), line);
}
} // namespace
