#include <gnu_begin.h>
#include_next <stdio.h>
#include <gnu_end.h>
#include <wchar.h>
#if defined(__cplusplus) && !defined(XO_MSABI_STDIO)
#    define XO_MSABI_STDIO
extern "C" errno_t __cdecl _get_stream_buffer_pointers(FILE*, char***, char***, int**);
#endif
