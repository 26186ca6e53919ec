#include <gtest/gtest.h>

#include "support/child.h"
#include "xoSystem/xoProgressConsole.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoProgressConsole;
using xo::xoStringUtils;
using State = xo::xoProgressState;

State importing() {
    State state;
    state.phase = State::PhaseRunning;
    state.fraction = 0.719;
    state.unit = xo::ProgressUnitItems;
    state.done = 20856;
    state.total = 29000;
    state.unitsPerSecond = 12300.4;
    state.elapsedMs = 12000;
    state.remainingMs = 5000;
    state.title = "Import";
    state.text = "a long path/that is cut/in its middle";
    return state;
}

TEST(ProgressConsole, LineLosesWhatMattersLeastFirst) {
    const struct {
        unsigned columns;
        const char* line;
    } rows[] = {
        {120,
         "Import: a long path/that is cut/in its middle  [==================>       ]  71 %  20,856 of 29,000  "
         "12,300/s  0:05 left"},
        {92, "Import: a long path/that is cut/in its middle  [=====>  ]  71 %  20,856 of 29,000  0:05 left"},
        {75, "Import: a long path/that is cut/in its middle  [======>  ]  71 %  0:05 left"},
        {60, "Import: a long pat...its middle  [=====>  ]  71 %  0:05 left"},
        {40, "Import: a lo...dle  [========>   ]  71 %"},
        {24, "Import: a lo...dle  71 %"},
        {12, "Import  71 %"},
        {10, "I...  71 %"},
        {4, "71 %"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(xoProgressConsole::FormatLine(importing(), row.columns), row.line) << row.columns;
}

TEST(ProgressConsole, LineFitsEveryWidth) {
    State states[] = {importing(), importing(), importing()};
    states[1].title = "\xE6\x97\xA5\xE6\x9C\xAC";                                             // wide characters
    states[1].text = "e\xCC\x81 \xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x94\xA7 \x1B[2J\n\xFF";  // of many units, harmful
    states[2].isIndeterminate = true;
    states[2].total = 0;
    states[2].unit = xo::ProgressUnitBytes;
    for (const State& state : states)
        for (unsigned columns = 4; columns <= 120; ++columns)
            for (const unsigned tick : {0u, 7u, 4711u}) {
                const std::string line = xoProgressConsole::FormatLine(state, columns, tick);
                EXPECT_LE(xoStringUtils::GetDisplayWidth(line), columns) << line;
                EXPECT_NE(line.find(state.isIndeterminate ? "<=>" : "71 %"), std::string::npos) << columns;
                EXPECT_EQ(line.find('\x1B'), std::string::npos);
            }
    for (unsigned columns = 0; columns < 4; ++columns)
        EXPECT_EQ(xoProgressConsole::FormatLine(importing(), columns), "71 %");
}

TEST(ProgressConsole, BarMovesWhileTheTotalIsUnknown) {
    State state;
    state.phase = State::PhaseRunning;
    state.isIndeterminate = true;
    state.title = "Count";
    state.unit = xo::ProgressUnitBytes;
    state.done = 1468006;
    EXPECT_EQ(xoProgressConsole::FormatLine(state, 33, 0), "Count  [<=>     ]  1.40 MiB  0:00");
    EXPECT_EQ(xoProgressConsole::FormatLine(state, 33, 5), "Count  [     <=>]  1.40 MiB  0:00");
    EXPECT_EQ(xoProgressConsole::FormatLine(state, 33, 6), "Count  [    <=> ]  1.40 MiB  0:00");
    EXPECT_EQ(xoProgressConsole::FormatLine(state, 33, 10), "Count  [<=>     ]  1.40 MiB  0:00");
}

TEST(ProgressConsole, DrawsBelowTheLinesOfAConsole) {
    const xo::tests::Child child(L"progressShower", {}, CREATE_NEW_CONSOLE);
    const int result = child.wait();
    if (result == 2) GTEST_SKIP() << "no console can be made here";
    EXPECT_EQ(result, 0);
}

}  // namespace
