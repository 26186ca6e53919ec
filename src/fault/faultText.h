// How a processor fault is named.
#ifndef XO_FAULT_FAULTTEXT_H
#define XO_FAULT_FAULTTEXT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace xo::fault {

// True for the codes by which language exceptions travel: Microsoft's and GCC's.
bool isLanguageException(std::uint32_t code);

// "EXCEPTION_ACCESS_VIOLATION", or a text that says the code is not known.
std::string_view faultName(std::uint32_t code);

// The first line of a fault's report, for the calling thread.
std::string describeFault(std::uint32_t code);

// Appends lower-case hexadecimal digits without leading zeros.
void appendHex(std::string& text, std::uint64_t value);

}  // namespace xo::fault

#endif
