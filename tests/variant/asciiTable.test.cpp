#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/allocationCount.h"
#include "support/child.h"
#include "xoSystem/xoAsciiTableBuilder.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using Builder = xo::AsciiTableBuilder;
using xo::xoStringUtils;
using xo::xoVariant;
using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text) { return xoStringUtils::Split(text, '\n'); }

Builder sample() {
    Builder table({"Region", "Rows", "Note"});
    table.addRow({"Ålesund", 12, "ok"}).addRow({"日本", 1234, "two\nlines"});
    table.addSeparator().addSeparator().addRow({"all", 1246}).addSeparator();
    return table;
}

TEST(AsciiTable, DrawsEachStyle) {
    const struct {
        int style;
        const char* text;
    } rows[] = {{Builder::StyleAscii, R"(
+---------+------+-------+
| Region  | Rows | Note  |
+---------+------+-------+
| Ålesund |   12 | ok    |
| 日本    | 1234 | two   |
|         |      | lines |
+---------+------+-------+
| all     | 1246 |       |
+---------+------+-------+
)"},
                {Builder::StyleBox, R"(
┌─────────┬──────┬───────┐
│ Region  │ Rows │ Note  │
├─────────┼──────┼───────┤
│ Ålesund │   12 │ ok    │
│ 日本    │ 1234 │ two   │
│         │      │ lines │
├─────────┼──────┼───────┤
│ all     │ 1246 │       │
└─────────┴──────┴───────┘
)"},
                {Builder::StyleMarkdown, R"(
| Region  | Rows | Note         |
|---------|-----:|--------------|
| Ålesund |   12 | ok           |
| 日本    | 1234 | two<br>lines |
| all     | 1246 |              |
)"},
                {Builder::StylePlain, R"(
Region   Rows  Note
Ålesund    12  ok
日本     1234  two
               lines

all      1246
)"}};
    for (const auto& row : rows)
        EXPECT_EQ("\n" + sample().setStyle(static_cast<Builder::Style>(row.style)).build(), row.text);
    EXPECT_EQ("\n" + sample().setStyle(static_cast<Builder::Style>(99)).build(), rows[0].text);
}

TEST(AsciiTable, DrawsLittle) {
    EXPECT_EQ(Builder().build(), "");
    EXPECT_EQ(Builder().addRow(Lines{}).addRow(Lines{}).build(), "");
    Builder untitled;
    untitled.editColumn(1);
    EXPECT_EQ(untitled.build(), "");
    EXPECT_EQ(Builder({"A", ""}).build(), "+---+---+\n| A |   |\n+---+---+\n");
    EXPECT_EQ(Builder({"A"}).setStyle(Builder::StyleMarkdown).build(), "| A |\n|---|\n");
    EXPECT_EQ(untitled.addSeparator().addRow({"a"}).setRowLines(true).addRow({"b", "c"}).build(),
              "+---+---+\n| a |   |\n+---+---+\n| b | c |\n+---+---+\n");
    EXPECT_EQ(untitled.setStyle(Builder::StyleMarkdown).build(), "|   |   |\n|---|---|\n| a |   |\n| b | c |\n");
    EXPECT_EQ(untitled.setStyle(Builder::StylePlain).build(), "a\n\nb  c\n");
    Builder titled({"A"});
    EXPECT_EQ(titled.setStyle(Builder::StylePlain).addSeparator().addRow({1}).build(), "A\n\n1\n");

    Builder moved(std::move(untitled));
    EXPECT_EQ(untitled.build() + Builder(untitled).addRow({"x"}).setStyle(Builder::StylePlain).build(), "x\n");
    untitled = moved;
    moved.addRow({"later"});
    EXPECT_EQ(untitled.build(), "a\n\nb  c\n");
}

// A row of one column in plain style.
std::string shown(const xoVariant& cell, int decimals = -1) {
    Builder table;
    table.editColumn(0).decimals = decimals;
    return table.setStyle(Builder::StylePlain).addRow({cell}).build();
}

TEST(AsciiTable, ShowsValuesAsVariantsDo) {
    EXPECT_EQ(shown(2.5) + shown(2.5, 0) + shown(1.0 / 3, 2) + shown(1e300), "2.5\n2\n0.33\n1e+300\n");
    EXPECT_EQ(shown(2.0, 3) + shown(-HUGE_VAL, 3), "2.000\n-inf\n");
    EXPECT_EQ(shown(1.0, 1000).size(), 2 + 255 + 1u);
    EXPECT_EQ(shown(true) + shown(xoVariant()) + shown(Lines{"a", "b"}), "true\n\na b\n");
    EXPECT_EQ(shown("a\tb\rc\r\nd\n\x1b[31m\xff"), "a b\nc\nd\n\\x1b[31m\\xff\n");

    Builder table({"text", "numbers", "mixed", "left", "middle"});
    table.editColumn(3).align = Builder::AlignLeft;
    table.editColumn(4).align = Builder::AlignCenter;
    table.addRow({"007", 1, 1, 1, 1}).addRow(Lines{"12"}).addRow({"", 2.5, "x", 2.5, 22});
    table.addRow({xoVariant(), "", 22, xoVariant(), 333333});
    EXPECT_EQ("\n" + table.setStyle(Builder::StyleMarkdown).build(), R"(
| text | numbers | mixed | left | middle |
|------|--------:|-------|------|:------:|
| 007  |       1 | 1     | 1    |   1    |
| 12   |         |       |      |        |
|      |     2.5 | x     | 2.5  |   22   |
|      |         | 22    |      | 333333 |
)");
}

TEST(AsciiTable, EscapesMarkdown) {
    Builder table({"a|b\nc"});
    table.setStyle(Builder::StyleMarkdown).addRow({"1|2\r\n\\*`<x>_\x01"}).editColumn(0).maxWidth = 2;
    EXPECT_EQ("\n" + table.setMaxWidth(3).build(), R"(
| a\|b c                   |
|--------------------------|
| 1\|2<br>\\\*\`\<x>_\\x01 |
)");
}

// The lines of one cell of that width.
Lines wrapped(const std::string& text, unsigned width, Builder::Overflow overflow = Builder::OverflowWrap) {
    Builder table;
    table.editColumn(0).maxWidth = width;
    table.editColumn(0).overflow = overflow;
    return linesOf(table.setStyle(Builder::StylePlain).addRow({text}).build());
}

TEST(AsciiTable, BreaksAndCutsCells) {
    EXPECT_EQ(wrapped("the quick  brown fox", 10), (Lines{"the quick", "brown fox"}));
    EXPECT_EQ(wrapped("exactly ten", 7), (Lines{"exactly", "ten"}));
    EXPECT_EQ(wrapped("  indented text   ", 8), (Lines{"  indent", "ed text"}));
    EXPECT_EQ(wrapped("a\n\nb c", 1), (Lines{"a", "", "b", "c"}));
    EXPECT_EQ(wrapped("well-known --verbose -5", 6), (Lines{"well-", "known", "--verb", "ose -5"}));
    EXPECT_EQ(wrapped("C:\\folder/name", 9), (Lines{"C:\\", "folder/", "name"}));
    EXPECT_EQ(wrapped("incomprehensible", 6), (Lines{"incomp", "rehens", "ible"}));
    EXPECT_EQ(wrapped("see incomprehensible", 6), (Lines{"see", "incomp", "rehens", "ible"}));
    EXPECT_EQ(wrapped("ab日本語", 5), (Lines{"ab日", "本語"}));
    EXPECT_EQ(wrapped("日a\u0301", 1), (Lines{"?", "a\u0301"}));
    EXPECT_EQ(wrapped("C:\\folder\\name.txt", 10, Builder::OverflowCutMiddle), Lines{"C:\\....txt"});
    EXPECT_EQ(wrapped("two\nlines", 6, Builder::OverflowCutEnd), Lines{"two..."});
    EXPECT_EQ(wrapped("two\nlines", 9, Builder::OverflowCutEnd), Lines{"two lines"});
    EXPECT_EQ(wrapped("日本", 1, Builder::OverflowCutEnd), Lines{"?"});

    Builder box({"a long title"});
    box.editColumn(0).maxWidth = 6;
    EXPECT_EQ(linesOf(box.build())[2], "| title  |");
    box.editColumn(0).overflow = Builder::OverflowCutEnd;
    EXPECT_EQ(linesOf(box.setStyle(Builder::StyleBox).build())[1], "│ a lon… │");
}

TEST(AsciiTable, NarrowsTheWidestColumnsFirst) {
    Builder table;
    table.addRow({"four", std::string(10, 'x'), std::string(30, 'y'), 1234567});
    const auto widths = [&](unsigned limit) {
        std::vector<std::size_t> result;
        const std::string rule = linesOf(table.setMaxWidth(limit).build())[0];
        for (const std::string& part : xoStringUtils::Split(rule, '+', true)) result.push_back(part.size() - 2);
        return result;
    };
    using Widths = std::vector<std::size_t>;
    EXPECT_EQ(widths(0), (Widths{4, 10, 30, 7}));
    EXPECT_EQ(widths(64), (Widths{4, 10, 30, 7}));
    EXPECT_EQ(widths(63), (Widths{4, 10, 29, 7}));
    EXPECT_EQ(widths(40), (Widths{4, 8, 8, 7}));
    EXPECT_EQ(widths(29), (Widths{3, 3, 3, 7}));
    EXPECT_EQ(widths(26), (Widths{3, 3, 3, 4}));
    EXPECT_EQ(widths(1), (Widths{1, 1, 1, 1}));
}

TEST(AsciiTable, HoldsManyColumns) {
    Builder table;
    EXPECT_EQ(&table.editColumn(SIZE_MAX), &table.editColumn(Builder::kMaxColumns - 1));
    const Builder::Column* const first = &table.editColumn(0);
    table.addRow(std::vector<xoVariant>(Builder::kMaxColumns + 10, 7)).setStyle(Builder::StylePlain);
    EXPECT_EQ(first, &table.editColumn(0));
    EXPECT_EQ(linesOf(table.build()).at(0).size(), Builder::kMaxColumns * 3 - 2);
    EXPECT_EQ(Builder(Lines(Builder::kMaxColumns + 1, "t")).setStyle(Builder::StylePlain).build().size(),
              Builder::kMaxColumns * 3 - 1);
}

TEST(AsciiTable, TakesNoMoreMemoryThanItsTextWithoutAFrame) {
    const std::string wide(1U << 20, 'w');
    Builder table;
    table.addRow({"key", wide});
    std::string expected = "key  " + wide + "\n";
    for (int row = 0; row != 1000; ++row) {
        table.addRow({"k", row % 2 == 0 ? "v" : ""});
        expected += row % 2 == 0 ? "k    v\n" : "k\n";
    }
    table.setStyle(Builder::StylePlain);
    const xo::tests::ScarceMemory little(4 * wide.size());
    ASSERT_TRUE(little.isInstalled());
    EXPECT_TRUE(table.build() == expected);
}

TEST(AsciiTable, ComesFromMapsListsAndRows) {
    xoVariant::xoVariantMapImpl first, second;
    first.editValuePath("a/b") = 1;
    first["z"] = 2.5;
    second["new"] = "x";
    second["z"] = 3;
    const auto plain = [](Builder table) { return "\n" + table.setStyle(Builder::StylePlain).build(); };
    EXPECT_EQ(plain(Builder::FromMap(first)), "\nKey  Value\na/b      1\nz      2.5\n");
    EXPECT_EQ(plain(Builder::FromMap({})), "\nKey  Value\n");

    xoVariant::xoVariantListImpl list;
    list << first << second;
    EXPECT_EQ(plain(Builder::FromList(list)), "\na/b    z  new\n  1  2.5\n       3  x\n");
    list << "alone";
    EXPECT_EQ(plain(Builder::FromList(list)), "\n       a/b    z  new\n         1  2.5\n              3  x\nalone\n");
    EXPECT_EQ(plain(Builder::FromList({})), "\n");

    const std::vector<std::vector<xoVariant>> rows = {{"Name", 2024}, {"x", 1, "more"}};
    EXPECT_EQ(plain(Builder::FromRows(rows)), "\nName  2024\nx        1  more\n");
    EXPECT_EQ(plain(Builder::FromRows(rows, false)), "\nName  2024\nx        1  more\n");
    EXPECT_EQ(plain(Builder::FromRows({})), "\n");
}

TEST(AsciiTable, KnowsTheConsolesWidth) {
    const xo::tests::Child child(L"consoleWidth", {}, CREATE_NEW_CONSOLE);
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(Builder::GetConsoleWidth(), 0u) << "the tests' output is a pipe";
}

}  // namespace
