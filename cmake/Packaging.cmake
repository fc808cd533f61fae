# The Debian package of an installation (cpack -G DEB in the build folder).
# Its dependencies come from the shared libraries the programs link.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vortelm)
set(CPACK_PACKAGE_VENDOR "The Vortelm developers")
set(CPACK_PACKAGE_CONTACT "The Vortelm developers <vortelm@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
  "Vortelm talks over a serial line to a board whose controller waits in its\n\
bootstrap loader, sends a loader and a monitor kernel into its RAM, and then\n\
reads and writes memory and registers, downloads, uploads and compares images\n\
and programs flash. It has a window (vortelm), a headless program for scripts\n\
(vortelm-cli) and a virtual board (vortelm-sim).")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
