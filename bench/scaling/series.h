// Measures one piece of code at sizes from a thousand to ten million, or with one to sixteen threads: the time and the
// memory for each item, and the exponent between neighbouring sizes, which is 1 for what is linear.
#ifndef XO_BENCH_SCALING_SERIES_H
#define XO_BENCH_SCALING_SERIES_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "harness.h"

namespace bench {

using Run = std::function<void()>;

class Series {
public:
    explicit Series(std::string onlyFamily) : mOnlyFamily(std::move(onlyFamily)) {}

    // Makes what a run at that size needs, outside of the time and of the memory, and returns the run.
    using Prepare = std::function<Run(std::size_t size)>;

    // Sizes grow tenfold from a thousand. They end at the largest one, and before a size that would take more than five
    // seconds or 1.2 GB by what the one before it took.
    void measure(const std::string& family, const std::string& name, const Prepare& prepare,
                 std::size_t largest = 10'000'000);

    // The run does `items` items with that many threads together and returns how many nanoseconds that took.
    void measureThreads(const std::string& family, const std::string& name, double items,
                        const std::function<double(int threads)>& run);

    // family,axis,n,ns,bytes,exponent,case. False when the file cannot be written.
    bool writeCsv(const std::filesystem::path& path) const;

private:
    struct Point {
        std::string family, name, axis;
        double n, ns, bytes, exponent;  // for each item; exponent 0 for the first
    };

    bool wants(const std::string& family) const { return mOnlyFamily.empty() || mOnlyFamily == family; }
    void add(Point point);

    std::string mOnlyFamily;
    std::vector<Point> mPoints;
};

// A folder for the files of a run, removed at the end.
class Workplace {
public:
    Workplace() {
        std::filesystem::remove_all(mPath);
        std::filesystem::create_directories(mPath);
    }
    ~Workplace() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    std::string file(const char* name) const { return (mPath / name).u8string(); }

private:
    const std::filesystem::path mPath = std::filesystem::temp_directory_path() / L"xoScaling";
};

void scaleValues(Series& series);                         // variant, text, tables, process
void scaleFiles(Series& series, const Workplace& place);  // csv, ini, stream, log, files, xref
void scaleThreads(Series& series, const Workplace& place);

}  // namespace bench

#endif
