# The two shared libraries, made of the objects of the rooms that cmake/floors.txt gives them: ymrvast (no Qt, no
# GStreamer) and ymrplayer on top of it.
function(ymr_library name)
  add_library(${name} SHARED)
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} EXPORT_NAME ${name})
  add_library(ymr::${name} ALIAS ${name})
  target_include_directories(${name} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ymr>)
  target_compile_features(${name} INTERFACE cxx_std_20)
  target_link_options(${name} PRIVATE -Wl,--as-needed)
  if(NOT YMR_SANITIZE)  # a sanitizer's own symbols are the program's to provide
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:ymr_compile>)
  foreach(room IN LISTS ARGN)
    ymr_room_target(target ${room})
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:${target}>)
    get_property(libraries GLOBAL PROPERTY YMR_LIBRARIES_${room})
    target_link_libraries(${name} PRIVATE ${libraries})
  endforeach()
endfunction()

ymr_library(ymrvast ${ymrvast_rooms})
if(YMR_PLAYER)
  ymr_library(ymrplayer ${ymrplayer_rooms})
  find_package(Qt6 6.4 REQUIRED COMPONENTS Quick)
  # A host sees views, which are items of Qt Quick's.
  target_link_libraries(ymrplayer PUBLIC ymrvast Qt6::Quick)
endif()
