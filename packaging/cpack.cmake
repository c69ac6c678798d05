# The Debian package, made by `cpack -G DEB` from the install rules. Its
# dependencies are worked out from the programs' own libraries by
# dpkg-shlibdeps; only what the programs open themselves is named by hand.
set(CPACK_PACKAGE_NAME copperwick)
set(CPACK_PACKAGE_VENDOR "The Copperwick developers")
set(CPACK_PACKAGE_CONTACT "${COPPERWICK_MAINTAINER}")
set(CPACK_PACKAGE_HOMEPAGE_URL "${COPPERWICK_HOMEPAGE}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "private household budgeting from bank exports")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${COPPERWICK_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# No library names a font: the window and the PDF report are set in DejaVu
# when the desktop has nothing better. The section symbols come from an icon
# theme, Breeze's names first.
# libcurl is opened when the local model or an update is first reached, so
# dpkg-shlibdeps can't see it; 7.85 is the first with the protocol lists the
# clients set.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-dejavu-core, libcurl4 (>= 7.85.0)")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "breeze-icon-theme")
# The long description; cpack puts the summary above it and indents it.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Copperwick reads the exports of your bank (CSV in many bank layouts, OFX,
QFX, QIF, CAMT.053), shows exactly what it found, saves nothing until told
to, makes a backup, then files every transaction: merchant, category, kind,
and whose spending it is.

Reports, budgets, recurring charges, cash wallets, CSV and PDF exports and a
plain-language question box all come from one ledger in one SQLite file that
never leaves the computer. Every import and every filing can be taken back.

This package holds the desktop application, copperwick-app, and the command
line, copperwick.")

include(CPack)
