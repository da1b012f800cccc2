#include "qelRegExWrapper.h"

#include "strings/PatternSearch.h"

namespace
{
struct Target
{
    const qelString* text;
    qelArray<qelString>* results;
};

void append(void* target, size_t start, size_t length)
{
    const Target& to = *static_cast<const Target*>(target);
    to.results->append(to.text->mid(static_cast<int>(start), static_cast<int>(length)));
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
    // The string may be in a spare slot of the results, which the first result overwrites.
    const qelString kept(text);
    Target target = {&kept, &results};
    return qelPattern::match(m_pattern.getStringW(), kept.getStringW(), append, &target);
}
