#!/usr/bin/env bash
# Builds and packs a second time, from a copy in another folder, and compares with the package that is there.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

copy=$XO_ROOT/again/copy
rm -rf "$XO_ROOT/again"
mkdir -p "$copy/build"
cmake/list-files | tar -cT - | tar -xC "$copy"
cp -r "$XO_ROOT/docs" "$copy/build/"

out=$copy/build/${XO_OUT##*/}
{ cmake -S "$copy" --preset "${XO_OUT##*/}" -B "$out" -DXO_BUILD_TESTS=OFF -DXO_BUILD_EXAMPLES=OFF &&
    cmake --build "$out"; } >"$copy.log" 2>&1 || { tail -n 30 "$copy.log" >&2; fail "the copy does not build"; }
XO_ROOT=$copy/build XO_OUT=$out SOURCE_DATE_EPOCH=$(package_time) "$copy/packaging/package.sh" >/dev/null

cmp "$archive" "$copy/build/${archive##*/}" || fail "the package of a copy of the sources has other bytes"
echo "dev: a second build in another folder gives the same bytes"
