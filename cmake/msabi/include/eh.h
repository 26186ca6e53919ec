#pragma once
typedef void(__cdecl* terminate_handler)();
typedef void(__cdecl* unexpected_handler)();
extern "C" {
[[noreturn]] void __cdecl terminate() noexcept;
terminate_handler __cdecl set_terminate(terminate_handler) noexcept;
terminate_handler __cdecl _get_terminate() noexcept;
[[noreturn]] void __cdecl unexpected();
unexpected_handler __cdecl set_unexpected(unexpected_handler) noexcept;
unexpected_handler __cdecl _get_unexpected() noexcept;
bool __cdecl __uncaught_exception();
int __cdecl __uncaught_exceptions();
}
