#include "qelRegistry.h"

#include "support/FailingAllocation.h"
#include "support/ImportHook.h"
#include "support/OpenHandles.h"
#include "support/SavedRegistryKey.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <limits.h>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
using qelTest::ImportHook;
using qelTest::SavedRegistryKey;

const wchar_t kTestKey[] = L"Software\\Kelvara\\VarnelQELRootsTest";
const wchar_t kEnvironment[] = L"Software\\Kelvara\\Orvalis\\2020";
const wchar_t kDatabases[] = L"Software\\Kelvara\\Varnel\\DatabaseConnections";

/// The same key at each of the places where the library may look; missing until a test fills it.
struct Places : testing::Test
{
    explicit Places(const wchar_t* path)
        : user(HKEY_CURRENT_USER, path)
        , machine(HKEY_LOCAL_MACHINE, path)
        , machine32(HKEY_LOCAL_MACHINE, path, KEY_WOW64_32KEY)
    {
    }

    const SavedRegistryKey user;
    const SavedRegistryKey machine;
    const SavedRegistryKey machine32;
};

struct Readers : Places
{
    Readers()
        : Places(kTestKey)
    {
    }

    /// What the reader of the machine's hive makes of the value "v".
    std::wstring machineText(int expectedResult = 1, const wchar_t* before = L"before")
    {
        qelString value(before);
        EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", value), expectedResult);
        return value.getStringW();
    }

    /// The same for the user's hive.
    std::wstring userText(int expectedResult = 1, const wchar_t* before = L"before")
    {
        qelString value(before);
        EXPECT_EQ(qelRegistry::getRegValueCurrentUser(kTestKey, L"v", value), expectedResult);
        return value.getStringW();
    }

    /// Checks the machine's and the user's number; those that cannot be read leave what was there.
    void expectNumber(int expectedResult, unsigned long expected)
    {
        unsigned long number = 77;
        EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", number), expectedResult);
        EXPECT_EQ(number, expectedResult != 0 ? expected : 77UL);
        int userNumber = 77;
        EXPECT_EQ(qelRegistry::getRegValueCurrentUser(kTestKey, L"v", userNumber), expectedResult);
        EXPECT_EQ(userNumber, expectedResult != 0 ? static_cast<int>(expected) : 77);
    }

    void setBoth(DWORD type, const void* data, size_t bytes)
    {
        machine.setBytes(L"v", type, data, bytes);
        user.setBytes(L"v", type, data, bytes);
    }

    /// Checks that both readers of text find `expected`.
    void expectText(const std::wstring& expected)
    {
        EXPECT_EQ(machineText(), expected);
        EXPECT_EQ(userText(), expected);
    }
};

// ---------------------------------------------------------------------------------------------------------------------
// Text of the machine's hive

using qelRegistryMachineText = Readers;

TEST_F(qelRegistryMachineText, ReadsWhatIsStored)
{
    machine.setText(L"v", L"C:\\Programme (ä ж 鋼)\\Orvalis");
    EXPECT_EQ(machineText(), L"C:\\Programme (ä ж 鋼)\\Orvalis");
}

TEST_F(qelRegistryMachineText, IgnoresTheUsersHive)
{
    user.setText(L"v", L"user");
    EXPECT_EQ(machineText(0), L"before");
}

TEST_F(qelRegistryMachineText, ReadsTheDefaultValueUnderTheEmptyName)
{
    machine.setText(L"", L"default");
    qelString value;
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"", value), 1);
    EXPECT_STREQ(value.getStringW(), L"default");
}

TEST_F(qelRegistryMachineText, LosesOneTrailingBackslash)
{
    machine.setText(L"v", L"D:\\Data\\");
    EXPECT_EQ(machineText(), L"D:\\Data");
    machine.setText(L"v", L"D:\\Data\\\\");
    EXPECT_EQ(machineText(), L"D:\\Data\\");
    machine.setText(L"v", L"\\\\");
    EXPECT_EQ(machineText(), L"\\");
}

TEST_F(qelRegistryMachineText, KeepsASingleBackslash)
{
    machine.setText(L"v", L"\\");
    EXPECT_EQ(machineText(), L"\\");
}

TEST_F(qelRegistryMachineText, KeepsATrailingSlashAndInnerBackslashes)
{
    machine.setText(L"v", L"\\\\server\\share/");
    EXPECT_EQ(machineText(), L"\\\\server\\share/");
}

TEST_F(qelRegistryMachineText, ReadsAnEmptyText)
{
    machine.setText(L"v", L"");
    EXPECT_EQ(machineText(), L"");
}

TEST_F(qelRegistryMachineText, LeavesTheCallersTextWhenTheKeyIsMissing)
{
    EXPECT_EQ(machineText(0), L"before");
    EXPECT_FALSE(machine.exists());
}

TEST_F(qelRegistryMachineText, LeavesTheCallersTextWhenTheValueIsMissing)
{
    machine.setText(L"another", L"x");
    EXPECT_EQ(machineText(0), L"before");
}

TEST_F(qelRegistryMachineText, StripsTheCallersTextAfterAFailureToo)
{
    EXPECT_EQ(machineText(0, L"C:\\Default\\\\"), L"C:\\Default\\") << "key missing";
    machine.create();
    EXPECT_EQ(machineText(0, L"C:\\Default\\\\"), L"C:\\Default\\") << "value missing";
    EXPECT_EQ(machineText(0, L"\\"), L"\\");
    EXPECT_EQ(machineText(0, L""), L"");
}

TEST_F(qelRegistryMachineText, StripsACallersTextOfTheGreatestLength)
{
    std::wstring longest(static_cast<size_t>(qelString::kMaxLength), L'x');
    longest.back() = L'\\';
    qelString value(longest.c_str());
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", value), 0);
    EXPECT_EQ(value.length(), qelString::kMaxLength - 1);
}

