# vel_check_headers(FOLDER TARGET)
#
# Checks that every header of a folder compiles alone. A source includes its own
# header first (check-layers holds it to that), so a header with a source of its
# name is checked where that is compiled. Each of the others is compiled here in
# a source of its own, with what the target is compiled with. Warnings come
# where headers are used.
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
