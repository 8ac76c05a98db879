# 32-bit Windows with the posix-thread compiler of Debian 12: for the library and for the programs that use it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(_target i686-w64-mingw32)
set(CMAKE_C_COMPILER ${_target}-gcc-posix)
set(CMAKE_CXX_COMPILER ${_target}-g++-posix)
set(CMAKE_RC_COMPILER ${_target}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${_target})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Own packages (the benchmark library, the installed SDK) live outside the root path.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
if(EXISTS "${CMAKE_CURRENT_LIST_DIR}/wine-run") # the SDK leaves it to its user how programs are run
  set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/wine-run")
endif()

# Everything in a process shares these, third-party libraries included. SSE: x87 keeps excess precision, and numbers
# would not be reproducible; the realignment of the stack comes with it.
set(TARN_ABI_FLAGS "$<$<COMPILE_LANGUAGE:C,CXX>:-msse2;-mfpmath=sse>")
add_compile_options("${TARN_ABI_FLAGS}")
