# What the two libraries have in common, and how a folder enters its files.

function(vrk_configure_library target)
    add_library(vrk::${target} ALIAS ${target})
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:vrk_options> $<BUILD_INTERFACE:vrk_warnings>)
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
        INSTALL_RPATH "$ORIGIN" DEFINE_SYMBOL ""
        VERIFY_INTERFACE_HEADER_SETS ON)
endfunction()

# vrk_files(<target> HEADERS ... SOURCES ... [PRIVATE_HEADERS ...])
# HEADERS are installed under include/vrk with their path from src/.
function(vrk_files target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;SOURCES;PRIVATE_HEADERS")
    if(arg_HEADERS)
        target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${arg_HEADERS})
    endif()
    target_sources(${target} PRIVATE ${arg_SOURCES} ${arg_PRIVATE_HEADERS})
endfunction()
