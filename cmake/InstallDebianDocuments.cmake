# SPDX-License-Identifier: MIT
# Runs while the Debian package is put together: the documents in the form that Debian asks for. The same sources
# and the same SOURCE_DATE_EPOCH give the same bytes.

set(docs "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/doc/vocafade")
set(man "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/man/man1")
set(lintian "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/lintian/overrides")
file(MAKE_DIRECTORY "${docs}" "${man}" "${lintian}")

# Without name and time inside, at the level that Debian's policy names.
function(vocafade_compress from to)
  execute_process(COMMAND gzip -9nc "${from}" OUTPUT_FILE "${to}" COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD "${to}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

vocafade_compress("${VOCAFADE_SOURCE_DIR}/docs/vocafade.1" "${man}/vocafade.1.gz")
vocafade_compress("${VOCAFADE_SOURCE_DIR}/CHANGELOG.md" "${docs}/changelog.gz")
configure_file("${VOCAFADE_SOURCE_DIR}/cmake/debian-copyright" "${docs}/copyright" COPYONLY
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
configure_file("${VOCAFADE_SOURCE_DIR}/cmake/debian-lintian-overrides" "${lintian}/vocafade" COPYONLY
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# The changelog must be that of the version in the package.
file(STRINGS "${VOCAFADE_SOURCE_DIR}/CHANGELOG.md" headings REGEX "^## ")
list(GET headings 0 newest)
string(FIND "${newest}" "${VOCAFADE_VERSION}" at)
if(at EQUAL -1)
  message(FATAL_ERROR "CHANGELOG.md begins with \"${newest}\", but this is version ${VOCAFADE_VERSION}")
endif()

# And for its man page.
file(STRINGS "${VOCAFADE_SOURCE_DIR}/docs/vocafade.1" title REGEX "^[.]TH ")
string(FIND "${title}" "\"Vocafade ${VOCAFADE_VERSION}\"" at)
if(at EQUAL -1)
  message(FATAL_ERROR "docs/vocafade.1 is titled ${title}, but this is version ${VOCAFADE_VERSION}")
endif()

# The release notes are in changelog.gz; this one is about the package itself. The date is that of SOURCE_DATE_EPOCH
# when it is set.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelog "${docs}/changelog.Debian")
file(WRITE "${changelog}" "vocafade (${VOCAFADE_PACKAGE_VERSION}) unstable; urgency=medium

  * Package version ${VOCAFADE_VERSION}; its release notes are in changelog.gz.

 -- ${VOCAFADE_MAINTAINER}  ${date}
")
vocafade_compress("${changelog}" "${changelog}.gz")
file(REMOVE "${changelog}")
