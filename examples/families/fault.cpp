// A program with plug-ins that others wrote. Each runs under the guard: one that crashes or throws leaves a report in
// the log, with the way to the fault, and the program goes on with the next.
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "xoSystem/xoException.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoLog.h"

namespace {

struct Plugin {
    const char* name;
    void (*run)(void* numbers);
};

void add(void* numbers) {
    const auto* const values = static_cast<int*>(numbers);
    std::cout << "sum " << values[0] + values[1] << '\n';
}

[[noreturn]] void refuse(void*) { throw std::runtime_error("no licence"); }

// The fault of this one is real: a write through a null pointer.
void overwrite(void*) {
    int* volatile nowhere = nullptr;
    *nowhere = 1;
}

// Shows what failed, and where: the first of the report's frames.
void show(const std::string& report, xo::xoLogType, const std::string&, void* count) {
    ++*static_cast<int*>(count);
    std::cout << "  report: " << report.substr(0, report.find(',')) << '\n';
    const std::size_t frame = report.find("\n\t# ");
    if (frame != std::string::npos)
        std::cout << "  where: " << report.substr(frame + 4, report.find('\n', frame + 1) - frame - 4) << '\n';
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    int reports = 0;
    xo::xoLog::edit().setEchoToConsole(false);
    xo::xoLog::edit().installCustomHandler(&show, &reports);

    int numbers[] = {40, 2};
    int failures = 0;
    for (const Plugin& plugin : {Plugin{"add", &add}, Plugin{"refuse", &refuse}, Plugin{"overwrite", &overwrite}}) {
        try {
            xo::exception::impl::ExecGuardedCode(plugin.run, numbers);
        } catch (const std::exception& failure) {
            std::cout << plugin.name << " failed: " << failure.what() << '\n';
            ++failures;
        }
    }

    xo::terminateXoSystem();
    return failures == 2 && reports == 4 ? 0 : 1;
}
