#include "qelRegExWrapper.h"

#include "strings/PatternSearch.h"

namespace
{
void append(void* results, const wchar_t* group)
{
    static_cast<qelArray<qelString>*>(results)->append(group);
}
} // namespace

qelRegExWrapper::qelRegExWrapper() = default;

qelRegExWrapper::qelRegExWrapper(const qelRegExWrapper& other) = default;

qelRegExWrapper& qelRegExWrapper::operator=(const qelRegExWrapper& other) = default;

qelRegExWrapper::~qelRegExWrapper() = default;

void qelRegExWrapper::setRegularExpression(const qelString& pattern)
{
    m_pattern = pattern;
}

bool qelRegExWrapper::match(const qelString& text, qelArray<qelString>& results)
{
    // The text may sit in a spare slot of the results, which the first of them overwrites.
    const qelString kept(text);
    return qelPattern::match(m_pattern.getStringW(), kept.getStringW(), append, &results);
}
