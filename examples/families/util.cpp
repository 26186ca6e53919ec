// The loop of a game: it draws less often on battery, rebuilds its cache only when the map has changed, measures how
// long that takes, and tells versions apart.
#include <iostream>
#include <string>

#include "xoSystem/xoInit.h"
#include "xoSystem/xoPowerStatus.h"
#include "xoSystem/xoStamp.h"
#include "xoSystem/xoThread.h"
#include "xoSystem/xoTimer.h"
#include "xoSystem/xoVersion.h"

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

    const xo::xoVersion saved(1, 9, 5, "of the file"), ours(1, 10, 0, "of the program");
    std::cout << "the file is " << (saved < ours ? "older" : "not older") << '\n'
              << "xoSystem " << xoSystem::Version::GetDescStringMajorMinor() << '\n';

    const bool isSlow = sinceStart.isElapsedSec(30);
    xo::terminateXoSystem();
    return first && !second && third && !isSlow ? 0 : 1;
}
