// All short texts of a few letters, for tests that compare with an oracle.
#ifndef QEL_TEST_ALL_TEXTS_H
#define QEL_TEST_ALL_TEXTS_H

#include <stddef.h>

#include <string>
#include <vector>

namespace qelTest
{
/// Every text of up to `length` characters out of `alphabet`.
inline std::vector<std::wstring> allTexts(const std::wstring& alphabet, size_t length)
{
    std::vector<std::wstring> texts = {L""};
    for (size_t from = 0; from < texts.size(); ++from)
    {
        if (texts[from].size() < length)
        {
            const std::wstring stem = texts[from];
            for (wchar_t c : alphabet)
            {
                texts.push_back(stem + c);
            }
        }
    }
    return texts;
}
} // namespace qelTest

#endif
