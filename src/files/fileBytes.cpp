#include "files/fileBytes.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace xo::files {
namespace {

constexpr std::size_t kMaxTransfer = std::size_t{1} << 30;  // a single call takes 32-bit sizes
constexpr std::size_t kFirstRoom = 4096;                    // for what has no size beforehand

// From here on bytes get pages of their own. A large block in the heap, freed after what was made meanwhile, makes the
// heap give memory back to the system and fault it in anew, which costs more than to read the file.
constexpr std::size_t kOwnPages = std::size_t{64} << 10;

void deleteBytes(char* bytes) { delete[] bytes; }

void releasePages(char* bytes) { ::VirtualFree(bytes, 0, MEM_RELEASE); }

// Not filled with zeros first.
FileBytes::Bytes allocate(std::size_t size) {
    if (size < kOwnPages) return {new (std::nothrow) char[size], &deleteBytes};
    void* const pages = ::VirtualAlloc(/*lpAddress=*/nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    return {static_cast<char*>(pages), &releasePages};
}

// There is no such file, or no such drive, computer or share that could have it.
bool isAbsent(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_INVALID_DRIVE:
        case ERROR_NOT_READY:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME: return true;
        default: return false;
    }
}

}  // namespace

FileBytes::State FileBytes::read(const std::wstring& path) {
    const platform::FileHandle file(::CreateFileW(
        path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr));
    if (!file) return isAbsent(::GetLastError()) ? Missing : Unreadable;
    return fill(file);
}

FileBytes::State FileBytes::fill(const platform::FileHandle& file) {
    LARGE_INTEGER size{};
    const bool knowsSize = ::GetFileSizeEx(file.get(), &size) != 0;
    // One byte more than the file has: the read that comes back short then tells its end.
    if (!grow(knowsSize ? static_cast<std::size_t>(size.QuadPart) + 1 : kFirstRoom)) return Unreadable;
    for (;;) {
        if (mSize == mRoom && !grow(2 * mRoom)) return Unreadable;
        DWORD got = 0;
        const auto wanted = static_cast<DWORD>((std::min)(mRoom - mSize, kMaxTransfer));
        if (!::ReadFile(file.get(), mBytes.get() + mSize, wanted, &got, /*lpOverlapped=*/nullptr)) {
            const DWORD error = ::GetLastError();
            return error == ERROR_HANDLE_EOF || error == ERROR_BROKEN_PIPE ? Complete : Unreadable;
        }
        mSize += got;
        if (got == 0 || (knowsSize && mSize == static_cast<std::size_t>(size.QuadPart))) return Complete;
    }
}

bool FileBytes::grow(std::size_t room) {
    Bytes bytes = allocate(room);
    if (!bytes) return false;
    if (mSize != 0) std::memcpy(bytes.get(), mBytes.get(), mSize);
    mBytes = std::move(bytes);
    mRoom = room;
    return true;
}

}  // namespace xo::files
