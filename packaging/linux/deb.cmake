set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvanto)
string(REGEX REPLACE "https?://(www\\.)?" "packages@" address ${HOMEPAGE})
set(CPACK_PACKAGE_CONTACT "Orvanto developers <${address}>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/packages)
# The files are installed with the package's own prefix, since the manual's place follows from it.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${HOMEPAGE})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# It opens web pages, other programs and the manual.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS xdg-utils)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Collect audio files in a list, and choose how folders and file names are made
from their tags: sixteen layouts and seven ways to name files. Orvanto
completes the tags, copies each file into the organised tree, deletes the
originals if you ask for it, and keeps a log. Profiles keep the settings.

It reads and writes mp3, mp4, wav, flac, aif, asf, ogg, mpc, spx and wv files.")

# What Debian wants in a form of its own, or compressed.
file(READ LICENSE licence)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]+)\n\n(.*[^\n])" licence "${licence}")
set(COPYRIGHT "${CMAKE_MATCH_1}")
string(REGEX REPLACE "\n" "\n " LICENSE_TEXT "${CMAKE_MATCH_2}")
string(REPLACE "\n \n" "\n .\n" LICENSE_TEXT "${LICENSE_TEXT}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS LICENSE)
configure_file(packaging/linux/debian-copyright.in ${MADE_FOLDER}/debian/copyright @ONLY)
configure_file(packaging/linux/debian-files.in ${MADE_FOLDER}/debian/files @ONLY)
configure_file(packaging/linux/debian-files.cmake.in ${MADE_FOLDER}/debian/files.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${MADE_FOLDER}/debian/files.cmake)

include(CPack)
