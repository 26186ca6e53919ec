// The record file of a country, which the catalogue writes and its checker reads back:
//
//     char, char        version of the data stream's format
//     string            the country
//     unsigned int      number of regions, then for each:
//         int64, string, string    identifier, code, name
//
// all in big-endian order.
#ifndef CATALOGUE_RECORDS_H
#define CATALOGUE_RECORDS_H

#include <cstdint>
#include <string>

#include "countries.h"

namespace xo {
class xoDataStream;
}

namespace catalogue {

// The record of a country over any device. False once the stream is not ok, or when the version is another one.
bool writeRecord(xo::xoDataStream& stream, const Country& country);
bool readRecord(xo::xoDataStream& stream, Country& country);

// Sets bytes to the size of the file. False when the disk did not take all of it.
bool writeRecords(const std::string& path, const Country& country, std::uint64_t& bytes);

// False when the file is not a whole record file of this version.
bool readRecords(const std::string& path, Country& country);

}  // namespace catalogue

#endif
