#include <algorithm>
#include <string>

#include "files/fileBytes.h"
#include "files/fileReplacement.h"
#include "ini/iniFormat.h"
#include "platform/wideText.h"
#include "variant/pathKeys.h"
#include "variant/textForm.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoSystemError.h"

namespace xo {
namespace ini {
namespace {

const char* escapeOf(char c) {
    switch (c) {
        case '\\': return "\\\\";
        case '\n': return "\\n";
        case '\r': return "\\r";
        case '\t': return "\\t";
        case '"': return "\\\"";
        default: return nullptr;
    }
}

void appendEscaped(std::string& out, const std::string& text) {
    const bool isQuoted = text.find('"') != std::string::npos;
    if (isQuoted) out += '"';
    for (const char c : text) {
        if (const char* const escape = escapeOf(c)) {
            out += escape;
        } else {
            out += c;
        }
    }
    if (isQuoted) out += '"';
}

bool appendKeyLine(std::string& out, const std::string& key, const xoVariant& value) {
    const bool isText = value.getType() == xoVariant::STRING;
    if (!isText && !value.isNumeric() && value.getType() != xoVariant::BOOL) {
        xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr)
            << "saveVariantToIni unsupported variant type (" << static_cast<int>(value.getType()) << ") for key "
            << std::string_view(key);
        return false;
    }
    out += key;
    out += '=';
    if (isText) {
        appendEscaped(out, value.getString());
    } else {
        variant::appendText(out, value);
    }
    out += '\n';
    return true;
}

bool appendKeyLines(std::string& out, const Map& map) {
    for (const auto& [key, value] : map)
        if (!appendKeyLine(out, key, value)) return false;
    return true;
}

bool appendLeaves(std::string& out, const Map& map) {
    const auto isInner = [](const Map::value_type& entry) { return variant::isContainer(entry.second); };
    if (std::none_of(map.begin(), map.end(), isInner)) return appendKeyLines(out, map);  // is flat already
    Map leaves;
    map.toFlattenMap(leaves, kIniSeparator);
    return appendKeyLines(out, leaves);
}

bool appendTopSection(std::string& out, const Map& map) {
    out += "[General]\n";
    for (const auto& [key, value] : map) {
        const bool isMap = value.getType() == xoVariant::MAP;
        if (isMap && key == kTopSection && !appendLeaves(out, value.getMap())) return false;
        if (!isMap && !appendKeyLine(out, key, value)) return false;
    }
    return true;
}

// Stops at the first value that cannot be written; what stands before it is in the text.
bool appendSections(std::string& out, const Map& map) {
    if (!appendTopSection(out, map)) return false;
    for (const auto& [key, value] : map) {
        if (value.getType() != xoVariant::MAP || key == kTopSection) continue;
        out += "\n[";
        out += key;
        out += "]\n";
        if (!appendLeaves(out, value.getMap())) return false;
    }
    return true;
}

// Puts each leaf of the map in its place in the result, over what is there. Leaves below General belong to the top.
void overlay(Map& result, const Map& map) {
    const std::string top = std::string(kTopSection) + kIniSeparator;
    Map leaves;
    map.toFlattenMap(leaves, kIniSeparator);
    for (auto& [path, value] : leaves) {
        std::string_view place = path;
        while (place.substr(0, top.size()) == top) place.remove_prefix(top.size());
        variant::createPath(result, place, kIniSeparator) = std::move(value);
    }
}

bool hasTopSection(const Map& map) {
    const auto found = map.find(kTopSection);
    return found != map.end() && found->second.getType() == xoVariant::MAP;
}

// The path is resolved once, so that all steps reach one file even when another thread changes the working folder.
class Saving {
public:
    explicit Saving(const std::string& path)
        : mPath(path), mFullPath(platform::toExtendedPath(platform::toWide(path))) {}

    bool save(const Map& map) {
        files::FileReplacement file(mFullPath);
        if (const DWORD error = file.begin()) return failed(error);
        std::string bytes;
        const bool isComplete = appendSections(bytes, map);
        if (const DWORD error = file.commit(bytes)) return failed(error);
        return isComplete;
    }

    bool merge(const Map& map) {
        files::FileBytes file;
        switch (file.read(mFullPath)) {
            case files::FileBytes::Complete: return saveOver(file.view(), map);
            case files::FileBytes::Missing: return hasTopSection(map) ? saveOver({}, map) : save(map);
            default: break;
        }
        xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr) << "Fail to load " << std::string_view(mPath);
        return false;
    }

private:
    bool saveOver(std::string_view text, const Map& map) {
        Map loaded;
        readIni(text, loaded);
        Map result;
        overlay(result, loaded);
        overlay(result, map);
        return save(result);
    }

    bool failed(DWORD error) const {
        xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr)
            << "Fail to save " << std::string_view(mPath) << ": " << std::string_view(SystemError(error).toString());
        return false;
    }

    const std::string& mPath;
    std::wstring mFullPath;
};

}  // namespace
}  // namespace ini

bool SaveIniFile(const std::string& path, const xoVariant::xoVariantMapImpl& map, bool merge) {
    ini::Saving saving(path);
    return merge ? saving.merge(map) : saving.save(map);
}

}  // namespace xo
