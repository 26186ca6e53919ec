// Stamp and StampGenerator: unique, increasing tokens that tell which of two things is newer.
//
//     static xo::StampGenerator stamps;
//     mesh.changed = stamps.generateStamp();
//     ...
//     if (cache.built < mesh.changed) rebuild(cache);
#ifndef XOSYSTEM_XOSTAMP_H
#define XOSYSTEM_XOSTAMP_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

// A value. Only a generator makes valid stamps. The order of stamps from different generators has no meaning.
class Stamp {
public:
    constexpr Stamp() = default;  // invalid

    // Less than every valid stamp.
    static constexpr Stamp Invalid() { return Stamp(); }
    constexpr bool isValid() const { return mValue != 0; }

    // Greater means newer.
    constexpr bool operator<(Stamp other) const { return mValue < other.mValue; }
    constexpr bool operator>(Stamp other) const { return mValue > other.mValue; }
    constexpr bool operator==(Stamp other) const { return mValue == other.mValue; }

private:
    friend class StampGenerator;
    explicit constexpr Stamp(std::uint64_t value) : mValue(value) {}

    std::uint64_t mValue = 0;
};

// Thread-safe. Not copyable: a copy would generate the same stamps again.
class XOSYSTEM_API StampGenerator {
public:
    StampGenerator();
    virtual ~StampGenerator();
    StampGenerator(const StampGenerator&) = delete;
    StampGenerator& operator=(const StampGenerator&) = delete;

    // The stamps are 1, 2, 3 and so on, each given once. A stamp is greater than those that the same thread, or a
    // thread that has synchronised with it, has generated before.
    Stamp generateStamp() { return Stamp(mNext->fetch_add(1, std::memory_order_relaxed)); }

private:
    std::unique_ptr<std::atomic<std::uint64_t>> mNext;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
