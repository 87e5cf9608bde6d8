# SPDX-License-Identifier: MIT
# Writes files into a C++ source as arrays of bytes, so that the library has a copy of them:
#
#   cmake -DOUTPUT=embedded.cpp "-DBITMAPS=3001.png;3001@2x.png" -DSTRINGS=strings.txt -P EmbedFiles.cmake
#
# The bitmaps are numbered by their names, and how many times as large they are stands behind the @. The source
# defines what plugin/embedded.h declares.

function(append_bytes name path)
  file(READ "${path}" hex HEX)
  string(REGEX REPLACE "(................................)" "\\1\n" hex "${hex}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  set(source "${source}constexpr unsigned char ${name}[] = {\n${bytes}};\n" PARENT_SCOPE)
endfunction()

set(source "// Made by cmake/EmbedFiles.cmake.\n#include \"plugin/embedded.h\"\n\nnamespace vocafade {\nnamespace {\n\n")
set(entries "")
foreach(bitmap IN LISTS BITMAPS)
  get_filename_component(name "${bitmap}" NAME_WE)
  string(REGEX REPLACE "@.*" "" number "${name}")
  set(times 1)
  if(name MATCHES "@([0-9])x$")
    set(times ${CMAKE_MATCH_1})
  endif()
  append_bytes("kBitmap${number}x${times}" "${bitmap}")
  string(APPEND entries "        {${number}, ${times}, std::as_bytes(std::span(kBitmap${number}x${times}))},\n")
endforeach()
append_bytes("kStrings" "${STRINGS}")
string(APPEND source "
} // namespace

std::span<const EmbeddedFile> EmbeddedBitmaps() {
    static const EmbeddedFile files[] = {
${entries}    };
    return files;
}

std::string_view EmbeddedStrings() {
    return {reinterpret_cast<const char*>(kStrings), sizeof kStrings};
}

} // namespace vocafade
")
file(WRITE "${OUTPUT}" "${source}")
