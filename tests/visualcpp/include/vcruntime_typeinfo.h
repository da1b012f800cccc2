// The type information of Visual C++'s <vcruntime_typeinfo.h>; the compiler writes these objects.
#pragma once

#include <vcruntime_exception.h>

#include <stddef.h>

struct __std_type_info_data
{
    const char* _UndecoratedName;
    char _DecoratedName[1];
};

extern "C"
{
    int __cdecl __std_type_info_compare(const __std_type_info_data* a, const __std_type_info_data* b);
    size_t __cdecl __std_type_info_hash(const __std_type_info_data* data);
    const char* __cdecl __std_type_info_name(__std_type_info_data* data, union _SLIST_HEADER* names);

    /// Names that have been made readable; of each module.
    extern union _SLIST_HEADER __type_info_root_node;
}

class type_info
{
public:
    type_info(const type_info&) = delete;
    type_info& operator=(const type_info&) = delete;
    virtual ~type_info() noexcept;

    const char* name() const noexcept { return __std_type_info_name(&m_data, &__type_info_root_node); }
    const char* raw_name() const noexcept { return m_data._DecoratedName; }
    size_t hash_code() const noexcept { return __std_type_info_hash(&m_data); }
    bool before(const type_info& other) const noexcept { return __std_type_info_compare(&m_data, &other.m_data) < 0; }
    bool operator==(const type_info& other) const noexcept
    {
        return __std_type_info_compare(&m_data, &other.m_data) == 0;
    }
    bool operator!=(const type_info& other) const noexcept { return !(*this == other); }

private:
    mutable __std_type_info_data m_data;
};

namespace std
{
using ::type_info;

class bad_cast : public exception
{
public:
    bad_cast() noexcept
        : exception("bad cast", 1)
    {
    }
};

class bad_typeid : public exception
{
public:
    bad_typeid() noexcept
        : exception("bad typeid", 1)
    {
    }
};
} // namespace std