TEST_F(qelRegistryMachineText, TakesKeyOrNameInTheSameObjectAsTheResult)
{
    machine.setText(L"v", L"text");
    qelString key(kTestKey);
    EXPECT_EQ(qelRegistry::getRegValue(key, L"v", key), 1);
    EXPECT_STREQ(key.getStringW(), L"text");
    qelString name(L"v");
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, name, name), 1);
    EXPECT_STREQ(name.getStringW(), L"text");
}

TEST_F(qelRegistryMachineText, DoesNotCreateTheKeyUnasked)
{
    qelString value;
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", value, 0), 0);
    EXPECT_FALSE(machine.exists());
}

TEST_F(qelRegistryMachineText, CreatesAMissingKeyAndFails)
{
    for (const int create : {1, 2, -1})
    {
        const SavedRegistryKey deeper(HKEY_LOCAL_MACHINE, std::wstring(kTestKey) + L"\\A\\B");
        qelString value(L"C:\\Default\\");
        EXPECT_EQ(qelRegistry::getRegValue(deeper.path().c_str(), L"v", value, create), 0);
        EXPECT_STREQ(value.getStringW(), L"C:\\Default");
        EXPECT_TRUE(deeper.exists());
    }
    EXPECT_FALSE(machine32.exists());
}

TEST_F(qelRegistryMachineText, ReadsAnExistingKeyWithCreate)
{
    machine.setText(L"v", L"text");
    qelString value;
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", value, 1), 1);
    EXPECT_STREQ(value.getStringW(), L"text");
}

TEST_F(qelRegistryMachineText, ReadsTheViewThatIsAskedFor)
{
    machine.setText(L"v", L"64");
    machine32.setText(L"v", L"32\\");
    qelString value;
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", value, 0, true), 1);
    EXPECT_STREQ(value.getStringW(), L"32");
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", value, 0, false), 1);
    EXPECT_STREQ(value.getStringW(), L"64");
}

TEST_F(qelRegistryMachineText, CreatesInTheViewThatIsAskedFor)
{
    qelString value;
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", value, 1, true), 0);
    EXPECT_TRUE(machine32.exists());
    EXPECT_FALSE(machine.exists());
}

TEST_F(qelRegistryMachineText, FailsForAPathThatNamesNoKey)
{
    qelString value(L"before");
    EXPECT_EQ(qelRegistry::getRegValue(std::wstring(300, L'k').c_str(), L"v", value, 1), 0);
    EXPECT_STREQ(value.getStringW(), L"before");
}

// ---------------------------------------------------------------------------------------------------------------------
// Text of the user's hive

using qelRegistryUserText = Readers;

TEST_F(qelRegistryUserText, ComesBackExactlyAsStored)
{
    for (const wchar_t* text : {L"D:\\Data", L"D:\\Data\\", L"D:\\Data\\\\", L"\\", L"\\\\", L"", L"ä ж 鋼 /"})
    {
        user.setText(L"v", text);
        EXPECT_EQ(userText(), text);
    }
}

TEST_F(qelRegistryUserText, IgnoresTheMachinesHive)
{
    machine.setText(L"v", L"machine");
    EXPECT_EQ(userText(0), L"before");
}

TEST_F(qelRegistryUserText, LeavesTheCallersTextAfterAFailure)
{
    EXPECT_EQ(userText(0, L"C:\\Default\\"), L"C:\\Default\\") << "key missing";
    EXPECT_FALSE(user.exists());
    user.create();
    EXPECT_EQ(userText(0, L"C:\\Default\\"), L"C:\\Default\\") << "value missing";
}

TEST_F(qelRegistryUserText, CreatesAMissingKeyAndFails)
{
    qelString value(L"before");
    EXPECT_EQ(qelRegistry::getRegValueCurrentUser(kTestKey, L"v", value, 1), 0);
    EXPECT_STREQ(value.getStringW(), L"before");
    EXPECT_TRUE(user.exists());
    EXPECT_FALSE(machine.exists());
}

TEST_F(qelRegistryUserText, ReadsAnExistingKeyWithCreate)
{
    user.setText(L"v", L"text");
    qelString value;
    EXPECT_EQ(qelRegistry::getRegValueCurrentUser(kTestKey, L"v", value, 1), 1);
    EXPECT_STREQ(value.getStringW(), L"text");
}

// ---------------------------------------------------------------------------------------------------------------------
// Data of every form and size read as text, from both hives

using qelRegistryRawText = Readers;

TEST_F(qelRegistryRawText, NeedsNoTerminator)
{
    setBoth(REG_SZ, L"open", 4 * sizeof(wchar_t));
    expectText(L"open");
}

TEST_F(qelRegistryRawText, EndsAtTheFirstTerminator)
{
    setBoth(REG_SZ, L"one\0two", 8 * sizeof(wchar_t));
    expectText(L"one");
}

TEST_F(qelRegistryRawText, CompletesAnOddLastByteWithZero)
{
    for (const DWORD type : std::initializer_list<DWORD>{REG_SZ, REG_BINARY})
    {
        setBoth(type, "a\0b\0c", 5);
        expectText(L"abc");
        setBoth(type, "a", 1);
        expectText(L"a");
    }
}

TEST_F(qelRegistryRawText, IsEmptyForAValueWithoutData)
{
    for (const DWORD type : std::initializer_list<DWORD>{REG_SZ, REG_NONE, REG_BINARY})
    {
        setBoth(type, "", 0);
        expectText(L"");
    }
}

TEST_F(qelRegistryRawText, HasAtMost4095Units)
{
    const std::wstring longest(4095, L'x');
    setBoth(REG_SZ, longest.c_str(), 4096 * sizeof(wchar_t));
    expectText(longest);
    setBoth(REG_SZ, longest.c_str(), 4095 * sizeof(wchar_t));
    expectText(longest);
}

