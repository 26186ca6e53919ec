// Names for temporary files: the system chooses a number, and this process gives no number away twice in a row.
#include <io.h>

#include <algorithm>
#include <array>
#include <atomic>

#include "files/pathParts.h"
#include "platform/handle.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

using platform::toApiPath;

constexpr UINT kLastNumber = 0xFFFF;                   // the numbers are 1 to this
constexpr std::size_t kPrefixLength = 3;               // all that GetTempFileNameW takes of a prefix
constexpr std::size_t kSystemExtension = 4;            // ".tmp"
constexpr std::size_t kLongestFolder = MAX_PATH - 14;  // beyond it GetTempFileNameW gives up

// The file that proved a name free is gone when the name is returned, so the system, whose numbers follow its clock,
// may offer the same one to the next caller.
class NumberRegister {
public:
    // Whether the number was still free; it no longer is.
    bool claim(UINT number) noexcept {
        const std::uint32_t bit = 1u << (number % 32);
        return (mClaimed[number / 32].fetch_or(bit, std::memory_order_relaxed) & bit) == 0;
    }
    void forgetAll() noexcept {
        for (auto& word : mClaimed) word.store(0, std::memory_order_relaxed);
    }

private:
    std::array<std::atomic<std::uint32_t>, (kLastNumber + 1) / 32> mClaimed{};
};

NumberRegister& numbers() noexcept {
    static NumberRegister instance;
    return instance;
}

UINT after(UINT number) noexcept { return number % kLastNumber + 1; }

struct TemporaryFile {
    std::wstring folder;  // with backslashes
    std::wstring prefix;  // kPrefixLength at most

    // A number whose file could be made in the folder just now; 0 when none can be made.
    UINT tryOut() const {
        if (folder.size() > kLongestFolder) return tryOutLong();
        wchar_t made[MAX_PATH];
        const UINT number = ::GetTempFileNameW(folder.c_str(), prefix.c_str(), 0, made);
        if (number != 0) ::DeleteFileW(made);
        return number;
    }

    // The path for a number, ending in ".tmp".
    std::wstring name(UINT number) const {
        wchar_t room[MAX_PATH];
        if (folder.size() <= kLongestFolder && ::GetTempFileNameW(folder.c_str(), prefix.c_str(), number, room) != 0)
            return room;
        ::swprintf_s(room, L"%x.tmp", number);
        const bool separated = !folder.empty() && files::isSeparator(folder.back());
        return folder + (separated ? L"" : L"\\") + prefix + room;
    }

private:
    UINT tryOutLong() const {
        UINT number = ::GetTickCount() % kLastNumber + 1;
        for (UINT tries = 0; tries < kLastNumber; ++tries, number = after(number)) {
            const platform::FileHandle made(::CreateFileW(toApiPath(name(number)).c_str(), GENERIC_WRITE,
                                                          /*dwShareMode=*/0, /*lpSecurityAttributes=*/nullptr,
                                                          CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE,
                                                          /*hTemplateFile=*/nullptr));
            if (made) return number;
            if (::GetLastError() != ERROR_FILE_EXISTS) return 0;
        }
        return 0;
    }
};

// Whether the text may stand inside a file name.
bool fitsName(std::wstring_view text) {
    const auto forbidden = [](wchar_t c) {
        return c < L' ' || std::wstring_view(LR"(\/:*?"<>|)").find(c) != std::wstring_view::npos;
    };
    return std::none_of(text.begin(), text.end(), forbidden);
}

// Not more than GetTempFileNameW takes, and no half of a surrogate pair.
std::wstring shortPrefix(std::wstring prefix) {
    if (prefix.size() <= kPrefixLength) return prefix;
    const bool cutsPair = IS_HIGH_SURROGATE(prefix[kPrefixLength - 1]) && IS_LOW_SURROGATE(prefix[kPrefixLength]);
    prefix.resize(cutsPair ? kPrefixLength - 1 : kPrefixLength);
    return prefix;
}

std::wstring folderFor(const std::string& utf8Folder) {
    std::wstring folder = platform::toWide(utf8Folder.empty() ? xoDirUtils::GetTempFolderUtf8() : utf8Folder);
    std::replace(folder.begin(), folder.end(), L'/', L'\\');
    return folder.find(L'\0') == std::wstring::npos ? folder : std::wstring();
}

std::string freshName(const std::string& folder, const std::string& prefix, const std::wstring& extension) {
    const TemporaryFile file{folderFor(folder), shortPrefix(platform::toWide(prefix))};
    if (file.folder.empty() || !fitsName(file.prefix) || !fitsName(extension)) return {};
    UINT number = file.tryOut();
    if (number == 0) return {};

    // The first round is over the numbers never given away, the second over all.
    for (int round = 0; round < 2; ++round) {
        for (UINT tries = 0; tries < kLastNumber; ++tries, number = after(number)) {
            if (!numbers().claim(number)) continue;
            std::wstring path = file.name(number);
            path.replace(path.size() - kSystemExtension, kSystemExtension, extension);
            if (::_waccess(toApiPath(path).c_str(), 0) != 0) return platform::toUtf8(path);
        }
        numbers().forgetAll();
    }
    return {};
}

}  // namespace

std::string xoDirUtils::GetTempFileUtf8(const std::string& folder, const std::string& prefix) {
    return freshName(folder, prefix, L".tmp");
}

std::string xoDirUtils::GetTempFileUtf8(const std::string& folder, const std::string& prefix,
                                        const std::string& extension) {
    const bool needsPoint = !extension.empty() && extension.front() != '.';
    return freshName(folder, prefix, (needsPoint ? L"." : L"") + platform::toWide(extension));
}

}  // namespace xo
