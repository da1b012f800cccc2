#include "support/MessageBoxes.h"

#include <gtest/gtest.h>

namespace
{
TEST(MessageBoxes, SeesTextIconAndButtons)
{
    qelTest::MessageBoxes boxes(L"Caption of this test");
    EXPECT_EQ(MessageBoxW(nullptr, L"one", L"Caption of this test", MB_OK | MB_ICONINFORMATION), IDOK);
    EXPECT_EQ(MessageBoxW(nullptr, L"two", L"Caption of this test", MB_OKCANCEL | MB_ICONWARNING), IDOK);
    EXPECT_EQ(MessageBoxW(nullptr, L"three", L"Caption of this test", MB_OK), IDOK);
    const std::vector<qelTest::SeenBox> seen = boxes.seen();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].text, L"one");
    EXPECT_TRUE(seen[0].hasInformationIcon);
    EXPECT_EQ(seen[0].buttons, std::vector<std::wstring>{L"OK"});
    EXPECT_EQ(seen[1].text, L"two");
    EXPECT_FALSE(seen[1].hasInformationIcon);
    EXPECT_EQ(seen[1].buttons.size(), 2u);
    EXPECT_FALSE(seen[2].hasInformationIcon);
}

TEST(MessageBoxes, SeesNothingWhereNoneIsShown)
{
    qelTest::MessageBoxes boxes(L"Caption of this test");
    EXPECT_TRUE(boxes.seen().empty());
}
} // namespace
