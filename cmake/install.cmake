# What `cmake --install` puts where.
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
