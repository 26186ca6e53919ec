// Who may use a pipe, and to whom one belongs.
#ifndef XO_PIPE_PIPESECURITY_H
#define XO_PIPE_PIPESECURITY_H

#include <string>

#include "platform/handle.h"

namespace xo::pipe {

// Descriptors in the security descriptor definition language; empty when Windows does not tell the user.
// https://learn.microsoft.com/windows/win32/secauthz/security-descriptor-string-format
std::string sameUserDescriptor();
std::string localUsersDescriptor();

// The attributes of a new pipe that no child inherits.
class SecurityAttributes {
public:
    // GetLastError tells why the object is false: the text is no descriptor.
    explicit SecurityAttributes(const std::string& descriptor);

    explicit operator bool() const { return static_cast<bool>(mDescriptor); }
    SECURITY_ATTRIBUTES* get() { return &mAttributes; }

private:
    platform::LocalMemory<void> mDescriptor;
    SECURITY_ATTRIBUTES mAttributes{};
};

// Whether the pipe belongs to the user of this process, to administrators or to the system.
bool hasTrustedOwner(HANDLE pipe);

// The security identifier of the pipe's owner, and that of the user of a token, as texts. Empty when unknown.
std::string ownerOf(HANDLE pipe);
std::string userOf(HANDLE token);

bool isElevated(HANDLE token);

// "DOMAIN\name" of a security identifier; empty when unknown.
std::string accountName(const std::string& identifier);

}  // namespace xo::pipe

#endif
