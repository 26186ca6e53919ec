// Enumerators from and to text, by the table of names of each enumeration.
#include "xoSystem/xoEnumHelper.h"

#include <algorithm>
#include <charconv>

#include "text/ascii.h"
#include "xoSystem/xoVariant.h"

namespace xo {
namespace {

// Flags are combined as unsigned numbers; a negative value keeps its bits.
std::uint64_t bitsOf(std::int64_t value) { return static_cast<std::uint64_t>(value); }

// Each step clears the lowest bit that is set.
int countBits(std::uint64_t bits) {
    int count = 0;
    for (; bits != 0; bits &= bits - 1) ++count;
    return count;
}

// "-5", "70001" or "0x1F"; up to 2^64 - 1, which is -1.
bool readNumber(std::string_view text, std::int64_t& value) {
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative) text.remove_prefix(1);
    const bool isHexadecimal = text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x';
    if (isHexadecimal) text.remove_prefix(2);
    const char* const end = text.data() + text.size();
    std::uint64_t bits = 0;
    const auto result = std::from_chars(text.data(), end, bits, isHexadecimal ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != end) return false;
    if (isNegative && (isHexadecimal || bits > std::uint64_t{1} << 63)) return false;
    value = static_cast<std::int64_t>(isNegative ? 0 - bits : bits);
    return true;
}

// The index of the first entry with that value, or getCount(). Of several names for a value the first one is written.
std::size_t findValue(const EnumHelperInterface& helper, std::int64_t value) {
    const std::size_t count = helper.getCount();
    std::size_t index = 0;
    while (index != count && helper.getValue(index) != value) ++index;
    return index;
}

// The index of the entry with that name, or getCount(). An exact match is preferred to one that differs in case,
// wherever it is in the table.
std::size_t findName(const EnumHelperInterface& helper, std::string_view name) {
    const std::size_t count = helper.getCount();
    std::size_t found = count;
    for (std::size_t index = 0; index != count; ++index) {
        const std::string_view known = helper.getName(index);
        if (known == name) return index;
        if (found == count && text::equalIgnoringCase(known, name)) found = index;
    }
    return found;
}

// Whether the number may be a value: any combination of bits for flags, else one of the entries.
bool readNumberOf(const EnumHelperInterface& helper, std::int64_t number) {
    return helper.areFlags() || findValue(helper, number) != helper.getCount();
}

// A name or a number, without blanks around.
bool readOne(const EnumHelperInterface& helper, std::string_view text, std::int64_t& value) {
    const std::size_t index = findName(helper, text);
    if (index != helper.getCount()) {
        value = helper.getValue(index);
        return true;
    }
    std::int64_t number = 0;
    if (!readNumber(text, number) || !readNumberOf(helper, number)) return false;
    value = number;
    return true;
}

// Takes the entry with the most bits first, and the first one in the table of those with equally many, so that a name
// for a combination replaces the names of its parts. An entry of 0 is never chosen. Bits without a name are appended as
// a hexadecimal number.
std::string flagsText(const EnumHelperInterface& helper, std::uint64_t bits) {
    const std::size_t count = helper.getCount();
    std::size_t chosen[64];  // each entry takes at least one of the 64 bits
    std::size_t chosenCount = 0;
    for (;;) {
        std::size_t best = count;
        int mostBits = 0;
        for (std::size_t index = 0; index != count; ++index) {
            const std::uint64_t entry = bitsOf(helper.getValue(index));
            // An entry with a bit that is not left would name too much.
            if ((entry & ~bits) != 0 || countBits(entry) <= mostBits) continue;
            best = index;
            mostBits = countBits(entry);
        }
        if (best == count) break;
        chosen[chosenCount++] = best;
        bits &= ~bitsOf(helper.getValue(best));
    }
    // In the order of the table, not in that of the choice.
    std::sort(chosen, chosen + chosenCount);

    std::string text;
    for (std::size_t i = 0; i != chosenCount; ++i) {
        if (i != 0) text += '|';
        text += helper.getName(chosen[i]);
    }
    if (bits == 0) return text;
    char digits[16];
    if (!text.empty()) text += '|';
    return text.append("0x").append(digits, std::to_chars(digits, std::end(digits), bits, 16).ptr);
}

}  // namespace

EnumHelperInterface::~EnumHelperInterface() = default;

std::string EnumHelperInterface::toText(std::int64_t value) const {
    // First, so that a combination of flags, or 0, may have a name of its own.
    const std::size_t index = findValue(*this, value);
    if (index != getCount()) return std::string(getName(index));
    if (areFlags() && value != 0) return flagsText(*this, bitsOf(value));
    return std::to_string(value);
}

bool EnumHelperInterface::fromText(std::string_view text, std::int64_t& value) const {
    text = text::trimmed(text);
    // As a whole first: the name of an entry may itself contain a separator.
    if (readOne(*this, text, value)) return true;
    if (!areFlags()) return false;
    std::uint64_t bits = 0;
    for (bool isEmpty = text.empty(); !isEmpty;) {
        const std::size_t end = (std::min)(text.find_first_of("|,"), text.size());
        std::int64_t one = 0;
        if (!readOne(*this, text::trimmed(text.substr(0, end)), one)) return false;
        bits |= bitsOf(one);
        isEmpty = end == text.size();
        if (!isEmpty) text.remove_prefix(end + 1);
    }
    value = static_cast<std::int64_t>(bits);
    return true;
}

bool EnumHelperInterface::fromVariant(const xoVariant& variant, std::int64_t& value) const {
    switch (variant.getType()) {
        case xoVariant::STRING: return fromText(variant.getString(), value);
        case xoVariant::INTEGER:
            if (!readNumberOf(*this, variant.toInteger())) return false;
            value = variant.toInteger();
            return true;
        case xoVariant::STRINGLIST:
        case xoVariant::LIST: break;
        default: return false;
    }
    if (!areFlags()) return false;
    std::uint64_t bits = 0;
    for (const xoVariant& element : variant.toList()) {
        // Lists inside are refused, so that the call below recurses by one level only.
        const bool isOne = element.getType() == xoVariant::STRING || element.getType() == xoVariant::INTEGER;
        std::int64_t one = 0;
        if (!isOne || !fromVariant(element, one)) return false;
        bits |= bitsOf(one);
    }
    value = static_cast<std::int64_t>(bits);
    return true;
}

}  // namespace xo
