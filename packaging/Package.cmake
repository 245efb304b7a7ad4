# The Debian package: `cpack -G DEB` in a build folder makes brasswick_VERSION_ARCH.deb.
# Under /usr nothing is writable by the program, so /usr/bin/brasswick is a launcher that gives
# each user a program folder of their own and starts the real program from /usr/lib/brasswick.

set(BRASSWICK_PACKAGE_CONTACT "Velmora Works <packages@velmora-works.com>" CACHE STRING
    "Maintainer of the Debian package")
# The launcher names its files by absolute path, so the package's prefix is fixed.
set(BRASSWICK_INSTALL_PREFIX /usr)
set(package_build ${CMAKE_BINARY_DIR}/package)
set(package_source ${PROJECT_SOURCE_DIR}/packaging)

# Debian wants 0755 directories whatever the builder's umask.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

configure_file(${package_source}/brasswick.sh.in ${package_build}/brasswick @ONLY)
# The licence is the GPL text every Debian system already has.
file(CREATE_LINK ../common-licenses/GPL-3 ${package_build}/LICENSE SYMBOLIC)

# The manual page and the changelog, compressed as Debian's tools expect.
set(compressed)
foreach(pair "brasswick.1|brasswick.1.gz" "changelog|changelog.gz")
  string(REPLACE "|" ";" pair "${pair}")
  list(GET pair 0 from)
  list(GET pair 1 to)
  add_custom_command(OUTPUT ${package_build}/${to}
    COMMAND ${CMAKE_COMMAND} -DIN=${package_source}/${from} -DOUT=${package_build}/${to}
            -P ${package_source}/gzip.cmake
    DEPENDS ${package_source}/${from} ${package_source}/gzip.cmake
    VERBATIM)
  list(APPEND compressed ${package_build}/${to})
endforeach()
add_custom_target(package_files ALL DEPENDS ${compressed})

install(PROGRAMS ${package_build}/brasswick DESTINATION bin)
install(TARGETS brasswick RUNTIME DESTINATION lib/brasswick)

# What the launcher copies into each user's program folder.
install(FILES ${PROJECT_SOURCE_DIR}/data/LocalJ/drivers.cdx DESTINATION share/brasswick/LocalJ)
install(FILES ${PROJECT_SOURCE_DIR}/data/splash.png
              ${PROJECT_SOURCE_DIR}/data/cover/cdquality.jpg
              ${PROJECT_SOURCE_DIR}/data/cover/velmoraimg.jpg
              ${PROJECT_SOURCE_DIR}/README.md
              ${package_build}/LICENSE
        DESTINATION share/brasswick)

install(FILES ${package_source}/com.velmora_works.Brasswick.desktop DESTINATION share/applications)
install(FILES ${package_source}/com.velmora_works.Brasswick.metainfo.xml DESTINATION share/metainfo)
foreach(size 48 64 128 256)
  install(FILES ${package_source}/icons/brasswick-${size}.png
          DESTINATION share/icons/hicolor/${size}x${size}/apps RENAME brasswick.png)
endforeach()
install(FILES ${package_source}/icons/brasswick.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES ${package_build}/brasswick.1.gz DESTINATION share/man/man1)
install(FILES ${package_source}/copyright ${package_build}/changelog.gz DESTINATION share/doc/brasswick)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME brasswick)
set(CPACK_PACKAGE_VENDOR "Velmora Works")
set(CPACK_PACKAGE_CONTACT "${BRASSWICK_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_HOMEPAGE_URL https://velmora-works.com)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "make audio CDs out of MP3 files")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"MP3 Brasswick lays MP3 files out against a 74 or 80 minute disc while the
time left counts down, and burns the layout one track at a time, to a CD
recorder through wodim or to a CUE/BIN disc image. Around that core: a
player with a 15-band equaliser, wave converters, a CD ripper with ISRC
reading, a cover designer and an add-on catalogue.")
set(CPACK_PACKAGING_INSTALL_PREFIX ${BRASSWICK_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Libraries from dpkg-shlibdeps; the programs it runs by name are added by hand: wodim for the
# recorders, xdg-open for links, lpstat (cups-client) for network printers.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "wodim, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "cups-client, ca-certificates")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)

# Installs the package on this machine, so it runs only when asked for.
option(BRASSWICK_PACKAGE_TEST "Run the package test (installs and removes the package; root)" OFF)
if(BRASSWICK_BUILD_TESTS)
  # The launcher alone, on a make-believe installation: no root, nothing installed.
  add_test(NAME unit.package.launcher
           COMMAND ${PROJECT_SOURCE_DIR}/tests/package/test-launcher.sh ${package_source}/brasswick.sh.in)
  add_test(NAME package.deb COMMAND ${PROJECT_SOURCE_DIR}/tests/package/test-package.sh ${CMAKE_BINARY_DIR})
  set_tests_properties(package.deb PROPERTIES LABELS package TIMEOUT 900 SKIP_RETURN_CODE 77)
  if(NOT BRASSWICK_PACKAGE_TEST)
    set_tests_properties(package.deb PROPERTIES DISABLED TRUE)
  endif()
endif()
