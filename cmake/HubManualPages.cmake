# Manual pages, which scdoc makes of texts that people read too; without scdoc there are none.
include(GNUInstallDirs)
find_program(SCDOC scdoc)

# hub_manual_page(file.SECTION.scd COMPONENT name): the page, compressed as Debian has them, made and installed.
function(hub_manual_page source)
  cmake_parse_arguments(HUB "" "COMPONENT" "" ${ARGN})
  if(NOT SCDOC)
    return()
  endif()
  get_filename_component(name ${source} NAME)
  string(REGEX REPLACE "\\.scd$" "" page ${name})
  string(REGEX REPLACE ".*\\." "" section ${page})
  set(made ${CMAKE_CURRENT_BINARY_DIR}/${page}.gz)
  # SOURCE_DATE_EPOCH: the page's date is the change of its text, whenever it is built.
  add_custom_command(OUTPUT ${made}
    COMMAND sh -ec "SOURCE_DATE_EPOCH=$(stat -c %Y '${source}') '${SCDOC}' <'${source}' | gzip -9n >'${made}'"
    DEPENDS ${source} WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} VERBATIM)
  add_custom_target(Page-${page} ALL DEPENDS ${made})
  install(FILES ${made} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${HUB_COMPONENT})
endfunction()
