// Composes the first line of a report about a fault. docs/formats.md describes the wording, so that programs can search
// logs for it.
#include "fault/faultText.h"

#include <charconv>

#include "platform/exceptionCodes.h"
#include "platform/windows.h"

namespace xo::fault {
namespace {

// The codes with a name of their own; all others share one text.
struct Name {
    std::uint32_t code;
    std::string_view name;
};

// A macro, because the text is the spelling of the constant.
#define XO_NAME(code) \
    Name { static_cast<std::uint32_t>(code), #code }
constexpr Name kNames[] = {
    XO_NAME(EXCEPTION_ACCESS_VIOLATION),
    XO_NAME(EXCEPTION_DATATYPE_MISALIGNMENT),
    XO_NAME(EXCEPTION_BREAKPOINT),
    XO_NAME(EXCEPTION_SINGLE_STEP),
    XO_NAME(EXCEPTION_IN_PAGE_ERROR),
    XO_NAME(EXCEPTION_ILLEGAL_INSTRUCTION),
    XO_NAME(EXCEPTION_NONCONTINUABLE_EXCEPTION),
    XO_NAME(EXCEPTION_INVALID_DISPOSITION),
    XO_NAME(EXCEPTION_ARRAY_BOUNDS_EXCEEDED),
    XO_NAME(EXCEPTION_FLT_DENORMAL_OPERAND),
    XO_NAME(EXCEPTION_FLT_DIVIDE_BY_ZERO),
    XO_NAME(EXCEPTION_FLT_INEXACT_RESULT),
    XO_NAME(EXCEPTION_FLT_INVALID_OPERATION),
    XO_NAME(EXCEPTION_FLT_OVERFLOW),
    XO_NAME(EXCEPTION_FLT_STACK_CHECK),
    XO_NAME(EXCEPTION_FLT_UNDERFLOW),
    XO_NAME(EXCEPTION_INT_DIVIDE_BY_ZERO),
    XO_NAME(EXCEPTION_INT_OVERFLOW),
    XO_NAME(EXCEPTION_PRIV_INSTRUCTION),
    XO_NAME(EXCEPTION_STACK_OVERFLOW),
};
#undef XO_NAME

}  // namespace

bool isLanguageException(std::uint32_t code) {
    return code == platform::kMicrosoftException || code == platform::kItaniumException;
}

std::string_view faultName(std::uint32_t code) {
    // The text is the same for exceptions of GCC's runtime; logs are searched for it.
    if (isLanguageException(code)) return "Msvc C++ Exception";
    for (const Name& known : kNames)
        if (known.code == code) return known.name;
    return "Unknown Exception Code";
}

std::string describeFault(std::uint32_t code) {
    std::string text = "Catch SEH Exception ";
    text += faultName(code);
    text += " 0x";
    appendHex(text, code);
    text += ", PID ";
    text += std::to_string(::GetCurrentProcessId());
    text += " TID ";
    text += std::to_string(::GetCurrentThreadId());
    return text;
}

void appendHex(std::string& text, std::uint64_t value) {
    // 64 bits have at most 16 digits.
    char digits[16];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value, 16).ptr);
}

}  // namespace xo::fault
