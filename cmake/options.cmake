# Flags of everything that is built here: rz_options is linked by each target and not installed.

add_library(rz_options INTERFACE)
target_compile_options(rz_options INTERFACE -Wall -Wextra -Wformat=2 -Werror -fstack-protector-strong)
target_link_options(rz_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack -Wl,--as-needed)
if(NOT RZ_SANITIZE)
  target_link_options(rz_options INTERFACE -Wl,-z,defs)
  target_compile_options(rz_options INTERFACE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
else()
  # The instrumentation makes g++ see uninitialised values that are none.
  target_compile_options(rz_options INTERFACE -fsanitize=${RZ_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(rz_options INTERFACE -fsanitize=${RZ_SANITIZE})
  # The DER objects are incomplete types outside the library, and of those clang cannot tell across libraries that two
  # types of functions are the same.
  target_compile_options(rz_options INTERFACE $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
endif()
# ccache takes a precompiled header of clang only when no time stands in it.
target_compile_options(rz_options INTERFACE "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-Xclang -fno-pch-timestamp>")
# Debug information that valgrind 3.19 can read.
target_compile_options(rz_options INTERFACE $<$<CXX_COMPILER_ID:Clang>:-fdebug-default-version=4>)
if(RZ_FUZZ)
  target_compile_options(rz_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(rz_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
target_include_directories(rz_options INTERFACE ${PROJECT_SOURCE_DIR}/Include)
