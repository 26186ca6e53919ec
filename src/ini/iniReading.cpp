#include <cstdint>
#include <string>

#include "files/fileBytes.h"
#include "ini/iniFormat.h"
#include "platform/wideText.h"
#include "text/ascii.h"
#include "text/blocks.h"
#include "text/numberText.h"
#include "variant/pathKeys.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoLog.h"

namespace xo {
namespace ini {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool isEnclosed(std::string_view text, char first, char last) {
    return text.size() >= 2 && text.front() == first && text.back() == last;
}

// The text without its first and last character.
std::string_view inner(std::string_view text) { return text.substr(1, text.size() - 2); }

// Makes one character of each backslash and code in the text, from left to right.
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

// One kind after the other, the backslash last: what one replacement leaves can make a match for a later one.
std::string unescape(std::string_view escaped) {
    std::string text(escaped);
    replaceEscape(text, '"', '"');
    replaceEscape(text, 't', '\t');
    replaceEscape(text, 'r', '\r');
    replaceEscape(text, 'n', '\n');
    replaceEscape(text, '\\', '\\');
    return text;
}

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

xoVariant readValue(std::string_view text, bool hasEscapes) {
    if (isEnclosed(text, '"', '"')) text = inner(text);
    return hasEscapes ? typedValue(unescape(text)) : typedValue(text);
}

// The first line of a text, and what one look at its bytes tells.
struct Line {
    explicit Line(std::string_view from) {
        bool isComplete = false;
        while (!isComplete && from.size() - end >= kBlock) isComplete = scanBlock(from.data() + end);
        for (; end != from.size() && from[end] != '\n'; ++end) {
            if (from[end] == '=' && equals == std::string_view::npos) equals = end;
            if (from[end] == '\\') hasBackslash = true;
        }
        whole = from.substr(0, end);
        trimmed = text::trimmed(whole);
    }

    // Only where there is an equals sign.
    std::string_view key() const { return text::trimmed(whole.substr(0, equals)); }
    std::string_view value() const { return text::trimmed(whole.substr(equals + 1)); }

    std::size_t end = 0;
    std::size_t equals = std::string_view::npos;
    bool hasBackslash = false;
    std::string_view whole, trimmed;

private:
    static constexpr std::size_t kBlock = text::kBlock;

    // Moves end over the block, or to the line end in it; returns whether there is one.
    bool scanBlock(const char* at) {
        const __m128i block = text::loadBlock(at);
        const unsigned newlines = text::maskOf(block, '\n');
        const unsigned inLine = (newlines & (0u - newlines)) - 1;  // the bits below the lowest one, or all
        const unsigned signs = text::maskOf(block, '=') & inLine;
        if (signs != 0 && equals == std::string_view::npos) equals = end + text::lowestBit(signs);
        if ((text::maskOf(block, '\\') & inLine) != 0) hasBackslash = true;
        end += newlines != 0 ? text::lowestBit(newlines) : kBlock;
        return newlines != 0;
    }
};

class IniReader {
public:
    explicit IniReader(Map& map) : mTop(map), mSection(&map) {}

    void read(std::string_view text) {
        if (text.substr(0, kUtf8Mark.size()) == kUtf8Mark) text.remove_prefix(kUtf8Mark.size());
        for (std::int64_t number = 0; !text.empty(); ++number) {
            const Line line(text);
            readLine(line, number);
            if (line.end == text.size()) return;
            text.remove_prefix(line.end + 1);
        }
    }

private:
    void readLine(const Line& line, std::int64_t number) {
        const std::string_view text = line.trimmed;
        if (isEnclosed(text, '[', ']')) return enterSection(inner(text));
        if (text.empty() || text.front() == ';') return;
        if (line.equals == std::string_view::npos) return report("Invalid line (", number, text);
        const std::string_view key = line.key();
        if (key.empty()) return report("Invalid key at line (", number, text);
        if (!insert(key, line)) report("Duplicated key at line (", number, text);
    }

    void enterSection(std::string_view name) {
        mName = name;
        mSection = name == kTopSection ? &mTop : nullptr;
    }

    // The maps of a section come into being with its first key. They stay where they are while the file is read: only a
    // value that is no map is ever replaced.
    Map& section() {
        if (mSection == nullptr) mSection = &variant::createPath(mTop, mName, kIniSeparator).editMap();
        return *mSection;
    }

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

void readIni(std::string_view text, Map& map) { IniReader(map).read(text); }

}  // namespace ini

bool LoadIniFile(const std::string& path, xoVariant::xoVariantMapImpl& map) {
    files::FileBytes file;
    if (file.read(platform::toApiPath(path)) != files::FileBytes::Complete) return false;
    ini::readIni(file.view(), map);
    return true;
}

}  // namespace xo
