// A fresh folder with a non-ASCII name and a space, removed with all it holds when the object goes.
#ifndef XO_TESTS_TEMPORARYFOLDER_H
#define XO_TESTS_TEMPORARYFOLDER_H

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/windows.h"

namespace xo::tests {

class TemporaryFolder {
public:
    TemporaryFolder() {
        static std::atomic<int> made{0};
        mPath =
            std::filesystem::temp_directory_path() /
            (L"xo t\u00E9st \u65E5\u672C " + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++made));
        std::filesystem::create_directories(mPath);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(LR"(\\?\)" + mPath.wstring(), ignored);
    }
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
