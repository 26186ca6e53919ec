// Cuts the output of a child into lines, and lines that are too long into pieces.
#include "process/lineSplitter.h"

#include <algorithm>
#include <cstring>

namespace xo::process {

// A line of kLongestLine bytes may be followed by "\r\n". So one byte more is not too long yet if it is "\r"; two more
// are.
void LineSplitter::take(const char*& at, const char* end) {
    while (at != end) {
        const auto rest = static_cast<std::size_t>(end - at);
        const auto* const newline = static_cast<const char*>(std::memchr(at, '\n', rest));
        const std::size_t wanted = newline ? static_cast<std::size_t>(newline - at) : rest;
        const std::size_t size = (std::min)(wanted, kLongestLine + 2 - mLine.size());
        mLine.append(at, size);
        at += size;
        const bool isTooLong = mLine.size() > kLongestLine && (mLine.size() > kLongestLine + 1 || mLine.back() != '\r');
        if (isTooLong) {
            deliverPiece();
        } else if (newline && at == newline) {
            ++at;
            if (!mLine.empty() && mLine.back() == '\r') mLine.pop_back();
            deliver();
        }
    }
}

// The output may end without a line end.
void LineSplitter::finish() {
    while (mLine.size() > kLongestLine) deliverPiece();
    if (!mLine.empty()) deliver();
}

// The line leaves the splitter before the handler is called, so that an exception of the handler does not deliver it
// twice. Both strings keep their memory for the next lines.
void LineSplitter::deliver() {
    mGiven.swap(mLine);
    mLine.clear();
    mHandler(mGiven);
}

void LineSplitter::deliverPiece() {
    mGiven.assign(mLine, 0, kLongestLine);
    mLine.erase(0, kLongestLine);
    mHandler(mGiven);
}

}  // namespace xo::process
