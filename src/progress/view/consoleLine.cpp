// Composes the lines of the console view from a state. Nothing here writes to a console.
#include "progress/view/consoleLine.h"

#include <algorithm>
#include <cmath>

#include "text/displayWidth.h"
#include "xoSystem/xoMathUtils.h"

namespace xo::progress {
namespace {

// In columns. The bar includes its brackets.
constexpr std::size_t kLeastBar = 10;
constexpr std::size_t kMostBar = 40;
constexpr std::size_t kLeastText = 10;       // the text is cut no further; after that it is left out
constexpr std::string_view kGap = "  ";      // between the parts of a line
constexpr std::string_view kCut = "...";     // in place of what was cut; ASCII, which every code page has
constexpr std::string_view kMoving = "<=>";  // for a work whose total is unknown

// The text is valid UTF-8, as `printable` returns it: each byte that is not a continuation byte begins a code point.
std::size_t utf16Units(const char* at, const char* end) {
    std::size_t units = 0;
    for (; at < end; ++at) {
        const auto byte = static_cast<unsigned char>(*at);
        if ((byte & 0xC0) != 0x80) units += byte >= 0xF0 ? 2 : 1;  // a code point beyond U+FFFF has two units
    }
    return units;
}

std::size_t clusterColumns(const char* at, const text::Cluster& cluster) {
    return (std::max)(std::size_t{cluster.width}, utf16Units(at, cluster.end));
}

// The longest beginning of the text, in whole clusters, that fits into the columns.
std::string_view fittingStart(std::string_view text, std::size_t columns) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end) {
        const text::Cluster cluster = text::nextCluster(at, end);
        const std::size_t needed = clusterColumns(at, cluster);
        if (needed > columns) break;
        columns -= needed;
        at = cluster.end;
    }
    return text.substr(0, static_cast<std::size_t>(at - text.data()));
}

// The longest ending of the text, in whole clusters, that fits into the columns.
std::string_view fittingEnd(std::string_view text, std::size_t columns) {
    std::size_t rest = consoleColumns(text);
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end && rest > columns) {
        const text::Cluster cluster = text::nextCluster(at, end);
        rest -= clusterColumns(at, cluster);
        at = cluster.end;
    }
    return text.substr(static_cast<std::size_t>(at - text.data()));
}

// Both cut a text to the columns and mark the place. Empty when not even the mark fits.
std::string cutEnd(const std::string& text, std::size_t columns) {
    if (consoleColumns(text) <= columns) return text;
    if (columns < kCut.size()) return {};
    return std::string(fittingStart(text, columns - kCut.size())).append(kCut);
}

// Paths differ mostly at their beginning and end, so the middle is left out.
std::string cutMiddle(const std::string& text, std::size_t columns) {
    if (consoleColumns(text) <= columns) return text;
    if (columns < kCut.size()) return {};
    const std::size_t left = columns - kCut.size();
    const std::string_view start = fittingStart(text, left - left / 2);
    return std::string(start).append(kCut).append(fittingEnd(text, left - consoleColumns(start)));
}

std::string printable(const std::string& text) {
    std::string result;
    text::appendPrintable(result, text);
    return result;
}

// Between 0 and 1; 0 also for NaN. A host may pass any state to FormatLine.
double fractionOf(const xoProgressState& state) { return state.fraction > 0 ? (std::min)(state.fraction, 1.0) : 0; }

// Rounded down, so that 100 % is shown only for a complete work.
std::string percentOf(const xoProgressState& state) {
    const int percent = static_cast<int>(std::floor(fractionOf(state) * 100));
    // Two columns wide below 100 %, so that the bar does not jump.
    return (percent < 10 ? " " : "") + std::to_string(percent) + " %";
}

// Empty for steps without a unit: their number means nothing to a reader.
std::string amount(xoProgressUnit unit, std::uint64_t count) {
    if (unit == ProgressUnitBytes) return xoMathUtils::BytesToText(count);
    if (unit == ProgressUnitItems) return xoMathUtils::CountToText(count);
    return {};
}

std::string countsOf(const xoProgressState& state) {
    const std::string done = amount(state.unit, state.done);
    return done.empty() || state.total == 0 ? done : done + " of " + amount(state.unit, state.total);
}

// Empty when the speed is unknown, and for speeds (kMost, NaN) that llround could not convert.
std::string rateOf(const xoProgressState& state) {
    constexpr double kMost = 1e18;
    if (!(state.unitsPerSecond > 0 && state.unitsPerSecond < kMost)) return {};
    const auto whole = static_cast<std::uint64_t>(std::llround(state.unitsPerSecond));
    if (state.unit == ProgressUnitBytes) return amount(state.unit, whole) + "/s";
    if (state.unit != ProgressUnitItems) return {};
    // Slow works show a fraction: "0.25/s".
    constexpr double kFew = 10;
    return (state.unitsPerSecond < kFew ? xoMathUtils::SignificantToText(state.unitsPerSecond, 2)
                                        : amount(state.unit, whole)) +
           "/s";
}

std::string clock(std::int64_t ms) { return xoMathUtils::DurationToClock(static_cast<double>(ms) / 1000); }

