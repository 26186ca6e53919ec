// What a program that copies files shows to people, and how it reads the limits that they type.
#include <iostream>
#include <string>

#include "xoSystem/xoMathUtils.h"

namespace {

using Math = xo::xoMathUtils;

void report(std::uint64_t files, std::uint64_t bytes, double seconds) {
    const double perSecond = static_cast<double>(bytes) / seconds;
    std::cout << Math::CountToText(files) << " files, " << Math::BytesToText(bytes) << " ("
              << Math::BytesToText(bytes, Math::ByteUnitWindows) << " in the Explorer) in "
              << Math::DurationToText(seconds) << ", " << Math::SiToText(perSecond, "B/s") << '\n';
}

// "20 MB / 1h 30m": how much, and for how long.
bool readLimits(const std::string& typed, std::uint64_t& bytes, double& seconds) {
    const std::size_t slash = typed.find('/');
    return slash != std::string::npos && Math::ParseBytes(typed.substr(0, slash), bytes) &&
           Math::ParseDuration(typed.substr(slash + 1), seconds);
}

}  // namespace

int main() {
    report(3, 1023, 0.0142);
    report(1204, 1468006, 59.96);
    report(1234567, 2791728742400, 7380);

    for (const char* const typed : {"20 MB / 1h 30m", "250Mi / 2:03:09", "1.5 GiB / 90", "20 / 1 month"}) {
        std::uint64_t bytes = 0;
        double seconds = 0;
        std::cout << typed << ": ";
        if (readLimits(typed, bytes, seconds)) {
            std::cout << bytes << " bytes, " << Math::DurationToClock(seconds) << '\n';
        } else {
            std::cout << "not understood\n";
        }
    }

    std::cout << Math::PercentToText(0.4711, 1) << ", " << Math::SignificantToText(0.00012345, 2) << ", "
              << Math::RealToText(0.1) << '\n';
    return 0;
}
