// Declared, for headers that mention it; nothing here jumps.
#pragma once
#define _INC_SETJMP
#define _INC_SETJMPEX
typedef struct {
    unsigned __int64 registers[32];
} jmp_buf[1];
#ifdef __cplusplus
extern "C"
#endif
    __declspec(noreturn) void __cdecl longjmp(jmp_buf, int);
