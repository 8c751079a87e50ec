# How every translation unit of the project is compiled.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(YMR_CCACHE ccache)
if(YMR_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${YMR_CCACHE})
endif()

add_library(ymr_compile INTERFACE)
target_include_directories(ymr_compile INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
target_compile_options(ymr_compile INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align)
if(YMR_SANITIZE)
  target_compile_options(ymr_compile INTERFACE
    -fsanitize=${YMR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(ymr_compile INTERFACE -fsanitize=${YMR_SANITIZE})
endif()
find_package(Threads REQUIRED)
target_link_libraries(ymr_compile INTERFACE Threads::Threads)
