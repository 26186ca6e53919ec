// The static part of a C++ runtime in Microsoft's ABI: what the compiler and the linker expect in every program and
// DLL. Everything else is vcruntime140.dll's and ucrtbase.dll's, which Wine has.
#pragma once
#include <stdint.h>
#include <stdlib.h>
#include <windows.h>

extern "C" {
typedef void(__cdecl* Function)();
typedef int(__cdecl* CheckedFunction)();
struct ExitTable {
    Function *first, *last, *end;
};
int __cdecl _crt_atexit(Function);
int __cdecl _execute_onexit_table(ExitTable*);
int __cdecl _initialize_onexit_table(ExitTable*);
int __cdecl _register_onexit_function(ExitTable*, CheckedFunction);
void __cdecl _initterm(Function*, Function*);
int __cdecl _initterm_e(CheckedFunction*, CheckedFunction*);

// Runs the constructors of static objects; false ends the start. A DLL keeps its exit functions itself.
bool runInitializers(bool isDll);
void runExitFunctions(bool isDll);

// The callbacks for thread_local objects; null in a program that has none with constructors or destructors.
extern PIMAGE_TLS_CALLBACK threadStart, threadEnd;
}
