// The state of a generator of stamps. Stamps begin with 1, so that 0 is free for "none".
#include "xoSystem/xoStamp.h"

namespace xo {

StampGenerator::StampGenerator() : mNext(std::make_unique<std::atomic<std::uint64_t>>(1u)) {}

StampGenerator::~StampGenerator() = default;

}  // namespace xo
