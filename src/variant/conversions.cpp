// Conversions of variants to other types: those that always give a value, and those that refuse to lose information.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "text/numberText.h"
#include "variant/readNumber.h"
#include "variant/textForm.h"
#include "xoSystem/xoVariant.h"

namespace xo {
namespace {

constexpr double kIntegerEnd = 9223372036854775808.0;  // 2^63, the first double beyond the integers

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> texts) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

// Towards 0, to the nearest end of the range beyond it, and 0 for a NaN: a plain cast of such values is undefined
// behaviour.
std::int64_t truncate(double value) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (std::isnan(value)) return 0;
    if (value >= kIntegerEnd) return (Limits::max)();
    if (value < -kIntegerEnd) return (Limits::min)();
    return static_cast<std::int64_t>(value);
}

// Whether a text that was read as an end of the range is that number. The parser also returns the end for every number
// beyond it, so the digits are read once more, by a conversion that fails beyond 64 bits.
bool isEndOfRange(std::string_view text, std::int64_t value) {
    text.remove_prefix((std::min)(text.find_first_of("0123456789"), text.size()));
    int base = 10;
    if (text.size() > 1 && text[0] == '0') {
        base = (text[1] | 0x20) == 'x' ? 16 : 8;
        text.remove_prefix(base == 16 ? 2 : 1);
    }
    std::uint64_t magnitude = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    return result.ec == std::errc() &&
           magnitude == (value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value));
}

// Stricter than the parser: an empty text is not a number, and a number beyond the range is refused.
bool readInteger(std::string_view text, std::int64_t& value) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (text.empty() || !text::parseInteger(text, value)) return false;
    return (value != (Limits::max)() && value != (Limits::min)()) || isEndOfRange(text, value);
}

// Whether a double is the whole number whose digits it was read from. They begin with no zero.
bool holdsExactly(double value, std::string_view digits) {
    // Any integer of up to 15 digits is exact in a double.
    if (digits.size() <= std::numeric_limits<double>::digits10) return true;
    char exact[std::numeric_limits<double>::max_exponent10 + 1];  // the largest double has as many digits
    const auto result = std::to_chars(exact, std::end(exact), std::fabs(value), std::chars_format::fixed, 0);
    return digits == std::string_view(exact, static_cast<std::size_t>(result.ptr - exact));
}

// Fractions and texts with an exponent may be rounded, but not to nothing.
bool readReal(std::string_view text, double& value) {
    if (text.empty() || !text::parseReal(text, value) || std::isinf(value)) return false;
    const std::string_view mantissa = text.substr(0, text.find_first_of("eE"));
    const std::size_t first = mantissa.find_first_of("123456789");
    // All digits are zeros, so the value is 0 exactly.
    if (first == std::string_view::npos) return true;
    const bool isWhole = text.find_first_of(".eE") == std::string_view::npos;
    return isWhole ? holdsExactly(value, text.substr(first)) : value != 0.0;
}

// Each of these functions takes a value of any type but the one that it converts to. False leaves out unchanged.

bool losslessInteger(const xoVariant& from, xoVariant& out) {
    std::int64_t value = 0;
    switch (from.getType()) {
        case xoVariant::BOOL:
        case xoVariant::DATETIME: value = from.toInteger(); break;
        case xoVariant::REAL: {
            const double real = from.toReal();
            // In this form the first test also refuses a NaN.
            if (!(real >= -kIntegerEnd && real < kIntegerEnd) || real != std::trunc(real)) return false;
            value = static_cast<std::int64_t>(real);  // -0.0 becomes 0, which is equal to it
            break;
        }
        case xoVariant::STRING:
            if (!readInteger(from.getString(), value)) return false;
            break;
        default: return false;
    }
    out = value;
    return true;
}

bool losslessReal(const xoVariant& from, xoVariant& out) {
    double value = 0.0;
    switch (from.getType()) {
        case xoVariant::BOOL: value = from.toReal(); break;
        case xoVariant::INTEGER:
            value = from.toReal();
            // The largest integers round up to 2^63, whose cast back is undefined: that comparison comes first.
            if (value >= kIntegerEnd || static_cast<std::int64_t>(value) != from.toInteger()) return false;
            break;
        case xoVariant::STRING:
            if (!readReal(from.getString(), value)) return false;
            break;
        default: return false;
    }
    out = value;
    return true;
}

bool losslessBool(const xoVariant& from, xoVariant& out) {
    bool value = false;
    switch (from.getType()) {
        case xoVariant::INTEGER:
        case xoVariant::REAL:
            // A large INTEGER may be rounded here, but not to 0 or 1.
            value = from.toReal() == 1.0;
            if (!value && from.toReal() != 0.0) return false;
            break;
        case xoVariant::STRING:
            value = isOneOf(from.getString(), {"true", "True", "TRUE"});
            if (!value && !isOneOf(from.getString(), {"false", "False", "FALSE"})) return false;
            break;
        default: return false;
    }
    out = value;
    return true;
}

