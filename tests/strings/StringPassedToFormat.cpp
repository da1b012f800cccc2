// A mistake that hosts make: compiled by a test that expects the compiler to refuse it.
#include "qelString.h"

qelString describe(const qelString& profile)
{
    return qelString().format(L"%s", profile);
}
