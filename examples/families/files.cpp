// Saving without ever losing the old version: the new one is written beside it under a temporary name, and takes its
// place only when it is whole. Versions before go to a folder of backups, which is emptied in the end; before that the
// whole folder is copied for the next year.
#include <fstream>
#include <iostream>
#include <string>

#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoProgress.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using Files = xo::xoDirUtils;

bool write(const std::string& path, const std::string& text) {
    // Streams of this compiler take wide paths, as everything of Windows does.
    std::ofstream file(xo::xoStringUtils::convertToUnicode(path, xo::xoStringUtils::CharSetUtf8).c_str(),
                       std::ios::binary);
    file << text;
    return static_cast<bool>(file.flush());
}

bool save(const std::string& path, const std::string& text, std::string& error) {
    const std::string folder = Files::GetParentPathUtf8(path);
    const std::string backups = folder + "/backups";
    if (!Files::MkpathUtf8(backups)) {
        error = "no folder " + backups;
        return false;
    }
    if (Files::FileExistsUtf8(path) &&
        !Files::CopyFileUtf8(path, Files::GetTempFileUtf8(backups, "old", "txt"), /*failIfExists=*/true)) {
        error = "no backup of " + path;
        return false;
    }
    const std::string half = Files::GetTempFileUtf8(folder, "new");
    if (!write(half, text)) {
        error = "no space for " + half;
        return false;
    }
    return Files::RenameFileUtf8(half, path, &error);
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeBasic);
    const std::string path = "\xC3\xA5r/2020/report.txt";
    std::string error;
    bool good = save(path, "first", error) && save(path, "second version", error);

    xo::xoFileInfoUtf8 info;
    Files::GetFileInfoUtf8(path, info);
    std::cout << info.path << ": " << info.size << " bytes\n"
              << "on disk: " << Files::GetActualPathNameUtf8("\xC3\xA5r/2020/REPORT.TXT") << '\n'
              << "space left: " << (Files::GetAvailableDiskSizeUtf8(path, error) > 0 ? "yes" : "no") << '\n';

    // The whole folder, with a notifier that could also cancel it.
    xo::xoProgressNotifier progress;
    good = Files::CopyFolderUtf8("\xC3\xA5r/2020", "\xC3\xA5r/2021", /*failIfExists=*/true, &error, &progress) && good;
    std::cout << "copied: " << progress.getState().fraction * 100 << " %, report "
              << (Files::FileExistsUtf8("\xC3\xA5r/2021/report.txt") ? "included" : "missing") << '\n';

    good = Files::ClearFolderUtf8("\xC3\xA5r/2020/backups", /*removeFolderItself=*/true, &error) && good;
    std::cout << "backups " << (Files::DirExistsUtf8("\xC3\xA5r/2020/backups") ? "kept" : "gone") << '\n';

    if (!save("\xC3\xA5r/2020/report.txt/part", "in a file", error)) std::cout << error << '\n';

    xo::terminateXoSystem();
    return good ? 0 : 1;
}
