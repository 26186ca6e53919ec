// A drawing program keeps the shape of its pen and what snaps to what in its settings, by names that stay readable and
// valid when enumerators move, and fills a list of choices without knowing the types.
#include <iostream>
#include <string>

#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoVariant.h"

namespace drawing {

enum class Pen { Round = 1, Square = 2, Calligraphy = 70 };

constexpr xo::xoEnumEntry<Pen> kPens[] = {
    {Pen::Round, "round", "Round tip"},
    {Pen::Square, xo::EnumeratorName<Pen::Square>(), "Square tip"},
    {Pen::Calligraphy, xo::EnumeratorName<Pen::Calligraphy>()},
    {Pen::Round, "circle"},  // as older settings have it
};
constexpr xo::xoEnumList<Pen> xoEnumEntries(Pen) { return kPens; }

enum Snap : unsigned { SnapNone = 0, SnapGrid = 1, SnapEdges = 2, SnapCorners = 4 };

constexpr xo::xoEnumEntry<Snap> kSnaps[] = {
    {SnapNone, "none"}, {SnapGrid, "grid"}, {SnapEdges, "edges"}, {SnapCorners, "corners"}};
constexpr xo::xoEnumList<Snap> xoEnumEntries(Snap) { return {kSnaps, /*areFlags=*/true}; }

}  // namespace drawing

namespace {

using Pens = xo::EnumHelper<drawing::Pen>;
using Snaps = xo::EnumHelper<drawing::Snap>;
static_assert(Pens::IsValid() && Snaps::IsValid());

void printChoices(const char* title, const xo::EnumHelperInterface& names) {
    std::cout << title << (names.areFlags() ? " (several):" : " (one):");
    for (std::size_t i = 0; i < names.getCount(); ++i) std::cout << (i ? ", " : " ") << names.getLabel(i);
    std::cout << '\n';
}

}  // namespace

int main() {
    xo::xoVariant::xoVariantMapImpl settings;
    settings["pen"] = Pens::ToVariant(drawing::Pen::Calligraphy);
    settings["snap"] = Snaps::ToVariant(static_cast<drawing::Snap>(drawing::SnapGrid | drawing::SnapCorners | 64));
    std::cout << settings.toString() << '\n';

    for (const char* const typed : {"Circle", "2", "3"}) {
        drawing::Pen pen{};
        std::cout << typed << ": " << (Pens::FromText(typed, pen) ? Pens::ToLabel(pen) : "no pen") << '\n';
    }
    const auto snap = Snaps::FromVariantOr("edges, grid", drawing::SnapNone);
    std::cout << Snaps::ToText(snap) << " is " << snap << '\n';

    printChoices("Pen", Pens::Get());
    printChoices("Snap", Snaps::Get());
    std::cout << xo::EnumHelper<xo::xoLogType>::ToName(xo::xoLogWarning) << '\n';
    return 0;
}
