// INI files against SimpleIni, Boost's property tree and the map of texts that many programs write for themselves.
#include <boost/property_tree/ini_parser.hpp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "families.h"
#include "platform/handle.h"
#include "xoSystem/xoIniFile.h"

#define SI_IMPLEMENTATION  // Debian's header keeps the bodies back otherwise
#include <SimpleIni.h>

namespace bench {
namespace {

using VariantMap = xo::xoVariant::xoVariantMapImpl;
using PropertyTree = boost::property_tree::ptree;
using TextMap = std::map<std::string, std::string>;

// Integers, reals, truths and texts in turn.
enum Kind { Integer, Real, Truth, Text };
constexpr int kKinds = 4;

struct Entry {
    std::string section;
    std::string key;
    std::string path;    // ours and the map's
    std::string dotted;  // Boost's
    Kind kind;
    std::string value;
};

std::string numbered(const char* name, int number) {
    char text[32];
    return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%s%03d", name, number))};
}

Entry makeEntry(int section, int key) {
    const std::string values[kKinds] = {std::to_string(section * 7919 + key), std::to_string(key) + ".625",
                                        key % 8 < kKinds ? "true" : "false",
                                        "C:/Program Files/Parcels/" + std::to_string(key)};
    Entry entry;
    entry.section = numbered("section", section);
    entry.key = numbered("setting", key);
    entry.path = entry.section + "/" + entry.key;
    entry.dotted = entry.section + "." + entry.key;
    entry.kind = static_cast<Kind>(key % kKinds);
    entry.value = values[entry.kind];
    return entry;
}

// A file of that many keys, in no order within their section, as people write them.
class IniFile {
public:
    IniFile(const std::filesystem::path& folder, int sections, int keysPerSection) : mPath(folder / L"settings.ini") {
        std::ofstream file(mPath, std::ios::binary);
        for (int section = 0; section < sections; ++section) {
            file << '[' << numbered("section", section) << "]\r\n";
            for (int i = 0; i < keysPerSection; ++i) {
                mEntries.push_back(makeEntry(section, i * 37 % keysPerSection));
                file << mEntries.back().key << '=' << mEntries.back().value << "\r\n";
            }
        }
        file.close();
        require(file.good(), "the INI file could not be written");
    }

    const std::vector<Entry>& entries() const { return mEntries; }
    std::string path() const { return mPath.u8string(); }
    std::string pathOf(const wchar_t* other) const { return (mPath.parent_path() / other).u8string(); }

private:
    std::filesystem::path mPath;
    std::vector<Entry> mEntries;
};

// What a typed read of all keys comes to.
struct Sums {
    long long integers = 0;
    double reals = 0.0;
    long long truths = 0;
    std::size_t textBytes = 0;

