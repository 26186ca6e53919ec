// Numbers to text and back, the text family's second half.
#include <charconv>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <locale>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include <fast_float/fast_float.h>
#include <fmt/format.h>

#include "dice.h"
#include "families.h"
#include "xoSystem/xoStringUtils.h"
#include "xoSystem/xoVariant.h"

namespace bench {
namespace {

using xo::xoStringUtils;

constexpr std::size_t kNumbers = 1000;

// ---- Numbers to text.

template <class Number>
std::string printByFreshStream(Number value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

template <class Number>
std::string printByReusedStream(std::ostringstream& stream, Number value) {
    stream.str(std::string());
    stream << value;
    return stream.str();
}

template <class Number, class... Format>
std::string printByToChars(Number value, Format... format) {
    char buffer[32];
    return {buffer, std::to_chars(buffer, std::end(buffer), value, format...).ptr};
}

template <class Number>
std::function<void()> forEach(const std::vector<Number>& values, std::string (*print)(Number)) {
    return [&values, print] {
        for (const Number value : values) keep(print(value));
    };
}

std::vector<int> someIntegers() {
    Dice dice;
    std::vector<int> values;
    for (std::size_t i = 0; i < kNumbers; ++i) values.push_back(static_cast<int>(dice.roll(1u << dice.roll(31))) - 100);
    return values;
}

std::vector<double> someReals() {
    Dice dice;
    std::vector<double> values;
    for (std::size_t i = 0; i < kNumbers; ++i)
        values.push_back(static_cast<double>(dice.roll(1u << 30)) / static_cast<double>(1 + dice.roll(100000)));
    return values;
}

void measureIntegerToText(Suite& suite) {
    const std::vector<int> values = someIntegers();
    std::ostringstream reused;
    reused.imbue(std::locale::classic());
    for (const int value : values) {
        const std::string text = xoStringUtils::fromInt(value);
        require(text == printByFreshStream(value) && text == printByReusedStream(reused, value),
                "the sides print integers differently");
    }
    suite.compare(
        "text", "integer to text", kNumbers,
        forEach<int>(values, [](int value) { return xoStringUtils::fromInt(value); }),
        {{"fresh imbued stream", forEach<int>(values, &printByFreshStream<int>)},
         {"reused stream",
          [&] {
              for (const int value : values) keep(printByReusedStream(reused, value));
          }},
         {"fmt::format", forEach<int>(values, [](int value) { return fmt::format("{}", value); })},
         {"limit: to_chars, one string", forEach<int>(values, [](int value) { return printByToChars(value); })}});
}

void measureRealToText(Suite& suite) {
    const std::vector<double> values = someReals();
    std::ostringstream reused;
    reused.imbue(std::locale::classic());
    for (const double value : values) {
        const std::string text = xoStringUtils::fromFloat(value);
        require(text == printByFreshStream(value) && text == printByReusedStream(reused, value) &&
                    text == fmt::format("{:.6g}", value),
                "the sides print reals differently");
    }
    const auto limit = [](double value) { return printByToChars(value, std::chars_format::general, 6); };
    suite.compare("text", "real to text, 6 digits", kNumbers,
                  forEach<double>(values, [](double value) { return xoStringUtils::fromFloat(value); }),
                  {{"fresh imbued stream", forEach<double>(values, &printByFreshStream<double>)},
                   {"reused stream",
                    [&] {
                        for (const double value : values) keep(printByReusedStream(reused, value));
                    }},
                   {"fmt::format", forEach<double>(values, [](double value) { return fmt::format("{:.6g}", value); })},
                   {"limit: to_chars, one string", forEach<double>(values, limit)}});
}

// ---- Text to numbers.

template <class Number>
Number readByFromChars(const std::string& text) {
    Number value{};
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

double readByFastFloat(const std::string& text) {
    double value = 0.0;
    fast_float::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

template <class Read>
std::function<void()> readEach(const Texts& texts, Read read) {
    return [&texts, read] {
        for (const std::string& text : texts) keep(read(text));
    };
}

void measureTextToInteger(Suite& suite) {
    Texts texts;
    for (const int value : someIntegers()) texts.push_back(std::to_string(value));
    const std::vector<xo::xoVariant> variants(texts.begin(), texts.end());
    for (std::size_t i = 0; i < texts.size(); ++i)
        require(variants[i].toInteger() == std::strtoll(texts[i].c_str(), nullptr, 0),
                "the sides read integers differently");
    suite.compare(
        "text", "text to integer", kNumbers,
        [&] {
            for (const xo::xoVariant& variant : variants) keep(variant.toInteger());
        },
        {{"strtoll", readEach(texts, [](const std::string& text) { return std::strtoll(text.c_str(), nullptr, 0); })},
         {"limit: from_chars", readEach(texts, &readByFromChars<std::int64_t>)}});
}

void measureTextToReal(Suite& suite) {
    Texts texts;
    for (const double value : someReals()) texts.push_back(fmt::format("{:.9g}", value));
    const std::vector<xo::xoVariant> variants(texts.begin(), texts.end());
    for (std::size_t i = 0; i < texts.size(); ++i)
        require(variants[i].toReal() == std::strtod(texts[i].c_str(), nullptr) &&
                    variants[i].toReal() == readByFastFloat(texts[i]),
                "the sides read reals differently");
    suite.compare(
        "text", "text to real", kNumbers,
        [&] {
            for (const xo::xoVariant& variant : variants) keep(variant.toReal());
        },
        {{"strtod", readEach(texts, [](const std::string& text) { return std::strtod(text.c_str(), nullptr); })},
         {"std::from_chars", readEach(texts, &readByFromChars<double>)},
         {"limit: fast_float", readEach(texts, &readByFastFloat)}});
}

using Cell = std::variant<std::int64_t, double, std::string>;

Cell readCellByCRuntime(const std::string& text) {
    const char* const end = text.c_str() + text.size();
    char* stop = nullptr;
    if (const std::int64_t integer = std::strtoll(text.c_str(), &stop, 0); stop == end) return integer;
    if (const double real = std::strtod(text.c_str(), &stop); stop == end) return real;
    return text;
}

Cell readCellByFastFloat(const std::string& text) {
    const char* const end = text.data() + text.size();
    std::int64_t integer = 0;
    if (std::from_chars(text.data(), end, integer).ptr == end) return integer;
    double real = 0.0;
    if (fast_float::from_chars(text.data(), end, real).ptr == end) return real;
    return text;
}

bool isSame(const xo::xoVariant& ours, const Cell& other) {
    switch (other.index()) {
        case 0: return ours.getType() == xo::xoVariant::INTEGER && ours.toInteger() == std::get<0>(other);
        case 1: return ours.getType() == xo::xoVariant::REAL && ours.toReal() == std::get<1>(other);
        default: return ours.getType() == xo::xoVariant::STRING && ours.getString() == std::get<2>(other);
    }
}

void measureTextToVariant(Suite& suite) {
    Dice dice;
    Texts texts;
    for (const int value : someIntegers()) {
        const std::string number = std::to_string(value);
        const std::string kinds[] = {number, number + "." + std::to_string(dice.roll(1000)), "item " + number};
        texts.push_back(kinds[dice.roll(std::size(kinds))]);
    }
    for (const std::string& text : texts)
        require(isSame(xo::xoVariant::BuildFromString(text), readCellByCRuntime(text)) &&
                    isSame(xo::xoVariant::BuildFromString(text), readCellByFastFloat(text)),
                "the sides read values differently");
    suite.compare("text", "text to integer, real or text", kNumbers,
                  readEach(texts, [](const std::string& text) { return xo::xoVariant::BuildFromString(text); }),
                  {{"strtoll, strtod, std::variant", readEach(texts, &readCellByCRuntime)},
                   {"limit: from_chars, fast_float", readEach(texts, &readCellByFastFloat)}});
}

}  // namespace

void measureNumbers(Suite& suite) {
    measureIntegerToText(suite);
    measureRealToText(suite);
    measureTextToInteger(suite);
    measureTextToReal(suite);
    measureTextToVariant(suite);
}

}  // namespace bench
