# What `cmake --install` puts where, and the Debian packages that CPack makes of it: the program
# with its documents, and the libraries for those who build on the box library and the fragment
# model.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS kzspackager COMPONENT program)
install(FILES docs/man/kzspackager.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
install(FILES docs/man/kzspackager_config.xml.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5
    COMPONENT program)
install(FILES completions/kzspackager.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kzspackager
    COMPONENT program)
install(FILES completions/_kzspackager
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT program)
install(FILES README.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)

# The box library and the fragment model, with what they stand on.
set(kz_exported kz_flags kvl kvl_amfmessage kvl_minidom kzs_base kzm kzspkgutil_model qlix_hlx hlx kzs)
# In a folder of their own: the names are short.
set(kz_archives ${CMAKE_INSTALL_LIBDIR}/kzspackager)
install(TARGETS ${kz_exported} EXPORT kzspackager-targets
    ARCHIVE DESTINATION ${kz_archives} COMPONENT development)
if(kz_lto_compile)
    # Only the very compiler that wrote it can read what is meant for the optimiser.
    install(CODE "
        file(GLOB archives \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${kz_archives}/*.a\")
        foreach(archive IN LISTS archives)
            execute_process(COMMAND ${CMAKE_OBJCOPY} --remove-section=.gnu.lto_* \${archive}
                COMMAND_ERROR_IS_FATAL ANY)
        endforeach()"
        COMPONENT development)
endif()
foreach(folder kvl kzs/base kzm kzspkgutil/model qlix_hlx hlx kzs)
    # The inside of the box library stays inside.
    install(DIRECTORY src/${folder}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kzspackager/${folder}
        COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN "impl" EXCLUDE)
endforeach()
install(EXPORT kzspackager-targets NAMESPACE kzspackager::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kzspackager COMPONENT development)
configure_package_config_file(cmake/kzspackager-config.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/kzspackager-config.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kzspackager)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/kzspackager-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kzspackager-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/kzspackager-config-version.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kzspackager COMPONENT development)
configure_file(cmake/kzspackager.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kzspackager.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kzspackager.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kzspackager)
set(CPACK_PACKAGE_VENDOR "The kzspackager authors")
set(CPACK_PACKAGE_CONTACT "The kzspackager authors <maintainers@kzspackager.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Package recordings into fragments for plain HTTP delivery")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME kzspackager)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkzspackager-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libboost-dev, libboost-filesystem-dev, libboost-iostreams-dev, libboost-thread-dev, libboost-date-time-dev, libexpat1-dev, libssl-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "The box library and the fragment model of kzspackager, for programs of one's own.")
include(CPack)
