#include <gtest/gtest.h>

#include <string>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using namespace std::string_literals;

TEST(PathText, FallsIntoFolderBaseAndExtension) {
    const struct {
        const char *path, *folder, *file, *base, *extension;
    } rows[] = {
        {"", "", "", "", ""},
        {"a.txt", "", "a.txt", "a", "txt"},
        {"x/y/a.tar.gz", "x/y", "a.tar.gz", "a.tar", "gz"},
        {"x\\y/a", "x\\y", "a", "a", ""},
        {"x/y\\a.b", "x/y", "a.b", "a", "b"},
        {"x.y/a", "x.y", "a", "a", ""},
        {"x/", "x", "", "", ""},
        {"/a", "/", "a", "a", ""},
        {"C:\\a.b", "C:\\", "a.b", "a", "b"},
        {"C:/x/a", "C:/x", "a", "a", ""},
        {"x/.profile", "x", ".profile", ".profile", ""},
        {"x/.a.b", "x", ".a.b", ".a", "b"},
        {"..", "", "..", "..", ""},
        {"a.", "", "a.", "a", ""},
    };
    for (const auto& row : rows) {
        std::string folder = row.path, file;
        xoStringUtils::SplitFolderFilename(folder, folder, file);
        EXPECT_EQ(folder, row.folder) << row.path;
        EXPECT_EQ(file, row.file) << row.path;
        EXPECT_EQ(xoStringUtils::ExtractFolder(row.path), row.folder);
        EXPECT_EQ(xoStringUtils::ExtractFileBaseName(row.path), row.base) << row.path;
        EXPECT_EQ(xoStringUtils::ExtractFileExtension(row.path), row.extension) << row.path;
    }
}

TEST(PathText, BecomesAValidFileName) {
    const struct {
        std::string name;
        char replacement;
        std::string result;
    } rows[] = {
        {"plain.txt", '_', "plain.txt"},
        {"\xC3\xA9 \xE4\xB8\xAD.txt", '_', "\xC3\xA9 \xE4\xB8\xAD.txt"},
        {"<>:\"/\\|?*\x01\x1F\0"s, '-', "------------"},
        {"a/b?", '\0', "a_b_"},  // a replacement that would itself be wrong
        {"a/b?", '*', "a_b_"},
        {"a/b?", '.', "a_b_"},
        {"a/b?", '\xC3', "a_b_"},
        {"a. .", '_', "a___"},
        {" .a", '_', " .a"},
        {"", '_', "_"},
        {"..", '_', "__"},
        {"con", '_', "con_"},
        {"NUL.tar.gz", '-', "NUL-.tar.gz"},
        {"aux .txt", '_', "aux_ .txt"},
        {"Com1", '_', "Com1_"},
        {"LPT\xC2\xB2.x", '_', "LPT\xC2\xB2_.x"},
        {"conin$", '_', "conin$_"},
        {"CO?", 'N', "CONN"},  // the replacement may make a device name
        {"COM", '_', "COM"},
        {"COM10", '_', "COM10"},
        {"CONSOLE", '_', "CONSOLE"},
        {"x.con", '_', "x.con"},
    };
    for (const auto& row : rows) {
        std::string name = row.name;
        EXPECT_EQ(xoStringUtils::GenerateValidFileName(name, row.replacement), row.result) << row.name;
        EXPECT_EQ(xoStringUtils::GenerateValidFileName(name, row.replacement), row.result) << "not stable";
    }
}

}  // namespace
