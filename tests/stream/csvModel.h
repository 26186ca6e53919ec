// Reading delimited text the slow and obvious way: the whole text decoded to code points first, and each of them asked
// in turn what it means.
#ifndef XO_TESTS_STREAM_CSVMODEL_H
#define XO_TESTS_STREAM_CSVMODEL_H

#include <utf8.h>

#include <string>
#include <vector>

#include "stream/csvParser.h"

namespace xo::tests {

struct CsvModel {
    std::vector<std::vector<std::string>> rows;
    std::string error;

    CsvModel(const std::string& text, const stream::CsvDialect& dialect) {
        const auto is = [](char32_t c, char delimiter) {
            return delimiter >= 0 && c == static_cast<char32_t>(delimiter);
        };
        std::string cell;
        std::vector<std::string> row;
        bool quoted = false;
        bool previousWasDelimiter = false;
        const auto endRow = [&] {
            rows.push_back(row);
            row.clear();
        };
        for (auto at = text.begin(); at != text.end();) {
            const auto begin = at;
            char32_t c = 0;
            try {
                c = utf8::next(at, text.end());
            } catch (const utf8::invalid_code_point&) {
                error = "Invalid code point";
                return;
            } catch (const utf8::exception&) {
                error = "Invalid UTF-8";
                return;
            }
            const bool isDelimiter = is(c, dialect.stringDelimiter);
            if (quoted && isDelimiter) {
                if (previousWasDelimiter) cell.append(begin, at);
                previousWasDelimiter = !previousWasDelimiter;
                continue;
            }
            if (quoted && !previousWasDelimiter) {
                cell.append(begin, at);
                continue;
            }
            quoted = isDelimiter;
            previousWasDelimiter = false;
            if (isDelimiter) continue;
            if (is(c, dialect.columnDelimiter) || c == '\n') {
                row.push_back(cell);
                cell.clear();
                if (!is(c, dialect.columnDelimiter)) endRow();
            } else if (c != '\r') {
                cell.append(begin, at);
            }
        }
        if (!cell.empty()) row.push_back(cell);
        if (!row.empty()) endRow();
    }
};

}  // namespace xo::tests

#endif
