#include <intrin.h>
#include <gnu_begin.h>
#include_next <windows.h>
#include <gnu_end.h>
