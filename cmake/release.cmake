# What distinguishes builds to be handed on: hardening, paths of the build machine left out of the
# program, and a static program on demand.

option(VELK_STATIC "Link the programs statically, so that they need no library where they run" OFF)
set(linkage -pie)
if(VELK_STATIC)
  set(ZLIB_USE_STATIC_LIBS ON)
  set(linkage -static-pie)
endif()

# The sanitizers look at what the checks below would catch, and do not go with them.
set(VELK_HARDENED OFF)
if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo)$" AND NOT VELK_SANITIZE)
  set(VELK_HARDENED ON)
  set(fortify 2)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12)
    set(fortify 3)
  endif()
  target_compile_options(velk_options INTERFACE
    -fPIE -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${fortify}
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
  target_link_options(velk_options INTERFACE ${linkage} LINKER:-z,relro LINKER:-z,now)
elseif(VELK_STATIC)
  target_link_options(velk_options INTERFACE -static)
endif()
