// Measures pieces of code against each other: interleaved in one process, medians over many rounds with their spread.
//
//     suite.compare("hex", "encode 64 KB", 65536, [] { keep(ours(data)); },
//                   {{"Boost", [] { keep(boosts(data)); }}, {"limit: memcpy", [] { ... }}});
//
// The harness knows nothing of what it measures. A name that starts with "limit: " marks a physical limit.
#ifndef XO_BENCH_HARNESS_H
#define XO_BENCH_HARNESS_H

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// Makes the compiler believe that the value is used.
template <class T>
void keep(const T& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

// Ends the program with a message unless the condition holds: asked before a case is measured, for what makes the
// comparison fair, such as that all sides come to the same result.
void require(bool condition, const char* message);

struct Other {
    std::string name;
    std::function<void()> run;
};

struct Row {
    std::string family;
    std::string name;
    std::string other;
    double oursNs;    // a unit, median
    double otherNs;   // a unit, median
    double ratio;     // ours over other, median of the rounds
    double lowRatio;  // the quartiles around it
    double highRatio;
};

class Suite {
public:
    // Measures only the family of that name; all families when it is empty.
    explicit Suite(std::string onlyFamily) : mOnlyFamily(std::move(onlyFamily)) {}

    bool wants(const std::string& family) const { return mOnlyFamily.empty() || mOnlyFamily == family; }

    // Measures one case and prints its rows. Each call of a function does `units` units of work; times are given per
    // unit.
    void compare(const std::string& family, const std::string& name, double units, const std::function<void()>& ours,
                 const std::vector<Other>& others);

    const std::vector<Row>& rows() const { return mRows; }

    // Writes family,case,other,ours_ns,other_ns,ratio. False when the file cannot be written.
    bool writeCsv(const wchar_t* path) const;

private:
    std::string mOnlyFamily;
    std::vector<Row> mRows;
};

}  // namespace bench

#endif
