// What a support person wants to know of a customer's machine: a table for the screen, a file to send, and two
// decisions that the program takes by itself.
#include <iostream>

#include "xoSystem/xoAsciiTableBuilder.h"
#include "xoSystem/xoCpuInfo.h"
#include "xoSystem/xoDirectXDeviceInfo.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoSystemUtils.h"

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);

    // The names of the user and the computer and all serial numbers are left out unless ReportIdentity asks for them.
    using Utils = xo::xoSystemUtils;
    const auto report = Utils::GetReport(Utils::ReportAll, /*timeoutMs=*/10000);
    xo::AsciiTableBuilder table({"Fact", "Value"});
    for (const char* const key :
         {"cpu/brand", "cpu/cores", "cpu/threads", "os/name", "os/version", "os/architecture", "memory/physicalBytes"})
        if (const xo::xoVariant* const value = report.findPath(key)) table.addRow({key, value->toString()});
    std::cout << table.setStyle(xo::AsciiTableBuilder::StylePlain).build();

    xo::xoVariant::xoVariantMapImpl loaded;
    if (!xo::SaveIniFile("machine.ini", report) || !xo::LoadIniFile("machine.ini", loaded)) return 1;
    const bool isSame = loaded.getValuePath("cpu/threads") == report.getValuePath("cpu/threads");
    std::cout << "machine.ini: " << (isSame ? "the same machine" : "another machine") << '\n';

    const xo::CPUInfo& cpu = xo::CPUInfo::Get();
    std::cout << "SSE3: " << (cpu.hasFeature(xo::CPUInfo::FeatureSSE3) ? "yes" : "no") << ", work threads: "
              << (cpu.getCoreCount() >= 1 && cpu.getCoreCount() <= cpu.getThreadCount() ? "one a core" : "unknown")
              << '\n';

    std::vector<xo::DirectXDeviceInfo> adapters;
    const bool isKnown = xo::DirectXDeviceInfo::GetAdapters(adapters, /*timeoutMs=*/10000) && !adapters.empty();
    std::cout << "graphics: " << (isKnown ? adapters.front().name : "unknown") << '\n';

    xo::xoVariant::xoVariantListImpl rows;
    if (!Utils::QueryManagementUtf8("SELECT Name FROM Win32_OperatingSystem", rows, /*timeoutMs=*/30000)) return 1;
    std::cout << "the management service knows " << rows.size() << " system\n";
    xo::terminateXoSystem();
    return isSame ? 0 : 1;
}
