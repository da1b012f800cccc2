// The stated rules of some string operations, worked out on plain strings.
#ifndef QEL_TEST_STRING_RULES_H
#define QEL_TEST_STRING_RULES_H

#include <string>
#include <vector>

namespace qelTest
{
/// Natural order: -1, 0 or 1.
int naturalOrder(const std::wstring& a, const std::wstring& b);

/// Tokens between separators; without quotes when `quotes` is empty.
std::vector<std::wstring> tokensOf(const std::wstring& text, const std::wstring& separators,
                                   const std::wstring& quotes);

/// What MIF escapes stand for, and the code page that the last of them chooses. Ends before the first zero.
struct MifText
{
    std::string bytes;
    unsigned codePage;
};

MifText withoutMifEscapes(const std::string& text);
} // namespace qelTest

#endif
