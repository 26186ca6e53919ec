#include "xref/reference.h"

#include <gtest/gtest.h>

namespace {

using xo::xref::readReference;
using xo::xref::Reference;

// "relative ../../a/b.png", or "nowhere".
std::string read(const std::string& text) {
    const Reference reference = readReference(text);
    const char* const kinds[] = {"nowhere", "relative ", "rooted ", "drive ", "share "};
    std::string result = kinds[static_cast<int>(reference.kind)] + reference.root;
    for (std::size_t i = 0; i != reference.leavesFolders; ++i) result += "../";
    return result + xo::xref::joinNames(reference.names);
}

TEST(Reference, IsTakenApart) {
    const std::pair<const char*, const char*> rows[] = {
        {"oak.png", "relative oak.png"},
        {" \t a b.png\n", "relative a b.png"},
        {"textures\\wood//./Oak.PNG", "relative textures/wood/Oak.PNG"},
        {"..\\../x/../a/b.png", "relative ../../a/b.png"},
        {"a/../../b.png", "relative ../b.png"},
        {"D:\\old\\project\\oak.png", "drive D:/old/project/oak.png"},
        {"d:/../../a.png", "drive d:/a.png"},
        {"D:a.png", "rooted a.png"},
        {"/a/b", "rooted a/b"},
        {"\\a", "rooted a"},
        {"\\\\server\\share\\..\\..\\a.png", "share //server/share/a.png"},
        {"//server//share//a/b", "share //server/share/a/b"},
        {"file:///D:/a%20b/%C3%A9.png", "drive D:/a b/\xC3\xA9.png"},
        {"FILE://localhost/D:/a", "drive D:/a"},
        {"file:/D:/a", "drive D:/a"},
        {"file:D:/a", "drive D:/a"},
        {"file://D:/a", "drive D:/a"},
        {"file://host/share/a%20b", "share //host/share/a b"},
        {"file:////host/share/a", "share //host/share/a"},
        {"file:///x/oak%20a.png", "rooted x/oak a.png"},
        {"file:a/100%.png", "relative a/100%.png"},
        {"file:a%2fb%5Cc", "relative a/b/c"},
        {"file", "relative file"},
        {"a%20b", "relative a%20b"},  // no URL, no code
        {"comic1.txt/com10/xcon", "relative comic1.txt/com10/xcon"}};
    for (const auto& [text, parts] : rows) EXPECT_EQ(read(text), parts) << text;
}

TEST(Reference, OfADeviceAStreamOrAFolderLeadsNowhere) {
    const std::string rows[] = {"",
                                " ",
                                "/",
                                "a/",
                                "a\\",
                                "a/.",
                                "a/..",
                                "..",
                                "C:",
                                "C:/",
                                "file:",
                                "file:///",
                                "\xFF.png",
                                "a\xC3",
                                {"a\0b", 3},
                                "a<b",
                                "a|b",
                                "a?",
                                "a*/b",
                                "\"a\"",
                                "a\nb",
                                "ab:c",
                                "C:/a:b",
                                "ab:/c",
                                "C:/a:$DATA",
                                "\\\\.\\C:",
                                "\\\\?\\C:\\a",
                                "//./pipe/x",
                                "\\\\?\\UNC\\a\\b\\c",
                                "\\??\\C:\\a",
                                "NUL",
                                "a/nul/b",
                                "COM1.txt",
                                "Lpt9 .x",
                                "C:/con",
                                "CONIN$",
                                "com\xC2\xB9",
                                "\\\\server",
                                "\\\\server\\share",
                                "\\\\server\\share\\",
                                "//../a/b",
                                "file:a%00b",
                                "file:///%5C%5C.%5Ca",
                                "file:%2F%2F%3F/C:/a",
                                "file:NUL",
                                "//a:b/c/d",
                                "x/../NUL/../a"};
    for (const std::string& text : rows) EXPECT_EQ(read(text), "nowhere") << text;
}

}  // namespace
