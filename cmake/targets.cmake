# One place for how a library, a test, a benchmark and a fuzz target of this project are made.

include(${CMAKE_CURRENT_LIST_DIR}/install.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/warnings.cmake)

# tw_library(name SOURCES file... LINKS target... PRIVATE_LINKS target...)
# A static library that carries its folder include/ and lets only itself see source/.
function(tw_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC include)
  if(IS_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/source)
    target_include_directories(${name} PRIVATE source)
  endif()
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
  tw_warnings(${name})
endfunction()

# tw_test(name [GL] SOURCES file... LINKS target...)
# A GoogleTest binary that ctest runs. With GL it runs under a virtual display of its own.
function(tw_test name)
  if(NOT TIDEWHEEL_TESTS)
    return()
  endif()
  cmake_parse_arguments(ARG "GL" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gtest GTest::gtest_main)
  tw_warnings(${name})
  # Tests may look at what the library keeps to itself.
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/source ${CMAKE_CURRENT_SOURCE_DIR}/tests)
  if(ARG_GL)
    if(TIDEWHEEL_SANITIZE)
      target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/keep_libraries.cpp)
    endif()
    # -noreset: the display would reset itself when SDL's first connection closes.
    add_test(NAME ${name} COMMAND xvfb-run -a -s "-screen 0 1024x768x24 -noreset" $<TARGET_FILE:${name}>)
    # The driver and the X libraries keep a few blocks of their own at exit.
    set_tests_properties(${name} PROPERTIES LABELS gl ENVIRONMENT
      "SDL_AUDIODRIVER=dummy;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0")
  else()
    add_test(NAME ${name} COMMAND ${name})
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()

# tw_benchmark(name SOURCES file... LINKS target...)
# A Google Benchmark binary; ./bench runs every file in build/bench.
function(tw_benchmark name)
  if(NOT TIDEWHEEL_BENCHMARKS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} benchmark::benchmark)
  tw_warnings(${name})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bench)
endfunction()

# tw_fuzzer(name SOURCES file... LINKS target... [CORPUS folder...] [SECONDS n])
# A libFuzzer binary; only with clang and TIDEWHEEL_FUZZ. ctest runs it for half a minute, or for the seconds given, over the
# checked-in corpus; what it finds on the way stays in the build folder.
function(tw_fuzzer name)
  if(NOT TIDEWHEEL_FUZZ)
    return()
  endif()
  cmake_parse_arguments(ARG "" "SECONDS" "SOURCES;LINKS;CORPUS" ${ARGN})
  if(NOT ARG_SECONDS)
    set(ARG_SECONDS 30)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  tw_warnings(${name})

  list(TRANSFORM ARG_CORPUS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  set(found ${CMAKE_CURRENT_BINARY_DIR}/${name}_found)
  file(MAKE_DIRECTORY ${found})
  add_test(NAME ${name} COMMAND ${name} -max_total_time=${ARG_SECONDS} -timeout=10 -rss_limit_mb=2048 -close_fd_mask=1
    -print_final_stats=1 -artifact_prefix=${found}/ ${found} ${ARG_CORPUS})
  set_tests_properties(${name} PROPERTIES LABELS fuzz TIMEOUT 600)
endfunction()

# tw_show(name ROOT folder file...)
# The program of a show and, as NAME-render, the same for tools: with an output of its own for frames, behind ./render,
# and telling where the show is, behind ./author.
# Both go to bin/ in the show's root folder, or into the build where that is sanitized. The files know the show's roster;
# what it is linked from is `effects`, of which the linker takes what the roster uses.
function(tw_show name)
  if(NOT TIDEWHEEL_PROGRAMS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "ROOT;BIN" "" ${ARGN})
  if(NOT ARG_BIN)
    set(ARG_BIN ${ARG_ROOT}/bin)
    if(TIDEWHEEL_SANITIZE)
      set(ARG_BIN ${CMAKE_CURRENT_BINARY_DIR}/bin)
    endif()
  endif()
  get_filename_component(folder ${ARG_ROOT} NAME)
  if(NOT name STREQUAL folder AND NOT ARG_ROOT STREQUAL PROJECT_SOURCE_DIR)
    message(WARNING "The show in ${ARG_ROOT} is left out: it is called '${name}' in its CMakeLists.txt, which has to be "
      "the name of its folder. A copy needs its new name there and, ahead of .sdr, in main.cpp.")
    return()
  endif()
  find_package(Threads REQUIRED)
  # The targets' names cannot meet those of the libraries, whatever a show is called.
  foreach(kind "" -render)
    set(program show-${name}${kind})
    add_executable(${program} ${ARG_UNPARSED_ARGUMENTS})
    target_include_directories(${program} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/effects)
    target_link_libraries(${program} PRIVATE effects)
    if(kind)
      target_sources(${program} PRIVATE ${PROJECT_SOURCE_DIR}/tools/render/frameoutput.cpp
        ${PROJECT_SOURCE_DIR}/tools/author/position.cpp)
      target_link_options(${program} PRIVATE -Wl,--wrap=_ZN6Script12ScriptEngine6updateERKf)
      target_link_libraries(${program} PRIVATE Threads::Threads)
    endif()
    if(TIDEWHEEL_SANITIZE)
      target_sources(${program} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/keep_libraries.cpp)
    endif()
    tw_warnings(${program})
    set_target_properties(${program} PROPERTIES OUTPUT_NAME ${name}${kind} RUNTIME_OUTPUT_DIRECTORY ${ARG_BIN})
  endforeach()
  tw_install_show(${name} ${ARG_ROOT})
endfunction()
