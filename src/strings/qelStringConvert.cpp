// Numbers, formatting and times.

#include "qelString.h"

#include "strings/CodePage.h"
#include "strings/StringAccess.h"
#include "strings/Text.h"

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

namespace
{
// A sign and 32 binary digits.
const size_t kIntegerCapacity = 33;
const int kDoubleCapacity = 1024;
const size_t kTimeCapacity = 18;
const size_t kDateCapacity = 255;

/// The digits of a number, as _itow_s writes them: only a decimal number has a sign, others are taken as unsigned.
qelString digitsOf(int value, int radix)
{
    if (radix < 2 || radix > 36)
    {
        return qelString();
    }
    const bool isNegative = value < 0 && radix == 10;
    auto rest = static_cast<unsigned>(value);
    rest = isNegative ? 0 - rest : rest;
    const auto base = static_cast<unsigned>(radix);
    wchar_t text[kIntegerCapacity];
    wchar_t* const end = text + kIntegerCapacity;
    wchar_t* first = end;
    do
    {
        *--first = L"0123456789abcdefghijklmnopqrstuvwxyz"[rest % base];
        rest /= base;
    } while (rest != 0);
    if (isNegative)
    {
        *--first = L'-';
    }
    return qelStringAccess::stringOf(first, static_cast<size_t>(end - first));
}

/// Length of a formatted result in a scratch buffer, from the runtime's return value. A result that does not fit counts
/// as empty: the UCRT reports failure, msvcrt truncates it without a terminator.
size_t formatted(int result)
{
    return result < 0 || static_cast<size_t>(result) >= qelText::kCapacity ? 0 : static_cast<size_t>(result);
}
} // namespace

int qelString::toInteger() const
{
    return _wtoi(m_rep->m_data);
}

long qelString::toLong() const
{
    return _wtol(m_rep->m_data);
}

// Deliberate: the 32-bit range only.
long long qelString::toIntPtr() const
{
    return _wtoi(m_rep->m_data);
}

double qelString::toDouble() const
{
    return _wtof(m_rep->m_data);
}

qelString qelString::integerToString(int value, int radix)
{
    return digitsOf(value, radix);
}

qelString qelString::longToString(long value, int radix)
{
    return digitsOf(value, radix);
}

qelString qelString::doubleToString(double value, int digits)
{
    if (digits < 0 || digits >= kDoubleCapacity)
    {
        return qelString();
    }
    char text[kDoubleCapacity];
    const qelString result(_gcvt_s(text, kDoubleCapacity, value, digits) == 0 ? text : "");
    qelText::scrub(text, sizeof text);
    return result;
}

qelString& qelString::format(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    vformat(fmt, args);
    va_end(args);
    return *this;
}

qelString& qelString::format(const wchar_t* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    vformat(fmt, args);
    va_end(args);
    return *this;
}

qelString& qelString::format(const unsigned short* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    vformat(fmt, args);
    va_end(args);
    return *this;
}

qelString& qelString::vformat(const char* fmt, va_list args)
{
    if (fmt == nullptr)
    {
        return empty();
    }
    const size_t bytes = formatted(vsprintf_s(qelStringTempBuffer, qelText::kCapacity, fmt, args));
    return qelStringAccess::assign(*this, qelStringTempBuffer, qelUnits::measure(qelStringTempBuffer, bytes), CP_ACP);
}

qelString& qelString::vformat(const wchar_t* fmt, va_list args)
{
    if (fmt == nullptr)
    {
        return empty();
    }
    const size_t units = formatted(vswprintf_s(qelStringTempBufferWide, qelText::kCapacity, fmt, args));
    return qelStringAccess::assign(*this, qelStringTempBufferWide, qelUnits::measure(qelStringTempBufferWide, units));
}

qelString& qelString::vformat(const unsigned short* fmt, va_list args)
{
    return vformat(qelText::wide(fmt), args);
}

qelString& qelString::formatTime(size_t maxSize, const char* fmt, const tm* when)
{
    if (maxSize == 0 || fmt == nullptr || *fmt == 0 || when == nullptr)
    {
        return empty();
    }
    const qelText::NarrowBuffer buffer(maxSize);
    const size_t bytes = strftime(buffer.data(), maxSize, fmt, when);
    return qelStringAccess::assign(*this, buffer.data(), bytes, CP_ACP);
}

qelString qelString::time()
{
    wchar_t text[kTimeCapacity];
    return _wstrtime_s(text, kTimeCapacity) == 0 ? qelString(text) : qelString();
}

qelString qelString::date()
{
    wchar_t text[kDateCapacity];
    return _wstrdate_s(text, kDateCapacity) == 0 ? qelString(text) : qelString();
}
