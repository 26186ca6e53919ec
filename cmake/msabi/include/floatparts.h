// Where the parts of a number are, in words of sixteen bits: sources of the STL that read and write numbers.
#pragma once
#include <internal_shared.h>
#include <wchar.h>
#include <wctype.h>

#define _DBIAS 0x3fe  // double: 11 bits of exponent, of which the lowest is bit 4 of the highest word
#define _DOFF 4
#define _DFRAC ((unsigned short)0x000f)
#define _DMASK ((unsigned short)0x7ff0)
#define _DMAX ((unsigned short)0x07ff)
#define _DSIGN ((unsigned short)0x8000)
#define _D0 3
#define _D1 2
#define _D2 1
#define _D3 0

#define _FBIAS 0x7e  // float: 8 bits
#define _FOFF 7
#define _FFRAC ((unsigned short)0x007f)
#define _FMASK ((unsigned short)0x7f80)
#define _FMAX ((unsigned short)0x00ff)
#define _FSIGN ((unsigned short)0x8000)
#define _F0 1
#define _F1 0

#define _LBIAS _DBIAS  // long double is double
#define _LOFF _DOFF
#define _LFRAC ((unsigned short)0xffff)
#define _LMASK ((unsigned short)0x7fff)
#define _LMAX ((unsigned short)0x7fff)
#define _LSIGN _DSIGN
#define _L0 3
#define _L1 2
#define _L2 1
#define _L3 0

extern "C" {
unsigned __cdecl ___lc_collate_cp_func();
void __cdecl _lock_locales();
void __cdecl _unlock_locales();
errno_t __cdecl rand_s(unsigned*);
}

#pragma section(".CRT$XIC", long, read)
#define _CRTALLOC(section) __declspec(allocate(section))
typedef int(__cdecl* _PIFV)();
