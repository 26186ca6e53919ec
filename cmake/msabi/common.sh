# Read by the scripts beside it, which './dev msvc' calls. XO_ROOT is the folder of all that is made.
cd "$here/../.."
work=$XO_ROOT/msabi                 # all that is made for Microsoft's ABI
clang=/usr/lib/llvm-19/bin
mingw=/usr/x86_64-w64-mingw32       # Debian's headers of Windows and of the C runtime, and import libraries
resource=$("$clang/clang" -print-resource-dir)
stl=${XO_MSVC_STL:-}

fail() { printf 'dev: %s\n' "$*" >&2; exit 1; }

if [[ $stl ]]; then
    stl=$(cd "$stl" && pwd)
    [[ -f $stl/inc/yvals.h ]] || fail "XO_MSVC_STL, $stl, has no inc/yvals.h"
fi

# LLVM's tools take the part of Microsoft's that they are named after.
link_tools() {
    local tool
    mkdir -p "$work/bin"
    for tool in clang-cl lld-link llvm-rc llvm-mt llvm-lib; do ln -sfn "$clang/$tool" "$work/bin/$tool"; done
}

# The headers of a Microsoft toolset: the STL's own, and for what is not public of it, stand-ins over Debian's headers.
# Those take branches for another toolset where _MSC_VER is defined; inside them it is not.
make_headers() {
    local header include=$work/include.new
    local wrapped=(_mingw accctrl aclapi comdef conio corecrt crtdbg crtdefs ctype dbghelp direct errno excpt fcntl fenv float
        inttypes io knownfolders limits locale malloc mbstring memory ntsecapi objbase ole2 oleauto powrprof process psapi sal
        sddl share shellapi shlobj shlwapi signal string sys/stat sys/timeb sys/types time tlhelp32 vadefs wbemcli wbemidl
        wchar wctype winioctl winternl)
    rm -rf "$include"
    mkdir -p "$include/sys" "$include/psdk_inc"
    for header in "${wrapped[@]}"; do
        printf '#include <gnu_begin.h>\n#include_next <%s.h>\n#include <gnu_end.h>\n' "$header" >"$include/$header.h"
    done
    : >"$include/psdk_inc/intrin-impl.h" # clang has these itself
    : >"$include/trnsctrl.h"
    echo '#include <windows.h>' >"$include/Windows.h"
    echo '#include <unknwn.h>' >"$include/Unknwn.h"
    echo '#include <eh.h>' >"$include/corecrt_terminate.h"
    cp "$here"/include/*.h "$include/"
    # Files that stay the same keep their times, by which clang knows whether its precompiled header is up to date.
    if diff -rq "$include" "$work/include" >/dev/null 2>&1; then rm -r "$include"; return; fi
    rm -rf "$work/include"
    mv "$include" "$work/include"
}

# The compiler's flags, here and for CMake. Quotes hold a path with spaces together.
make_flags() {
    make_headers
    cat >"$work/flags.rsp.new" <<END
--target=x86_64-pc-windows-msvc
-fms-compatibility-version=19.44
/X
/GS-
-D_UCRT
-D__MSVCRT_VERSION__=0xE00
-D_HAS_STATIC_RTTI=1
-D_USE_STD_VECTOR_ALGORITHMS=0
"-imsvc$work/include"
"-imsvc$stl/inc"
"-imsvc$resource/include"
"-imsvc$mingw/include"
-Wno-gnu-include-next
-Wno-pragma-pack
-Wno-#warnings
-Wno-unused-command-line-argument
END
    if cmp -s "$work/flags.rsp.new" "$work/flags.rsp"; then rm "$work/flags.rsp.new"; else mv "$work/flags.rsp.new" "$work/flags.rsp"; fi
}
