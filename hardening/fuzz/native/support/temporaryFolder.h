// A fresh folder, removed with all it holds when the object goes.
#ifndef XO_FUZZ_NATIVE_TEMPORARYFOLDER_H
#define XO_FUZZ_NATIVE_TEMPORARYFOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace xo::tests {

class TemporaryFolder {
public:
    TemporaryFolder() : mPath(::mkdtemp(mTemplate)) {}
    ~TemporaryFolder() { std::filesystem::remove_all(mPath); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path(const std::string& name) const { return mPath / name; }
    void write(const std::string& name, const std::string& bytes) const { std::ofstream(mPath / name) << bytes; }
    std::string read(const std::string& name) const {
        std::ifstream file(mPath / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    char mTemplate[32] = "/tmp/xoFuzz.XXXXXX";
    std::filesystem::path mPath;
};

}  // namespace xo::tests

#endif
