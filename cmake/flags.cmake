# The flags of our own sources, beside those that everything in a process shares (mingw-w64-i686.cmake).
add_library(tarn_flags INTERFACE)
target_compile_options(tarn_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
# Two builds of the same sources, in two folders, give the same bytes.
target_link_options(tarn_flags INTERFACE -Wl,--no-insert-timestamp)
# For Windows 7 and later. The identifier of a build says which symbols belong to a crash.
target_link_options(tarn_flags INTERFACE -Wl,--major-os-version=6,--minor-os-version=1 -Wl,--major-subsystem-version=6
                                         -Wl,--minor-subsystem-version=1 -Wl,--build-id)
# Sections begin at pages of the file, too, and are mapped as they lie there. Wine reads a module whole otherwise.
target_link_options(tarn_flags INTERFACE -Wl,--file-alignment,4096)
# Programs have all of the 4 GiB that a 64-bit system gives them, and need no help on a terminal server.
target_link_options(tarn_flags INTERFACE
                    "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-Wl,--large-address-aware;-Wl,--tsaware>")
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
