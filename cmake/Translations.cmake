# The translations: translations/*.ts, which tools/translations.sh keeps in step with the texts of the code, become
# .qm files in share/ of the build tree, where the programs that are built there look for them and whence Install.cmake,
# which comes first, takes them.

find_package(Qt6 6.4 REQUIRED COMPONENTS LinguistTools)

file(GLOB translations CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/translations/*.ts)
set_source_files_properties(${translations} PROPERTIES OUTPUT_LOCATION ${PROJECT_BINARY_DIR}/${translations_dir})
qt_add_lrelease(platterscope TS_FILES ${translations} QM_FILES_OUTPUT_VARIABLE translated)
add_dependencies(installed platterscope_lrelease)
