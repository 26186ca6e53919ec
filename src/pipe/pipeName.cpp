// Names of pipes: https://learn.microsoft.com/windows/win32/ipc/pipe-names
#include "pipe/pipeName.h"

#include "platform/uuid.h"
#include "platform/wideText.h"
#include "text/ascii.h"
#include "text/utf8Checks.h"

namespace xo::pipe {
namespace {

constexpr std::wstring_view kPrefix = LR"(\\.\pipe\)";

// A full name has at most 256 units.
// https://learn.microsoft.com/windows/win32/api/namedpipeapi/nf-namedpipeapi-createnamedpipew
constexpr std::size_t kLongestBareName = 256 - kPrefix.size();

// Callers may pass a full name. The prefix may have slashes or backslashes, and upper or lower case.
std::string_view withoutPrefix(std::string_view name) {
    constexpr std::string_view kLowerPrefix = "//./pipe/";
    if (name.size() < kLowerPrefix.size()) return name;
    for (std::size_t i = 0; i != kLowerPrefix.size(); ++i)
        if ((name[i] == '\\' ? '/' : text::toLower(name[i])) != kLowerPrefix[i]) return name;
    return name.substr(kLowerPrefix.size());
}

}  // namespace

std::wstring fullName(std::string_view name) {
    constexpr std::string_view kForbidden("\\/\0", 3);
    const std::string_view bare = withoutPrefix(name);
    if (bare.empty() || bare.find_first_of(kForbidden) != std::string_view::npos || !text::isUtf8(bare)) return {};
    const std::wstring wide = platform::toWide(bare);
    return wide.size() <= kLongestBareName ? std::wstring(kPrefix) + wide : std::wstring();
}

std::wstring randomName() { return std::wstring(kPrefix) + L"xo-" + platform::toWide(platform::createUuid()); }

}  // namespace xo::pipe