    bool operator==(const Sums& other) const {
        return integers == other.integers && reals == other.reals && truths == other.truths &&
               textBytes == other.textBytes;
    }
};

// ---- Loading a file and reading every key by its type.

Sums readByOurs(const IniFile& file) {
    VariantMap map;
    Sums sums;
    if (!xo::LoadIniFile(file.path(), map)) return sums;
    for (const Entry& entry : file.entries()) {
        const xo::xoVariant* const value = map.findPath(entry.path);
        switch (entry.kind) {
            case Integer: sums.integers += value->toInteger(); break;
            case Real: sums.reals += value->toReal(); break;
            case Truth: sums.truths += value->toBool(); break;
            case Text: sums.textBytes += value->getString().size(); break;
        }
    }
    return sums;
}

Sums readBySimpleIni(const IniFile& file) {
    CSimpleIniA ini(/*a_bIsUtf8=*/true);
    Sums sums;
    if (ini.LoadFile(file.path().c_str()) != SI_OK) return sums;
    for (const Entry& entry : file.entries()) {
        const char* const section = entry.section.c_str();
        const char* const key = entry.key.c_str();
        switch (entry.kind) {
            case Integer: sums.integers += ini.GetLongValue(section, key); break;
            case Real: sums.reals += ini.GetDoubleValue(section, key); break;
            case Truth: sums.truths += ini.GetBoolValue(section, key); break;
            case Text: sums.textBytes += std::strlen(ini.GetValue(section, key)); break;
        }
    }
    return sums;
}

Sums readByBoost(const IniFile& file) {
    PropertyTree tree;
    boost::property_tree::read_ini(file.path(), tree);
    Sums sums;
    for (const Entry& entry : file.entries()) {
        switch (entry.kind) {
            case Integer: sums.integers += tree.get<long long>(entry.dotted); break;
            case Real: sums.reals += tree.get<double>(entry.dotted); break;
            case Truth: sums.truths += tree.get<bool>(entry.dotted); break;
            case Text: sums.textBytes += tree.get<std::string>(entry.dotted).size(); break;
        }
    }
    return sums;
}

TextMap loadTextMap(const std::string& path) {
    TextMap map;
    std::ifstream file(path);
    std::string section;
    for (std::string line; std::getline(file, line);) {
        if (line.size() > 1 && line.front() == '[' && line.back() == ']') {
            section = line.substr(1, line.size() - 2) + "/";
        } else if (const std::size_t equals = line.find('='); equals != std::string::npos) {
            map[section + line.substr(0, equals)] = line.substr(equals + 1);
        }
    }
    return map;
}

Sums readByTextMap(const IniFile& file) {
    const TextMap map = loadTextMap(file.path());
    Sums sums;
    for (const Entry& entry : file.entries()) {
        const auto found = map.find(entry.path);
        if (found == map.end()) continue;
        switch (entry.kind) {
            case Integer: sums.integers += std::strtoll(found->second.c_str(), nullptr, 0); break;
            case Real: sums.reals += std::strtod(found->second.c_str(), nullptr); break;
            case Truth: sums.truths += found->second == "true"; break;
            case Text: sums.textBytes += found->second.size(); break;
        }
    }
    return sums;
}

// The end of each line, and the first "=" in it.
std::size_t scanBytes(const std::string& path) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    std::string bytes(std::filesystem::file_size(path), '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    std::size_t found = 0;
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    const auto find = [&](char c) {
        return static_cast<const char*>(std::memchr(at, c, static_cast<std::size_t>(end - at)));
    };
    for (const char* stop = find('\n'); stop; stop = find('\n')) {
        found += std::memchr(at, '=', static_cast<std::size_t>(stop - at)) != nullptr;
        at = stop + 1;
    }
    return found;
}

void openAndClose(const std::string& path) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    keep(file);
    std::fclose(file);
}

void compareReads(Suite& suite, const std::string& name, const IniFile& file, const Other& limit) {
    const Sums sums = readByOurs(file);
    require(sums.textBytes != 0 && sums == readBySimpleIni(file) && sums == readByBoost(file) &&
                sums == readByTextMap(file),
            "the sides read different INI values");
    suite.compare("ini", name, 1, [&] { keep(readByOurs(file)); },
                  {{"SimpleIni", [&] { keep(readBySimpleIni(file)); }},
                   {"boost ptree, read_ini", [&] { keep(readByBoost(file)); }},
                   {"ifstream, std::map of texts", [&] { keep(readByTextMap(file)); }},
                   limit});
}

// ---- Saving.

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeAtOnce(const std::filesystem::path& path, const std::string& bytes) {
    const xo::platform::FileHandle file(::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    ::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

void compareSaves(Suite& suite, const std::string& name, const IniFile& file) {
    VariantMap map;
    CSimpleIniA simple(/*a_bIsUtf8=*/true);
    simple.SetSpaces(false);
    PropertyTree tree;
    require(xo::LoadIniFile(file.path(), map) && simple.LoadFile(file.path().c_str()) == SI_OK,
            "the INI file could not be loaded");
    boost::property_tree::read_ini(file.path(), tree);

    const std::string ourPath = file.pathOf(L"ours.ini");
    const std::string simplePath = file.pathOf(L"simple.ini");
    const std::string boostPath = file.pathOf(L"boost.ini");
    const auto saveOurs = [&] { keep(xo::SaveIniFile(ourPath, map)); };
    const auto saveSimple = [&] { keep(simple.SaveFile(simplePath.c_str(), /*a_bAddSignature=*/false)); };
    const auto saveBoost = [&] { boost::property_tree::write_ini(boostPath, tree); };
    saveOurs();
    saveSimple();
    saveBoost();
    VariantMap ours, simples, boosts;
    require(xo::LoadIniFile(ourPath, ours) && xo::LoadIniFile(simplePath, simples) &&
                xo::LoadIniFile(boostPath, boosts) && ours == map && simples == map && boosts == map,
            "the sides saved different INI files");

    const std::string bytes = readFile(ourPath);
    const std::filesystem::path rawPath = std::filesystem::u8path(file.pathOf(L"raw.ini"));
    suite.compare("ini", name, 1, saveOurs,
                  {{"SimpleIni", saveSimple}, {"boost ptree, write_ini", saveBoost}, {"limit: one write", [&] {
                                                                                          writeAtOnce(rawPath, bytes);
                                                                                      }}});
}

}  // namespace

void measureIni(Suite& suite) {
    if (!suite.wants("ini")) return;
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / L"xoBench";
    std::filesystem::create_directories(folder);
    {
        const IniFile small(folder, 3, 20);
        compareReads(suite, "load and read 60 keys", small,
                     {"limit: fopen, fclose", [&] { openAndClose(small.path()); }});
    }
    const IniFile large(folder, 200, 100);
    require(scanBytes(large.path()) == large.entries().size(), "the scan found another number of keys");
    compareReads(suite, "load and read 20000 keys", large,
                 {"limit: one read, memchr", [&] { keep(scanBytes(large.path())); }});
    compareSaves(suite, "save 20000 keys", large);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace bench
