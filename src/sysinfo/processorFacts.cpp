// Reads the facts that the instruction CPUID returns. https://www.intel.com/sdm, volume 2, CPUID; https://docs.amd.com,
// order number 24594.
#include "sysinfo/processorFacts.h"

#include <cstring>
#include <iterator>

#if defined(_MSC_VER)
#    include <intrin.h>
#else
#    include <cpuid.h>
#endif

namespace xo::sysinfo {
namespace {

constexpr std::uint32_t kExtended = 0x80000000;
constexpr std::uint32_t kHypervisor = 0x40000000;

enum Register { A, B, C, D };

// The bits of XCR0 that a feature needs. Its instructions fault if the system does not save their registers. Ymm: the
// states of SSE and AVX (1, 2). Zmm: also the mask registers and both parts of the ZMM state (5, 6, 7).
enum Saved : std::uint64_t { Nothing = 0, Ymm = 0x06, Zmm = 0xE6 };

struct FeatureBit {
    std::uint32_t leaf;
    std::uint32_t subLeaf;
    Register place;
    unsigned bit;
    Saved saved;
};

// Where CPUID reports each feature, in the order of CPUInfo::Feature.
constexpr FeatureBit kFeatureBits[] = {
    {1, 0, C, 0, Nothing},               // SSE3
    {1, 0, C, 1, Nothing},               // PCLMULQDQ
    {1, 0, C, 9, Nothing},               // SSSE3
    {1, 0, C, 12, Ymm},                  // FMA
    {1, 0, C, 13, Nothing},              // CMPXCHG16B
    {1, 0, C, 19, Nothing},              // SSE4_1
    {1, 0, C, 20, Nothing},              // SSE4_2
    {1, 0, C, 22, Nothing},              // MOVBE
    {1, 0, C, 23, Nothing},              // POPCNT
    {1, 0, C, 25, Nothing},              // AES
    {1, 0, C, 28, Ymm},                  // AVX
    {1, 0, C, 29, Ymm},                  // F16C
    {1, 0, C, 30, Nothing},              // RDRAND
    {7, 0, B, 3, Nothing},               // BMI1
    {7, 0, B, 5, Ymm},                   // AVX2
    {7, 0, B, 8, Nothing},               // BMI2
    {7, 0, B, 9, Nothing},               // ERMS
    {7, 0, B, 16, Zmm},                  // AVX512F
    {7, 0, B, 17, Zmm},                  // AVX512DQ
    {7, 0, B, 18, Nothing},              // RDSEED
    {7, 0, B, 19, Nothing},              // ADX
    {7, 0, B, 21, Zmm},                  // AVX512IFMA
    {7, 0, B, 23, Nothing},              // CLFLUSHOPT
    {7, 0, B, 24, Nothing},              // CLWB
    {7, 0, B, 28, Zmm},                  // AVX512CD
    {7, 0, B, 29, Nothing},              // SHA
    {7, 0, B, 30, Zmm},                  // AVX512BW
    {7, 0, B, 31, Zmm},                  // AVX512VL
    {7, 0, C, 1, Zmm},                   // AVX512VBMI
    {7, 0, C, 6, Zmm},                   // AVX512VBMI2
    {7, 0, C, 8, Nothing},               // GFNI
    {7, 0, C, 9, Ymm},                   // VAES
    {7, 0, C, 10, Ymm},                  // VPCLMULQDQ
    {7, 0, C, 11, Zmm},                  // AVX512VNNI
    {7, 0, C, 12, Zmm},                  // AVX512BITALG
    {7, 0, C, 14, Zmm},                  // AVX512VPOPCNTDQ
    {7, 0, D, 4, Nothing},               // FSRM
    {7, 0, D, 23, Zmm},                  // AVX512FP16
    {7, 1, A, 4, Ymm},                   // AVXVNNI
    {7, 1, A, 5, Zmm},                   // AVX512BF16
    {kExtended + 1, 0, C, 5, Nothing},   // LZCNT
    {kExtended + 1, 0, C, 6, Nothing},   // SSE4A
    {kExtended + 1, 0, D, 27, Nothing},  // RDTSCP
    {kExtended + 7, 0, D, 8, Nothing},   // INVARIANT_TSC
};
static_assert(std::size(kFeatureBits) == CPUInfo::FeatureINVARIANT_TSC + 1);

Leaf readLeaf(std::uint32_t leaf, std::uint32_t subLeaf) {
    Leaf result;
#if defined(_MSC_VER)
    int registers[4];
    ::__cpuidex(registers, static_cast<int>(leaf), static_cast<int>(subLeaf));
    std::memcpy(&result, registers, sizeof result);
#else
    __cpuid_count(leaf, subLeaf, result.a, result.b, result.c, result.d);
#endif
    return result;
}

// The intrinsic of GCC and clang is available only to functions that are compiled with -mxsave.
std::uint64_t readSavedRegisters() {
#if defined(_MSC_VER)
    return ::_xgetbv(0);
#else
    std::uint32_t low = 0, high = 0;  // NOLINT(misc-const-correctness): the instruction writes both
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return std::uint64_t{high} << 32 | low;
#endif
}

// Reads leaves that exist, and all zeros for others: for a leaf above the highest one, processors return the data of
// another. A processor without extended leaves does not return a number of that range for the highest one.
class Leaves {
public:
    explicit Leaves(const ProcessorSource& source)
        : mSource(source), mHighest(source.leaf(0, 0).a), mHighestExtended(source.leaf(kExtended, 0).a) {}

