// Loading, saving and updating INI files. A file is replaced as a whole, so that a failure leaves the old one.
#include "xoSystem/xoIniFile.h"

#include "files/fileBytes.h"
#include "files/fileReplacement.h"
#include "ini/iniFormat.h"
#include "platform/wideText.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoSystemError.h"

namespace xo {
namespace {

using ini::Map;

bool hasTopSection(const Map& map) {
    const auto found = map.find(ini::kTopSection);
    return found != map.end() && found->second.getType() == xoVariant::MAP;
}

// The path is resolved once, so that all steps reach one file even when another thread changes the working folder.
class Saving {
public:
    explicit Saving(const std::string& path)
        : mPath(path), mFullPath(platform::toExtendedPath(platform::toWide(path))) {}

    // The file is opened before the text is made, so that a file that cannot be opened gives the same failure whatever
    // the map holds.
    bool save(const Map& map) {
        // A value that cannot be written ends the text early. The lines before it are saved all the same, and the
        // result is false.
        files::FileReplacement file(mFullPath);
        if (const DWORD error = file.begin()) return failed(error);
        std::string bytes;
        const bool isComplete = ini::appendSections(bytes, map);
        if (const DWORD error = file.commit(bytes)) return failed(error);
        return isComplete;
    }

    bool merge(const Map& map) {
        files::FileBytes file;
        switch (file.read(mFullPath)) {
            case files::FileBytes::Complete: return saveOver(file.view(), map);
            // A map with a section General goes through the overlay, as when it is merged into a file, so that both
            // give one form.
            case files::FileBytes::Missing: return hasTopSection(map) ? saveOver({}, map) : save(map);
            // A file that exists but cannot be read is never overwritten: its values would be lost.
            default: return failedToLoad();
        }
    }

    bool update(const Map& map) {
        files::FileBytes file;
        const auto state = file.read(mFullPath);
        if (state == files::FileBytes::Unreadable) return failedToLoad();
        std::string updated;
        if (!ini::updateIni(file.view(), map, updated)) return false;
        // Nothing to change: the file keeps its time of modification.
        if (state == files::FileBytes::Complete && updated == file.view()) return true;
        files::FileReplacement replacement(mFullPath);
        DWORD error = replacement.begin();
        if (error == ERROR_SUCCESS) error = replacement.commit(updated);
        return error == ERROR_SUCCESS || failed(error);
    }

private:
    // Both go through the overlay, so that keys below General are at the top level and each key is written once.
    bool saveOver(std::string_view text, const Map& map) {
        Map loaded;
        ini::readIni(text, loaded);
        Map result;
        ini::overlay(result, loaded);
        ini::overlay(result, map);
        return save(result);
    }

    bool failed(DWORD error) const {
        xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr)
            << "Fail to save " << std::string_view(mPath) << ": " << std::string_view(SystemError(error).toString());
        return false;
    }

    bool failedToLoad() const {
        xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr) << "Fail to load " << std::string_view(mPath);
        return false;
    }

    const std::string& mPath;  // as it was given, for messages
    std::wstring mFullPath;
};

}  // namespace

bool LoadIniFile(const std::string& path, xoVariant::xoVariantMapImpl& map) {
    files::FileBytes file;
    // A file of which only a part could be read changes nothing in the map.
    if (file.read(platform::toApiPath(path)) != files::FileBytes::Complete) return false;
    ini::readIni(file.view(), map);
    return true;
}

bool SaveIniFile(const std::string& path, const xoVariant::xoVariantMapImpl& map, bool merge) {
    Saving saving(path);
    return merge ? saving.merge(map) : saving.save(map);
}

bool UpdateIniFile(const std::string& path, const xoVariant::xoVariantMapImpl& map) { return Saving(path).update(map); }

}  // namespace xo
