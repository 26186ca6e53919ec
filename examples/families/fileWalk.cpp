// What takes the space on a disk? The sizes of all files below a folder, by folder; and a list of the pictures, sorted
// as people would sort them.
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using Files = xo::xoDirUtils;

bool make(const std::string& folder, const std::string& name, std::size_t size) {
    if (!Files::MkpathUtf8(folder)) return false;
    std::ofstream file(folder + "/" + name, std::ios::binary);
    file << std::string(size, 'x');
    return static_cast<bool>(file.flush());
}

class Sizes final : public Files::FileSystemVisitor {
public:
    std::map<std::string, std::uint64_t> bytes;  // by folder

private:
    bool onEnterFolder(const std::string& folder) override {
        bytes[folder] = 0;
        return true;
    }
    bool onFile(const std::string& folder, const std::string& file) override {
        xo::xoFileInfoUtf8 info;
        Files::GetFileInfoUtf8(concatPathAndFile(folder, file), info);
        bytes[folder] += info.size;
        return true;
    }
};

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeBasic);
    const bool good = make("trip", "10.jpg", 500) && make("trip", "2.jpg", 300) &&
                      make("trip/raw/day 1", "2.raw", 9000) && make("trip/raw", "notes.txt", 12);

    Sizes sizes;
    const bool whole = sizes.visit("trip");
    for (const auto& [folder, bytes] : sizes.bytes) std::cout << folder << ": " << bytes << " bytes\n";

    std::vector<std::string> pictures;
    const std::vector<std::string> extensions = {"jpg", "raw"};
    Files::GlobFileAndFolderUtf8("trip", &pictures, /*folders=*/nullptr, &extensions, Files::GlobRecursive);
    std::sort(pictures.begin(), pictures.end(), &xo::xoStringUtils::UTF8NaturalSortFunction);
    for (const std::string& picture : pictures) std::cout << picture << '\n';

    xo::terminateXoSystem();
    return good && whole && pictures.size() == 3 ? 0 : 1;
}