// The remaining time, or the elapsed time while there is no estimate.
std::string timeOf(const xoProgressState& state) {
    return state.remainingMs >= 0 ? clock(state.remainingMs) + " left" : clock(state.elapsedMs);
}

// The parts of a line, each empty where it is left out.
struct Parts {
    explicit Parts(const xoProgressState& state)
        : title(printable(state.title)),
          text(printable(state.text)),
          percent(state.isIndeterminate ? std::string() : percentOf(state)),
          counts(countsOf(state)),
          rate(rateOf(state)),
          time(timeOf(state)) {}

    // Title and text, without a colon when one of them is empty.
    std::string label() const { return title.empty() || text.empty() ? title + text : title + ": " + text; }

    // The columns of the line, with a bar of the least width or without one.
    std::size_t columns(bool hasBar) const {
        std::size_t sum = hasBar ? kLeastBar : 0;
        std::size_t count = hasBar ? 1 : 0;
        for (const std::string& part : {label(), percent, counts, rate, time}) {
            sum += consoleColumns(part);
            count += part.empty() ? 0 : 1;
        }
        return count == 0 ? 0 : sum + (count - 1) * kGap.size();
    }

    std::string title, text, percent, counts, rate, time;
};

// `columns` is the width of the bar with its brackets, at least kLeastBar, here and for the moving bar.
std::string bar(double fraction, std::size_t columns) {
    const std::size_t inside = columns - 2;
    const auto filled = (std::min)(static_cast<std::size_t>(fraction * static_cast<double>(inside)), inside);
    std::string result = "[" + std::string(filled, '=');
    if (filled < inside) result += ">" + std::string(inside - filled - 1, ' ');
    return result + "]";
}

// The mark moves one column per tick, to the right and back again.
std::string movingBar(unsigned tick, std::size_t columns) {
    const std::size_t ways = columns - 2 - kMoving.size();
    const std::size_t at = tick % (2 * ways);
    const std::size_t before = at < ways ? at : 2 * ways - at;
    return "[" + std::string(before, ' ') + std::string(kMoving) + std::string(ways - before, ' ') + "]";
}

// Leaves out empty parts.
std::string joined(std::initializer_list<std::string> parts, std::string_view gap) {
    std::string line;
    for (const std::string& part : parts) {
        if (part.empty()) continue;
        if (!line.empty()) line += gap;
        line += part;
    }
    return line;
}

}  // namespace

std::size_t consoleColumns(std::string_view text) {
    std::size_t columns = 0;
    const char* at = text.data();
    for (const char* const end = at + text.size(); at < end;) {
        const text::Cluster cluster = text::nextCluster(at, end);
        columns += clusterColumns(at, cluster);
        at = cluster.end;
    }
    return columns;
}

// While the line is too wide, removes or shortens its parts, the least important first: the rate, the counts, part of
// the text, the time, the bar, the rest of the text, and part of the title. The percentage always stays.
std::string barLine(const xoProgressState& state, std::size_t columns, unsigned tick) {
    Parts parts(state);
    bool hasBar = true;
    const auto isTooWide = [&] { return parts.columns(hasBar) > columns; };
    const auto excess = [&] { return parts.columns(hasBar) - columns; };

    if (isTooWide()) parts.rate.clear();
    if (isTooWide()) parts.counts.clear();
    if (isTooWide()) {
        const std::size_t width = consoleColumns(parts.text);
        if (width > kLeastText)
            parts.text = cutMiddle(parts.text, (std::max)(kLeastText, width - (std::min)(width, excess())));
    }
    if (isTooWide()) parts.time.clear();
    if (isTooWide()) {
        hasBar = false;
        if (state.isIndeterminate) parts.percent = kMoving;
    }
    if (isTooWide()) parts.text.clear();
    if (isTooWide()) {
        const std::size_t width = consoleColumns(parts.title);
        parts.title = cutEnd(parts.title, width - (std::min)(width, excess()));
    }

    std::string barText;
    if (hasBar) {
        // The bar takes the columns that the other parts leave, up to kMostBar.
        const std::size_t width = (std::min)(kMostBar, kLeastBar + columns - parts.columns(true));
        barText = state.isIndeterminate ? movingBar(tick, width) : bar(fractionOf(state), width);
    }
    return joined({parts.label(), barText, parts.percent, parts.counts, parts.rate, parts.time}, kGap);
}

std::string plainLine(const xoProgressState& state) {
    const Parts parts(state);
    return joined({parts.label(), parts.percent, parts.counts, parts.rate, parts.time}, ", ");
}

std::string endLine(const xoProgressState& state) {
    std::string line = printable(state.title);
    if (!line.empty()) line += ": ";
    if (state.phase == xoProgressState::PhaseDone) {
        const std::string counted = amount(state.unit, state.done);
        return line + (counted.empty() ? "done in " : "done, " + counted + " in ") + clock(state.elapsedMs);
    }
    std::string percent = percentOf(state);
    if (percent.front() == ' ') percent.erase(0, 1);
    return line + (state.phase == xoProgressState::PhaseCanceled ? "canceled at " : "stopped at ") + percent +
           " after " + clock(state.elapsedMs);
}

}  // namespace xo::progress
