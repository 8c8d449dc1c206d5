cmake_minimum_required(VERSION 3.25)
# Fails when a file of a layer includes a header of a layer above it. Run as
#   cmake -DSOURCE_DIR=<src> -P CheckLayers.cmake
# The layers, bottom up, and the folders of src/ that each may include from.
set(allowed_core "core")
set(allowed_rest "core;rest")
set(allowed_tickets "core;rest;tickets")
set(allowed_report "core;rest;tickets;report")
set(allowed_state "core;rest;tickets;report;state")
# Windows and dialogs (src/gui, src/*/gui) may include every layer but the app.
set(allowed_gui "core;rest;tickets;report;state;gui")
set(allowed_app "core;rest;tickets;report;state;gui;app")

set(violations "")
file(GLOB_RECURSE files RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/*.cpp ${SOURCE_DIR}/*.h)
foreach(file IN LISTS files)
  string(REGEX MATCH "^[^/]+" folder "${file}")
  if(file MATCHES "^[^/]+/gui/")
    set(folder gui)
  endif()
  if(NOT DEFINED allowed_${folder})
    continue() # the demo service stands apart
  endif()
  file(STRINGS ${SOURCE_DIR}/${file} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^\"]+/[^\"]+\"")
  foreach(line IN LISTS includes)
    string(REGEX REPLACE ".*\"([^/\"]+)/.*" "\\1" target "${line}")
    if(NOT target IN_LIST allowed_${folder} AND target MATCHES "^(core|rest|tickets|report|state|gui|app)$")
      string(APPEND violations "  src/${file}: ${line} (the ${folder} layer may include from ${allowed_${folder}})\n")
    endif()
  endforeach()
endforeach()
if(violations)
  message(FATAL_ERROR "An include runs back up a layer:\n${violations}")
endif()
