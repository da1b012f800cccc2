// The text of a whole file. Not part of the public interface.
#ifndef QEL_WHOLE_FILE_H
#define QEL_WHOLE_FILE_H

#include "qelFileAccess.h"

namespace qelWholeFile
{
/// qelFileAccess::readFile() of an open stream without a key in its mode.
size_t read(FILE* stream, qelString& contents, size_t maxLength);

/// The same of a stream whose mode has the key of `encoding`.
size_t readByKey(FILE* stream, qelFileAccess::encodeType encoding, qelString& contents, size_t maxLength);
} // namespace qelWholeFile

#endif
