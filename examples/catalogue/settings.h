// The settings of the catalogue: an INI file read as a tree of values.
#ifndef CATALOGUE_SETTINGS_H
#define CATALOGUE_SETTINGS_H

#include <cstdint>
#include <string>

#include "xoSystem/xoVariant.h"

namespace catalogue {

// Values are reached by path, "section/key"; each has the default that holds when the file does not have it.
class Settings {
public:
    bool load(const std::string& path);

    // Writes what was changed and keeps whatever else the file holds.
    bool save(const std::string& path) const;

    std::string text(const char* path, const char* otherwise) const;
    std::int64_t number(const char* path, std::int64_t otherwise) const;
    xo::xoVariant value(const char* path) const;
    void change(const char* path, const xo::xoVariant& value);

private:
    xo::xoVariant::xoVariantMapImpl mValues;
    xo::xoVariant::xoVariantMapImpl mChanges;
};

}  // namespace catalogue

#endif
