#!/usr/bin/env bash
# Builds and runs one program against the package in four ways, as strangers would: the zip is unpacked in a folder whose
# name was not known when it was made, and nothing but the program's own sources comes from here.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

consumers=$PWD/packaging/consumers
work=$XO_ROOT/consumers
taken=$work/"moved here"/xoSystem

unpack() {
    rm -rf "$work"
    mkdir -p "$(dirname "$taken")"
    (cd "$XO_ROOT" && sha256sum --check --quiet "$archive.sha256")
    (cd "$work" && cmake -E tar xf "$archive")
    mv "$work/$package" "$taken"
}

# What the program prints decides. It runs with the package's DLLs alone, which lie in its own folder.
run() { # name, folder
    cmake/wine-run "$2/consumer.exe" >"$2/printed.txt" || fail "the consumer of $1 ended with an error"
    diff -u --strip-trailing-cr "$consumers/expected.txt" "$2/printed.txt" ||
        fail "the consumer of $1 does not print what it should"
    echo "dev: a program that takes the library by $1 works"
}

build() { # folder of the project, folder of the build, arguments
    { cmake -S "$1" -B "$2" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${@:3}" && cmake --build "$2"; } \
        >"$2.log" 2>&1 || { tail -n 30 "$2.log" >&2; fail "$1 does not build"; }
}

with_cmake() { # name, folder of the project, arguments
    build "$consumers/$2" "$work/$2" "${@:3}"
    run "$1" "$work/$2"
}

with_compiler() { # name, compiler and its arguments
    local out=$work/${1// /}
    mkdir "$out"
    cp "$taken"/bin/*.dll "$out"
    "${@:2}" -std=c++17 -Wall -Wextra -Wpedantic -Werror "$consumers/main.cpp" -o "$out/consumer.exe" "${flags[@]}"
    run "$1" "$out"
}

unpack

clang=(-DCMAKE_SYSTEM_NAME=Windows -DCMAKE_CXX_COMPILER=clang++-19 -DCMAKE_CXX_COMPILER_TARGET=x86_64-w64-mingw32)
with_cmake find_package findPackage -DCMAKE_PREFIX_PATH="$taken" "${clang[@]}"

eval "flags=($(PKG_CONFIG_LIBDIR=$taken/lib/pkgconfig pkg-config --cflags --libs 'xoSystem >= 3.0'))" # quoted for a shell
with_compiler pkg-config clang++-19 --target=x86_64-w64-mingw32

flags=(-I"$taken/include" -L"$taken/lib" -lxoSystem)
with_compiler "g++ alone" x86_64-w64-mingw32-g++

with_cmake add_subdirectory subdirectory --toolchain "$PWD/cmake/mingw-clang.cmake"

build "$taken/examples" "$work/examples" "${clang[@]}" -DCMAKE_CROSSCOMPILING_EMULATOR="$PWD/cmake/wine-run"
ctest --test-dir "$work/examples" --output-on-failure >"$work/examples.log" 2>&1 || { cat "$work/examples.log"; exit 1; }
cmake/wine-run "$work/examples/bin/catalogue.exe" >/dev/null
echo "dev: the examples in the package work"
