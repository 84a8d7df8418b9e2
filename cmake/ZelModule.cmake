# The rows of layers.txt, the table of who may include whom; scripts/check-arrows.sh checks the includes against it.
set(ZEL_LAYERS_FILE "${CMAKE_CURRENT_LIST_DIR}/layers.txt")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${ZEL_LAYERS_FILE}")
file(STRINGS "${ZEL_LAYERS_FILE}" ZEL_LAYERS REGEX "^[^#]")
list(TRANSFORM ZEL_LAYERS REPLACE "[ \t].*$" "")

# zel_check_layers(<target>) refuses a target with a source that belongs to no row of the table.
function(zel_check_layers target)
    get_target_property(sources ${target} SOURCES)
    foreach(source IN LISTS sources)
        cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)
        cmake_path(IS_PREFIX PROJECT_BINARY_DIR "${source}" is_generated)
        set(known ${is_generated})
        foreach(layer IN LISTS ZEL_LAYERS)
            string(FIND "${source}" "${PROJECT_SOURCE_DIR}/${layer}" position)
            if(position EQUAL 0)
                set(known TRUE)
                break()
            endif()
        endforeach()
        if(NOT known)
            message(FATAL_ERROR "${source} belongs to no row of cmake/layers.txt")
        endif()
    endforeach()
endfunction()

# zel_add_module(<name> SOURCES ... HEADERS ... [PRIVATE_HEADERS ...] [PUBLIC ...] [PRIVATE ...] [AUTOMOC])
#
# Declares an object library (an interface library when there are no SOURCES) that becomes a part of zel_algo. HEADERS
# are installed, PRIVATE_HEADERS (`X_p.h`) are not. PUBLIC and PRIVATE name the libraries that the module uses in its headers and in its sources.
function(zel_add_module name)
    cmake_parse_arguments(ARG "AUTOMOC" "" "SOURCES;HEADERS;PRIVATE_HEADERS;PUBLIC;PRIVATE" ${ARGN})
    if(ARG_SOURCES)
        add_library(${name} OBJECT ${ARG_SOURCES} ${ARG_HEADERS} ${ARG_PRIVATE_HEADERS})
        zel_check_layers(${name})
        set_target_properties(
            ${name}
            PROPERTIES CXX_VISIBILITY_PRESET hidden
                       VISIBILITY_INLINES_HIDDEN ON
                       POSITION_INDEPENDENT_CODE ON
                       AUTOMOC ${ARG_AUTOMOC}
        )
        target_link_libraries(
            ${name} PUBLIC zel_headers Qt6::Core ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} zel_build_options
        )
    else() # headers only
        add_library(${name} INTERFACE ${ARG_HEADERS})
        target_link_libraries(${name} INTERFACE zel_headers Qt6::Core ${ARG_PUBLIC})
    endif()
    list(TRANSFORM ARG_HEADERS PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    set_property(GLOBAL APPEND PROPERTY ZEL_MODULES ${name})
    set_property(GLOBAL APPEND PROPERTY ZEL_MODULE_HEADERS ${ARG_HEADERS})
    set_property(GLOBAL APPEND PROPERTY ZEL_MODULE_LIBRARIES ${ARG_PUBLIC} ${ARG_PRIVATE})
endfunction()
