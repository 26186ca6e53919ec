// The guard: reports faults and exceptions of a function, and passes both on as standard exceptions.
#include "xoSystem/xoException.h"

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "fault/guardedCall.h"
#include "fault/report.h"

namespace xo::exception::impl {
namespace {

constexpr char kReportPrefix[] = "Catch std exception : ";
constexpr char kUnknown[] = "Unknown";

// Thrown to the caller in place of a standard exception of any type. Copies share the text, so that copying cannot
// throw.
class PlainException : public std::exception {
public:
    explicit PlainException(const std::string& text) : mText(std::make_shared<const std::string>(text)) {}
    const char* what() const noexcept override { return mText->c_str(); }

private:
    std::shared_ptr<const std::string> mText;
};

// The argument and the result of ask().
struct Question {
    const std::exception& exception;
    std::string text;
};

// Called under callSilently: a what() of the host may fault, for example on a destroyed object.
void ask(void* argument) {
    Question& question = *static_cast<Question*>(argument);
    try {
        if (const char* const text = question.exception.what()) question.text = text;
    } catch (...) {
    }
}

// The text of the exception; "Unknown" when what() returns null, throws or faults.
std::string textOf(const std::exception& exception) {
    Question question{exception, kUnknown};
    return fault::callSilently(&ask, &question) ? std::move(question.text) : kUnknown;
}

void execute(fault::Function function, void* argument) {
    try {
        if (fault::callReporting(function, argument)) return;
        // A fault has been reported already. It is passed on like an exception, so that both have the same way out.
        throw std::runtime_error("Catch an SEH exception");
    } catch (const std::exception& exception) {
        const std::string text = textOf(exception);
        fault::emitReport(kReportPrefix, text);
        throw PlainException(text);
    } catch (...) {
        fault::emitReport(kReportPrefix, kUnknown);
        throw std::runtime_error("Unknown std exception");
    }
}

}  // namespace

void ExecGuardedCode(void (*function)()) {
    execute([](void* called) { (*static_cast<void (**)()>(called))(); }, static_cast<void*>(&function));
}

void ExecGuardedCode(void (*function)(void*), void* argument) { execute(function, argument); }

}  // namespace xo::exception::impl
