#include <string_view>

#include "stream/fileDevice.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

struct Settings {
    std::string folder;
    std::string baseName;
    unsigned maxRowsPerFile;
    bool writeByteOrderMark;
};

}  // namespace

struct xoCsvFileWriter::Private {
    Settings settings;
    unsigned nextFile;
    std::string path;  // of the file that is open
    stream::FileDevice device;
    xoCsvStream stream;  // of the device while that is open

    std::string nextPath();
};

// Names the next file, whether it can then be made or not.
std::string xoCsvFileWriter::Private::nextPath() {
    std::string next = settings.folder;
    if (next.empty() || (next.back() != '/' && next.back() != '\\')) next += '/';
    next += settings.baseName;
    if (nextFile != 0) next += " (" + xoStringUtils::fromUInt(nextFile, 1) + ")";
    ++nextFile;
    return next + ".csv";
}

xoCsvFileWriter::xoCsvFileWriter(const std::string& folder, const std::string& baseName, unsigned int maxRowsPerFile,
                                 char separator, char quote, const std::string& endOfLine, bool writeByteOrderMark)
    : mPrivate(new Private{{folder, baseName, maxRowsPerFile != 0 ? maxRowsPerFile : 1, writeByteOrderMark},
                           /*nextFile=*/0,
                           /*path=*/{},
                           /*device=*/{},
                           xoCsvStream(nullptr, separator, quote, endOfLine)}) {}

xoCsvFileWriter::xoCsvFileWriter(const xoCsvFileWriter& other)
    : mPrivate(new Private{other.mPrivate->settings, other.mPrivate->nextFile, /*path=*/{}, /*device=*/{},
                           other.mPrivate->stream}) {
    mPrivate->stream.setDevice(nullptr);
}

xoCsvFileWriter& xoCsvFileWriter::operator=(const xoCsvFileWriter& other) {
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
    if (stream.getNextCellRowIndex() >= mPrivate->settings.maxRowsPerFile && stream.getNextCellColIndex() == 0)
        finalizeCurrentFile();
    if (!mPrivate->device.isOpen()) openNextFile();
    return stream;
}

void xoCsvFileWriter::openNextFile() {
    Private& self = *mPrivate;
    self.path = self.nextPath();
    const bool isOpen = self.device.open(self.path);
    self.stream.setDevice(&self.device);
    if (!isOpen) {
        xoLogObject(xoLogCritical) << "Fail to open csv file " << self.path;
    } else if (self.settings.writeByteOrderMark) {
        self.device << std::string(kByteOrderMark);
    }
}

void xoCsvFileWriter::finalizeCurrentFile() {
    Private& self = *mPrivate;
    self.stream.setDevice(nullptr);
    if (!self.device.close()) xoLogObject(xoLogCritical) << "Fail to write csv file " << self.path;
}

}  // namespace xo
