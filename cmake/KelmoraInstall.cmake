# What `cmake --install build` puts where, and the Debian package that `cpack` makes of it.
include(GNUInstallDirs)

install(TARGETS kelmora RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES docs/kelmora.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES completions/kelmora.bash RENAME kelmora
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/language.md docs/recipes.md docs/robustness.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  PATTERN args* EXCLUDE)

# zsh looks below /usr/local and below /usr in folders of different names, and Debian wants a
# package's licence under a name of its own.
install(CODE "
  set(data \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}\")
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    file(INSTALL \"${PROJECT_SOURCE_DIR}/LICENSE\" RENAME copyright
      DESTINATION \"\${data}/doc/kelmora\")
    file(INSTALL \"${PROJECT_SOURCE_DIR}/completions/_kelmora\"
      DESTINATION \"\${data}/zsh/vendor-completions\")
  else()
    file(INSTALL \"${PROJECT_SOURCE_DIR}/completions/_kelmora\"
      DESTINATION \"\${data}/zsh/site-functions\")
  endif()")

# The names of architecture and C library in a package are those of the machine that makes it.
if(CMAKE_CROSSCOMPILING)
  return()
endif()

# The executable is linked to the C library alone. What it loads at run time where it is there
# stands in "Recommends".
execute_process(COMMAND getconf GNU_LIBC_VERSION
  OUTPUT_VARIABLE libc_version OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
string(REPLACE "glibc " "" libc_version "${libc_version}")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kelmora)
set(CPACK_PACKAGE_CONTACT "The Kelmora developers <kelmora@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "XSLT 1.0 processor for the command line")
set(CPACK_PACKAGE_DESCRIPTION
"Transforms one XML document with one stylesheet into XML, HTML or text, in
one of 38 encodings. It brings its own XML parser, XPath engine and code
pages, and is made for build scripts and batch work: no configuration, the
same bytes for the same input.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION text)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= ${libc_version})")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "libcurl4 | libcurl4t64 | libcurl3-gnutls, libicu72 | libicu76 | libicu74 | libicu70")
include(CPack)
