// Takes references apart. Whatever could reach outside the names of files is refused: devices, streams, wildcards.
#include "xref/reference.h"

#include <algorithm>

#include "text/ascii.h"
#include "text/fileNames.h"
#include "text/utf8Checks.h"

namespace xo::xref {
namespace {

bool beginsWithDrive(std::string_view path) { return path.size() >= 2 && text::isLetter(path[0]) && path[1] == ':'; }

// Decodes each "%" with two hexadecimal digits behind it; any other "%" is kept as it is.
std::string withoutPercents(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isCode = text[i] == '%' && i + 2 < text.size() && text::digitValue(text[i + 1]) < 16 &&
                            text::digitValue(text[i + 2]) < 16;
        decoded +=
            isCode ? static_cast<char>(text::digitValue(text[i + 1]) * 16 + text::digitValue(text[i + 2])) : text[i];
        if (isCode) i += 2;
    }
    return decoded;
}

// The path of a "file:" URL without that prefix: "///D:/a" is "D:/a", "//host/share" stays, "//localhost/D:/a" is
// "D:/a".
std::string pathOfUrl(std::string_view url) {
    std::string path = withoutPercents(url);
    std::replace(path.begin(), path.end(), '\\', '/');
    if (path.compare(0, 2, "//") == 0) {
        const std::string_view host = std::string_view(path).substr(2, path.find('/', 2) - 2);
        const bool isHere = host.empty() || text::equalIgnoringCase(host, "localhost");
        // Without the third slash ("file://D:/a") a drive takes the place of the host.
        if (isHere || beginsWithDrive(host)) path.erase(0, isHere ? 2 + host.size() : 2);
    }
    // "/D:/a": the slash in front of a drive belongs to the URL.
    if (beginsWithDrive(std::string_view(path).substr((std::min)(path.size(), std::size_t{1}))) && path[0] == '/')
        path.erase(0, 1);
    return path;
}

// The path of a reference, with "/" as the only separator.
std::string normalized(std::string_view text) {
    constexpr std::string_view kScheme = "file:";
    text = text::trimmed(text);
    if (text::equalIgnoringCase(text.substr(0, kScheme.size()), kScheme)) return pathOfUrl(text.substr(kScheme.size()));
    std::string path(text);
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

// A ":" in a name would open an alternate data stream, and a device name would open a device in any folder.
bool isName(std::string_view name) {
    return std::all_of(name.begin(), name.end(), text::mayStandInFileName) && !text::isDeviceName(name);
}

// Cuts the first name off, and the separators behind it.
std::string_view takeName(std::string_view& path) {
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(name.size());
    path.remove_prefix((std::min)(path.find_first_not_of('/'), path.size()));
    return name;
}

// Cuts the root off and sets the kind. False for a device and for a share without a name.
bool takeRoot(std::string_view& path, Reference& reference) {
    using Kind = Reference::Kind;
    if (path.substr(0, 2) == "//") {
        path.remove_prefix((std::min)(path.find_first_not_of('/'), path.size()));
        // "//./" and "//?/" begin paths of devices:
        // https://learn.microsoft.com/windows/win32/fileio/naming-a-file#win32-device-namespaces
        const std::string_view server = takeName(path), share = takeName(path);
        for (const std::string_view name : {server, share})
            if (name.empty() || name == "." || name == ".." || !isName(name)) return false;
        reference.kind = Kind::Share;
        reference.root.append("//").append(server).append("/").append(share).append("/");
        return true;
    }
    reference.kind = Kind::Relative;
    if (beginsWithDrive(path)) {
        // "D:a" is relative to the current folder of the drive, which says nothing about the document.
        reference.kind = path.substr(2, 1) == "/" ? Kind::Drive : Kind::Rooted;
        if (reference.kind == Kind::Drive) reference.root.append(path.substr(0, 2)).append("/");
        path.remove_prefix(2);
    } else if (path.substr(0, 1) == "/") {
        reference.kind = Kind::Rooted;
    }
    path.remove_prefix((std::min)(path.find_first_not_of('/'), path.size()));
    return true;
}

// Resolves "." and ".." without the file system. Above a root ".." has no effect, as in Windows; in a relative
// reference it is counted.
bool takeNames(std::string_view path, Reference& reference) {
    while (!path.empty()) {
        const std::string_view name = takeName(path);
        const bool isLast = path.empty();
        if (name == "." || name == "..") {
            if (isLast) return false;  // a folder
            if (name == ".") continue;
            if (!reference.names.empty()) {
                reference.names.pop_back();
            } else if (reference.kind == Reference::Kind::Relative) {
                ++reference.leavesFolders;
            }
        } else if (isName(name)) {
            reference.names.emplace_back(name);
        } else {
            return false;
        }
    }
    return !reference.names.empty();
}

}  // namespace

Reference readReference(std::string_view text) {
    const std::string path = normalized(text);
    Reference reference;
    std::string_view rest = path;
    // A separator at the end names a folder. The bytes are checked here, because decoding a URL can give any.
    if (path.empty() || path.back() == '/' || !text::isUtf8(path)) return {};
    if (!takeRoot(rest, reference) || !takeNames(rest, reference)) return {};
    return reference;
}

std::string joinNames(const std::vector<std::string>& names) {
    std::string path;
    for (const std::string& name : names) {
        if (!path.empty()) path += '/';
        path += name;
    }
    return path;
}

}  // namespace xo::xref
