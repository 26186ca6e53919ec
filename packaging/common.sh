# Read by the scripts beside it, which './dev' calls. XO_OUT is the folder of the build, XO_ROOT the one above it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

fail() { printf 'dev: %s\n' "$*" >&2; exit 1; }

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$XO_OUT/CMakeCache.txt")
package=xoSystem-$version-win64-mingw
archive=$XO_ROOT/$package.zip

# The time in the package: that of the commit. An archive of the sources has none; 1980 is the first year of a zip.
package_time() {
    if [[ ${SOURCE_DATE_EPOCH:-} ]]; then
        echo "$SOURCE_DATE_EPOCH"
    elif [[ ! -e .git ]] || ! git log -1 --format=%ct; then # git refuses the tree of another user
        echo 315532800
    fi
}
