#include "stream/deviceMessage.h"

namespace xo::stream {

void report(std::string_view message, std::string_view path) noexcept {
    writeLine(xoLogCritical, /*qualifier=*/nullptr, [&](xoLogObject& line) { line << message << path; });
}

}  // namespace xo::stream
