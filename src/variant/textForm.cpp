// Numbers look as a stream in the classic locale prints them by default, but are appended to the text without one.
#include "variant/textForm.h"

#include <charconv>
#include <vector>

#include "text/numberText.h"

namespace xo::variant {
namespace {

void appendInteger(std::string& out, std::int64_t value) {
    char digits[24];  // the least value has 20 characters with its sign
    out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void appendReal(std::string& out, double value) {
    char digits[text::kRealCapacity];
    out.append(digits, text::printReal(digits, value));
}

// In the order in which they are stored: a matrix has no rows here.
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

// Appends a value that is not a container.
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
        // UNKNOWN and USERDATA have no text. The caller handles containers.
        default: break;
    }
}

// Writes a tree element by element. The containers around the current one wait on the heap.
class TreeWriter {
public:
    TreeWriter(std::string& out, TreeCursor tree, std::string_view outermostSeparator)
        : mOut(out), mTree(tree), mOutermostSeparator(outermostSeparator) {}

    void write() {
        do {
            while (!mTree.atEnd()) writeElement();
        } while (leave());
    }

private:
    // Writes the current element, or the beginning of the container that it is.
    void writeElement() {
        if (!mIsFirst) mOut += separator();
        if (mTree.isOnMap()) {
            mOut += '(';
            mOut += mTree.key();
            mOut += '=';
        }
        if (isContainer(mTree.value())) {
            enter();
        } else {
            appendLeaf(mOut, mTree.value());
            endElement();
        }
    }

    // Only the outermost list has the caller's separator; lists below it use a blank.
    std::string_view separator() const {
        if (mTree.isOnMap()) return ",";
        return mAround.empty() ? mOutermostSeparator : " ";
    }

    // The cursor that is stored still refers to the container itself; leave() advances it when the container is
    // written.
    void enter() {
        mAround.push_back(mTree);
        mTree = TreeCursor::into(mTree.value());
        mIsFirst = true;
    }

    // Continues behind the container that has been written. Returns false if that was the outermost one.
    bool leave() {
        if (mAround.empty()) return false;
        mTree = mAround.back();
        mAround.pop_back();
        endElement();
        return true;
    }

    // An element is complete: a plain value, or a container after its last element.
    void endElement() {
        if (mTree.isOnMap()) mOut += ')';
        mTree.advance();
        mIsFirst = false;
    }

    std::string& mOut;
    TreeCursor mTree;
    std::string_view mOutermostSeparator;
    bool mIsFirst = true;             // of its container
    std::vector<TreeCursor> mAround;  // each on the container that was entered from it
};

}  // namespace

void appendText(std::string& out, const xoVariant& value) {
    if (isContainer(value)) {
        appendTree(out, TreeCursor::into(value));
    } else {
        appendLeaf(out, value);
    }
}

void appendTree(std::string& out, TreeCursor tree, std::string_view listSeparator) {
    TreeWriter(out, tree, listSeparator).write();
}

}  // namespace xo::variant
