// Searches programs by name, and converts the output of console programs.
#include <algorithm>
#include <iterator>

#include "platform/ordinalText.h"
#include "platform/pathSyntax.h"
#include "platform/wideText.h"
#include "process/commandLine.h"
#include "process/programFile.h"
#include "text/utf8Checks.h"
#include "xoSystem/xoProcess.h"

namespace xo {
namespace {

// Empty when there is no such variable.
std::wstring environmentVariable(const wchar_t* name) {
    return platform::readWide(
        [name](wchar_t* buffer, DWORD size) { return ::GetEnvironmentVariableW(name, buffer, size); });
}

// The entries of a list such as PATH. A folder whose name contains a semicolon is in quotes, which are removed.
std::vector<std::wstring> entriesOf(const std::wstring& list) {
    std::vector<std::wstring> entries(1);
    bool isQuoted = false;
    for (const wchar_t c : list) {
        if (c == L'"')
            isQuoted = !isQuoted;
        else if (c == L';' && !isQuoted)
            entries.emplace_back();
        else
            entries.back() += c;
    }
    return entries;
}

// In their order of preference. Without PATHEXT the extensions that the command interpreter has always known.
std::vector<std::wstring> programExtensions() {
    const std::wstring list = environmentVariable(L"PATHEXT");
    std::vector<std::wstring> extensions = entriesOf(list.empty() ? L".COM;.EXE;.BAT;.CMD" : list);
    // An empty entry would find files without an extension, which are no programs.
    extensions.erase(std::remove(extensions.begin(), extensions.end(), std::wstring()), extensions.end());
    return extensions;
}

// The extensions to append in turn. Only an empty one if the name ends with one of PATHEXT.
std::vector<std::wstring> extensionsFor(const std::wstring& name) {
    std::vector<std::wstring> extensions = programExtensions();
    const std::size_t dot = name.rfind(L'.');
    if (dot == std::wstring::npos) return extensions;
    for (const std::wstring& extension : extensions)
        if (platform::equalsIgnoringCase(name.substr(dot), extension)) return {L""};
    return extensions;
}

// Whether these bytes are a character of UTF-8 without its end, so that more bytes complete it. Any first byte may be
// followed by 0x80 or by 0xA0, and any later one by both.
bool beginsCharacter(std::string_view bytes) {
    for (const char next : {'\x80', '\xA0'})
        for (std::size_t missing = 1; missing != 4; ++missing)
            if (text::isUtf8(std::string(bytes).append(missing, next))) return true;
    return false;
}

bool isAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The size of the whole characters of an OEM text, which begins with a character. The bytes of a double-byte code page
// can only be told apart from the beginning on.
std::size_t wholeCharacters(std::string_view text) {
    CPINFO page{};
    if (!::GetCPInfo(CP_OEMCP, &page) || page.MaxCharSize != 2) return text.size();
    bool isLead[256] = {};
    for (std::size_t i = 0; i + 1 < std::size(page.LeadByte) && page.LeadByte[i] != 0; i += 2)
        for (std::size_t byte = page.LeadByte[i]; byte <= page.LeadByte[i + 1]; ++byte) isLead[byte] = true;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t size = isLead[static_cast<unsigned char>(text[at])] ? 2 : 1;
        if (size > text.size() - at) break;
        at += size;
    }
    return at;
}

}  // namespace

std::string xoProcess::FindProgramUtf8(const std::string& name) {
    if (name.empty() || !process::isPlainText(name) || name.find_first_of("\\/:") != std::string::npos) return {};
    const std::wstring wide = platform::toWide(name);
    const std::vector<std::wstring> extensions = extensionsFor(wide);
    for (const std::wstring& folder : entriesOf(environmentVariable(L"PATH"))) {
        // The current folder or drive, on which "bin", "C:bin" and "\bin" depend, must not decide which program runs.
        // Two separators alone name no folder. Also passes over empty entries.
        if (folder.size() < 3 || !platform::isAbsolutePath(folder)) continue;
        for (const std::wstring& extension : extensions) {
            const std::string path =
                platform::toUtf8(std::wstring(folder).append(L"\\").append(wide).append(extension));
            if (process::isFile(path)) return xoDirUtils::GetAbsolutePathUtf8(path);
        }
    }
    return {};
}

std::string xoProcess::OutputToUtf8(const std::string& bytes) {
    // Programs that write UTF-8 exist too. Text of another code page is hardly ever valid UTF-8 unless it is ASCII.
    const std::string_view prefix = std::string_view(bytes).substr(0, text::utf8Prefix(bytes));
    if (prefix.size() == bytes.size()) return bytes;
    // An output that a limit has cut may end inside a character.
    const std::string_view broken = std::string_view(bytes).substr(prefix.size());
    if (broken.size() < 4 && !isAscii(prefix) && beginsCharacter(broken)) return std::string(prefix) + "\xEF\xBF\xBD";
    // In pieces, because the system takes at most 2 GB in one call, and the wide text of all needs twice the memory.
    // They end behind a line feed, which is no part of a character in any OEM code page, or behind a whole character.
    constexpr std::size_t kPiece = 1 << 20;
    std::string utf8;
    for (std::string_view rest = bytes; !rest.empty();) {
        std::string_view piece = rest.substr(0, kPiece);
        if (piece.size() < rest.size()) piece = piece.substr(0, piece.rfind('\n') + 1);  // npos + 1 is 0
        if (piece.empty()) piece = rest.substr(0, wholeCharacters(rest.substr(0, kPiece)));
        utf8 += platform::fromCodePage(CP_OEMCP, piece);
        rest.remove_prefix(piece.size());
    }
    return utf8;
}

}  // namespace xo
