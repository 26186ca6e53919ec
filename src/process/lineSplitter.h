// Cuts a stream of bytes into lines.
#ifndef XO_PROCESS_LINESPLITTER_H
#define XO_PROCESS_LINESPLITTER_H

#include "xoSystem/xoProcess.h"

namespace xo::process {

// Lines end with "\n" or "\r\n", which the handler does not get. One object for one output.
class LineSplitter {
public:
    // Bytes. A longer line is delivered in pieces, which limits the memory.
    static constexpr std::size_t kLongestLine = 1 << 20;

    explicit LineSplitter(xoProcess::LineHandler handler) : mHandler(std::move(handler)) {}

    // Calls the handler for each complete line of [at, end), and keeps the rest. Before each call `at` is moved behind
    // the line: after an exception of the handler, the caller can pass [at, end) again.
    void take(const char*& at, const char* end);

    // Delivers the last line if it has no line end.
    void finish();

private:
    void deliver();
    void deliverPiece();

    xoProcess::LineHandler mHandler;
    std::string mLine;   // the beginning of an incomplete line
    std::string mGiven;  // the text that the handler gets, kept for its memory
};

}  // namespace xo::process

#endif
