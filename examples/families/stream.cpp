// A day's measurements, kept twice: exactly, in a binary file with a mark and a version of its own, and as a table for
// people. The binary file is read back; a truncated one is noticed. Devices are stacked to write lines in
// capitals, with marks, to two places at once.
#include <cstdint>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoIoDevice.h"

namespace {

struct Measurement {
    std::string place;
    std::int64_t second = 0;
    double value = 0.0;
};

constexpr unsigned int kMark = 0x4D454153;  // "MEAS" in the file, as it is big-endian

bool save(const std::vector<Measurement>& all, std::ostream& out, std::uint64_t& size) {
    xo::xoIoDeviceStdStreamProxy file(/*in=*/nullptr, &out);
    xo::xoIoDeviceByteCounter counter;
    if (!counter.beginDelegation(&file)) return false;
    xo::xoDataStream stream(&counter, xo::xoDataStream::EndiannessBig);
    stream << kMark << std::uint64_t{all.size()};
    for (const Measurement& one : all) stream << one.place << one.second << one.value;
    size = counter.getWrittenBytes();
    return counter.endDelegation() && stream.isOk() && out.flush();
}

bool load(std::istream& in, std::vector<Measurement>& all) {
    xo::xoIoDeviceStdStreamProxy file(&in, /*out=*/nullptr);
    xo::xoDataStream stream(&file, xo::xoDataStream::EndiannessBig);
    unsigned int mark = 0;
    std::uint64_t count = 0;
    stream >> mark >> count;
    if (mark != kMark) stream.setError();
    for (std::uint64_t i = 0; i < count && stream.isOk(); ++i) {
        Measurement one;
        stream >> one.place >> one.second >> one.value;
        if (stream.isOk()) all.push_back(one);
    }
    return stream.isOk();  // asked once, after all of it
}

bool writeTable(const std::vector<Measurement>& all) {
    xo::xoCsvFileWriter writer(".", "day", /*maxRowsPerFile=*/2, ';');
    for (const Measurement& one : all)
        writer.getStream() << one.place << one.second << one.value << xo::xoCsvStream::EndOfRow();
    return writer.getStream().isOk();
}

bool showTable(const std::string& path) {
    xo::xoCsvFileReader reader(/*enableTypeGuess=*/true);
    reader.setColumnDelimiter(';');
    reader.setFileName(path);
    if (!reader.parseCsvFile()) {
        std::cout << path << ": " << reader.getLastError() << '\n';
        return false;
    }
    for (const auto& row : reader.getTable()) {
        std::cout << path << ':';
        for (const xo::xoVariant& cell : row) std::cout << ' ' << cell.getTypeAsString() << ' ' << cell.toString();
        std::cout << '\n';
    }
    return true;
}

// Makes capitals of the text that it reads from the device that it is attached to.
class Capitals final : public xo::xoIoDeviceDelegable {
public:
    Capitals() : xoIoDeviceDelegable(DelegableFlagRead, /*type=*/1000) {}

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override {
        const std::uint64_t count = mDevice ? mDevice->readBytes(buffer, size) : 0;
        for (char* c = buffer; c != buffer + count; ++c)
            if (*c >= 'a' && *c <= 'z') *c = static_cast<char>(*c - 'a' + 'A');
        return count;
    }
    std::uint64_t writeBytes(const char*, std::uint64_t) override { return 0; }
    bool hasError() const override { return mDevice && mDevice->hasError(); }
    bool atEnd() const override { return !mDevice || mDevice->atEnd(); }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return 0; }
    std::uint64_t tellp() override { return 0; }
    bool beginDelegation(xo::xoIoDevice* device) override { return mDevice = device, true; }
    bool endDelegation() override { return mDevice = nullptr, true; }
    void clearDelegation() override { mDevice = nullptr; }

private:
    xo::xoIoDevice* mDevice = nullptr;
};

// Writes a line at a time: in capitals, with "|" in front of the line that completes 16 bytes, and to two streams.
bool copyLines(const std::vector<std::string>& lines, std::ostream& first, std::ostream& second) {
    xo::xoIoDeviceStdStreamProxy firstFile(nullptr, &first), secondFile(nullptr, &second);
    xo::xoIoDeviceBroadcast both({&firstFile, &secondFile});
    Capitals capitals;
    xo::xoIoDeviceWriteStreamModifier modifier(&capitals);
    xo::xoIoDeviceSignaler::Signal mark = [](xo::xoIoDevice* device) { *device << "|"; };
    xo::xoIoDeviceSignaler marked(&mark, /*threshold=*/16);
    if (!modifier.beginDelegation(&both) || !marked.beginDelegation(&modifier)) return false;
    for (const std::string& line : lines) marked << line;
    return marked.endDelegation() && modifier.endDelegation();
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    const std::vector<Measurement> day = {
        {"roof", 1583244309, 12.0625}, {"cellar; \"north\"", 1583244309, 8.5}, {"roof", 1583247909, 13.12345}};

    std::uint64_t size = 0;
    std::vector<Measurement> again;
    {
        std::ofstream out("day.bin", std::ios::binary);
        if (!save(day, out, size)) return 1;
    }
    {
        std::ifstream in("day.bin", std::ios::binary);
        if (!load(in, again)) return 1;
    }
    std::cout << again.size() << " measurements in " << size << " bytes, the last " << again.back().value << '\n';

    std::string bytes(static_cast<std::size_t>(size), '\0');
    std::ifstream("day.bin", std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(size));
    std::ofstream("cut.bin", std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(size - 3));
    std::ifstream cut("cut.bin", std::ios::binary);
    again.clear();
    std::cout << "truncated: " << (load(cut, again) ? "unnoticed" : "noticed") << ", " << again.size() << " whole\n";

    const bool good = writeTable(day) && showTable("day.csv") && showTable("day (1).csv");
    showTable("day (2).csv");

    std::ostringstream copy, backup;
    const bool isCopied = copyLines({"roof 12.1;", "cellar 8.5;", "roof 13.1;"}, copy, backup);
    std::cout << copy.str() << (copy.str() == backup.str() ? ", twice\n" : ", unlike its backup\n");
    xo::terminateXoSystem();
    return good && isCopied ? 0 : 1;
}
