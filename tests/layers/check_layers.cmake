# Fails when a file includes across the layers: SDL, GL, epoxy or ImGui's backends outside
# the platform layer (Dear ImGui itself only in the setup dialog), a game header inside the
# platform layer, or a module including one above it or beside it. The maths sit below the
# graphics (the mesh object draws, so it lives with them); the menu particles live in the
# front end, below the screens that draw them too.
#   cmake -DROOT=<repository> -P check_layers.cmake
set(rank_platform 0)
set(rank_core 1)
set(rank_mathmesh 2)
set(rank_gfx 3)
set(rank_track 4)
set(rank_vehicle 5)
set(rank_audio_input 6)
set(rank_race 7)
set(rank_frontend 7)
set(rank_screens 8)
set(rank_app 9)

set(faults "")
file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/src/*.h ${ROOT}/src/*.cpp ${ROOT}/bench/*.cpp
     ${ROOT}/fuzz/*.cpp ${ROOT}/tests/*.h ${ROOT}/tests/*.cpp ${ROOT}/tools/*.h ${ROOT}/tools/*.cpp)
foreach(f ${files})
  string(REGEX MATCH "^src/([a-z_]+)/" _ ${f})
  set(module ${CMAKE_MATCH_1})
  if(module AND NOT DEFINED rank_${module})
    list(APPEND faults "${f}: src/${module} has no place in the layer order")
  endif()
  file(STRINGS ${ROOT}/${f} includes REGEX "^[ \t]*#[ \t]*include")
  foreach(line ${includes})
    string(REGEX MATCH "#[ \t]*include[ \t]*[<\"]([^>\"]+)[>\"]" _ "${line}")
    set(inc ${CMAKE_MATCH_1})
    # The window system and GL belong to the platform layer (and its own tests).
    if(inc MATCHES "^(SDL|SDL2/|epoxy/|GL/|GLES|EGL/|imgui_impl)" AND NOT module STREQUAL "platform"
       AND NOT f MATCHES "^tests/platform/")
      list(APPEND faults "${f}: ${inc} crosses the platform seam")
    endif()
    if(inc MATCHES "^imgui" AND NOT module STREQUAL "platform" AND NOT f MATCHES "^src/frontend/frmSetup")
      list(APPEND faults "${f}: ${inc} outside the setup dialog")
    endif()
    string(REGEX MATCH "^([a-z_]+)/" _ "${inc}")
    set(target ${CMAKE_MATCH_1})
    if(DEFINED rank_${module} AND DEFINED rank_${target} AND NOT target STREQUAL module)
      if(module STREQUAL "platform")
        list(APPEND faults "${f}: the platform layer includes the game header ${inc}")
      elseif(NOT rank_${target} LESS rank_${module})
        list(APPEND faults "${f}: ${module} includes ${inc} from a layer not below it")
      endif()
    endif()
  endforeach()
endforeach()

list(LENGTH faults count)
if(count GREATER 0)
  string(REPLACE ";" "\n  " text "${faults}")
  message(FATAL_ERROR "Layer faults (${count}):\n  ${text}")
endif()
list(LENGTH files checked)
message(STATUS "Layers hold across ${checked} files")
