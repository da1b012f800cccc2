// The record of objects in a library with debug output, which shows all of it.

#include "qelDebugInterfaces.h"

#include "support/AnsiCodePage.h"
#include "support/DebugOutput.h"

#include <gtest/gtest.h>

namespace
{
using Texts = std::vector<std::wstring>;

const wchar_t kHeading[] = L"\n Coclasses not destructed:";

void* at(unsigned long long address)
{
    return reinterpret_cast<void*>(address);
}

Texts listed(void* initiator)
{
    const qelTest::DebugOutput output;
    qelDebugInterfaces::showResults(initiator);
    return output.texts();
}

class qelDebugInterfacesListing : public testing::Test
{
protected:
    void TearDown() override { qelDebugInterfaces::clearAllDebugInfo(nullptr); }

    void* const p = at(0x10);
    void* const q = at(0x20);
    void* const x = at(0xA0);
    void* const y = at(0xB0);
};

class qelDebugInterfacesContext : public qelDebugInterfacesListing
{
};

TEST(qelOutputDebugString, ReachesTheDebugger)
{
    const qelTest::DebugOutput output;
    qelOutputDebugString((L"100%s " + qelTest::ansiText() + L"\n").c_str());
    qelOutputDebugString(L"");
    EXPECT_EQ(output.texts(), (Texts{L"100%s " + qelTest::ansiText() + L"\n", L""}));
}

TEST_F(qelDebugInterfacesListing, IsEmptyWithoutRecords)
{
    EXPECT_EQ(listed(nullptr), Texts());
}

TEST_F(qelDebugInterfacesListing, ShowsEachObjectInOrder)
{
    qelDebugInterfaces::objectConstructed(L"A", p);
    qelDebugInterfaces::objectConstructed(L"B", q);
    EXPECT_EQ(listed(nullptr), (Texts{kHeading, L"\n 0 [0] 00000010 A", L"\n 1 [1] 00000020 B"}));
}

TEST_F(qelDebugInterfacesListing, ShowsTheLowHalfOfTheAddress)
{
    qelDebugInterfaces::objectConstructed(L"A", at(0x123456789ABCDEF0));
    qelDebugInterfaces::objectConstructed(L"B", nullptr);
    EXPECT_EQ(listed(nullptr), (Texts{kHeading, L"\n 0 [0] 9abcdef0 A", L"\n 1 [1] 00000000 B"}));
}

TEST_F(qelDebugInterfacesListing, CountsDestroyedObjectsButDoesNotShowThem)
{
    qelDebugInterfaces::objectConstructed(L"A", p);
    qelDebugInterfaces::objectConstructed(L"B", q);
    qelDebugInterfaces::objectDestroied(L"A", p);
    EXPECT_EQ(listed(nullptr), (Texts{kHeading, L"\n 1 [1] 00000020 B"}));
}

TEST_F(qelDebugInterfacesListing, HasNoHeadingWhenAllObjectsAreDestroyed)
{
    qelDebugInterfaces::objectConstructed(L"A", p);
    qelDebugInterfaces::objectDestroied(L"A", p);
    EXPECT_EQ(listed(nullptr), Texts());
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 1);
}

TEST_F(qelDebugInterfacesListing, ChangesNoRecord)
{
    qelDebugInterfaces::objectConstructed(L"A", p);
    const Texts first = listed(nullptr);
    EXPECT_EQ(listed(nullptr), first);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 1);
}

TEST_F(qelDebugInterfacesListing, CountsOnlyTheRecordsOfTheContextInBrackets)
{
    qelDebugInterfaces::objectConstructed(L"none", p);
    qelDebugInterfaces::setCurrentContextInitiator(x);
    qelDebugInterfaces::objectConstructed(L"gone", p);
    qelDebugInterfaces::setCurrentContextInitiator(y);
    qelDebugInterfaces::objectConstructed(L"other", p);
    qelDebugInterfaces::contextInitiatorEnd(y);
    qelDebugInterfaces::objectConstructed(L"left", q);
    qelDebugInterfaces::contextInitiatorEnd(x);
    qelDebugInterfaces::objectDestroied(L"gone", p);

    EXPECT_EQ(listed(x), (Texts{kHeading, L"\n 3 [1] 00000020 left"}));
    EXPECT_EQ(listed(y), (Texts{kHeading, L"\n 2 [0] 00000010 other"}));
    EXPECT_EQ(listed(p), Texts());
    EXPECT_EQ(listed(nullptr),
              (Texts{kHeading, L"\n 0 [0] 00000010 none", L"\n 2 [2] 00000010 other", L"\n 3 [3] 00000020 left"}));
}

TEST_F(qelDebugInterfacesListing, TellsClassNamesApartByLetterCase)
{
    qelDebugInterfaces::objectConstructed(L"A", p);
    qelDebugInterfaces::objectDestroied(L"a", p);
    qelDebugInterfaces::objectDestroied(L"AA", p);
    qelDebugInterfaces::objectDestroied(L"", p);
    qelDebugInterfaces::objectDestroied(L"A", q);
    EXPECT_EQ(listed(nullptr), (Texts{kHeading, L"\n 0 [0] 00000010 A"}));
}

