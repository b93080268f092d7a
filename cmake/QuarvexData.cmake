# Placing shipped data files in the default home folder (the folder of the executables), so that
# a fresh build finds its default Raman library and X-ray reference files at once.
function(quarvex_place_data target glob destination)
    file(GLOB sources CONFIGURE_DEPENDS ${glob})
    set(outputs ${sources})
    list(TRANSFORM outputs REPLACE ".*/" "${destination}/")
    add_custom_command(OUTPUT ${outputs}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${destination}
        COMMAND ${CMAKE_COMMAND} -E copy_if_different ${sources} ${destination}
        DEPENDS ${sources}
        COMMENT "Placing ${target} in ${destination}"
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS ${outputs})
endfunction()
