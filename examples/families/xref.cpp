// A scene that was made on another machine names its textures as they were called there. Here they are found again, and
// the user is told where that took a guess.
#include <iostream>
#include <string>

#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoIoDeviceFile.h"
#include "xoSystem/xoXRefResolverSearchPath.h"

namespace {

using Resolver = xo::xoXRefResolverSearchPath;

bool make(const std::string& path) {
    xo::xoIoDeviceFile file;
    return xo::xoDirUtils::MkpathUtf8(xo::xoDirUtils::GetParentPathUtf8(path)) &&
           file.openUtf8(path, xo::xoIoDeviceFile::OpenWrite) && file.close();
}

// The folder that the program runs in is not printed.
std::string shown(const std::string& path) {
    return path.substr(xo::xoDirUtils::GetCurrentWorkingDirUtf8().size() + 1);
}

void show(const Resolver& resolver, const std::string& reference, const std::string& document) {
    const auto matches = resolver.findAllUtf8(reference, document);
    std::cout << reference << ": ";
    if (matches.empty()) {
        std::cout << "missing\n";
        return;
    }
    const Resolver::Match& best = matches.front();
    std::cout << shown(best.path) << ", " << xo::EnumHelper<Resolver::How>::ToLabel(best.how);
    if (best.how == Resolver::FoundByName && best.sharedNames == 1) std::cout << " alone: check it";
    if (matches.size() > 1) std::cout << ", and " << matches.size() - 1 << " more";
    std::cout << '\n';
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    for (const char* const path : {"scene/tex/oak.png", "library/wood/Pine.png", "library/stone/slate.png",
                                   "library/old/stone/slate.png", "library/metal/tin.png"})
        if (!make(path)) return 1;
    const std::string document = xo::xoDirUtils::GetAbsolutePathUtf8("scene/house.scene");

    Resolver resolver;
    resolver.addSearchPathUtf8("library");
    resolver.setExtensions({"png", "jpg"});
    for (const char* const reference : {"tex\\oak.png", "D:\\old project\\wood\\PINE.png", "file:///x/stone/slate.png",
                                        "maps/tin.png", "gold.png", "\\\\server\\share\\gold.png", "tex/NUL"})
        show(resolver, reference, document);
    std::cout << resolver.getFileCount() << " files below the search path\n";
    xo::terminateXoSystem();
    return 0;
}
