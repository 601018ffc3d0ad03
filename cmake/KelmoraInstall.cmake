# What `cmake --install build` puts where, and the Debian package that `cpack` makes of it.
include(GNUInstallDirs)

# The program is all that is installed: neither "install" nor cpack has to build the tests first.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

install(TARGETS kelmora RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES completions/kelmora.bash RENAME kelmora
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES Libs/xmlutil/unicode/data/LICENSE.txt RENAME LICENSE.unicode
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/language.md docs/recipes.md docs/robustness.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  PATTERN args* EXCLUDE)

# What goes elsewhere, or by another name, below /usr: zsh has a folder of its own for packages, and
# Debian wants both licences in one file, the changelogs and the man page compressed. "gzip -n" keeps
# the time out of what it makes.
install(CODE "
  set(sources \"${PROJECT_SOURCE_DIR}\")
  set(data \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}\")
  set(doc \"\${data}/doc/kelmora\")
  set(man \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1\")
  set(root \"\$ENV{DESTDIR}\")
  file(INSTALL \"\${sources}/docs/kelmora.1\" DESTINATION \"\${man}\")
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    file(INSTALL \"\${sources}/completions/_kelmora\" DESTINATION \"\${data}/zsh/vendor-completions\")
    file(INSTALL \"\${sources}/LICENSE\" RENAME copyright DESTINATION \"\${doc}\")
    file(READ \"\${sources}/Libs/xmlutil/unicode/data/LICENSE.txt\" unicode_licence)
    file(APPEND \"\${root}\${doc}/copyright\" \"\\n\${unicode_licence}\")
    file(INSTALL \"\${sources}/CHANGELOG.md\" RENAME changelog DESTINATION \"\${doc}\")
    file(INSTALL \"\${sources}/cmake/changelog.Debian\" DESTINATION \"\${doc}\")
    execute_process(COMMAND gzip -9nf
      \"\${root}\${doc}/changelog\" \"\${root}\${doc}/changelog.Debian\" \"\${root}\${man}/kelmora.1\"
      COMMAND_ERROR_IS_FATAL ANY)
  else()
    file(INSTALL \"\${sources}/completions/_kelmora\" DESTINATION \"\${data}/zsh/site-functions\")
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
set(CPACK_PACKAGE_CONTACT "The Kelmora developers <developers@kelmora.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "XSLT 1.0 processor for the command line")
set(CPACK_PACKAGE_DESCRIPTION
"Transforms one XML document with one stylesheet into XML, HTML or text, in
one of 38 encodings. It brings its own XML parser, XPath engine and code
pages, and is made for build scripts and batch work: no configuration, the
same bytes for the same input.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)  # of cmake/changelog.Debian
set(CPACK_DEBIAN_PACKAGE_SECTION text)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= ${libc_version})")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "libcurl4 | libcurl4t64 | libcurl3-gnutls, libicu72 | libicu76 | libicu74 | libicu70")
include(CPack)
