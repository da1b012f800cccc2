// Mutated regular expressions and texts, in guarded memory.
#include "hostile/Mutation.h"
#include "qelRegExWrapper.h"

#include <gtest/gtest.h>

#include <string>

TEST(HostilePatterns, EndWithWholeMatchesOrNone)
{
    static const qelTest::Corpus<std::wstring> patterns = {
        {L"(a+)+b", L"^(\\w+)-(\\d{2,4})$", L"[a-z]+|[^0-9]*", L"(?:x|y)*?z", L"(a|ab)(c|bcd)(d*)", L"\\bHEA\\s*(\\d+)",
         L"(?=a)a.*", L"((((a))))\\4", L"a{0,3}b{2,}", L"[[:alpha:]]+", L"(?i:abc)", L"\\x41\\u0042"},
        {L"(", L")", L"[", L"]", L"*", L"+?", L"{2,1}", L"{,}", L"{99999}", L"\\", L"|", L"(?", L"(?<", L"[^", L"[z-a]",
         L"\\1", L"^", L"$", L".*"}};
    static const qelTest::Corpus<std::wstring> texts = {
        {L"aaaaaaaaaaaaaaaaaaaaaa", L"HEA-200", L"abcd", L"xyxyz", L"", L"aaab", L"ABC"},
        {L"a", L"b", L"1", L"\n", L"\xD800"}};
    qelTest::SeededRun run(20);
    const qelTest::GuardedHeap heap;
    qelTest::GuardedPlace<wchar_t> place(4096);
    while (run.next())
    {
        qelRegExWrapper wrapper;
        wrapper.setRegularExpression(place.put(mutated(run, patterns)));
        const std::wstring text = mutated(run, texts);
        qelArray<qelString> results;
        results.append(L"from before");
        const bool isMatch = wrapper.match(place.put(text), results);
        ASSERT_STREQ(L"from before", results[0].getStringW());
        if (!isMatch)
        {
            EXPECT_EQ(1, results.length());
        }
        else if (!text.empty())
        {
            ASSERT_GE(results.length(), 2);
            EXPECT_EQ(text, results[1].getStringW());
        }
        for (long i = 2; i < results.length(); ++i)
        {
            // A group may lie in a look-ahead, but always in the text.
            EXPECT_NE(std::wstring::npos, text.find(results[i].getStringW()));
        }
    }
}
