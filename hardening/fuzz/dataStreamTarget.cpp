// The binary data stream over any bytes: what is read is what the layout says, short reads fail and change nothing, and
// what was read writes the same bytes again. An input is a number of reads, a byte for each, and the device's bytes.
#include <cstring>

#include "fuzz.h"
#include "stream/memoryDevice.h"
#include "xoSystem/xoDataStream.h"

namespace xo::fuzz {
namespace {

// The same bytes, read the slow way.
class Model {
public:
    explicit Model(const std::string& bytes) : mRest(bytes) {}

    bool take(std::size_t size, bool isBig, std::uint64_t& bits) {
        if (mRest.size() < size) return false;
        bits = 0;
        for (std::size_t i = 0; i < size; ++i)
            bits = bits << 8 | static_cast<unsigned char>(mRest[isBig ? i : size - 1 - i]);
        mRest.remove_prefix(size);
        return true;
    }
    bool takeText(bool isBig, std::string& text) {
        std::uint64_t size = 0;
        text.clear();
        if (!take(4, isBig, size) || mRest.size() < size) return false;
        text = mRest.substr(0, static_cast<std::size_t>(size));
        mRest.remove_prefix(text.size());
        return true;
    }

private:
    std::string_view mRest;
};

struct Walk {
    Model model;
    xoDataStream in, out;
    std::string expected;  // in the device of the stream out
    bool isOk = true;

    template <class T>
    void value(bool isBig) {
        T read{};
        std::memset(&read, 0x55, sizeof read);
        std::uint64_t bits = 0x5555555555555555;
        in >> read;
        isOk = isOk && model.take(sizeof read, isBig, bits);
        require(std::memcmp(&read, &bits, sizeof read) == 0, "a value of ", sizeof read, " bytes");
        if (!isOk) return;
        out << read;
        append(bits, sizeof read, isBig);
    }

    void boolean() {
        bool read = true;
        std::uint64_t bits = 1;
        in >> read;
        isOk = isOk && model.take(1, false, bits);
        require(read == (bits != 0), "a bool of ", bits);
        if (!isOk) return;
        out << read;
        expected += bits != 0 ? '\xFF' : '\0';
    }

    template <class Text>
    void text(bool isBig) {
        Text read(3, 'x');
        std::string wanted;
        in >> read;
        isOk = isOk && model.takeText(isBig, wanted);
        require(std::string(read.begin(), read.end()) == (isOk ? wanted : ""), "a text of ", read.size(), " bytes");
        if (!isOk) return;
        out << read;
        append(wanted.size(), 4, isBig);
        expected += wanted;
    }

    void append(std::uint64_t bits, std::size_t size, bool isBig) {
        for (std::size_t i = 0; i < size; ++i) expected += static_cast<char>(bits >> 8 * (isBig ? size - 1 - i : i));
    }

    void step(unsigned operation) {
        const bool isBig = (operation & 0x80) != 0;
        in.setEndianness(isBig);
        out.setEndianness(isBig);
        switch (operation % 16) {
            case 0: return boolean();
            case 1: return value<char>(isBig);
            case 2: return value<unsigned char>(isBig);
            case 3: return value<short>(isBig);
            case 4: return value<unsigned short>(isBig);
            case 5: return value<int>(isBig);
            case 6: return value<unsigned int>(isBig);
            case 7: return value<std::int64_t>(isBig);
            case 8: return value<std::uint64_t>(isBig);
            case 9: return value<float>(isBig);
            case 10: return value<double>(isBig);
            case 11: return value<long>(isBig);
            case 12: return text<std::vector<char>>(isBig);
            default: return text<std::string>(isBig);
        }
    }
};

void check(const std::string& input) {
    Bytes bytes(input);
    std::vector<unsigned> operations(bytes.byte() % 24);
    for (unsigned& operation : operations) operation = bytes.byte();
    const std::string content = bytes.rest();

    tests::MemoryDevice source(content), target;
    Walk walk{Model(content), {&source, 0}, {&target, 0}, {}, true};
    for (const unsigned operation : operations) {
        walk.step(operation);
        require(walk.in.isOk() == walk.isOk && walk.out.isOk(), "the ok flag after ", operation);
    }
    require(target.bytes == walk.expected, "other bytes than were read");
}

std::string generate(Random& random) {
    std::string input(1, static_cast<char>(1 + random.below(12)));
    std::string content;
    for (int i = 0; i < input[0]; ++i) {
        const auto operation = static_cast<unsigned char>(random.next());
        input += static_cast<char>(operation);
        const std::size_t size = random.below(9);
        // A text's length, true as a rule.
        if (operation % 16 >= 12) {
            const char length = static_cast<char>(random.oneIn(10) ? random.next() : size);
            const bool isBig = (operation & 0x80) != 0;
            content +=
                isBig ? std::string(3, '\0') + length : length + std::string(3, random.oneIn(10) ? '\xFF' : '\0');
        }
        for (std::size_t k = 0; k < size; ++k) content += static_cast<char>(random.next());
    }
    return input + content;
}

}  // namespace

const Target kDataStream = {"dataStream", 5000, &generate, &check};

}  // namespace xo::fuzz
