// A folder of one test.
#ifndef QEL_TEST_TEMPORARY_FOLDER_H
#define QEL_TEST_TEMPORARY_FOLDER_H

#include <string>

namespace qelTest
{
/// A new folder below the current one, deleted with all it holds at the end.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Full path, without a separator at its end.
    const std::wstring& path() const;

    /// Full path of a file in the folder.
    std::wstring path(const std::wstring& name) const;

    /// Writes a file, with the folders on the way to it, and returns its full path.
    std::wstring write(const std::wstring& name, const std::string& bytes) const;

private:
    std::wstring m_path;
};
} // namespace qelTest

#endif
