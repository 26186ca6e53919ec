// The same figures three times: as a report for a narrow console, as a table for a page of the project's wiki, and the
// settings of the run as a plain list.
#include <iostream>
#include <string>

#include "xoSystem/xoAsciiTableBuilder.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using Table = xo::AsciiTableBuilder;

struct Run {
    const char* file;
    int rows;
    double seconds;
    const char* note;
};

constexpr Run kRuns[] = {
    {"D:/import/2024/Norge/Ålesund.csv", 1204, 0.31, "ok"},
    {"D:/import/2024/日本/東京.csv", 29000, 6.5, "2 rows without a date; 1 row twice"},
    {"D:/import/2024/empty.csv", 0, 0.002, "no rows"},
};

Table report() {
    Table table({"File", "Rows", "Seconds", "Note"});
    table.editColumn(0).overflow = Table::OverflowCutMiddle;
    table.editColumn(2).decimals = 2;
    int rows = 0;
    double seconds = 0;
    for (const Run& run : kRuns) {
        table.addRow({run.file, run.rows, run.seconds, run.note});
        rows += run.rows;
        seconds += run.seconds;
    }
    return table.addSeparator().addRow({"all", rows, seconds});
}

xo::xoVariant::xoVariantMapImpl settings() {
    xo::xoVariant::xoVariantMapImpl map;
    map.editValuePath("import/folder") = "D:/import";
    map.editValuePath("import/threads") = 8;
    map.editValuePath("report/width") = 64.0;
    return map;
}

}  // namespace

int main() {
    // A program for a console would ask GetConsoleWidth(); this one prints the same wherever it runs.
    Table table = report();
    std::cout << table.setMaxWidth(64).build() << '\n';
    std::cout << table.setStyle(Table::StyleMarkdown).build() << '\n';
    std::cout << Table::FromMap(settings()).setStyle(Table::StylePlain).build() << '\n';

    // For a line of one's own: a name that cannot write to the terminal, in twenty columns of it.
    std::string name = "東京\x1b[2J-backup-of-yesterday.csv";
    xo::xoStringUtils::CutToDisplayWidth(xo::xoStringUtils::MakePrintable(name), 20, "...", /*inMiddle=*/true);
    std::cout << '[' << name << "] " << xo::xoStringUtils::GetDisplayWidth(name) << " columns\n";
    return 0;
}
