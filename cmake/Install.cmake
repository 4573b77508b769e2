# What "cmake --install" puts where; and the documents in the build tree, where the programs that are built there
# look for them: the notices beside the executable, the manual below share/ of the folder above it.

include(GNUInstallDirs)
set(documents_dir share/doc/platterscope)  # the program knows it by this name, whatever the data folder is called

install(TARGETS platterscope tessera_local RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES docs/THIRD_PARTY_NOTICES.txt docs/CONFIGURATION_LIBRARY.md DESTINATION ${documents_dir})

configure_file(docs/THIRD_PARTY_NOTICES.txt ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/THIRD_PARTY_NOTICES.txt COPYONLY)
configure_file(docs/CONFIGURATION_LIBRARY.md ${PROJECT_BINARY_DIR}/${documents_dir}/CONFIGURATION_LIBRARY.md COPYONLY)
