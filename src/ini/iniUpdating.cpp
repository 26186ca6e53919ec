// Changes values in an INI file's text and keeps everything else: comments, order, blank lines and line ends.
#include <map>
#include <utility>

#include "ini/iniFormat.h"
#include "ini/iniLine.h"
#include "xoSystem/xoLog.h"

namespace xo::ini {
namespace {

struct GivenValue {
    xoVariant value;
    std::string text;      // as it is written
    bool isThere = false;  // whether the file has a line with the path
};

// Where bytes of the old text are replaced: from first to second. Pairs compare so that an insertion comes before the
// removal of the line that follows it.
using Place = std::pair<std::size_t, std::size_t>;

// The separator in front of a place in a path, or npos.
std::size_t separatorBefore(std::string_view path, std::size_t place) {
    return place == 0 ? std::string_view::npos : path.rfind(kIniSeparator, place - 1);
}

// The end of the file's first line, by which new lines end.
std::string_view lineEndOf(std::string_view text) {
    const std::size_t feed = text.find('\n');
    return feed != std::string_view::npos && feed != 0 && text[feed - 1] == '\r' ? "\r\n" : "\n";
}

// Whether the text is read as one line with this key. That is false for a key that has an equals sign or a line feed in
// it, white space around it, or a first character that makes the line a comment or a section.
bool isKeyLine(std::string_view text, std::string_view key) {
    const Line line(text);
    return line.end == text.size() && line.kind() == Line::Key && line.key() == key && !key.empty();
}

// The order of lines matters only between lines of one key, of which the first one counts. A line that gives a value to
// a path where another line makes a map has no effect, whichever of them comes first. So a line is changed at its
// place, a new one may be anywhere in its section, and where a value replaces a map, the lines of the map's content are
// removed.
class Updating {
public:
    explicit Updating(std::string_view text)
        : mText(text),
          mStart(text.substr(0, kUtf8Mark.size()) == kUtf8Mark ? kUtf8Mark.size() : 0),
          mLineEnd(lineEndOf(text)) {}

    // Takes the values to be written. False if one cannot be written.
    bool give(const Map& map) {
        // The overlay moves the leaves of General to the top, where the lines of the file have their paths.
        Map values, leaves;
        overlay(values, map);
        values.toFlattenMap(leaves, kIniSeparator);
        for (const auto& [path, value] : leaves) {
            GivenValue& given = mGiven[path];
            given.value = value;
            if (!appendValue(given.text, path, value)) return false;
        }
        return true;
    }

    // Call it once, after give. False, with updated unchanged, if a line would not be read as its key.
    bool update(std::string& updated) {
        if (!changeLines() || !addLines()) return false;
        updated = edited();
        addSections(updated);
        return true;
    }

private:
    // Goes over the lines of the text and stores the edits of those that have a given path or are below one.
    bool changeLines() {
        std::string prefix;  // of the section: the beginning of its keys' paths
        for (std::size_t begin = mStart; begin < mText.size();) {
            const std::string_view rest = mText.substr(begin);
            const Line line(rest);
            const std::size_t next = begin + line.next(rest);
            const Line::Kind kind = line.kind();
            if (kind == Line::Section) prefix = prefixOf(line.sectionName());
            if (kind != Line::Skipped) mSectionEnds[prefix] = next;
            if (kind == Line::Key && !line.key().empty()) {
                if (!visit(line, begin, next, prefix + std::string(line.key()))) return false;
            }
            begin = next;
        }
        return true;
    }

    static std::string prefixOf(std::string_view section) {
        return section == kTopSection ? std::string() : std::string(section) + kIniSeparator;
    }

    bool visit(const Line& line, std::size_t begin, std::size_t next, const std::string& path) {
        const auto found = mGiven.find(path);
        if (found == mGiven.end()) {
            // The line would make a map where the given value is to be; it is removed.
            if (isBelowGiven(path)) mEdits.insert({{begin, next}, {}});
            return true;
        }
        // A later line of the same key has no effect on reading, so it stays as it is.
        if (found->second.isThere) return true;
        found->second.isThere = true;
        return change(line, begin, found->first, found->second);
    }

    bool isBelowGiven(std::string_view path) const {
        std::size_t end = path.size();
        while ((end = separatorBefore(path, end)) != std::string_view::npos)
            if (mGiven.find(path.substr(0, end)) != mGiven.end()) return true;
        return false;
    }

