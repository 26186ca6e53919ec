// The parts of the report. Each fills its section; a value that cannot be determined has no key.
#ifndef XO_SYSINFO_REPORTPARTS_H
#define XO_SYSINFO_REPORTPARTS_H

#include <cstdint>
#include <string>

#include "xoSystem/xoSystemUtils.h"
#include "xoSystem/xoVariant.h"

namespace xo::sysinfo {

// A map of the report, into which values and further sections are set. It refers to the map, which must outlive it.
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

    // The section under a key, made if it is absent. Lists are sections with the keys "0", "1" and so on, so that an
    // INI file can hold them.
    Section below(const std::string& key) const { return Section(mMap[key].editMap()); }
    Section below(std::size_t number) const { return below(std::to_string(number)); }

private:
    xoVariant::xoVariantMapImpl& mMap;
};

// The version of Wine; empty on Windows. Wine invents disks and memory modules, which the report leaves out.
std::string wineVersion();

// These return quickly and run on the caller's thread. Names of persons and serial numbers are added only withIdentity.
void reportCpu(Section section);
void reportOs(Section section, bool withIdentity);
void reportMemory(Section section);
void reportMachine(Section section, bool withIdentity);
void reportDisplays(Section section);

// These ask drivers and may never return, so each runs as an errand. They return their section instead of writing into
// the report, which a late thread must not touch.
xoVariant::xoVariantMapImpl reportGraphics();
xoVariant::xoVariantMapImpl reportVolumes(bool withIdentity);
xoVariant::xoVariantMapImpl reportDisks(bool withIdentity);

}  // namespace xo::sysinfo

#endif
