#include "qelDebugInterfaces.h"

#ifdef QEL_DEBUG_OUTPUT

#include <windows.h>

void qelOutputDebugString(const qelString& text)
{
    OutputDebugStringW(text.getStringW());
}

#else

// Callers build their strings anyway, so that both kinds of build run the same code.
void qelOutputDebugString(const qelString&) {}

#endif
