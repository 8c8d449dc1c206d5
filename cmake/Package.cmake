# The Debian package (bash scripts/package.sh): quorvex-followup_<version>_<arch>.deb,
# installed under /usr whatever prefix the build was configured with, its
# dependencies computed from the program's shared libraries.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvex-followup)
set(CPACK_PACKAGE_VENDOR Vellmor)
set(CPACK_PACKAGE_CONTACT "Vellmor service desk tools <tools@vellmor.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Follow-up of the open tickets of a Quorvex ITSM service")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
  "Tells a service desk lead which tickets need attention (unassigned,\n"
  "without update, ten automatic exchanges), shows them in a grid and mails\n"
  "one HTML report to the people concerned. A systemd user timer runs it\n"
  "unattended on weekday mornings.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded as plugins, so the libraries do not show them: the SVG image format (the
# icons) and the SQLite driver of Qt SQL (the delivery journal).
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, libqt6sql6-sqlite")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# A desktop's secret service keeps the secrets entered in the dialogs.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS gnome-keyring)
include(CPack)
