#!/usr/bin/env bash
# Writes the list of the DLL's exported symbols anew, readable and sorted. With --check it only compares.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

kept=packaging/exports.txt
list() { llvm-readobj-19 --coff-exports "$XO_OUT/bin/xoSystem.dll" | sed -n 's/^  Name: //p' | llvm-cxxfilt-19 | sort -u; }

if [[ ${1:-} != --check ]]; then
    list >$kept
elif ! list | diff -u --label "$kept" $kept --label "the DLL" -; then
    fail "the exported symbols have changed; if that is meant, './dev exports' writes the list anew"
fi
