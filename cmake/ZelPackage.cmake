# Debian packages by `cpack`: `zel` is the tool with the library that it needs, `libzel-algo-dev` what one needs to
# build with the library. Whatever names no component when it is installed is part of `zel`.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "zel_algo developers")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME zel)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "The command-line tool zel, which reads mzML and mzXML files, and the library
libzel_algo, which does the work."
)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON) # and with it the trigger that tells the loader of a new library
# A plugin that Qt loads by name, which no linker sees: feature files are SQLite databases.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS libqt6sql6-sqlite)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libzel-algo-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "Headers of the library libzel_algo for C++20 programs: find_package(zel_algo)
in CMake gives zel::algo."
)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "zel (= ${PROJECT_VERSION}), qt6-base-dev (>= 6.4), libeigen3-dev (>= 3.4)")

include(CPack)
