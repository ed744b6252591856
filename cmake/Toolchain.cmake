# Compiler, warnings, sanitizers, cache and linker for every target (through corvane_options).

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_OPTIMIZE_DEPENDENCIES ON)

add_library(corvane_options INTERFACE)
target_compile_options(corvane_options INTERFACE -Wall -Wextra -Wconversion)
if(CORVANE_WERROR)
  target_compile_options(corvane_options INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # In g++ 12 these misfire on the concatenation of standard strings (GCC bugs 105329, 105651, 105562).
  target_compile_options(corvane_options INTERFACE -Wno-array-bounds -Wno-restrict
                         -Wno-stringop-overflow -Wno-stringop-overread)
endif()

if(CORVANE_SANITIZE)
  string(REPLACE "+" "," sanitizers "${CORVANE_SANITIZE}")
  set(flags -fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(corvane_options INTERFACE ${flags} -D_GLIBCXX_ASSERTIONS)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented code misleads these warnings; the plain builds keep them.
    target_compile_options(corvane_options INTERFACE -Wno-maybe-uninitialized)
  elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(corvane_options INTERFACE
                           "-fsanitize-ignorelist=${CMAKE_SOURCE_DIR}/cmake/sanitize_ignore.txt")
  endif()
  target_link_options(corvane_options INTERFACE -fsanitize=${sanitizers})
endif()

find_program(ccache_program ccache)
if(ccache_program)
  if(CORVANE_PCH)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros ${ccache_program})
  else()  # an object with the moment of its build in it is that moment's
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ccache_program})
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(corvane_options INTERFACE -fpch-preprocess)
  elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Else every build folder has a precompiled header of its own, and nothing is found in the cache.
    target_compile_options(corvane_options INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
  endif()
endif()

# The quickest linker at hand.
find_program(mold_program mold)
find_program(lld_program ld.lld)
if(WIN32)  # neither knows its format
  target_link_options(corvane_options INTERFACE -static)
elseif(mold_program)
  target_link_options(corvane_options INTERFACE -fuse-ld=mold)
elseif(lld_program)
  target_link_options(corvane_options INTERFACE -fuse-ld=lld)
endif()

if(CORVANE_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # In a batch every source is an included file, for which the warning is meant.
  target_compile_options(corvane_options INTERFACE -Wno-subobject-linkage)
endif()
