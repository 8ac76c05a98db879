# What Windows, its tools and a debugger want of a module or program beyond its code.

# "4-0" or "5.0.0" in the form of a resource: four numbers.
function(tarn_four_numbers out version)
  string(REGEX MATCHALL "[0-9]+" numbers "${version}")
  list(APPEND numbers 0 0 0 0)
  list(SUBLIST numbers 0 4 numbers)
  list(JOIN numbers "," numbers)
  set(${out} ${numbers} PARENT_SCOPE)
endfunction()

# Gives a target a version resource; a program also the manifest. Call it when the target has its output name. The version
# is that in the name of a module, and otherwise the library's.
#
#   tarn_describe(TARGET DESCRIPTION)
function(tarn_describe target description)
  get_target_property(name ${target} OUTPUT_NAME)
  get_target_property(type ${target} TYPE)
  if(NOT name)
    set(name ${target})
  endif()
  set(file_version_text ${PROJECT_VERSION})
  if(name MATCHES "-([0-9]+(-[0-9]+)+)$" AND NOT target STREQUAL "tarnlib")
    string(REPLACE "-" "." file_version_text ${CMAKE_MATCH_1})
  endif()
  tarn_four_numbers(file_version ${file_version_text})
  tarn_four_numbers(product_version ${PROJECT_VERSION})
  set(suffix .dll)
  set(file_type VFT_DLL)
  if(type STREQUAL "EXECUTABLE")
    set(suffix .exe)
    set(file_type VFT_APP)
    set(manifest_file ${CMAKE_SOURCE_DIR}/cmake/program.manifest)
    set(manifest "1 24 \"${manifest_file}\"")
  endif()
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/version.rc.in ${resource} @ONLY)
  set_source_files_properties(${resource} PROPERTIES OBJECT_DEPENDS "${manifest_file}")
  target_sources(${target} PRIVATE ${resource})
endfunction()

# What is shipped has its symbols in a file beside it, NAME.debug, where gdb looks for them.
function(tarn_split_symbols target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
    return()
  endif()
  set(file $<TARGET_FILE:${target}>)
  set(same_bytes ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0) # otherwise the time of the build goes in
  add_custom_command(
    TARGET ${target}
    POST_BUILD
    COMMAND ${same_bytes} ${CMAKE_OBJCOPY} --only-keep-debug ${file} ${file}.debug
    COMMAND ${same_bytes} ${CMAKE_STRIP} --strip-all ${file}
    COMMAND ${same_bytes} ${CMAKE_OBJCOPY} --add-gnu-debuglink=${file}.debug ${file}
    VERBATIM)
  install(FILES ${file}.debug DESTINATION bin)
endfunction()

# Puts a DLL of others beside the programs: without symbols, and with sections that begin at pages of the file (flags.cmake).
function(tarn_place_dll original)
  cmake_path(GET original FILENAME name)
  set(copy ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name})
  if(${original} IS_NEWER_THAN ${copy} OR ${CMAKE_CURRENT_FUNCTION_LIST_FILE} IS_NEWER_THAN ${copy})
    file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    execute_process(COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY} --strip-all --file-alignment 4096
                            ${original} ${copy} COMMAND_ERROR_IS_FATAL ANY)
  endif()
endfunction()
