// Replaces functions that the DLL under test imports, to see its calls or to make them fail.
#ifndef QEL_TEST_IMPORT_HOOK_H
#define QEL_TEST_IMPORT_HOOK_H

namespace qelTest
{
/**
 * While it lives, the DLL calls `replacement` wherever it calls the imported function `name`. Only the DLL's import
 * table changes: the replacement reaches the real function by simply calling it. Throws std::runtime_error when the DLL
 * does not import that function.
 */
class ImportHook
{
public:
    template <class Function>
    ImportHook(const char* name, Function* replacement)
        : ImportHook(name, reinterpret_cast<void*>(replacement))
    {
    }

    ImportHook(const char* name, void* replacement);

    /// The same for another module.
    ImportHook(void* module, const char* name, void* replacement);

    ~ImportHook();

    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    /// The function that the module would call without this hook.
    void* original() const { return m_original; }

private:
    void** m_entry;   ///< the function's place in the import table
    void* m_original; ///< what stood there before
};
} // namespace qelTest

#endif
