// xoSystemUtils: what the library asks of the machine it runs on.
//
//     const std::string name = "job-" + xoSystemUtils::CreateUuid();
//
// initializeXoSystem and terminateXoSystem make the first two calls, from one thread; the others may be called from any
// thread and at any time. Nothing throws: what cannot be found out is an empty text.
#ifndef XOSYSTEM_XOSYSTEMUTILS_H
#define XOSYSTEM_XOSYSTEMUTILS_H

#include <string>

#include "xoSystem/xoExport.h"

namespace xo {

class XOSYSTEM_API xoSystemUtils {
public:
    xoSystemUtils() = delete;

    // Reads the processor count from the environment variable NUMBER_OF_PROCESSORS: the decimal number at its start,
    // 1 for what is less or no number. Without the variable a CRITICAL line says so and the count is 1.
    static void InitializeSystemUtils();

    // Forgets the processor count and the main disk.
    static void TerminateSystemUtils();

    // As InitializeSystemUtils has read it, at least 1; 1 when it has not.
    static unsigned GetProcessorCount();

    // The physical disk that holds the system drive, as CreateFileW takes it: "\\.\PHYSICALDRIVE0". The first call asks
    // the volume, and where that does not know its disk, the management service, on a thread of its own and for 10
    // seconds at most; the answer, an empty one too, serves all further calls. Of a volume on several disks, the first.
    static std::string getMainHDDDevice();

    // A fresh random identifier (version 4): "8b0ab1c4-33d7-4e0c-9b4f-6f0f6d1ad1c2", in braces if asked for.
    static std::string CreateUuid(bool inBraces = false);

    // The folder of the running executable, as xoDirUtils::GetFolderOfCurrentProcessUtf8 gives it.
    static std::string GetBinaryFolderUtf8();
};

}  // namespace xo

#endif
