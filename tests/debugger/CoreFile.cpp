#include "CoreFile.h"

#include <windows.h>

#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace
{
// The few parts of the ELF format that the core file of a process with one thread consists of.
struct ElfHeader
{
    unsigned char identification[16] = {0x7F, 'E', 'L', 'F', 2 /* 64 bits */, 1 /* little endian */, 1 /* version */};
    uint16_t type = 4;     // core file
    uint16_t machine = 62; // x86-64
    uint32_t version = 1;
    uint64_t entry = 0;
    uint64_t programHeaders = sizeof(ElfHeader);
    uint64_t sectionHeaders = 0;
    uint32_t flags = 0;
    uint16_t headerSize = sizeof(ElfHeader);
    uint16_t programHeaderSize = 56;
    uint16_t programHeaderCount = 0;
    uint16_t sectionHeaderSize = 0;
    uint16_t sectionHeaderCount = 0;
    uint16_t sectionNames = 0;
};

struct ProgramHeader
{
    uint32_t type = 1;  // memory
    uint32_t flags = 6; // readable and writable
    uint64_t offset = 0;
    uint64_t address = 0;
    uint64_t physicalAddress = 0;
    uint64_t fileSize = 0;
    uint64_t memorySize = 0;
    uint64_t alignment = 1;
};

struct NoteHeader
{
    uint32_t nameSize = 5;
    uint32_t size = 336;
    uint32_t type = 1; // state of a thread
    char name[8] = "CORE";
};

/// As Linux writes it; what debuggers do not need stays 0.
struct ThreadState
{
    uint64_t before[14] = {};
    uint64_t r15 = 0, r14 = 0, r13 = 0, r12 = 0, rbp = 0, rbx = 0, r11 = 0, r10 = 0, r9 = 0, r8 = 0;
    uint64_t rax = 0, rcx = 0, rdx = 0, rsi = 0, rdi = 0, systemCall = 0, rip = 0, cs = 0, eflags = 0, rsp = 0;
    uint64_t behind[8] = {};
};

static_assert(sizeof(ElfHeader) == 64 && sizeof(ProgramHeader) == 56 && sizeof(NoteHeader) == 20 &&
                  sizeof(ThreadState) == 336,
              "as the format has them");

ThreadState stateOf(const CONTEXT& context)
{
    ThreadState state;
    state.r15 = context.R15;
    state.r14 = context.R14;
    state.r13 = context.R13;
    state.r12 = context.R12;
    state.rbp = context.Rbp;
    state.rbx = context.Rbx;
    state.rsi = context.Rsi;
    state.rdi = context.Rdi;
    state.rip = context.Rip;
    state.rsp = context.Rsp;
    return state;
}

const size_t kMostRegions = 4096;

bool isReadable(const MEMORY_BASIC_INFORMATION& region)
{
    const DWORD readable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                           PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    return region.State == MEM_COMMIT && (region.Protect & readable) != 0 && (region.Protect & PAGE_GUARD) == 0;
}

/// The note, then the regions to write. Their room is made first: making it must not change what they describe.
std::vector<ProgramHeader> headersOf(const std::vector<HMODULE>& images)
{
    std::vector<ProgramHeader> headers;
    headers.reserve(kMostRegions + 1);
    ProgramHeader thread;
    thread.type = 4; // notes
    thread.fileSize = sizeof(NoteHeader) + sizeof(ThreadState);
    headers.push_back(thread);
    const unsigned char* at = nullptr;
    MEMORY_BASIC_INFORMATION region = {};
    while (VirtualQuery(at, &region, sizeof region) != 0)
    {
        const bool ofImage =
            std::find(images.begin(), images.end(), static_cast<HMODULE>(region.AllocationBase)) != images.end();
        if (isReadable(region) && (ofImage || region.Type == MEM_PRIVATE) && headers.size() <= kMostRegions)
        {
            ProgramHeader header;
            header.address = reinterpret_cast<uintptr_t>(region.BaseAddress);
            header.fileSize = region.RegionSize;
            header.memorySize = region.RegionSize;
            headers.push_back(header);
        }
        at = static_cast<const unsigned char*>(region.BaseAddress) + region.RegionSize;
    }
    return headers;
}

struct Close
{
    void operator()(FILE* file) const { fclose(file); }
};

bool write(FILE* file, const void* data, size_t size)
{
    return fwrite(data, 1, size, file) == size;
}
} // namespace

bool writeCoreFile(const char* path, const wchar_t* const* modules)
{
    std::vector<HMODULE> images;
    for (; *modules != nullptr; ++modules)
    {
        images.push_back(GetModuleHandleW(*modules));
        printf("%ls %llx\n", *modules, static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(images.back())));
    }
    const std::unique_ptr<FILE, Close> file(fopen(path, "wb"));
    if (file == nullptr)
    {
        return false;
    }
    // Taken here and not in a function of its own: the stack frame must still be there when memory is written.
    CONTEXT context = {};
    RtlCaptureContext(&context);
    const ThreadState state = stateOf(context);
    std::vector<ProgramHeader> headers = headersOf(images);
    uint64_t offset = sizeof(ElfHeader) + headers.size() * sizeof(ProgramHeader);
    for (ProgramHeader& header : headers)
    {
        header.offset = offset;
        offset += header.fileSize;
    }

    const NoteHeader note;
    ElfHeader header;
    header.programHeaderCount = static_cast<uint16_t>(headers.size());
    bool written = write(file.get(), &header, sizeof header) &&
                   write(file.get(), headers.data(), headers.size() * sizeof(ProgramHeader)) &&
                   write(file.get(), &note, sizeof note) && write(file.get(), &state, sizeof state);
    for (size_t i = 1; i < headers.size(); ++i)
    {
        written = written && write(file.get(), reinterpret_cast<const void*>(headers[i].address), headers[i].fileSize);
    }
    return written && fflush(file.get()) == 0;
}