TEST_F(qelRegistryRawText, LosesTheLastOf4096UnitsWithoutTerminator)
{
    for (const DWORD type : std::initializer_list<DWORD>{REG_SZ, REG_BINARY})
    {
        setBoth(type, std::wstring(4096, L'x').c_str(), 4096 * sizeof(wchar_t));
        expectText(std::wstring(4095, L'x'));
    }
}

TEST_F(qelRegistryRawText, CannotBeReadAbove8192Bytes)
{
    const std::wstring longer(4096, L'x');
    for (const size_t bytes : std::initializer_list<size_t>{8193, 8194})
    {
        setBoth(REG_SZ, longer.c_str(), bytes);
        EXPECT_EQ(machineText(0), L"before");
        EXPECT_EQ(userText(0), L"before");
    }
    // Even where the text itself would fit.
    std::wstring padded(100000, L'\0');
    padded[0] = L'x';
    setBoth(REG_SZ, padded.data(), padded.size() * sizeof(wchar_t));
    EXPECT_EQ(machineText(0), L"before");
    EXPECT_EQ(userText(0), L"before");
}

TEST_F(qelRegistryRawText, KeepsEnvironmentReferences)
{
    setBoth(REG_EXPAND_SZ, L"%SystemRoot%\\x", 15 * sizeof(wchar_t));
    expectText(L"%SystemRoot%\\x");
}

TEST_F(qelRegistryRawText, IsTheFirstOfSeveralTexts)
{
    setBoth(REG_MULTI_SZ, L"one\0two\0", 9 * sizeof(wchar_t));
    expectText(L"one");
}

TEST_F(qelRegistryRawText, TakesTheBytesOfNumbersForUnits)
{
    const DWORD two = 0x00420041;
    setBoth(REG_DWORD, &two, sizeof(two));
    expectText(L"AB");
    const DWORD one = 0x41;
    setBoth(REG_DWORD, &one, sizeof(one));
    expectText(L"A");
    const unsigned long long four = 0x0044004300420041;
    setBoth(REG_QWORD, &four, sizeof(four));
    expectText(L"ABCD");
}

TEST_F(qelRegistryRawText, TakesAnyBytesForUnits)
{
    const unsigned char bytes[] = {0x00, 0xD8, 0xFF, 0xFF, 0x01, 0x00};
    setBoth(REG_BINARY, bytes, sizeof(bytes));
    expectText(L"\xD800\xFFFF\x0001");
}

// ---------------------------------------------------------------------------------------------------------------------
// Numbers

using qelRegistryNumber = Readers;

TEST_F(qelRegistryNumber, IsReadFromTheHiveThatIsAskedFor)
{
    machine.setNumber(L"v", 0xFFFFFFFF);
    user.setNumber(L"v", 0x80000000);
    unsigned long number = 0;
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", number), 1);
    EXPECT_EQ(number, 0xFFFFFFFFUL);
    int userNumber = 0;
    EXPECT_EQ(qelRegistry::getRegValueCurrentUser(kTestKey, L"v", userNumber), 1);
    EXPECT_EQ(userNumber, INT_MIN);
}

TEST_F(qelRegistryNumber, MayBeZero)
{
    const DWORD zero = 0;
    setBoth(REG_DWORD, &zero, sizeof(zero));
    expectNumber(1, 0);
}

TEST_F(qelRegistryNumber, IsReadFromTheViewThatIsAskedFor)
{
    machine.setNumber(L"v", 64);
    machine32.setNumber(L"v", 32);
    unsigned long number = 0;
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", number, 0, true), 1);
    EXPECT_EQ(number, 32UL);
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", number, 0, false), 1);
    EXPECT_EQ(number, 64UL);
}

TEST_F(qelRegistryNumber, MayHaveAnyTypeOfFourBytes)
{
    setBoth(REG_SZ, L"A", 2 * sizeof(wchar_t));
    expectNumber(1, 0x41);
    setBoth(REG_BINARY, "\x01\x02\x03\x04", 4);
    expectNumber(1, 0x04030201);
}

TEST_F(qelRegistryNumber, IsCompletedWithZerosWhenTheValueIsShorter)
{
    const unsigned long expected[] = {0, 0x01, 0x0201, 0x030201};
    for (size_t bytes = 0; bytes < 4; ++bytes)
    {
        setBoth(REG_BINARY, "\x01\x02\x03\x04", bytes);
        expectNumber(1, expected[bytes]);
    }
}

TEST_F(qelRegistryNumber, CannotBeReadFromALongerValue)
{
    for (const size_t bytes : std::initializer_list<size_t>{5, 8})
    {
        setBoth(REG_BINARY, "\x01\x02\x03\x04\x05\x06\x07\x08", bytes);
        expectNumber(0, 0);
    }
}

TEST_F(qelRegistryNumber, LeavesTheCallersNumberAfterAFailure)
{
    expectNumber(0, 0);
    EXPECT_FALSE(machine.exists());
    EXPECT_FALSE(user.exists());
    machine.create();
    user.create();
    expectNumber(0, 0);
}

TEST_F(qelRegistryNumber, CreatesAMissingKeyAndFails)
{
    unsigned long number = 77;
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", number, 1), 0);
    EXPECT_EQ(number, 77UL);
    EXPECT_TRUE(machine.exists());
    EXPECT_FALSE(machine32.exists());
    EXPECT_EQ(qelRegistry::getRegValue(kTestKey, L"v", number, 1, true), 0);
    EXPECT_TRUE(machine32.exists());
    int userNumber = 77;
    EXPECT_EQ(qelRegistry::getRegValueCurrentUser(kTestKey, L"v", userNumber, 1), 0);
    EXPECT_EQ(userNumber, 77);
    EXPECT_TRUE(user.exists());
}

