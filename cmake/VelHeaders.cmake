# vel_check_headers(FOLDER TARGET)
#
# Checks that every header of a folder compiles alone. A source includes its own
# header first (check-layers checks this), so compiling the source checks the
# header of that name. This function makes a source for every other header and
# compiles it with the options of the target, but without warnings: these appear
# where the headers are used.
function(vel_check_headers folder target)
    file(GLOB headers RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS
         ${CMAKE_SOURCE_DIR}/${folder}/*.h)
    if(NOT VEL_TESTS OR NOT TARGET ${target})
        return()
    endif()
    set(sources)
    foreach(header ${headers})
        string(REGEX REPLACE "\\.h$" ".cpp" own_source ${header})
        if(NOT EXISTS ${CMAKE_SOURCE_DIR}/${own_source})
            set(source ${CMAKE_BINARY_DIR}/headers/${header}.cpp)
            file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n")
            list(APPEND sources ${source})
        endif()
    endforeach()
    if(NOT sources)
        return()
    endif()
    string(MAKE_C_IDENTIFIER "headers_${folder}" name)
    add_library(${name} OBJECT ${sources})
    target_compile_options(${name} PRIVATE $<TARGET_PROPERTY:${target},COMPILE_OPTIONS> -w -O0 -g0)
    target_include_directories(${name} PRIVATE
        $<TARGET_PROPERTY:${target},INCLUDE_DIRECTORIES>)
    target_compile_definitions(${name} PRIVATE
        $<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>)
endfunction()
