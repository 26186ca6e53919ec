// What goes to std::cout while the object lives.
#ifndef XO_TESTS_CAPTUREDOUTPUT_H
#define XO_TESTS_CAPTUREDOUTPUT_H

#include <iostream>
#include <sstream>
#include <string>

namespace xo::tests {

class CapturedOutput {
public:
    CapturedOutput() : mBefore(std::cout.rdbuf(mText.rdbuf())) {}
    ~CapturedOutput() { std::cout.rdbuf(mBefore); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    std::string text() const { return mText.str(); }

private:
    std::ostringstream mText;
    std::streambuf* mBefore;
};

}  // namespace xo::tests

#endif
