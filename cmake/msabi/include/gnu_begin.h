// Debian's headers of Windows and of the C runtime are meant for GCC, and take other branches for Microsoft's compiler.
#pragma push_macro("_MSC_VER")
#pragma push_macro("__GNUC__")
#pragma push_macro("__GNUC_MINOR__")
#undef _MSC_VER
#define __GNUC__ 4
#define __GNUC_MINOR__ 9
