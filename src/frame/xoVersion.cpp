// Versions of this library and of those that programs register.
#include "xoSystem/xoVersion.h"

#include "frame/buildVersion.h"
#include "platform/slimLock.h"
#include "xoSystem/xoVariant.h"

namespace xo {

xoVersion::xoVersion(unsigned majorVersion, unsigned minorVersion, unsigned revision, const std::string& description,
                     unsigned year, unsigned month) {
    setVersion(majorVersion, minorVersion, revision, description, year, month);
}

xoVersion::~xoVersion() = default;

void xoVersion::setVersion(unsigned majorVersion, unsigned minorVersion, unsigned revision,
                           const std::string& description, unsigned year, unsigned month) {
    mMajor = majorVersion;
    mMinor = minorVersion;
    mRevision = revision;
    mYear = year;
    mMonth = month;
    mDescription = description;
}

namespace {

// Other libraries register from the constructors and destructors of static objects, whose order is unknown. So the
// registry has neither a constructor nor a destructor of its own that could run too late or too early.
platform::SlimLock registryLock;
xoVariant::xoVariantMapImpl* registry XO_GUARDED_BY(registryLock) = nullptr;  // null when there are no entries

}  // namespace

void impl::RegisterThirdPartyLibVersionInfo(const char* name, const char* version) {
    if (!name) return;
    // Copied before the lock is taken: a bad pointer that faults under the lock could leave it locked.
    const std::string key = name;
    xoVariant value = version;
    const platform::SlimLocker locker(registryLock);
    if (!registry) registry = new xoVariant::xoVariantMapImpl();
    // A second registration of a name replaces its version.
    (*registry)[key] = std::move(value);
}

void impl::UnRegisterThirdPartyLibVersionInfo(const char* name) {
    if (!name) return;
    const std::string key = name;
    const platform::SlimLocker locker(registryLock);
    if (!registry) return;
    // The registry is deleted with its last entry, so that nothing is left when all modules have unregistered.
    registry->remove(key);
    if (!registry->empty()) return;
    delete registry;
    registry = nullptr;
}

// The visitor is called under the lock and must not register or unregister versions.
void impl::VisitThirdPartyLibVersions(void (*visit)(const std::string& name, const std::string& version, void* user),
                                      void* user) {
    const platform::SlimLocker locker(registryLock);
    if (!registry) return;
    for (const auto& [name, version] : *registry) visit(name, version.getString(), user);
}

// Exported for programs that were built when the header declared this function and not a template.
namespace impl {
// NOLINTNEXTLINE(misc-use-internal-linkage): no header declares it now
XOSYSTEM_API xoVariant::xoVariantMapImpl GetThirdPartyLibVersions() { return GetThirdPartyLibVersions<xoVariant>(); }
}  // namespace impl

}  // namespace xo

namespace xoSystem {

namespace build = xo::frame;

unsigned Version::GetMajor() { return build::kMajor; }

unsigned Version::GetMinor() { return build::kMinor; }

unsigned Version::GetRelease() { return build::kRelease; }

unsigned Version::GetRevision() { return build::kRevision; }

std::uint16_t Version::GetYear() { return build::kYear; }

std::uint8_t Version::GetMonth() { return build::kMonth; }

const char* Version::GetDescStringMajorMinorReleaseRevisionDate() { return build::kMajorMinorReleaseRevisionDate; }

const char* Version::GetDescStringMajorMinorReleaseRevision(bool) { return build::kMajorMinorReleaseRevision; }

const char* Version::GetDescStringMajorMinorRelease(bool) { return build::kMajorMinorRelease; }

const char* Version::GetDescStringMajorMinor(bool) { return build::kMajorMinor; }

}  // namespace xoSystem
