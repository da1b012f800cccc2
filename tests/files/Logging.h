// A test that writes to a log file of its own while logging is on.
#ifndef QEL_TEST_LOGGING_H
#define QEL_TEST_LOGGING_H

#include "qelLogfile.h"

#include "support/LogText.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <string>

namespace qelTest
{
class Logging : public testing::Test
{
protected:
    void SetUp() override { qelLogfile::setLogStatus(1); }
    void TearDown() override { qelLogfile::setLogStatus(0); }

    /// What the file holds, with the times of this test as "[now]".
    std::string content() const { return m_times.withoutTimes(m_file.get()); }

    LogText m_times;
    TestFile m_file;
};
} // namespace qelTest

#endif