// ---------------------------------------------------------------------------------------------------------------------
// Culture and language

struct Environment : Places
{
    Environment()
        : Places(kEnvironment)
    {
    }
};

using qelRegistryCulture = Environment;

TEST_F(qelRegistryCulture, IsTheUsersBeforeTheMachines)
{
    user.setNumber(L"Language", 1031);
    machine.setNumber(L"Language", 1036);
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 1031UL);
    EXPECT_EQ(qelRegistry::getCurrentLanguage(), 7UL);
}

TEST_F(qelRegistryCulture, IsTheMachinesWithoutTheUsersKeyOrValue)
{
    machine.setNumber(L"Language", 1036);
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 1036UL);
    user.create();
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 1036UL);
}

TEST_F(qelRegistryCulture, IsTheMachinesWhenTheUsersIsNoNumber)
{
    machine.setNumber(L"Language", 1036);
    user.setText(L"Language", L"1031");
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 1036UL);
    user.setBytes(L"Language", REG_BINARY, "\x07\x04", 2);
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 1031UL) << "a shorter value is completed";
}

TEST_F(qelRegistryCulture, MayBeAUsersZero)
{
    user.setNumber(L"Language", 0);
    machine.setNumber(L"Language", 1036);
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 0UL);
    EXPECT_EQ(qelRegistry::getCurrentLanguage(), 9UL);
}

TEST_F(qelRegistryCulture, IsNeutralEnglishWithoutEither)
{
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 9UL) << "keys missing";
    EXPECT_EQ(qelRegistry::getCurrentLanguage(), 9UL);
    user.create();
    machine.create();
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 9UL) << "values missing";
    machine.setBytes(L"Language", REG_QWORD, "\x07\x04\0\0\0\0\0\0", 8);
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 9UL) << "value of another size";
}

TEST_F(qelRegistryCulture, NeverComesFromThe32BitView)
{
    machine32.setNumber(L"Language", 1031);
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 9UL);
}

TEST_F(qelRegistryCulture, IsReadAnewOnEveryCall)
{
    user.setNumber(L"Language", 1031);
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 1031UL);
    user.setNumber(L"Language", 1045);
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 1045UL);
    user.remove(L"Language");
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 9UL);
}

using qelRegistryLanguage = Environment;

TEST_F(qelRegistryLanguage, KnowsExactlyEightCultures)
{
    const struct
    {
        DWORD culture;
        unsigned long language;
    } known[] = {
        {1029, 5}, {1031, 7}, {1036, 12}, {3084, 12}, {1043, 19}, {1045, 21}, {1049, 25}, {1033, 9},
    };
    for (const auto& entry : known)
    {
        user.setNumber(L"Language", entry.culture);
        EXPECT_EQ(qelRegistry::getCurrentLanguage(), entry.language) << entry.culture;
    }
}

