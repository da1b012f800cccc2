#include "config/DataSourceFixture.h"

namespace
{
/// The drivers of an ordinary machine. The library reads them once for all tests of the program.
class OrdinaryMachine : public testing::Environment
{
public:
    void SetUp() override
    {
        m_drivers = std::make_unique<qelTest::SavedRegistryKey>(HKEY_LOCAL_MACHINE, qelTest::kDriversKey);
        m_drivers->setText(L"SQLite3", L"Installed");
        m_drivers->setText(qelTest::kAlternateDriver, L"Installed");
        m_drivers->setText(qelTest::kDefaultDriver, L"Installed");
    }

    void TearDown() override { m_drivers.reset(); }

private:
    std::unique_ptr<qelTest::SavedRegistryKey> m_drivers;
};
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new OrdinaryMachine);
    return RUN_ALL_TESTS();
}
