// What the large containers hold for each item, and what building them takes at most, against what a user would take
// instead. Bytes stand where other families have times.
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "families.h"
#include "peakHeap.h"
#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoVariant.h"
#include "xoSystem/xoXRefResolverSearchPath.h"

namespace bench {
namespace {

namespace fs = std::filesystem;
using VariantMap = xo::xoVariant::xoVariantMapImpl;
using Value = std::variant<std::int64_t, double, bool, std::string>;
using StdTree = std::map<std::string, std::map<std::string, Value>>;
using TextMap = std::map<std::string, std::string>;
using Strings = std::vector<std::vector<std::string>>;

struct Use {
    double held, peak;
};

// Of an object that the function makes.
template <class Make>
Use useOf(const Make& make) {
    const PeakHeap heap;
    const auto object = make();
    keep(object);
    return {heap.held(), heap.peak()};
}

struct OtherUse {
    const char* name;
    Use use;
};

void compareUse(Suite& suite, const std::string& name, double items, const Use& ours,
                const std::vector<OtherUse>& others) {
    for (const OtherUse& other : others) {
        const auto add = [&](const char* what, double our, double their) {
            const double ratio = our / their;
            suite.add({"memory", name + what, other.name, our / items, their / items, ratio, ratio, ratio});
        };
        add(", held", ours.held, other.use.held);
        add(", peak", ours.peak, other.use.peak);
    }
}

// A value of each kind in turn, under a key of a usual length.
std::string keyOf(int i) { return "setting" + std::to_string(i); }

template <class Leaf>
void assignLeaf(Leaf&& leaf, int i) {
    switch (i % 4) {
        case 0: leaf = std::int64_t{i}; break;
        case 1: leaf = i / 8.0; break;
        case 2: leaf = i % 8 == 2; break;
        default: leaf = "C:/Program Files/Parcels/" + std::to_string(i);
    }
}

void measureTree(Suite& suite) {
    constexpr int kGroups = 100, kInGroup = 1000;
    const auto fill = [](auto& tree, auto&& group) {
        for (int i = 0; i < kGroups; ++i) {
            auto& map = group(tree, "group" + std::to_string(i));
            for (int j = 0; j < kInGroup; ++j) assignLeaf(map[keyOf(j)], j);
        }
    };
    const auto plain = [](auto& tree, const std::string& name) -> auto& { return tree[name]; };
    compareUse(suite, "variant tree, a key", kGroups * kInGroup, useOf([&] {
                   VariantMap tree;
                   fill(tree, [](VariantMap& map, const std::string& name) -> VariantMap& {
                       map[name] = VariantMap();
                       return map[name].editMap();
                   });
                   return tree;
               }),
               {{"nlohmann", useOf([&] {
                     nlohmann::json tree;
                     fill(tree, plain);
                     return tree;
                 })},
                {"std::map of std::variant", useOf([&] {
                     StdTree tree;
                     fill(tree, plain);
                     return tree;
                 })}});
}

void measureCsvTable(Suite& suite, const fs::path& folder) {
    constexpr int kRows = 100000, kColumns = 6;
    const fs::path path = folder / L"table.csv";
    {
        std::ofstream file(path, std::ios::binary);
        for (int i = 0; i < kRows; ++i)
            file << i << ',' << i / 8.0 << ",AD-" << i % 90 << ",Sant Julia de Loria Parish," << i % 7
                 << ",https://en.example.org/wiki/" << i << '\n';
    }
    const auto ours = [&](bool typed) {
        return useOf([&] {
            auto reader = std::make_unique<xo::xoCsvFileReader>(typed);
            reader->setFileName(path.u8string());
            require(reader->parseCsvFile() && reader->getTable().size() == kRows, "the table could not be read");
            return reader;
        });
    };
    const OtherUse splits{"vector of vectors of strings", useOf([&] {
                              Strings table;
                              std::ifstream file(path, std::ios::binary);
                              for (std::string line; std::getline(file, line);) {
                                  table.emplace_back();
                                  for (std::size_t at = 0, end = 0; end != std::string::npos; at = end + 1) {
                                      end = line.find(',', at);
                                      table.back().push_back(line.substr(at, end - at));
                                  }
                              }
                              return table;
                          })};
    compareUse(suite, "CSV table, typed, a cell", kRows * kColumns, ours(true), {splits});
    compareUse(suite, "CSV table, texts, a cell", kRows * kColumns, ours(false), {splits});
}

void measureIniMap(Suite& suite, const fs::path& folder) {
    constexpr int kSections = 200, kKeys = 100;
    const fs::path path = folder / L"settings.ini";
    TextMap texts;
    {
        std::ofstream file(path, std::ios::binary);
        for (int i = 0; i < kSections; ++i) {
            file << "[section" << i << "]\r\n";
            for (int j = 0; j < kKeys; ++j) {
                file << keyOf(j) << "=C:/Program Files/Parcels/" << j << "\r\n";
                texts["section" + std::to_string(i) + "/" + keyOf(j)] = "C:/Program Files/Parcels/" + std::to_string(j);
            }
        }
    }
    compareUse(suite, "INI map of texts, a key", kSections * kKeys, useOf([&] {
                   VariantMap map;
                   require(xo::LoadIniFile(path.u8string(), map), "the INI file could not be loaded");
                   return map;
               }),
               {{"std::map of paths and texts", useOf([&] { return TextMap(texts); })}});
}

void measureIndex(Suite& suite, const fs::path& folder) {
    constexpr int kFiles = 5000;
    const fs::path top = folder / L"index";
    for (int i = 0; i < kFiles; ++i) {
        const fs::path inner = top / (L"folder " + std::to_wstring(i % 50));
        fs::create_directories(inner);
        std::ofstream(inner / (L"picture " + std::to_wstring(i) + L".jpg"));
    }
    compareUse(suite, "index of the resolver, a file", kFiles, useOf([&] {
                   auto resolver = std::make_unique<xo::xoXRefResolverSearchPath>();
                   resolver->addSearchPathUtf8(top.u8string());
                   require(resolver->refresh() && resolver->getFileCount() == kFiles, "the index is not whole");
                   return resolver;
               }),
               {{"unordered_multimap, name to path", useOf([&] {
                     std::unordered_multimap<std::string, std::string> index;
                     for (const auto& entry : fs::recursive_directory_iterator(top))
                         if (!entry.is_directory())
                             index.emplace(entry.path().filename().u8string(), entry.path().u8string());
                     return index;
                 })}});
}

}  // namespace

void measureMemory(Suite& suite) {
    if (!suite.wants("memory")) return;
    const fs::path folder = fs::temp_directory_path() / L"xoBench memory";
    fs::create_directories(folder);
    measureTree(suite);
    measureCsvTable(suite, folder);
    measureIniMap(suite, folder);
    measureIndex(suite, folder);
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

}  // namespace bench
