// The high scores of a game: saved so that a crash leaves the old file or the new one, never half of one; sent as a
// message that is put together in memory; and every game noted at the end of a file that several programs write to.
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoIoDeviceFile.h"
#include "xoSystem/xoIoDeviceMemory.h"

namespace {

using File = xo::xoIoDeviceFile;
using Memory = xo::xoIoDeviceMemory;

struct Score {
    std::string player;
    std::uint32_t points = 0;
};

// Any device will do.
bool write(const std::vector<Score>& scores, xo::xoIoDevice& device) {
    xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessLittle);
    stream << std::uint32_t(scores.size());
    for (const Score& score : scores) stream << score.player << score.points;
    return stream.isOk();
}

bool read(xo::xoIoDevice& device, std::vector<Score>& scores) {
    xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessLittle);
    std::uint32_t count = 0;
    stream >> count;
    for (std::uint32_t i = 0; i < count && stream.isOk(); ++i) {
        Score score;
        stream >> score.player >> score.points;
        if (stream.isOk()) scores.push_back(score);
    }
    return stream.isOk();
}

bool save(const std::vector<Score>& scores, const std::string& path) {
    File file;
    if (!file.openUtf8(path, File::OpenReplace)) return false;
    return write(scores, file) && file.close();  // only now the old file goes
}

bool note(const std::string& line) {
    File file;  // others append to the same file
    if (!file.openUtf8("games.txt", File::OpenAppend, File::ShareAll)) return false;
    file << line + "\n";
    return file.close();
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    if (!save({{"Ada", 300}, {"Béla", 250}}, "scores.bin")) return 1;
    {
        File unfinished;
        if (!unfinished.openUtf8("scores.bin", File::OpenReplace)) return 1;
        unfinished << "half of";
    }  // never closed by the program: dropped

    std::vector<Score> scores;
    File file;
    if (!file.openUtf8("scores.bin", File::OpenRead) || !read(file, scores)) return 1;
    std::cout << scores.size() << " scores, the best is " << scores.front().player << "'s\n";

    Memory message;
    message.setMaxBytes(1024);  // the most that the other side takes
    if (!write(scores, message)) return 1;
    const std::vector<char> sent = message.takeBytes();
    Memory received = Memory::View(sent.data(), sent.size());
    scores.clear();
    std::cout << "a message of " << sent.size() << " bytes: " << (read(received, scores) ? "read" : "broken") << '\n';

    if (!note("Ada 300") || !note("Béla 250")) return 1;
    if (!file.openUtf8("games.txt", File::OpenRead)) return 1;
    std::string lines(static_cast<std::size_t>(file.getSize()), '\0');
    file.readBytes(lines.data(), lines.size());
    std::cout << lines;
    const bool exists = file.openUtf8("missing.txt", File::OpenRead);
    std::cout << "missing.txt: error " << file.getError().getErrorCode() << '\n';
    xo::terminateXoSystem();
    return exists ? 1 : 0;
}
