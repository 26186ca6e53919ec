// The parsers of numbers for people: nothing is read halfway, and what is read comes back from its text. Sizes against
// long multiplication. An input is a text.
#include <cmath>
#include <cstring>

#include "fuzz.h"
#include "xoSystem/xoMathUtils.h"

namespace xo::fuzz {
namespace {

// "12.5" times the factor, rounded, digit by digit; false beyond 64 bits. The text is digits with one point at most.
bool multiply(const std::string& number, std::uint64_t factor, std::uint64_t& result) {
    std::string digits = number, product;
    const std::size_t point = (std::min)(number.find('.'), number.size());
    std::size_t places = 0;
    if (point != number.size()) {
        places = number.size() - point - 1;
        digits.erase(point, 1);
    }
    std::uint64_t carry = 0;  // at most 2^60 plus a tenth of it
    for (std::size_t i = digits.size(); i-- != 0;) {
        carry += static_cast<std::uint64_t>(digits[i] - '0') * factor;
        product.insert(product.begin(), static_cast<char>('0' + carry % 10));
        carry /= 10;
    }
    product = std::to_string(carry) + product;
    const std::string whole = product.substr(0, product.size() - places);
    const std::string rest = product.substr(whole.size());
    result = 0;
    for (const char c : whole) {
        const auto digit = static_cast<unsigned>(c - '0');
        if (result > (UINT64_MAX - digit) / 10) return false;
        result = result * 10 + digit;
    }
    const std::string half = "5" + std::string(rest.empty() ? 0 : rest.size() - 1, '0');
    const bool isUp = !rest.empty() && (rest > half || (rest == half && result % 2 != 0));
    if (isUp && result == UINT64_MAX) return false;
    result += isUp ? 1 : 0;
    return true;
}

void checkBytes(const std::string& text) {
    const std::string digits = text.substr(0, text.find_first_not_of("0123456789."));
    if (digits.find_first_of("0123456789") == std::string::npos || digits.find('.') != digits.rfind('.')) return;
    for (std::size_t power = 0; power != 7; ++power) {
        std::uint64_t expected = 0, read = 77;
        const bool fits = multiply(digits, std::uint64_t{1} << 10 * power, expected);
        const std::string quantity = digits + (power != 0 ? std::string(1, "kMGTPE"[power - 1]) + "iB" : "");
        require(xoMathUtils::ParseBytes(quantity, read) == fits, quantity, " fits: ", fits);
        require(read == (fits ? expected : 77), quantity, " is ", read, ", not ", expected);
    }
}

void checkAmounts(const std::string& input) {
    checkBytes(input);
    for (const auto unit : {xoMathUtils::ByteUnitBinary, xoMathUtils::ByteUnitDecimal, xoMathUtils::ByteUnitWindows}) {
        std::uint64_t bytes = 77, again = 0;
        if (xoMathUtils::ParseBytes(input, bytes, unit))
            require(xoMathUtils::ParseBytes(std::to_string(bytes), again, unit) && again == bytes, "bytes ", bytes);
        else
            require(bytes == 77, "a rejected text changed the bytes");
    }
    std::int64_t count = 77, sameCount = 0;
    if (xoMathUtils::ParseCount(input, count))
        require(xoMathUtils::ParseCount(xoMathUtils::CountToText(count), sameCount) && sameCount == count, "count");
    else
        require(count == 77, "a rejected text changed the count");

    const auto check = [&](bool (*parse)(std::string_view, double&), bool mayBeInfinite, const char* what) {
        double value = 77;
        if (!parse(input, value)) {
            require(value == 77, "a rejected text changed the ", what);
            return;
        }
        require(mayBeInfinite || std::isfinite(value), what, " is ", value);
        double again = 0;
        const std::string text = xoMathUtils::RealToText(value);
        require(xoMathUtils::ParseReal(text, again), "not read back: ", text);
        require(std::isnan(value) || std::memcmp(&value, &again, sizeof value) == 0, what, " is ", text);
        for (const int digits : {1, 2, 3, 17}) {
            require(!xoMathUtils::SiToText(value, "V", digits).empty(), "no text");
            require(!xoMathUtils::SignificantToText(value, digits).empty(), "no text");
        }
        if (!std::isfinite(value)) return;
        require(xoMathUtils::ParseDuration(xoMathUtils::DurationToText(value), again), "duration of ", text);
        require(xoMathUtils::ParseDuration(xoMathUtils::DurationToClock(value, 3), again), "clock of ", text);
    };
    check(&xoMathUtils::ParseDuration, false, "duration");
    check(&xoMathUtils::ParseReal, true, "real");
    check([](std::string_view text, double& value) { return xoMathUtils::ParseSi(text, value, "m"); }, false,
          "quantity");
}

std::string generateAmounts(Random& random) {
    static const std::vector<std::string_view> pieces = {"0",
                                                         "1",
                                                         "9",
                                                         "59",
                                                         "60",
                                                         "18446744073709551615",
                                                         "9223372036854775808",
                                                         "000",
                                                         "5",
                                                         ".",
                                                         ".",
                                                         ",",
                                                         ":",
                                                         ":",
                                                         "-",
                                                         "+",
                                                         " ",
                                                         "\t",
                                                         "k",
                                                         "Ki",
                                                         "MiB",
                                                         "GB",
                                                         "E",
                                                         "e",
                                                         "e308",
                                                         "e-320",
                                                         "i",
                                                         "b",
                                                         "bytes",
                                                         "w",
                                                         "d",
                                                         "h",
                                                         "m",
                                                         "min",
                                                         "s",
                                                         "ms",
                                                         "us",
                                                         "\xC2\xB5",
                                                         "\xCE\xBC",
                                                         "ns",
                                                         "Q",
                                                         "q",
                                                         "inf",
                                                         "nan",
                                                         "0x"};
    return random.join(pieces, 9);
}

}  // namespace

const Target kAmounts = {"amounts", 200000, &generateAmounts, &checkAmounts};

}  // namespace xo::fuzz
