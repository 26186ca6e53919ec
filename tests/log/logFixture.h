// A log whose handler collects the lines.
#ifndef XO_TESTS_LOG_LOGFIXTURE_H
#define XO_TESTS_LOG_LOGFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/logLines.h"

namespace xo::tests {

class LogTest : public testing::Test {
protected:
    LogTest() {
        xoLog::createInstance(false);
        mLines.collect();
    }
    ~LogTest() override { xoLog::destroyInstance(); }

    static xoLog& log() { return xoLog::edit(); }

    // The lines since the last call, each as "<type>(<qualifier>)<message>".
    std::vector<std::string> takeLines() { return mLines.take(); }

private:
    LogLines mLines;
};

}  // namespace xo::tests

#endif
