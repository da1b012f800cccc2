/**
 * @file
 * @brief A global pointer to the host platform's support paths.
 *
 * @code
 * qelGlobalStorage::g_pMoxSupportPaths = &supportPaths;   // the host, once
 * @endcode
 */
#ifndef QEL_GLOBAL_STORAGE_H
#define QEL_GLOBAL_STORAGE_H

#include "qelExport.h"

class qelString;

/// What the modules of the process share through this library.
class QEL_API qelGlobalStorage
{
public:
    /**
     * The host's list of support paths; null at load. The host sets it and owns the text; the library neither reads nor
     * writes it.
     */
    static qelString* g_pMoxSupportPaths;
};

#endif
