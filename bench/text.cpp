// Texts split, replaced, encoded, checked and compared.
#include <algorithm>
#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string.hpp>
#include <cstdio>
#include <cstring>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <utf8.h>

#include "dice.h"
#include "families.h"
#include "platform/windows.h"
#include "xoSystem/xoStringUtils.h"

#include <shlwapi.h>

namespace bench {
namespace {

using xo::xoStringUtils;

constexpr std::size_t kTextSize = 65536;
constexpr std::size_t kPairs = 1000;

// ---- Splitting and replacing.

std::string csvLine(Dice& dice) {
    return fmt::format("{},2024-{:02}-{:02}T{:02}:{:02}:{:02}Z,{},{},{:.2f},{},,{}", 100000 + dice.roll(900000),
                       1 + dice.roll(12), 1 + dice.roll(28), dice.roll(24), dice.roll(60), dice.roll(60),
                       dice.pick({"Anna Lindqvist", "Bo Ek", "Chidi Okonkwo-Adeyemi", "Dana Novak"}),
                       dice.pick({"Rotterdam, Waalhaven", "Gdynia", "Pointe-Noire", "Port Elizabeth"}),
                       static_cast<double>(dice.roll(1000000)) / 100, dice.pick({"ok", "late", "lost"}),
                       dice.pick({"left at the gate after a call", "signed for", "second attempt tomorrow morning"}));
}

Texts csvLines() {
    Dice dice;
    Texts lines;
    for (int i = 0; i < 500; ++i) lines.push_back(csvLine(dice));
    return lines;
}

Texts splitByBoost(const std::string& text) {
    Texts pieces;
    boost::split(pieces, text, [](char c) { return c == ','; });
    return pieces;
}

Texts splitByGetline(const std::string& text) {
    Texts pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, ',');) pieces.push_back(piece);
    return pieces;
}

Texts splitByMemchr(const std::string& text, std::size_t pieceCount) {
    Texts pieces;
    pieces.reserve(pieceCount);
    const char* at = text.data();
    const char* const end = at + text.size();
    for (;;) {
        const auto* const stop = static_cast<const char*>(std::memchr(at, ',', static_cast<std::size_t>(end - at)));
        if (!stop) break;
        pieces.emplace_back(at, stop);
        at = stop + 1;
    }
    pieces.emplace_back(at, end);
    return pieces;
}

void compareSplits(Suite& suite, const std::string& name, const Texts& texts) {
    const std::size_t pieceCount = xoStringUtils::Split(texts.front(), ',').size();
    std::size_t bytes = 0;
    for (const std::string& text : texts) {
        bytes += text.size();
        const Texts pieces = xoStringUtils::Split(text, ',');
        require(
            pieces == splitByBoost(text) && pieces == splitByGetline(text) && pieces == splitByMemchr(text, pieceCount),
            "the sides split differently");
    }
    const auto eachBy = [&](auto split) {
        return [&texts, split] {
            for (const std::string& text : texts) keep(split(text));
        };
    };
    suite.compare("text", name, static_cast<double>(bytes),
                  eachBy([](const std::string& text) { return xoStringUtils::Split(text, ','); }),
                  {{"boost::split", eachBy(&splitByBoost)},
                   {"istringstream, getline", eachBy(&splitByGetline)},
                   {"limit: memchr, one string a piece",
                    eachBy([=](const std::string& text) { return splitByMemchr(text, pieceCount); })}});
}

void measureSplit(Suite& suite) {
    const Texts lines = csvLines();
    compareSplits(suite, "split a CSV line, a byte", lines);
    compareSplits(suite, "split 64 KB of CSV, a byte", {boost::join(lines, ",").substr(0, kTextSize)});
}

void measureReplace(Suite& suite) {
    std::string text;
    while (text.size() < kTextSize) text += "Dear {name}, the parcel for {name} waits at the gate until Friday. ";
    const std::string from = "{name}";
    const std::string to = "Anna Lindqvist";
    const std::string result = boost::replace_all_copy(text, from, to);
    std::string ours = text;
    require(xoStringUtils::replace(ours, from, to) == result, "the sides replace differently");
    suite.compare("text", "replace all, 64 KB, a byte", static_cast<double>(text.size()),
                  [&] {
                      std::string copy(text);
                      keep(xoStringUtils::replace(copy, from, to));
                  },
                  {{"boost::replace_all",
                    [&] {
                        std::string copy(text);
                        boost::replace_all(copy, from, to);
                        keep(copy);
                    }},
                   {"limit: copies of text and result", [&] {
                        keep(std::string(text));
                        keep(std::string(result));
                    }}});
}

// ---- Hexadecimal.

std::string randomBytes() {
    Dice dice;
    std::string bytes(kTextSize, '\0');
    for (char& byte : bytes) byte = static_cast<char>(dice.roll(256));
    return bytes;
}

