// Reads an INI file's text into a map. A bad line is logged and skipped; the lines behind it are read.
#include <cstdint>
#include <string>

#include "ini/iniFormat.h"
#include "ini/iniLine.h"
#include "text/ascii.h"
#include "text/numberText.h"
#include "variant/pathKeys.h"
#include "xoSystem/xoLog.h"

namespace xo::ini {
namespace {

// Replaces each backslash that the code follows, and the code, by the meaning; from left to right.
// In place and in one pass, since the result is never longer. A backslash at the end of the text stays.
void replaceEscape(std::string& text, char code, char meaning) {
    std::size_t kept = text.find('\\');
    if (kept == std::string::npos) return;
    for (std::size_t at = kept; at < text.size(); ++at, ++kept) {
        const bool isEscape = text[at] == '\\' && at + 1 < text.size() && text[at + 1] == code;
        text[kept] = isEscape ? meaning : text[at];
        if (isEscape) ++at;
    }
    text.resize(kept);
}

// One kind after the other, the doubled backslash last. The order is part of the format: the result of one replacement
// can match a later one, so that two backslashes and an n become a backslash and a line feed.
std::string unescape(std::string_view escaped) {
    std::string text(escaped);
    replaceEscape(text, '"', '"');
    replaceEscape(text, 't', '\t');
    replaceEscape(text, 'r', '\r');
    replaceEscape(text, 'n', '\n');
    replaceEscape(text, '\\', '\\');
    return text;
}

// The format has no types, so the text decides. An empty text would be read as the number 0, so it is tested
// before the numbers. Quotes do not make a number a text.
xoVariant typedValue(std::string_view text) {
    if (text::equalIgnoringCase(text, "true")) return true;
    if (text::equalIgnoringCase(text, "false")) return false;
    if (text.empty()) return text;
    std::int64_t integer = 0;
    if (text::parseInteger(text, integer)) return integer;
    double real = 0.0;
    if (text::parseReal(text, real)) return real;
    return text;
}

class IniReader {
public:
    explicit IniReader(Map& map) : mTop(map), mSection(&map) {}

    void read(std::string_view text) {
        if (text.substr(0, kUtf8Mark.size()) == kUtf8Mark) text.remove_prefix(kUtf8Mark.size());
        for (std::int64_t number = 0; !text.empty(); ++number) {  // messages count lines from 0
            const Line line(text);
            readLine(line, number);
            // The last line may have no line feed.
            if (line.end == text.size()) return;
            text.remove_prefix(line.end + 1);
        }
    }

private:
    void readLine(const Line& line, std::int64_t number) {
        switch (line.kind()) {
            case Line::Skipped: return;
            case Line::Section: return enterSection(line.sectionName());
            case Line::Invalid: return report("Invalid line (", number, line.trimmed);
            case Line::Key: break;
        }
        const std::string_view key = line.key();
        if (key.empty()) return report("Invalid key at line (", number, line.trimmed);
        if (!insert(key, line)) report("Duplicated key at line (", number, line.trimmed);
    }

    void enterSection(std::string_view name) {
        mName = name;
        mSection = name == kTopSection ? &mTop : nullptr;
    }

    // A section's maps are created with its first key. The pointer stays valid while the file is read, because only
    // values that are not maps are replaced.
    Map& section() {
        if (mSection == nullptr) mSection = &variant::createPath(mTop, mName, kIniSeparator).editMap();
        return *mSection;
    }

    // The first line of a key counts: for a later one the result is false. createPath finds or makes the value and says
    // which, so that the path is walked once.
    bool insert(std::string_view path, const Line& line) {
        bool isNew = false;
        xoVariant& place = variant::createPath(section(), path, kIniSeparator, &isNew);
        if (isNew) place = readValue(line.value(), line.hasBackslash);
        return isNew;
    }

    static void report(const char* what, std::int64_t number, std::string_view line) {
        xoLogObject(xoLogWarning, nullptr, xoLog::editPtr(), nullptr)
            << what << number << std::string_view(") ") << line << std::string_view(" in Ini file");
    }

    Map& mTop;
    std::string_view mName;  // of the section
    Map* mSection;           // null until the section's first key
};

}  // namespace

xoVariant readValue(std::string_view text, bool hasEscapes) {
    if (isEnclosed(text, '"', '"')) text = inner(text);
    return hasEscapes ? typedValue(unescape(text)) : typedValue(text);
}

void readIni(std::string_view text, Map& map) { IniReader(map).read(text); }

}  // namespace xo::ini
