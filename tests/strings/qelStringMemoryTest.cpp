// How the text allocates, what it leaves behind when it frees, and what it does when there is no memory.

#include "qelString.h"
#include "support/GuardedMemory.h"
#include "support/ImportHook.h"
#include "support/MemorySearch.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <time.h>
#include <windows.h>

#include <new>
#include <string>

namespace
{
size_t allocations;
size_t largestAllocation;
size_t releases;
bool nextAllocationFails;

void* countedMalloc(size_t bytes)
{
    if (nextAllocationFails)
    {
        // Only this one: throwing takes memory, too.
        nextAllocationFails = false;
        return nullptr;
    }
    ++allocations;
    largestAllocation = bytes > largestAllocation ? bytes : largestAllocation;
    return malloc(bytes);
}

void countedFree(void* block)
{
    releases += block != nullptr ? 1U : 0U;
    free(block);
}

/// Watches what the library allocates and frees.
class AllocationCounter
{
public:
    AllocationCounter()
        : m_malloc("malloc", &countedMalloc)
        , m_free("free", &countedFree)
    {
        allocations = 0;
        largestAllocation = 0;
        releases = 0;
        nextAllocationFails = false;
    }

private:
    qelTest::ImportHook m_malloc;
    qelTest::ImportHook m_free;
};

const wchar_t kSecretWide[] = L"The quick secret, number 40712";
const char kSecretNarrow[] = "The quick secret, number 40712";
size_t secretsFreed;

/// Looks at every block that the library frees, at the moment it does.
void lookingFree(void* block)
{
    if (block != nullptr)
    {
        ++releases;
        const size_t size = qelTest::sizeOfBlock(block);
        // From the fourth unit on, so that a start overwritten by chance does not hide the rest.
        secretsFreed += qelTest::occurrences(block, size, kSecretWide + 4, sizeof kSecretWide - 5 * sizeof(wchar_t));
        secretsFreed += qelTest::occurrences(block, size, kSecretNarrow + 4, sizeof kSecretNarrow - 5);
    }
    free(block);
}

class LookingAtFreedBlocks
{
public:
    LookingAtFreedBlocks()
        : m_free("free", &lookingFree)
    {
        releases = 0;
        secretsFreed = 0;
    }

private:
    qelTest::ImportHook m_free;
};

TEST(qelStringAllocation, CopiesAllocateNothing)
{
    const qelString text(L"abc");
    const AllocationCounter counter;
    qelString copy(text);
    copy = text;
    const qelString another = copy;
    EXPECT_EQ(allocations, 0U);
}

TEST(qelStringAllocation, EmptyTextAllocatesNothing)
{
    const AllocationCounter counter;
    const qelString text(L"");
    const qelString narrow("");
    qelString sum = text + narrow;
    sum.empty();
    EXPECT_EQ(allocations, 0U);
}

TEST(qelStringAllocation, EveryTextAndEveryNarrowFormIsOneBlock)
{
    const AllocationCounter counter;
    {
        const qelString text(L"abc");
        EXPECT_EQ(allocations, 1U);
        (void)text.getStringA();
        (void)text.getStringA();
        EXPECT_EQ(allocations, 2U);
        const qelString narrow("abc");
        EXPECT_EQ(allocations, 3U);
        const qelString sum = text + narrow;
        EXPECT_EQ(allocations, 4U);
    }
    EXPECT_EQ(releases, 4U);
}

TEST(qelStringAllocation, IsNoLargerThanTheTextNeeds)
{
    const std::wstring wide(1000, L'w');
    const std::string narrow(1000, 'n');
    const AllocationCounter counter;
    const qelString fromWide(wide.c_str());
    const qelString fromNarrow(narrow.c_str());
    // The text, its terminator, and the representation with at most a few units of rounding.
    EXPECT_LE(largestAllocation, 2 * 1001 + sizeof(qelStringRepr) + 16);
    EXPECT_LT(allocations, 4U);
}

TEST(qelStringAllocation, EverythingIsFreedAgain)
{
    const AllocationCounter counter;
    for (int i = 0; i < 10; ++i)
    {
        qelString text(L"abc");
        qelString copy(text);
        copy += text;
        (void)copy.getStringA();
        copy.setAt(0, 'x');
        (void)copy.getStringA();
        copy >>= 1;
        text = copy;
        text = "narrow";
        text = text.getStringA();
        text.empty();
    }
    EXPECT_GT(allocations, 0U);
    EXPECT_EQ(allocations, releases);
}

TEST(qelStringAllocation, SurfacesLackOfMemoryAndKeepsTheText)
{
    qelString text(L"abc");
    bool threw[6] = {};
    void (*const operations[])(qelString&) = {
        [](qelString& s) { s = L"other"; }, [](qelString& s) { s = "other"; },          [](qelString& s) { s += s; },
        [](qelString& s) { s >>= 1; },      [](qelString& s) { (void)s.getStringA(); }, [](qelString& s) { s >> 1; },
    };
    for (size_t i = 0; i < 6; ++i)
    {
        const AllocationCounter counter;
        nextAllocationFails = true;
        try
        {
            operations[i](text);
        }
        catch (const std::bad_alloc&)
        {
            threw[i] = true;
        }
    }
    for (const bool one : threw)
    {
        EXPECT_TRUE(one);
    }
    EXPECT_STREQ(text.getStringW(), L"abc");
    EXPECT_STREQ(text.getStringA(), "abc");
    EXPECT_EQ(shareCountOf(text), 1);
}

TEST(qelStringScrub, TextIsWipedBeforeItIsFreed)
{
    qelString* text = new qelString(kSecretWide);
    const LookingAtFreedBlocks looking;
    text->~qelString();
    EXPECT_GE(releases, 1U);
    EXPECT_EQ(secretsFreed, 0U);
    ::operator delete(text);
}

TEST(qelStringScrub, NarrowFormIsWipedBeforeItIsFreed)
{
    const LookingAtFreedBlocks looking;
    {
        qelString text(kSecretWide);
        (void)text.getStringA();
        text = L"other";
        EXPECT_EQ(releases, 2U);
        text = kSecretNarrow;
        (void)text.getStringA();
    }
    EXPECT_EQ(releases, 5U);
    EXPECT_EQ(secretsFreed, 0U);
}

bool firstConversionIsCut;

/// What a code page with several bytes a character does to a buffer of one byte a unit: fills it, and reports that.
int __stdcall cutFirst(UINT page, DWORD flags, const wchar_t* text, int units, char* target, int capacity,
                       const char* replacement, BOOL* replaced)
{
    const int bytes = WideCharToMultiByte(page, flags, text, units, target, capacity, replacement, replaced);
    const bool cut = firstConversionIsCut && target != nullptr;
    firstConversionIsCut = firstConversionIsCut && !cut;
    return cut ? 0 : bytes;
}

TEST(qelStringScrub, WhatFilledTheFirstRoomForANarrowFormIsWipedWhenItWasTooSmall)
{
    const qelString text(kSecretWide);
    const qelTest::ImportHook hook("WideCharToMultiByte", &cutFirst);
    const LookingAtFreedBlocks looking;
    firstConversionIsCut = true;
    EXPECT_STREQ(text.getStringA(), kSecretNarrow);
    EXPECT_FALSE(firstConversionIsCut);
    EXPECT_EQ(releases, 1U);
    EXPECT_EQ(secretsFreed, 0U);
}

TEST(qelStringScrub, EveryOperationWipesWhatItFrees)
{
    const LookingAtFreedBlocks looking;
    {
        const qelString secret(kSecretWide);
        qelString text(secret);
        text += secret;
        (void)text.getStringA();
        text >>= 1;
        (void)text.getStringA();
        text.setAt(0, L'x');
        text = text.getStringW() + 1;
        (void)text.getStringA();
        text = text.getStringA();
        text.setFromUnsignedShortString(secret.getStringWAsUnsignedShort());
        (void)text.getStringA();
        text.empty();
    }
    EXPECT_GE(releases, 10U);
    EXPECT_EQ(secretsFreed, 0U);
}

TEST(qelStringScrub, WatchingSeesASecretThatIsNotWiped)
{
    const LookingAtFreedBlocks looking;
    long size = sizeof kSecretWide;
    unsigned char* block = qelMemoryControllerController::allocateArray(size, 1);
    memcpy(block, kSecretWide, sizeof kSecretWide);
    qelMemoryControllerController::deallocateArray(block);
    EXPECT_EQ(secretsFreed, 1U);
}

/// Every operation that makes, changes or takes apart a text.
void (*const allOperations[])(qelString&) = {
    [](qelString& s) { s = L"other"; },
    [](qelString& s) { s = "other"; },
    [](qelString& s) { s += s; },
    [](qelString& s) { s >>= 1; },
    [](qelString& s) { s = s >> 2; },
    [](qelString& s) { s.setAt(0, L'x'); },
    [](qelString& s) { s.replace(L'q', L'Q'); },
    [](qelString& s) { s.replace(L'q', L'\0'); },
    [](qelString& s) { s.replace(L"quick", L"slow"); },
    [](qelString& s) { s.replace(L" ", s); },
    [](qelString& s) { s.replace(1, 3, s); },
    [](qelString& s) { s.removeAll(L'T'); },
    [](qelString& s) { s = s.left(29); },
    [](qelString& s) { s = s.right(29); },
    [](qelString& s) { s = s.mid(1); },
    [](qelString& s) { s.copy(s, 1, 28); },
    [](qelString& s) { s.TrimLeft(L"T"); },
    [](qelString& s) { s.TrimRight(L"2"); },
    [](qelString& s) { s.toUpper(); },
    [](qelString& s) { s.toLower(); },
    [](qelString& s) { s = s.strRev(); },
    [](qelString& s) { s.format(L"<%s>", s.getStringW()); },
    [](qelString& s) { s.format("<%s>", s.getStringA()); },
    [](qelString& s) { s.setFromMIFString(s.getStringA()); },
    [](qelString& s) {
        const tm when = {};
        s.formatTime(2000, s.getStringA(), &when);
    },
    [](qelString& s) {
        qelArray<qelString> tokens;
        qelString::getTokens(s, tokens, L",");
        qelString::getTokens(s, tokens, L",", L"T");
    },
    [](qelString& s) {
        qelString drive, dir, fname, ext;
        s.SplitPath(drive, dir, fname, ext);
        s.MakePath(drive, dir, fname, ext);
    },
    [](qelString& s) { (void)(s.find(L"40712") + s.find_last_of('2') + qelString::compareWithNumbers(s, L"The 5")); },
};

TEST(qelStringScrub, EachOperationAloneWipesWhatItFrees)
{
    const LookingAtFreedBlocks looking;
    for (size_t i = 0; i < sizeof allOperations / sizeof *allOperations; ++i)
    {
        releases = 0;
        {
            qelString text(kSecretWide);
            (void)text.getStringA();
            allOperations[i](text);
            (void)text.getStringA();
        }
        EXPECT_GE(releases, 2U) << i;
        EXPECT_EQ(secretsFreed, 0U) << i;
    }
}

TEST(qelStringScrub, WhatIsCutOffALongTextIsWipedToo)
{
    const std::string tooLong = std::string(524288, 'n') + kSecretNarrow;
    const LookingAtFreedBlocks looking;
    {
        qelString text;
        text.setFromMIFString(tooLong.c_str());
        EXPECT_EQ(text.length(), 524288);
    }
    EXPECT_GE(releases, 2U);
    EXPECT_EQ(secretsFreed, 0U);
}

TEST(qelStringGuard, EachOperationStaysInsideItsOwnBlocks)
{
    const std::wstring source = L"The quick,secret. number 07 40";
    const qelTest::GuardedHeap heap;
    for (size_t length = 0; length <= source.size(); ++length)
    {
        for (const auto operation : allOperations)
        {
            qelString text(source.substr(source.size() - length).c_str());
            operation(text);
            EXPECT_GE(text.length(), 0);
        }
    }
}

/// A text that stands nowhere in the process until it is made, and the part of it that is looked for.
class Secret
{
public:
    Secret()
    {
        for (size_t i = 0; i < kLength; ++i)
        {
            m_wide[i] = static_cast<wchar_t>(L'!' + (i * i * 7 + i * 3 + 5) % 90);
            m_narrow[i] = static_cast<char>(m_wide[i]);
        }
    }

