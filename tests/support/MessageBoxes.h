// Sees and answers the message boxes of the library.
#ifndef QEL_TEST_MESSAGE_BOXES_H
#define QEL_TEST_MESSAGE_BOXES_H

#include <windows.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace qelTest
{
struct SeenBox
{
    std::wstring text;
    bool hasInformationIcon;
    std::vector<std::wstring> buttons; ///< captions of the visible ones
};

/// While it lives, presses OK in every message box of this process that has the given caption.
class MessageBoxes
{
public:
    explicit MessageBoxes(const wchar_t* caption);
    ~MessageBoxes();

    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;

    /// What has been seen so far. Call it only after the call that shows a box has returned.
    std::vector<SeenBox> seen();

private:
    void watch();
    HWND find() const;

    const std::wstring m_caption;
    std::vector<SeenBox> m_seen;
    std::atomic<bool> m_stop;
    std::thread m_watcher;
};
} // namespace qelTest

#endif
