// The loop of a game: it draws less often on battery, rebuilds its cache only when the map has changed, measures how
// long that takes, keeps the map's heights in memory of their own, computes with four of them at once, and tells
// versions apart.
#include <iostream>
#include <string>

#include "xoSystem/xoInit.h"
#include "xoSystem/xoPowerStatus.h"
#include "xoSystem/xoStamp.h"
#include "xoSystem/xoThread.h"
#include "xoSystem/xoTimer.h"
#include "xoSystem/xoVectorConstants.h"
#include "xoSystem/xoVersion.h"
#include "xoSystem/xoVirtualMemory.h"

namespace {

struct Map {
    xo::StampGenerator stamps;
    xo::Stamp changed = stamps.generateStamp();

    void dig() { changed = stamps.generateStamp(); }
};

// Knows by a stamp for which state of the map it was built.
class Cache {
public:
    // True when there was something to do.
    bool update(const Map& map) {
        if (!(mBuiltFor < map.changed)) return false;
        xo::xoThread::msleep(20);  // the work
        mBuiltFor = map.changed;
        return true;
    }

private:
    xo::Stamp mBuiltFor;  // less than every valid one
};

int pictureIntervalMs(const xo::xoPowerStatus& power) {
    const bool isLow = power.mBatteryPercent != xo::xoPowerStatus::BatteryUnknown && power.mBatteryPercent < 20;
    return power.mAcLine == xo::xoPowerStatus::AcLineOffline ? (isLow ? 100 : 33) : 16;
}

// The sum of the magnitudes of many heights, four at a time; negative where there is no memory.
float sumOfDepths(int count) {
    xo::VirtualMemoryAllocatorDisk block;
    auto* const heights = static_cast<float*>(block.allocateMemory(sizeof(float) * static_cast<std::uint64_t>(count)));
    if (!heights) return -1;
    for (int i = 0; i < count; i += 2) heights[i] = -1;  // the others are 0, as all memory of a new block
    __m128 sum = xo::sSSEZero;
    for (int i = 0; i + 4 <= count; i += 4)
        sum = _mm_add_ps(sum, _mm_andnot_ps(xo::sSSESignBitMask, _mm_load_ps(heights + i)));
    block.freeMemory();  // the object does not own it
    float lanes[4];
    _mm_storeu_ps(lanes, sum);
    return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    xo::xoTimer sinceStart(/*snapNow=*/true);

    Map map;
    Cache cache;
    xoHighResTimer building;
    building.start();
    const bool first = cache.update(map);
    building.stop();
    const bool second = cache.update(map);
    map.dig();
    const bool third = cache.update(map);
    std::cout << std::boolalpha << "built: " << first << ", " << second << ", " << third << "; the first took "
              << (building.getElapsedTimeInMilliSec() >= 10.0 ? "a while" : "no time") << '\n';

    xo::xoPowerStatusReader power(/*intervalMs=*/1000);  // however often it is asked
    const int intervalMs = pictureIntervalMs(power.getPowerStatus());
    std::cout << "pictures: " << (intervalMs >= 16 && intervalMs <= 100 ? "on time" : "never") << '\n';

    std::cout << "depths: " << sumOfDepths(4000) << '\n';

    const xo::xoVersion saved(1, 9, 5, "of the file"), ours(1, 10, 0, "of the program");
    std::cout << "the file is " << (saved < ours ? "older" : "not older") << '\n'
              << "xoSystem " << xoSystem::Version::GetDescStringMajorMinor() << '\n';

    const bool isSlow = sinceStart.isElapsedSec(30);
    xo::terminateXoSystem();
    return first && !second && third && !isSlow ? 0 : 1;
}
