#include "harness.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>

#include "platform/windows.h"

namespace bench {
namespace {

constexpr int kMostRounds = 25;
constexpr int kFewestRounds = 3;
constexpr double kCaseNs = 60e9;   // what a case may take, unless the fewest rounds take longer
constexpr double kSampleNs = 4e6;  // long against the clock's grain, short against the scheduler's
constexpr double kMostCalls = 1e8;

double nowNs() {
    static const double nsPerTick = [] {
        LARGE_INTEGER frequency;
        ::QueryPerformanceFrequency(&frequency);
        return 1e9 / static_cast<double>(frequency.QuadPart);
    }();
    LARGE_INTEGER ticks;
    ::QueryPerformanceCounter(&ticks);
    return static_cast<double>(ticks.QuadPart) * nsPerTick;
}

double timeNs(const std::function<void()>& run, std::int64_t calls) {
    const double start = nowNs();
    for (std::int64_t i = 0; i < calls; ++i) run();
    return nowNs() - start;
}

// How many calls make one sample, whose length is added to the round's. Also warms the code up.
std::int64_t callsPerSample(const std::function<void()>& run, double& roundNs) {
    std::int64_t calls = 1;
    for (;;) {
        const double ns = timeNs(run, calls);
        if (ns >= kSampleNs || static_cast<double>(calls) >= kMostCalls) {
            roundNs += ns;
            return calls;
        }
        const double wanted = ns > 0 ? std::ceil(static_cast<double>(calls) * kSampleNs * 1.2 / ns) : 1000.0;
        calls = static_cast<std::int64_t>((std::min)(wanted, static_cast<double>(calls) * 100));
    }
}

double quantile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1) + 0.5)];
}

bool startsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) result += c == '"' ? std::string("\"\"") : std::string(1, c);
    return result + "\"";
}

}  // namespace

void require(bool condition, const char* message) {
    if (condition) return;
    std::fprintf(stderr, "xoBench: %s\n", message);
    std::exit(1);
}

void Suite::compare(const std::string& family, const std::string& name, double units, const std::function<void()>& ours,
                    const std::vector<Other>& others, const std::function<void()>& before) {
    if (!wants(family)) return;
    std::vector<const std::function<void()>*> runs{&ours};
    for (const Other& other : others) runs.push_back(&other.run);
    std::vector<std::int64_t> calls;
    double roundNs = 0.0;
    for (const auto* run : runs) {
        calls.push_back(before ? 1 : callsPerSample(*run, roundNs));
        if (before) roundNs += timeNs(before, 1) + timeNs(*run, 1);
    }
    const int rounds = std::clamp(static_cast<int>(kCaseNs / roundNs), kFewestRounds, kMostRounds);

    std::vector<std::vector<double>> ns(runs.size());
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < runs.size(); ++i) {
            if (before) before();
            ns[i].push_back(timeNs(*runs[i], calls[i]) / static_cast<double>(calls[i]) / units);
        }

    for (std::size_t i = 1; i < runs.size(); ++i) {
        std::vector<double> ratios;
        for (int round = 0; round < rounds; ++round)
            ratios.push_back(ns[0][static_cast<std::size_t>(round)] / ns[i][static_cast<std::size_t>(round)]);
        add({family, name, others[i - 1].name, quantile(ns[0], 0.5), quantile(ns[i], 0.5), quantile(ratios, 0.5),
             quantile(ratios, 0.25), quantile(ratios, 0.75)});
    }
}

void Suite::add(Row row) {
    for (const Aim& aim : mAims)
        if (row.family == aim.family && startsWith(row.name, aim.name) && startsWith(row.other, aim.other))
            row.aim = aim.ratio;
    std::printf("%-8s %-38s %-34s %11.2f %11.2f %7.3f  (%.3f to %.3f)", row.family.c_str(), row.name.c_str(),
                row.other.c_str(), row.ours, row.theirs, row.ratio, row.lowRatio, row.highRatio);
    if (row.aim != 0) std::printf("  aim %.2f%s", row.aim, row.ratio <= row.aim ? "" : ", missed");
    std::printf("\n");
    std::fflush(stdout);
    mRows.push_back(std::move(row));
}

bool Suite::writeCsv(const std::filesystem::path& path) const {
    std::ofstream file(path, std::ios::binary);
    file << "family,case,other,ours,theirs,ratio,aim\n";
    for (const Row& row : mRows) {
        file << quoted(row.family) << ',' << quoted(row.name) << ',' << quoted(row.other) << ',' << row.ours << ','
             << row.theirs << ',' << row.ratio << ',';
        if (row.aim != 0) file << row.aim;
        file << '\n';
    }
    return file.flush().good();
}

bool Suite::writeMarkdown(const std::filesystem::path& path) const {
    std::ofstream file(path, std::ios::binary);
    file.precision(3);
    file << "| case | other | ratio | aim |\n|---|---|---:|---:|\n";
    for (const Row& row : mRows) {
        file << "| " << row.family << ": " << row.name << " | " << row.other << " | " << row.ratio << " | ";
        if (row.aim != 0) file << row.aim << ' ';
        file << "|\n";
    }
    return file.flush().good();
}

}  // namespace bench