    Leaf get(std::uint32_t leaf, std::uint32_t subLeaf = 0) const {
        const bool isThere =
            leaf < kHypervisor ? leaf <= mHighest : mHighestExtended >= kExtended && leaf <= mHighestExtended;
        // Leaf 7 has its highest sub-leaf in EAX of sub-leaf 0.
        if (!isThere || (leaf == 7 && subLeaf > mSource.leaf(7, 0).a)) return {};
        return mSource.leaf(leaf, subLeaf);
    }

private:
    const ProcessorSource& mSource;
    const std::uint32_t mHighest, mHighestExtended;
};

std::uint32_t registerOf(const Leaf& leaf, Register place) {
    switch (place) {
        case A: return leaf.a;
        case B: return leaf.b;
        case C: return leaf.c;
        default: return leaf.d;
    }
}

// Appends the four characters of a register, the lowest byte first, without NULs and other control characters.
void append(std::string& text, std::uint32_t bytes) {
    for (int i = 0; i < 4; ++i, bytes >>= 8)
        if (const char c = static_cast<char>(bytes & 0xFF); c >= ' ' && c < 0x7F) text += c;
}

// Removes blanks at both ends and repeated ones within.
std::string withSingleBlanks(const std::string& text) {
    std::string result;
    for (const char c : text)
        if (c != ' ' || (!result.empty() && result.back() != ' ')) result += c;
    if (!result.empty() && result.back() == ' ') result.pop_back();
    return result;
}

// 48 bytes in three leaves, padded with blanks or NULs.
std::string readBrand(const Leaves& leaves) {
    std::string brand;
    for (std::uint32_t leaf = kExtended + 2; leaf <= kExtended + 4; ++leaf) {
        const Leaf part = leaves.get(leaf);
        for (const std::uint32_t bytes : {part.a, part.b, part.c, part.d}) append(brand, bytes);
    }
    return withSingleBlanks(brand);
}

std::uint64_t readFeatures(const Leaves& leaves, const ProcessorSource& source) {
    constexpr std::uint32_t kSystemSavesRegisters = 1u << 27;  // OSXSAVE
    // XGETBV is an invalid instruction unless this bit is set.
    const bool isSaving = (leaves.get(1).c & kSystemSavesRegisters) != 0;
    const std::uint64_t saved = isSaving ? source.savedRegisters() : 0;
    std::uint64_t features = 0, mask = 1;
    for (const FeatureBit& feature : kFeatureBits) {
        const std::uint32_t bits = registerOf(leaves.get(feature.leaf, feature.subLeaf), feature.place);
        if ((bits >> feature.bit & 1) != 0 && (saved & feature.saved) == feature.saved) features |= mask;
        mask <<= 1;
    }
    return features;
}

}  // namespace

ProcessorSource thisProcessor() { return {&readLeaf, &readSavedRegisters}; }

void ProcessorFacts::identify(const ProcessorSource& source, CPUInfo& facts) {
    const Leaves leaves(source);
    const Leaf first = source.leaf(0, 0), version = leaves.get(1);
    // The text of the vendor is in this order of registers: "Genu", "ineI", "ntel".
    for (const std::uint32_t bytes : {first.b, first.d, first.c}) append(facts.mVendor, bytes);
    facts.mBrand = readBrand(leaves);
    // The extended family is added for family 15 alone, and the extended model counts for families 6 and 15.
    const unsigned family = version.a >> 8 & 0xF, extendedModel = version.a >> 16 & 0xF;
    facts.mFamily = family == 15 ? family + (version.a >> 20 & 0xFF) : family;
    facts.mModel = version.a >> 4 & 0xF;
    if (family == 6 || family == 15) facts.mModel += extendedModel << 4;
    facts.mStepping = version.a & 0xF;
    facts.mFeatures = readFeatures(leaves, source);
    // This bit is reserved for hypervisors, which answer the leaves from 0x40000000 on:
    // https://learn.microsoft.com/virtualization/hyper-v-on-windows/tlfs/feature-discovery
    if (version.c >> 31 != 0) {
        // Not by `leaves`: these leaves are in neither of its two ranges.
        const Leaf hypervisor = source.leaf(kHypervisor, 0);
        for (const std::uint32_t bytes : {hypervisor.b, hypervisor.c, hypervisor.d}) append(facts.mHypervisor, bytes);
    }
}

}  // namespace xo::sysinfo
