// Numbers of the progress dialogs and their controls. Not part of the public interface.
#ifndef QEL_PROGRESS_RESOURCE_H
#define QEL_PROGRESS_RESOURCE_H

// NOLINTBEGIN(cppcoreguidelines-macro-usage,modernize-macro-to-enum): the resource compiler knows macros only
#define IDD_PROGRESS 101
#define IDD_PROGRESS_PANE 103

#define IDC_PANE_PERCENT 1000
#define IDC_PROGRESS_TITLE 1002
#define IDC_PROGRESS_PERCENT 1003
// NOLINTEND(cppcoreguidelines-macro-usage,modernize-macro-to-enum)

#endif
