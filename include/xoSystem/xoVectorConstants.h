// 128-bit constants for SSE code: four lanes of 32 bits.
//
//     const __m128 magnitude = _mm_andnot_ps(xo::sSSESignBitMask, value);
//
// All but the lane masks are initialised statically and never change. The comment behind each name is its value: one
// number when all four lanes hold it, otherwise the lanes from the lowest (x) to the highest (w).
#ifndef XOSYSTEM_XOVECTORCONSTANTS_H
#define XOSYSTEM_XOVECTORCONSTANTS_H

#include <emmintrin.h>

#include "xoSystem/xoExport.h"

namespace xo {

// Lane masks, set by basic initialisation and all zero before it. The name gives the lanes from the highest to the
// lowest: FF has all 32 bits set, 0 has none. Hosts only read them.
extern XOSYSTEM_API __m128 sSSE_FF_FF_FF_FF;
extern XOSYSTEM_API __m128 sSSE_0_FF_FF_FF;
extern XOSYSTEM_API __m128 sSSE_FF_0_FF_FF;
extern XOSYSTEM_API __m128 sSSE_FF_FF_0_FF;
extern XOSYSTEM_API __m128 sSSE_FF_FF_FF_0;
extern XOSYSTEM_API __m128 sSSE_FF_FF_0_0;
extern XOSYSTEM_API __m128 sSSE_FF_0_0_0;
extern XOSYSTEM_API __m128 sSSE_0_FF_0_0;
extern XOSYSTEM_API __m128 sSSE_0_0_FF_0;
extern XOSYSTEM_API __m128 sSSE_0_0_0_FF;

// Numbers.
extern XOSYSTEM_API const __m128 sSSEZero;          // 0
extern XOSYSTEM_API const __m128 sSSEOne;           // 1
extern XOSYSTEM_API const __m128i sSSEOneI;         // 1
extern XOSYSTEM_API const __m128 sSSETwo;           // 2
extern XOSYSTEM_API const __m128 sSSEThree;         // 3
extern XOSYSTEM_API const __m128i sSSEThreeI;       // 3
extern XOSYSTEM_API const __m128 sSSEFour;          // 4
extern XOSYSTEM_API const __m128 sSSETen;           // 10
extern XOSYSTEM_API const __m128 sSSEHalf;          // 0.5
extern XOSYSTEM_API const __m128 sSSEMOne;          // -1
extern XOSYSTEM_API const __m128 sSSEMTwo;          // -2
extern XOSYSTEM_API const __m128 sSSEMillion;       // 1e6
extern XOSYSTEM_API const __m128 sSSEPi;            // pi
extern XOSYSTEM_API const __m128 sSSEPi_Over_Two;   // pi / 2
extern XOSYSTEM_API const __m128 sSSEPi_Over_Four;  // pi / 4

// Bits and limits.
extern XOSYSTEM_API const __m128 sSSESignBitMask;          // 0x80000000, the sign of a float
extern XOSYSTEM_API const __m128i sSSE_ALL_BIT_ONE;        // 0xFFFFFFFF
extern XOSYSTEM_API const __m128 sSSE_FLT_MAX;             // FLT_MAX
extern XOSYSTEM_API const __m128 sSSE_MINUS_FLT_MAX;       // -FLT_MAX
extern XOSYSTEM_API const __m128 sSSE_MATH_FLT_MAX;        // sqrt(FLT_MAX) / 2: squares of it can still be summed
extern XOSYSTEM_API const __m128 sSSE_MATH_MINUS_FLT_MAX;  // its negative
extern XOSYSTEM_API const __m128 sSSEAlmostOne;            // 1 - 2^-24, the float below 1
extern XOSYSTEM_API const __m128 sSSEDelta;                // 1e-5, a tolerance
extern XOSYSTEM_API const __m128 sSSEPow;                  // 1, 2, 4, 8: weights of the lanes
extern XOSYSTEM_API const __m128 sSSEFirst;                // 1, 0, 0, 0: the first lane alone
extern XOSYSTEM_API const __m128i sSSEMaskRound;           // 0x4B000000, the bits of 2^23
extern XOSYSTEM_API const __m128 sSSEMaskRoundFloat;       // 2^23: adding and subtracting it rounds to an integer
extern XOSYSTEM_API const __m128 sSSEReflecMagicNumber;    // 2: a reflection is d - 2 (d . n) n

// Colours, red first and alpha last, from 0 to 1 or as integers from 0 to 255; and factors.
extern XOSYSTEM_API const __m128 sSSERed;          // 1, 0, 0, 1
extern XOSYSTEM_API const __m128i sSSERedI;        // 255, 0, 0, 255
extern XOSYSTEM_API const __m128 sSSEWhite;        // 1
extern XOSYSTEM_API const __m128 sSSEHalfWhite;    // 0.5, 0.5, 0.5, 1
extern XOSYSTEM_API const __m128i sSSEHalfWhiteI;  // 127, 127, 127, 255
extern XOSYSTEM_API const __m128 sSSE_255_Div;     // 1 / 255
extern XOSYSTEM_API const __m128 sSSEToPurcent;    // 100
extern XOSYSTEM_API const __m128 sSSEFromPurcent;  // 0.01

}  // namespace xo

#endif
