// Paths.

#include "qelString.h"

#include <stdlib.h>

namespace
{
const size_t kPathCapacity = 260;
}

void qelString::SplitPath(qelString& drive, qelString& dir, qelString& fname, qelString& ext) const
{
    wchar_t parts[4][kPathCapacity];
    const errno_t failed = _wsplitpath_s(m_rep->m_data, parts[0], kPathCapacity, parts[1], kPathCapacity, parts[2],
                                         kPathCapacity, parts[3], kPathCapacity);
    // All four or none. This string may be one of them, so it is not used from here on.
    const qelString made[4] = {failed == 0 ? parts[0] : L"", failed == 0 ? parts[1] : L"", failed == 0 ? parts[2] : L"",
                               failed == 0 ? parts[3] : L""};
    drive = made[0];
    dir = made[1];
    fname = made[2];
    ext = made[3];
}

void qelString::MakePath(const qelString& drive, const qelString& dir, const qelString& fname, const qelString& ext)
{
    wchar_t path[kPathCapacity];
    const errno_t failed = _wmakepath_s(path, kPathCapacity, drive.m_rep->m_data, dir.m_rep->m_data,
                                        fname.m_rep->m_data, ext.m_rep->m_data);
    *this = failed == 0 ? path : L"";
}
