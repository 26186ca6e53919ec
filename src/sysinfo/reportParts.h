// The parts of the report: each fills its section with what it knows. A value that is not known has no key.
#ifndef XO_SYSINFO_REPORTPARTS_H
#define XO_SYSINFO_REPORTPARTS_H

#include <cstdint>
#include <string>

#include "xoSystem/xoSystemUtils.h"
#include "xoSystem/xoVariant.h"

namespace xo::sysinfo {

// A map of the report, and below it others.
class Section {
public:
    explicit Section(xoVariant::xoVariantMapImpl& map) : mMap(map) {}

    // Sets a value; a text or number that is unknown is left out.
    void set(const char* key, const std::string& text) {
        if (!text.empty()) mMap[key] = text;
    }
    void setNumber(const char* key, std::uint64_t number) {
        if (number != 0) mMap[key] = static_cast<std::int64_t>(number);
    }
    // 0 is a value too.
    void setAnyNumber(const char* key, std::int64_t number) { mMap[key] = number; }
    void setFlag(const char* key, bool flag) { mMap[key] = flag; }

    Section below(const std::string& key) const { return Section(mMap[key].editMap()); }
    Section below(std::size_t number) const { return below(std::to_string(number)); }

private:
    xoVariant::xoVariantMapImpl& mMap;
};

// The version of Wine; empty on Windows. What Wine makes up of disks and memory modules is left out of the report.
std::string wineVersion();

void reportCpu(Section section);
void reportOs(Section section, bool withIdentity);
void reportMemory(Section section);
void reportMachine(Section section, bool withIdentity);
void reportDisplays(Section section);

// These may never come back. Each returns its section.
xoVariant::xoVariantMapImpl reportGraphics();
xoVariant::xoVariantMapImpl reportVolumes(bool withIdentity);
xoVariant::xoVariantMapImpl reportDisks(bool withIdentity);

}  // namespace xo::sysinfo

#endif
