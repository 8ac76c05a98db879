# The compiler's run-time DLLs beside the programs. They must be the shared ones: an exception passes
# from one module to another only where both use the same libgcc.
set(TARN_RUNTIME_DLLS libstdc++-6.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
if(TARN_CHECKED)
  list(APPEND TARN_RUNTIME_DLLS libssp-0.dll)
endif()

foreach(dll IN LISTS TARN_RUNTIME_DLLS)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
    OUTPUT_VARIABLE original
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  tarn_place_dll(${original})
endforeach()
