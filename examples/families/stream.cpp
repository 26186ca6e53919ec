// A day's measurements, kept twice: exactly, in a binary file with a mark and a version of its own, and as a table for
// people. The binary file is read back; a truncated one is noticed.
#include <cstdint>
#include <fstream>
#include <iostream>
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
    xo::terminateXoSystem();
    return good ? 0 : 1;
}
