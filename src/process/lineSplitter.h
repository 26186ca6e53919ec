// Cuts a stream of bytes into lines.
#ifndef XO_PROCESS_LINESPLITTER_H
#define XO_PROCESS_LINESPLITTER_H

#include "xoSystem/xoProcess.h"

namespace xo::process {

class LineSplitter {
public:
    static constexpr std::size_t kLongestLine = 1 << 20;  // bytes; a longer line comes in pieces

    explicit LineSplitter(xoProcess::LineHandler handler) : mHandler(std::move(handler)) {}

    // Calls the handler for each line that is complete, and moves at to behind what is taken, before each call: after
    // an exception of the handler, the rest can be given again.
    void take(const char*& at, const char* end);

    // The last line, if it has no end.
    void finish();

private:
    void deliver();
    void deliverPiece();

    xoProcess::LineHandler mHandler;
    std::string mLine;   // what is there of the line that is not complete
    std::string mGiven;  // what the handler gets
};

}  // namespace xo::process

#endif
