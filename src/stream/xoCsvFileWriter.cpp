// Writes rows to numbered CSV files: "name.csv", "name (1).csv" and so on.
#include <new>
#include <string_view>

#include "stream/deviceMessage.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoIoDeviceFile.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

// U+FEFF in UTF-8. Spreadsheet programs recognise UTF-8 by it; without it many assume the code page of the system.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// With a separator at the end, for a name behind it.
std::string asPrefix(std::string folder) {
    if (folder.empty() || (folder.back() != '/' && folder.back() != '\\')) folder += '/';
    return folder;
}

// Unchanged where it names no folder.
std::string makeAbsolute(const std::string& folder) {
    const std::string full = xoDirUtils::GetAbsolutePathUtf8(folder);
    return full.empty() ? folder : full;
}

struct Settings {
    std::string folder;      // as it was given, for messages
    std::string fullFolder;  // absolute, so that all files are in one folder when the working folder changes
    std::string baseName;
    unsigned maxRowsPerFile;  // at least 1
    bool writeByteOrderMark;
};

}  // namespace

struct xoCsvFileWriter::Private {
    Settings settings;
    unsigned nextFile;
    std::string path;  // of the last file as it was given, for messages
    xoIoDeviceFile device;
    xoCsvStream stream;  // writes to the device from the first file on

    std::string nextName();
};

// The number is used up even if the file cannot be created.
std::string xoCsvFileWriter::Private::nextName() {
    std::string next = settings.baseName;
    if (nextFile != 0) next += " (" + xoStringUtils::fromUInt(nextFile, 1) + ")";
    ++nextFile;
    return next + ".csv";
}

xoCsvFileWriter::xoCsvFileWriter(const std::string& folder, const std::string& baseName, unsigned int maxRowsPerFile,
                                 char separator, char quote, const std::string& endOfLine, bool writeByteOrderMark)
    : mPrivate(new Private{{asPrefix(folder), makeAbsolute(asPrefix(folder)), baseName,
                            maxRowsPerFile != 0 ? maxRowsPerFile : 1, writeByteOrderMark},
                           /*nextFile=*/0,
                           /*path=*/{},
                           /*device=*/{},
                           xoCsvStream(nullptr, separator, quote, endOfLine)}) {}

// A copy continues with the settings and the next number. It does not share the file that is being written.
xoCsvFileWriter::xoCsvFileWriter(const xoCsvFileWriter& other)
    : mPrivate(new Private{other.mPrivate->settings, other.mPrivate->nextFile, /*path=*/{}, /*device=*/{},
                           other.mPrivate->stream}) {
    mPrivate->stream.setDevice(nullptr);
}

xoCsvFileWriter& xoCsvFileWriter::operator=(const xoCsvFileWriter& other) {
    if (this == &other) return *this;
    finalizeCurrentFile();
    mPrivate->settings = other.mPrivate->settings;
    mPrivate->nextFile = other.mPrivate->nextFile;
    mPrivate->stream = other.mPrivate->stream;
    mPrivate->stream.setDevice(nullptr);
    return *this;
}

xoCsvFileWriter::~xoCsvFileWriter() { finalizeCurrentFile(); }

xoCsvStream& xoCsvFileWriter::getStream() {
    xoCsvStream& stream = mPrivate->stream;
    // Only between rows: a row is never divided between two files.
    if (stream.getNextCellRowIndex() >= mPrivate->settings.maxRowsPerFile && stream.getNextCellColIndex() == 0)
        finalizeCurrentFile();
    if (!mPrivate->device.isOpen()) openNextFile();
    return stream;
}

void xoCsvFileWriter::openNextFile() {
    Private& self = *mPrivate;
    bool isOpen = false;
    try {
        const std::string name = self.nextName();
        self.path = self.settings.folder + name;
        isOpen =
            self.device.openUtf8(self.settings.fullFolder + name, xoIoDeviceFile::OpenWrite, xoIoDeviceFile::ShareAll);
    } catch (const std::bad_alloc&) {
    }
    // Also after a failure: the first write to the closed device then clears the stream's flag.
    self.stream.setDevice(&self.device);
    if (!isOpen) {
        stream::report("Fail to open csv file ", self.path);
    } else if (self.settings.writeByteOrderMark) {
        self.device << std::string(kByteOrderMark);
    }
}

// The device logs what it could not write.
void xoCsvFileWriter::finalizeCurrentFile() {
    Private& self = *mPrivate;
    self.stream.setDevice(nullptr);
    self.device.close();
}

}  // namespace xo
