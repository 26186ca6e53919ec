// Numbers for people beside fmt with a unit that the program has chosen; names of enumerators beside a switch and a
// map.
#include <fmt/compile.h>
#include <fmt/format.h>

#include <charconv>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "dice.h"
#include "families.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoMathUtils.h"
#include "xoSystem/xoVariant.h"

namespace bench {
namespace {

using xo::xoMathUtils;

constexpr std::size_t kNumbers = 1000;

template <class Value, class Use>
std::function<void()> forEach(const std::vector<Value>& values, Use use) {
    return [&values, use] {
        for (const Value& value : values) keep(use(value));
    };
}

void measureTexts(Suite& suite) {
    Dice dice;
    std::vector<std::uint64_t> sizes;
    std::vector<double> values;
    for (std::size_t i = 0; i != kNumbers; ++i) {
        sizes.push_back((1u << 20) + dice.roll((1u << 30) - (1u << 21)));
        values.push_back(1000 + static_cast<double>(dice.roll(1000000)) / 7);
    }
    suite.compare("numbers", "bytes to text", kNumbers,
                  forEach(sizes, [](std::uint64_t size) { return xoMathUtils::BytesToText(size); }),
                  {{"fmt, unit known", forEach(sizes, [](std::uint64_t size) {
                        return fmt::format(FMT_COMPILE("{:.1f} MiB"), static_cast<double>(size) / 1048576);
                    })}});
    suite.compare("numbers", "SI to text", kNumbers,
                  forEach(values, [](double value) { return xoMathUtils::SiToText(value, "Hz"); }),
                  {{"fmt, prefix known", forEach(values, [](double value) {
                        return fmt::format(FMT_COMPILE("{:.1f} kHz"), value / 1000);
                    })}});
    suite.compare("numbers", "duration to text", kNumbers,
                  forEach(values, [](double value) { return xoMathUtils::DurationToText(value); }),
                  {{"fmt, units known", forEach(values, [](double value) {
                        const auto minutes = static_cast<int>(value / 60);
                        return fmt::format(FMT_COMPILE("{} h {:02} min"), minutes / 60, minutes % 60);
                    })}});
    suite.compare("numbers", "shortest real", kNumbers,
                  forEach(values, [](double value) { return xoMathUtils::RealToText(value); }),
                  {{"fmt", forEach(values, [](double value) { return fmt::format(FMT_COMPILE("{}"), value); })}});
}

void measureParsers(Suite& suite) {
    Dice dice;
    Texts sizes, times, reals;
    for (std::size_t i = 0; i != kNumbers; ++i) {
        const double value = static_cast<double>(dice.roll(100000)) / 100;
        sizes.push_back(fmt::format("{} {}", value, dice.pick({"kB", "MiB", "GB"})));
        times.push_back(fmt::format("{} h {:02} min", dice.roll(24), dice.roll(60)));
        reals.push_back(fmt::format("{}", value));
    }
    const auto limit = [](const std::string& text) {
        double value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    };
    const auto parse = [](auto parser, auto none) {
        return [parser, none](const std::string& text) {
            auto value = none;
            require(parser(text, value), "a text is not understood");
            return value;
        };
    };
    const auto parseBytes = [](std::string_view text, std::uint64_t& bytes) {
        return xoMathUtils::ParseBytes(text, bytes);
    };
    suite.compare("numbers", "text to bytes", kNumbers, forEach(sizes, parse(parseBytes, std::uint64_t{0})),
                  {{"limit: from_chars, number alone", forEach(sizes, limit)}});
    suite.compare("numbers", "text to duration", kNumbers, forEach(times, parse(&xoMathUtils::ParseDuration, 0.0)),
                  {{"limit: from_chars, first number", forEach(times, limit)}});
    suite.compare("numbers", "text to real", kNumbers, forEach(reals, parse(&xoMathUtils::ParseReal, 0.0)),
                  {{"limit: from_chars", forEach(reals, limit)}});
}

}  // namespace

// Sixteen values far apart.
enum class Tone {
    A = 1,
    B = 20,
    C = 300,
    D = 400,
    E = 500,
    F = 600,
    G = 7000,
    H = 8000,
    I = 9001,
    J = 9100,
    K = 9200,
    L = 9300,
    M = 9400,
    N = 9500,
    O = 9600,
    P = 70000
};

constexpr xo::xoEnumEntry<Tone> kTones[] = {
    {Tone::A, "alpha"}, {Tone::B, "bravo"},    {Tone::C, "charlie"}, {Tone::D, "delta"},
    {Tone::E, "echo"},  {Tone::F, "foxtrot"},  {Tone::G, "golf"},    {Tone::H, "hotel"},
    {Tone::I, "india"}, {Tone::J, "juliett"},  {Tone::K, "kilo"},    {Tone::L, "lima"},
    {Tone::M, "mike"},  {Tone::N, "november"}, {Tone::O, "oscar"},   {Tone::P, "papa"}};

constexpr xo::xoEnumList<Tone> xoEnumEntries(Tone) { return kTones; }

namespace {

void measureNames(Suite& suite) {
    using Tones = xo::EnumHelper<Tone>;
    Dice dice;
    std::vector<Tone> tones;
    Texts names;
    std::unordered_map<Tone, std::string_view> nameOf;
    std::unordered_map<std::string, Tone> toneOf;
    for (const auto& entry : kTones) {
        nameOf[entry.value] = entry.name;
        toneOf[std::string(entry.name)] = entry.value;
    }
    for (std::size_t i = 0; i != kNumbers; ++i) {
        tones.push_back(kTones[dice.roll(std::size(kTones))].value);
        names.emplace_back(Tones::ToName(tones.back()));
    }
    suite.compare("enums", "name of one of 16", kNumbers,
                  forEach(tones, [](Tone tone) { return Tones::ToName(tone).size(); }),
                  {{"unordered_map", forEach(tones, [&](Tone tone) { return nameOf.find(tone)->second.size(); })}});
    suite.compare(
        "enums", "one of 16 by its name", kNumbers,
        forEach(names,
                [](const std::string& name) {
                    Tone tone{};
                    Tones::FromName(name, tone);
                    return tone;
                }),
        {{"unordered_map", forEach(names, [&](const std::string& name) { return toneOf.find(name)->second; })}});
}

}  // namespace

void measureAmounts(Suite& suite) {
    if (suite.wants("numbers")) {
        measureTexts(suite);
        measureParsers(suite);
    }
    if (suite.wants("enums")) measureNames(suite);
}

}  // namespace bench