TEST_F(qelDebugInterfacesListing, MarksTheOlderRecordOfAReusedAddressFirst)
{
    qelDebugInterfaces::objectConstructed(L"A", p);
    qelDebugInterfaces::objectConstructed(L"A", p);
    qelDebugInterfaces::objectConstructed(L"A", p);
    qelDebugInterfaces::objectDestroied(L"A", p);
    EXPECT_EQ(listed(nullptr), (Texts{kHeading, L"\n 1 [1] 00000010 A", L"\n 2 [2] 00000010 A"}));
    qelDebugInterfaces::objectDestroied(L"A", p);
    EXPECT_EQ(listed(nullptr), (Texts{kHeading, L"\n 2 [2] 00000010 A"}));
}

TEST_F(qelDebugInterfacesListing, KeepsTheOtherRecordsInOrderWhenAContextIsCleared)
{
    qelDebugInterfaces::setCurrentContextInitiator(x);
    qelDebugInterfaces::objectConstructed(L"x1", p);
    qelDebugInterfaces::objectConstructed(L"x2", p);
    qelDebugInterfaces::setCurrentContextInitiator(y);
    qelDebugInterfaces::objectConstructed(L"y1", q);
    qelDebugInterfaces::contextInitiatorEnd(y);
    qelDebugInterfaces::objectConstructed(L"x3", p);
    qelDebugInterfaces::contextInitiatorEnd(x);
    qelDebugInterfaces::objectConstructed(L"none", q);

    qelDebugInterfaces::clearAllDebugInfo(x);
    EXPECT_EQ(qelDebugInterfaces::entriesNumber(), 2);
    EXPECT_EQ(listed(nullptr), (Texts{kHeading, L"\n 0 [0] 00000020 y1", L"\n 1 [1] 00000020 none"}));
    EXPECT_EQ(listed(y), (Texts{kHeading, L"\n 0 [0] 00000020 y1"}));
    qelDebugInterfaces::objectConstructed(L"new", p);
    EXPECT_EQ(listed(nullptr).back(), L"\n 2 [2] 00000010 new");
}

TEST_F(qelDebugInterfacesContext, EndsOnlyWhenItIsTheCurrentOne)
{
    qelDebugInterfaces::setCurrentContextInitiator(x);
    qelDebugInterfaces::setCurrentContextInitiator(y);
    qelDebugInterfaces::contextInitiatorEnd(x);
    qelDebugInterfaces::objectConstructed(L"a", p);
    EXPECT_EQ(listed(y).size(), 2u);
    qelDebugInterfaces::contextInitiatorEnd(y);
    qelDebugInterfaces::objectConstructed(L"b", p);
    EXPECT_EQ(listed(x), (Texts{kHeading, L"\n 1 [0] 00000010 b"}));
    qelDebugInterfaces::contextInitiatorEnd(x);
    qelDebugInterfaces::objectConstructed(L"c", p);
    EXPECT_EQ(listed(x).size(), 2u);
}

TEST_F(qelDebugInterfacesContext, MayBeEndedWhenThereIsNone)
{
    qelDebugInterfaces::contextInitiatorEnd(x);
    qelDebugInterfaces::contextInitiatorEnd(nullptr);
    qelDebugInterfaces::objectConstructed(L"a", p);
    EXPECT_EQ(listed(nullptr).size(), 2u);
    EXPECT_EQ(listed(x).size(), 0u);
}

TEST_F(qelDebugInterfacesContext, IsEndedOncePerBeginning)
{
    qelDebugInterfaces::setCurrentContextInitiator(x);
    qelDebugInterfaces::setCurrentContextInitiator(x);
    qelDebugInterfaces::contextInitiatorEnd(x);
    qelDebugInterfaces::objectConstructed(L"a", p);
    qelDebugInterfaces::contextInitiatorEnd(x);
    qelDebugInterfaces::objectConstructed(L"b", p);
    EXPECT_EQ(listed(x), (Texts{kHeading, L"\n 0 [0] 00000010 a"}));
}

TEST_F(qelDebugInterfacesContext, OfNullIsAContextLikeNone)
{
    qelDebugInterfaces::setCurrentContextInitiator(x);
    qelDebugInterfaces::setCurrentContextInitiator(nullptr);
    qelDebugInterfaces::objectConstructed(L"a", p);
    qelDebugInterfaces::contextInitiatorEnd(nullptr);
    qelDebugInterfaces::objectConstructed(L"b", p);
    qelDebugInterfaces::contextInitiatorEnd(x);
    EXPECT_EQ(listed(x), (Texts{kHeading, L"\n 1 [0] 00000010 b"}));
}
} // namespace
