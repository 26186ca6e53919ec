// The lines of the log, collected instead of shown.
#ifndef XO_TESTS_LOGLINES_H
#define XO_TESTS_LOGLINES_H

#include <string>
#include <utility>
#include <vector>

#include "xoSystem/xoLog.h"

namespace xo::tests {

class LogLines {
public:
    // Those of the present log, from now on.
    void collect() {
        xoLog::edit().setEchoToConsole(false);
        xoLog::edit().installCustomHandler(&add, &mLines);
    }

    // The lines since the last call, each as "<type>(<qualifier>)<message>".
    std::vector<std::string> take() { return std::exchange(mLines, {}); }

private:
    static void add(const std::string& message, xoLogType type, const std::string& qualifier, void* lines) {
        static_cast<std::vector<std::string>*>(lines)->push_back(std::to_string(type) + "(" + qualifier + ")" +
                                                                 message);
    }

    std::vector<std::string> mLines;
};

}  // namespace xo::tests

#endif
