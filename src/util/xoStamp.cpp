#include "xoSystem/xoStamp.h"

namespace xo {

StampGenerator::StampGenerator() : mNext(std::make_unique<std::atomic<std::uint64_t>>(1u)) {}

StampGenerator::~StampGenerator() = default;

}  // namespace xo
