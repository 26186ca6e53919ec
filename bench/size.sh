#!/usr/bin/env bash
# The size of the DLL by room, from the linker's map. Run by './dev bench size'; writes build/size.md.
set -euo pipefail
map=$1 dll=$2 result=$3
{
    echo '| room | bytes | share |'
    echo '|---|---:|---:|'
    # Lines "address size align   file:(section)"; those of sections and of symbols have other columns.
    awk -v all="$(stat -c %s "$dll")" '
        function hex(text,    i, value) {
            for (i = 1; i <= length(text); ++i) value = value * 16 + index("0123456789abcdef", substr(text, i, 1)) - 1
            return value
        }
        match($0, /xoSystem\.dir\/[A-Za-z\/]+\//) && /:\(/ {
            room = substr($0, RSTART + 13, RLENGTH - 14)
            bytes[room] += hex($2)
            seen += hex($2)
        }
        END {
            for (room in bytes) printf "| `%s` | %d | %.1f %% |\n", room, bytes[room], 100 * bytes[room] / all
            printf "| runtime, exports, headers, padding | %d | %.1f %% |\n", all - seen, 100 * (all - seen) / all
            printf "| all | %d | 100 %% |\n", all
        }' "$map" | sort -t '|' -k 3,3n
} | tee "$result"
