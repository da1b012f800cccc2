#pragma once

#include <vcruntime_new.h>

namespace std
{
typedef void(__cdecl* new_handler)();
} // namespace std
