#include "xoSystem/xoVersion.h"

#include <gtest/gtest.h>

#include "platform/windows.h"
#include "support/capturedOutput.h"
#include "xoSystem/xoException.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoVariant.h"

namespace {

using namespace xo;  // xoSystem::Version must stay one name
using impl::GetThirdPartyLibVersions;
using impl::RegisterThirdPartyLibVersionInfo;
using impl::UnRegisterThirdPartyLibVersionInfo;

// As a library does while it is loaded.
const bool registeredEarly = (RegisterThirdPartyLibVersionInfo("early", "0.9"), true);

TEST(Version, IsOrderedByItsThreeNumbers) {
    const xoVersion ascending[] = {{}, {0, 0, 7}, {0, 5, 1}, {1, 9, 5}, {1, 10, 0, "new", 2021, 7}, {0x80000000, 0, 0}};
    for (const xoVersion& a : ascending)
        for (const xoVersion& b : ascending) {
            xoVersion other;
            other.setVersion(b.getMajorVersion(), b.getMinorVersion(), b.getRevision(), "other", 2020, 5);
            const int order = &a < &b ? -1 : &a > &b;
            EXPECT_TRUE((a == other) == (order == 0) && (a != other) == (order != 0) && (a < other) == (order < 0) &&
                        (a <= other) == (order <= 0) && (a > other) == (order > 0) && (a >= other) == (order >= 0))
                << &a - ascending << ' ' << &b - ascending;
        }
}

TEST(LibraryVersion, IsTheOneInTheFile) {
    using Version = xoSystem::Version;
    static_assert(std::is_same_v<Version, ::xoSystem::Version> && std::is_same_v<Version, xo::xoSystem::Version>);
    EXPECT_STREQ(Version::GetDescStringMajorMinorReleaseRevisionDate(), "3.0.0.9799 2020-5");
    EXPECT_STREQ(Version::GetDescStringMajorMinorReleaseRevision(), "3.0.0.9799");
    EXPECT_STREQ(Version::GetDescStringMajorMinorRelease(), "3.0.0");
    EXPECT_STREQ(Version::GetDescStringMajorMinor(), "3.0");
    EXPECT_TRUE(Version::GetYear() == 2020 && Version::GetMonth() == 5);

#if !defined(XOSYSTEM_STATIC)  // a program that the library is linked into has a version resource of its own
    const HMODULE library = ::GetModuleHandleW(L"" XO_LIBRARY_FILE);
    const HRSRC found = ::FindResourceW(library, MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION);
    ASSERT_TRUE(found);
    const auto* const fixedInfo = static_cast<const DWORD*>(::LockResource(::LoadResource(library, found))) + 10;
    ASSERT_EQ(fixedInfo[0], 0xFEEF04BDu);  // its signature
    EXPECT_EQ(fixedInfo[2], Version::GetMajor() << 16 | Version::GetMinor());
    EXPECT_EQ(fixedInfo[3], Version::GetRelease() << 16 | Version::GetRevision());
#endif
}

TEST(ThirdPartyVersions, KeepTheLastTextOfANameWhileItsLibraryIsLoaded) {
    ASSERT_TRUE(registeredEarly);
    for (const char* version : {"1.2.12", "1.2.13"}) RegisterThirdPartyLibVersionInfo("zlib", version);
    initializeXoSystem(InitTypeFull);
    RegisterThirdPartyLibVersionInfo("none", nullptr);
    RegisterThirdPartyLibVersionInfo(nullptr, "1");
    for (const char* name : {"absent", static_cast<const char*>(nullptr)}) UnRegisterThirdPartyLibVersionInfo(name);
    terminateXoSystem();
    EXPECT_EQ(GetThirdPartyLibVersions().toString(), "(early=0.9),(none=),(zlib=1.2.13)");
    for (const auto& [name, version] : GetThirdPartyLibVersions()) {
        EXPECT_EQ(version.getType(), xoVariant::STRING);
        UnRegisterThirdPartyLibVersionInfo(name.c_str());
    }
    EXPECT_TRUE(GetThirdPartyLibVersions().empty());
}

TEST(ThirdPartyVersions, AreNotLockedByABadPointer) {
    static const char* const bad = reinterpret_cast<const char*>(16);
    const xo::tests::CapturedOutput reports;
    void (*const faults[])() = {[] { RegisterThirdPartyLibVersionInfo(bad, "1"); },
                                [] { RegisterThirdPartyLibVersionInfo("bad", bad); },
                                [] { UnRegisterThirdPartyLibVersionInfo(bad); }};
    for (void (*const fault)() : faults) {
        EXPECT_ANY_THROW(exception::impl::ExecGuardedCode(fault));
        EXPECT_EQ(GetThirdPartyLibVersions().toString(), "(early=0.9)");  // waits for ever for a lock that is held
    }
}

}  // namespace
