#include "files/folderNames.h"

namespace xo::files {
namespace {

// The most that a server gives in one answer.
constexpr DWORD kRoomBytes = 65536;

// Bits of an entry's kind.
constexpr wchar_t kFolder = 1;
constexpr wchar_t kReparsePoint = 2;

bool isDots(std::wstring_view name) { return name == L"." || name == L".."; }

wchar_t kindOf(DWORD attributes) {
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return 0;
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 ? kFolder : kFolder | kReparsePoint;
}

}  // namespace

FolderNames::FolderNames() : mRoom(new std::byte[kRoomBytes]) {}

bool FolderNames::read(HANDLE folder) {
    if (!readSome(folder)) return false;
    while (readSome(folder)) {
    }
    return true;
}

bool FolderNames::readSome(HANDLE folder) {
    if (!::GetFileInformationByHandleEx(folder, FileFullDirectoryInfo, mRoom.get(), kRoomBytes)) return false;
    const std::byte* at = mRoom.get();
    for (;;) {
        const auto& info = *reinterpret_cast<const FILE_FULL_DIR_INFO*>(at);
        const std::wstring_view name(info.FileName, info.FileNameLength / sizeof(wchar_t));
        if (!isDots(name)) {
            mEntries += kindOf(info.FileAttributes);
            mEntries += static_cast<wchar_t>(name.size());
            mEntries += name;
        }
        if (info.NextEntryOffset == 0) return true;
        at += info.NextEntryOffset;
    }
}

FolderEntry FolderNames::next(std::size_t& position) const noexcept {
    const wchar_t* const entry = mEntries.data() + position;
    const std::wstring_view name(entry + 2, entry[1]);
    position += 2 + name.size();
    return {name, (entry[0] & kFolder) != 0, (entry[0] & kReparsePoint) != 0};
}

}  // namespace xo::files
