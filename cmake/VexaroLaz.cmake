# LAZ support for the LAS codec through LASzip, always linked as a shared library.
#
# VEXARO_LAZ: AUTO (default) uses an installed LASzip, else fetches the LASzip sources from PyPI
# at configure time (the laszip sdist carries them) and builds them here; without either it
# builds without LAZ and says why. ON requires LAZ support; OFF builds without it.
# VEXARO_LASZIP_PYPI_VERSION: the version of the PyPI laszip sdist whose sources are used.
#
# Sets VEXARO_HAVE_LAZ and, where the sources are built here, the target vexaro_laszip.
set(VEXARO_LAZ AUTO CACHE STRING "LAZ support through LASzip: AUTO, ON or OFF")
set_property(CACHE VEXARO_LAZ PROPERTY STRINGS AUTO ON OFF)
set(VEXARO_LASZIP_PYPI_VERSION 0.3.0 CACHE STRING "Version of the laszip sdist on PyPI that supplies the LASzip sources")

set(VEXARO_HAVE_LAZ OFF)
set(_vexaro_laz_reason "")

# An installed LASzip: its CMake package, pkg-config, or the header and library where they lie.
function(_vexaro_find_installed_laszip)
  find_path(VEXARO_LASZIP_INCLUDE_DIR laszip/laszip_api.h)
  find_library(VEXARO_LASZIP_LIBRARY NAMES laszip laszip3)
  if(VEXARO_LASZIP_INCLUDE_DIR AND VEXARO_LASZIP_LIBRARY)
    add_library(vexaro_laszip_installed SHARED IMPORTED GLOBAL)
    set_target_properties(vexaro_laszip_installed PROPERTIES IMPORTED_LOCATION "${VEXARO_LASZIP_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${VEXARO_LASZIP_INCLUDE_DIR};${VEXARO_LASZIP_INCLUDE_DIR}/laszip")
    set(VEXARO_LASZIP_TARGET vexaro_laszip_installed PARENT_SCOPE)
    message(STATUS "LAZ support: installed LASzip ${VEXARO_LASZIP_LIBRARY}")
    return()
  endif()
  find_package(PkgConfig QUIET)
  if(PKG_CONFIG_FOUND)
    pkg_check_modules(VEXARO_LASZIP_PC QUIET IMPORTED_TARGET GLOBAL laszip)
    if(VEXARO_LASZIP_PC_FOUND)
      set(VEXARO_LASZIP_TARGET PkgConfig::VEXARO_LASZIP_PC PARENT_SCOPE)
      message(STATUS "LAZ support: installed LASzip ${VEXARO_LASZIP_PC_VERSION} (pkg-config)")
    endif()
  endif()
endfunction()

# The LASzip sources of the laszip sdist on PyPI, downloaded and unpacked once into the build folder.
function(_vexaro_fetch_laszip_sources)
  set(deps ${CMAKE_BINARY_DIR}/_deps/laszip)
  file(GLOB found LIST_DIRECTORIES true ${deps}/laszip-${VEXARO_LASZIP_PYPI_VERSION}/src/vendor/LASzip-*)
  if(NOT found)
    find_package(Python3 COMPONENTS Interpreter QUIET)
    if(NOT Python3_Interpreter_FOUND)
      set(_vexaro_laz_reason "python3 is missing, so LASzip cannot be fetched from PyPI" PARENT_SCOPE)
      return()
    endif()
    set(sdist ${deps}/laszip-${VEXARO_LASZIP_PYPI_VERSION}.tar.gz)
    # A failed download is not retried on every reconfigure: without network each try costs time.
    set(failed ${deps}/download-failed-${VEXARO_LASZIP_PYPI_VERSION}.txt)
    if(NOT EXISTS ${sdist} AND EXISTS ${failed})
      file(READ ${failed} why)
      set(_vexaro_laz_reason "${why}; remove ${failed} to try again" PARENT_SCOPE)
      return()
    endif()
    if(NOT EXISTS ${sdist})
      message(STATUS "LAZ support: fetching the LASzip sources (laszip ${VEXARO_LASZIP_PYPI_VERSION} from PyPI)")
      execute_process(
        COMMAND ${Python3_EXECUTABLE} -m pip download --quiet --disable-pip-version-check --timeout 20 --retries 1
                --no-binary :all: --no-deps laszip==${VEXARO_LASZIP_PYPI_VERSION} -d ${deps}
        RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 300)
      if(NOT result EQUAL 0 OR NOT EXISTS ${sdist})
        string(STRIP "${err}" err)
        string(REGEX REPLACE "\n.*" "" err "${err}")
        set(why "pip could not download laszip ${VEXARO_LASZIP_PYPI_VERSION} from PyPI (${result}: ${err})")
        file(WRITE ${failed} "${why}")
        set(_vexaro_laz_reason "${why}" PARENT_SCOPE)
        return()
      endif()
    endif()
    file(ARCHIVE_EXTRACT INPUT ${sdist} DESTINATION ${deps})
    file(GLOB found LIST_DIRECTORIES true ${deps}/laszip-${VEXARO_LASZIP_PYPI_VERSION}/src/vendor/LASzip-*)
    if(NOT found)
      set(_vexaro_laz_reason "the laszip sdist holds no LASzip sources under src/vendor" PARENT_SCOPE)
      return()
    endif()
  endif()
  list(GET found 0 root)
  set(VEXARO_LASZIP_SOURCE_DIR ${root} PARENT_SCOPE)
