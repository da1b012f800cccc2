// Counts every call that the DLL makes to another module, and lets single ones fail.
#ifndef QEL_TEST_IMPORTED_CALLS_H
#define QEL_TEST_IMPORTED_CALLS_H

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace qelTest
{
/**
 * Takes over the whole import table of the DLL, once in a process and until its end. A call goes through a few
 * instructions that count it and jump on, with the arguments as they are: to the function that was imported, or to the
 * one that fails in its place. So this works for functions of any signature.
 */
class ImportedCalls
{
public:
    ImportedCalls();

    ImportedCalls(const ImportedCalls&) = delete;
    ImportedCalls& operator=(const ImportedCalls&) = delete;

    std::vector<std::string> names() const;

    /// Calls of `name` go to this function from now on. Returns where they went before.
    void* redirect(const std::string& name, void* function);

    /// Counts from 0, and lets nothing fail.
    void start();

    /// Counts from 0. The call of `name` with this number, counted from 1, goes to `failing`; every call where the
    /// number is 0.
    void start(const std::string& name, void* failing, long number);

    /// Neither counts nor fails any longer.
    void stop();

    /// Calls of `name` between start() and stop().
    long count(const std::string& name) const;

private:
    struct Call
    {
        std::string name;
        void* original = nullptr;
        void* failing = nullptr; ///< null where nothing is to fail
        long number = 0;
        std::atomic<long> count{0};
    };

    static void* target(Call* call);
    void reset();
    Call* find(const std::string& name) const;
    void install(Call* call, void** entry, unsigned char* code);

    static std::atomic<bool> s_running;
    std::vector<std::unique_ptr<Call>> m_calls;
};
} // namespace qelTest

#endif
