// Buffer for building a string, on the stack for usual lengths. Not part of the public interface.
#ifndef QEL_TEXT_BUFFER_H
#define QEL_TEXT_BUFFER_H

#include "strings/Text.h"

namespace qelNumbering
{
class TextBuffer
{
public:
    /// Room for `length` units and the terminator.
    explicit TextBuffer(size_t length)
        : m_size((length + 1) * sizeof(wchar_t))
        , m_text(length < kNear ? m_near : static_cast<wchar_t*>(::operator new(m_size)))
    {
    }

    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    ~TextBuffer()
    {
        if (m_text != m_near)
        {
            qelText::scrub(m_text, m_size);
            ::operator delete(m_text);
        }
    }

    wchar_t* text() { return m_text; }

private:
    static const size_t kNear = 64;

    size_t m_size;
    wchar_t* m_text;
    wchar_t m_near[kNear];
};
} // namespace qelNumbering

#endif
