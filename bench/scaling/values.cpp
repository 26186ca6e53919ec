// Variants, texts and tables of them. std::map and std::string stand beside those that have their shape: what the
// caches take away, they take from both.
#include <algorithm>
#include <map>
#include <memory>

#include "dice.h"
#include "series.h"
#include "xoSystem/xoAsciiTableBuilder.h"
#include "xoSystem/xoProcess.h"
#include "xoSystem/xoStringUtils.h"
#include "xoSystem/xoVariant.h"

namespace bench {
namespace {

using xo::xoStringUtils;
using VariantMap = xo::xoVariant::xoVariantMapImpl;
using VariantList = xo::xoVariant::xoVariantListImpl;

std::string keyOf(std::size_t i) { return "setting" + std::to_string(i * 7919 % 10'000'019); }

template <class Map>
Map flatMap(std::size_t size) {
    Map map;
    for (std::size_t i = 0; i != size; ++i) map[keyOf(i)] = static_cast<std::int64_t>(i);
    return map;
}

VariantMap chainOfMaps(std::size_t depth) {
    VariantMap chain;
    for (std::size_t i = 0; i != depth; ++i) {
        VariantMap outer;
        outer["inner"] = std::move(chain);
        chain = std::move(outer);
    }
    return chain;
}

// What is prepared is shared with the run, which std::function copies.
template <class Value, class Use>
Run with(Value value, Use use) {
    return [held = std::make_shared<Value>(std::move(value)), use] { use(*held); };
}

std::string repeated(const std::string& piece, std::size_t times) {
    std::string text;
    for (std::size_t i = 0; i != times; ++i) text += piece;
    return text;
}

void scaleVariants(Series& series) {
    using StdMap = std::map<std::string, std::int64_t>;
    series.measure("variant", "map, build and drop",
                   [](std::size_t size) { return [size] { keep(flatMap<VariantMap>(size)); }; });
    series.measure("variant", "std::map, build and drop",
                   [](std::size_t size) { return [size] { keep(flatMap<StdMap>(size)); }; });
    const auto lookUp = [](std::size_t size) {
        return with(flatMap<VariantMap>(size), [size](const VariantMap& map) {
            for (std::size_t i = 0; i != size; ++i) keep(map.findPath(keyOf(i)));
        });
    };
    series.measure("variant", "map, look-up by path", lookUp);
    series.measure("variant", "std::map, look-up", [](std::size_t size) {
        return with(flatMap<StdMap>(size), [size](const StdMap& map) {
            for (std::size_t i = 0; i != size; ++i) keep(map.find(keyOf(i)));
        });
    });
    series.measure("variant", "map, copy and drop", [](std::size_t size) {
        return with(flatMap<VariantMap>(size), [](const VariantMap& map) { keep(VariantMap(map)); });
    });
    series.measure("variant", "map, compare equal ones", [](std::size_t size) {
        return with(std::pair(flatMap<VariantMap>(size), flatMap<VariantMap>(size)),
                    [](const auto& maps) { keep(maps.first == maps.second); });
    });
    series.measure("variant", "std::map, compare equal ones", [](std::size_t size) {
        return with(std::pair(flatMap<StdMap>(size), flatMap<StdMap>(size)),
                    [](const auto& maps) { keep(maps.first == maps.second); });
    });
    series.measure("variant", "map, merge into a copy", [](std::size_t size) {
        return with(flatMap<VariantMap>(size), [](const VariantMap& map) {
            VariantMap copy(map);
            copy.mergeWith(map);
        });
    });
    series.measure(
        "variant", "map, erase by expression",
        [](std::size_t size) {
            return with(flatMap<VariantMap>(size), [](const VariantMap& map) {
                VariantMap copy(map);
                keep(copy.erasePathRegEx("setting1.*"));
            });
        },
        1'000'000);
    series.measure("variant", "list, append", [](std::size_t size) {
        return [size] {
            VariantList list;
            for (std::size_t i = 0; i != size; ++i) list.push_back(xo::xoVariant(static_cast<std::int64_t>(i)));
            keep(list);
        };
    });
    series.measure("variant", "chain of maps, copy and drop", [](std::size_t size) {
        return with(chainOfMaps(size), [](const VariantMap& chain) { keep(VariantMap(chain)); });
    });
}

// Each item is a word of six letters, unless the name says otherwise.
void scaleTexts(Series& series) {
    const auto on = [&](const char* name, const std::string& piece, auto use, std::size_t largest = 10'000'000) {
        series.measure(
            "text", name,
            [=](std::size_t size) {
                return with(repeated(piece, size), [use](const std::string& text) { use(text); });
            },
            largest);
    };
    on("Split", "words,", [](const std::string& text) { keep(xoStringUtils::Split(text, ',')); });
    on("replace by longer", "words,", [](std::string text) { keep(xoStringUtils::replace(text, ",", "; ")); });
    on("replace by shorter", "words,", [](std::string text) { keep(xoStringUtils::replace(text, "rds", "")); });
    on("ReplaceAllOccurences", "words,",
       [](std::string text) { keep(xoStringUtils::ReplaceAllOccurences(text, ",", "; ")); });
    on("trimAndRemoveConsecutiveSpaces", "word  ",
       [](std::string text) { keep(xoStringUtils::trimAndRemoveConsecutiveSpaces(text)); });
    on("ToHex and FromHex", "words,", [](const std::string& text) {
        std::string hex, back;
        xoStringUtils::ToHex(text.data(), text.size(), hex);
        keep(xoStringUtils::FromHex(hex.data(), hex.size(), back));
    });
    on("IsUtf8String", "w\xC3\xB6rd,", [](const std::string& text) { keep(xoStringUtils::IsUtf8String(text)); });
    on("to UTF-16 and back", "w\xC3\xB6rd,", [](const std::string& text) {
        keep(xoStringUtils::convertTo8Bits(xoStringUtils::convertToUnicode(text, xoStringUtils::CharSetUtf8),
                                           xoStringUtils::CharSetUtf8));
    });
    on("UnknownEncodingToUtf8", "w\xF6rds,",
       [](const std::string& text) { keep(xoStringUtils::UnknownEncodingToUtf8(text)); });
    on("FindCaseInsensitive, at the end", "words,",
       [](const std::string& text) { keep(xoStringUtils::FindCaseInsensitive(text, "WORDX")); });
    on("GetDisplayWidth", "w\xC3\xB6rd,", [](const std::string& text) { keep(xoStringUtils::GetDisplayWidth(text)); });
    on("MakePrintable", "word\x1B,", [](std::string text) { keep(xoStringUtils::MakePrintable(text)); });
    on("CutToDisplayWidth, by half", "words,", [](std::string text) {
        const std::size_t half = text.size() / 2;
        keep(xoStringUtils::CutToDisplayWidth(text, half));
    });
    on("SplitCommandLine, arguments", "\"a b\" ", [](const std::string& text) {
        Texts arguments;
        keep(xo::xoProcess::SplitCommandLine(text, arguments));
    });
    const auto names = [](std::size_t size) {
        Dice dice;
        Texts texts;
        for (std::size_t i = 0; i != size; ++i) texts.push_back("file " + std::to_string(dice.roll(1'000'000)));
        return texts;
    };
    series.measure(
        "text", "sort in natural order",
        [names](std::size_t size) {
            return with(names(size), [](Texts texts) {
                std::sort(texts.begin(), texts.end(), &xoStringUtils::UTF8NaturalSortFunction);
                keep(texts);
            });
        },
        100'000);
    series.measure("tables", "rows of 3 cells", [](std::size_t size) {
        return [size] {
            xo::AsciiTableBuilder table({"Name", "Rows", "Share"});
            for (std::size_t i = 0; i != size; ++i) table.addRow({"Oslo", static_cast<std::int64_t>(i), 0.5});
            keep(table.build());
        };
    });
}

}  // namespace

void scaleValues(Series& series) {
    scaleVariants(series);
    scaleTexts(series);
}

}  // namespace bench
