// Includes <windows.h> for all rooms, without rarely used parts and without its macros min and max.
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
