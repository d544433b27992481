# The Debian package: `cpack -G DEB` in a build folder (scripts/package does
# it from the release preset). The package holds what `cmake --install` puts
# under /usr; its library dependencies are computed by dpkg-shlibdeps from
# the binaries.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME scrivel)
set(CPACK_PACKAGE_VENDOR "The Scrivel developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "rewrite text with a language model from a floating panel")
# The extended description, one line of the package's control file each.
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
    "Scrivel rewrites a piece of text with a large language model. It sits in"
    "the system tray; a global shortcut opens a small panel next to the"
    "pointer, and the rewritten text lands on the clipboard."
    ""
    "Presets name an OpenAI-compatible service or a local server such as"
    "Ollama, a model and the instructions; API keys are kept in the desktop's"
    "keyring (Secret Service). scrivel-cli runs the same presets from a"
    "terminal.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# Release builds carry debug information; the package does not.
set(CPACK_STRIP_FILES ON)

set(SCRIVEL_PACKAGE_MAINTAINER "The Scrivel developers <maintainers@scrivel.invalid>"
    CACHE STRING "Maintainer field of the Debian package (Name <address>)")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${SCRIVEL_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Keys go to the desktop's Secret Service where one runs; a private key file
# stands in otherwise.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS gnome-keyring)
# Native windows and the clipboard on Wayland sessions (without it Qt falls
# back to XWayland), and Qt's own words in other languages: the key names
# of shortcuts ("Strg+Alt+Return") and its standard dialogs.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland, qt6-translations-l10n")
# scrivel_<version>_<arch>.deb
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

include(CPack)
