/**
 * @file
 * @brief A global pointer to the host platform's support paths.
 */
#ifndef QEL_GLOBAL_STORAGE_H
#define QEL_GLOBAL_STORAGE_H

#include "qelExport.h"

class qelString;

/**
 * @brief Global state that all modules of the process share.
 * @ingroup configuration
 *
 * Holds a pointer to the host platform's support paths.
 *
 * @par Example
 * @code
 * static qelString supportPaths = L"D:\\Orvalis\\Support";
 * qelGlobalStorage::g_pMoxSupportPaths = &supportPaths;     // the host, once
 * *qelGlobalStorage::g_pMoxSupportPaths;                    // == L"D:\\Orvalis\\Support"
 * @endcode
 *
 * @par Ownership
 * The host owns the string and keeps it for as long as modules may read it.
 *
 * @par Threads
 * No lock: set it before other threads read it.
 */
class QEL_API qelGlobalStorage
{
public:
    /**
     * The host's list of support paths; null until the host sets it. The library neither reads nor writes it.
     */
    static qelString* g_pMoxSupportPaths;
};

#endif
