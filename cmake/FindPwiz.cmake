# Finds ProteoWizard's libpwiz and gives the imported target Pwiz::pwiz. Its headers need those of Boost and a
# few of its own Boost additions, which lie beside them.
find_package(Boost 1.66 QUIET)
find_path(Pwiz_INCLUDE_DIR pwiz/data/msdata/MSData.hpp PATH_SUFFIXES proteowizard libpwiz)
find_library(Pwiz_LIBRARY pwiz)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Pwiz REQUIRED_VARS Pwiz_LIBRARY Pwiz_INCLUDE_DIR Boost_FOUND)
mark_as_advanced(Pwiz_INCLUDE_DIR Pwiz_LIBRARY)

if(Pwiz_FOUND AND NOT TARGET Pwiz::pwiz)
    add_library(Pwiz::pwiz UNKNOWN IMPORTED)
    set_target_properties(
        Pwiz::pwiz
        PROPERTIES IMPORTED_LOCATION "${Pwiz_LIBRARY}"
                   INTERFACE_INCLUDE_DIRECTORIES
                   "${Pwiz_INCLUDE_DIR};${Pwiz_INCLUDE_DIR}/libraries/boost_aux"
                   INTERFACE_LINK_LIBRARIES Boost::headers
    )
endif()
