// Grants everyone full access to a file or folder.
#include "platform/handle.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

#include <aclapi.h>

namespace xo {
namespace {

// An access list with one entry: full access for the group. Empty when the call fails. The ANSI form suffices, because
// the group is given by its identifier and not by a name.
platform::LocalMemory<ACL> fullAccessFor(PSID group) {
    EXPLICIT_ACCESS_A access{};
    access.grfAccessPermissions = GENERIC_ALL;
    access.grfAccessMode = SET_ACCESS;
    access.grfInheritance = NO_INHERITANCE;
    access.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    access.Trustee.TrusteeType = TRUSTEE_IS_WELL_KNOWN_GROUP;
    access.Trustee.ptstrName = static_cast<LPSTR>(group);

    platform::LocalMemory<ACL> list;
    if (::SetEntriesInAclA(1, &access, /*OldAcl=*/nullptr, list.put()) != ERROR_SUCCESS) return {};
    return list;
}

}  // namespace

bool xoDirUtils::GrantAllFilePermissionsUtf8(const std::string& path) {
    alignas(SID) BYTE everyone[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof everyone;
    if (!::CreateWellKnownSid(WinWorldSid, /*DomainSid=*/nullptr, everyone, &size)) return false;
    const platform::LocalMemory<ACL> list = fullAccessFor(everyone);
    if (!list) return false;  // a null list would remove all access control instead

    SECURITY_DESCRIPTOR descriptor;
    if (!::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION)) return false;
    if (!::SetSecurityDescriptorDacl(&descriptor, TRUE, list.get(), /*bDaclDefaulted=*/FALSE)) return false;
    // Not SetNamedSecurityInfoW, which would also change the permissions inherited by the files in a folder.
    return ::SetFileSecurityW(platform::toApiPath(path).c_str(), DACL_SECURITY_INFORMATION, &descriptor) != FALSE;
}

}  // namespace xo
