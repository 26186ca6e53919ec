#include "variant/textForm.h"

#include <charconv>

#include "text/numberText.h"

namespace xo::variant {
namespace {

void appendInteger(std::string& out, std::int64_t value) {
    char digits[24];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void appendReal(std::string& out, double value) {
    char digits[text::kRealRoom];
    out.append(digits, text::printReal(digits, value));
}

void appendNumbers(std::string& out, const double* values, int count) {
    out += '[';
    for (int i = 0; i < count; ++i) {
        if (i != 0) out += ',';
        appendReal(out, values[i]);
    }
    out += ']';
}

void appendStrings(std::string& out, const std::vector<std::string>& strings) {
    const char* separator = "";
    for (const std::string& string : strings) {
        out += separator;
        out += string;
        separator = " ";
    }
}

void appendLeaf(std::string& out, const xoVariant& value) {
    switch (value.getType()) {
        case xoVariant::INTEGER:
        case xoVariant::DATETIME: appendInteger(out, value.toInteger()); break;
        case xoVariant::REAL: appendReal(out, value.toReal()); break;
        case xoVariant::STRING: out += value.getString(); break;
        case xoVariant::BOOL: out += value.toBool() ? "true" : "false"; break;
        case xoVariant::VEC2D: appendNumbers(out, value.getVec2d(), 2); break;
        case xoVariant::VEC3D: appendNumbers(out, value.getVec3d(), 3); break;
        case xoVariant::VEC4D: appendNumbers(out, value.getVec4d(), 4); break;
        case xoVariant::MAT3D: appendNumbers(out, value.getMat3d(), 9); break;
        case xoVariant::MAT4D: appendNumbers(out, value.getMat4d(), 16); break;
        case xoVariant::STRINGLIST: appendStrings(out, value.getStringList()); break;
        default: break;
    }
}

}  // namespace

void appendText(std::string& out, const xoVariant& value) {
    if (isContainer(value)) {
        appendTree(out, TreeCursor::into(value));
    } else {
        appendLeaf(out, value);
    }
}

void appendTree(std::string& out, TreeCursor tree, std::string_view listSeparator) {
    std::vector<TreeCursor> around;  // each on the value that is being written
    bool first = true;               // in the container that the cursor is on
    for (;;) {
        if (tree.atEnd()) {
            if (around.empty()) return;
            tree = around.back();
            around.pop_back();
        } else {
            if (!first) out += tree.isOnMap() ? "," : around.empty() ? listSeparator : " ";
            if (tree.isOnMap()) {
                out += '(';
                out += tree.key();
                out += '=';
            }
            if (isContainer(tree.value())) {
                around.push_back(tree);
                tree = TreeCursor::into(tree.value());
                first = true;
                continue;
            }
            appendLeaf(out, tree.value());
        }
        if (tree.isOnMap()) out += ')';
        tree.advance();
        first = false;
    }
}

}  // namespace xo::variant