    const wchar_t* wide() const { return m_wide; }
    const char* narrow() const { return m_narrow; }

    size_t found() const
    {
        return qelTest::occurrencesInHeaps(m_wide + 40, 40 * sizeof(wchar_t)) +
               qelTest::occurrencesInHeaps(m_narrow + 40, 40);
    }

private:
    static const size_t kLength = 120;

    wchar_t m_wide[kLength + 1] = {};
    char m_narrow[kLength + 1] = {};
};

TEST(qelStringScrub, SecretIsNowhereInTheHeapsAfterItsStrings)
{
    const Secret secret;
    ASSERT_EQ(secret.found(), 0U);
    {
        const qelString text(secret.wide());
        EXPECT_EQ(secret.found(), 1U);
        (void)text.getStringA();
        EXPECT_EQ(secret.found(), 2U);
        qelString copy(text);
        EXPECT_EQ(secret.found(), 2U);
        (void)copy.getStringA();
        EXPECT_EQ(secret.found(), 3U);
        copy += L"tail";
        EXPECT_EQ(secret.found(), 3U);
        (void)copy.getStringA();
        EXPECT_EQ(secret.found(), 4U);
        qelString narrow(secret.narrow());
        EXPECT_EQ(secret.found(), 5U);
        narrow >>= 1;
        narrow.setAt(0, 'x');
        narrow = narrow.getStringA();
        EXPECT_EQ(secret.found(), 5U);
        copy.empty();
        EXPECT_EQ(secret.found(), 3U);
    }
    EXPECT_EQ(secret.found(), 0U);
}

TEST(qelStringScrub, SecretIsNowhereInTheHeapsAfterTheirArray)
{
    const Secret secret;
    {
        qelArray<qelString> texts;
        for (int i = 0; i < 20; ++i)
        {
            texts.append(qelString(secret.wide()) + qelString(secret.narrow()));
            (void)texts.last().getStringA();
        }
        EXPECT_GT(secret.found(), 0U);
    }
    EXPECT_EQ(secret.found(), 0U);
}
} // namespace
