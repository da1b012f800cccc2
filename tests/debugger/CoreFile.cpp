#include "CoreFile.h"

#include <windows.h>

#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace
{
// The few parts of the ELF format that a core file without threads consists of.
struct ElfHeader
{
    unsigned char identification[16] = {0x7F, 'E', 'L', 'F', 2 /* 64 bits */, 1 /* little endian */, 1 /* version */};
    uint16_t type = 4; // core file
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
    uint32_t type = 1; // memory
    uint32_t flags = 6; // readable and writable
    uint64_t offset = 0;
    uint64_t address = 0;
    uint64_t physicalAddress = 0;
    uint64_t fileSize = 0;
    uint64_t memorySize = 0;
    uint64_t alignment = 1;
};

static_assert(sizeof(ElfHeader) == 64 && sizeof(ProgramHeader) == 56, "as the format has them");

const size_t kMostRegions = 4096;

bool isReadable(const MEMORY_BASIC_INFORMATION& region)
{
    const DWORD readable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE |
        PAGE_EXECUTE_WRITECOPY;
    return region.State == MEM_COMMIT && (region.Protect & readable) != 0 && (region.Protect & PAGE_GUARD) == 0;
}

/// The regions to write. Their room is made first: making it must not change what they describe.
std::vector<ProgramHeader> regionsOf(const std::vector<HMODULE>& images)
{
    std::vector<ProgramHeader> regions;
    regions.reserve(kMostRegions);
    const unsigned char* at = nullptr;
    MEMORY_BASIC_INFORMATION region = {};
    while (VirtualQuery(at, &region, sizeof region) != 0)
    {
        const bool ofImage =
            std::find(images.begin(), images.end(), static_cast<HMODULE>(region.AllocationBase)) != images.end();
        if (isReadable(region) && (ofImage || region.Type == MEM_PRIVATE) && regions.size() < kMostRegions)
        {
            ProgramHeader header;
            header.address = reinterpret_cast<uintptr_t>(region.BaseAddress);
            header.fileSize = region.RegionSize;
            header.memorySize = region.RegionSize;
            regions.push_back(header);
        }
        at = static_cast<const unsigned char*>(region.BaseAddress) + region.RegionSize;
    }
    return regions;
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
    std::vector<ProgramHeader> regions = regionsOf(images);
    uint64_t offset = sizeof(ElfHeader) + regions.size() * sizeof(ProgramHeader);
    for (ProgramHeader& region : regions)
    {
        region.offset = offset;
        offset += region.fileSize;
    }

    ElfHeader header;
    header.programHeaderCount = static_cast<uint16_t>(regions.size());
    bool written = write(file.get(), &header, sizeof header) &&
        write(file.get(), regions.data(), regions.size() * sizeof(ProgramHeader));
    for (const ProgramHeader& region : regions)
    {
        written = written && write(file.get(), reinterpret_cast<const void*>(region.address), region.fileSize);
    }
    return written && fflush(file.get()) == 0;
}
