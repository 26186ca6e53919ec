// The access to a new pipe, the owner of an existing one, and the user of a token.
#ifndef XO_PIPE_PIPESECURITY_H
#define XO_PIPE_PIPESECURITY_H

#include <string>

#include "platform/handle.h"

namespace xo::pipe {

// Descriptors in the security descriptor definition language (SDDL); empty when the user of this process is unknown.
// https://learn.microsoft.com/windows/win32/secauthz/security-descriptor-string-format
std::string sameUserDescriptor();
std::string localUsersDescriptor();

// The security attributes of a new pipe, whose handle no child inherits.
class SecurityAttributes {
public:
    // The object is false when the text is not a valid descriptor, an empty one included.
    explicit SecurityAttributes(const std::string& descriptor);

    explicit operator bool() const { return static_cast<bool>(mDescriptor); }
    // Valid as long as the object. A false object must not be used: it would give the default access.
    SECURITY_ATTRIBUTES* get() { return &mAttributes; }

private:
    platform::LocalMemory<void> mDescriptor;
    SECURITY_ATTRIBUTES mAttributes{};
};

// Whether the owner of the pipe is the user of this process, the administrators, the system, or the accounts of local
// and network services. False when the owner is unknown.
bool hasTrustedOwner(HANDLE pipe);

// The security identifier of the pipe's owner, and that of the user of a token, as texts. Empty when unknown.
std::string ownerOf(HANDLE pipe);
std::string userOf(HANDLE token);

// Whether Windows reports the token as elevated; false when unknown.
bool isElevated(HANDLE token);

// "DOMAIN\name" of a security identifier; empty when unknown.
std::string accountName(const std::string& identifier);

}  // namespace xo::pipe

#endif
