# What `cmake --install` puts where, and the Debian package made from it (`cpack -G DEB`).
# The programs find their shipped data as ../share/quarvex from their own folder, so bin/ and
# share/ keep these names under every prefix. The default library and the X-ray reference files
# are installed by quarvex_place_data (cmake/QuarvexData.cmake).
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ
    GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(TARGETS quarvex-cli RUNTIME DESTINATION bin)
if(TARGET quarvex)
    install(TARGETS quarvex RUNTIME DESTINATION bin)
endif()

set(shipped share/quarvex)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${shipped}/docs)
# Left out: what a run of the examples writes beside them (ignored by git as well).
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${shipped}/examples
    PATTERN "*Refine.out" EXCLUDE PATTERN "*_pattern_refine.DAT" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/data/raman/examples/ DESTINATION ${shipped}/examples/raman)

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
install(FILES ${packaging}/quarvex.desktop DESTINATION share/applications)
install(FILES ${packaging}/icons/quarvex.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES ${packaging}/icons/quarvex-256.png DESTINATION share/icons/hicolor/256x256/apps
    RENAME quarvex.png)
install(FILES ${packaging}/quarvex-mime.xml DESTINATION share/mime/packages RENAME quarvex.xml)

# Man pages and the changelog are compressed, as Debian installs them.
set(generated ${PROJECT_BINARY_DIR}/packaging)
configure_file(${packaging}/changelog.in ${generated}/changelog @ONLY)
set(compressed)
foreach(source ${packaging}/man/quarvex.1 ${packaging}/man/quarvex-cli.1 ${generated}/changelog)
    get_filename_component(name ${source} NAME)
    if(name MATCHES "\\.1$")
        configure_file(${source} ${generated}/${name} @ONLY)
    endif()
    add_custom_command(OUTPUT ${generated}/${name}.gz
        COMMAND sh -c "gzip -9n -c '${generated}/${name}' > '${generated}/${name}.gz'"
        DEPENDS ${source}
        COMMENT "Compressing ${name}"
        VERBATIM)
    list(APPEND compressed ${generated}/${name}.gz)
endforeach()
add_custom_target(quarvex_packaging_files ALL DEPENDS ${compressed})
install(FILES ${generated}/quarvex.1.gz ${generated}/quarvex-cli.1.gz DESTINATION share/man/man1)
install(FILES ${generated}/changelog.gz ${packaging}/copyright DESTINATION share/doc/quarvex)
install(FILES ${PROJECT_SOURCE_DIR}/data/raman/README.md DESTINATION share/doc/quarvex
    RENAME raman-data-README.md)
install(FILES ${PROJECT_SOURCE_DIR}/data/xray/reference/README.md DESTINATION share/doc/quarvex
    RENAME xray-reference-README.md)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quarvex)
set(CPACK_PACKAGE_VENDOR "The Quarvex developers")
set(CPACK_PACKAGE_CONTACT "The Quarvex developers <quarvex@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "identify minerals from Raman spectra and X-ray powder patterns")
set(CPACK_PACKAGE_DESCRIPTION
    "Quarvex loads measured spectra, views them stacked and scaled, cleans them
and fits peaks. A Raman spectrum is searched against a compiled library of
reference spectra, which ranks the entries by a match score from 0 to 100;
the peaks of an X-ray powder pattern are indexed from reference diffraction
data and the unit cell is refined by least squares. The package holds the
desktop program quarvex, the command-line tool quarvex-cli, a default Raman
library and X-ray reference files.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The Qt platform plugins are loaded at run time, so shlibdeps cannot see them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
