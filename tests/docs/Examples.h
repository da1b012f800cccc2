// What the examples of the documentation take for granted: a machine on which the application is installed, an empty
// current folder, and a few functions of the host.
#ifndef QEL_TEST_DOCS_EXAMPLES_H
#define QEL_TEST_DOCS_EXAMPLES_H

#include "qelString.h"
#include "support/SavedRegistryKey.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <type_traits>

/// Sets up the machine for each example, and gives back what the process has only once.
class Examples : public testing::Test
{
protected:
    Examples();
    ~Examples() override;

private:
    qelTest::SavedRegistryKey m_installation;
    qelTest::SavedRegistryKey m_installationOfUser;
    qelTest::SavedRegistryKey m_connections;
    qelTest::SavedRegistryKey m_connectionsOfUser;
    qelTest::SavedRegistryKey m_drivers;
    qelTest::TemporaryFolder m_folder;
    std::wstring m_folderBefore;
};

/// Work of the host: numbers one part.
void number(int part);

/// Work of the host: reads the model.
void loadModel();

/// The host's message loop, until nothing is left to dispatch.
void pumpMessages();

namespace qelExample
{
/// What is compared: texts as standard ones, everything else as it is.
inline std::wstring comparable(const qelString& text)
{
    return text.getStringW();
}

inline std::wstring comparable(const wchar_t* text)
{
    return text;
}

inline std::string comparable(const char* text)
{
    return text;
}

template <class T, class = std::enable_if_t<!std::is_convertible_v<T, const wchar_t*> &&
                                            !std::is_convertible_v<T, const char*> && !std::is_same_v<T, qelString>>>
const T& comparable(const T& value)
{
    return value;
}

template <class Actual, class Expected>
testing::AssertionResult same(const char* code, const char* result, const Actual& actual, const Expected& expected)
{
    const auto& a = comparable(actual);
    const auto& e = comparable(expected);
    using Plain = std::remove_cv_t<std::remove_reference_t<decltype(a)>>;
    if constexpr (std::is_floating_point_v<Plain>)
    {
        return testing::internal::CmpHelperFloatingPointEQ<double>(code, result, a, static_cast<double>(e));
    }
    else if constexpr (std::is_integral_v<Plain>)
    {
        return testing::internal::CmpHelperEQ(code, result, a, static_cast<Plain>(e));
    }
    else
    {
        return testing::internal::CmpHelperEQ(code, result, a, e);
    }
}
} // namespace qelExample

#define QEL_EXPECT(code, result) EXPECT_PRED_FORMAT2(qelExample::same, (code), (result))

#endif