void encodeByTable(const std::string& bytes, std::string& out) {
    constexpr char kDigits[] = "0123456789abcdef";
    out.resize(2 * bytes.size());
    char* at = out.data();
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        *at++ = kDigits[byte >> 4];
        *at++ = kDigits[byte & 15];
    }
}

bool decodeByTable(const std::string& text, std::string& out) {
    static const std::vector<signed char> values = [] {
        std::vector<signed char> table(256, -1);
        for (int i = 0; i < 10; ++i) table[static_cast<std::size_t>('0' + i)] = static_cast<signed char>(i);
        for (const int first : {'a' - 10, 'A' - 10})
            for (int i = 10; i < 16; ++i) table[static_cast<std::size_t>(first + i)] = static_cast<signed char>(i);
        return table;
    }();
    out.resize(text.size() / 2);
    const signed char* const table = values.data();
    for (std::size_t i = 0; i < out.size(); ++i) {
        const int value =
            table[static_cast<unsigned char>(text[2 * i])] << 4 | table[static_cast<unsigned char>(text[2 * i + 1])];
        if (value < 0) return false;
        out[i] = static_cast<char>(value);
    }
    return true;
}

void measureHex(Suite& suite) {
    const std::string bytes = randomBytes();
    const std::string digits = boost::algorithm::hex_lower(bytes);
    std::string ours, boosts, tables;
    xoStringUtils::ToHex(bytes.data(), bytes.size(), ours);
    encodeByTable(bytes, tables);
    require(ours == digits && tables == digits, "the sides encode differently");
    std::string copied(digits.size(), '\0');
    suite.compare("text", "hex encode 64 KB, a byte", static_cast<double>(bytes.size()),
                  [&] {
                      xoStringUtils::ToHex(bytes.data(), bytes.size(), ours);
                      keep(ours);
                  },
                  {{"boost::algorithm::hex_lower",
                    [&] {
                        boosts.clear();
                        boost::algorithm::hex_lower(bytes, std::back_inserter(boosts));
                        keep(boosts);
                    }},
                   {"table loop",
                    [&] {
                        encodeByTable(bytes, tables);
                        keep(tables);
                    }},
                   {"limit: memcpy of the digits", [&] {
                        std::memcpy(copied.data(), digits.data(), digits.size());
                        keep(copied);
                    }}});

    require(xoStringUtils::FromHex(digits.data(), digits.size(), ours) && decodeByTable(digits, tables),
            "the sides decode differently");
    require(ours == bytes && tables == bytes, "the sides decode differently");
    suite.compare("text", "hex decode to 64 KB, a byte", static_cast<double>(bytes.size()),
                  [&] {
                      keep(xoStringUtils::FromHex(digits.data(), digits.size(), ours));
                      keep(ours);
                  },
                  {{"boost::algorithm::unhex",
                    [&] {
                        boosts.clear();
                        boost::algorithm::unhex(digits, std::back_inserter(boosts));
                        keep(boosts);
                    }},
                   {"table loop",
                    [&] {
                        keep(decodeByTable(digits, tables));
                        keep(tables);
                    }},
                   {"limit: memcpy of the digits", [&] {
                        std::memcpy(copied.data(), digits.data(), digits.size());
                        keep(copied);
                    }}});
}

// ---- UTF-8.

void compareUtf8Checks(Suite& suite, const std::string& name, std::string pattern) {
    std::string text;
    while (text.size() < kTextSize) text += pattern;
    const std::string broken = text + "\xE2\x82";
    require(xoStringUtils::IsUtf8String(text) && utf8::is_valid(text) && !xoStringUtils::IsUtf8String(broken) &&
                !utf8::is_valid(broken),
            "the sides differ over UTF-8");
    std::string copied(text.size(), '\0');
    suite.compare("text", name, static_cast<double>(text.size()), [&] { keep(xoStringUtils::IsUtf8String(text)); },
                  {{"utf8::is_valid", [&] { keep(utf8::is_valid(text.begin(), text.end())); }},
                   {"limit: memcpy", [&] {
                        std::memcpy(copied.data(), text.data(), text.size());
                        keep(copied);
                    }}});
}

void measureUtf8(Suite& suite) {
    compareUtf8Checks(suite, "UTF-8 check, 64 KB of ASCII, a byte", "The parcel waits at the gate until Friday. ");
    compareUtf8Checks(suite, "UTF-8 check, 64 KB mixed, a byte",
                      "Größe 12 €, déjà vu à Orléans; Привет, мир и все остальные! 日本語の文章です。😀 ok. ");
}

// ---- Comparing.

struct Pair {
    std::string a;
    std::string b;
};

