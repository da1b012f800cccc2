#include "qelProgressCtrl.h"

#include "progress/ProgressDialog.h"

namespace
{
bool isShown(int activity)
{
    return activity == 1;
}
} // namespace

qelProgressCtrlWindow::qelProgressCtrlWindow()
    : m_on(0)
    , m_percentage(0)
    , m_activity(0)
{
}

qelProgressCtrlWindow::qelProgressCtrlWindow(const qelProgressCtrlWindow& other) = default;

qelProgressCtrlWindow::~qelProgressCtrlWindow() = default;

qelProgressCtrlWindow& qelProgressCtrlWindow::operator=(const qelProgressCtrlWindow& other) = default;

int qelProgressCtrlWindow::activate(qelString title)
{
    reset();
    m_title = title;
    m_activity = ProgressDialog::open(title.getStringW()) ? 1 : 0;
    return m_activity;
}

int qelProgressCtrlWindow::reset()
{
    if (isShown(m_activity))
    {
        ProgressDialog::close();
    }
    m_percentage = 0;
    m_activity = 0;
    return 1;
}

int qelProgressCtrlWindow::setPercentage(int percent, int force)
{
    const bool outside = percent < 0 || percent > 100;
    const bool backwards = percent < m_percentage && force == 0;
    if (outside || backwards || percent == m_percentage)
    {
        return 0;
    }
    m_percentage = percent;
    if (isShown(m_activity))
    {
        ProgressDialog::setPercentage(percent);
    }
    return m_activity;
}

int qelProgressCtrlWindow::setTitle(const qelString& title)
{
    m_title = title;
    if (isShown(m_activity))
    {
        ProgressDialog::setTitle(m_title.getStringW());
    }
    return m_activity;
}

int qelProgressCtrlWindow::getTitle(qelString& title) const
{
    title = m_title;
    return m_activity;
}

int qelProgressCtrlWindow::getPercentage(int& percent) const
{
    percent = m_percentage;
    return m_activity;
}

int qelProgressCtrlWindow::isActive() const
{
    return m_activity;
}

#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers"
#endif
// NOLINTBEGIN(readability-const-return-type): part of the exported names for hosts of Visual C++
const int qelProgressCtrlWindow::getActivity() const
{
    return m_activity;
}

const int qelProgressCtrlWindow::getOn() const
{
    return m_on;
}
// NOLINTEND(readability-const-return-type)
#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic pop
#endif

void qelProgressCtrlWindow::setActivity(int value)
{
    m_activity = value;
}

void qelProgressCtrlWindow::switchOn()
{
    m_on = 1;
}

void qelProgressCtrlWindow::switchOff()
{
    m_on = 0;
}
