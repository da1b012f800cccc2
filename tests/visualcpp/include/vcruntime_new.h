// The operators of Visual C++'s <vcruntime_new.h>, as far as they are needed here.
#pragma once

#include <stddef.h>

namespace std
{
struct nothrow_t
{
    explicit nothrow_t() = default;
};
extern const nothrow_t nothrow;

enum class align_val_t : size_t
{
};
} // namespace std

void* __cdecl operator new(size_t size);
void* __cdecl operator new[](size_t size);
void* __cdecl operator new(size_t size, const std::nothrow_t&) noexcept;
void __cdecl operator delete(void* memory) noexcept;
void __cdecl operator delete[](void* memory) noexcept;
void __cdecl operator delete(void* memory, size_t size) noexcept;
void __cdecl operator delete[](void* memory, size_t size) noexcept;

#ifndef __PLACEMENT_NEW_INLINE
#define __PLACEMENT_NEW_INLINE
inline void* __cdecl operator new(size_t, void* where) noexcept
{
    return where;
}
inline void __cdecl operator delete(void*, void*) noexcept {}
#endif
