#include "support/ImportedCalls.h"

#include "support/ImportTable.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>

namespace
{
/// Keeps the registers that hold arguments, asks a function for the target, and jumps there.
const unsigned char kCode[] = {
    0x48, 0x81, 0xEC, 0x88, 0x00, 0x00, 0x00,          // sub rsp, 0x88
    0x48, 0x89, 0x4C, 0x24, 0x60,                      // mov [rsp+0x60], rcx
    0x48, 0x89, 0x54, 0x24, 0x68,                      // mov [rsp+0x68], rdx
    0x4C, 0x89, 0x44, 0x24, 0x70,                      // mov [rsp+0x70], r8
    0x4C, 0x89, 0x4C, 0x24, 0x78,                      // mov [rsp+0x78], r9
    0x0F, 0x29, 0x44, 0x24, 0x20,                      // movaps [rsp+0x20], xmm0
    0x0F, 0x29, 0x4C, 0x24, 0x30,                      // movaps [rsp+0x30], xmm1
    0x0F, 0x29, 0x54, 0x24, 0x40,                      // movaps [rsp+0x40], xmm2
    0x0F, 0x29, 0x5C, 0x24, 0x50,                      // movaps [rsp+0x50], xmm3
    0x48, 0xB9, 0,    0,    0,    0,    0,    0, 0, 0, // mov rcx, the call
    0x48, 0xB8, 0,    0,    0,    0,    0,    0, 0, 0, // mov rax, the function
    0xFF, 0xD0,                                        // call rax
    0x48, 0x8B, 0x4C, 0x24, 0x60,                      // mov rcx, [rsp+0x60]
    0x48, 0x8B, 0x54, 0x24, 0x68,                      // mov rdx, [rsp+0x68]
    0x4C, 0x8B, 0x44, 0x24, 0x70,                      // mov r8, [rsp+0x70]
    0x4C, 0x8B, 0x4C, 0x24, 0x78,                      // mov r9, [rsp+0x78]
    0x0F, 0x28, 0x44, 0x24, 0x20,                      // movaps xmm0, [rsp+0x20]
    0x0F, 0x28, 0x4C, 0x24, 0x30,                      // movaps xmm1, [rsp+0x30]
    0x0F, 0x28, 0x54, 0x24, 0x40,                      // movaps xmm2, [rsp+0x40]
    0x0F, 0x28, 0x5C, 0x24, 0x50,                      // movaps xmm3, [rsp+0x50]
    0x48, 0x81, 0xC4, 0x88, 0x00, 0x00, 0x00,          // add rsp, 0x88
    0xFF, 0xE0,                                        // jmp rax
};
const size_t kCallAt = 49;
const size_t kFunctionAt = 59;
const size_t kCodeSize = (sizeof(kCode) + 15) / 16 * 16;
} // namespace

std::atomic<bool> qelTest::ImportedCalls::s_running{false};

qelTest::ImportedCalls::ImportedCalls()
{
    const std::vector<Import> imports = importsOfLibrary();
    auto* code = static_cast<unsigned char*>(
        VirtualAlloc(nullptr, imports.size() * kCodeSize, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
    if (code == nullptr)
    {
        throw std::runtime_error("there is no memory for code");
    }
    for (const Import& import : imports)
    {
        m_calls.push_back(std::make_unique<Call>());
        m_calls.back()->name = import.name;
        m_calls.back()->original = *import.entry;
        install(m_calls.back().get(), import.entry, code);
        code += kCodeSize;
    }
}

void qelTest::ImportedCalls::install(Call* call, void** entry, unsigned char* code)
{
    void* (*const function)(Call*) = &target;
    std::memcpy(code, kCode, sizeof(kCode));
    std::memcpy(code + kCallAt, &call, sizeof(call));
    std::memcpy(code + kFunctionAt, &function, sizeof(function));
    setImport(entry, code);
}

/// Must change neither the thread's last error nor errno.
void* qelTest::ImportedCalls::target(Call* call)
{
    if (!s_running)
    {
        return call->original;
    }
    const long number = ++call->count;
    const bool fails = call->failing != nullptr && (call->number == 0 || call->number == number);
    return fails ? call->failing : call->original;
}

std::vector<std::string> qelTest::ImportedCalls::names() const
{
    std::vector<std::string> names;
    for (const auto& call : m_calls)
    {
        names.push_back(call->name);
    }
    return names;
}

void* qelTest::ImportedCalls::redirect(const std::string& name, void* function)
{
    void*& original = find(name)->original;
    void* const before = original;
    original = function;
    return before;
}

void qelTest::ImportedCalls::reset()
{
    for (const auto& call : m_calls)
    {
        call->failing = nullptr;
        call->count = 0;
    }
}

void qelTest::ImportedCalls::start()
{
    reset();
    s_running = true;
}

void qelTest::ImportedCalls::start(const std::string& name, void* failing, long number)
{
    reset();
    Call* const call = find(name);
    call->number = number;
    call->failing = failing;
    s_running = true;
}

void qelTest::ImportedCalls::stop()
{
    s_running = false;
}

long qelTest::ImportedCalls::count(const std::string& name) const
{
    return find(name)->count;
}

qelTest::ImportedCalls::Call* qelTest::ImportedCalls::find(const std::string& name) const
{
    for (const auto& call : m_calls)
    {
        if (call->name == name)
        {
            return call.get();
        }
    }
    throw std::runtime_error("the DLL does not import " + name);
}
