// The text of a processor fault.
#ifndef XO_FAULT_FAULTTEXT_H
#define XO_FAULT_FAULTTEXT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace xo::fault {

// True for the codes with which the runtimes of Microsoft and GCC raise C++ exceptions.
bool isLanguageException(std::uint32_t code);

// The name of the code, such as "EXCEPTION_ACCESS_VIOLATION"; "Unknown Exception Code" for any other.
std::string_view faultName(std::uint32_t code);

// The first line of a report: the fault, the process and the calling thread.
std::string describeFault(std::uint32_t code);

// Appends lower-case hexadecimal digits without leading zeros.
void appendHex(std::string& text, std::uint64_t value);

}  // namespace xo::fault

#endif
