// xoSystemUtils: facts about the machine and the program, and unique identifiers.
//
//     const std::string name = "job-" + xoSystemUtils::CreateUuid();
//
// initializeXoSystem and terminateXoSystem call the first two functions, from one thread. The others may be called from
// any thread at any time. No function reports an error: a text that cannot be determined is empty.
#ifndef XOSYSTEM_XOSYSTEMUTILS_H
#define XOSYSTEM_XOSYSTEMUTILS_H

#include <string>

#include "xoSystem/xoExport.h"

namespace xo {

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
};

}  // namespace xo

#endif
