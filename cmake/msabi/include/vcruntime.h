// What Microsoft's vcruntime.h gives to the STL's headers.
#pragma once
#define _VCRUNTIME_H
#include <corecrt.h>
#include <sal.h>
#include <vadefs.h>

// Calling conventions and linkage: only the DLL of the C runtime, and no managed code.
#define __CLRCALL_OR_CDECL __cdecl
#define __CLRCALL_PURE_OR_CDECL __cdecl
#define __CLRCALL_PURE_OR_STDCALL __stdcall
#define __CLR_OR_STD_CALL
#define __CLR_OR_THIS_CALL
#ifndef __CRTDECL
#    define __CRTDECL __cdecl
#endif
#define _VCRTIMP
#ifndef _ACRTIMP
#    define _ACRTIMP __declspec(dllimport)
#endif
#define _CRT_SATELLITE_1
#define _CRT_SATELLITE_2
#define _CRT_SATELLITE_CODECVT_IDS
#define _CRT_SATELLITE_CODECVT_IDS_NOIMPORT

// The language.
#define _HAS_EXCEPTIONS 1
#define _HAS_NODISCARD 1
#define _NODISCARD [[nodiscard]]
#define _MSVC_CONSTEXPR [[msvc::constexpr]]
#define _HAS_CXX17 (_MSVC_LANG > 201402L)
#define _HAS_CXX20 (_MSVC_LANG > 201703L)
#define _HAS_CXX23 (_MSVC_LANG > 202002L)
#define _VCRT_ALIGN(x) __declspec(align(x))
#ifndef _CRT_PACKING
#    define _CRT_PACKING 8
#endif

// Annotations, which Debian's sal.h knows only in part.
#ifndef _Check_return_
#    define _Check_return_
#endif
#ifndef _Deref_post_opt_valid_
#    define _Deref_post_opt_valid_
#endif
#define _CRT_GUARDOVERFLOW
#define _CRT_INSECURE_DEPRECATE_GLOBALS(x)
#define _DEFAULT_CODE_STDIO 0
#define _VCRT_NOALIAS
#define _VCRT_RESTRICT

#ifdef __cplusplus
#    ifndef _CONST_RETURN
#        define _CONST_RETURN const
#    endif
#    define _CRT_BEGIN_C_HEADER extern "C" {
#    define _CRT_END_C_HEADER }
extern "C" __declspec(noreturn) void __cdecl _invoke_watson(const wchar_t*, const wchar_t*, const wchar_t*, unsigned,
                                                            uintptr_t);
#else
#    define _CRT_BEGIN_C_HEADER
#    define _CRT_END_C_HEADER
#endif
