// Comparison of version numbers such as "1.10.2", component by component.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

#include "text/ascii.h"
#include "text/numberText.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

enum class Step { Number, End, Invalid };  // a number was read, none is left, or a component is not one

// Divides at the dots as Split does: a dot at the end is not followed by another component.
Step nextComponent(std::string_view& rest, std::uint32_t& number) {
    if (rest.empty()) return Step::End;
    std::size_t dot = 0;
    while (dot != rest.size() && rest[dot] != '.') ++dot;
    std::int64_t value = 0;
    if (!text::parseInteger(text::trimmed(rest.substr(0, dot)), value)) return Step::Invalid;
    if (value < 0 || value > (std::numeric_limits<std::uint32_t>::max)()) return Step::Invalid;
    number = static_cast<std::uint32_t>(value);
    rest.remove_prefix((std::min)(dot + 1, rest.size()));
    return Step::Number;
}

}  // namespace

xoStringUtils::SoftwareVersionComparisonResult xoStringUtils::compareSoftwareVersion(const std::string& a,
                                                                                     const std::string& b,
                                                                                     std::uint64_t maxComponents) {
    std::string_view restOfA = a;
    std::string_view restOfB = b;
    auto result = b.empty() || maxComponents == 0 ? SoftwareVersionInvalid : SoftwareVersionEqual;
    for (std::uint64_t i = 0;; ++i) {  // to both ends, even after a difference: a later component may be invalid
        std::uint32_t first = 0;
        std::uint32_t second = 0;
        const Step one = nextComponent(restOfA, first);
        const Step other = nextComponent(restOfB, second);
        if (one == Step::Invalid || other == Step::Invalid) return SoftwareVersionInvalid;
        if (one == Step::End && other == Step::End) return result;
        // A component that the first version lacks counts as 0. Components that only the first version has are not
        // compared.
        if (other == Step::Number && i < maxComponents && result == SoftwareVersionEqual && first != second)
            result = first < second ? SoftwareVersionOlder : SoftwareVersionNewer;
    }
}

}  // namespace xo
