#include "xoSystem/xoSystemUtils.h"

#include <set>
#include <string>
#include <vector>

#include "log/logFixture.h"
#include "platform/handle.h"
#include "sysinfo/mainDisk.h"
#include "xoSystem/xoDirUtils.h"

#include <objbase.h>

namespace {

using xo::xoSystemUtils;

using ProcessorCount = xo::tests::LogTest;

TEST_F(ProcessorCount, IsReadFromTheEnvironment) {
    EXPECT_EQ(xoSystemUtils::GetProcessorCount(), 1u);
    const struct {
        const wchar_t* value;
        unsigned count;
    } rows[] = {{L"12", 12}, {L" +7 processors", 7},      {L"010", 10}, {L"0x10", 1}, {L"0", 1}, {L"-3", 1},
                {L"x", 1},   {L"99999999999", 0x7FFFFFFF}};
    for (const auto& row : rows) {
        ::SetEnvironmentVariableW(L"NUMBER_OF_PROCESSORS", row.value);
        xoSystemUtils::InitializeSystemUtils();
        EXPECT_EQ(xoSystemUtils::GetProcessorCount(), row.count);
    }
    EXPECT_THAT(takeLines(), testing::IsEmpty());
    ::SetEnvironmentVariableW(L"NUMBER_OF_PROCESSORS", L"2");
    EXPECT_EQ(xoSystemUtils::GetProcessorCount(), 0x7FFFFFFFu);  // read once
    xoSystemUtils::TerminateSystemUtils();
    EXPECT_EQ(xoSystemUtils::GetProcessorCount(), 1u);
}

TEST_F(ProcessorCount, IsOneWithALineInTheLogWhenItIsMissing) {
    ::SetEnvironmentVariableW(L"NUMBER_OF_PROCESSORS", nullptr);
    xoSystemUtils::InitializeSystemUtils();
    EXPECT_EQ(xoSystemUtils::GetProcessorCount(), 1u);
    EXPECT_THAT(takeLines(), testing::ElementsAre("3()Failed to retrieve NUMBER_OF_PROCESSORS"));
}

// Two sources that know nothing of each other.
TEST(MainDisk, IsTheSameByBothWays) {
    const std::string disk = xoSystemUtils::getMainHDDDevice();
    EXPECT_THAT(disk, testing::MatchesRegex(R"(\\\\.\\PHYSICALDRIVE\d+)"));
    EXPECT_THAT(xo::sysinfo::diskFromVolume(L"C:"), testing::AnyOf(disk, ""));  // Wine's volumes lie on no disk
    EXPECT_EQ(disk, xo::sysinfo::diskFromManagementService(L"C:"));
    EXPECT_EQ(xo::sysinfo::diskFromVolume(L"Q:"), "");
    EXPECT_EQ(xo::sysinfo::diskFromManagementService(L"Q:"), "");
    xoSystemUtils::TerminateSystemUtils();
    EXPECT_EQ(disk, xoSystemUtils::getMainHDDDevice());  // asked anew
}

TEST(MainDisk, LeavesComToTheCaller) {
    EXPECT_NE(xoSystemUtils::getMainHDDDevice(), "");
    // S_OK, not S_FALSE: nobody has initialised COM on this thread.
    const HMODULE ole = ::LoadLibraryW(L"ole32.dll");
    const auto initialize =
        reinterpret_cast<decltype(::CoInitializeEx)*>(reinterpret_cast<void*>(::GetProcAddress(ole, "CoInitializeEx")));
    ASSERT_NE(initialize, nullptr);
    EXPECT_EQ(initialize(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    xoSystemUtils::TerminateSystemUtils();
    EXPECT_NE(xoSystemUtils::getMainHDDDevice(), "");  // in spite of the caller's own mode
}

TEST(Uuid, IsRandomAndOfVersionFour) {
    std::set<std::string> made;
    for (int i = 0; i < 1000; ++i) {
        const std::string uuid = xoSystemUtils::CreateUuid(false);
        ASSERT_EQ(uuid.size(), 36u);
        for (std::size_t at = 0; at < uuid.size(); ++at) {
            const bool dash = at == 8 || at == 13 || at == 18 || at == 23;
            const std::string allowed = dash ? "-" : at == 14 ? "4" : at == 19 ? "89ab" : "0123456789abcdef";
            ASSERT_NE(allowed.find(uuid[at]), std::string::npos) << uuid;
        }
        made.insert(uuid);
    }
    EXPECT_EQ(made.size(), 1000u);
    const std::string braced = xoSystemUtils::CreateUuid(true);
    EXPECT_EQ(braced.size(), 38u);
    EXPECT_TRUE(braced.front() == '{' && braced.back() == '}') << braced;
}

TEST(BinaryFolder, HoldsTheProgram) {
    EXPECT_TRUE(xo::xoDirUtils::FileExistsUtf8(xoSystemUtils::GetBinaryFolderUtf8() + "/systemUtils.exe"));
}

}  // namespace
