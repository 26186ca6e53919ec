#include "tables.h"

#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoProgressConsole.h"
#include "xoSystem/xoStringUtils.h"
#include "xoSystem/xoXRefResolverSearchPath.h"

namespace catalogue {
namespace {

const std::vector<std::string> kExtensions = {"csv"};

std::vector<std::string> resolve(const std::vector<std::string>& names, const std::string& settingsPath,
                                 const std::string& dataFolder) {
    using Resolver = xo::xoXRefResolverSearchPath;
    Resolver resolver;
    resolver.addSearchPathUtf8(dataFolder);
    resolver.setExtensions(kExtensions);
    std::vector<std::string> tables;
    for (std::string name : names) {
        const auto matches = resolver.findAllUtf8(xo::xoStringUtils::trim(name), settingsPath);
        if (matches.empty()) {
            xo::xoLogObject(xo::xoLogWarning) << "the table is missing: " << name;
            continue;
        }
        const Resolver::Match& best = matches.front();
        const std::string how(xo::EnumHelper<Resolver::How>::ToLabel(best.how));
        xo::xoProgressConsole::WriteLine("table:    " + best.path + ", " + how);
        tables.push_back(best.path);
    }
    return tables;
}

}  // namespace

std::vector<std::string> findTables(const Settings& settings, const std::string& settingsPath,
                                    const std::string& dataFolder) {
    const auto names = xo::xoStringUtils::Split(settings.text("catalogue/tables", ""), ',', /*skipEmpty=*/true);
    if (!names.empty()) return resolve(names, settingsPath, dataFolder);
    std::vector<std::string> tables;
    xo::xoDirUtils::GlobFileAndFolderUtf8(dataFolder, &tables, nullptr, &kExtensions, xo::xoDirUtils::GlobRecursive);
    for (const std::string& table : tables) xo::xoProgressConsole::WriteLine("table:    " + table);
    return tables;
}

}  // namespace catalogue
