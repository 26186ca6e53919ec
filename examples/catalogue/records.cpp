#include "records.h"

#include <filesystem>
#include <fstream>

#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoIoDevice.h"

namespace catalogue {

// One question at the end is enough: after a failure the stream writes nothing more.
bool writeRecord(xo::xoDataStream& stream, const Country& country) {
    stream << xo::xoMajorOutputStreamVersion << xo::xoMinorOutputStreamVersion;
    stream << country.code << static_cast<unsigned int>(country.regions.size());
    for (const Region& region : country.regions) stream << region.id << region.code << region.name;
    return stream.isOk();
}

bool readRecord(xo::xoDataStream& stream, Country& country) {
    char major = 0;
    char minor = 0;
    unsigned int count = 0;
    stream >> major >> minor >> country.code >> count;
    if (major != xo::xoMajorOutputStreamVersion || minor != xo::xoMinorOutputStreamVersion) return false;
    for (; count > 0 && stream.isOk(); --count) {
        Region region;
        stream >> region.id >> region.code >> region.name;
        country.regions.push_back(std::move(region));
    }
    return stream.isOk();
}

bool writeRecords(const std::string& path, const Country& country, std::uint64_t& bytes) {
    std::ofstream file(std::filesystem::u8path(path), std::ios::binary);
    xo::xoIoDeviceStdStreamProxy fileDevice(nullptr, &file);
    xo::xoIoDeviceByteCounter counter;
    counter.beginDelegation(&fileDevice);

    xo::xoDataStream stream(&counter, xo::xoDataStream::EndiannessBig);
    const bool isWritten = writeRecord(stream, country);

    bytes = counter.getWrittenBytes();
    counter.endDelegation();
    file.close();
    return isWritten && file.good();
}

bool readRecords(const std::string& path, Country& country) {
    std::ifstream file(std::filesystem::u8path(path), std::ios::binary);
    xo::xoIoDeviceStdStreamProxy device(&file, nullptr);
    xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessBig);
    return readRecord(stream, country) && file.peek() == std::ifstream::traits_type::eof();
}

}  // namespace catalogue
