// xoFuzz                 every target, its bounded number of cases, always the same ones
// xoFuzz brief           a twentieth of that, as a test
// xoFuzz seconds         every target in turn for so long, with fresh seeds
// xoFuzz target [seed [cases]]
// xoFuzz target hex:...  one input
//
// A failing case is cut down while it goes on failing, and printed with the command that repeats it. A crash or a hang
// prints the case as it was. The exit code is 1 then.
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <optional>
#include <thread>

#include "fuzz.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoLog.h"

namespace {

using namespace xo::fuzz;

constexpr const Target* kTargets[] = {
    &kIni,      &kVariants,     &kVersions,    &kCsv,     &kCsvParser,    &kDataStream,
    &kTables,   &kAmounts,      &kNumbers,     &kTexts,   &kReferences,
#if defined(_WIN32)  // these call it
    &kCharSets, &kNaturalOrder, &kCommandLine, &kMachine, &kPipeMessages,
#endif
};
constexpr std::chrono::seconds kPatience{30};
constexpr std::uint64_t kMostCases = 1000000;  // more than a target has

std::optional<xo::tests::TemporaryFolder> gFolder;

// The case at hand, for whoever has to report that it never came back.
const Target* gTarget = nullptr;
std::uint64_t gSeed = 0;
std::string gInput;
std::atomic<std::uint64_t> gCases{0};

std::string hex(const std::string& bytes) {
    std::ostringstream out;
    for (const char c : bytes) out << std::hex << std::setw(2) << std::setfill('0') << (c & 0xFF);
    return out.str();
}

std::string fromHex(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

void report(const std::string& what) {
    std::cerr << "FAILED " << gTarget->name << ", seed " << gSeed << ": " << what << "\nrepeat with: xoFuzz "
              << gTarget->name << ' ' << gSeed << "\n         or: xoFuzz " << gTarget->name << " hex:" << hex(gInput)
              << std::endl;
}

[[noreturn]] void giveUp(const std::string& what) {
    report(what);
#if defined(_WIN32)
    ::TerminateProcess(::GetCurrentProcess(), 1);
#endif
    std::_Exit(1);
}

#if defined(_WIN32)
LONG WINAPI reportCrash(EXCEPTION_POINTERS* crash) {
    std::ostringstream what;
    what << "crashed with " << std::hex << crash->ExceptionRecord->ExceptionCode << " at "
         << crash->ExceptionRecord->ExceptionAddress;
    giveUp(what.str());
}

void watchForCrashes() { ::SetUnhandledExceptionFilter(&reportCrash); }
#else
void watchForCrashes() {
    std::signal(SIGABRT, [](int) { giveUp("aborted"); });
}
#endif

void watchForHangs() {
    for (std::uint64_t before = 0;; before = gCases) {
        std::this_thread::sleep_for(kPatience);
        if (before == gCases) giveUp("has not come back");
    }
}

// What is wrong with the input, or nothing.
std::string verdict(const Target& target, const std::string& input) {
    ++gCases;
    gInput = input;
    try {
        target.check(input);
    } catch (const std::exception& wrong) {
        return *wrong.what() ? wrong.what() : "an exception without a text";
    } catch (...) {
        return "an exception of no standard type";
    }
    return {};
}

// Leaves out stretches, the long ones first, for as long as it fails without them.
std::string cutDown(const Target& target, std::string input) {
    for (std::size_t length = input.size() / 2; length != 0; length /= 2) {
        for (std::size_t at = 0; at + length <= input.size();) {
            std::string shorter = input;
            shorter.erase(at, length);
            if (verdict(target, shorter).empty()) {
                at += length;
            } else {
                input = shorter;
            }
        }
    }
    return input;
}

void mutate(std::string& input, Random& random) {
    static const std::vector<std::string_view> tokens = {"\n",
                                                         "\r\n",
                                                         "\"",
                                                         "\\",
                                                         "/",
                                                         "=",
                                                         ",",
                                                         ";",
                                                         ".",
                                                         " ",
                                                         "\t",
                                                         "[",
                                                         "]",
                                                         "0x",
                                                         "-",
                                                         "\xEF\xBB\xBF",
                                                         "\xC3\xA9",
                                                         "\xED\xA0\x80",
                                                         "\xF0\x9F\x98\x80",
                                                         "\xFF",
                                                         "9223372036854775807",
                                                         "1e308",
                                                         std::string_view("\0", 1)};
    for (std::size_t i = random.below(4); i != 0; --i) {
        const std::size_t at = random.below(input.size() + 1);
        const std::size_t length = random.below(input.size() - at + 1) % 16;
        switch (random.below(5)) {
            case 0: input.insert(at, random.pick(tokens)); break;
            case 1: input.insert(at, 1, static_cast<char>(random.next())); break;
            case 2: input.erase(at, length); break;
            case 3: input.insert(random.below(input.size() + 1), input.substr(at, length)); break;
            default:
                if (at < input.size()) input[at] = static_cast<char>(input[at] ^ (1 << random.below(8)));
        }
    }
}

bool runSeed(const Target& target, std::uint64_t seed) {
    gTarget = &target;
    gSeed = seed;
    Random random(seed);
    std::string input = target.generate(random);
    mutate(input, random);
    if (verdict(target, input).empty()) return true;
    gInput = cutDown(target, input);
    report(verdict(target, std::string(gInput)));
    return false;
}

bool runSeeds(const Target& target, std::uint64_t first, int cases) {
    for (int i = 0; i < cases; ++i)
        if (!runSeed(target, first + static_cast<std::uint64_t>(i))) return false;
    return true;
}

bool runBounded(int divisor) {
    bool passed = true;
    for (const Target* target : kTargets) {
        const auto start = std::chrono::steady_clock::now();
        const int cases = target->cases / divisor;
        passed = runSeeds(*target, 1, cases) && passed;
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        std::cout << std::left << std::setw(14) << target->name << std::right << std::setw(8) << cases << " cases  "
                  << std::fixed << std::setprecision(1) << took.count() << " s" << std::endl;
    }
    return passed;
}

bool runFor(int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    auto seed = static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
    std::cout << "seeds from " << seed << std::endl;
    bool passed = true;
    for (; std::chrono::steady_clock::now() < end; seed += kMostCases)
        for (const Target* target : kTargets) passed = runSeeds(*target, seed, target->cases / 100) && passed;
    std::cout << gCases << " cases" << std::endl;
    return passed;
}

bool runTarget(const Target& target, const std::string& what, int cases) {
    if (what.compare(0, 4, "hex:") != 0) return runSeeds(target, std::strtoull(what.c_str(), nullptr, 10), cases);
    gTarget = &target;
    const std::string wrong = verdict(target, fromHex(what.substr(4)));
    if (!wrong.empty()) report(wrong);
    return wrong.empty();
}

bool run(int count, char** arguments) {
    if (count < 2) return runBounded(1);
    if (arguments[1] == std::string("brief")) return runBounded(20);
    for (const Target* target : kTargets)
        if (target->name == std::string(arguments[1]))
            return count < 3 ? runSeeds(*target, 1, target->cases)
                             : runTarget(*target, arguments[2], count < 4 ? 1 : std::atoi(arguments[3]));
    const int seconds = std::atoi(arguments[1]);
    if (seconds <= 0) std::cerr << "no target and no number of seconds: " << arguments[1] << std::endl;
    return seconds > 0 && runFor(seconds);
}

}  // namespace

std::string xo::fuzz::scratchFile(const char* name) { return gFolder->path(name); }
void xo::fuzz::writeScratch(const char* name, const std::string& bytes) { gFolder->write(name, bytes); }
std::string xo::fuzz::readScratch(const char* name) { return gFolder->read(name); }

int main(int count, char** arguments) {
    watchForCrashes();
    std::thread(&watchForHangs).detach();
    xo::initializeXoSystem(xo::InitTypeBasic);
    xo::xoLog::edit().setEchoToConsole(false);
    gFolder.emplace();
    const bool passed = run(count, arguments);
    gFolder.reset();
    xo::terminateXoSystem();
    return passed ? 0 : 1;
}
