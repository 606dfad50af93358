# vel_check_headers(FOLDER TARGET)
#
# Compiles every header of a folder alone, each in a source of its own and with
# what the target is compiled with: a header that leans on what others happen
# to include before it fails the build. Warnings come where headers are used.
function(vel_check_headers folder target)
    file(GLOB headers RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS
         ${CMAKE_SOURCE_DIR}/${folder}/*.h)
    if(NOT VEL_TESTS OR NOT TARGET ${target} OR NOT headers)
        return()
    endif()
    set(sources)
    foreach(header ${headers})
        set(source ${CMAKE_BINARY_DIR}/headers/${header}.cpp)
        file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n")
        list(APPEND sources ${source})
    endforeach()
    string(MAKE_C_IDENTIFIER "headers_${folder}" name)
    add_library(${name} OBJECT ${sources})
    target_compile_options(${name} PRIVATE $<TARGET_PROPERTY:${target},COMPILE_OPTIONS> -w -O0 -g0)
    target_include_directories(${name} PRIVATE
        $<TARGET_PROPERTY:${target},INCLUDE_DIRECTORIES>)
    target_compile_definitions(${name} PRIVATE
        $<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>)
endfunction()
