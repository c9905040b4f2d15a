# The Windows build (cmake -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake): the
# module and the host pieces against the system's own Windows headers and
# libraries. platform/ is Linux's stand-in for Windows and is not built.
enable_language(RC)
add_subdirectory(portable)
# TeskColorMgrRC.dll lands in bin/ beside teskhost.dll: the language service
# looks for it in the folder the host library was loaded from.
add_subdirectory(resources)

# nlohmann-json is header-only: only its own folder of the Debian package goes
# on the include path, never the rest of the Linux headers.
set(TESK_HEADER_ONLY_DIR ${CMAKE_BINARY_DIR}/header-only)
file(MAKE_DIRECTORY ${TESK_HEADER_ONLY_DIR})
file(CREATE_LINK /usr/include/nlohmann ${TESK_HEADER_ONLY_DIR}/nlohmann SYMBOLIC)

# The runtime DLLs of the compiler are loaded from the toolchain's folders
# (WINEPATH in .ci/windows-build), so every DLL shares one C++ runtime.
file(GLOB TESK_HOST_SOURCES CONFIGURE_DEPENDS host/*.cpp host/imaging/*.cpp)
add_library(teskhost SHARED ${TESK_HOST_SOURCES})
target_include_directories(teskhost PUBLIC ${CMAKE_SOURCE_DIR})
target_include_directories(teskhost SYSTEM PRIVATE ${TESK_HEADER_ONLY_DIR})
target_link_libraries(teskhost PUBLIC teskportable)
target_compile_definitions(teskhost PRIVATE TESK_BUILDING_HOST)

set(TESK_MODULE_SOURCES)
foreach(dir module icc colormgr conversion device devices)
  file(GLOB sources CONFIGURE_DEPENDS ${dir}/*.cpp)
  list(APPEND TESK_MODULE_SOURCES ${sources})
endforeach()
add_library(TeskColorMgr SHARED ${TESK_MODULE_SOURCES})
target_link_libraries(TeskColorMgr PUBLIC teskhost PRIVATE teskportable gdi32 user32)
target_compile_definitions(TeskColorMgr PRIVATE TESK_BUILDING_MODULE)
set_target_properties(teskhost TeskColorMgr PROPERTIES PREFIX "")

add_executable(module_smoke tests/smoke/module_smoke.cpp)
target_link_libraries(module_smoke PRIVATE TeskColorMgr)

# The module's own profiles, beside the program as on Linux.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/bin/ColorProfile)
file(GLOB TESK_OWN_PROFILES ${CMAKE_SOURCE_DIR}/data/ColorProfile/*.icc)
file(COPY ${TESK_OWN_PROFILES} DESTINATION ${CMAKE_BINARY_DIR}/bin/ColorProfile)

add_library(icmui_without_dialog SHARED tests/smoke/icmui_without_dialog.cpp)
set_target_properties(icmui_without_dialog PROPERTIES PREFIX "" OUTPUT_NAME ICMUI)
add_dependencies(module_smoke icmui_without_dialog TeskColorMgrRC)
