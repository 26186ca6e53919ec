// A fresh folder with a non-ASCII name and a space, removed with all it holds when the object goes.
#ifndef XO_TESTS_TEMPORARYFOLDER_H
#define XO_TESTS_TEMPORARYFOLDER_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/windows.h"
#include "xoSystem/xoDirUtils.h"

namespace xo::tests {

class TemporaryFolder {
public:
    TemporaryFolder() {
        const auto base = std::filesystem::temp_directory_path() / L"xo t\u00E9st \u65E5\u672C ";
        for (unsigned number = ::GetCurrentProcessId();;
             ++number) {  // identifiers come again, folders may be left over
            mPath = base.wstring() + std::to_wstring(number);
            if (std::filesystem::create_directory(mPath)) break;
        }
    }
    ~TemporaryFolder() { xoDirUtils::ClearFolderUtf8(mPath.u8string(), /*removeFolderItself=*/true); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& widePath() const { return mPath; }

    // The UTF-8 path of a name inside, or of the folder itself.
    std::string path(const std::string& utf8Name = {}) const {
        return utf8Name.empty() ? mPath.u8string() : (mPath / std::filesystem::u8path(utf8Name)).u8string();
    }

    void write(const std::string& utf8Name, const std::string& bytes) const {
        std::ofstream(mPath / std::filesystem::u8path(utf8Name), std::ios::binary) << bytes;
    }

    // All bytes of a file, or a text that says it is missing.
    std::string read(const std::string& utf8Name) const {
        std::ifstream file(mPath / std::filesystem::u8path(utf8Name), std::ios::binary);
        if (!file) return "<no file " + utf8Name + ">";
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }

    bool has(const std::string& utf8Name) const {
        return std::filesystem::exists(mPath / std::filesystem::u8path(utf8Name));
    }

private:
    std::filesystem::path mPath;
};

}  // namespace xo::tests

#endif
