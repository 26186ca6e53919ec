// Versions: xo::xoVersion describes and compares versions of the host's own components, xoSystem::Version is the
// version of this library, and a registry lists the versions of other libraries in the process for system reports.
//
//     const xo::xoVersion needed(1, 9, 5);
//     if (component.version() < needed) return tooOld(component.version().getDescription());
//
//     xo::xoLogObject(xo::xoLogInfo) << "xoSystem " << xoSystem::Version::GetDescStringMajorMinorRelease();
#ifndef XOSYSTEM_XOVERSION_H
#define XOSYSTEM_XOVERSION_H

#include <cstdint>
#include <string>
#include <tuple>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class xoVariant;

// A plain value. Versions are compared by their three numbers alone: 1.10.0 is greater than 1.9.5.
class XOSYSTEM_API xoVersion {
public:
    xoVersion() = default;  // 0.0.0
    // Year and month of the release are stored and not used.
    xoVersion(unsigned majorVersion, unsigned minorVersion, unsigned revision, const std::string& description = {},
              unsigned year = 0, unsigned month = 0);
    virtual ~xoVersion();
    xoVersion(const xoVersion&) = default;
    xoVersion(xoVersion&&) = default;
    xoVersion& operator=(const xoVersion&) = default;
    xoVersion& operator=(xoVersion&&) = default;

    // Replaces all values.
    void setVersion(unsigned majorVersion, unsigned minorVersion, unsigned revision,
                    const std::string& description = {}, unsigned year = 0, unsigned month = 0);

    // The values as they were given.
    unsigned getMajorVersion() const { return mMajor; }
    unsigned getMinorVersion() const { return mMinor; }
    unsigned getRevision() const { return mRevision; }
    const std::string& getDescription() const { return mDescription; }

    // Compare the three numbers, the major one first, and nothing else.
    bool operator==(const xoVersion& other) const { return numbers() == other.numbers(); }
    bool operator!=(const xoVersion& other) const { return numbers() != other.numbers(); }
    bool operator<(const xoVersion& other) const { return numbers() < other.numbers(); }
    bool operator<=(const xoVersion& other) const { return numbers() <= other.numbers(); }
    bool operator>(const xoVersion& other) const { return numbers() > other.numbers(); }
    bool operator>=(const xoVersion& other) const { return numbers() >= other.numbers(); }

private:
    std::tuple<unsigned, unsigned, unsigned> numbers() const { return {mMajor, mMinor, mRevision}; }

    unsigned mMajor = 0;
    unsigned mMinor = 0;
    unsigned mRevision = 0;
    unsigned mYear = 0;
    unsigned mMonth = 0;
    std::string mDescription;
};

namespace impl {

// The versions of other libraries in the process. A library registers itself, typically while it loads, and may
// unregister itself when it unloads; neither needs this library to be initialised. Names and texts are copied. The
// entries are kept by terminateXoSystem: the libraries stay loaded and do not register again. Any thread may call
// these.
//
// Registering a name again replaces its version. A null name is ignored, a null version is an empty text.
XOSYSTEM_API void RegisterThirdPartyLibVersionInfo(const char* name, const char* version);
// Nothing happens for a name that is not registered, or null.
XOSYSTEM_API void UnRegisterThirdPartyLibVersionInfo(const char* name);

// Calls visit for each entry in the order of the names, under the registry's lock: visit must not register. It must not
// be null; user is handed through.
XOSYSTEM_API void VisitThirdPartyLibVersions(void (*visit)(const std::string& name, const std::string& version,
                                                           void* user),
                                             void* user);

// A copy for a system report, xoVariant::xoVariantMapImpl: under each name a STRING. The caller includes xoVariant.h.
template <class Variant = xoVariant>
typename Variant::xoVariantMapImpl GetThirdPartyLibVersions() {
    typename Variant::xoVariantMapImpl versions;
    VisitThirdPartyLibVersions(
        [](const std::string& name, const std::string& version, void* map) {
            (*static_cast<typename Variant::xoVariantMapImpl*>(map))[name] = version;
        },
        &versions);
    return versions;
}

}  // namespace impl
}  // namespace xo

namespace xoSystem {

// The version of the loaded library, which may differ from the one that the host was built with. The texts are valid as
// long as the library is loaded. The argument of the last three functions has no effect; older callers pass it.
class XOSYSTEM_API Version {
public:
    Version() = delete;

    // The numbers of the version, and the date of the release.
    static unsigned GetMajor();
    static unsigned GetMinor();
    static unsigned GetRelease();
    static unsigned GetRevision();
    static std::uint16_t GetYear();
    static std::uint8_t GetMonth();  // 1 to 12

    static const char* GetDescStringMajorMinorReleaseRevisionDate();               // "3.0.0.9799 2020-5"
    static const char* GetDescStringMajorMinorReleaseRevision(bool form = false);  // "3.0.0.9799"
    static const char* GetDescStringMajorMinorRelease(bool form = false);          // "3.0.0"
    static const char* GetDescStringMajorMinor(bool form = false);                 // "3.0"
};

}  // namespace xoSystem

namespace xo {
namespace xoSystem = ::xoSystem;
}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
