// Lists folders by GetFileInformationByHandleEx, which returns many entries in one call.
#include "files/folderNames.h"

#include <cstring>

#include "files/pathParts.h"

namespace xo::files {
namespace {

// The largest answer of a file server, so that a larger buffer would save no calls.
constexpr DWORD kBufferBytes = 65536;

// Bits of an entry's kind.
constexpr wchar_t kFolder = 1;
constexpr wchar_t kLink = 2;
constexpr wchar_t kReparsePoint = 4;

// For a reparse point EaSize is its tag:
// https://learn.microsoft.com/openspecs/windows_protocols/ms-fscc/e8d926d1-3a22-4654-be9c-58317a85540b
// Wine returns 0; such an entry counts as a link, because entering a link by mistake would be worse.
wchar_t kindOf(const FILE_FULL_DIR_INFO& info) {
    if ((info.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return 0;
    if ((info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return kFolder;
    const bool isLink = info.EaSize == 0 || IsReparseTagNameSurrogate(info.EaSize);
    return kFolder | kReparsePoint | (isLink ? kLink : 0);
}

constexpr std::size_t kSizeUnits = sizeof(std::uint64_t) / sizeof(wchar_t);

// The size is not aligned in the text, so that it is copied in and out as bytes.
void appendSize(std::wstring& entries, const FILE_FULL_DIR_INFO& info) {
    const bool isFolder = (info.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const std::uint64_t size = isFolder ? 0 : static_cast<std::uint64_t>(info.EndOfFile.QuadPart);
    wchar_t units[kSizeUnits];
    std::memcpy(units, &size, sizeof size);
    entries.append(units, kSizeUnits);
}

}  // namespace

FolderNames::FolderNames(bool keepsSizes) : mBuffer(new std::byte[kBufferBytes]), mKeepsSizes(keepsSizes) {}

FolderNames::Reading FolderNames::read(HANDLE folder) {
    DWORD error = readSome(folder);
    if (error != ERROR_SUCCESS) return {/*isBegun=*/false, error};
    while (error == ERROR_SUCCESS) error = readSome(folder);
    return {/*isBegun=*/true, error == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : error};
}

// Takes the entries of one answer of the system. Each call continues where the last one ended.
DWORD FolderNames::readSome(HANDLE folder) {
    if (!::GetFileInformationByHandleEx(folder, FileFullDirectoryInfo, mBuffer.get(), kBufferBytes))
        return ::GetLastError();
    const std::byte* at = mBuffer.get();
    for (;;) {
        const auto& info = *reinterpret_cast<const FILE_FULL_DIR_INFO*>(at);
        const std::wstring_view name(info.FileName, info.FileNameLength / sizeof(wchar_t));
        if (!isDots(name)) {
            mEntries += kindOf(info);
            mEntries += static_cast<wchar_t>(name.size());
            mEntries += name;
            if (mKeepsSizes) appendSize(mEntries, info);
        }
        if (info.NextEntryOffset == 0) return ERROR_SUCCESS;
        at += info.NextEntryOffset;
    }
}

FolderEntry FolderNames::next(std::size_t& position) const noexcept {
    const wchar_t* const entry = mEntries.data() + position;
    const std::wstring_view name(entry + 2, entry[1]);
    position += 2 + name.size();
    std::uint64_t size = 0;
    if (mKeepsSizes) {
        std::memcpy(&size, mEntries.data() + position, sizeof size);
        position += kSizeUnits;
    }
    return {name, (entry[0] & kFolder) != 0, (entry[0] & kLink) != 0, (entry[0] & kReparsePoint) != 0, size};
}

}  // namespace xo::files
