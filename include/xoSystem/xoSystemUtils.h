// xoSystemUtils: facts about the machine and the program, and unique identifiers.
//
//     const std::string name = "job-" + xo::xoSystemUtils::CreateUuid();
//
//     const xo::xoVariant::xoVariantMapImpl report = xo::xoSystemUtils::GetReport();
//     xo::xoLogObject(xo::xoLogInfo) << report.getValuePath("memory/physicalBytes").toInteger();
//     xo::SaveIniFile(folder + "/machine.ini", report);
//
// initializeXoSystem and terminateXoSystem call the first two functions, from one thread. The others may be called from
// any thread at any time. What is not known is left out: an empty text, 0, a key that is absent. Nothing throws except
// std::bad_alloc. Nothing here needs an administrator's rights, and nothing that names a person or one single machine
// is told unless it is asked for.
#ifndef XOSYSTEM_XOSYSTEMUTILS_H
#define XOSYSTEM_XOSYSTEMUTILS_H

#include <cstdint>
#include <string>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoVariant.h"

namespace xo {

template <class E>
class xoEnumList;

class XOSYSTEM_API xoSystemUtils {
public:
    xoSystemUtils() = delete;

    // Reads the processor count from the environment variable NUMBER_OF_PROCESSORS: the decimal number at its start, or
    // 1 if there is no number or it is less than 1. If the variable does not exist, the count is 1 and a CRITICAL line
    // in the log says so.
    static void InitializeSystemUtils();

    // Sets the processor count to 1 and discards the stored main disk.
    static void TerminateSystemUtils();

    // The count that InitializeSystemUtils has read, at least 1; 1 before that call.
    static unsigned GetProcessorCount();

    // The physical disk that holds the system drive, as CreateFileW takes it: "\\.\PHYSICALDRIVE0". The first call asks
    // the volume and, if the volume does not name its disk, the management service, for at most 10 seconds. The result,
    // even an empty one, is stored for all further calls. For a volume on several disks it is the first of them.
    static std::string getMainHDDDevice();

    // A new random identifier (version 4): "8b0ab1c4-33d7-4e0c-9b4f-6f0f6d1ad1c2", in braces if
    // inBraces is true.
    static std::string CreateUuid(bool inBraces = false);

    // The folder of the running executable, as xoDirUtils::GetFolderOfCurrentProcessUtf8 gives it.
    static std::string GetBinaryFolderUtf8();

    // The version of the system, whatever the program's manifest says of versions.
    struct OsVersion {
        unsigned major = 0;       // 10 of Windows 10 and 11
        unsigned minor = 0;       // 0 of both
        unsigned build = 0;       // 22000 and above of Windows 11
        unsigned revision = 0;    // of the updates: 3296 in 10.0.22631.3296
        bool isServer = false;    // a server edition
        std::string wineVersion;  // "8.0"; empty on Windows
    };
    // Reads it anew.
    static OsVersion GetOsVersion();

    // The memory of the machine now.
    struct MemoryStatus {
        std::uint64_t physicalBytes = 0;     // that the system can use
        std::uint64_t availableBytes = 0;    // of these
        std::uint64_t installedBytes = 0;    // the size of the modules
        std::uint64_t commitLimitBytes = 0;  // memory and page files
        std::uint64_t commitUsedBytes = 0;   // of these
    };
    // Reads it anew.
    static MemoryStatus GetMemoryStatus();

    // Asks the management service (WMI). Each row becomes a MAP of its properties: BOOL, INTEGER, REAL, STRING, or a
    // LIST of these; null properties and objects have no key. Unsigned 64-bit numbers beyond INT64_MAX wrap round.
    //
    //     xo::xoVariant::xoVariantListImpl rows;
    //     if (xo::xoSystemUtils::QueryManagementUtf8("SELECT Name, State FROM Win32_Service", rows)) show(rows);
    //
    // Replaces the rows. False, with no rows and a DEBUG line (qualifier "SystemInfo"), when the service refuses the
    // query, when query or name space have a NUL inside, or when the answer is late, connecting included. The query
    // runs on a thread of its own; one that is late is left behind with the library kept loaded, and until it ends
    // further queries fail at once. Queries of several threads run one after the other. A limit of 0 asks nothing.
    static bool QueryManagementUtf8(const std::string& wql, xoVariant::xoVariantListImpl& rows,
                                    unsigned timeoutMs = 5000, const std::string& nameSpace = "ROOT\\CIMV2");

    // What a report holds: any sum of these. Identity adds names of the user and the computer, serial numbers and
    // labels to the other parts that are asked for.
    enum ReportPart : int {
        ReportCpu = 1,
        ReportOs = 2,
        ReportMemory = 4,
        ReportMachine = 8,
        ReportDisplays = 16,
        ReportGraphics = 32,
        ReportVolumes = 64,
        ReportDisks = 128,
        ReportAll = 255,
        ReportIdentity = 256,
    };

    // The machine as a tree of maps, with INTEGER, BOOL and STRING as leaves, so that SaveIniFile can write it. The
    // keys are listed in the documentation of the family; keys are added over time, none is renamed.
    //
    // Graphics, volumes and disks are asked on threads of their own, all at once. What has failed for lack of memory or
    // has not answered in time is left out, and its section is named in the top-level key "incomplete"
    // ("graphics,disk"). A thread that is late is left behind with the library kept loaded, and until it ends that part
    // is left out at once. A limit of 0 leaves all three out.
    static xoVariant::xoVariantMapImpl GetReport(int parts = ReportAll, unsigned timeoutMs = 5000);

    // A line for each leaf, "cpu/brand   AMD EPYC", with the values in one column. Control characters are shown as
    // xoStringUtils::MakePrintable shows them.
    static std::string ReportToText(const xoVariant::xoVariantMapImpl& report);
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoSystemUtils::ReportPart> xoEnumEntries(xoSystemUtils::ReportPart);

}  // namespace xo

#endif
