#include "settings.h"

#include "xoSystem/xoIniFile.h"

namespace catalogue {
namespace {

constexpr char kSeparator = '/';

}  // namespace

bool Settings::load(const std::string& path) { return xo::LoadIniFile(path, mValues); }

bool Settings::save(const std::string& path) const { return xo::SaveIniFile(path, mChanges, /*merge=*/true); }

std::string Settings::text(const char* path, const char* otherwise) const {
    return mValues.getValuePath(path, otherwise, kSeparator).toString();
}

std::int64_t Settings::number(const char* path, std::int64_t otherwise) const {
    return mValues.getValuePath(path, otherwise, kSeparator).toInteger();
}

xo::xoVariant Settings::value(const char* path) const {
    return mValues.getValuePath(path, xo::xoVariant(), kSeparator);
}

void Settings::change(const char* path, const xo::xoVariant& value) {
    mValues.editValuePath(path, xo::xoVariant(), kSeparator) = value;
    mChanges.editValuePath(path, xo::xoVariant(), kSeparator) = value;
}

}  // namespace catalogue
