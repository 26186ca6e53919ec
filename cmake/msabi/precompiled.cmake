# Compiles every source of the project with the precompiled header that cmake/msabi/build makes: a third of the time. All targets
# agree in language and runtime for it. (-Wclang-cl-pch is about their differing definitions, which the header does not
# use.) './dev msvc --test' gives this file as CMAKE_PROJECT_xoSystem_INCLUDE.
set(is_ours "$<NOT:$<IN_LIST:$<TARGET_PROPERTY:NAME>,gtest;gtest_main;gmock;gmock_main>>") # its char is unsigned
add_compile_options("$<$<AND:$<COMPILE_LANGUAGE:CXX>,${is_ours}>:/permissive-;/Yucommon_pch.h;/FIcommon_pch.h;\
/Fp${XO_MSABI_WORK}/common.pch;-Wno-clang-cl-pch>")
