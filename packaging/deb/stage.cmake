# Makes of the installed tree what Debian's policy asks for: compressed manual pages, a copyright
# file in place of the licence, and a changelog. CPack runs it before it packs.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
set(documents ${share}/doc/velk)

configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog ${documents}/changelog COPYONLY)

file(READ ${documents}/LICENSE licence)
file(READ ${CMAKE_CURRENT_LIST_DIR}/copyright copyright)
file(WRITE ${documents}/copyright "${copyright}\n${licence}")
file(REMOVE ${documents}/LICENSE)

file(GLOB pages ${share}/man/man*/*)
execute_process(
  COMMAND gzip -9 -n -f ${pages} ${documents}/changelog
  COMMAND_ERROR_IS_FATAL ANY)
file(GLOB compressed ${share}/man/man*/*.gz ${documents}/*.gz)
file(CHMOD ${compressed} ${documents}/copyright
  PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
