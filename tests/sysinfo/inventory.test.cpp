#include <filesystem>

#include <gmock/gmock.h>

#include "log/logFixture.h"
#include "platform/windows.h"
#include "support/importHook.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoCpuInfo.h"
#include "xoSystem/xoDirectXDeviceInfo.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoSystemUtils.h"

namespace xo::tests {
namespace {

using Utils = xoSystemUtils;
using Map = xoVariant::xoVariantMapImpl;
using testing::HasSubstr;

struct Inventory : LogTest {};

Map leavesOf(const Map& report) {
    Map leaves;
    report.toFlattenMap(leaves, '/');
    return leaves;
}

TEST_F(Inventory, TheProcessorIsThatOfTheSystemAndTheCompiler) {
    const CPUInfo& cpu = CPUInfo::Get();
    EXPECT_EQ(&cpu, &CPUInfo::Get());
    Utils::InitializeSystemUtils();
    EXPECT_EQ(cpu.getThreadCount(), Utils::GetProcessorCount());
    EXPECT_TRUE(cpu.getPackageCount() >= 1 && cpu.getPackageCount() <= cpu.getCoreCount() &&
                cpu.getCoreCount() <= cpu.getThreadCount() && cpu.getGroupCount() >= 1);
    unsigned cores = 0, threads = 0;
    for (const auto& each : cpu.getCoreClasses()) cores += each.cores, threads += each.threads;
    EXPECT_TRUE(cores == cpu.getCoreCount() && threads == cpu.getThreadCount());
    EXPECT_TRUE(cpu.getVendor().size() == 12 && !cpu.getBrand().empty() && cpu.getFamily() > 0);
    for (const auto& each : cpu.getCaches())
        EXPECT_TRUE(each.level >= 1 && each.level <= 4 && each.bytes > 0 && each.count >= 1 && each.threadsEach >= 1);

    const struct {
        CPUInfo::Feature feature;
        bool isThere;
    } rows[] = {
#if !defined(_MSC_VER)  // cl has no such function, and clang-cl does not link it
        {CPUInfo::FeatureSSE3, __builtin_cpu_supports("sse3") != 0},
        {CPUInfo::FeatureSSSE3, __builtin_cpu_supports("ssse3") != 0},
        {CPUInfo::FeatureSSE4_1, __builtin_cpu_supports("sse4.1") != 0},
        {CPUInfo::FeatureSSE4_2, __builtin_cpu_supports("sse4.2") != 0},
        {CPUInfo::FeaturePOPCNT, __builtin_cpu_supports("popcnt") != 0},
        {CPUInfo::FeatureAES, __builtin_cpu_supports("aes") != 0},
        {CPUInfo::FeatureAVX, __builtin_cpu_supports("avx") != 0},
        {CPUInfo::FeatureFMA, __builtin_cpu_supports("fma") != 0},
        {CPUInfo::FeatureBMI1, __builtin_cpu_supports("bmi") != 0},
        {CPUInfo::FeatureBMI2, __builtin_cpu_supports("bmi2") != 0},
        {CPUInfo::FeatureAVX2, __builtin_cpu_supports("avx2") != 0},
        {CPUInfo::FeatureAVX512F, __builtin_cpu_supports("avx512f") != 0},
#endif
        {CPUInfo::FeatureSSE3, ::IsProcessorFeaturePresent(PF_SSE3_INSTRUCTIONS_AVAILABLE) != 0},
        {CPUInfo::FeatureCMPXCHG16B, ::IsProcessorFeaturePresent(PF_COMPARE_EXCHANGE128) != 0}
    };
    for (const auto& row : rows)
        EXPECT_EQ(cpu.hasFeature(row.feature), row.isThere) << CPUInfo::FeatureToString(row.feature);
    EXPECT_STREQ(CPUInfo::FeatureToString(CPUInfo::FeatureINVARIANT_TSC), "INVARIANT_TSC");
    EXPECT_STREQ(CPUInfo::FeatureToString(static_cast<CPUInfo::Feature>(44)), "Unknown");
    EXPECT_STREQ(CPUInfo::FeatureToString(static_cast<CPUInfo::Feature>(-1)), "Unknown");
}

TEST_F(Inventory, TheReportHasDocumentedLeavesAndSurvivesAFile) {
    const Map report = Utils::GetReport(Utils::ReportAll, 60000);
    for (const char* const key : {"cpu/brand", "cpu/threads", "os/version", "os/architecture", "memory/physicalBytes",
                                  "memory/commitLimitBytes", "volume/0/path"})
        EXPECT_NE(report.findPath(key), nullptr) << key;
    EXPECT_EQ(report.getValuePath("os/architecture").toString(), "x64");
    EXPECT_GT(report.getValuePath("memory/physicalBytes").toInteger(), 1 << 24);
    EXPECT_LE(report.getValuePath("memory/availableBytes").toInteger(),
              report.getValuePath("memory/physicalBytes").toInteger());
    const std::string text = Utils::ReportToText(report);
    for (const auto& [key, value] : leavesOf(report)) {
        EXPECT_TRUE(value.getType() == xoVariant::INTEGER || value.getType() == xoVariant::BOOL ||
                    (value.getType() == xoVariant::STRING && !value.getString().empty()))
            << key;
        EXPECT_THAT(text, HasSubstr(key + " "));
        for (const char* const secret : {"Name", "serial", "label"})
            if (std::string(secret) != "Name" || key.substr(0, 3) == "os/")
                EXPECT_EQ(key.find(secret), std::string::npos) << "only if asked for: " << key;
    }
    const std::size_t column = text.find_first_not_of(' ', text.find(' '));
    for (std::size_t line = 0; line < text.size(); line = text.find('\n', line) + 1) {
        EXPECT_EQ(text[line + column - 1], ' ') << text.substr(line, 60);
        EXPECT_NE(text[line + column], ' ') << text.substr(line, 60);
    }

    const TemporaryFolder folder;
    Map loaded;
    ASSERT_TRUE(SaveIniFile(folder.path("machine.ini"), report, false));
    ASSERT_TRUE(LoadIniFile(folder.path("machine.ini"), loaded));
    const Map saved = leavesOf(report), again = leavesOf(loaded);
    EXPECT_EQ(saved.size(), again.size());
    for (const auto& [key, value] : saved) {
        const auto found = again.find(key);
        ASSERT_TRUE(found != again.end()) << key;
        // A text that reads as a number comes back as one.
        const xoVariant expected =
            value.getType() == xoVariant::STRING ? xoVariant::BuildFromString(value.getString()) : value;
        EXPECT_EQ(found->second.toString(), expected.toString()) << key;
    }
}

TEST_F(Inventory, IdentityIsToldWhenItIsAskedFor) {
    const Map report = Utils::GetReport(Utils::ReportOs | Utils::ReportVolumes | Utils::ReportIdentity, 60000);
    EXPECT_NE(report.getValuePath("os/userName").toString(), "");
    EXPECT_NE(report.getValuePath("os/computerName").toString(), "");
    EXPECT_EQ(report.findPath("cpu"), nullptr) << "only what is asked for";
    const std::filesystem::path volume = std::filesystem::u8path(report.getValuePath("volume/0/path").toString());
    wchar_t label[MAX_PATH + 1] = L"";
    DWORD serial = 0;
    ASSERT_TRUE(::GetVolumeInformationW(volume.c_str(), label, MAX_PATH + 1, &serial, nullptr, nullptr, nullptr, 0));
    char shown[16] = "";
    if (serial != 0) std::snprintf(shown, sizeof shown, "%04X-%04X", HIWORD(serial), LOWORD(serial));
    EXPECT_EQ(report.getValuePath("volume/0/serial").toString(), shown);
    EXPECT_EQ(report.getValuePath("volume/0/label").toString(), std::filesystem::path(label).u8string());
    EXPECT_TRUE(Utils::GetReport(Utils::ReportIdentity).empty() && Utils::GetReport(0).empty());
    const Utils::OsVersion version = Utils::GetOsVersion();
    EXPECT_GE(version.major, 10u);
    EXPECT_EQ(report.getValuePath("os/wine").toString(), version.wineVersion);
    if (version.wineVersion.empty()) return;
    for (const auto& [key, value] : leavesOf(Utils::GetReport(Utils::ReportDisks | Utils::ReportMachine | 256)))
        for (const char* const madeUp : {"/bytes", "/model", "disk/0/serial", "/main", "module"})
            EXPECT_EQ(key.find(madeUp), std::string::npos) << key;
}

// Every drive is removed as soon as it has been asked for its kind.
int asks = 0;
UINT WINAPI fixedOnce(LPCWSTR) { return asks++ % 2 == 0 ? DRIVE_FIXED : DRIVE_NO_ROOT_DIR; }

TEST_F(Inventory, ADriveMayGoDuringTheReport) {
    const ImportHook hook("xoSystem.dll", "GetDriveTypeW", &fixedOnce);
    const Map report = Utils::GetReport(Utils::ReportVolumes, 60000);
    EXPECT_EQ(report.getValuePath("volume/0/kind").toString(), "fixed");
    EXPECT_EQ(report.findPath("incomplete"), nullptr);
}

TEST_F(Inventory, WithoutTimePartsAreLeftOutAndNamed) {
    log().setLogTypeEnabled(xoLogDebug, true);
    const Map report = Utils::GetReport(Utils::ReportAll, 0);
    EXPECT_EQ(report.getValuePath("incomplete").toString(), "graphics,volume,disk");
    EXPECT_NE(report.findPath("cpu/brand"), nullptr);
    EXPECT_EQ(takeLines().size(), 3u);
    std::vector<DirectXDeviceInfo> adapters(2);
    EXPECT_TRUE(!DirectXDeviceInfo::GetAdapters(adapters, 0) && adapters.empty());
    xoVariant::xoVariantListImpl rows;
    rows.push_back(1);
    EXPECT_TRUE(!Utils::QueryManagementUtf8("SELECT * FROM Win32_OperatingSystem", rows, 0) && rows.empty());
    EXPECT_THAT(takeLines(), testing::ElementsAre("0(SystemInfo)the management service did not answer in time: "
                                                  "SELECT * FROM Win32_OperatingSystem"));
}

TEST_F(Inventory, TheManagementServiceAnswersInTypedRows) {
    xoVariant::xoVariantListImpl rows;
    ASSERT_TRUE(Utils::QueryManagementUtf8("SELECT * FROM Win32_OperatingSystem", rows, 60000));
    ASSERT_EQ(rows.size(), 1u);
    const Map& os = rows[0].getMap();
    EXPECT_EQ(os.getValue("BuildNumber").toString(), std::to_string(Utils::GetOsVersion().build));
    EXPECT_EQ(os.getValue("Primary").getType(), xoVariant::BOOL);
    EXPECT_EQ(os.getValue("FreePhysicalMemory").getType(), xoVariant::INTEGER) << "arrives as text";
    EXPECT_GT(os.getValue("TotalVisibleMemorySize").toInteger(), 1 << 14);
    log().setLogTypeEnabled(xoLogDebug, true);
    for (const char* const query : {"no query", "", "SELECT * FROM Win32_NoSuchClass"}) {
        const bool isWine = !Utils::GetOsVersion().wineVersion.empty();
        if (isWine && *query == 'S') break;  // there such a class has no objects
        EXPECT_FALSE(Utils::QueryManagementUtf8(query, rows, 60000)) << query;
        EXPECT_TRUE(rows.empty());
        EXPECT_THAT(takeLines(),
                    testing::ElementsAre(std::string("0(SystemInfo)the management service refused: ") + query));
    }
    const std::string query = "SELECT * FROM Win32_OperatingSystem";
    EXPECT_FALSE(Utils::QueryManagementUtf8(query, rows, 60000, "ROOT\\NoSuch"));
    EXPECT_FALSE(Utils::QueryManagementUtf8(query, rows, 60000, std::string("ROOT\\CIMV2\0", 11)));
    EXPECT_FALSE(Utils::QueryManagementUtf8(query + '\0', rows, 60000));
    ASSERT_TRUE(Utils::QueryManagementUtf8("SELECT * FROM Win32_LogicalDisk WHERE DeviceID='Q:'", rows, 60000));
    EXPECT_TRUE(rows.empty());
}

TEST_F(Inventory, AdaptersAreNamedWhereThereIsDirectX) {
    std::vector<DirectXDeviceInfo> adapters;
    if (!DirectXDeviceInfo::GetAdapters(adapters, 60000)) {
        EXPECT_TRUE(adapters.empty());
        return;
    }
    for (const DirectXDeviceInfo& adapter : adapters) EXPECT_TRUE(!adapter.name.empty() && adapter.luid != 0);
}

}  // namespace
}  // namespace xo::tests
