/**
 * @file
 * @brief A global pointer to the host platform's support paths.
 */
#ifndef QEL_GLOBAL_STORAGE_H
#define QEL_GLOBAL_STORAGE_H

#include "qelExport.h"

class qelString;

/**
 * @brief What the modules of the process share through this library.
 * @ingroup configuration
 *
 * One place where every module finds the host platform's support paths.
 *
 * @par Example
 * @code
 * static qelString supportPaths = L"D:\\Orvalis\\Support";
 * qelGlobalStorage::g_pMoxSupportPaths = &supportPaths;     // the host, once
 * *qelGlobalStorage::g_pMoxSupportPaths;                    // == L"D:\\Orvalis\\Support"
 * @endcode
 *
 * @par Ownership
 * The host owns the text and keeps it for as long as modules may look.
 *
 * @par Threads
 * There is no lock: set it before other threads read it.
 */
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
