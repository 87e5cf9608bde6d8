# SPDX-License-Identifier: MIT
# What is installed beside the programs, and the Debian package. See scripts/package.
#
# Two sets of documents: `cmake --install` brings them as plain files; the package brings them in the form that
# Debian asks of packages (compressed without a time stamp, with a changelog of its own).

install(FILES "${PROJECT_SOURCE_DIR}/docs/vocafade.1"
  DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT documents)
install(FILES "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/LICENSE"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documents)

# Both sets. Without its pictures, which show on the project's page only.
file(GLOB VOCAFADE_DOCUMENTS CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md")
install(FILES "${PROJECT_SOURCE_DIR}/README.md" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES ${VOCAFADE_DOCUMENTS} DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")

# For software centres: the program with its icon and picture, and the effects as add-ons of hosts. Distributions take the
# data that stand in share/metainfo, which may name a picture on the web alone. Our package is not of a distribution: it
# brings the catalogue that one would make of them, whose picture lies in the package.
set(VOCAFADE_SCREENSHOT_URL "" CACHE STRING "Where the editor's picture, docs/images/editor-panel.png, lies on the web")
set(app jp.velmorax.vocafade)
# To `file`, with the picture at this address, where there is one.
function(vocafade_metainfo file picture)
  set(VOCAFADE_SCREENSHOTS "")
  if(picture)
    set(VOCAFADE_SCREENSHOTS "
  <screenshots>
    <screenshot type=\"default\">
      <caption>The editor</caption>
      <image>${picture}</image>
    </screenshot>
  </screenshots>")
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/resources/desktop/${app}.metainfo.xml.in" "${file}" @ONLY)
endfunction()
vocafade_metainfo("${PROJECT_BINARY_DIR}/${app}.metainfo.xml" "${VOCAFADE_SCREENSHOT_URL}")
install(FILES "${PROJECT_BINARY_DIR}/${app}.metainfo.xml" "${PROJECT_SOURCE_DIR}/resources/desktop/${app}.plugin.metainfo.xml"
  DESTINATION "share/metainfo")
if(NOT VOCAFADE_SCREENSHOT_URL)
  vocafade_metainfo("${PROJECT_BINARY_DIR}/catalogue.xml" "file:///usr/share/vocafade/editor.png")
  file(READ "${PROJECT_BINARY_DIR}/catalogue.xml" component)
  string(REGEX REPLACE "^.*(<component.*</id>)" "\\1\n  <pkgname>vocafade</pkgname>" component "${component}")
  file(WRITE "${PROJECT_BINARY_DIR}/catalogue.xml" "<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<components version=\"0.16\" origin=\"vocafade\">
${component}</components>
")
  install(FILES "${PROJECT_BINARY_DIR}/catalogue.xml" RENAME "${app}.xml" DESTINATION "share/swcatalog/xml"
    COMPONENT debian EXCLUDE_FROM_ALL)
  install(FILES "${PROJECT_SOURCE_DIR}/docs/images/editor-panel.png" RENAME editor.png DESTINATION "share/vocafade"
    COMPONENT debian EXCLUDE_FROM_ALL)
endif()
install(FILES "${PROJECT_SOURCE_DIR}/resources/desktop/${app}.svg"
  DESTINATION "share/icons/hicolor/scalable/apps")
install(FILES "${PROJECT_SOURCE_DIR}/resources/desktop/${app}.desktop" DESTINATION "share/applications")
install(FILES "${PROJECT_SOURCE_DIR}/lv2/examples/pipewire.conf" DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples")

set(VOCAFADE_MAINTAINER "Vocafade maintainers <maintainers@vocafade.invalid>" CACHE STRING
  "Who answers for the package: Name <address>")
set(VOCAFADE_PACKAGE_REVISION 1)

install(CODE "
  set(VOCAFADE_SOURCE_DIR [[${PROJECT_SOURCE_DIR}]])
  set(VOCAFADE_VERSION [[${PROJECT_VERSION}]])
  set(VOCAFADE_PACKAGE_VERSION [[${PROJECT_VERSION}-${VOCAFADE_PACKAGE_REVISION}]])
  set(VOCAFADE_MAINTAINER [[${VOCAFADE_MAINTAINER}]])
  include([[${PROJECT_SOURCE_DIR}/cmake/InstallDebianDocuments.cmake]])"
  COMPONENT debian EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vocafade)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${VOCAFADE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime debian)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${VOCAFADE_PACKAGE_REVISION}")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Looked for by `vocafade live` when it runs.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libpipewire-0.3-0")
# Hosts that load the plug-in; none of them is needed to render files.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "ardour | qtractor | audacity | lmms | carla, libnotify-bin")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "takes the lead voice out of a stereo song (LV2 and VST 2.4 effect)")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Vocafade takes what stands at a chosen place of the stereo picture, by default
the middle, out of a chosen band of frequencies: for singing along, practising
or making a backing track, while the song plays.

This package holds the plug-in, for digital audio workstations that load LV2
or VST 2.4 effects, and the command vocafade, which does the same to sound
files, plays songs, and makes an output device that takes the voice out of
whatever the desktop plays.")
include(CPack)
