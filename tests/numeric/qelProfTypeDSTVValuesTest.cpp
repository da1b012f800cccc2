#include "qelProfTypeDSTVValues.h"
#include "support/GuardedMemory.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <string.h>

#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace
{
using Values = qelProfTypeDSTVValues;

struct Dimension
{
    const char* name;
    double (Values::*get)() const;
    void (Values::*set)(const double&);
    size_t offset; ///< place in the record, in bytes
};

const Dimension dimensions[] = {
    {"H1", &Values::getH1, &Values::setH1, 8},
    {"H2", &Values::getH2, &Values::setH2, 16},
    {"H3", &Values::getH3, &Values::setH3, 24},
    {"B1", &Values::getB1, &Values::setB1, 32},
    {"B2", &Values::getB2, &Values::setB2, 40},
    {"B3", &Values::getB3, &Values::setB3, 48},
    {"TS", &Values::getTS, &Values::setTS, 56},
    {"TG", &Values::getTG, &Values::setTG, 64},
    {"T1", &Values::getT1, &Values::setT1, 72},
    {"C", &Values::getC, &Values::setC, 80},
    {"R1", &Values::getR1, &Values::setR1, 88},
    {"R2", &Values::getR2, &Values::setR2, 96},
    {"R3", &Values::getR3, &Values::setR3, 104},
    {"K", &Values::getK, &Values::setK, 112},
    {"F1", &Values::getF1, &Values::setF1, 120},
    {"F2", &Values::getF2, &Values::setF2, 128},
    {"F3", &Values::getF3, &Values::setF3, 136},
    {"ALPHA_S", &Values::getALPHA_S, &Values::setALPHA_S, 144},
    {"ALPHA_G", &Values::getALPHA_G, &Values::setALPHA_G, 152},
    {"EY", &Values::getEY, &Values::setEY, 160},
    {"EZ", &Values::getEZ, &Values::setEZ, 168},
    {"W1", &Values::getW1, &Values::setW1, 184},
    {"W2", &Values::getW2, &Values::setW2, 192},
    {"W3", &Values::getW3, &Values::setW3, 200},
    {"A", &Values::getA, &Values::setA, 208},
    {"G", &Values::getG, &Values::setG, 216},
    {"GH", &Values::getGH, &Values::setGH, 224},
    {"U", &Values::getU, &Values::setU, 232},
};

const size_t reservedOffset = 176;

/// A record in memory that held something else before.
class RecordInFilledMemory
{
public:
    explicit RecordInFilledMemory(unsigned char filling)
        : m_memory(sizeof(Values))
    {
        // Written one by one where the compiler cannot see that they are overwritten.
        volatile unsigned char* bytes = m_memory.get();
        for (size_t i = 0; i < sizeof(Values); ++i)
        {
            bytes[i] = filling;
        }
        m_record = new (static_cast<void*>(m_memory.get())) Values;
    }

    Values& record() { return *m_record; }

    template <class T> T at(size_t offset)
    {
        T value;
        memcpy(&value, m_memory.get() + offset, sizeof value);
        return value;
    }

    template <class T> void put(size_t offset, T value) { memcpy(m_memory.get() + offset, &value, sizeof value); }

private:
    qelTest::GuardedBuffer<unsigned char> m_memory;
    Values* m_record;
};

std::wstring code(int type)
{
    Values values;
    values.setDSTVType(static_cast<eDSTVType>(type));
    return values.getProftypeString().getStringW();
}
} // namespace

TEST(qelProfTypeDSTVValues, IsAPlainValueWithoutVirtualOperations)
{
    EXPECT_FALSE(std::is_polymorphic<Values>::value);
    EXPECT_EQ(sizeof(Values), 240u);
    EXPECT_EQ(sizeof(eDSTVType), 4u);
    EXPECT_TRUE(static_cast<int>(eDSTV_None) < 0) << "the type is signed";
}

TEST(qelProfTypeDSTVValues, StartsWithEveryDimensionAtZero)
{
    RecordInFilledMemory memory(0x5A);
    for (const Dimension& dimension : dimensions)
    {
        EXPECT_EQ((memory.record().*dimension.get)(), 0.0) << dimension.name;
    }
    EXPECT_EQ(memory.at<long long>(reservedOffset), 0);
}

TEST(qelProfTypeDSTVValues, ConstructorDeliberatelyLeavesTheTypeAsItIsInMemory)
{
    EXPECT_EQ(RecordInFilledMemory(0x5A).at<int>(0), 0x5A5A5A5A);
    EXPECT_EQ(RecordInFilledMemory(0x00).at<int>(0), 0);
    EXPECT_EQ(RecordInFilledMemory(0xFF).at<int>(0), -1);
}

