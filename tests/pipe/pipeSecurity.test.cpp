#include "pipe/pipeSecurity.h"

#include <gtest/gtest.h>

#include "pipe/pipeName.h"

// After <windows.h>, which it needs.
#include <sddl.h>

namespace xo::tests {

// Wine does not enforce descriptors, so their texts are all that can be looked at there.
TEST(PipeSecurity, AdmitsThisUserAndAtMostLocalOnes) {
    platform::KernelHandle token;
    ASSERT_TRUE(::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, token.put()));
    const std::string user = pipe::userOf(token.get());
    EXPECT_EQ(user.rfind("S-1-", 0), 0u);
    EXPECT_EQ(pipe::sameUserDescriptor(), "O:" + user + "D:P(A;;GA;;;" + user + ")");
    EXPECT_EQ(pipe::localUsersDescriptor(), "O:" + user + "D:P(D;;GA;;;NU)(A;;GA;;;" + user + ")(A;;0x0012019B;;;IU)");
    for (const std::string& text : {pipe::sameUserDescriptor(), pipe::localUsersDescriptor()}) {
        pipe::SecurityAttributes attributes(text);
        ASSERT_TRUE(attributes);
        EXPECT_TRUE(::IsValidSecurityDescriptor(attributes.get()->lpSecurityDescriptor));
        EXPECT_FALSE(attributes.get()->bInheritHandle);
    }
    EXPECT_FALSE(pipe::SecurityAttributes("nonsense"));
    EXPECT_FALSE(pipe::SecurityAttributes(std::string("D:P(A;;GA;;;WD)\0(D;;GA;;;NU)", 29)));
    EXPECT_EQ(pipe::accountName("nonsense"), "");
    EXPECT_NE(pipe::randomName(), pipe::randomName());
}

}  // namespace xo::tests
