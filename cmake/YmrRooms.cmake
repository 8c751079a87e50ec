# A room is one folder of sources, built as a static library named ymr_<folder with underscores>.
#
#   ymr_room(SOURCES a.cpp b.cpp [ROOMS platform/dispatch ...] [LIBRARIES PkgConfig::GST ...])
#
# called in the folder's own CMakeLists.txt. ROOMS are the folders that it includes from, all on floors below its own
# (cmake/floors.txt). The shared libraries gather rooms; tests link rooms, so that they see unexported symbols.

function(ymr_room_target out path)
  string(REPLACE "/" "_" name ${path})
  set(${out} ymr_${name} PARENT_SCOPE)
endfunction()

function(ymr_room)
  cmake_parse_arguments(PARSE_ARGV 0 room "" "" "SOURCES;ROOMS;LIBRARIES")
  file(RELATIVE_PATH path ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  ymr_room_target(target ${path})
  add_library(${target} STATIC ${room_SOURCES})
  target_link_libraries(${target} PUBLIC ymr_compile)
  foreach(below IN LISTS room_ROOMS)
    ymr_room_target(dependency ${below})
    if(NOT TARGET ${dependency})
      message(FATAL_ERROR "${path} uses ${below}, which is not on a floor below it (cmake/floors.txt)")
    endif()
    target_link_libraries(${target} PUBLIC ${dependency})
  endforeach()
  target_link_libraries(${target} PUBLIC ${room_LIBRARIES})
  set_property(GLOBAL PROPERTY YMR_LIBRARIES_${path} ${room_LIBRARIES})
endfunction()

# A test program: one or more files of GoogleTest cases against some rooms.
#
#   ymr_test(name SOURCES x_test.cpp ROOMS platform/coremedia [LIBRARIES ...] [LABELS media])
#
# Every case becomes a test of CTest's. LABELS: unit (default), media (decodes real clips), screen (draws real pictures).
include(GoogleTest)
function(ymr_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "TIMEOUT" "SOURCES;ROOMS;LIBRARIES;LABELS")
  find_package(GTest REQUIRED)
  add_executable(${name} ${test_SOURCES})
  foreach(below IN LISTS test_ROOMS)
    ymr_room_target(dependency ${below})
    target_link_libraries(${name} PRIVATE ${dependency})
  endforeach()
  target_link_libraries(${name} PRIVATE ymr_compile ${test_LIBRARIES} GTest::gmock)
  if(NOT test_LABELS)
    set(test_LABELS unit)
  endif()
  if(NOT test_TIMEOUT)
    set(test_TIMEOUT 120)
  endif()
  if(NOT TARGET ymr_test_main)
    add_library(ymr_test_main STATIC ${PROJECT_SOURCE_DIR}/tests/test_main.cpp)
    target_link_libraries(ymr_test_main PUBLIC ymr_compile GTest::gmock)
    target_compile_definitions(ymr_test_main PRIVATE YMR_LSAN_SUPPRESSIONS="${PROJECT_SOURCE_DIR}/tests/lsan.supp")
  endif()
  target_link_libraries(${name} PRIVATE ymr_test_main)
  # One value a property: the discovery of tests takes lists apart.
  set(properties LABELS "${test_LABELS}" TIMEOUT ${test_TIMEOUT} ENVIRONMENT QT_QPA_PLATFORM=offscreen)
  if(media IN_LIST test_LABELS)  # GStreamer's libraries keep no frame pointers; leaks need their whole stack
    list(APPEND properties ENVIRONMENT_MODIFICATION ASAN_OPTIONS=set:fast_unwind_on_malloc=0)
  endif()
  gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()

# Runs a test program of ScreenTest's once more, drawing with GL on a virtual display, where there is one. The checkers
# are left out: what they would look at is the display's own software GL.
find_program(YMR_XVFB_RUN xvfb-run)
function(ymr_gpu_test name)
  if(NOT YMR_XVFB_RUN OR YMR_SANITIZE)
    return()
  endif()
  add_test(NAME ${name}.on_the_gpu COMMAND ${YMR_XVFB_RUN} -a -s "-screen 0 1280x720x24" $<TARGET_FILE:${name}>)
  set_tests_properties(${name}.on_the_gpu PROPERTIES LABELS screen TIMEOUT 120
    ENVIRONMENT "QT_QPA_PLATFORM=xcb;YMR_GRAPHICS=gpu")
endfunction()
