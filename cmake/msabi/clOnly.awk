# Finds what cl does not compile and clang does, with any target: GCC keywords outside an #if that tests for the compiler.
# The cross build's -Wpedantic finds extensions of the grammar.
FNR == 1 { depth = 0 }
/^[ \t]*#[ \t]*if/ { branch[++depth] = $0; next }
/^[ \t]*#[ \t]*endif/ { --depth; next }
{
    line = $0
    sub(/\/\/.*/, "", line)
    if (line !~ /__attribute__|__builtin_|__PRETTY_FUNCTION__|__int128|__typeof|__extension__|__asm__|[^_a-zA-Z]asm[ \t]*(volatile|\()|_Pragma|ssize_t|<cxxabi\.h>|<unistd\.h>|<pthread\.h>|<sys\/time\.h>|\[\[gnu::|\[\[clang::/) next
    for (i = 1; i <= depth; ++i) if (branch[i] ~ /_MSC_VER|__clang__|__GNUC__|__GLIBCXX__|__MINGW/) next
    printf "%s:%d: cl does not compile this: %s\n", FILENAME, FNR, $0
    found = 1
}
END { exit found }
