// Clang's own for Microsoft's compiler; inside Debian's headers none.
#ifdef _MSC_VER
#    include_next <intrin.h>
#endif
