// Reads whole files. Not part of the public interface.
#ifndef QEL_WHOLE_FILE_H
#define QEL_WHOLE_FILE_H

#include "qelFileAccess.h"

namespace qelWholeFile
{
/// qelFileAccess::readFile() for a stream opened without a key.
size_t read(FILE* stream, qelString& contents, size_t maxLength);

/// The same for a stream opened with the key of `encoding`.
size_t readByKey(FILE* stream, qelFileAccess::encodeType encoding, qelString& contents, size_t maxLength);
} // namespace qelWholeFile

#endif