TEST_F(qelRegistryLanguage, IsEnglishForEverythingElse)
{
    std::vector<DWORD> others = {
        0,     5,      7,       9,       12,         19,         21, 25, // neutral codes
        0x807, 0xC07,  0x1007,  0x1407,                                  // other German variants
        0x80C, 0x100C, 0x140C,  0x180C,  0x813,      0x819,              // other French, Dutch and Russian variants
        0x411, 0x804,  0x10405, 0x10407, 0x80000407, 0xFFFFFFFF,
    };
    const DWORD known[] = {0x405, 0x407, 0x40C, 0xC0C, 0x413, 0x415, 0x419};
    for (const DWORD culture : known)
    {
        for (const DWORD neighbour : {culture - 1, culture + 1, culture - 0x400, culture + 0x400})
        {
            if (std::find(std::begin(known), std::end(known), neighbour) == std::end(known))
            {
                others.push_back(neighbour);
            }
        }
    }
    for (const DWORD culture : others)
    {
        user.setNumber(L"Language", culture);
        EXPECT_EQ(qelRegistry::getCurrentCultureId(), culture);
        EXPECT_EQ(qelRegistry::getCurrentLanguage(), 9UL) << culture;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// The installation

TEST(qelRegistryEnvironment, NamesTheKeyOfTheInstallation)
{
    EXPECT_STREQ(qelRegistry::getRegPathEnvironment().getStringW(), kEnvironment);
    static_assert(std::is_same_v<decltype(qelRegistry::getRegPathEnvironment()), const qelString>);
}

using qelRegistryPathBinary = Environment;

TEST_F(qelRegistryPathBinary, IsTheMachinesValue)
{
    user.setText(L"BinPath", L"C:\\User");
    EXPECT_STREQ(qelRegistry::getPathBinary().getStringW(), L"");
    machine.setText(L"BinPath", L"C:\\Orvalis\\Bin");
    EXPECT_STREQ(qelRegistry::getPathBinary().getStringW(), L"C:\\Orvalis\\Bin");
}

TEST_F(qelRegistryPathBinary, LosesUpToTwoTrailingBackslashes)
{
    const wchar_t* paths[][2] = {
        {L"D:\\Data\\", L"D:\\Data"},
        {L"D:\\Data\\\\", L"D:\\Data"},
        {L"D:\\Data\\\\\\", L"D:\\Data\\"},
        {L"\\", L"\\"},
        {L"\\\\", L"\\"},
        {L"\\\\\\", L"\\"},
        {L"", L""},
    };
    for (const auto& path : paths)
    {
        machine.setText(L"BinPath", path[0]);
        EXPECT_STREQ(qelRegistry::getPathBinary().getStringW(), path[1]) << path[0];
    }
}

TEST_F(qelRegistryPathBinary, ComesFromTheViewThatIsAskedFor)
{
    machine.setText(L"BinPath", L"C:\\64");
    machine32.setText(L"BinPath", L"C:\\32\\\\");
    EXPECT_STREQ(qelRegistry::getPathBinary(true).getStringW(), L"C:\\32");
    EXPECT_STREQ(qelRegistry::getPathBinary(false).getStringW(), L"C:\\64");
}

TEST_F(qelRegistryPathBinary, IsEmptyAndCreatesNothingWithoutTheKey)
{
    EXPECT_EQ(qelRegistry::getPathBinary(false).isEmpty(), 1);
    EXPECT_EQ(qelRegistry::getPathBinary(true).isEmpty(), 1);
    EXPECT_FALSE(machine.exists());
    EXPECT_FALSE(machine32.exists());
}

TEST_F(qelRegistryPathBinary, ThrowsWhenMemoryIsShortAndIsThereAgainAfterwards)
{
    machine.setText(L"BinPath", L"C:\\Orvalis\\Bin\\");
    qelString path;
    const int failures = qelTest::failEveryAllocation([&] { path = qelRegistry::getPathBinary(); },
                                                      [&] { EXPECT_EQ(path.isEmpty(), 1); });
    EXPECT_GT(failures, 0);
    EXPECT_STREQ(path.getStringW(), L"C:\\Orvalis\\Bin");
}

using qelRegistryPathData = Environment;

TEST_F(qelRegistryPathData, IsTheUsersBeforeTheMachines)
{
    user.setText(L"DataPath", L"C:\\User");
    machine.setText(L"DataPath", L"C:\\Machine");
    machine32.setText(L"DataPath", L"C:\\Machine32");
    EXPECT_STREQ(qelRegistry::getPathData(false).getStringW(), L"C:\\User");
    EXPECT_STREQ(qelRegistry::getPathData(true).getStringW(), L"C:\\User");
}

TEST_F(qelRegistryPathData, IsTheUsersEvenWhenItIsEmpty)
{
    user.setText(L"DataPath", L"");
    machine.setText(L"DataPath", L"C:\\Machine");
    EXPECT_EQ(qelRegistry::getPathData().isEmpty(), 1);
}

TEST_F(qelRegistryPathData, IsTheMachinesOfTheViewWithoutTheUsersKeyOrValue)
{
    machine.setText(L"DataPath", L"C:\\Machine");
    machine32.setText(L"DataPath", L"C:\\Machine32");
    EXPECT_STREQ(qelRegistry::getPathData().getStringW(), L"C:\\Machine");
    user.create();
    EXPECT_STREQ(qelRegistry::getPathData(false).getStringW(), L"C:\\Machine");
    EXPECT_STREQ(qelRegistry::getPathData(true).getStringW(), L"C:\\Machine32");
}

TEST_F(qelRegistryPathData, IsTheMachinesWhenTheUsersIsTooLong)
{
    user.setText(L"DataPath", std::wstring(4096, L'x'));
    machine.setText(L"DataPath", L"C:\\Machine");
    EXPECT_STREQ(qelRegistry::getPathData().getStringW(), L"C:\\Machine");
}

TEST_F(qelRegistryPathData, LosesOneTrailingBackslashOfTheUsers)
{
    const wchar_t* paths[][2] = {
        {L"D:\\Data\\", L"D:\\Data"},
        {L"D:\\Data\\\\", L"D:\\Data\\"},
        {L"\\", L"\\"},
        {L"\\\\", L"\\"},
    };
    for (const auto& path : paths)
    {
        user.setText(L"DataPath", path[0]);
        EXPECT_STREQ(qelRegistry::getPathData().getStringW(), path[1]) << path[0];
    }
}

TEST_F(qelRegistryPathData, LosesUpToTwoTrailingBackslashesOfTheMachines)
{
    const wchar_t* paths[][2] = {
        {L"D:\\Data\\", L"D:\\Data"},
        {L"D:\\Data\\\\", L"D:\\Data"},
        {L"D:\\Data\\\\\\", L"D:\\Data\\"},
        {L"\\", L"\\"},
    };
    for (const auto& path : paths)
    {
        machine.setText(L"DataPath", path[0]);
        EXPECT_STREQ(qelRegistry::getPathData().getStringW(), path[1]) << path[0];
    }
}

TEST_F(qelRegistryPathData, IsEmptyAndCreatesNothingWithoutTheKeys)
{
    EXPECT_EQ(qelRegistry::getPathData(false).isEmpty(), 1);
    EXPECT_EQ(qelRegistry::getPathData(true).isEmpty(), 1);
    EXPECT_FALSE(user.exists());
    EXPECT_FALSE(machine.exists());
    EXPECT_FALSE(machine32.exists());
}

// ---------------------------------------------------------------------------------------------------------------------
// Registered connection strings

struct Databases : Places
{
    Databases()
        : Places(kDatabases)
    {
    }

    static std::wstring connection(const wchar_t* name = L"Profiles")
    {
        return qelRegistry::getDatabaseConnectionsString(name).getStringW();
    }
};

using qelRegistryConnections = Databases;

TEST_F(qelRegistryConnections, AreFoundByName)
{
    machine.setText(L"Profiles", L"DRIVER={A};DBQ=a.mdb");
    machine.setText(L"Mapping", L"DRIVER={B};DBQ=b.mdb");
    EXPECT_EQ(connection(L"Profiles"), L"DRIVER={A};DBQ=a.mdb");
    EXPECT_EQ(connection(L"Mapping"), L"DRIVER={B};DBQ=b.mdb");
    EXPECT_EQ(connection(L"Unknown"), L"");
}

TEST_F(qelRegistryConnections, AreTheUsersBeforeTheMachines)
{
    user.setText(L"Profiles", L"user");
    machine.setText(L"Profiles", L"machine");
    machine.setText(L"Mapping", L"machine");
    EXPECT_EQ(connection(L"Profiles"), L"user");
    EXPECT_EQ(connection(L"Mapping"), L"machine") << "the user's key without that value";
}

TEST_F(qelRegistryConnections, AreTheUsersEvenWhenEmpty)
{
    user.setText(L"Profiles", L"");
    machine.setText(L"Profiles", L"machine");
    EXPECT_EQ(connection(), L"");
}

TEST_F(qelRegistryConnections, AreTheMachinesWhenTheUsersIsTooLong)
{
    user.setText(L"Profiles", std::wstring(4096, L'x'));
    machine.setText(L"Profiles", L"machine");
    EXPECT_EQ(connection(), L"machine");
    machine.setText(L"Profiles", std::wstring(4096, L'x'));
    EXPECT_EQ(connection(), L"");
}

TEST_F(qelRegistryConnections, KeepTrailingBackslashes)
{
    machine.setText(L"Profiles", L"DBQ=C:\\Data\\");
    EXPECT_EQ(connection(), L"DBQ=C:\\Data\\");
    user.setText(L"Profiles", L"DBQ=C:\\User\\\\");
    EXPECT_EQ(connection(), L"DBQ=C:\\User\\\\");
}

TEST_F(qelRegistryConnections, NeverComeFromThe32BitView)
{
    machine32.setText(L"Profiles", L"32");
    EXPECT_EQ(connection(), L"");
}

TEST_F(qelRegistryConnections, AreTheDefaultValueUnderTheEmptyName)
{
    user.setText(L"", L"default");
    EXPECT_EQ(connection(L""), L"default");
}

TEST_F(qelRegistryConnections, AreEmptyAndCreateNothingWithoutTheKeys)
{
    EXPECT_EQ(connection(), L"");
    EXPECT_FALSE(user.exists());
    EXPECT_FALSE(machine.exists());
}

// ---------------------------------------------------------------------------------------------------------------------
// The calls that reach the registry

const char* nameOf(HKEY hive)
{
    return hive == HKEY_LOCAL_MACHINE ? "machine" : hive == HKEY_CURRENT_USER ? "user" : "other";
}

std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

std::string inHex(DWORD number)
{
    char text[16];
    snprintf(text, sizeof(text), "%lX", number);
    return text;
}

/// Records, as one line each, the calls of the library to the registry, and can refuse its keys.
class RegistryCalls
{
public:
    RegistryCalls() { s_current = this; }

    ~RegistryCalls() { s_current = nullptr; }

    RegistryCalls(const RegistryCalls&) = delete;
    RegistryCalls& operator=(const RegistryCalls&) = delete;

    bool refuseOpen = false;
    bool refuseCreate = false;
    std::vector<std::string> lines;
    std::vector<HKEY> held;                 ///< keys given out and not closed
    const volatile wchar_t* text = nullptr; ///< where the last text was read to

private:
    static LSTATUS WINAPI open(HKEY hive, LPCWSTR path, DWORD options, REGSAM access, PHKEY key)
    {
        const LSTATUS status =
            s_current->refuseOpen ? ERROR_ACCESS_DENIED : RegOpenKeyExW(hive, path, options, access, key);
        s_current->opened("open", hive, path, access, status, key);
        EXPECT_EQ(options, 0UL);
        return status;
    }

    static LSTATUS WINAPI create(HKEY hive, LPCWSTR path, DWORD reserved, LPWSTR keyClass, DWORD options, REGSAM access,
                                 const LPSECURITY_ATTRIBUTES security, PHKEY key, LPDWORD disposition)
    {
        LSTATUS status = ERROR_ACCESS_DENIED;
        if (!s_current->refuseCreate)
        {
            status = RegCreateKeyExW(hive, path, reserved, keyClass, options, access, security, key, disposition);
        }
        s_current->opened("create", hive, path, access, status, key);
        EXPECT_EQ(reserved, 0UL);
        EXPECT_EQ(keyClass, nullptr);
        EXPECT_EQ(options, 0UL);
        EXPECT_EQ(security, nullptr);
        EXPECT_EQ(disposition, nullptr);
        return status;
    }

    static LSTATUS WINAPI query(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD bytes)
    {
        const std::vector<HKEY>& held = s_current->held;
        EXPECT_NE(std::find(held.begin(), held.end(), key), held.end());
        EXPECT_EQ(reserved, nullptr);
        std::string line = "query " + narrow(name) + " " + std::to_string(*bytes);
        if (*bytes != sizeof(DWORD))
        {
            EXPECT_NE(type, nullptr);
            line += " type " + std::to_string(type != nullptr ? *type : 0);
            EXPECT_TRUE(std::all_of(data, data + *bytes, [](BYTE byte) { return byte == 0; }));
            s_current->text = reinterpret_cast<const volatile wchar_t*>(data);
        }
        const LSTATUS status = RegQueryValueExW(key, name, reserved, type, data, bytes);
        s_current->lines.push_back(line + (status == ERROR_SUCCESS ? "" : " fails"));
        return status;
    }

    static LSTATUS WINAPI close(HKEY key)
    {
        std::vector<HKEY>& held = s_current->held;
        const auto found = std::find(held.begin(), held.end(), key);
        s_current->lines.push_back(found != held.end() ? "close" : "close of a key that is not open");
        if (found != held.end())
        {
            held.erase(found);
        }
        return RegCloseKey(key);
    }

    void opened(const char* how, HKEY hive, const wchar_t* path, REGSAM access, LSTATUS status, const HKEY* key)
    {
        lines.push_back(std::string(how) + " " + nameOf(hive) + " " + narrow(path) + " " + inHex(access) +
                        (status == ERROR_SUCCESS ? "" : " fails"));
        if (status == ERROR_SUCCESS)
        {
            held.push_back(*key);
        }
    }

    static RegistryCalls* s_current;

    ImportHook m_open{"RegOpenKeyExW", &open};
    ImportHook m_create{"RegCreateKeyExW", &create};
    ImportHook m_query{"RegQueryValueExW", &query};
    ImportHook m_close{"RegCloseKey", &close};
};

RegistryCalls* RegistryCalls::s_current = nullptr;

using Lines = std::vector<std::string>;

struct qelRegistryCalls : Readers
{
    /// The four readers with their hive, rights and the query that each makes.
    struct Reader
    {
        const char* hive;
        const char* readAccess;
        const char* allAccess;
        const char* query;
        std::function<int(int create)> call;
    };

    const std::vector<Reader> readers = {
        {"machine", "20019", "F003F", "query v 8192 type 1",
         [](int create) {
             qelString value;
             return qelRegistry::getRegValue(kTestKey, L"v", value, create, false);
         }},
        {"machine", "20219", "F023F", "query v 8192 type 1",
         [](int create) {
             qelString value;
             return qelRegistry::getRegValue(kTestKey, L"v", value, create, true);
         }},
        {"machine", "20019", "F003F", "query v 4",
         [](int create) {
             unsigned long value = 0;
             return qelRegistry::getRegValue(kTestKey, L"v", value, create, false);
         }},
        {"machine", "20219", "F023F", "query v 4",
         [](int create) {
             unsigned long value = 0;
             return qelRegistry::getRegValue(kTestKey, L"v", value, create, true);
         }},
        {"user", "20019", "F003F", "query v 8192 type 1",
         [](int create) {
             qelString value;
             return qelRegistry::getRegValueCurrentUser(kTestKey, L"v", value, create);
         }},
        {"user", "20019", "F003F", "query v 4",
         [](int create) {
             int value = 0;
             return qelRegistry::getRegValueCurrentUser(kTestKey, L"v", value, create);
         }},
    };

    static std::string line(const char* how, const Reader& reader, const char* access, const char* outcome = "")
    {
        return std::string(how) + " " + reader.hive + " " + narrow(kTestKey) + " " + access + outcome;
    }

    void fill() const
    {
        for (const SavedRegistryKey* key : {&user, &machine, &machine32})
        {
            key->setNumber(L"v", 0x41);
        }
    }
};

TEST_F(qelRegistryCalls, OfReadersOpenQueryAndCloseWithReadingRights)
{
    fill();
    for (const int create : {0, 1})
    {
        for (const Reader& reader : readers)
        {
            RegistryCalls calls;
            EXPECT_EQ(reader.call(create), 1);
            EXPECT_EQ(calls.lines, (Lines{line("open", reader, reader.readAccess), reader.query, "close"}));
        }
    }
}

TEST_F(qelRegistryCalls, OfReadersEndAtAMissingKey)
{
    for (const Reader& reader : readers)
    {
        RegistryCalls calls;
        EXPECT_EQ(reader.call(0), 0);
        EXPECT_EQ(calls.lines, (Lines{line("open", reader, reader.readAccess, " fails")}));
    }
}

TEST_F(qelRegistryCalls, OfReadersCloseTheKeyOfAMissingValue)
{
    for (const SavedRegistryKey* key : {&user, &machine, &machine32})
    {
        key->create();
    }
    for (const Reader& reader : readers)
    {
        RegistryCalls calls;
        EXPECT_EQ(reader.call(0), 0);
        EXPECT_EQ(calls.lines,
                  (Lines{line("open", reader, reader.readAccess), std::string(reader.query) + " fails", "close"}));
    }
}

TEST_F(qelRegistryCalls, OfReadersCreateWithAllRightsWhatCannotBeOpened)
{
    fill();
    for (const Reader& reader : readers)
    {
        RegistryCalls calls;
        calls.refuseOpen = true;
        EXPECT_EQ(reader.call(1), 1) << "the key that was created is read";
        EXPECT_EQ(calls.lines, (Lines{line("open", reader, reader.readAccess, " fails"),
                                      line("create", reader, reader.allAccess), reader.query, "close"}));
    }
}

TEST_F(qelRegistryCalls, OfReadersNeverQueryARefusedKey)
{
    fill();
    for (const Reader& reader : readers)
    {
        RegistryCalls calls;
        calls.refuseOpen = true;
        calls.refuseCreate = true;
        EXPECT_EQ(reader.call(1), 0);
        EXPECT_EQ(calls.lines, (Lines{line("open", reader, reader.readAccess, " fails"),
                                      line("create", reader, reader.allAccess, " fails")}));
    }
}

TEST_F(qelRegistryCalls, LeaveTheCallersValuesAtARefusedKey)
{
    fill();
    RegistryCalls calls;
    calls.refuseOpen = true;
    calls.refuseCreate = true;
    expectNumber(0, 0);
    EXPECT_EQ(userText(0, L"C:\\Default\\"), L"C:\\Default\\");
    EXPECT_EQ(machineText(0, L"C:\\Default\\"), L"C:\\Default");
}

TEST_F(qelRegistryCalls, LeaveNoTextBehindOnTheStack)
{
    user.setText(L"v", std::wstring(4095, L'S'));
    qelString value;
    RegistryCalls calls;
    EXPECT_EQ(qelRegistry::getRegValueCurrentUser(kTestKey, L"v", value), 1);
    int left = 0;
    for (int i = 0; i < 4096; ++i)
    {
        left += calls.text[i] == L'S' ? 1 : 0;
    }
    EXPECT_EQ(left, 0);
}

struct qelRegistryInstallationCalls : testing::Test
{
    const SavedRegistryKey user{HKEY_CURRENT_USER, kEnvironment};
    const SavedRegistryKey machine{HKEY_LOCAL_MACHINE, kEnvironment};
    const SavedRegistryKey machine32{HKEY_LOCAL_MACHINE, kEnvironment, KEY_WOW64_32KEY};
    const SavedRegistryKey userDatabases{HKEY_CURRENT_USER, kDatabases};
    const SavedRegistryKey machineDatabases{HKEY_LOCAL_MACHINE, kDatabases};

    const std::string openUser = "open user " + narrow(kEnvironment) + " 20019";
    const std::string openMachine = "open machine " + narrow(kEnvironment) + " 20019";
    const std::string openMachine32 = "open machine " + narrow(kEnvironment) + " 20219";
    const std::string openUserDatabases = "open user " + narrow(kDatabases) + " 20019";
    const std::string openMachineDatabases = "open machine " + narrow(kDatabases) + " 20019";

    void createAll() const
    {
        for (const SavedRegistryKey* key : {&user, &machine, &machine32, &userDatabases, &machineDatabases})
        {
            key->create();
        }
    }

    /// The calls for the key `open`, whose query fails.
    static Lines failing(const std::string& open, const std::string& query)
    {
        return {open, query + " fails", "close"};
    }
};

/// The lines of a call that asks one key after the other.
Lines both(Lines first, const Lines& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST_F(qelRegistryInstallationCalls, AskBothHivesWithReadingRights)
{
    createAll();
    {
        RegistryCalls calls;
        qelRegistry::getCurrentCultureId();
        EXPECT_EQ(calls.lines, both(failing(openUser, "query Language 4"), failing(openMachine, "query Language 4")));
    }
    for (const bool view32 : {false, true})
    {
        const std::string& openView = view32 ? openMachine32 : openMachine;
        {
            RegistryCalls calls;
            qelRegistry::getPathBinary(view32);
            EXPECT_EQ(calls.lines, failing(openView, "query BinPath 8192 type 1"));
        }
        {
            RegistryCalls calls;
            qelRegistry::getPathData(view32);
            EXPECT_EQ(calls.lines, both(failing(openUser, "query DataPath 8192 type 1"),
                                        failing(openView, "query DataPath 8192 type 1")));
        }
    }
    {
        RegistryCalls calls;
        qelRegistry::getDatabaseConnectionsString(L"n");
        EXPECT_EQ(calls.lines, both(failing(openUserDatabases, "query n 8192 type 1"),
                                    failing(openMachineDatabases, "query n 8192 type 1")));
    }
}

TEST_F(qelRegistryInstallationCalls, EndAtTheUsersValue)
{
    user.setNumber(L"Language", 1031);
    user.setText(L"DataPath", L"");
    userDatabases.setText(L"n", L"");
    {
        RegistryCalls calls;
        EXPECT_EQ(qelRegistry::getCurrentCultureId(), 1031UL);
        EXPECT_EQ(calls.lines, (Lines{openUser, "query Language 4", "close"}));
    }
    {
        RegistryCalls calls;
        EXPECT_EQ(qelRegistry::getPathData().isEmpty(), 1);
        EXPECT_EQ(calls.lines, (Lines{openUser, "query DataPath 8192 type 1", "close"}));
    }
    {
        RegistryCalls calls;
        EXPECT_EQ(qelRegistry::getDatabaseConnectionsString(L"n").isEmpty(), 1);
        EXPECT_EQ(calls.lines, (Lines{openUserDatabases, "query n 8192 type 1", "close"}));
    }
}

TEST_F(qelRegistryInstallationCalls, GiveTheFallbackForRefusedKeys)
{
    for (const SavedRegistryKey* key : {&user, &machine})
    {
        key->setNumber(L"Language", 1031);
        key->setText(L"BinPath", L"C:\\Bin");
        key->setText(L"DataPath", L"C:\\Data");
    }
    userDatabases.setText(L"n", L"x");
    machineDatabases.setText(L"n", L"x");
    RegistryCalls calls;
    calls.refuseOpen = true;
    EXPECT_EQ(qelRegistry::getCurrentCultureId(), 9UL);
    EXPECT_EQ(qelRegistry::getCurrentLanguage(), 9UL);
    EXPECT_EQ(qelRegistry::getPathBinary().isEmpty(), 1);
    EXPECT_EQ(qelRegistry::getPathData().isEmpty(), 1);
    EXPECT_EQ(qelRegistry::getDatabaseConnectionsString(L"n").isEmpty(), 1);
    const auto opens = [](const std::string& line) { return line.compare(0, 5, "open ") == 0; };
    EXPECT_TRUE(std::all_of(calls.lines.begin(), calls.lines.end(), opens)) << testing::PrintToString(calls.lines);
}

TEST_F(qelRegistryInstallationCalls, LeaveNoHandleOpen)
{
    createAll();
    machine.setText(L"BinPath", L"C:\\Bin");
    const auto callAll = [] {
        qelString text;
        unsigned long number = 0;
        int userNumber = 0;
        for (const int create : {0, 1})
        {
            for (const wchar_t* key : {kEnvironment, kTestKey})
            {
                qelRegistry::getRegValue(key, L"BinPath", text, create);
                qelRegistry::getRegValue(key, L"BinPath", number, create);
                qelRegistry::getRegValueCurrentUser(key, L"BinPath", text, create);
                qelRegistry::getRegValueCurrentUser(key, L"BinPath", userNumber, create);
            }
        }
        qelRegistry::getCurrentLanguage();
        qelRegistry::getPathBinary();
        qelRegistry::getPathData();
        qelRegistry::getDatabaseConnectionsString(L"n");
    };
    const SavedRegistryKey userTest(HKEY_CURRENT_USER, kTestKey);
    const SavedRegistryKey machineTest(HKEY_LOCAL_MACHINE, kTestKey);
    callAll(); // the system keeps a handle of each hive from its first use
    const int before = qelTest::openHandles();
    for (int i = 0; i < 20; ++i)
    {
        callAll();
    }
    EXPECT_EQ(qelTest::openHandles(), before);
}
} // namespace
