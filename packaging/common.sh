# Read by the scripts beside it, which './dev' calls. XO_OUT is the folder of the build, XO_ROOT the one above it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

fail() { printf 'dev: %s\n' "$*" >&2; exit 1; }

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$XO_OUT/CMakeCache.txt")
package=xoSystem-$version-win64-mingw
archive=$XO_ROOT/$package.zip
epoch=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || echo 315532800)} # the time in the package
