# The Debian packages, which tools/package.sh makes: platterscope, and platterscope-tessera-local with the local
# service, so that the program's package does not depend on a database and an HTTP server. "cmake --install" does not
# install the files that only Debian needs.

set(package_program platterscope)
set(package_service platterscope-tessera-local)
foreach(component IN ITEMS program service)
  install(FILES packaging/debian/copyright
    DESTINATION share/doc/${package_${component}} COMPONENT ${component}_debian EXCLUDE_FROM_ALL)
  install_compressed(packaging/debian/changelog
    share/doc/${package_${component}} changelog.Debian ${component}_debian EXCLUDE_FROM_ALL)
  install(FILES packaging/debian/${package_${component}}.lintian-overrides
    DESTINATION share/lintian/overrides RENAME ${package_${component}} COMPONENT ${component}_debian EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${package_program})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # the first line of each package's description replaces it
set(CPACK_PACKAGE_CONTACT "Platterscope maintainers <maintainers@platterscope.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://platterscope.example/)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program program_debian service service_debian)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME ${package_program})
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION video)
# The program uses these at run time if they are installed: the certificate authorities for https, the translations of
# the toolkit, the plug-in for Wayland (without it Qt uses X11), and the command that opens documents and addresses.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "ca-certificates, qt6-translations-l10n, qt6-wayland, xdg-utils")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS ${package_service})
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
"technical makeup of DVD-Video and Blu-ray discs
Platterscope opens a Blu-ray or DVD-Video directory or image, reads the
navigation files itself and shows every title with its video, audio and
subtitle streams, chapters, angles, duration, segments and the size of
what plays.
.
It looks the disc up in a Tessera service with the user's own key, shows
what other users have written down about its titles, and can list which
playlists and streams of a Blu-ray a player opens. A disc is never written
to.")

set(CPACK_DEBIAN_SERVICE_PACKAGE_NAME ${package_service})
set(CPACK_DEBIAN_SERVICE_PACKAGE_SECTION web)
set(CPACK_DEBIAN_SERVICE_PACKAGE_ENHANCES ${package_program})
# Qt's SQLite driver is a plug-in, which dpkg-shlibdeps does not find.
set(CPACK_DEBIAN_SERVICE_PACKAGE_DEPENDS libqt6sql6-sqlite)
set(CPACK_COMPONENT_SERVICE_DESCRIPTION
"Tessera service of your own for Platterscope
tessera_local keeps the title packages of discs and what people write
about their titles in a database of its own, and tells those who ask
whether a disc is known. It serves Platterscope over HTTP, on this computer
unless told otherwise, and browsers with the form that describes a disc.")

include(CPack)
foreach(component IN ITEMS program service)
  cpack_add_component_group(${component})
  cpack_add_component(${component} GROUP ${component})
  cpack_add_component(${component}_debian GROUP ${component})
endforeach()
