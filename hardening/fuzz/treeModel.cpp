#include "treeModel.h"

#include "fuzz.h"

namespace xo::fuzz {

Node Node::of(const xoVariant& value) {
    Node node;
    switch (value.getType()) {
        case xoVariant::MAP: return of(value.getMap());
        case xoVariant::STRING: return ofText(value.getString());
        case xoVariant::LIST:
            node.kind = List;
            for (const xoVariant& element : value.getList()) node.elements.push_back(of(element));
            return node;
        case xoVariant::STRINGLIST:
            node.kind = Strings;
            for (const std::string& text : value.getStringList()) node.elements.push_back(ofText(text));
            return node;
        default: node.text = std::to_string(value.getType()) + ':' + value.toString(); return node;
    }
}

Node Node::of(const xoVariant::xoVariantMapImpl& map) {
    Node node;
    node.kind = Map;
    for (const auto& [key, value] : map) node.entries[key] = of(value);
    require(node.entries.size() == map.size(), "a map of ", map.size(), " has ", node.entries.size(), " keys");
    return node;
}

Node Node::ofText(std::string text) {
    Node node;
    node.kind = Text;
    node.text = std::move(text);
    return node;
}

std::string Node::show() const {
    std::string out = std::to_string(kind) + '<' + std::to_string(text.size()) + ' ' + text;
    for (const Node& element : elements) out += ' ' + element.show();
    for (const auto& [key, value] : entries) out += ' ' + std::to_string(key.size()) + key + '=' + value.show();
    return out + '>';
}

std::string Node::toString() const {
    if (kind == Text) return text;
    if (kind == Scalar) return text.empty() ? text : text.substr(text.find(':') + 1);
    std::string out;
    for (const Node& element : elements) out += (&element == elements.data() ? "" : " ") + element.toString();
    for (const auto& [key, value] : entries) out += (out.empty() ? "(" : ",(") + key + '=' + value.toString() + ')';
    return out;
}

std::vector<std::string> keysOf(const std::string& path, char separator) {
    std::vector<std::string> keys(1);
    for (const char c : path) {
        if (c == separator) {
            keys.emplace_back();
        } else {
            keys.back() += c;
        }
    }
    return keys;
}

const Node* find(const Node& map, const std::string& path, char separator) {
    const Node* at = &map;
    for (const std::string& key : keysOf(path, separator)) {
        if (at->kind != Node::Map || at->entries.count(key) == 0) return nullptr;
        at = &at->entries.at(key);
    }
    return at;
}

Node& create(Node& map, const std::string& path, char separator, const Node& fill) {
    Node* at = &map;
    std::vector<std::string> keys = keysOf(path, separator);
    const std::string last = keys.back();
    keys.pop_back();
    for (const std::string& key : keys) {
        at = &at->entries[key];
        if (at->kind != Node::Map) *at = Node::of(xoVariant(xoVariant::MAP));
    }
    return at->entries.emplace(last, fill).first->second;
}

void multiInsert(Node& map, const std::string& key, const Node& value, bool asList) {
    const auto [place, isNew] = map.entries.emplace(key, value);
    if (isNew) return;
    Node& existing = place->second;
    if (!asList && existing.kind == Node::Map && value.kind == Node::Map) {
        for (const auto& [innerKey, inner] : value.entries) multiInsert(existing, innerKey, inner, false);
    } else if (!asList && existing.kind == Node::Strings && value.kind == Node::Text) {
        existing.elements.push_back(value);
    } else {
        if (existing.kind != Node::List) {
            const bool areTexts = !asList && existing.kind == Node::Text && value.kind == Node::Text;
            Node both;
            both.kind = areTexts ? Node::Strings : Node::List;
            both.elements.push_back(existing);
            existing = both;
        }
        existing.elements.push_back(value);
    }
}

void flatten(const Node& map, const std::string& prefix, char separator, Node& out) {
    for (const auto& [key, value] : map.entries) {
        if (value.kind == Node::Map) {
            flatten(value, prefix + key + separator, separator, out);
        } else if (value.kind == Node::List) {
            Node rest;
            rest.kind = Node::List;
            for (const Node& element : value.elements)
                if (element.kind != Node::Map) rest.elements.push_back(element);
            if (!rest.elements.empty() || value.elements.empty()) multiInsert(out, prefix + key, rest, false);
            for (const Node& element : value.elements)
                if (element.kind == Node::Map) flatten(element, prefix + key + separator, separator, out);
        } else {
            multiInsert(out, prefix + key, value, false);
        }
    }
}

std::uint64_t erase(Node& container, const std::regex& expression, const std::string& prefix) {
    std::uint64_t count = 0;
    for (auto at = container.entries.begin(); at != container.entries.end();) {
        const std::string path = prefix + at->first;
        if (std::regex_match(path, expression)) {
            ++count;
            at = container.entries.erase(at);
            continue;
        }
        count += erase(at->second, expression, path + "/");
        ++at;
    }
    for (Node& element : container.elements) count += erase(element, expression, prefix);
    return count;
}

}  // namespace xo::fuzz
