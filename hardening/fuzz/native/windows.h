// The functions of Windows that the fuzzed sources call. Only the arguments that they pass are supported.
#ifndef XO_FUZZ_NATIVE_WINDOWS_H
#define XO_FUZZ_NATIVE_WINDOWS_H

#include <cstddef>

using BOOL = int;
using DWORD = unsigned long;
using ULONGLONG = unsigned long long;
using HANDLE = void*;
using HMODULE = void*;
union LARGE_INTEGER {
    long long QuadPart;
};
struct SRWLOCK {};  // one thread calls the library

#define WINAPI
#define SRWLOCK_INIT \
    {}
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(-1))

enum : DWORD { ERROR_SUCCESS, ERROR_FILE_NOT_FOUND = 2, ERROR_PATH_NOT_FOUND, ERROR_WRITE_FAULT = 29 };
enum : DWORD { ERROR_GEN_FAILURE = 31, ERROR_HANDLE_EOF = 38, ERROR_BROKEN_PIPE = 109, ERROR_INVALID_NAME = 123 };
enum : DWORD { GENERIC_READ = 1, GENERIC_WRITE = 2, CREATE_ALWAYS = 2, OPEN_EXISTING = 3 };
enum : DWORD { FILE_SHARE_READ, FILE_SHARE_WRITE, FILE_SHARE_DELETE, FILE_ATTRIBUTE_NORMAL, FILE_BEGIN = 0 };
enum : DWORD { FILE_FLAG_SEQUENTIAL_SCAN, MEM_COMMIT, MEM_RESERVE, MEM_RELEASE, PAGE_READWRITE };

HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD, void*, DWORD, DWORD, void*);
BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER to, void*, DWORD);
BOOL ReadFile(HANDLE file, void* bytes, DWORD size, DWORD* got, void*);
BOOL WriteFile(HANDLE file, const void* bytes, DWORD size, DWORD* written, void*);
BOOL CloseHandle(HANDLE file);
BOOL FindClose(HANDLE);
HANDLE LocalFree(HANDLE);
BOOL FreeLibrary(HMODULE);
void* VirtualAlloc(void*, std::size_t size, DWORD, DWORD);
BOOL VirtualFree(void* bytes, std::size_t, DWORD);
void SecureZeroMemory(void* bytes, std::size_t size);
DWORD GetLastError();
DWORD GetCurrentThreadId();
ULONGLONG GetTickCount64();
inline void AcquireSRWLockExclusive(SRWLOCK*) {}
inline BOOL TryAcquireSRWLockExclusive(SRWLOCK*) { return 1; }
inline void ReleaseSRWLockExclusive(SRWLOCK*) {}
struct CONDITION_VARIABLE {};
#define CONDITION_VARIABLE_INIT \
    {}
inline BOOL SleepConditionVariableSRW(CONDITION_VARIABLE*, SRWLOCK*, DWORD, DWORD) { return 1; }
inline void WakeAllConditionVariable(CONDITION_VARIABLE*) {}
inline void Sleep(DWORD) {}
struct NT_TIB {
    void* StackLimit;
};
inline void* NtCurrentTeb() {
    static NT_TIB block{};  // a stack without a limit
    return &block;
}
struct EXCEPTION_POINTERS;
void SetLastError(DWORD error);

#endif
