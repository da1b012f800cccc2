// The exceptions of Visual C++'s <vcruntime_exception.h>: same names, same layout, same virtual functions, so that
// handlers of another module recognise them.
#pragma once

#include <stddef.h>

#ifndef _HAS_EXCEPTIONS
#define _HAS_EXCEPTIONS 1
#endif

extern "C"
{
    struct __std_exception_data
    {
        const char* _What;
        bool _DoFree;
    };

    void __cdecl __std_exception_copy(const __std_exception_data* from, __std_exception_data* to);
    void __cdecl __std_exception_destroy(__std_exception_data* data);
}

namespace std
{
class exception
{
public:
    exception() noexcept
        : m_data()
    {
    }

    explicit exception(const char* message) noexcept
        : m_data()
    {
        const __std_exception_data data = {message, true};
        __std_exception_copy(&data, &m_data);
    }

    /// The text is kept, not copied.
    exception(const char* message, int) noexcept
        : m_data()
    {
        m_data._What = message;
    }

    exception(const exception& other) noexcept
        : m_data()
    {
        __std_exception_copy(&other.m_data, &m_data);
    }

    exception& operator=(const exception& other) noexcept
    {
        if (this != &other)
        {
            __std_exception_destroy(&m_data);
            __std_exception_copy(&other.m_data, &m_data);
        }
        return *this;
    }

    virtual ~exception() noexcept { __std_exception_destroy(&m_data); }

    virtual const char* what() const { return m_data._What != nullptr ? m_data._What : "Unknown exception"; }

private:
    __std_exception_data m_data;
};

class bad_exception : public exception
{
public:
    bad_exception() noexcept
        : exception("bad exception", 1)
    {
    }
};

class bad_alloc : public exception
{
public:
    bad_alloc() noexcept
        : exception("bad allocation", 1)
    {
    }

protected:
    explicit bad_alloc(const char* message) noexcept
        : exception(message, 1)
    {
    }
};

class bad_array_new_length : public bad_alloc
{
public:
    bad_array_new_length() noexcept
        : bad_alloc("bad array new length")
    {
    }
};
} // namespace std
