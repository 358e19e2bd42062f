# What `cmake --install` puts where, and the Debian package of it.
include(GNUInstallDirs)
set(VELK_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
  "Folder of zsh completions, relative to the prefix")
set(bash_completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

foreach(program velk velk-check velk-run velk-report)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES doc/man/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES completions/velk.bash DESTINATION ${bash_completions} RENAME ${program})
  endif()
endforeach()
install(FILES doc/man/velk.formats.5 doc/man/velk.lib.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
install(FILES completions/_velk DESTINATION ${VELK_ZSH_COMPLETIONS})

# The documents keep their places to each other, so that their links hold.
install(FILES CHANGES.md CITATION.cff LICENSE README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES doc/formats.md doc/kept.md doc/labbook.md doc/library.md doc/performance.md doc/trust.md
  doc/velk.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/doc)
if(TARGET velk-check)
  install(FILES doc/check.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/doc)
endif()
if(TARGET velk-run)
  install(FILES doc/accuracy.md doc/cluster.md doc/places.md doc/report.md doc/run.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/doc)
endif()
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

# The Debian package, made by `cpack` (scripts/package).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velk)
set(CPACK_PACKAGE_VENDOR "the velk developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "find the sequencing reads that belong in assembly gaps")
set(CPACK_PACKAGE_DESCRIPTION
"velk cuts the scaffolds of a genome assembly into contigs at the gaps and
looks every sequencing read up in them. It reports the reads that run over
the end of a contig, and those that by the insert size of their library must
lie in a gap: each with the number of its gap and its position there.
.
velk-run takes assembly and reads in any usual form, pairs, mate pairs or
single short reads, measures what it has to know of them, and writes what it
finds as BAM, as FASTQ by gap and as tables, which assemblers, genome browsers
and programs that fill gaps can work from.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packaging/deb/stage.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The velk developers <velk@velk.example>")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(VELK_WITH_ISAL)
  # Its own list of symbols asks for less.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "libisal2 (>= ${oldest_isal})")
endif()
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS OFF)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
