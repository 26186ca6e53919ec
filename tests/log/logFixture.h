// A log whose handler collects the lines.
#ifndef XO_TESTS_LOG_LOGFIXTURE_H
#define XO_TESTS_LOG_LOGFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "xoSystem/xoLog.h"

namespace xo::tests {

class LogTest : public testing::Test {
protected:
    LogTest() {
        xoLog::createInstance(false);
        log().setEchoToConsole(false);
        log().installCustomHandler(&collect, &mLines);
    }
    ~LogTest() override { xoLog::destroyInstance(); }

    static xoLog& log() { return xoLog::edit(); }

    // The lines since the last call, each as "<type>(<qualifier>)<message>".
    std::vector<std::string> takeLines() { return std::exchange(mLines, {}); }

private:
    static void collect(const std::string& message, xoLogType type, const std::string& qualifier, void* lines) {
        static_cast<std::vector<std::string>*>(lines)->push_back(std::to_string(type) + "(" + qualifier + ")" +
                                                                 message);
    }

    std::vector<std::string> mLines;
};

}  // namespace xo::tests

#endif
