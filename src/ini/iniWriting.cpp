// Writes a map as an INI file's text. Keys and names of sections are written as they are: the format has no escapes for
// them, so that some do not come back as the same keys.
#include <algorithm>
#include <string>

#include "ini/iniFormat.h"
#include "variant/pathKeys.h"
#include "variant/textForm.h"
#include "xoSystem/xoLog.h"

namespace xo::ini {
namespace {

// Null for a character that is written as it is.
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

// A text with a quotation mark is quoted as a whole, so that the reader removes these quotes and not the text's own.
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

// On failure nothing is appended, so that the text so far consists of whole lines.
bool appendKeyLine(std::string& out, const std::string& key, const xoVariant& value) {
    const std::size_t size = out.size();
    out += key;
    out += '=';
    if (appendValue(out, key, value)) {
        out += '\n';
        return true;
    }
    out.resize(size);
    return false;
}

bool appendKeyLines(std::string& out, const Map& map) {
    for (const auto& [key, value] : map)
        if (!appendKeyLine(out, key, value)) return false;
    return true;
}

// The lines of one section: a map inside it is written as keys with "/".
bool appendLeaves(std::string& out, const Map& map) {
    const auto isInner = [](const Map::value_type& entry) { return variant::isContainer(entry.second); };
    // Most sections are flat already and need no copy.
    if (std::none_of(map.begin(), map.end(), isInner)) return appendKeyLines(out, map);
    Map leaves;
    map.toFlattenMap(leaves, kIniSeparator);
    return appendKeyLines(out, leaves);
}

// Values of the top level and those of a map "General" share one section, because the reader merges them.
bool appendTopSection(std::string& out, const Map& map) {
    out += "[General]\n";  // always, even if it stays empty
    for (const auto& [key, value] : map) {
        const bool isMap = value.getType() == xoVariant::MAP;
        if (isMap && key == kTopSection && !appendLeaves(out, value.getMap())) return false;
        if (!isMap && !appendKeyLine(out, key, value)) return false;
    }
    return true;
}

}  // namespace

bool appendValue(std::string& out, std::string_view key, const xoVariant& value) {
    if (value.getType() == xoVariant::STRING) {
        appendEscaped(out, value.getString());
    } else if (value.isNumeric() || value.getType() == xoVariant::BOOL) {
        variant::appendText(out, value);  // of a REAL six significant digits, so the value may be rounded
    } else {
        xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr)
            << "saveVariantToIni unsupported variant type (" << static_cast<int>(value.getType()) << ") for key "
            << key;
        return false;
    }
    return true;
}

bool appendSections(std::string& out, const Map& map) {
    if (!appendTopSection(out, map)) return false;
    for (const auto& [key, value] : map) {
        if (value.getType() != xoVariant::MAP || key == kTopSection) continue;  // written by appendTopSection
        out += "\n[";
        out += key;
        out += "]\n";
        if (!appendLeaves(out, value.getMap())) return false;
    }
    return true;
}

void overlay(Map& result, const Map& map) {
    const std::string top = std::string(kTopSection) + kIniSeparator;
    Map leaves;
    map.toFlattenMap(leaves, kIniSeparator);
    for (auto& [path, value] : leaves) {
        std::string_view place = path;
        // Repeatedly, since a map "General" may contain another one of that name.
        while (place.substr(0, top.size()) == top) place.remove_prefix(top.size());
        variant::createPath(result, place, kIniSeparator) = std::move(value);
    }
}

}  // namespace xo::ini
