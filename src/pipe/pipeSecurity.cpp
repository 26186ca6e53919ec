// Access to pipes, and their owners. Descriptors are written in SDDL:
// https://learn.microsoft.com/windows/win32/secauthz/security-descriptor-string-format
#include "pipe/pipeSecurity.h"

#include <iterator>
#include <vector>

#include "platform/wideText.h"

// After <windows.h>, which they need.
#include <aclapi.h>
#include <sddl.h>

namespace xo::pipe {
namespace {

using platform::KernelHandle;
using platform::LocalMemory;

// A structure and the data that it points to, in one block. Empty when the call fails.
std::vector<char> tokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind) {
    DWORD size = 0;
    ::GetTokenInformation(token, kind, /*TokenInformation=*/nullptr, 0, &size);
    std::vector<char> information(size);
    if (size == 0 || !::GetTokenInformation(token, kind, information.data(), size, &size)) information.clear();
    return information;
}

// The identifier in the information for TokenUser or TokenOwner: TOKEN_USER and TOKEN_OWNER both begin with a pointer
// to it. Null for empty information. It points into the information.
PSID identifierIn(const std::vector<char>& information) {
    return information.empty() ? nullptr : reinterpret_cast<const TOKEN_OWNER*>(information.data())->Owner;
}

std::string toText(PSID identifier) {
    LocalMemory<wchar_t> text;
    if (!identifier || !::ConvertSidToStringSidW(identifier, text.put())) return {};
    return platform::toUtf8(text.get());
}

// The token of the process, not that of an impersonating thread.
KernelHandle processToken() {
    KernelHandle token;
    ::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, token.put());
    return token;
}

// The owner points into the descriptor; null when it cannot be read.
struct Ownership {
    LocalMemory<void> descriptor;
    PSID owner = nullptr;
};

Ownership ownership(HANDLE pipe) {
    Ownership found;
    // SE_KERNEL_OBJECT covers the handles of named pipes too.
    ::GetSecurityInfo(pipe, SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION, &found.owner, /*ppsidGroup=*/nullptr,
                      /*ppDacl=*/nullptr, /*ppSacl=*/nullptr, found.descriptor.put());
    return found;
}

}  // namespace

// "O:" is the owner, "D:P" an access list that inherits nothing, "(A;;GA;;;user)" allows everything to the user. An
// empty text is not a valid descriptor, so that no pipe is made when the user is unknown.
std::string sameUserDescriptor() {
    const std::string user = userOf(processToken().get());
    return user.empty() ? user : "O:" + user + "D:P(A;;GA;;;" + user + ")";
}

// Denies network log-ons (NU). Interactive users (IU) get the rights to read and write, but not the right to make
// further instances (FILE_CREATE_PIPE_INSTANCE), with which they could take clients away from the server.
std::string localUsersDescriptor() {
    const std::string user = userOf(processToken().get());
    // 0x0012019B is FILE_GENERIC_READ | FILE_GENERIC_WRITE without 0x4, which is FILE_CREATE_PIPE_INSTANCE for a pipe.
    return user.empty() ? user : "O:" + user + "D:P(D;;GA;;;NU)(A;;GA;;;" + user + ")(A;;0x0012019B;;;IU)";
}

// A text with a NUL inside is invalid: Windows would read the part in front of it, which may admit more.
SecurityAttributes::SecurityAttributes(const std::string& descriptor) {
    if (descriptor.find('\0') != std::string::npos) return;
    ::ConvertStringSecurityDescriptorToSecurityDescriptorW(platform::toWide(descriptor).c_str(), SDDL_REVISION_1,
                                                           mDescriptor.put(), /*SecurityDescriptorSize=*/nullptr);
    mAttributes.nLength = sizeof mAttributes;
    mAttributes.lpSecurityDescriptor = mDescriptor.get();
}

bool hasTrustedOwner(HANDLE pipe) {
    const Ownership pipes = ownership(pipe);
    if (!pipes.owner) return false;
    const KernelHandle token = processToken();
    // The default owner of an elevated process's objects may be the administrators instead of the user.
    for (const TOKEN_INFORMATION_CLASS kind : {TokenUser, TokenOwner}) {
        const std::vector<char> information = tokenInformation(token.get(), kind);
        const PSID own = identifierIn(information);
        if (own && ::EqualSid(own, pipes.owner)) return true;
    }
    constexpr WELL_KNOWN_SID_TYPE kTrusted[] = {WinBuiltinAdministratorsSid, WinLocalSystemSid, WinLocalServiceSid,
                                                WinNetworkServiceSid};
    for (const WELL_KNOWN_SID_TYPE type : kTrusted)
        if (::IsWellKnownSid(pipes.owner, type)) return true;
    return false;
}

std::string ownerOf(HANDLE pipe) { return toText(ownership(pipe).owner); }

std::string userOf(HANDLE token) { return toText(identifierIn(tokenInformation(token, TokenUser))); }

bool isElevated(HANDLE token) {
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    return ::GetTokenInformation(token, TokenElevation, &elevation, sizeof elevation, &size) &&
           elevation.TokenIsElevated != 0;
}

std::string accountName(const std::string& identifier) {
    LocalMemory<void> binary;
    if (!::ConvertStringSidToSidW(platform::toWide(identifier).c_str(), binary.put())) return {};
    // 256 characters and a NUL are the most of either, UNLEN of lmcons.h and a DNS name:
    // https://learn.microsoft.com/windows/win32/api/winbase/nf-winbase-lookupaccountsidw
    wchar_t name[257];
    wchar_t domain[257];
    auto nameSize = static_cast<DWORD>(std::size(name));
    auto domainSize = static_cast<DWORD>(std::size(domain));
    SID_NAME_USE kind{};
    if (!::LookupAccountSidW(/*lpSystemName=*/nullptr, binary.get(), name, &nameSize, domain, &domainSize, &kind))
        return {};
    return platform::toUtf8(domain) + "\\" + platform::toUtf8(name);
}

}  // namespace xo::pipe