endfunction()

if(NOT VEXARO_LAZ STREQUAL "OFF")
  _vexaro_find_installed_laszip()
  if(NOT VEXARO_LASZIP_TARGET)
    _vexaro_fetch_laszip_sources()
    if(VEXARO_LASZIP_SOURCE_DIR)
      # The library part of LASzip with its C API (laszip_dll.cpp); the tools and the dynamic
      # loader of dll/laszip_api.c are not needed. Its own warnings are its own: no Vexaro flags.
      set(src ${VEXARO_LASZIP_SOURCE_DIR}/src)
      add_library(vexaro_laszip SHARED
        ${src}/mydefs.cpp ${src}/lasmessage.cpp ${src}/arithmeticdecoder.cpp ${src}/arithmeticencoder.cpp
        ${src}/arithmeticmodel.cpp ${src}/integercompressor.cpp ${src}/lasindex.cpp ${src}/lasinterval.cpp
        ${src}/lasquadtree.cpp ${src}/lasreaditemcompressed_v1.cpp ${src}/lasreaditemcompressed_v2.cpp
        ${src}/lasreaditemcompressed_v3.cpp ${src}/lasreaditemcompressed_v4.cpp ${src}/lasreadpoint.cpp
        ${src}/laswriteitemcompressed_v1.cpp ${src}/laswriteitemcompressed_v2.cpp
        ${src}/laswriteitemcompressed_v3.cpp ${src}/laswriteitemcompressed_v4.cpp ${src}/laswritepoint.cpp
        ${src}/laszip.cpp ${src}/laszip_dll.cpp)
      # Headers as an installed LASzip lays them out: <laszip/laszip_api.h> beside its companions.
      set(headers ${CMAKE_BINARY_DIR}/_deps/laszip/include)
      configure_file(${VEXARO_LASZIP_SOURCE_DIR}/dll/laszip_api.h ${headers}/laszip/laszip_api.h COPYONLY)
      configure_file(${VEXARO_LASZIP_SOURCE_DIR}/include/laszip/laszip_common.h ${headers}/laszip/laszip_common.h
        COPYONLY)
      configure_file(${VEXARO_LASZIP_SOURCE_DIR}/include/laszip/laszip_api_version.h
        ${headers}/laszip/laszip_api_version.h COPYONLY)
      target_include_directories(vexaro_laszip SYSTEM PRIVATE ${src} ${VEXARO_LASZIP_SOURCE_DIR}/include
        ${VEXARO_LASZIP_SOURCE_DIR}/include/laszip
        ${VEXARO_LASZIP_SOURCE_DIR}/dll)
      target_include_directories(vexaro_laszip SYSTEM INTERFACE ${headers} ${headers}/laszip)
      target_compile_definitions(vexaro_laszip PRIVATE LASZIPDLL_EXPORTS UNORDERED HAVE_UNORDERED_MAP=1)
      target_compile_options(vexaro_laszip PRIVATE -w)
      set_target_properties(vexaro_laszip PROPERTIES CXX_VISIBILITY_PRESET default
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
      include(GNUInstallDirs)
      install(TARGETS vexaro_laszip LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
      set(VEXARO_LASZIP_TARGET vexaro_laszip)
      message(STATUS "LAZ support: LASzip built from ${VEXARO_LASZIP_SOURCE_DIR}")
    endif()
  endif()
  if(VEXARO_LASZIP_TARGET)
    set(VEXARO_HAVE_LAZ ON)
  elseif(VEXARO_LAZ STREQUAL "ON")
    message(FATAL_ERROR "VEXARO_LAZ=ON but LASzip is neither installed nor obtainable: ${_vexaro_laz_reason}")
  else()
    message(STATUS "LAZ support: off (${_vexaro_laz_reason}); .laz files are refused. Configure with network "
      "access to PyPI or an installed LASzip to enable it")
  endif()
else()
  message(STATUS "LAZ support: off (VEXARO_LAZ=OFF)")
endif()
