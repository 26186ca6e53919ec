// What a target of the fuzzer is made of: a source of chance, a generator of inputs, and a check of one input.
//
// An input is bytes, so that it can be printed, repeated and cut down. A check reads what it needs from them and fails
// by throwing; it must give the same verdict each time. Models stand beside the checks: slow, obvious and written from
// the promises of the headers alone.
#ifndef XO_FUZZ_FUZZ_H
#define XO_FUZZ_FUZZ_H

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace xo::fuzz {

class Random {
public:
    explicit Random(std::uint64_t seed) : mState(seed) {}

    std::uint64_t next() {  // splitmix64
        std::uint64_t z = mState += 0x9E3779B97F4A7C15;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
        return z ^ (z >> 31);
    }
    std::size_t below(std::size_t end) { return static_cast<std::size_t>(next() % end); }
    bool oneIn(std::size_t n) { return below(n) == 0; }
    std::string_view pick(const std::vector<std::string_view>& from) { return from[below(from.size())]; }

    // Up to that many of the pieces, one after the other.
    std::string join(const std::vector<std::string_view>& pieces, std::size_t most) {
        std::string text;
        for (std::size_t i = below(most + 1); i != 0; --i) text += pick(pieces);
        return text;
    }

private:
    std::uint64_t mState;
};

// Reads an input as bytes, numbers and texts; beyond its end everything is 0 or empty.
class Bytes {
public:
    explicit Bytes(std::string input) : mInput(std::move(input)) {}

    bool atEnd() const { return mAt == mInput.size(); }
    unsigned byte() { return atEnd() ? 0 : static_cast<unsigned char>(mInput[mAt++]); }
    std::string rest() { return mInput.substr(std::exchange(mAt, mInput.size())); }

    // What stands before the next such byte, or all the rest.
    std::string until(char end) {
        const std::size_t at = mInput.find(end, mAt);
        if (at == std::string::npos) return rest();
        const std::size_t begin = std::exchange(mAt, at + 1);
        return mInput.substr(begin, at - begin);
    }

private:
    std::string mInput;
    std::size_t mAt = 0;
};

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <class... Parts>
void require(bool holds, const Parts&... parts) {
    if (holds) return;
    std::ostringstream text;
    (text << ... << parts);
    throw Failure(text.str());
}

struct Target {
    const char* name;
    int cases;  // of a bounded run
    std::string (*generate)(Random& random);
    void (*check)(const std::string& input);
};

// The path of a file in the fuzzer's own folder, which goes when the program ends; and the file's bytes.
std::string scratchFile(const char* name);
void writeScratch(const char* name, const std::string& bytes);
std::string readScratch(const char* name);

extern const Target kIni, kVariants, kCharSets, kVersions, kNaturalOrder, kCsv, kDataStream, kCommandLine, kTables,
    kAmounts, kNumbers, kTexts, kCsvParser, kReferences, kMachine, kPipeMessages;

}  // namespace xo::fuzz

#endif