TEST(qelProfTypeDSTVValues, KeepsEachDimensionInAFieldOfItsOwnInStorageOrder)
{
    RecordInFilledMemory memory(0x5A);
    double value = 0.5;
    for (const Dimension& dimension : dimensions)
    {
        value += 1;
        (memory.record().*dimension.set)(value);
    }
    value = 0.5;
    for (const Dimension& dimension : dimensions)
    {
        value += 1;
        EXPECT_EQ((memory.record().*dimension.get)(), value) << dimension.name;
        EXPECT_EQ(memory.at<double>(dimension.offset), value) << dimension.name;
    }
    EXPECT_EQ(memory.at<long long>(reservedOffset), 0) << "no setter reaches the reserved field";
}

TEST(qelProfTypeDSTVValues, StoresDimensionsUnchanged)
{
    using Limits = std::numeric_limits<double>;
    const double odd[] = {-1.5, -0.0, Limits::infinity(), Limits::denorm_min(), Limits::quiet_NaN()};
    for (const Dimension& dimension : dimensions)
    {
        for (const double value : odd)
        {
            Values values;
            (values.*dimension.set)(value);
            const double stored = (values.*dimension.get)();
            EXPECT_EQ(memcmp(&stored, &value, sizeof value), 0) << dimension.name << ' ' << value;
        }
    }
}

TEST(qelProfTypeDSTVValues, TakesADimensionFromItself)
{
    Values values;
    values.setH1(190);
    values.setH2(values.getH1());
    EXPECT_EQ(values.getH2(), 190.0);
}

TEST(qelProfTypeDSTVValues, CopiesTypeAndAllDimensionsTheReservedOneIncluded)
{
    RecordInFilledMemory source(0);
    source.put<int>(0, eDSTV_RO);
    for (size_t offset = 8; offset < sizeof(Values); offset += 8)
    {
        source.put<double>(offset, static_cast<double>(offset) + 0.25);
    }

    RecordInFilledMemory copied(0x5A);
    copied.record() = source.record();
    RecordInFilledMemory moved(0x5A);
    moved.record() = std::move(source.record());
    const Values constructed(source.record());

    for (size_t offset = 8; offset < sizeof(Values); offset += 8)
    {
        const double value = static_cast<double>(offset) + 0.25;
        EXPECT_EQ(source.at<double>(offset), value) << "a source keeps its values";
        EXPECT_EQ(copied.at<double>(offset), value);
        EXPECT_EQ(moved.at<double>(offset), value);
        EXPECT_EQ(memcmp(reinterpret_cast<const char*>(&constructed) + offset, &value, sizeof value), 0);
    }
    EXPECT_EQ(copied.record().getDSTVType(), eDSTV_RO);
    EXPECT_EQ(moved.record().getDSTVType(), eDSTV_RO);
    EXPECT_EQ(constructed.getDSTVType(), eDSTV_RO);
}

TEST(qelProfTypeDSTVType, HasItsValueAndItsCode)
{
    const struct
    {
        eDSTVType type;
        int value;
        const wchar_t* code;
    } rows[] = {
        // clang-format off
        {eDSTV_None, -1, L"SO"},
        {eDSTV_I, 0, L"I"},
        {eDSTV_L, 1, L"L"},
        {eDSTV_U, 2, L"U"},
        {eDSTV_B, 3, L"B"},
        {eDSTV_RU, 4, L"RU"},
        {eDSTV_RO, 5, L"RO"},
        {eDSTV_M, 6, L"M"},
        {eDSTV_C, 7, L"C"},
        {eDSTV_T, 8, L"T"},
        {eDSTV_Z, 9, L"Z"},
        {eDSTV_KA, 10, L"KA"},
        {eDSTV_KF, 11, L"KF"},
        {eDSTV_KQ, 12, L"KQ"},
        {eDSTV_CCS, 13, L"CCS"},
        {eDSTV_PL1, 14, L"PL1"},
        {eDSTV_PL2, 15, L"PL2"},
        {eDSTV_SO, 16, L"SO"},
        {eDSTV_CSE, 17, L"CSE"},
        // clang-format on
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(static_cast<int>(row.type), row.value);
        EXPECT_EQ(code(row.value), row.code) << row.value;
    }
}

TEST(qelProfTypeDSTVType, IsASpecialProfileWhenItsValueIsUnknown)
{
    for (const int type : {-2, 18, 19, 1000, INT_MIN, INT_MAX})
    {
        EXPECT_EQ(code(type), L"SO") << type;
    }
}

TEST(qelProfTypeDSTVType, UnsetAndSpecialProfilesDeliberatelyShareTheirCode)
{
    EXPECT_EQ(code(eDSTV_None), code(eDSTV_SO));
}

TEST(qelProfTypeDSTVType, IsStoredUnchanged)
{
    Values values;
    for (const int type : {-1, 0, 17, 18, INT_MIN, INT_MAX})
    {
        const eDSTVType stored = static_cast<eDSTVType>(type);
        values.setDSTVType(stored);
        EXPECT_EQ(values.getDSTVType(), stored);
    }
}
