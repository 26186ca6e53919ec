// Trees of variants against nlohmann's json and Boost's property tree, which are what a user would take instead.
#include <algorithm>
#include <boost/property_tree/ptree.hpp>
#include <map>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "families.h"
#include "xoSystem/xoVariant.h"

namespace bench {
namespace {

using VariantMap = xo::xoVariant::xoVariantMapImpl;
using Json = nlohmann::json;
using PropertyTree = boost::property_tree::ptree;
using Value = std::variant<std::int64_t, double, bool, std::string>;
using StdTree = std::map<std::string, std::map<std::string, std::map<std::string, Value>>>;

constexpr std::size_t kBranches = 10;
constexpr std::size_t kLeaves = kBranches * kBranches * kBranches;

// A leaf's keys, and its path as each side writes it.
struct Leaf {
    std::string keys[3];
    std::string path;     // ours
    std::string pointer;  // JSON
    std::string dotted;   // Boost
    Json::json_pointer builtPointer;
    std::int64_t number = 0;
};

std::vector<Leaf> makeLeaves() {
    std::vector<Leaf> leaves;
    for (std::size_t i = 0; i < kLeaves; ++i) {
        Leaf leaf;
        leaf.number = static_cast<std::int64_t>(i);
        leaf.keys[0] = "section" + std::to_string(i / (kBranches * kBranches));
        leaf.keys[1] = "group" + std::to_string(i / kBranches % kBranches);
        leaf.keys[2] = "value" + std::to_string(i % kBranches);
        leaf.path = leaf.keys[0] + "/" + leaf.keys[1] + "/" + leaf.keys[2];
        leaf.pointer = "/" + leaf.path;
        leaf.dotted = leaf.keys[0] + "." + leaf.keys[1] + "." + leaf.keys[2];
        leaf.builtPointer = Json::json_pointer(leaf.pointer);
        leaves.push_back(leaf);
    }
    return leaves;
}

template <class Function>
std::function<void()> withEach(const std::vector<Leaf>& leaves, Function function) {
    return [&leaves, function] {
        for (const Leaf& leaf : leaves) keep(function(leaf));
    };
}

// ---- Looking up.

void measureLookUp(Suite& suite, std::vector<Leaf> leaves) {
    VariantMap ours;
    Json json;
    PropertyTree ptree;
    StdTree std;
    for (const Leaf& leaf : leaves) {
        ours.editValuePath(leaf.path) = leaf.number;
        json[leaf.builtPointer] = leaf.number;
        ptree.put(leaf.dotted, std::to_string(leaf.number));
        std[leaf.keys[0]][leaf.keys[1]][leaf.keys[2]] = leaf.number;
    }
    std::shuffle(leaves.begin(), leaves.end(), std::mt19937(7));

    const auto find = [&](const Leaf& leaf) { return ours.findPath(leaf.path)->toInteger(); };
    const auto get = [&](const Leaf& leaf) { return ours.getValuePath(leaf.path).toInteger(); };
    const auto parsed = [&](const Leaf& leaf) {
        return json.at(Json::json_pointer(leaf.pointer)).get_ref<const std::int64_t&>();
    };
    const auto prebuilt = [&](const Leaf& leaf) { return json.at(leaf.builtPointer).get_ref<const std::int64_t&>(); };
    const auto boosts = [&](const Leaf& leaf) { return &ptree.get_child(leaf.dotted).data(); };
    const auto walk = [&](const Leaf& leaf) {
        const auto& group = std.find(leaf.keys[0])->second.find(leaf.keys[1])->second;
        return *std::get_if<std::int64_t>(&group.find(leaf.keys[2])->second);
    };
    for (const Leaf& leaf : leaves)
        require(find(leaf) == leaf.number && get(leaf) == leaf.number && parsed(leaf) == leaf.number &&
                    prebuilt(leaf) == leaf.number && *boosts(leaf) == std::to_string(leaf.number) &&
                    walk(leaf) == leaf.number,
                "the sides find different values");
    const std::vector<Other> others{{"nlohmann, pointer parsed", withEach(leaves, parsed)},
                                    {"nlohmann, pointer built before", withEach(leaves, prebuilt)},
                                    {"boost ptree, get_child", withEach(leaves, boosts)},
                                    {"limit: std::map walk, keys built", withEach(leaves, walk)}};
    suite.compare("variant", "findPath, depth 3 of 1000", kLeaves, withEach(leaves, find), others);
    suite.compare("variant", "getValuePath, depth 3 of 1000", kLeaves, withEach(leaves, get), others);
}

// ---- Whole trees.

// Integers, reals, truths and texts in turn.
template <class Place>
void assign(Place& place, std::int64_t number) {
    static const std::string text = "Rotterdam";
    switch (number % 4) {
        case 0: place = number; break;
        case 1: place = static_cast<double>(number) / 8; break;
        case 2: place = number % 8 == 2; break;
        default: place = text; break;
    }
}

VariantMap buildOurs(const std::vector<Leaf>& leaves) {
    VariantMap tree;
    for (const Leaf& leaf : leaves)
        assign(tree[leaf.keys[0]].editMap()[leaf.keys[1]].editMap()[leaf.keys[2]], leaf.number);
    return tree;
}

template <class Tree>
Tree build(const std::vector<Leaf>& leaves) {
    Tree tree;
    for (const Leaf& leaf : leaves) assign(tree[leaf.keys[0]][leaf.keys[1]][leaf.keys[2]], leaf.number);
    return tree;
}

bool isSame(const xo::xoVariant& ours, const Json& json, const Value& value) {
    switch (value.index()) {
        case 0: return json == std::get<0>(value) && ours == std::get<0>(value);
        case 1: return json == std::get<1>(value) && ours == std::get<1>(value);
        case 2: return json == std::get<2>(value) && ours == std::get<2>(value);
        default: return json == std::get<3>(value) && ours == std::get<3>(value);
    }
}

void measureTrees(Suite& suite, const std::vector<Leaf>& leaves) {
    const VariantMap ours = buildOurs(leaves);
    const Json json = build<Json>(leaves);
    const StdTree std = build<StdTree>(leaves);
    for (const Leaf& leaf : leaves)
        require(isSame(*ours.findPath(leaf.path), json.at(leaf.builtPointer),
                       std.at(leaf.keys[0]).at(leaf.keys[1]).at(leaf.keys[2])),
                "the sides built different trees");
    suite.compare("variant", "build and drop a tree, a key", kLeaves, [&] { keep(buildOurs(leaves)); },
                  {{"nlohmann", [&] { keep(build<Json>(leaves)); }},
                   {"limit: std::map of std::variant", [&] { keep(build<StdTree>(leaves)); }}});
    suite.compare(
        "variant", "copy and drop a tree, a key", kLeaves, [&] { keep(VariantMap(ours)); },
        {{"nlohmann", [&] { keep(Json(json)); }}, {"limit: std::map of std::variant", [&] { keep(StdTree(std)); }}});

    const VariantMap ourCopy(ours);
    const Json jsonCopy(json);
    const StdTree stdCopy(std);
    require(ours == ourCopy && json == jsonCopy && std == stdCopy, "a copy differs from its tree");
    suite.compare("variant", "compare equal trees, a key", kLeaves, [&] { keep(ours == ourCopy); },
                  {{"nlohmann", [&] { keep(json == jsonCopy); }},
                   {"limit: std::map of std::variant", [&] { keep(std == stdCopy); }}});
}

void measureBuildByPath(Suite& suite, const std::vector<Leaf>& leaves) {
    const std::string text = "Rotterdam";
    const auto ours = [&] {
        VariantMap tree;
        for (const Leaf& leaf : leaves) tree.editValuePath(leaf.path) = text;
        return tree;
    };
    const auto jsons = [&] {
        Json tree;
        for (const Leaf& leaf : leaves) tree[Json::json_pointer(leaf.pointer)] = text;
        return tree;
    };
    const auto boosts = [&] {
        PropertyTree tree;
        for (const Leaf& leaf : leaves) tree.put(leaf.dotted, text);
        return tree;
    };
    for (const Leaf& leaf : leaves)
        require(ours().findPath(leaf.path)->getString() == text && jsons().at(leaf.builtPointer) == text &&
                    boosts().get_child(leaf.dotted).data() == text,
                "the sides built different trees by path");
    suite.compare(
        "variant", "build by path and drop, a key", kLeaves, [&] { keep(ours()); },
        {{"nlohmann, pointer parsed", [&] { keep(jsons()); }}, {"boost ptree, put", [&] { keep(boosts()); }}});
}

}  // namespace

void measureVariant(Suite& suite) {
    if (!suite.wants("variant")) return;
    const std::vector<Leaf> leaves = makeLeaves();
    measureLookUp(suite, leaves);
    measureTrees(suite, leaves);
    measureBuildByPath(suite, leaves);
}

}  // namespace bench
