// Paths, multi-value insertion, merging, flattening and erasing on one map, against the same on plain data. An input is
// a program: a line is an operation, a key or path, and behind a tab a value.
#include "fuzz.h"
#include "treeModel.h"

namespace xo::fuzz {
namespace {

using Map = xoVariant::xoVariantMapImpl;

constexpr std::size_t kMostSize = 20000;  // copies of the map in itself double it

// The value of a text: what BuildFromString makes of it, or by its first letter something larger.
xoVariant valueOf(const std::string& text, const Map& tree) {
    xoVariant::xoVariantListImpl list;
    switch (text.empty() ? '\0' : text[0]) {
        case 'M': return tree;
        case 'L': return list << xoVariant(tree) << text << 7 << tree.getValuePath(text.substr(1), list, '/');
        case 'S': return std::vector<std::string>{text, ""};
        case 'E': return xoVariant(xoVariant::MAP);
        case 'B': return true;
        case 'U': return {};
        default: return xoVariant::BuildFromString(text);
    }
}

struct Step {
    Map& tree;
    Node& model;
    std::string path;
    xoVariant value;

    void edit() const {
        const Node before = Node::of(value);
        Node& place = create(model, path, '/', before);
        require(Node::of(tree.editValuePath(path, value, '/')).show() == place.show(), "editValuePath of ", path);
    }
    void assign() const {
        create(model, path, '|') = Node::of(value);
        tree.editValuePath(path, 0, '|') = value;
    }
    // The default and the path may lie in what a path replaces.
    void editFromInside() const {
        const xoVariant* const inside = tree.findPath(path, '/');
        if (inside == nullptr || inside->getType() != xoVariant::STRING) return;
        const Node text = Node::of(*inside);
        create(model, text.text.c_str(), '/', text);
        tree.editValuePath(inside->getString().c_str(), *inside, '/');
    }
    void insert(bool asList) const {
        multiInsert(model, path, Node::of(value), asList);
        tree.multiInsert(path, value, asList);
    }
    void merge(bool asList) const {
        const xoVariant* const part = tree.findPath(path, '/');
        const bool isMap = part != nullptr && part->getType() == xoVariant::MAP;
        const Node other = isMap ? Node::of(*part) : model;
        for (const auto& [key, entry] : other.entries) multiInsert(model, key, entry, asList);
        tree.mergeWith(isMap ? part->getMap() : tree, asList);
    }
    void flattenInto() const {
        const char separator = path.empty() ? '/' : path[0];
        Node leaves = Node::of(value.toMap());
        flatten(model, "", separator, leaves);
        Map out = value.toMap();
        tree.toFlattenMap(out, separator);
        require(Node::of(out).show() == leaves.show(), "flattened to ", out.toString());
        if (path.size() % 2 != 0) {
            flatten(Node(model), "", separator, model);
            tree.toFlattenMap(tree, separator);
        }
    }
    void eraseMatches(bool caseInsensitive) const {
        static const std::regex tooLong("[0-9]{9}");  // libstdc++ counts in an int and lets it overflow
        if (std::regex_search(path, tooLong)) return;
        auto flags = std::regex::ECMAScript | std::regex::nosubs;
        if (caseInsensitive) flags |= std::regex::icase;
        std::uint64_t count = 0;
        try {
            count = fuzz::erase(model, std::regex(path, flags), "");
        } catch (const std::regex_error&) {
            try {
                tree.erasePathRegEx(path, caseInsensitive);
            } catch (const std::regex_error&) {
                return;
            }
            throw Failure("no regex_error for " + path);
        }
        require(tree.erasePathRegEx(path, caseInsensitive) == count, "erased not ", count, " by ", path);
    }
    void remove() const { require(tree.remove(path) == (model.entries.erase(path) != 0), "remove ", path); }

    void run(char operation) const {
        switch (operation) {
            case 'e': return edit();
            case 'a': return assign();
            case 'd': return editFromInside();
            case 'i': return insert(false);
            case 'I': return insert(true);
            case 'm': return merge(false);
            case 'n': return merge(true);
            case 'f': return flattenInto();
            case 'x': return eraseMatches(false);
            case 'X': return eraseMatches(true);
            default: return remove();
        }
    }
};

void compare(const Map& tree, const Node& model, const std::string& path) {
    const Node now = Node::of(tree);
    require(now.show() == model.show(), now.show(), "\nnot ", model.show());
    require(tree.toString() == model.toString(), tree.toString(), "\nnot ", model.toString());
    const xoVariant* const found = tree.findPath(path, '/');
    const Node* const wanted = find(model, path, '/');
    require((found != nullptr) == (wanted != nullptr), "findPath of ", path);
    const std::string text = tree.getValuePath(path, "none", '/').toString();
    require(text == (wanted ? wanted->toString() : "none"), "getValuePath of ", path);
}

void compareOrder(const Map& before, const Map& now, bool isSame) {
    require((before == now) == isSame && (now == before) == isSame && (now != before) != isSame, "equality");
    require((before < now) + (now < before) == (isSame ? 0 : 1), "order");
}

void check(const std::string& input) {
    Bytes program(input);
    Map tree;
    Node model;
    model.kind = Node::Map;
    while (!program.atEnd() && model.show().size() < kMostSize) {
        Bytes line(program.until('\n'));
        const char operation = static_cast<char>(line.byte());
        std::string path = line.until('\t');
        path.resize(path.find('\0') == std::string::npos ? path.size() : path.find('\0'));  // a NUL ends a path
        const Map before = tree;
        const std::string shown = model.show();
        const xoVariant value = valueOf(line.rest(), tree);
        Step{tree, model, path, value}.run(operation);
        compare(tree, model, path);
        compareOrder(before, tree, shown == model.show());
    }
}

std::string generate(Random& random) {
    static const std::vector<std::string_view> paths = {"a",     "b", "a/b", "a/",  "/", "",  "a//b",
                                                        "a/b/c", "A", "b/c", "a|b", "l", "ab"};
    static const std::vector<std::string_view> expressions = {"a",   "a/.*", ".*", ".*b",   "[ab]",
                                                              "A/?", "",     "(",  "a|b/c", "/"};
    static const std::vector<std::string_view> values = {"1", "2.5", "a", "a/b", "M", "La",  "Lb",
                                                         "S", "E",   "B", "U",   "",  "text"};
    std::string program;
    for (std::size_t i = 1 + random.below(12); i != 0; --i) {
        const char operation = random.pick({"e", "a", "a", "d", "i", "i", "I", "m", "n", "f", "x", "X", "r"})[0];
        (program += operation).append(random.pick(operation == 'x' || operation == 'X' ? expressions : paths)) += '\t';
        program.append(random.pick(values)) += '\n';
    }
    return program;
}

}  // namespace

const Target kVariants = {"variants", 20000, &generate, &check};

}  // namespace xo::fuzz
