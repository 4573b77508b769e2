# The files that "cmake --install" installs, and the documents that the programs in the build tree open: the notices are
# in the executable's folder, the Configuration Library is in ../share from there.
#
# The program and the local service are separate components, because they become separate packages (Package.cmake).
# The target "installed" builds everything that is installed, but no tests.

include(GNUInstallDirs)
set(application_id example.platterscope.Platterscope)  # the same as in base/identity.h
# The program uses these names relative to the parent of its own folder, so CMAKE_INSTALL_DATADIR does not apply.
set(documents_dir share/doc/platterscope)
set(translations_dir share/platterscope/translations)

add_custom_target(installed ALL)
add_dependencies(installed platterscope tessera_local)

# install_compressed(FILE DESTINATION NAME COMPONENT [OPTION...]): installs FILE as NAME.gz, reproducibly.
function(install_compressed file destination name component)
  set(directory ${PROJECT_BINARY_DIR}/compressed/${component})
  file(MAKE_DIRECTORY ${directory})
  add_custom_command(OUTPUT ${directory}/${name}.gz
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/${file} > ${directory}/${name}.gz
    DEPENDS ${PROJECT_SOURCE_DIR}/${file} VERBATIM)
  add_custom_target(${component}_${name} DEPENDS ${directory}/${name}.gz)
  add_dependencies(installed ${component}_${name})
  install(FILES ${directory}/${name}.gz DESTINATION ${destination} COMPONENT ${component} ${ARGN})
endfunction()

# ---- The program ----

install(TARGETS platterscope RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
install(FILES docs/THIRD_PARTY_NOTICES.txt docs/CONFIGURATION_LIBRARY.md docs/REPORT.md docs/report.schema.json
  DESTINATION ${documents_dir} COMPONENT program)
install_compressed(CHANGELOG.md ${documents_dir} changelog program)
install_compressed(packaging/platterscope.1 ${CMAKE_INSTALL_MANDIR}/man1 platterscope.1 program)

install(FILES packaging/${application_id}.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT program)
install(FILES packaging/${application_id}.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT program)
set(icons_dir ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES resources/icons/platterscope.svg
  DESTINATION ${icons_dir}/scalable/apps RENAME ${application_id}.svg COMPONENT program)
install(FILES resources/icons/platterscope.png
  DESTINATION ${icons_dir}/256x256/apps RENAME ${application_id}.png COMPONENT program)
foreach(size IN ITEMS 16 22 24 32 48 64 128 512)
  install(FILES resources/icons/platterscope-${size}.png
    DESTINATION ${icons_dir}/${size}x${size}/apps RENAME ${application_id}.png COMPONENT program)
endforeach()

# The build puts the translations into the same folder of the build tree.
install(DIRECTORY ${PROJECT_BINARY_DIR}/${translations_dir}/
  DESTINATION ${translations_dir} COMPONENT program FILES_MATCHING PATTERN "*.qm")

# ---- The local service ----

set(service_documents_dir share/doc/platterscope-tessera-local)
install(TARGETS tessera_local RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT service)
install(FILES docs/THIRD_PARTY_NOTICES.txt DESTINATION ${service_documents_dir} COMPONENT service)
install_compressed(CHANGELOG.md ${service_documents_dir} changelog service)
install_compressed(packaging/tessera_local.1 ${CMAKE_INSTALL_MANDIR}/man1 tessera_local.1 service)

# ---- The build tree ----

configure_file(docs/THIRD_PARTY_NOTICES.txt ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/THIRD_PARTY_NOTICES.txt COPYONLY)
configure_file(docs/CONFIGURATION_LIBRARY.md ${PROJECT_BINARY_DIR}/${documents_dir}/CONFIGURATION_LIBRARY.md COPYONLY)

# ---- Packages ----

include(cmake/Package.cmake)
