// How the library's names cross the DLL border, and the attributes by which clang checks its locks.
//
// A host includes the class headers and never needs this one by itself. Define XOSYSTEM_STATIC when the library is
// linked statically; the CMake target xoSystem::xoSystem does it where it applies.
#ifndef XOSYSTEM_XOEXPORT_H
#define XOSYSTEM_XOEXPORT_H

#if defined(XOSYSTEM_STATIC)
#    define XOSYSTEM_API
#elif defined(xoSystem_EXPORTS)
#    define XOSYSTEM_API __declspec(dllexport)
#else
#    define XOSYSTEM_API __declspec(dllimport)
#endif

// Host and library share one C++ runtime and one layout of std::string and its like. With Microsoft's C++ library, the
// build of xoSystem records its settings in a header, and a host with others does not compile.
#if defined(_MSC_VER)
#    include <iosfwd>  // defines _ITERATOR_DEBUG_LEVEL
#    if defined(_DEBUG) && !__has_include("xoSystem/xoBuiltDebug.h")
#        error "The debug library xoSystemd is not here: install the configuration Debug, or compile with /MD."
#    elif defined(_DEBUG)
#        include "xoSystem/xoBuiltDebug.h"
#    elif !__has_include("xoSystem/xoBuiltRelease.h")
#        error "The release library xoSystem is not here: install RelWithDebInfo, or compile with /MDd."
#    else
#        include "xoSystem/xoBuiltRelease.h"
#    endif
#    if defined(_DLL) != XOSYSTEM_BUILT_WITH_RUNTIME_DLL
#        error "xoSystem was built for another C++ runtime: either both use /MD (or /MDd), or both /MT (or /MTd)."
#    endif
#    if _ITERATOR_DEBUG_LEVEL != XOSYSTEM_BUILT_WITH_ITERATOR_DEBUG_LEVEL
#        error "xoSystem was built with another _ITERATOR_DEBUG_LEVEL, which changes the layout of standard containers."
#    endif
#    if defined(XOSYSTEM_STATIC) != XOSYSTEM_BUILT_STATIC
#        error "XOSYSTEM_STATIC must be defined if and only if xoSystem was built as a static library."
#    endif
#endif

// Clang's thread safety analysis, https://clang.llvm.org/docs/ThreadSafetyAnalysis.html
#if defined(__clang__)
#    define XO_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#    define XO_THREAD_ATTRIBUTE(x)
#endif
#define XO_CAPABILITY(name) XO_THREAD_ATTRIBUTE(capability(name))
#define XO_SCOPED_CAPABILITY XO_THREAD_ATTRIBUTE(scoped_lockable)
#define XO_GUARDED_BY(lock) XO_THREAD_ATTRIBUTE(guarded_by(lock))
#define XO_PT_GUARDED_BY(lock) XO_THREAD_ATTRIBUTE(pt_guarded_by(lock))
#define XO_REQUIRES(...) XO_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define XO_EXCLUDES(...) XO_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define XO_ACQUIRE(...) XO_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define XO_RELEASE(...) XO_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define XO_TRY_ACQUIRE(...) XO_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define XO_RETURN_CAPABILITY(lock) XO_THREAD_ATTRIBUTE(lock_returned(lock))
#define XO_NO_THREAD_SAFETY_ANALYSIS XO_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#endif
