# Compiles translations/*.ts, which tools/translations.sh updates from the code, to .qm files in share/ of the build
# tree. The programs in the build tree load them there, and Install.cmake, which must be included first, installs
# them.

find_package(Qt6 6.4 REQUIRED COMPONENTS LinguistTools)

file(GLOB translations CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/translations/*.ts)
set_source_files_properties(${translations} PROPERTIES OUTPUT_LOCATION ${PROJECT_BINARY_DIR}/${translations_dir})
qt_add_lrelease(platterscope TS_FILES ${translations} QM_FILES_OUTPUT_VARIABLE translated)
add_dependencies(installed platterscope_lrelease)
