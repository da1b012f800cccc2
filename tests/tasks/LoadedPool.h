// Pools of a library that the test loads and unloads itself. Importing an export would keep the DLL loaded, so they are
// reached by their names.
#ifndef QEL_TEST_LOADED_POOL_H
#define QEL_TEST_LOADED_POOL_H

#include "qelThreadsPool.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <stdlib.h>

namespace qelTest
{
/// The library, loaded until this object says otherwise.
class LoadedLibrary
{
public:
    LoadedLibrary()
        : m_module(LoadLibraryW(kName))
    {
    }

    void unload() const { FreeLibrary(m_module); }

    template <class Function> Function* exported(const char* name) const
    {
        const FARPROC function = m_module != nullptr ? GetProcAddress(m_module, name) : nullptr;
        if (function == nullptr)
        {
            ADD_FAILURE() << name;
            exit(1);
        }
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(function));
    }

    static bool isLoaded() { return GetModuleHandleW(kName) != nullptr; }

    /// Whether it is unloaded within 30 s.
    static bool isUnloadedSoon()
    {
        for (const ULONGLONG end = GetTickCount64() + 30000; isLoaded() && GetTickCount64() < end;)
        {
            Sleep(1);
        }
        return !isLoaded();
    }

private:
    static constexpr const wchar_t* kName = L"VarnelQELRoots.dll";

    HMODULE m_module;
};

/// A pool that lives until it is destroyed by its call of that name.
class LoadedPool
{
public:
    LoadedPool(const LoadedLibrary& library, int workers)
        : m_library(&library)
    {
        m_library->exported<void(void*, int)>(kConstructor)(m_pool, workers);
    }

    LoadedPool(const LoadedPool& other)
        : m_library(other.m_library)
    {
        m_library->exported<void(void*, const void*)>(kCopyConstructor)(m_pool, other.m_pool);
    }

    LoadedPool& operator=(const LoadedPool&) = delete;

    void assign(const LoadedPool& other)
    {
        m_library->exported<void*(void*, const void*)>(kAssignment)(m_pool, other.m_pool);
    }

    void queue(void (*task)(void*), void* argument)
    {
        m_library->exported<void(void*, void (*)(void*), void*)>(kQueueTask)(m_pool, task, argument);
    }

    void wait() { m_library->exported<void(void*)>(kWait)(m_pool); }
    void destroy() { m_library->exported<void(void*)>(kDestructor)(m_pool); }

    HANDLE worker(int index) const { return static_cast<HANDLE*>(member(1))[index]; }
    HANDLE event() const { return member(4); }

private:
    /// The members as pointers: number, workers, tasks, lock, event and flag.
    void* member(int index) const { return reinterpret_cast<void* const*>(m_pool)[index]; }

#if defined(_MSC_VER)
    static constexpr const char* kConstructor = "??0qelThreadsPool@@QEAA@H@Z";
    static constexpr const char* kCopyConstructor = "??0qelThreadsPool@@QEAA@AEBV0@@Z";
    static constexpr const char* kAssignment = "??4qelThreadsPool@@QEAAAEAV0@AEBV0@@Z";
    static constexpr const char* kDestructor = "??1qelThreadsPool@@QEAA@XZ";
    static constexpr const char* kQueueTask = "?QueueTask@qelThreadsPool@@QEAAXP6AXPEAX@Z0@Z";
    static constexpr const char* kWait = "?WaitForThreadsToFinishWork@qelThreadsPool@@QEAAXXZ";
#else
    static constexpr const char* kConstructor = "_ZN14qelThreadsPoolC1Ei";
    static constexpr const char* kCopyConstructor = "_ZN14qelThreadsPoolC1ERKS_";
    static constexpr const char* kAssignment = "_ZN14qelThreadsPoolaSERKS_";
    static constexpr const char* kDestructor = "_ZN14qelThreadsPoolD1Ev";
    static constexpr const char* kQueueTask = "_ZN14qelThreadsPool9QueueTaskEPFvPvES0_";
    static constexpr const char* kWait = "_ZN14qelThreadsPool26WaitForThreadsToFinishWorkEv";
#endif

    const LoadedLibrary* m_library;
    alignas(qelThreadsPool) unsigned char m_pool[sizeof(qelThreadsPool)];
};
} // namespace qelTest

#endif