    // Changes only the bytes of the value, and none if the line has the value already, in any spelling.
    bool change(const Line& line, std::size_t begin, const std::string& path, const GivenValue& given) {
        const std::string_view old = line.value();
        const xoVariant value = readValue(old, line.hasBackslash);
        // The second comparison covers what reading alters: the text of a real is rounded, a string of digits is read
        // as a number, and a string loses the white space at its ends.
        if (value == given.value || value == readValue(text::trimmed(given.text), true)) return true;

        std::size_t at = line.equals + 1;
        if (old.empty()) {
            // Behind the blanks that follow the equals sign, but in front of a carriage return.
            while (at != line.end && (line.whole[at] == ' ' || line.whole[at] == '\t')) ++at;
        } else {
            at = static_cast<std::size_t>(old.data() - line.whole.data());
        }
        std::string changed(line.whole);
        changed.replace(at, old.size(), given.text);
        // A value may turn the line into something else: a key that begins with "[" and a value that ends with "]" are
        // a section.
        if (!isKeyLine(changed, line.key())) return refuse(path);
        mEdits.insert({{begin + at, begin + at + old.size()}, given.text});
        return true;
    }

    bool addLines() {
        for (const auto& [path, given] : mGiven) {
            if (!given.isThere && !add(path, given)) return false;
        }
        return true;
    }

    // Adds a line to a section of the file if one fits, else to a new section that is named after the first key of the
    // path.
    bool add(const std::string& path, const GivenValue& given) {
        const auto end = sectionEndFor(path);
        const std::size_t keyBegin = end != mSectionEnds.end() ? end->first.size() : path.find(kIniSeparator) + 1;
        const std::string key = path.substr(keyBegin);  // npos + 1 is 0: a key of the top level
        std::string line = key + '=' + given.text;
        if (!isKeyLine(line, key)) return refuse(path);
        line += mLineEnd;
        if (end != mSectionEnds.end()) {
            mEdits.emplace(Place(end->second, end->second), std::move(line));
            return true;
        }
        const std::string header =
            headerOf(keyBegin == 0 ? kTopSection : std::string_view(path).substr(0, keyBegin - 1));
        const Line headerLine(header);
        if (headerLine.end != header.size()) return refuse(path);  // a line feed in the name
        (keyBegin == 0 ? mNewTop : mNewSections[header]) += line;
        return true;
    }

    static std::string headerOf(std::string_view name) { return std::string("[").append(name) += ']'; }

    // The end of the section of the file with the most keys of the path in its name.
    std::map<std::string, std::size_t, std::less<>>::const_iterator sectionEndFor(std::string_view path) const {
        std::size_t end = separatorBefore(path, path.size());
        if (end == std::string_view::npos) return mSectionEnds.find("");
        for (; end != std::string_view::npos; end = separatorBefore(path, end)) {
            const auto found = mSectionEnds.find(path.substr(0, end + 1));
            if (found != mSectionEnds.end()) return found;
        }
        return mSectionEnds.end();
    }

    // The text with all edits. They do not overlap, and the multimap has them in the order of their places.
    std::string edited() const {
        std::string out;
        std::size_t at = 0;
        for (const auto& [place, text] : mEdits) {
            out.append(mText, at, place.first - at);
            const bool isLine = !text.empty() && text.back() == '\n';  // a value has its line feeds escaped
            // The file's last line may have no line end, and a new line behind it needs one.
            if (isLine && place.first == mText.size()) endLine(out);
            out += text;
            at = place.second;
        }
        return out.append(mText, at);
    }

    void addSections(std::string& out) const {
        if (!mNewTop.empty()) addSection(out, headerOf(kTopSection), mNewTop);
        for (const auto& [header, lines] : mNewSections) addSection(out, header, lines);
    }

    void addSection(std::string& out, const std::string& header, const std::string& lines) const {
        endLine(out);
        if (out.size() > mStart) out += mLineEnd;
        out.append(header).append(mLineEnd).append(lines);
    }

    // Completes the last line of the text, except directly behind the UTF-8 mark.
    void endLine(std::string& out) const {
        if (out.size() > mStart && out.back() != '\n') out += mLineEnd;
    }

    static bool refuse(const std::string& path) {
        xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr)
            << "Key " << std::string_view(path) << " cannot be written to an Ini file";
        return false;
    }

    std::string_view mText;
    std::size_t mStart;  // behind the UTF-8 mark
    std::string_view mLineEnd;
    std::map<std::string, GivenValue, std::less<>> mGiven;  // by their paths
    // By the prefix of a section's paths: the place behind the last line, of the last section with it, that is neither
    // empty nor a comment.
    std::map<std::string, std::size_t, std::less<>> mSectionEnds;
    std::multimap<Place, std::string> mEdits;  // the new bytes of each place; several lines may be added at one place
    std::string mNewTop;                       // the lines of a new top section
    std::map<std::string, std::string> mNewSections;  // the lines of others, by header
};

}  // namespace

bool updateIni(std::string_view text, const Map& map, std::string& updated) {
    Updating updating(text);
    return updating.give(map) && updating.update(updated);
}

}  // namespace xo::ini
