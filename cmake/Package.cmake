# What an installed tree holds for a program that embeds the module, and the
# Debian packages made from it: the runtime libraries (libteskcolormgr0), the
# development files (libteskcolormgr-dev) and the program (teskcolor).

# The headers an embedding program includes, and nothing the module keeps to
# itself. public_headers_check below compiles each one on its own, so a header
# that needs an internal one, or warns, fails the build.
set(TESK_PUBLIC_HEADERS
  colormgr/ColorManager.h
  device/IVDeviceContext.h device/VDeviceContext.h
  icc/ICCColorProfile.h icc/ICCReadColorProfile.h icc/ICCTypes.h icc/ICCWriteColorProfile.h
  module/Export.h
  host/AppService.h host/CString.h host/HostExport.h host/ComponentFramework.h host/HostServices.h host/SettingsStore.h
  host/SharedArray.h host/SingletonManager.h host/Unknown.h host/VException.h
  host/imaging/ColorRef.h host/imaging/DibIterator.h host/imaging/ImagingApi.h host/imaging/Palette.h
  host/imaging/PixelFormat.h host/imaging/RowIterator.h host/imaging/RowIteratorBands.h
  host/imaging/StatusControl.h)
foreach(header ${TESK_PUBLIC_HEADERS})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/teskcolormgr/${folder} COMPONENT Development)
endforeach()
install(DIRECTORY platform/win32/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/teskcolormgr/win32
        COMPONENT Development FILES_MATCHING PATTERN "*.h" PATTERN "tesk" EXCLUDE)

set(checks)
foreach(header ${TESK_PUBLIC_HEADERS})
  string(MAKE_C_IDENTIFIER ${header} id)
  set(check ${CMAKE_BINARY_DIR}/public_headers/${id}.cpp)
  file(CONFIGURE OUTPUT ${check} CONTENT "#include \"${header}\"\n")
  list(APPEND checks ${check})
endforeach()
add_library(public_headers_check OBJECT ${checks})
# As a user's build sees them: only the installed folders, default warnings on.
target_include_directories(public_headers_check PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/platform/win32/include)
target_compile_options(public_headers_check PRIVATE -Wall -Wextra -Wmultichar -Werror)

# CMake package and pkg-config file, both relative to where they are installed.
include(CMakePackageConfigHelpers)
set(TESK_CMAKE_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/TeskColorMgr)
install(EXPORT TeskColorMgrTargets NAMESPACE TeskColorMgr:: DESTINATION ${TESK_CMAKE_INSTALL_DIR}
        COMPONENT Development)
configure_package_config_file(cmake/TeskColorMgrConfig.cmake.in ${CMAKE_BINARY_DIR}/TeskColorMgrConfig.cmake
  INSTALL_DESTINATION ${TESK_CMAKE_INSTALL_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TeskColorMgrConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TeskColorMgrConfig.cmake ${CMAKE_BINARY_DIR}/TeskColorMgrConfigVersion.cmake
  DESTINATION ${TESK_CMAKE_INSTALL_DIR} COMPONENT Development)
set(TESK_PC_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH TESK_PC_TO_PREFIX /tesk-prefix/${TESK_PC_INSTALL_DIR} /tesk-prefix)
string(REGEX REPLACE "/$" "" TESK_PC_TO_PREFIX "${TESK_PC_TO_PREFIX}")
configure_file(cmake/teskcolormgr.pc.in ${CMAKE_BINARY_DIR}/teskcolormgr.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/teskcolormgr.pc DESTINATION ${TESK_PC_INSTALL_DIR} COMPONENT Development)

# The program's manual page, made from its own --help, and its completion.
find_program(HELP2MAN help2man REQUIRED)
find_program(GZIP gzip REQUIRED)
set(TESK_MAN_PAGE ${CMAKE_BINARY_DIR}/man/teskcolor.1.gz)
add_custom_command(OUTPUT ${TESK_MAN_PAGE}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/man
  # In the sanitizer build a leak report at exit must not cost the page.
  COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0 ${HELP2MAN} --no-info --no-discard-stderr --version-string=${PROJECT_VERSION}
          --name "colour management of images and ICC profiles" --include ${CMAKE_SOURCE_DIR}/cmake/teskcolor.h2m
          --output ${CMAKE_BINARY_DIR}/man/teskcolor.1 $<TARGET_FILE:teskcolor>
  COMMAND ${GZIP} -n -9 -f ${CMAKE_BINARY_DIR}/man/teskcolor.1
  DEPENDS teskcolor ${CMAKE_SOURCE_DIR}/cmake/teskcolor.h2m
  COMMENT "Writing the teskcolor manual page" VERBATIM)
add_custom_target(teskcolor_man ALL DEPENDS ${TESK_MAN_PAGE})
install(FILES ${TESK_MAN_PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Program)
install(FILES cli/completion/teskcolor.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME teskcolor COMPONENT Program)

include(cmake/DebianPackages.cmake)
