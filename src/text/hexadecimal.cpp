// Bytes and UUIDs as hexadecimal digits.
#include <array>
#include <cstring>
#include <functional>
#include <string_view>

#include "text/ascii.h"
#include "text/blocks.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

constexpr std::size_t kUuidSize = 16;
constexpr std::size_t kDashedUuidSize = 36;  // 32 digits and 4 dashes: RFC 4122

constexpr std::array<unsigned char, 256> makeDigitValues() {
    std::array<unsigned char, 256> values{};
    for (std::size_t i = 0; i != values.size(); ++i)
        values[i] = static_cast<unsigned char>(text::digitValue(static_cast<char>(i)));
    return values;
}

// The value of each character as a digit, 16 for all others. Looking it up is faster than comparing with the ranges.
constexpr auto kDigitValues = makeDigitValues();

unsigned char lookUpDigit(char c) { return kDigitValues[static_cast<unsigned char>(c)]; }

char digitOf(unsigned value) { return "0123456789abcdef"[value]; }

// The hexadecimal digits of sixteen values below 16. To values from 10 up the distance between the character behind '9'
// and 'a' is added.
__m128i digitsOf(__m128i values) {
    const __m128i toLetter = _mm_and_si128(_mm_cmpgt_epi8(values, _mm_set1_epi8(9)), _mm_set1_epi8('a' - '9' - 1));
    return _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), toLetter);
}

// Writes twice as many digits as there are bytes. out must not overlap the data.
void encode(const char* data, std::size_t size, char* out) {
    const __m128i lowBits = _mm_set1_epi8(0x0F);
    for (; size >= 16; size -= 16, data += 16, out += 32) {
        const __m128i bytes = text::loadBlock(data);
        // SSE2 has no shift of single bytes. That of 16 bits moves in bits of the neighbour, which the mask removes.
        const __m128i high = digitsOf(_mm_and_si128(_mm_srli_epi16(bytes, 4), lowBits));
        const __m128i low = digitsOf(_mm_and_si128(bytes, lowBits));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(high, low));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16), _mm_unpackhi_epi8(high, low));
    }
    for (; size != 0; --size, ++data) {
        const auto byte = static_cast<unsigned char>(*data);
        *out++ = digitOf(byte >> 4);
        *out++ = digitOf(byte & 0x0FU);
    }
}

// Decodes size bytes from twice as many digits. The values of all characters are combined with "or": a character that
// is no digit has bits in the upper half, which are tested once at the end.
bool decode(const char* text, std::size_t size, char* out) {
    unsigned seen = 0;
    for (; size != 0; --size, text += 2) {
        const unsigned high = lookUpDigit(text[0]);
        const unsigned low = lookUpDigit(text[1]);
        seen |= high | low;
        *out++ = static_cast<char>(high << 4 | low);
    }
    return seen < 16;
}

// Whether the input begins in the buffer of the output. The whole capacity counts, because resizing may write behind
// the present end. std::less orders any two pointers, operator< only those into one array.
bool liesIn(const char* data, const std::string& out) {
    const std::less<> before{};
    return !before(data, out.data()) && !before(out.data() + out.capacity(), data);
}

// In the form 8-4-4-4-12.
bool isDashPlace(std::size_t index) { return index == 8 || index == 13 || index == 18 || index == 23; }

// Writes the 16 bytes. After false they are undefined.
bool parseUuid(std::string_view text, char* bytes) {
    if (text.size() > 2 && text.front() == '{' && text.back() == '}') text = text.substr(1, text.size() - 2);
    if (text.size() == 2 * kUuidSize) return decode(text.data(), kUuidSize, bytes);
    if (text.size() != kDashedUuidSize) return false;

    char digits[2 * kUuidSize];
    char* out = digits;
    for (std::size_t i = 0; i != kDashedUuidSize; ++i) {
        if (!isDashPlace(i)) {
            *out++ = text[i];
        } else if (text[i] != '-') {
            return false;
        }
    }
    return decode(digits, kUuidSize, bytes);
}

}  // namespace

void xoStringUtils::ToHex(const char* data, std::uint64_t size, std::string& out) {
    if (liesIn(data, out)) {
        const std::string copy(data, size);
        return ToHex(copy.data(), size, out);
    }
    out.resize(2 * size);
    encode(data, size, out.data());
}

bool xoStringUtils::FromHex(const char* text, std::uint64_t size, std::string& out) {
    if (liesIn(text, out)) {
        const std::string copy(text, size);
        return FromHex(copy.data(), size, out);
    }
    out.resize(size / 2);
    if (size % 2 == 0 && decode(text, size / 2, out.data())) return true;
    out.clear();
    return false;
}

void xoStringUtils::UUIDToHex(const unsigned char* uuid, std::string& out, bool withDashes) {
    ToHex(reinterpret_cast<const char*>(uuid), kUuidSize, out);
    if (!withDashes) return;
    for (std::size_t i = 0; i != kDashedUuidSize; ++i) {
        if (isDashPlace(i)) out.insert(i, 1, '-');
    }
}

bool xoStringUtils::UUIDToBinary(const std::string& text, unsigned char* uuid) {
    char bytes[kUuidSize];
    if (!parseUuid(text, bytes)) return false;
    std::memcpy(uuid, bytes, kUuidSize);
    return true;
}

bool xoStringUtils::IsUUID(const std::string& text) {
    char bytes[kUuidSize];
    return parseUuid(text, bytes);
}

}  // namespace xo
