// The natural order of two texts, with a byte 1E between them: either way round, and of simple texts which comes first.
#include <algorithm>

#include "fuzz.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

constexpr std::size_t kMostDigits = 16;  // longer numbers have their own order under Wine
constexpr int kDoubt = 2;

// Of lower-case letters and digits without zeros in front: digits before letters, runs of digits by their value.
int compareSimple(std::string_view a, std::string_view b) {
    constexpr char kDigits[] = "0123456789";
    while (!a.empty() && !b.empty()) {
        const std::size_t runOfA = (std::min)(a.find_first_not_of(kDigits), a.size());
        const std::size_t runOfB = (std::min)(b.find_first_not_of(kDigits), b.size());
        if ((std::max)(runOfA, runOfB) > kMostDigits) return kDoubt;
        if (runOfA != runOfB && runOfA != 0 && runOfB != 0) return runOfA < runOfB ? -1 : 1;
        if (a[0] != b[0]) return a[0] < b[0] ? -1 : 1;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
}

bool isSimple(const std::string& text) {
    char before = 'a';
    for (const char c : text) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit && (c < 'a' || c > 'z')) return false;
        if (c == '0' && (before < '0' || before > '9')) return false;
        before = c;
    }
    return true;
}

void checkNaturalOrder(const std::string& input) {
    Bytes bytes(input);
    const std::string a = bytes.until('\x1E');
    const std::string b = bytes.rest();
    for (const bool caseInsensitive : {false, true}) {
        const int result = xoStringUtils::CompareUTF8Natural(a, b, caseInsensitive);
        require(result >= -1 && result <= 1, "the result ", result);
        require(xoStringUtils::CompareUTF8Natural(b, a, caseInsensitive) == -result, "the other way round");
        require(xoStringUtils::CompareUTF8Natural(a, a, caseInsensitive) == 0, "a text differs from itself");
        const int expected = isSimple(a) && isSimple(b) ? compareSimple(a, b) : kDoubt;
        require(expected == kDoubt || result == expected, a, " with ", b, " is ", result);
    }
    require(!xoStringUtils::UTF8NaturalSortFunction(a, b) || !xoStringUtils::UTF8NaturalSortFunction(b, a), "order");
}

std::string generateNaturalOrder(Random& random) {
    static const std::vector<std::string_view> pieces = {
        "file", "a", "b", "1", "2", "9", "10", "99", "100", "12345678901234567890", "0"};
    static const std::vector<std::string_view> wild = {"file", "A",        "1",         "007",          " ",    "-",
                                                       "'",    "\xC3\xA9", "e\xCC\x81", "\xE4\xB8\xAD", "\xFF", "."};
    const auto& from = random.oneIn(2) ? pieces : wild;
    const std::string common = random.join(from, 2);
    return common + random.join(from, 3) + '\x1E' + common + random.join(from, 3);
}

}  // namespace

const Target kNaturalOrder = {"naturalOrder", 100000, &generateNaturalOrder, &checkNaturalOrder};

}  // namespace xo::fuzz
