// Measures pieces of code against each other: interleaved in one process, medians over many rounds with their spread.
//
//     suite.compare("hex", "encode 64 KB", 65536, [] { keep(ours(data)); },
//                   {{"Boost", [] { keep(boosts(data)); }}, {"limit: memcpy", [] { ... }}});
//
// The harness knows nothing of what it measures. A name that starts with "limit: " marks a physical limit.
#ifndef XO_BENCH_HARNESS_H
#define XO_BENCH_HARNESS_H

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// Makes the compiler believe that the value is used.
template <class T>
void keep(const T& value) {
#if defined(_MSC_VER) && !defined(__clang__)  // cl has no assembler for x64
    static const volatile void* volatile kept;
    kept = &value;
#else
    asm volatile("" : : "r,m"(value) : "memory");
#endif
}

// Ends the program with a message unless the condition holds: asked before a case is measured, for what makes the
// comparison fair, such as that all sides come to the same result.
void require(bool condition, const char* message);

struct Other {
    std::string name;
    std::function<void()> run;
};

// The ratio that is wanted in the cases, and against the others, whose names start so.
struct Aim {
    std::string_view family;
    std::string_view name;
    std::string_view other;
    double ratio;
};

struct Row {
    std::string family;
    std::string name;
    std::string other;
    double ours;      // a unit, the median: in ns, or what the name says
    double theirs;    // the same of the other
    double ratio;     // ours over theirs, median of the rounds
    double lowRatio;  // the quartiles around it
    double highRatio;
    double aim = 0;  // 0 where there is none
};

class Suite {
public:
    // Measures only the family of that name; all families when it is empty.
    Suite(std::string onlyFamily, std::vector<Aim> aims) : mOnlyFamily(std::move(onlyFamily)), mAims(std::move(aims)) {}

    bool wants(const std::string& family) const { return mOnlyFamily.empty() || mOnlyFamily == family; }

    // Measures one case and prints its rows. Each call of a function does `units` units of work; times are given per
    // unit. With `before`, a sample is a single call, and that function runs ahead of each without being timed.
    void compare(const std::string& family, const std::string& name, double units, const std::function<void()>& ours,
                 const std::vector<Other>& others, const std::function<void()>& before = {});

    // Prints a row that was measured in another way.
    void add(Row row);

    const std::vector<Row>& rows() const { return mRows; }

    // Write the rows: family,case,other,ours,theirs,ratio,aim, or a table of ratios and aims for a text in Markdown.
    // False when the file cannot be written.
    bool writeCsv(const std::filesystem::path& path) const;
    bool writeMarkdown(const std::filesystem::path& path) const;

private:
    std::string mOnlyFamily;
    std::vector<Aim> mAims;
    std::vector<Row> mRows;
};

}  // namespace bench

#endif
