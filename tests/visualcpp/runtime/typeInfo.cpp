// The table of virtual functions that every type information which the compiler writes refers to. Written by hand: the
// compiler would make one only where such an object is constructed. Its one function is called by nobody.

#include <vcruntime_typeinfo.h>

#include <windows.h>

extern "C" SLIST_HEADER __type_info_root_node = {};

type_info::~type_info() noexcept = default;

namespace
{
void destroy(type_info* information)
{
    information->type_info::~type_info();
}
} // namespace

extern void (*const qelTypeInfoTable[1])(type_info*) __asm__("??_7type_info@@6B@");
void (*const qelTypeInfoTable[1])(type_info*) = {destroy};
