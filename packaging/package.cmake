# The Debian package: cpack -G DEB in the build folder.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillon)
set(CPACK_PACKAGE_VENDOR "The Quillon authors")
set(CPACK_PACKAGE_CONTACT "The Quillon authors <quillon@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "desktop shell for a TeX distribution")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "A menu bar over a console: one choice typesets a document with the engine of
the TeX distribution, shows what the engine said, opens the result in the
viewer that was chosen, and on an error puts the editor on the offending line.
.
BibTeX, MakeIndex, MetaPost, dvips, ps2pdf and dvipdfm run from the same menus.
Editors, scripts and a terminal drive the same shell with the command quillon
or over D-Bus; without a display it runs headless.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/strip.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION tex)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# The libraries by themselves; what is run, by name. A distribution from elsewhere than Debian is told to Debian as
# texlive-local, by a package that the person makes.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "dbus-daemon, qt6-qpa-plugins, texlive-binaries | texlive-local")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "default-dbus-session-bus | dbus-session-bus, texlive-latex-base, texlive-metapost, ghostscript, zathura | pdf-viewer")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS
    "qt6-wayland, okular | evince | qpdfview, vim | emacs | editor, xterm | x-terminal-emulator")
include(CPack)
