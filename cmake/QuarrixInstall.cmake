# The installed layout:
#   bin/quarrix, bin/quarrix-lp       the launcher, the LP writer
#   lib*/libquarrix.a or .so.2        the library (SONAME libquarrix.so.2)
#   include/quarrix/*.h               the public API headers only
#   lib*/cmake/Quarrix/               the package config for find_package(Quarrix)
#   lib*/pkgconfig/quarrix.pc         the same for pkg-config
#   share/man/man1/quarrix.1          the manual page
#   share/doc/quarrix/                README, documents, examples
#   share/vim/vimfiles/               syntax and file-type detection for .qxm
#   share/quarrix/editors/            the TextMate grammar and its configuration
# The source tree keeps its own layout (src/api/...); only the installed one
# gathers the public headers under quarrix/, a name no other project uses.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
# The package's name, in lower case as Debian has it (GNUInstallDirs would
# take the project's).
set(QUARRIX_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/quarrix)

# The headers a C++ program includes. The others of src/api/ (compiled
# models, error texts, the kernel's exception) belong to the library.
set(QUARRIX_PUBLIC_HEADERS quarrix.h qxexception.h qxexpression.h qxlpwriter.h qxmodel.h
    qxoperator.h qxparam.h qxphase.h qxsolution.h qxstatistics.h qxversion.h)
list(TRANSFORM QUARRIX_PUBLIC_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/src/api/
     OUTPUT_VARIABLE public_header_paths)

set_target_properties(quarrix_lib PROPERTIES EXPORT_NAME quarrix)
if(QUARRIX_SHARED)
  # Found beside the executable wherever the prefix is moved; harmless in /usr.
  file(RELATIVE_PATH lib_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(quarrix quarrix_lp PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
endif()
install(TARGETS quarrix_lib EXPORT QuarrixTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS quarrix quarrix_lp RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${public_header_paths} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quarrix)

set(QUARRIX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quarrix)
install(EXPORT QuarrixTargets NAMESPACE Quarrix:: DESTINATION ${QUARRIX_CMAKE_DIR})
configure_package_config_file(cmake/QuarrixConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/QuarrixConfig.cmake INSTALL_DESTINATION ${QUARRIX_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/QuarrixConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QuarrixConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/QuarrixConfigVersion.cmake
        DESTINATION ${QUARRIX_CMAKE_DIR})

# pkg-config: the prefix is the one installed to (cmake --install --prefix,
# or /usr in the Debian package), so quarrix.pc is written at install time;
# the directories are relative to ${prefix}, so that
# --define-variable=prefix=... moves the whole package. A static library
# lists the libraries it needs in Libs, since most users do not pass --static.
foreach(dir LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(QUARRIX_PC_${dir} "${CMAKE_INSTALL_${dir}}")
  else()
    set(QUARRIX_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
set(QUARRIX_PC_DEPENDENCIES "-lboost_thread -lboost_date_time -pthread")
if(QUARRIX_SHARED)
  set(QUARRIX_PC_LIBS "-lquarrix")
  set(QUARRIX_PC_LIBS_PRIVATE "${QUARRIX_PC_DEPENDENCIES}")
else()
  set(QUARRIX_PC_LIBS "-lquarrix ${QUARRIX_PC_DEPENDENCIES}")
  set(QUARRIX_PC_LIBS_PRIVATE "")
endif()
set(QUARRIX_PC_PREFIX "@QUARRIX_PC_PREFIX@")  # left for the install step
set(pc_template ${CMAKE_CURRENT_BINARY_DIR}/quarrix.pc.in)
set(pc_file ${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/quarrix.pc)
configure_file(cmake/quarrix.pc.in ${pc_template} @ONLY)
install(CODE "set(QUARRIX_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
              configure_file(\"${pc_template}\" \"${pc_file}\" @ONLY)")
install(FILES ${pc_file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Manual pages are installed compressed, as Debian's policy asks.
set(manpage ${CMAKE_CURRENT_BINARY_DIR}/quarrix.1.gz)
add_custom_command(OUTPUT ${manpage}
  COMMAND gzip -9 -n -c ${PROJECT_SOURCE_DIR}/docs/quarrix.1 > ${manpage}
  DEPENDS ${PROJECT_SOURCE_DIR}/docs/quarrix.1)
add_custom_target(quarrix_manpage ALL DEPENDS ${manpage})
install(FILES ${manpage} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES README.md DESTINATION ${QUARRIX_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${QUARRIX_INSTALL_DOCDIR}/docs FILES_MATCHING PATTERN "*.md")
install(DIRECTORY examples/ DESTINATION ${QUARRIX_INSTALL_DOCDIR}/examples)
install(FILES editors/vim/syntax/qxm.vim DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/vim/vimfiles/syntax)
install(FILES editors/vim/ftdetect/qxm.vim DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/vim/vimfiles/ftdetect)
install(DIRECTORY editors/textmate/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/quarrix/editors/textmate)
