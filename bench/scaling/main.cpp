// xoScaling file.csv [family]: how time and memory grow with the amount of data and with the number of threads.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>

#include "peakHeap.h"
#include "series.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoLog.h"

namespace bench {
namespace {

constexpr double kMostNs = 5e9;
constexpr double kMostBytes = 1.2e9;
constexpr double kEnoughNs = 100e6;  // so long a sample needs no second one
constexpr int kMostSamples = 5;

double timeNs(const Run& run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

// The shortest of a few samples: everything else that the machine does makes them longer.
double shortestNs(const std::function<double()>& sample) {
    double shortest = 0, spent = 0;
    for (int i = 0; i < kMostSamples && spent < kEnoughNs; ++i) {
        const double ns = sample();
        if (i == 0 || ns < shortest) shortest = ns;
        spent += ns;
    }
    return shortest;
}

}  // namespace

void Series::measure(const std::string& family, const std::string& name, const Prepare& prepare, std::size_t largest) {
    if (!wants(family)) return;
    Point before{};
    for (std::size_t size = 1000; size <= largest; size *= 10) {
        const Run run = prepare(size);
        const auto n = static_cast<double>(size);
        double bytes = 0;
        {
            const PeakHeap heap;
            run();
            bytes = heap.peak();
        }
        const double ns = shortestNs([&] { return timeNs(run); });
        const double exponent = before.n == 0 ? 0 : 1 + std::log10(ns / n / before.ns);
        before = {family, name, "items", n, ns / n, bytes / n, exponent};
        add(before);
        if (ns * 10 > kMostNs || bytes * 10 > kMostBytes) break;
    }
}

void Series::measureThreads(const std::string& family, const std::string& name, double items,
                            const std::function<double(int threads)>& run) {
    if (!wants(family)) return;
    for (int threads = 1; threads <= 16; threads *= 2)
        add({family, name, "threads", static_cast<double>(threads), shortestNs([&] { return run(threads); }) / items, 0,
             0});
}

void Series::add(Point point) {
    std::printf("%-10s %-34s %9.0f %-7s %12.2f", point.family.c_str(), point.name.c_str(), point.n, point.axis.c_str(),
                point.ns);
    if (point.axis == "items") std::printf(" %9.1f", point.bytes);
    if (point.exponent != 0) std::printf(" %6.2f", point.exponent);
    std::printf("\n");
    std::fflush(stdout);
    mPoints.push_back(std::move(point));
}

bool Series::writeCsv(const std::filesystem::path& path) const {
    std::ofstream file(path, std::ios::binary);
    file << "family,axis,n,ns,bytes,exponent,case\n";
    for (const Point& point : mPoints)
        file << point.family << ',' << point.axis << ',' << point.n << ',' << point.ns << ',' << point.bytes << ','
             << point.exponent << ",\"" << point.name << "\"\n";
    return file.flush().good();
}

}  // namespace bench

int wmain(int count, wchar_t** arguments) {
    if (count < 2) {
        std::fputs("usage: xoScaling file.csv [family]\n", stderr);
        return 2;
    }
    xo::xoLog::createInstance(false);
    xo::xoLog::edit().setEchoToConsole(false);
    xo::initializeXoSystem(xo::InitTypeFull);
    std::printf("%-10s %-34s %9s %-7s %12s %9s %6s\n", "family", "case", "n", "axis", "ns", "bytes", "exp.");
    bool isWritten = false;
    {
        const bench::Workplace place;
        bench::Series series(count > 2 ? std::filesystem::path(arguments[2]).u8string() : std::string());
        bench::scaleValues(series);
        bench::scaleFiles(series, place);
        bench::scaleThreads(series, place);
        isWritten = series.writeCsv(arguments[1]);
    }
    xo::terminateXoSystem();
    xo::xoLog::destroyInstance();
    if (!isWritten) std::fputs("the table could not be written\n", stderr);
    return isWritten ? 0 : 1;
}