bool losslessString(const xoVariant& from, xoVariant& out) {
    switch (from.getType()) {
        case xoVariant::INTEGER:
        case xoVariant::BOOL: break;
        case xoVariant::REAL: {
            double value = 0.0;
            // The text has six significant digits. A NaN is unequal to itself and an infinity is not read back, so
            // neither is converted.
            if (!text::parseReal(from.toString(), value) || value != from.toReal()) return false;
            break;
        }
        case xoVariant::STRINGLIST:
            if (from.getStringList().size() != 1) return false;
            break;
        default: return false;
    }
    out = from.toString();
    return true;
}

// A STRING becomes a list of one. Other elements than strings would come back as strings, so their list is refused.
bool losslessStringList(const xoVariant& from, xoVariant& out) {
    const auto isString = [](const xoVariant& element) { return element.getType() == xoVariant::STRING; };
    const auto& list = from.getList();
    const bool allStrings = from.getType() == xoVariant::LIST && std::all_of(list.begin(), list.end(), isString);
    if (from.getType() != xoVariant::STRING && !allStrings) return false;
    out = from.toStringList();
    return true;
}

}  // namespace

// toBool, toInteger and toReal return a value of their own type inline, so these three get only the other types.

bool xoVariant::convertToBool() const {
    switch (mType) {
        case INTEGER: return mPayload.integer != 0;
        case REAL: return mPayload.real != 0.0;  // a NaN too is unequal to 0
        case STRING: return isOneOf(*mPayload.text, {"true", "True", "TRUE", "t", "1"});
        default: return false;
    }
}

std::int64_t xoVariant::convertToInteger() const {
    switch (mType) {
        case DATETIME: return mPayload.integer;
        case REAL: return truncate(mPayload.real);
        case STRING: {
            std::int64_t value = 0;
            return text::parseInteger(*mPayload.text, value) ? value : 0;
        }
        case BOOL: return mPayload.boolean ? 1 : 0;
        default: return 0;
    }
}

double xoVariant::convertToReal() const {
    switch (mType) {
        case INTEGER: return static_cast<double>(mPayload.integer);
        case STRING: {
            double value = 0.0;
            return text::parseReal(*mPayload.text, value) ? value : 0.0;
        }
        case BOOL: return mPayload.boolean ? 1.0 : 0.0;
        default: return std::numeric_limits<double>::quiet_NaN();
    }
}

std::string xoVariant::toString() const {
    std::string text;
    variant::appendText(text, *this);
    return text;
}

std::vector<std::string> xoVariant::toStringList() const {
    if (mType == STRINGLIST) return *mPayload.strings;
    std::vector<std::string> strings;
    if (mType == STRING) strings.push_back(*mPayload.text);
    if (mType == LIST) {
        strings.reserve(mPayload.list->size());
        for (const xoVariant& element : *mPayload.list) strings.push_back(element.toString());
    }
    return strings;
}

xoVariant::xoVariantListImpl xoVariant::toList() const {
    if (mType == LIST) return *mPayload.list;
    xoVariantListImpl list;
    if (mType == STRINGLIST) {
        list.reserve(mPayload.strings->size());
        for (const std::string& string : *mPayload.strings) list.push_back(string);
    }
    return list;
}

xoVariant::xoVariantMapImpl xoVariant::toMap() const { return getMap(); }  // empty for all other types

xoVariant::DateTime xoVariant::toDateTime() const {
    return DateTime(mType == INTEGER || mType == DATETIME ? mPayload.integer : 0);
}

// Each function writes out last, from a complete value, because out may be this variant.
bool xoVariant::convertLosslessTo(Type type, xoVariant& out) const {
    if (type == mType) {
        out = *this;
        return true;
    }
    switch (type) {
        case INTEGER: return losslessInteger(*this, out);
        case REAL: return losslessReal(*this, out);
        case BOOL: return losslessBool(*this, out);
        case STRING: return losslessString(*this, out);
        case STRINGLIST: return losslessStringList(*this, out);
        case LIST:
            if (mType != STRINGLIST) return false;
            out = toList();
            return true;
        case DATETIME:
            if (mType != INTEGER) return false;
            out = toDateTime();
            return true;
        default: return false;
    }
}

// A text that is not a number becomes a STRING.
xoVariant xoVariant::BuildFromString(std::string_view text) {
    xoVariant number;
    if (variant::readNumber(text, number)) return number;
    return text;
}

}  // namespace xo
