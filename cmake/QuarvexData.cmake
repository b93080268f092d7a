# Shipped data files: placed in the default home folder of the build tree (the folder of the
# executables), so that a fresh build finds its default Raman library and X-ray reference files
# at once; placed in build/share/quarvex, laid out as an installation's shipped data, from which
# new home folders are seeded; and installed to share/quarvex.
set(QUARVEX_BUILD_SHIPPED_DIR ${CMAKE_BINARY_DIR}/share/quarvex)

# `folder` is relative to the home folder and to the shipped data folder alike.
function(quarvex_place_data target glob folder)
    file(GLOB sources CONFIGURE_DEPENDS ${glob})
    set(outputs)
    set(commands)
    foreach(destination ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${folder}
            ${QUARVEX_BUILD_SHIPPED_DIR}/${folder})
        set(placed ${sources})
        list(TRANSFORM placed REPLACE ".*/" "${destination}/")
        list(APPEND outputs ${placed})
        list(APPEND commands COMMAND ${CMAKE_COMMAND} -E make_directory ${destination}
            COMMAND ${CMAKE_COMMAND} -E copy_if_different ${sources} ${destination})
    endforeach()
    add_custom_command(OUTPUT ${outputs}
        ${commands}
        DEPENDS ${sources}
        COMMENT "Placing ${target} in ${folder}"
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS ${outputs})
    install(FILES ${sources} DESTINATION share/quarvex/${folder})
endfunction()
