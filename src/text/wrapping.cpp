// Wraps a text by clusters and their widths.
#include "text/wrapping.h"

#include "text/displayWidth.h"

namespace xo::text {
namespace {

bool isBlank(char c) { return c == ' '; }

// A letter, a digit or a part of any character beyond ASCII.
bool isWordByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || ((byte | 0x20) >= 'a' && (byte | 0x20) <= 'z');
}

// One line of the result, read cluster by cluster until the next one would not fit. It ends at the last place where it
// may be broken; a word that is longer than a line is divided.
class Line {
public:
    Line(const char* begin, const char* end, std::size_t columns) : mBegin(begin), mEnd(end), mColumns(columns) {}

    // Appends the piece, and returns where the next line begins.
    const char* take(std::vector<Piece>& pieces) {
        const char* at = mBegin;
        std::size_t width = 0;
        unsigned before = 0;  // the width of the last cluster
        while (at != mEnd) {
            if (isBlank(*at)) {
                const char* behind = at;
                while (behind != mEnd && isBlank(*behind)) ++behind;
                if (width != 0) allowBreak(at, width, behind);  // but not in front of the blanks that indent a line
                const auto blanks = static_cast<std::size_t>(behind - at);
                if (width + blanks <= mColumns) {
                    width += blanks;
                    before = 1;
                    at = behind;
                    continue;
                }
                if (width != 0) break;
            }
            const Cluster cluster = nextCluster(at, mEnd);
            // Between two wide characters a line may break: East Asian texts have no blanks between words.
            if (before == 2 && cluster.width == 2) allowBreak(at, width, at);
            if (width + cluster.width > mColumns) break;
            width += cluster.width;
            before = cluster.width;
            if (breaksBehind(at)) allowBreak(cluster.end, width, cluster.end);
            at = cluster.end;
        }
        if (at == mEnd) return put(pieces, mEnd, width, mEnd);
        if (mBreak) return put(pieces, mBreak, mBreakWidth, mNext);
        if (at != mBegin) return put(pieces, at, width, at);
        pieces.push_back({"?", 1});  // a cluster of two columns in a line of one
        return nextCluster(at, mEnd).end;
    }

private:
    // A hyphen allows a break only behind a word, so that "-1" and "--option" stay whole.
    bool breaksBehind(const char* at) const {
        return *at == '/' || *at == '\\' || (*at == '-' && at != mBegin && isWordByte(at[-1]));
    }

    void allowBreak(const char* pieceEnd, std::size_t width, const char* next) {
        mBreak = pieceEnd;
        mBreakWidth = width;
        mNext = next;
    }

    const char* put(std::vector<Piece>& pieces, const char* pieceEnd, std::size_t width, const char* next) const {
        pieces.push_back({{mBegin, static_cast<std::size_t>(pieceEnd - mBegin)}, width});
        return next;
    }

    const char* mBegin;
    const char* mEnd;
    std::size_t mColumns;
    const char* mBreak = nullptr;  // the end of the piece at the last place that may be broken
    std::size_t mBreakWidth = 0;
    const char* mNext = nullptr;  // where the next line begins then
};

}  // namespace

void wrap(std::string_view text, std::size_t columns, std::vector<Piece>& pieces) {
    const char* at = text.data();
    const char* const end = at + text.size();
    if (at == end) pieces.push_back({{}, 0});
    while (at != end) at = Line(at, end, columns).take(pieces);
}

}  // namespace xo::text
