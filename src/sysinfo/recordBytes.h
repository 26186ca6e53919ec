// Binary records of the system, the firmware or a driver, read field by field. Their lengths and offsets are not
// trusted: nothing is read beyond the end.
#ifndef XO_SYSINFO_RECORDBYTES_H
#define XO_SYSINFO_RECORDBYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace xo::sysinfo {

// Refers to the bytes, which must outlive it. Every offset is allowed.
class RecordBytes {
public:
    explicit RecordBytes(std::string_view bytes) : mBytes(bytes) {}

    std::size_t size() const { return mBytes.size(); }

    // The little-endian number at the offset; 0 where it is not wholly inside.
    template <class Number>
    Number number(std::size_t offset) const {
        Number value = 0;
        if (offset <= mBytes.size() && mBytes.size() - offset >= sizeof value)
            std::memcpy(&value, mBytes.data() + offset, sizeof value);
        return value;
    }
    unsigned byte(std::size_t offset) const { return number<std::uint8_t>(offset); }

    // The bytes from the offset to the next NUL, or to the end.
    std::string_view text(std::size_t offset) const {
        const std::string_view rest = from(offset);
        return rest.substr(0, rest.find('\0'));
    }
    std::string_view from(std::size_t offset) const {
        return offset < mBytes.size() ? mBytes.substr(offset) : std::string_view();
    }

private:
    std::string_view mBytes;
};

}  // namespace xo::sysinfo

#endif
