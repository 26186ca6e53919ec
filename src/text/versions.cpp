#include <algorithm>
#include <limits>
#include <string_view>

#include "text/ascii.h"
#include "text/numberText.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

using Components = std::vector<std::uint32_t>;

// Cuts at the dots as Split does: a dot at the very end opens no further component.
bool parseVersion(std::string_view text, Components& components) {
    components.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '.')) + 1);
    while (!text.empty()) {
        const std::size_t dot = (std::min)(text.find('.'), text.size());
        std::int64_t number = 0;
        if (!text::parseInteger(text::trimmed(text.substr(0, dot)), number)) return false;
        if (number < 0 || number > (std::numeric_limits<std::uint32_t>::max)()) return false;
        components.push_back(static_cast<std::uint32_t>(number));
        text.remove_prefix((std::min)(dot + 1, text.size()));
    }
    return true;
}

}  // namespace

xoStringUtils::SoftwareVersionComparisonResult xoStringUtils::compareSoftwareVersion(const std::string& a,
                                                                                     const std::string& b,
                                                                                     std::uint64_t maxComponents) {
    Components first;
    Components second;
    if (!parseVersion(a, first) || !parseVersion(b, second)) return SoftwareVersionInvalid;

    if (second.size() > maxComponents) second.resize(maxComponents);
    first.resize(second.size());  // b alone decides how much is compared
    if (second.empty()) return SoftwareVersionInvalid;
    const auto [one, other] = std::mismatch(first.begin(), first.end(), second.begin());
    if (one == first.end()) return SoftwareVersionEqual;
    return *one < *other ? SoftwareVersionOlder : SoftwareVersionNewer;
}

}  // namespace xo
