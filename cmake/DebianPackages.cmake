# Debian packages through CPack ("cpack -G DEB" in the build folder, which
# must be configured with -DCMAKE_INSTALL_PREFIX=/usr). Each package's library
# dependencies come from dpkg-shlibdeps; the packages' own libraries are found
# in the staging folders and tied together by the component dependencies.
set(CPACK_PACKAGE_NAME teskcolormgr)
set(CPACK_PACKAGE_VENDOR "TeskColorMgr developers")
set(TESK_PACKAGE_MAINTAINER "TeskColorMgr maintainers <maintainers@users.noreply.c-seed-3cdc47a8.example>"
    CACHE STRING "Maintainer field of the Debian packages")
set(CPACK_PACKAGE_CONTACT "${TESK_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "colour management of ICC profiles and images")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_COMPONENTS_ALL Runtime Development Program)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libteskcolormgr${TESK_SOVERSION})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The public libraries are in the linker's folder: refresh its cache by trigger.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "colour-management module: runtime libraries
 libTeskColorMgr, the colour-management module of a photo editor, with the
 host pieces it needs (libteskhost), its Win32 subset (libteskwin32), the
 colour-system modules on Little CMS 2 and its two CMYK press profiles.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libteskcolormgr-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "colour-management module: development files
 Headers, CMake package (find_package(TeskColorMgr)) and pkg-config file
 (teskcolormgr) for programs that embed libTeskColorMgr.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME teskcolor)
set(CPACK_COMPONENT_PROGRAM_DEPENDS Runtime)
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "colour management of images and ICC profiles from the command line
 teskcolor checks and analyses ICC profiles, converts TIFF, PNG and JPEG
 images, separates RGB into four ink plates and back, soft-proofs, keeps the
 colour settings and loads a monitor's calibration into the display.")

# A native package's changelog, one per package.
string(TIMESTAMP TESK_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component Runtime Development Program)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(changelog ${CMAKE_BINARY_DIR}/debian/${package}/changelog)
  file(CONFIGURE OUTPUT ${changelog} CONTENT "${package} (${PROJECT_VERSION}) unstable; urgency=medium

  * Release ${PROJECT_VERSION}.

 -- ${TESK_PACKAGE_MAINTAINER}  ${TESK_PACKAGE_DATE}
")
  execute_process(COMMAND gzip -n -9 -f -k ${changelog})
  install(FILES ${changelog}.gz DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
endforeach()

# dpkg-shlibdeps must find the libraries and modules of the runtime package
# while it looks at the other two.
set(stage ${CMAKE_BINARY_DIR}/_CPack_Packages/Linux/DEB/${CPACK_PACKAGE_NAME}-${PROJECT_VERSION}-Linux/Runtime)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${stage}${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR} ${stage}${CMAKE_INSTALL_PREFIX}/${TESK_MODULE_INSTALL_DIR})
include(CPack)
