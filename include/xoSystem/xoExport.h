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
