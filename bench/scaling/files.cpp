// Whatever is a file: tables, settings, binary values, lines of the log, folders of many.
#include <array>
#include <fstream>
#include <memory>

#include "series.h"
#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoIoDeviceFile.h"
#include "xoSystem/xoIoDeviceMemory.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoXRefResolverSearchPath.h"

namespace bench {
namespace {

namespace fs = std::filesystem;
using VariantMap = xo::xoVariant::xoVariantMapImpl;

void scaleCsv(Series& series, const Workplace& place) {
    const auto made = [&](std::size_t rows) {
        std::string path = place.file("table.csv");
        std::ofstream file(fs::u8path(path), std::ios::binary);
        for (std::size_t i = 0; i != rows; ++i) file << i << ",0.5,AD-07,Sant Julia de Loria Parish\n";
        return path;
    };
    const auto read = [&](bool typed) {
        return [&, typed](std::size_t rows) -> Run {
            return [path = made(rows), typed, rows] {
                xo::xoCsvFileReader reader(typed);
                reader.setFileName(path);
                require(reader.parseCsvFile() && reader.getTable().size() == rows, "the table could not be read");
            };
        };
    };
    series.measure("csv", "read a table, typed, a row", read(true));
    series.measure("csv", "read a table, texts, a row", read(false));
    series.measure("csv", "read in batches, a row", [&](std::size_t rows) -> Run {
        return [path = made(rows)] {
            xo::xoCsvFileReader reader(true);
            reader.setFileName(path);
            bool finished = false;
            require(reader.parseFirst(finished, 1000), "the file could not be read");
            while (!finished) require(reader.parseNext(finished, /*clearTable=*/true, 1000), "no next rows");
        };
    });
    series.measure("csv", "write, a row", [&](std::size_t rows) -> Run {
        return [folder = place.file(""), rows] {
            xo::xoCsvFileWriter writer(folder, "written", 0xFFFFFFFF);
            for (std::size_t i = 0; i != rows; ++i)
                writer.getStream() << static_cast<int>(i) << 0.5 << "AD-07" << xo::xoCsvStream::EndOfRow();
        };
    });
}

void scaleIni(Series& series, const Workplace& place) {
    const auto filled = [](std::size_t keys) {
        VariantMap map;
        for (std::size_t i = 0; i != keys; ++i)
            map.editValuePath("section" + std::to_string(i / 100) + "/setting" + std::to_string(i)) = "C:/data";
        return map;
    };
    const auto saved = [&, filled](std::size_t keys) {
        std::string path = place.file("settings.ini");
        require(xo::SaveIniFile(path, filled(keys)), "the INI file could not be saved");
        return path;
    };
    series.measure("ini", "load, a key", [&](std::size_t keys) -> Run {
        return [path = saved(keys)] {
            VariantMap map;
            require(xo::LoadIniFile(path, map), "the INI file could not be loaded");
        };
    });
    series.measure("ini", "load one section, a key", [&](std::size_t keys) -> Run {
        std::string path = place.file("one section.ini");
        std::ofstream file(fs::u8path(path), std::ios::binary);
        file << "[all]\n";
        for (std::size_t i = 0; i != keys; ++i) file << "setting" << i * 7919 % keys << "=1\n";
        return [path] {
            VariantMap map;
            require(xo::LoadIniFile(path, map), "the INI file could not be loaded");
        };
    });
    series.measure("ini", "save, a key", [&](std::size_t keys) -> Run {
        return [path = place.file("saved.ini"), map = std::make_shared<VariantMap>(filled(keys))] {
            require(xo::SaveIniFile(path, *map), "the INI file could not be saved");
        };
    });
    series.measure("ini", "update a tenth in place, a key", [&](std::size_t keys) -> Run {
        // Two sets of values in turn: a file that has them all is not written.
        auto changes = std::make_shared<std::array<VariantMap, 2>>();
        for (std::size_t i = 0; i < keys; i += 10)
            for (VariantMap& map : *changes)
                map.editValuePath("section" + std::to_string(i / 100) + "/setting" + std::to_string(i)) =
                    &map == changes->data() ? "D:/data" : "E:/data";
        return [path = saved(keys), changes] {
            std::swap(changes->front(), changes->back());
            require(xo::UpdateIniFile(path, changes->front()), "the INI file could not be changed");
        };
    });
}

void scaleStreams(Series& series, const Workplace& place) {
    const auto transfer = [](xo::xoIoDevice& device, std::size_t values) {
        xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessLittle);
        for (std::size_t i = 0; i != values; ++i) stream << static_cast<std::int64_t>(i);
        std::int64_t last = 0;
        device.seekg(0, xo::xoIoDevice::SeekFromBegin);
        for (std::size_t i = 0; i != values; ++i) stream >> last;
        require(stream.isOk(), "a device has failed");
    };
    series.measure("stream", "memory, 8 bytes there and back", [=](std::size_t values) -> Run {
        return [=] {
            xo::xoIoDeviceMemory memory;
            transfer(memory, values);
        };
    });
    series.measure("stream", "file, 8 bytes there and back", [&, transfer](std::size_t values) -> Run {
        return [=, path = place.file("values.bin")] {
            xo::xoIoDeviceFile file;
            require(file.openUtf8(path, xo::xoIoDeviceFile::OpenReadWrite), "the file could not be opened");
            transfer(file, values);
        };
    });
    series.measure("stream", "one text, a byte", [](std::size_t bytes) -> Run {
        return [text = std::string(bytes, 'x')] {
            xo::xoIoDeviceMemory memory;
            xo::xoDataStream stream(&memory, xo::xoDataStream::EndiannessLittle);
            std::string back;
            stream << text;
            stream >> back;
            require(back.size() == text.size(), "a text was lost");
        };
    });
}

void scaleLog(Series& series, const Workplace& place) {
    const auto lines = [&](const char* name, int flags, int maxBytes, std::size_t largest) {
        series.measure(
            "log", name,
            [=, &place](std::size_t count) -> Run {
                return [=, &place] {
                    xo::xoLog::edit().installFileHandlerExUtf8(place.file("app.log"), flags, maxBytes, 3);
                    for (std::size_t i = 0; i != count; ++i)
                        xo::xoLogObject(xo::xoLogInfo) << "a line of the log: " << i;
                    xo::xoLog::edit().removeFileHandler();
                };
            },
            largest);
    };
    lines("file kept open, a line", xo::xoLogFileKeepOpen, -1, 10'000'000);
    lines("kept open, rotated at 1 MB, a line", xo::xoLogFileKeepOpen, 1 << 20, 10'000'000);
    lines("opened for each line", 0, -1, 100'000);
}

// A hundred files in each folder, which stay for all that follows.
void scaleFolders(Series& series, const Workplace& place) {
    std::size_t files = 0;
    const std::string top = place.file("folders");
    const auto grow = [&files, top](std::size_t size) {
        for (; files < size; ++files) {
            const fs::path folder = fs::u8path(top) / ("folder " + std::to_string(files / 100));
            if (files % 100 == 0) fs::create_directories(folder);
            std::ofstream(folder / ("picture " + std::to_string(files) + ".jpg"));
        }
    };
    constexpr std::size_t kLargest = 100'000;
    series.measure(
        "files", "walk, a file",
        [&](std::size_t size) -> Run {
            grow(size);
            return [top, size] {
                std::vector<std::string> found;
                xo::xoDirUtils::GlobFileAndFolderUtf8(top, &found, nullptr, nullptr, xo::xoDirUtils::GlobRecursive);
                require(found.size() >= size, "files are missing");
            };
        },
        kLargest);
    xo::xoDirUtils::ClearFolderUtf8(top, /*removeFolderItself=*/true);
    files = 0;
    series.measure(
        "files", "index for the resolver, a file",
        [&](std::size_t size) -> Run {
            grow(size);
            return [top, size] {
                xo::xoXRefResolverSearchPath resolver;
                resolver.addSearchPathUtf8(top);
                require(resolver.refresh() && resolver.getFileCount() >= size, "the index is not whole");
            };
        },
        kLargest);
}

}  // namespace

void scaleFiles(Series& series, const Workplace& place) {
    scaleCsv(series, place);
    scaleIni(series, place);
    scaleStreams(series, place);
    scaleLog(series, place);
    scaleFolders(series, place);
}

}  // namespace bench
