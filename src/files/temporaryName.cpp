// Names for temporary files. The system chooses a number; this process does not use a number again before all have been
// used.
#include <io.h>

#include <algorithm>
#include <bitset>
#include <cerrno>

#include "files/pathParts.h"
#include "platform/openFile.h"
#include "platform/pathSyntax.h"
#include "platform/slimLock.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

using platform::toApiPath;

constexpr UINT kLastNumber = 0xFFFF;                   // the numbers are 1 to this
constexpr std::size_t kPrefixLength = 3;               // GetTempFileNameW ignores further characters of a prefix
constexpr std::size_t kSystemExtension = 4;            // ".tmp"
constexpr std::size_t kLongestFolder = MAX_PATH - 14;  // GetTempFileNameW fails for longer ones
constexpr int kMostDenied = 100;                       // names that may be denied before the folder counts as closed

UINT after(UINT number) noexcept { return number % kLastNumber + 1; }

// The numbers that have been used. The file that reserved a name is deleted before the name is returned, so the system,
// which derives numbers from its clock, may choose the same number for the next caller.
class NumberRegister {
public:
    // Returns the first unused number from the given one on, and marks it as used. When none is left, all become unused
    // again.
    UINT give(UINT number) noexcept {
        mLock.lock();
        if (mCount == kLastNumber) {
            mGiven.reset();
            mCount = 0;
        }
        while (mGiven[number]) number = after(number);
        mGiven[number] = true;
        ++mCount;
        mLock.unlock();
        return number;
    }

private:
    platform::SlimLock mLock;
    std::bitset<kLastNumber + 1> mGiven XO_GUARDED_BY(mLock);
    UINT mCount XO_GUARDED_BY(mLock) = 0;
};

NumberRegister& numbers() noexcept {
    static NumberRegister instance;
    return instance;
}

// Whether a file can be created there. A name whose file is in the state "delete pending" is not free; Windows then
// reports that access is denied.
bool isFree(const std::wstring& path) { return ::_waccess(toApiPath(path).c_str(), 0) != 0 && errno == ENOENT; }

struct TemporaryFile {
    std::wstring folder;  // with backslashes
    std::wstring prefix;  // kPrefixLength at most

    // A number whose file could be created in the folder just now; the file is deleted again. 0 when none can be
    // created.
    UINT tryOut() const {
        if (folder.size() > kLongestFolder) return tryOutByHand();
        wchar_t made[MAX_PATH];
        const UINT number = ::GetTempFileNameW(folder.c_str(), prefix.c_str(), 0, made);
        if (number == 0) return ::GetLastError() == ERROR_ACCESS_DENIED ? tryOutByHand() : 0;
        ::DeleteFileW(made);
        return number;
    }

    // The path for a number, ending in ".tmp".
    std::wstring name(UINT number) const {
        wchar_t buffer[MAX_PATH];
        if (folder.size() <= kLongestFolder && ::GetTempFileNameW(folder.c_str(), prefix.c_str(), number, buffer) != 0)
            return buffer;
        ::swprintf_s(buffer, L"%x.tmp", number);
        const bool separated = !folder.empty() && files::isSeparator(folder.back());
        return folder + (separated ? L"" : L"\\") + prefix + buffer;
    }

private:
    // Does the same as GetTempFileNameW, in a folder of any length. A name is denied also while its deleted file is
    // still open, so a few denied names do not mean that files cannot be created in the folder.
    UINT tryOutByHand() const {
        int denied = 0;
        UINT number = ::GetTickCount() % kLastNumber + 1;
        for (UINT tries = 0; tries < kLastNumber; ++tries, number = after(number)) {
            const platform::FileHandle made = platform::openFile(toApiPath(name(number)), GENERIC_WRITE, /*share=*/0,
                                                                 CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE);
            if (made) return number;
            const DWORD error = ::GetLastError();
            const bool mayBePending = error == ERROR_ACCESS_DENIED && ++denied < kMostDenied;
            if (error != ERROR_FILE_EXISTS && !mayBePending) return 0;
        }
        return 0;
    }
};

// Whether all characters of the text are allowed in a file name.
bool fitsName(std::wstring_view text) {
    const auto forbidden = [](wchar_t c) {
        return c < L' ' || std::wstring_view(LR"(\/:*?"<>|)").find(c) != std::wstring_view::npos;
    };
    return std::none_of(text.begin(), text.end(), forbidden);
}

// The part of the prefix that GetTempFileNameW uses, without half of a surrogate pair.
std::wstring shortPrefix(std::wstring prefix) {
    if (prefix.size() <= kPrefixLength) return prefix;
    const bool cutsPair = IS_HIGH_SURROGATE(prefix[kPrefixLength - 1]) && IS_LOW_SURROGATE(prefix[kPrefixLength]);
    prefix.resize(cutsPair ? kPrefixLength - 1 : kPrefixLength);
    return prefix;
}

// The folder, or the one for temporary files; empty when it contains a NUL.
std::wstring folderFor(const std::string& utf8Folder) {
    std::wstring folder = platform::toWide(utf8Folder.empty() ? xoDirUtils::GetTempFolderUtf8() : utf8Folder);
    std::replace(folder.begin(), folder.end(), L'/', L'\\');
    return platform::hasNul(folder) ? std::wstring() : folder;
}

std::string freshName(const std::string& folder, const std::string& prefix, const std::wstring& extension) {
    const TemporaryFile file{folderFor(folder), shortPrefix(platform::toWide(prefix))};
    if (file.folder.empty() || !fitsName(file.prefix) || !fitsName(extension)) return {};
    UINT number = file.tryOut();
    if (number == 0) return {};

    // Enough for the rest of the numbers before they are all unused again, and for all of them once more.
    for (UINT tries = 0; tries < 2 * kLastNumber; ++tries) {
        number = numbers().give(number);
        std::wstring path = file.name(number);
        path.replace(path.size() - kSystemExtension, kSystemExtension, extension);
        if (isFree(path)) return platform::toUtf8(path);
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
