#include <algorithm>
#include <string>

#include "files/fileBytes.h"
#include "files/fileReplacement.h"
#include "ini/iniFormat.h"
#include "variant/pathKeys.h"
#include "variant/textForm.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoLog.h"

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

bool save(const std::string& path, const Map& map) {
    files::FileReplacement file;
    if (!file.begin(path)) return false;
    std::string bytes;
    const bool isComplete = appendSections(bytes, map);
    return file.commit(bytes) && isComplete;
}

bool saveOver(const std::string& path, const files::FileBytes& file, const Map& map) {
    Map loaded;
    readIni(file.view(), loaded);
    Map result;
    overlay(result, loaded);
    overlay(result, map);
    return save(path, result);
}

}  // namespace
}  // namespace ini

bool SaveIniFile(const std::string& path, const xoVariant::xoVariantMapImpl& map, bool merge) {
    if (!merge) return ini::save(path, map);
    files::FileBytes file;
    const auto state = file.read(path);
    if (state == files::FileBytes::Missing) return ini::save(path, map);
    if (state == files::FileBytes::Complete) return ini::saveOver(path, file, map);
    xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr) << "Fail to load " << std::string_view(path);
    return false;
}

}  // namespace xo
