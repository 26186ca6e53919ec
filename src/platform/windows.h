// <windows.h> as every room takes it in: lean, and without its min and max.
#ifndef XO_PLATFORM_WINDOWS_H
#define XO_PLATFORM_WINDOWS_H

#ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#    define NOMINMAX
#endif
#include <windows.h>

#endif
