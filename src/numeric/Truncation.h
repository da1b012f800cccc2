// Truncation of floating-point values to 32 bits. Not part of the public interface.
#ifndef QEL_TRUNCATION_H
#define QEL_TRUNCATION_H

#include <limits.h>

namespace qelTruncation
{
/// `value` truncated towards zero; INT_MIN, as from the processor's own conversion, when it does not fit.
inline int toInt32(double value)
{
    // Written so that NaN fails the test as well.
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(value) : INT_MIN;
}
} // namespace qelTruncation

#endif
