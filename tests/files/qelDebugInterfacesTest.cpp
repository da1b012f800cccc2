// The record of objects, as far as the library shows it without debug output. The rest: qelDebugOutputTest.cpp.

#include "qelDebugInterfaces.h"

#include "support/DebugOutput.h"
#include "support/GuardedMemory.h"
#include "support/ImportHook.h"
#include "support/MessageBoxes.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <chrono>

namespace
{
class qelDebugInterfacesRecord : public testing::Test
{
protected:
    void SetUp() override { qelDebugInterfaces::clearAllDebugInfo(nullptr); }
    void TearDown() override { qelDebugInterfaces::clearAllDebugInfo(nullptr); }

    int m_objects[3] = {};
    int m_context = 0;
};

int boxes = 0;
UINT boxStyle = 0;
HWND boxOwner = nullptr;

int WINAPI watchBox(HWND owner, LPCWSTR, LPCWSTR, UINT style)
{
    ++boxes;
    boxOwner = owner;
    boxStyle = style;
    return IDOK;
}

TEST_F(qelDebugInterfacesRecord, CountsDestroyedObjectsToo)
{
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 0);
    qelDebugInterfaces::objectConstructed(L"A", &m_objects[0]);
    qelDebugInterfaces::objectConstructed(L"B", &m_objects[1]);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 2);
    qelDebugInterfaces::objectDestroied(L"A", &m_objects[0]);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 2);
    qelDebugInterfaces::objectDestroied(L"A", &m_objects[0]);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 2);
}

TEST_F(qelDebugInterfacesRecord, LosesTheRecordsOfOneContextOrAll)
{
    qelDebugInterfaces::objectConstructed(L"A", &m_objects[0]);
    qelDebugInterfaces::setCurrentContextInitiator(&m_context);
    qelDebugInterfaces::objectConstructed(L"B", &m_objects[1]);
    qelDebugInterfaces::contextInitiatorEnd(&m_context);
    qelDebugInterfaces::objectConstructed(L"C", &m_objects[2]);
    qelDebugInterfaces::clearAllDebugInfo(&m_objects);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 3);
    qelDebugInterfaces::clearAllDebugInfo(&m_context);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 2);
    qelDebugInterfaces::clearAllDebugInfo(nullptr);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 0);
    qelDebugInterfaces::clearAllDebugInfo(nullptr);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 0);
}

const int kStayedInside = 77;

/// Ends the process, because the record keeps its guarded memory.
[[noreturn]] void searchRecordsOfEveryLength()
{
    const qelTest::GuardedHeap guarded;
    int objects[2] = {};
    // Some of these lengths fill the memory of the record to its end.
    for (int i = 0; i < 100; ++i)
    {
        qelDebugInterfaces::objectConstructed(L"A", &objects[0]);
        qelDebugInterfaces::objectDestroied(L"A", &objects[1]);
        qelDebugInterfaces::showResults(&objects[1]);
    }
    TerminateProcess(GetCurrentProcess(), kStayedInside);
    abort();
}

TEST(qelDebugInterfacesDeathTest, IsSearchedToTheEndOfTheRecordsAndNoFurther)
{
    EXPECT_EXIT(searchRecordsOfEveryLength(), testing::ExitedWithCode(kStayedInside), "");
}

TEST_F(qelDebugInterfacesRecord, GrowsInStepWithTheObjects)
{
    const auto begin = std::chrono::steady_clock::now();
    const int many = 200000;
    for (int i = 0; i < many; ++i)
    {
        qelDebugInterfaces::objectConstructed(L"A", &m_objects[0]);
    }
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), many);
    // Growing by the array's own steps takes over a minute.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

#ifndef QEL_DEBUG_OUTPUT
TEST_F(qelDebugInterfacesRecord, IsListedInSilence)
{
    qelDebugInterfaces::objectConstructed(L"A", &m_objects[0]);
    const qelTest::DebugOutput output;
    qelDebugInterfaces::showResults(nullptr);
    qelOutputDebugString(L"a");
    EXPECT_TRUE(output.texts().empty());
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 1);
}
#endif

TEST_F(qelDebugInterfacesRecord, HasItsTextsBuiltThoughNobodySeesThem)
{
    qelDebugInterfaces::objectConstructed(L"Beam", reinterpret_cast<void*>(0x123456789ABCDEF0));
    // Formatting leaves its result in the library's scratch buffer.
    qelString::qelStringTempBufferWide[0] = 0;
    qelDebugInterfaces::showResults(nullptr);
    EXPECT_STREQ(qelString::qelStringTempBufferWide, L"\n 0 [0] 9abcdef0 Beam");
}

TEST_F(qelDebugInterfacesRecord, NeedsNoTextsWithoutObjects)
{
    qelString::qelStringTempBufferWide[0] = 0;
    qelDebugInterfaces::showResults(nullptr);
    EXPECT_STREQ(qelString::qelStringTempBufferWide, L"");
}

TEST(qelDebugInterfaces, IsAssignedWithoutEffect)
{
    qelDebugInterfaces a;
    const qelDebugInterfaces b;
    a = b;
    qelWinMessage c;
    const qelWinMessage d;
    c = d;
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 0);
}

TEST(qelWinMessage, ShowsARealBoxWithTextIconAndOneButton)
{
    qelTest::MessageBoxes boxesSeen(L"Orvalis");
    qelWinMessage::messageBox(L"100%s saved\nas \u017Belbet");
    const std::vector<qelTest::SeenBox> seen = boxesSeen.seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].text, L"100%s saved\nas \u017Belbet");
    EXPECT_TRUE(seen[0].hasInformationIcon);
    EXPECT_EQ(seen[0].buttons.size(), 1u);
}

TEST(qelWinMessage, HasStyle64AndNoOwner)
{
    const qelTest::ImportHook hook("MessageBoxW", &watchBox);
    boxes = 0;
    boxOwner = GetDesktopWindow();
    qelWinMessage::messageBox(L"a");
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(boxStyle, 64u);
    EXPECT_EQ(boxOwner, nullptr);
}
} // namespace