int compareVersionsBySscanf(const Pair& pair) {
    unsigned a[4] = {};
    unsigned b[4] = {};
    std::sscanf(pair.a.c_str(), "%u.%u.%u.%u", &a[0], &a[1], &a[2], &a[3]);
    std::sscanf(pair.b.c_str(), "%u.%u.%u.%u", &b[0], &b[1], &b[2], &b[3]);
    const auto [one, other] = std::mismatch(std::begin(a), std::end(a), std::begin(b));
    if (one == std::end(a)) return xoStringUtils::SoftwareVersionEqual;
    return *one < *other ? xoStringUtils::SoftwareVersionOlder : xoStringUtils::SoftwareVersionNewer;
}

const char* readComponent(const char* at, unsigned& value) {
    for (value = 0; *at >= '0' && *at <= '9'; ++at) value = value * 10 + static_cast<unsigned>(*at - '0');
    return *at == '.' ? at + 1 : at;
}

int compareVersionsByDigits(const Pair& pair) {
    const char* a = pair.a.c_str();
    const char* b = pair.b.c_str();
    while (*b != '\0') {
        unsigned one = 0;
        unsigned other = 0;
        a = readComponent(a, one);
        b = readComponent(b, other);
        if (one != other)
            return one < other ? xoStringUtils::SoftwareVersionOlder : xoStringUtils::SoftwareVersionNewer;
    }
    return xoStringUtils::SoftwareVersionEqual;
}

template <class Item, class Compare>
std::function<void()> compareEach(const std::vector<Item>& pairs, Compare compare) {
    return [&pairs, compare] {
        for (const Item& pair : pairs) keep(compare(pair));
    };
}

void measureVersions(Suite& suite) {
    Dice dice;
    const auto version = [&] {
        return fmt::format("{}.{}.{}.{}", 2 + dice.roll(2), dice.roll(3), dice.roll(20), dice.roll(10000));
    };
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < kPairs; ++i) {
        pairs.push_back({version(), version()});
        if (dice.roll(4) == 0) pairs.back().b = pairs.back().a;
    }
    const auto ours = [](const Pair& pair) -> int { return xoStringUtils::compareSoftwareVersion(pair.a, pair.b); };
    for (const Pair& pair : pairs)
        require(ours(pair) == compareVersionsBySscanf(pair) && ours(pair) == compareVersionsByDigits(pair),
                "the sides compare versions differently");
    suite.compare("text", "compare versions of 4 numbers", kPairs, compareEach(pairs, ours),
                  {{"sscanf", compareEach(pairs, &compareVersionsBySscanf)},
                   {"limit: digit loop", compareEach(pairs, &compareVersionsByDigits)}});
}

struct WidePair {
    std::wstring a;
    std::wstring b;
};

std::wstring widen(const std::string& text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int length = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

int signOf(int value) { return (value > 0) - (value < 0); }

int compareLogical(const Pair& pair) { return signOf(::StrCmpLogicalW(widen(pair.a).c_str(), widen(pair.b).c_str())); }

int compareWide(const WidePair& pair) {
    return ::CompareStringEx(LOCALE_NAME_USER_DEFAULT, SORT_DIGITSASNUMBERS, pair.a.data(),
                             static_cast<int>(pair.a.size()), pair.b.data(), static_cast<int>(pair.b.size()), nullptr,
                             nullptr, 0) -
           2;
}

void measureNaturalOrder(Suite& suite) {
    Dice dice;
    const auto name = [&] { return fmt::format("holiday in Orléans {}.jpg", 1 + dice.roll(200)); };
    std::vector<Pair> pairs;
    std::vector<WidePair> widePairs;
    for (std::size_t i = 0; i < kPairs; ++i) {
        pairs.push_back({name(), name()});
        widePairs.push_back({widen(pairs[i].a), widen(pairs[i].b)});
    }
    const auto ours = [](const Pair& pair) { return xoStringUtils::CompareUTF8Natural(pair.a, pair.b); };
    for (std::size_t i = 0; i < kPairs; ++i)
        require(ours(pairs[i]) == compareLogical(pairs[i]) && ours(pairs[i]) == compareWide(widePairs[i]),
                "the sides compare names differently");
    suite.compare("text", "compare file names naturally", kPairs, compareEach(pairs, ours),
                  {{"widen, StrCmpLogicalW", compareEach(pairs, &compareLogical)},
                   {"limit: CompareStringEx, wide texts", compareEach(widePairs, &compareWide)}});
}

}  // namespace

void measureText(Suite& suite) {
    if (!suite.wants("text")) return;
    measureSplit(suite);
    measureReplace(suite);
    measureHex(suite);
    measureNumbers(suite);
    measureUtf8(suite);
    measureVersions(suite);
    measureNaturalOrder(suite);
}

}  // namespace bench
