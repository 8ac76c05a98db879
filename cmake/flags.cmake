# Two sets of flags. tarn_abi: everything in the process must share these, third-party test libraries included.
# tarn_flags: our own sources.
add_library(tarn_abi INTERFACE)
# SSE: x87 keeps excess precision, and numbers would not be reproducible. Stack realignment comes with it.
target_compile_options(tarn_abi INTERFACE -msse2 -mfpmath=sse)
# time_t and off_t in 64 bits; the default ends in 2038 and at 2 GiB.
target_compile_definitions(tarn_abi INTERFACE __MINGW_USE_VC2005_COMPAT _FILE_OFFSET_BITS=64)

add_library(tarn_flags INTERFACE)
target_link_libraries(tarn_flags INTERFACE tarn_abi)
target_compile_options(tarn_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
# Two builds of the same sources, in two folders, give the same bytes.
target_link_options(tarn_flags INTERFACE -Wl,--no-insert-timestamp)
if(NOT TARN_COVERAGE) # gcov wants the real paths
  target_compile_options(
    tarn_flags INTERFACE -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
endif()

if(TARN_CHECKED)
  target_compile_definitions(tarn_flags INTERFACE _GLIBCXX_ASSERTIONS)
  # -O1: faster than -Og here, and unlike -O2 it keeps stray stores before a delete.
  target_compile_options(tarn_flags INTERFACE -O1 -fstack-protector-strong -fsanitize=undefined
                                              -fsanitize-undefined-trap-on-error)
  target_link_options(tarn_flags INTERFACE -fstack-protector-strong)
endif()

if(TARN_COVERAGE)
  target_compile_options(tarn_flags INTERFACE --coverage -O0)
  target_link_options(tarn_flags INTERFACE --coverage)
endif()
