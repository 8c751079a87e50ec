# What `cmake --install` puts down, and the .deb of it.
include(CMakePackageConfigHelpers)

set(installed ymrvast)
if(YMR_PLAYER)
  list(APPEND installed ymrplayer)
endif()
install(TARGETS ${installed} EXPORT ymrTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT ymrTargets NAMESPACE ymr:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ymr)

# Headers go out by room, under their own paths, so that an include reads the same inside and outside.
foreach(room IN LISTS ymrvast_rooms ymrplayer_rooms)
  file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${room}/*.h)
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ymr/${room})
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/platform/Export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ymr/platform)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ymrConfig.cmake.in ${PROJECT_BINARY_DIR}/ymrConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ymr)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ymrConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ymrConfig.cmake ${PROJECT_BINARY_DIR}/ymrConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ymr)

file(RELATIVE_PATH up ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(library IN LISTS installed)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

install(FILES ${PROJECT_SOURCE_DIR}/docs/man/ymrvast.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
if(YMR_PLAYER)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/man/ymrplay.1 ${PROJECT_SOURCE_DIR}/docs/man/ymrsrt.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
# The README as it is, but for its headers, which lie elsewhere there.
file(READ ${PROJECT_SOURCE_DIR}/README.md readme)
file(RELATIVE_PATH to_headers ${CMAKE_INSTALL_FULL_DOCDIR} ${CMAKE_INSTALL_FULL_INCLUDEDIR}/ymr)
string(REGEX REPLACE "\\]\\(([A-Za-z/_]+\\.h)\\)" "](${to_headers}/\\1)" readme "${readme}")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/README.md CONTENT "${readme}" @ONLY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/README.md)
install(FILES ${PROJECT_BINARY_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/architecture.md ${PROJECT_SOURCE_DIR}/docs/engine.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/images DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ymrplayer)
# Who makes the package, as Debian's own tools ask for it.
set(contact_name "$ENV{DEBFULLNAME}")
set(contact_address "$ENV{DEBEMAIL}")
if(NOT contact_address)
  set(contact_name "ymrplayer maintainers")
  cmake_host_system_information(RESULT host QUERY FQDN)
  set(contact_address "root@${host}")
endif()
set(CPACK_PACKAGE_CONTACT "${contact_name} <${contact_address}>")
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# What is loaded at run time, and so is seen by no linker; the list is the one that the scripts install from.
file(STRINGS ${PROJECT_SOURCE_DIR}/scripts/packages.txt lines REGEX "^run[ \t]")
set(depends)
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^run[ \t]+([^ \t#]+).*" "\\1" package "${line}")
  list(APPEND depends ${package})
endforeach()
list(JOIN depends ", " CPACK_DEBIAN_PACKAGE_DEPENDS)
include(CPack)
