// A thrown C++ exception on x64, as the compiler lays it out; addresses are offsets in the image that throws.
#pragma once
#include <windows.h>
#define _EH_RELATIVE_TYPEINFO 1
#define EH_EXCEPTION_NUMBER 0xE06D7363
#define EH_EXCEPTION_PARAMETERS 4
#define EH_MAGIC_NUMBER1 0x19930520
#define EH_PURE_MAGIC_NUMBER1 0x01994000
#define CT_IsSimpleType 1
#define CT_HasVirtualBase 4
#define CT_IsWinRTHandle 8
#define TI_IsPure 8
#define TI_IsWinRT 16

struct PMD {
    int mdisp, pdisp, vdisp;
};
struct CatchableType {
    unsigned properties;
    int pType;
    PMD thisDisplacement;
    int sizeOrOffset;
    int copyFunction;
};
struct CatchableTypeArray {
    int nCatchableTypes;
    int arrayOfCatchableTypes[1];
};
struct EhThrowInfo {
    unsigned attributes;
    int pmfnUnwind;
    int pForwardCompat;
    int pCatchableTypeArray;
};
typedef const EhThrowInfo ThrowInfo;
struct WINRTEXCEPTIONINFO {
    void* unused[5];
    ThrowInfo* throwInfo;
};
struct EHExceptionRecord {
    DWORD ExceptionCode;
    DWORD ExceptionFlags;
    EXCEPTION_RECORD* ExceptionRecord;
    void* ExceptionAddress;
    DWORD NumberParameters;
    struct {
        ULONG_PTR magicNumber;
        void* pExceptionObject;
        ThrowInfo* pThrowInfo;
        void* pThrowImageBase;
    } params;
};
#define PER_IS_MSVC_PURE_OR_NATIVE_EH(r)                                                                  \
    ((r)->ExceptionCode == EH_EXCEPTION_NUMBER && (r)->NumberParameters == EH_EXCEPTION_PARAMETERS &&     \
     (((r)->params.magicNumber >= EH_MAGIC_NUMBER1 && (r)->params.magicNumber <= EH_MAGIC_NUMBER1 + 2) || \
      (r)->params.magicNumber == EH_PURE_MAGIC_NUMBER1))
extern "C" void** __cdecl __current_exception();
#define _pCurrentException (*reinterpret_cast<EHExceptionRecord**>(__current_exception()))
inline void _CallMemberFunction0(void* object, void* f) { reinterpret_cast<void (*)(void*)>(f)(object); }
inline void _CallMemberFunction1(void* object, void* f, void* a) {
    reinterpret_cast<void (*)(void*, void*)>(f)(object, a);
}
inline void _CallMemberFunction2(void* object, void* f, void* a, int b) {
    reinterpret_cast<void (*)(void*, void*, int)>(f)(object, a, b);
}
