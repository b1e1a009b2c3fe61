# Installing the game as Linux games are installed: the executable on the path, the
# read-only data under share/games/brindlex-quorval (beside bin, where the platform layer
# looks for it), a desktop entry, AppStream metainfo, hicolor icons and a manual page; and a
# Debian package of the same through CPack.
set(QUORVAL_VERSION 0.1.0)
set(QUORVAL_RELEASE_DATE 2026-11-23)
set(QUORVAL_APP_ID org.brindlex.quorval)

# The icons' PNG data is deflated with zlib, which FreeType already brings along.
find_package(ZLIB REQUIRED)
target_link_libraries(assetgen PRIVATE ZLIB::ZLIB)
set(ICON_DIR ${CMAKE_BINARY_DIR}/icons)
add_custom_command(OUTPUT ${ICON_DIR}/.icons-stamp
  COMMAND assetgen --icons ${ICON_DIR}
  COMMAND ${CMAKE_COMMAND} -E touch ${ICON_DIR}/.icons-stamp
  DEPENDS assetgen
  COMMENT "Drawing the desktop icons into ${ICON_DIR}")
add_custom_target(icons ALL DEPENDS ${ICON_DIR}/.icons-stamp)

set(DIST_DIR ${CMAKE_BINARY_DIR}/dist)
configure_file(dist/${QUORVAL_APP_ID}.metainfo.xml.in ${DIST_DIR}/${QUORVAL_APP_ID}.metainfo.xml @ONLY)
add_custom_command(OUTPUT ${DIST_DIR}/quorval.6.gz
  COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/dist/quorval.6 > ${DIST_DIR}/quorval.6.gz
  DEPENDS dist/quorval.6
  COMMENT "Compressing the manual page")
add_custom_target(manpage ALL DEPENDS ${DIST_DIR}/quorval.6.gz)

# What an install needs built; `make install` and `make package` build only this.
add_custom_target(installable DEPENDS quorval assets icons manpage)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY TRUE)

set(QUORVAL_DATA share/games/brindlex-quorval)
install(TARGETS quorval RUNTIME DESTINATION bin)
# The generated data only: a game run from the build folder may have left the player's
# files beside it (the hi-scores, a half-written side file), and those stay there.
install(DIRECTORY ${GAME_DIR}/Gfx ${GAME_DIR}/Textures ${GAME_DIR}/Objects ${GAME_DIR}/Tracks ${GAME_DIR}/Data
                  ${GAME_DIR}/Sm
  DESTINATION ${QUORVAL_DATA}
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
  DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE
  PATTERN "Hiscores.Dat" EXCLUDE
  PATTERN "*.new" EXCLUDE)
install(FILES dist/${QUORVAL_APP_ID}.desktop DESTINATION share/applications)
install(FILES ${DIST_DIR}/${QUORVAL_APP_ID}.metainfo.xml DESTINATION share/metainfo)
install(FILES ${DIST_DIR}/quorval.6.gz DESTINATION share/man/man6)
install(DIRECTORY ${ICON_DIR}/hicolor DESTINATION share/icons)

# The package: its library dependencies are worked out by dpkg-shlibdeps from what the
# executable links. GL itself is opened at run time through epoxy, out of the linker's
# sight, so it alone is named here.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME brindlex-quorval)
set(CPACK_PACKAGE_VERSION ${QUORVAL_VERSION})
set(CPACK_PACKAGE_VENDOR "Brindlex Quorval developers")
set(CPACK_PACKAGE_CONTACT "Brindlex Quorval developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "full-screen 3D hover-ship racing game")
set(CPACK_PACKAGE_DESCRIPTION
  "Fly a thrust-driven hover ship round a closed circuit for three laps, alone or against four computer ships, and chase the top speed, best lap and best race of the hi-score table.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES TRUE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libgl1, libegl1")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)

if(NOT QUORVAL_FUZZ)
  add_test(NAME Install.DesktopEntryValidates
    COMMAND desktop-file-validate ${CMAKE_SOURCE_DIR}/dist/${QUORVAL_APP_ID}.desktop)
  add_test(NAME Install.MetainfoValidates
    COMMAND appstreamcli validate --no-net ${DIST_DIR}/${QUORVAL_APP_ID}.metainfo.xml)
  # The installed-game test installs this build into a scratch root itself.
  target_compile_definitions(tests_install PRIVATE
    QUORVAL_BUILD_DIR="${CMAKE_BINARY_DIR}" QUORVAL_CMAKE="${CMAKE_COMMAND}")
  add_dependencies(tests_install installable)
endif()
