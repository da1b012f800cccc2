// What crosses the border between program and DLL besides plain calls.

#include "Check.h"

#include "qelArray.h"
#include "qelDataSourcesUtilities.h"

#include <windows.h>

#include <stdlib.h>

namespace
{
/// Overrides across the border, and is destroyed through a base that lives in the DLL.
class Source : public qelDataSource
{
public:
    explicit Source(int& ended)
        : m_ended(ended)
    {
    }

    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source() override { ++m_ended; }

private:
    int& m_ended;
};

bool outOfMemory(long count, unsigned long long size)
{
    try
    {
        unsigned char* block = qelMemoryControllerController::allocateArray(count, size);
        qelMemoryControllerController::deallocateArray(block);
    }
    catch (...)
    {
        return true;
    }
    return false;
}

/// Once per process, whichever call comes first: the object is made by the runtime's guards.
const qelString& lasting()
{
    static const qelString text(L"made once");
    return text;
}

const qelString beforeMain(L"made before main");

/// A frame of more than a page.
int deepFrame(int depth)
{
    volatile char room[20000];
    for (size_t i = 0; i < sizeof room; i += 1000)
    {
        room[i] = static_cast<char>(depth);
    }
    return depth == 0 ? room[0] : deepFrame(depth - 1) + room[19000] - depth;
}
} // namespace

void checkBorder()
{
    int ended = 0;
    qelDataSource* const source = new Source(ended);
    delete source;
    CHECK(ended == 1);

    // An exception of the DLL's arrives in the program.
    CHECK(outOfMemory(-1, 8) && outOfMemory(0x7FFFFFFF, 0xFFFFFFFFFFFF) && !outOfMemory(10, 8));

    CHECK(lasting() == L"made once" && &lasting() == &lasting());
    CHECK(beforeMain == L"made before main");
    CHECK(deepFrame(20) == 0);

    // Memory given by the DLL's allocator goes back through it, from a template that is compiled into the program.
    qelArray<qelString>* const list = new qelArray<qelString>(1000);
    (*list)[999] = L"last";
    CHECK((*list)[999] == L"last");
    delete list;

    // The scratch buffers are the DLL's, reached through imported pointers.
    CHECK(qelString::qelStringTempBuffer != nullptr && qelString::qelStringTempBufferWide != nullptr);
    CHECK(GetModuleHandleW(L"VarnelQELRoots.dll") != nullptr);
}
