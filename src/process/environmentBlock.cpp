// Environment blocks: https://learn.microsoft.com/windows/win32/procthread/environment-variables
#include "process/environmentBlock.h"

#include <map>

#include "platform/ordinalText.h"
#include "platform/wideText.h"
#include "text/utf8Checks.h"

namespace xo::process {
namespace {

// By UTF-16 unit, without regard to case or locale, the order that Windows requires of an environment block.
// https://learn.microsoft.com/windows/win32/procthread/changing-environment-variables
struct LessName {
    bool operator()(const std::wstring& a, const std::wstring& b) const {
        return platform::compareIgnoringCase(a, b) == CSTR_LESS_THAN;
    }
};

bool isEntry(const std::string& text) {
    return text.find('=', 1) != std::string::npos && text.find('\0') == std::string::npos && text::isUtf8(text);
}

}  // namespace

std::wstring makeEnvironmentBlock(const std::vector<std::string>& entries) {
    std::map<std::wstring, std::wstring, LessName> byName;
    for (const std::string& text : entries) {
        if (!isEntry(text)) return {};
        const std::wstring entry = platform::toWide(text);
        byName[entry.substr(0, entry.find(L'=', 1))] = entry;
    }
    std::wstring block;
    for (const auto& [name, entry] : byName) block.append(entry).push_back(L'\0');
    block.push_back(L'\0');
    return block;
}

}  // namespace xo::process
