// A tree of values as plain recursive data, and what the library's maps do, done the slow way.
#ifndef XO_FUZZ_TREEMODEL_H
#define XO_FUZZ_TREEMODEL_H

#include <map>
#include <regex>
#include <string>
#include <vector>

#include "xoSystem/xoVariant.h"

namespace xo::fuzz {

struct Node {
    enum Kind { Scalar, Text, Strings, Map, List };

    Kind kind = Scalar;
    std::string text;  // of a scalar (with its type before it) or a text
    std::map<std::string, Node> entries;
    std::vector<Node> elements;  // of a list, and the texts of a string list

    static Node of(const xoVariant& value);
    static Node of(const xoVariant::xoVariantMapImpl& map);
    static Node ofText(std::string text);

    std::string show() const;      // tells any two trees apart
    std::string toString() const;  // as the library prints it
};

std::vector<std::string> keysOf(const std::string& path, char separator);
const Node* find(const Node& map, const std::string& path, char separator);
Node& create(Node& map, const std::string& path, char separator, const Node& fill = {});
void multiInsert(Node& map, const std::string& key, const Node& value, bool asList);
void flatten(const Node& map, const std::string& prefix, char separator, Node& out);
std::uint64_t erase(Node& container, const std::regex& expression, const std::string& prefix);

}  // namespace xo::fuzz

#endif
