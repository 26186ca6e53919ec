#include "fault/signalWatch.h"

#include <atomic>
#include <csignal>
#include <string_view>

#include "fault/report.h"
#include "xoSystem/xoException.h"

namespace xo {
namespace fault {
namespace {

constexpr int kWatched[] = {SIGFPE, SIGILL, SIGSEGV};
std::atomic<bool> isInstalled{false};

std::string_view signalName(int signal) {
    switch (signal) {
        case SIGILL: return "SIGILL";
        case SIGFPE: return "SIGFPE";
        case SIGSEGV: return "SIGSEGV";
        default: return {};
    }
}

void reportSignal(int signal) { emitReport("Catch signal ", signalName(signal)); }

}  // namespace

void installSignalWatch() {
    isInstalled = true;
    watchSignalsOfThread();
}

void watchSignalsOfThread() {
    if (!isInstalled) return;
    for (const int signal : kWatched) std::signal(signal, &reportSignal);
}

void removeSignalWatch() {
    for (const int signal : kWatched) std::signal(signal, SIG_DFL);
    isInstalled = false;
}

}  // namespace fault

bool exception::IsSigWatcherRegistered() { return fault::isInstalled; }

}  // namespace xo
