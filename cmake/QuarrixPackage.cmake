# The Debian package, made from the build folder with `cpack -G DEB`: what
# QuarrixInstall.cmake installs, under /usr.
set(CPACK_PACKAGE_NAME quarrix)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Quarrix developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "local-search solver for 0-1 optimisation models")
set(CPACK_PACKAGE_DESCRIPTION
"Quarrix solves 0-1 optimisation models written in its own modeling language
(.qxm programs) by randomized local search: run `quarrix model.qxm` to read
the data, build the model, solve it within the given limits and write the
results. The package also holds the C++ API (headers, library, CMake and
pkg-config files), the manual page, the documents and the examples.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(QUARRIX_PACKAGE_MAINTAINER "The Quarrix developers <quarrix@localhost>"
    CACHE STRING "Maintainer field of the Debian package")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${QUARRIX_PACKAGE_MAINTAINER}")

# Run-time dependencies: dpkg-shlibdeps reads them off the binaries (the
# Boost, C++ and C run-time libraries with their versions); without it, the
# Boost libraries this build linked are named by hand.
find_program(QUARRIX_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(QUARRIX_DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
else()
  set(boost_version ${Boost_VERSION_MAJOR}.${Boost_VERSION_MINOR}.${Boost_VERSION_PATCH})
  set(CPACK_DEBIAN_PACKAGE_DEPENDS
      "libboost-thread${boost_version}, libboost-date-time${boost_version}, libstdc++6, libc6")
endif()
if(QUARRIX_SHARED)
  # libquarrix.so.2 for other packages' dependencies, and ldconfig's trigger.
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
else()
  # Linking the static library into a program needs Boost's link libraries.
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libboost-thread-dev, libboost-date-time-dev")
endif()

include(CPack)
