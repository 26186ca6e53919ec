// Constants for SSE code, initialised at compile time. The lane masks are variables that basic initialisation sets.
#include "xoSystem/xoVectorConstants.h"

#include <cfloat>
#include <cstdint>

#include "util/laneMasks.h"

namespace xo {
namespace {

constexpr float kPi = 3.14159265358979f;
constexpr float kLargestSummableRoot = 9.2233714e18f;  // sqrt(FLT_MAX) / 2: four squares of it sum up to a finite float

// Microsoft's __m128i is a union whose first member is an array of char, other compilers' a vector of two long long.
#if defined(_MSC_VER) && !defined(__clang__)
constexpr char byteOf(std::uint32_t lane, int index) { return static_cast<char>(lane >> (8 * index)); }
#    define XO_BYTES(lane) byteOf(lane, 0), byteOf(lane, 1), byteOf(lane, 2), byteOf(lane, 3)
#    define XO_INTEGERS(x, y, z, w) \
        { XO_BYTES(x), XO_BYTES(y), XO_BYTES(z), XO_BYTES(w) }
#else
constexpr long long pair(std::uint32_t low, std::uint32_t high) {
    return static_cast<long long>((std::uint64_t{high} << 32) | low);
}
#    define XO_INTEGERS(x, y, z, w) \
        { pair(x, y), pair(z, w) }
#endif
// Brace initialisers, because the intrinsics that set a vector are not constant expressions.
#define XO_ALL(value) \
    { value, value, value, value }

// 1 selects a lane: -1 has all bits set. The order is that of _mm_set_epi32, the highest lane first.
__m128 laneMask(int w, int z, int y, int x) { return _mm_castsi128_ps(_mm_set_epi32(-w, -z, -y, -x)); }

}  // namespace

__m128 sSSE_FF_FF_FF_FF = {};
__m128 sSSE_0_FF_FF_FF = {};
__m128 sSSE_FF_0_FF_FF = {};
__m128 sSSE_FF_FF_0_FF = {};
__m128 sSSE_FF_FF_FF_0 = {};
__m128 sSSE_FF_FF_0_0 = {};
__m128 sSSE_FF_0_0_0 = {};
__m128 sSSE_0_FF_0_0 = {};
__m128 sSSE_0_0_FF_0 = {};
__m128 sSSE_0_0_0_FF = {};

void util::writeLaneMasks() {
    sSSE_FF_FF_FF_FF = laneMask(1, 1, 1, 1);
    sSSE_0_FF_FF_FF = laneMask(0, 1, 1, 1);
    sSSE_FF_0_FF_FF = laneMask(1, 0, 1, 1);
    sSSE_FF_FF_0_FF = laneMask(1, 1, 0, 1);
    sSSE_FF_FF_FF_0 = laneMask(1, 1, 1, 0);
    sSSE_FF_FF_0_0 = laneMask(1, 1, 0, 0);
    sSSE_FF_0_0_0 = laneMask(1, 0, 0, 0);
    sSSE_0_FF_0_0 = laneMask(0, 1, 0, 0);
    sSSE_0_0_FF_0 = laneMask(0, 0, 1, 0);
    sSSE_0_0_0_FF = laneMask(0, 0, 0, 1);
}

const __m128 sSSEZero = XO_ALL(0.0f);
const __m128 sSSEOne = XO_ALL(1.0f);
const __m128i sSSEOneI = XO_INTEGERS(1, 1, 1, 1);
const __m128 sSSETwo = XO_ALL(2.0f);
const __m128 sSSEThree = XO_ALL(3.0f);
const __m128i sSSEThreeI = XO_INTEGERS(3, 3, 3, 3);
const __m128 sSSEFour = XO_ALL(4.0f);
const __m128 sSSETen = XO_ALL(10.0f);
const __m128 sSSEHalf = XO_ALL(0.5f);
const __m128 sSSEMOne = XO_ALL(-1.0f);
const __m128 sSSEMTwo = XO_ALL(-2.0f);
const __m128 sSSEMillion = XO_ALL(1e6f);
const __m128 sSSEPi = XO_ALL(kPi);
const __m128 sSSEPi_Over_Two = XO_ALL(kPi / 2);
const __m128 sSSEPi_Over_Four = XO_ALL(kPi / 4);

// Only the sign bit of each lane is set in -0.0.
const __m128 sSSESignBitMask = XO_ALL(-0.0f);
const __m128i sSSE_ALL_BIT_ONE = XO_INTEGERS(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF);
const __m128 sSSE_FLT_MAX = XO_ALL(FLT_MAX);
const __m128 sSSE_MINUS_FLT_MAX = XO_ALL(-FLT_MAX);
const __m128 sSSE_MATH_FLT_MAX = XO_ALL(kLargestSummableRoot);
const __m128 sSSE_MATH_MINUS_FLT_MAX = XO_ALL(-kLargestSummableRoot);
// The largest float below 1: FLT_EPSILON is the step above 1, and the step below it is half of that.
const __m128 sSSEAlmostOne = XO_ALL(1.0f - FLT_EPSILON / 2);
const __m128 sSSEDelta = XO_ALL(1e-5f);
const __m128 sSSEPow = {1.0f, 2.0f, 4.0f, 8.0f};
const __m128 sSSEFirst = {1.0f, 0.0f, 0.0f, 0.0f};
// The bits of the float 2^23. From there on floats are integers, so that adding and subtracting it rounds a smaller
// float that is not negative.
const __m128i sSSEMaskRound = XO_INTEGERS(0x4B000000, 0x4B000000, 0x4B000000, 0x4B000000);
const __m128 sSSEMaskRoundFloat = XO_ALL(8388608.0f);
const __m128 sSSEReflecMagicNumber = XO_ALL(2.0f);

const __m128 sSSERed = {1.0f, 0.0f, 0.0f, 1.0f};
const __m128i sSSERedI = XO_INTEGERS(255, 0, 0, 255);
const __m128 sSSEWhite = XO_ALL(1.0f);
const __m128 sSSEHalfWhite = {0.5f, 0.5f, 0.5f, 1.0f};
const __m128i sSSEHalfWhiteI = XO_INTEGERS(127, 127, 127, 255);
const __m128 sSSE_255_Div = XO_ALL(1.0f / 255.0f);
const __m128 sSSEToPurcent = XO_ALL(100.0f);
const __m128 sSSEFromPurcent = XO_ALL(0.01f);

}  // namespace xo
