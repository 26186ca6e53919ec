// Reads a whole file, pipe or device into memory.
#include "files/fileBytes.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "files/fileWriting.h"
#include "platform/openFile.h"

namespace xo::files {
namespace {

constexpr std::size_t kFirstCapacity = 4096;  // for pipes and devices, which have no size beforehand

// Buffers from this size on get pages of their own. When a large block is freed behind blocks that were allocated after
// it, the heap returns memory to the system and has to map it again, which costs more than reading the file.
constexpr std::size_t kOwnPages = std::size_t{64} << 10;

void deleteBytes(char* bytes) { delete[] bytes; }

void releasePages(char* bytes) { ::VirtualFree(bytes, 0, MEM_RELEASE); }

// The memory is not initialised.
FileBytes::Bytes allocate(std::size_t size) {
    if (size < kOwnPages) return {new (std::nothrow) char[size], &deleteBytes};
    void* const pages = ::VirtualAlloc(/*lpAddress=*/nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    return {static_cast<char*>(pages), &releasePages};
}

// An error such as a drive that is not ready or a computer that does not answer does not mean that the file is missing:
// a caller would then overwrite the existing file.
bool isAbsent(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME;
}

}  // namespace

FileBytes::State FileBytes::read(const std::wstring& path) {
    const platform::FileHandle file = platform::openFile(path, GENERIC_READ, platform::kShareAll, OPEN_EXISTING);
    if (!file) return isAbsent(::GetLastError()) ? Missing : Unreadable;
    return fill(file);
}

FileBytes::State FileBytes::fill(const platform::FileHandle& file) {
    LARGE_INTEGER size{};
    const bool knowsSize = ::GetFileSizeEx(file.get(), &size) != 0;
    // One byte more than the file has, so that a file that has grown meanwhile is read to its end.
    if (!grow(knowsSize ? static_cast<std::size_t>(size.QuadPart) + 1 : kFirstCapacity)) return Unreadable;
    for (;;) {
        if (mSize == mCapacity && !grow(2 * mCapacity)) return Unreadable;
        DWORD got = 0;
        const auto wanted = static_cast<DWORD>((std::min)(mCapacity - mSize, kMaxTransfer));
        if (!::ReadFile(file.get(), mBytes.get() + mSize, wanted, &got, /*lpOverlapped=*/nullptr)) {
            const DWORD error = ::GetLastError();
            // A pipe ends with ERROR_BROKEN_PIPE once its writer has closed it.
            return error == ERROR_HANDLE_EOF || error == ERROR_BROKEN_PIPE ? Complete : Unreadable;
        }
        mSize += got;
        if (got == 0 || (knowsSize && mSize == static_cast<std::size_t>(size.QuadPart))) return Complete;
    }
}

bool FileBytes::grow(std::size_t capacity) {
    Bytes bytes = allocate(capacity);
    if (!bytes) return false;
    if (mSize != 0) std::memcpy(bytes.get(), mBytes.get(), mSize);
    mBytes = std::move(bytes);
    mCapacity = capacity;
    return true;
}

}  // namespace xo::files
