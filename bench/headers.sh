#!/usr/bin/env bash
# The time to compile each public header alone, beside the header that one would include instead: medians over rounds
# of all headers in turn, in processor time, less what an empty file takes. Run by './dev bench headers'; writes
# build/headers.md.
set -euo pipefail
rounds=5 peers=$1 result=$2

# header, what its peer's users include; "-" for none
pairs='xoSystem.h -
xoAsciiTableBuilder.h fmt/format.h
xoConcurrentPool.h thread
xoCsvFileReader.h boost/tokenizer.hpp
xoCsvStream.h fstream
xoDataStream.h cereal/archives/portable_binary.hpp
xoDirUtils.h filesystem
xoEnumHelper.h string
xoIniFile.h SimpleIni.h
xoIoDevice.h fstream
xoLog.h spdlog/spdlog.h
xoMathUtils.h fmt/format.h
xoMutex.h mutex
xoSemaphore.h condition_variable
xoStringUtils.h boost/algorithm/string.hpp
xoThread.h thread
xoTimer.h chrono
xoVariant.h nlohmann/json.hpp
xoVersion.h string
xoWaitCondition.h condition_variable
xoWorkThread.h concurrentqueue/blockingconcurrentqueue.h'
# All other headers have no peer.
for header in include/xoSystem/*.h; do
    header=${header##*/}
    grep -q "^$header " <<<"$pairs" || pairs+=$'\n'"$header -"
done

compile() {
    clang++-19 --target=x86_64-w64-mingw32 -fms-extensions -std=c++17 -O2 -DFMT_HEADER_ONLY -DSPDLOG_FMT_EXTERNAL \
        -I include -isystem "$peers" -fsyntax-only -x c++ -
}

declare -A times
measure() { # name, what is included
    local spent TIMEFORMAT='%3U %3S'
    spent=$({ time compile <<<"$2"; } 2>&1)
    times[$1]+="$(awk '{ print 1000 * ($1 + $2) }' <<<"$spent") "
}
median() { tr ' ' '\n' <<<"${times[$1]% }" | sort -n | sed -n "$((rounds / 2 + 1))p"; }

mapfile -t peer_headers < <(awk '$2 != "-" { print $2 }' <<<"$pairs" | sort -u)
for ((round = 0; round != rounds; ++round)); do
    measure empty ''
    while read -r header _; do measure "$header" "#include \"xoSystem/$header\""; done <<<"$pairs"
    for peer in "${peer_headers[@]}"; do measure "$peer" "#include <$peer>"; done
done

{
    echo '| header | ms | instead | ms | ratio |'
    echo '|---|---:|---|---:|---:|'
    while read -r header peer; do
        ours=$(($(median "$header") - $(median empty)))
        if [[ $peer == - ]]; then printf '%s %d - 0\n' "$header" "$ours"; continue; fi
        printf '%s %d %s %d\n' "$header" "$ours" "$peer" $(($(median "$peer") - $(median empty)))
    done <<<"$pairs" | awk '
        $3 == "-" { printf "| `%s` | %.0f | | | |\n", $1, $2; next }
        { printf "| `%s` | %.0f | `<%s>` | %.0f | %.2f |\n", $1, $2, $3, $4, $2 / $4 }'
} | tee "$result"
