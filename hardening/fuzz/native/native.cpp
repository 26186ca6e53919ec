// What stands in for Windows and for the rooms that live on it, as far as the fuzzer calls them.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "files/fileReplacement.h"
#include "files/fileWriting.h"
#include "platform/ownStack.h"
#include "platform/structuredCall.h"
#include "platform/wideText.h"
#include "platform/windows.h"
#include "progress/work.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoSystemError.h"

// ---- Files.

namespace {

DWORD gLastError = 0;

std::FILE* streamOf(HANDLE file) { return static_cast<std::FILE*>(file); }

}  // namespace

HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD, void*, DWORD, DWORD, void*) {
    const std::wstring_view bytes = path;
    std::FILE* const file =
        std::fopen(std::string(bytes.begin(), bytes.end()).c_str(), access == GENERIC_READ ? "r" : "w");
    if (!file) gLastError = ERROR_FILE_NOT_FOUND;
    return file ? file : INVALID_HANDLE_VALUE;
}
BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
    const long at = std::ftell(streamOf(file));
    std::fseek(streamOf(file), 0, SEEK_END);
    size->QuadPart = std::ftell(streamOf(file));
    return std::fseek(streamOf(file), at, SEEK_SET) == 0;
}
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER to, void*, DWORD) {
    return std::fseek(streamOf(file), static_cast<long>(to.QuadPart), SEEK_SET) == 0;
}
BOOL ReadFile(HANDLE file, void* bytes, DWORD size, DWORD* got, void*) {
    *got = std::fread(bytes, 1, size, streamOf(file));
    return 1;
}
BOOL WriteFile(HANDLE file, const void* bytes, DWORD size, DWORD* written, void*) {
    *written = std::fwrite(bytes, 1, size, streamOf(file));
    return 1;
}
BOOL CloseHandle(HANDLE file) { return std::fclose(streamOf(file)) == 0; }
BOOL FindClose(HANDLE) { return 0; }
HANDLE LocalFree(HANDLE) { return nullptr; }
BOOL FreeLibrary(HMODULE) { return 0; }
void* VirtualAlloc(void*, std::size_t size, DWORD, DWORD) { return std::malloc(size); }
BOOL VirtualFree(void* bytes, std::size_t, DWORD) { return std::free(bytes), 1; }
void SecureZeroMemory(void* bytes, std::size_t size) { std::memset(bytes, 0, size); }
DWORD GetLastError() { return gLastError; }
DWORD GetCurrentThreadId() { return 1; }
ULONGLONG GetTickCount64() { return 0; }
void SetLastError(DWORD error) { gLastError = error; }

namespace xo {

std::wstring platform::toApiPath(std::string_view path) { return {path.begin(), path.end()}; }

// The fuzzer's expressions are short: they fit any stack.
bool platform::callOnOwnStack(std::size_t, void (*function)(void*), void* argument) {
    function(argument);
    return true;
}
std::size_t platform::stackLeft() { return std::size_t{64} * 1024 * 1024; }

void platform::callReleasing(Function run, Function release, void* argument) {
    run(argument);
    release(argument);
}

std::wstring platform::toWide(std::string_view text) { return {text.begin(), text.end()}; }
std::wstring platform::toExtendedPath(const std::wstring& path) { return path; }

DWORD files::FileReplacement::begin() {
    mInPlace = openForWriting(std::string(mPath.begin(), mPath.end()));
    return mInPlace ? ERROR_SUCCESS : gLastError;
}
DWORD files::FileReplacement::commit(std::string_view bytes) { return writeAll(std::exchange(mInPlace, {}), bytes); }

std::string SystemError::toString() const { return std::to_string(mCode); }

// ---- The log: only its handler.

struct xoLog::Private {
    CustomHandler handler = nullptr;
    void* user = nullptr;
};

struct xoLogObject::Line {
    std::ostringstream text;
    xoLogType type;
    xoLog* log;
};

xoLog* xoLog::msInstance = nullptr;

xoLog::xoLog(bool) : mPrivate(std::make_unique<Private>()) {
    for (auto& isEnabled : mTypeEnabled) isEnabled = true;
}
xoLog::~xoLog() = default;
void xoLog::createInstance(bool threadSafe) { msInstance = new xoLog(threadSafe); }
void xoLog::destroyInstance() { delete std::exchange(msInstance, nullptr); }
void xoLog::setEchoToConsole(bool) {}
bool xoLog::isQualifierWanted(std::string_view) { return true; }
void xoLog::installCustomHandler(CustomHandler handler, void* user) { *mPrivate = {handler, user}; }
void xoLog::Write(const std::string& message, xoLogType type, const std::string& qualifier) {
    if (mPrivate->handler) mPrivate->handler(message, type, qualifier, mPrivate->user);
}

void xoLogObject::begin(xoLogType type, const char*, xoLog* log, const char*) { mLine = new Line{{}, type, log}; }
void xoLogObject::end() noexcept {
    const std::unique_ptr<Line> line(mLine);
    line->log->Write(line->text.str(), line->type, {});
}
void xoLogObject::append(const char* text) { mLine->text << text; }
void xoLogObject::append(std::string_view text) { mLine->text << text; }
void xoLogObject::appendInteger(std::int64_t value) { mLine->text << value; }
void xoLogObject::appendUnsigned(std::uint64_t value) { mLine->text << value; }
void xoLogObject::appendReal(double value) { mLine->text << value; }

void progress::reportForeignScope() {}

void initializeXoSystem(InitType, bool) { xoLog::createInstance(false); }
void terminateXoSystem() { xoLog::destroyInstance(); }

}  // namespace xo
