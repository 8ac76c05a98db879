# One CTest test a suite: a process costs 30 ms and more under Wine, and there are thousands of tests.

# The suites that the test macros of these files name. A file in which none is found would never run: an error.
function(tarn_find_suites out)
  set(suites)
  foreach(source IN LISTS ARGN)
    file(READ ${source} text)
    string(REGEX MATCHALL "(^|\n)(TYPED_)?TEST(_F|_P)?\\([ \n]*[A-Za-z0-9_]+" macros "${text}")
    if(NOT macros)
      message(FATAL_ERROR "${source}: no test suite found; none of its tests would run")
    endif()
    list(TRANSFORM macros REPLACE "^[^(]*\\([ \n]*" "")
    list(APPEND suites ${macros})
    # A new suite in a file means a new CTest test.
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
  endforeach()
  list(REMOVE_DUPLICATES suites)
  set(${out} ${suites} PARENT_SCOPE)
endfunction()

# Suites named Cp932... run in a process whose code page is 932, suites named Utf8... where narrow text is UTF-8
# (tests/support/utf8_suites.cpp), suites named Zone... once in each of these zones.
set(TARN_TEST_ZONES Europe/Berlin America/New_York Asia/Kolkata Australia/Sydney America/Sao_Paulo)

# One CTest test: what a program runs of its tests in an environment.
function(tarn_add_run program test filter)
  add_test(NAME ${test} COMMAND ${program} --gtest_filter=${filter})
  # GoogleTest's own verdict is asked for, because a crash under Wine can end with exit status 0. The pattern
  # replaces CTest's look at the exit status; a crash after the verdict leaves one of the other lines.
  set_tests_properties(
    ${test}
    PROPERTIES TIMEOUT 300
               PASS_REGULAR_EXPRESSION "\\[  PASSED  \\] [1-9]"
               FAIL_REGULAR_EXPRESSION
               "\\[  FAILED  \\];Unhandled (page fault|exception);GUARD:;CRASH code;terminate called"
               ENVIRONMENT "${ARGN}")
endfunction()

# A suite in an environment.
function(tarn_add_suite program test suite)
  tarn_add_run(${program} ${test} ${suite}.*:*/${suite}.*:${suite}/*.*:*/${suite}/*.* ${ARGN})
endfunction()

# All suites that need no environment of their own and may run beside others once more, with every block above 2 GiB (tests/support/high_memory.cpp).
function(tarn_add_high_run program prefix)
  tarn_add_run(${program} ${prefix}above-2-GiB -Cp932*:Zone*:DirectoryWatch.* TARN_HIGH_MEMORY=1)
endfunction()

function(tarn_add_suites program prefix)
  tarn_find_suites(suites ${ARGN})
  foreach(suite IN LISTS suites)
    if(suite MATCHES "^Zone")
      foreach(zone IN LISTS TARN_TEST_ZONES)
        tarn_add_suite(${program} ${prefix}${suite}.${zone} ${suite} TZ=${zone})
      endforeach()
    elseif(suite MATCHES "^Cp932")
      tarn_add_suite(${program} ${prefix}${suite} ${suite} TARN_CODE_PAGE=932)
    else()
      tarn_add_suite(${program} ${prefix}${suite} ${suite})
    endif()
  endforeach()

  # A suite that a macro of a test file's own spells would be missed above: the program's list is compared.
  add_test(NAME ${prefix}every_suite_runs
           COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${program}> -DEMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}
                   "-DSUITES=${suites}" -P ${CMAKE_SOURCE_DIR}/cmake/check-suites.cmake)
  set_tests_properties(${prefix}every_suite_runs PROPERTIES TIMEOUT 120)
endfunction()
