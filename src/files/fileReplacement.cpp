#include "files/fileReplacement.h"

#include <cstddef>
#include <cstring>
#include <vector>

#include "files/fileWriting.h"
#include "platform/wideText.h"

namespace xo::files {
namespace {

constexpr ULONGLONG kPatienceMs = 125;
constexpr DWORD kMostNames = 16;

// A new file would not be what the old one is.
constexpr DWORD kOnlyInPlace = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_ENCRYPTED | FILE_ATTRIBUTE_COMPRESSED;

// Tries again and again while another has the file, as readers, scanners and indexers do for moments.
template <class Attempt>
auto patiently(DWORD busyError, Attempt attempt) {
    const ULONGLONG start = ::GetTickCount64();
    for (;; ::Sleep(1)) {
        auto result = attempt();
        if (result || ::GetLastError() != busyError || ::GetTickCount64() - start > kPatienceMs) return result;
    }
}

bool willBeDeleted(const platform::FileHandle& file, bool willBe) {
    FILE_DISPOSITION_INFO info{};
    info.DeleteFile = willBe;
    return ::SetFileInformationByHandle(file.get(), FileDispositionInfo, &info, sizeof info) != 0;
}

// A new file of a name that no other thread of this machine takes; what one of them may have left behind stays. Written
// through, lest a power failure leave a file that has the name already and the bytes not yet. Shared, because for a
// moment it is open under its last name.
platform::FileHandle createBeside(const std::wstring& path) {
    if (path.empty()) return {};
    for (DWORD i = 0; i < kMostNames; ++i) {
        const std::wstring name = path + L"." + std::to_wstring(::GetCurrentThreadId() + i) + L".tmp";
        platform::FileHandle file(::CreateFileW(name.c_str(), GENERIC_WRITE | READ_CONTROL | WRITE_DAC | DELETE,
                                                FILE_SHARE_READ | FILE_SHARE_DELETE, /*lpSecurityAttributes=*/nullptr,
                                                CREATE_NEW, FILE_FLAG_WRITE_THROUGH, /*hTemplateFile=*/nullptr));
        if (!file && ::GetLastError() == ERROR_FILE_EXISTS) continue;
        if (!file || willBeDeleted(file, true)) return file;
        file.reset();
        ::DeleteFileW(name.c_str());
        break;
    }
    return {};
}

platform::FileHandle openExisting(const std::wstring& path) {
    return platform::FileHandle(::CreateFileW(path.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES,
                                              FILE_SHARE_READ | FILE_SHARE_DELETE, /*lpSecurityAttributes=*/nullptr,
                                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr));
}

// The path of what a link leads to. Empty for a link where Windows cannot tell.
std::wstring withoutLinks(const std::wstring& path, const platform::FileHandle& file) {
    const std::wstring real = platform::readWide([&](wchar_t* buffer, DWORD size) {
        return ::GetFinalPathNameByHandleW(file.get(), buffer, size, FILE_NAME_OPENED | VOLUME_NAME_DOS);
    });
    const bool isKnown = !real.empty() || (::GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return isKnown ? real : path;
}

// Whether there is nothing of that name, not even a link that leads nowhere.
bool isFree(const std::wstring& path) {
    return ::GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES && ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

class AccessList {
public:
    bool read(const platform::FileHandle& file) {
        return ::GetKernelObjectSecurity(file.get(), DACL_SECURITY_INFORMATION, mDescriptor, sizeof mDescriptor,
                                         &mSize) != 0;
    }

    bool operator==(const AccessList& other) const {
        return mSize == other.mSize && std::memcmp(mDescriptor, other.mDescriptor, mSize) == 0;
    }

    // Entries that the file has inherited go on counting as such.
    bool write(const platform::FileHandle& file) {
        constexpr SECURITY_DESCRIPTOR_CONTROL kInherits = SE_DACL_AUTO_INHERIT_REQ;
        auto* const head = reinterpret_cast<SECURITY_DESCRIPTOR*>(mDescriptor);
        if ((head->Control & SE_DACL_AUTO_INHERITED) != 0) head->Control |= kInherits;
        return ::SetKernelObjectSecurity(file.get(), DACL_SECURITY_INFORMATION, mDescriptor) != 0;
    }

private:
    alignas(SECURITY_DESCRIPTOR) BYTE mDescriptor[8192];
    DWORD mSize = 0;
};

bool copyAccess(const platform::FileHandle& from, const platform::FileHandle& to) {
    AccessList wanted, inherited;
    if (!wanted.read(from) || !inherited.read(to)) return false;
    return wanted == inherited || wanted.write(to);
}

// Makes the new file what the old one is.
bool copyNature(const platform::FileHandle& from, const platform::FileHandle& to) {
    BY_HANDLE_FILE_INFORMATION old;
    if (!::GetFileInformationByHandle(from.get(), &old)) return false;
    if (old.nNumberOfLinks > 1 || (old.dwFileAttributes & kOnlyInPlace) != 0) return false;
    FILE_BASIC_INFO info{};  // what is 0 stays
    info.CreationTime.LowPart = old.ftCreationTime.dwLowDateTime;
    info.CreationTime.HighPart = static_cast<LONG>(old.ftCreationTime.dwHighDateTime);
    info.FileAttributes = old.dwFileAttributes | FILE_ATTRIBUTE_ARCHIVE;
    return ::SetFileInformationByHandle(to.get(), FileBasicInfo, &info, sizeof info) && copyAccess(from, to);
}

// FILE_RENAME_INFO, as both its kinds are laid out.
struct RenameInfo {
    DWORD flags;
    HANDLE root;
    DWORD nameBytes;
    wchar_t name[1];
};

// Gives the file the name, and whatever has the name none. With the newer kind of call readers that share the deletion
// are no obstacle; older systems and other file systems have only the older one.
bool moveOver(const platform::FileHandle& file, const std::wstring& path) {
    constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
    constexpr DWORD kReplace = 1, kWithItsReaders = 2;
    const std::size_t nameBytes = path.size() * sizeof(wchar_t);
    std::vector<std::byte> room(sizeof(RenameInfo) + nameBytes);
    auto* const info = reinterpret_cast<RenameInfo*>(room.data());
    const auto size = static_cast<DWORD>(room.size());
    info->nameBytes = static_cast<DWORD>(nameBytes);
    std::memcpy(info->name, path.data(), nameBytes);
    info->flags = kReplace | kWithItsReaders;
    if (::SetFileInformationByHandle(file.get(), kRenameInfoEx, info, size)) return true;
    info->flags = kReplace;
    return ::SetFileInformationByHandle(file.get(), FileRenameInfo, info, size) != 0;
}

}  // namespace

bool FileReplacement::begin(const std::string& path) {
    mPath = path;
    mNew = prepare();
    if (!mNew) mInPlace = openForWriting(mPath);
    return mNew || mInPlace;
}

// The new file, or none.
platform::FileHandle FileReplacement::prepare() {
    mFullPath = platform::toExtendedPath(platform::toWide(mPath));  // the working folder may change meanwhile
    const auto old = patiently(ERROR_SHARING_VIOLATION, [&] { return openExisting(mFullPath); });
    if (!old) return isFree(mFullPath) ? createBeside(mFullPath) : platform::FileHandle();
    mFullPath = withoutLinks(mFullPath, old);
    platform::FileHandle file = createBeside(mFullPath);
    if (file && !copyNature(old, file)) file.reset();
    return file;
}

bool FileReplacement::commit(std::string_view bytes) {
    if (mNew) {
        if (!writeAll(mNew, bytes)) return false;
        if (takePlace()) return true;
        mInPlace = openForWriting(mPath);
    }
    return mInPlace && writeAll(mInPlace, bytes);
}

bool FileReplacement::takePlace() const {
    if (!willBeDeleted(mNew, false)) return false;
    if (patiently(ERROR_ACCESS_DENIED, [&] { return moveOver(mNew, mFullPath); })) return true;
    willBeDeleted(mNew, true);
    return false;
}

}  // namespace xo::files
