// What the samples are made with: the same numbers in each run.
#ifndef XO_BENCH_DICE_H
#define XO_BENCH_DICE_H

#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

namespace bench {

using Texts = std::vector<std::string>;

class Dice {
public:
    // From 0 to count - 1.
    std::uint64_t roll(std::uint64_t count) { return mEngine() % count; }
    const char* pick(std::initializer_list<const char*> words) { return words.begin()[roll(words.size())]; }

private:
    std::mt19937_64 mEngine{20240307};
};

}  // namespace bench

#endif
