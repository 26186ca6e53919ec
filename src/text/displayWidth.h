// The number of terminal columns that a UTF-8 text takes, and the places where it may be cut without dividing a
// character.
#ifndef XO_TEXT_DISPLAYWIDTH_H
#define XO_TEXT_DISPLAYWIDTH_H

#include <cstddef>
#include <string>
#include <string_view>

namespace xo::text {

// What must not be divided: a code point that has a width and all code points behind it that have none, or an emoji
// sequence of several. Code points without width at the start of a text are a cluster of their own.
struct Cluster {
    const char* end;
    unsigned width;  // 0, 1 or 2
};

// The cluster that starts at a place before end. A byte that belongs to no UTF-8 sequence is a cluster of width 1.
Cluster nextCluster(const char* at, const char* end);

// As xoStringUtils::GetDisplayWidth: the sum of the widths of the clusters.
std::size_t displayWidth(std::string_view text);

// Whether there are only ASCII characters that have a width, so that the size of the text is its width.
bool isPlain(std::string_view text);

// xoStringUtils::MakePrintable, in place or appended to a text.
void makePrintable(std::string& text);
void appendPrintable(std::string& out, std::string_view text);

// The longest start of the text, in whole clusters, that is no wider than columns.
std::string_view fittingStart(std::string_view text, std::size_t columns);

// As xoStringUtils::CutToDisplayWidth.
void cutToWidth(std::string& text, std::size_t columns, std::string_view mark, bool inMiddle);

}  // namespace xo::text

#endif
