# The Debian packages that cpack makes: one of each component in which something is installed by now.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "Camera Hub")
set(CPACK_PACKAGE_CONTACT "Camera Hub maintainers <maintainers@camera-hub.invalid>")
set(CPACK_SET_DESTDIR ON) # units and settings lie outside of the prefix
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/Client) # the client library, not yet installed
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON) # names and lines for the stacks of crash records

# compress(file target): as Debian has it, the same bytes each time.
function(compress file target)
  add_custom_command(OUTPUT ${target} COMMAND sh -ec "gzip -9n <'${file}' >'${target}'" DEPENDS ${file} VERBATIM)
  add_custom_target(Compressed-${target} ALL DEPENDS ${target})
endfunction()

compress(${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog changelog.Debian.gz)
compress(${CMAKE_SOURCE_DIR}/CHANGELOG.md changelog.gz)

# debian_package(component package SECTION section DESCRIPTION text [ARCHITECTURE all] [OVERRIDES lines]
#   [DEPENDS component...]): its variables, change logs, copyright, and the reasons for what lintian is not to complain of.
macro(debian_package component package)
  cmake_parse_arguments(DEB "" "SECTION;DESCRIPTION;ARCHITECTURE;OVERRIDES" "DEPENDS" ${ARGN})
  get_cmake_property(components COMPONENTS)
  if(${component} IN_LIST components)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} name)
    set(CPACK_DEBIAN_${name}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${name}_PACKAGE_SECTION ${DEB_SECTION})
    set(CPACK_DEBIAN_${name}_DESCRIPTION ${DEB_DESCRIPTION})
    set(CPACK_COMPONENT_${name}_DEPENDS ${DEB_DEPENDS})
    if(DEB_ARCHITECTURE)
      set(CPACK_DEBIAN_${name}_PACKAGE_ARCHITECTURE ${DEB_ARCHITECTURE})
      set(CPACK_DEBIAN_${name}_DEBUGINFO_PACKAGE OFF)
    endif()
    install(FILES debian/copyright
      ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
    set(DEB_PACKAGE ${package})
    configure_file(debian/lintian-overrides.in lintian-overrides/${package} @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/lintian-overrides/${package}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component})
  endif()
endmacro()

# debian_service(component package): the scripts of a package that has a unit and settings of its name. What a package has
# of its own stands in debian/PACKAGE: lines for postinst and postrm, and what is told after the installation.
macro(debian_service component package)
  get_cmake_property(components COMPONENTS)
  if(${component} IN_LIST components)
    set(DEB_PACKAGE ${package})
    string(TOUPPER ${component} name)
    foreach(part configure purge notice)
      string(TOUPPER DEB_${part} variable)
      file(READ ${CMAKE_CURRENT_SOURCE_DIR}/debian/${package}/${part} ${variable})
      string(STRIP "${${variable}}" ${variable})
    endforeach()
    foreach(file postinst prerm postrm conffiles)
      configure_file(debian/${file}.in control/${package}/${file} @ONLY)
      list(APPEND CPACK_DEBIAN_${name}_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/control/${package}/${file})
    endforeach()
  endif()
endmacro()

debian_package(hub camera-hub SECTION video DESCRIPTION "cameras of this computer for other programs
The Camera Hub makes the colour cameras of a computer available to other
programs, on the same machine or across the network. A client lists the
cameras, asks for a still with a given exposure, and fetches it as a PNG
file: JSON-RPC over TCP, and HTTP.
.
This package runs it as a service. Until camera-hub-expose says otherwise,
only this machine reaches it.")
set(CPACK_DEBIAN_HUB_PACKAGE_DEPENDS adduser)
set(CPACK_DEBIAN_HUB_PACKAGE_RECOMMENDS udev)
set(CPACK_DEBIAN_HUB_PACKAGE_SUGGESTS "avahi-daemon, camera-hub-client, camera-hub-web")
debian_service(hub camera-hub)

debian_package(web camera-hub-web SECTION video DEPENDS client-lib DESCRIPTION "cameras of the Camera Hub for browsers and HTTP
The Camera Hub makes the colour cameras of a computer available to other
programs. This is one of them: a page to look through the cameras and to
take stills, and the same for all that speaks HTTP: pictures and streams at
plain addresses, an interface in JSON, values for Prometheus.
.
This package runs it as a service. Until its administrator says otherwise,
only this machine reaches it.")
set(CPACK_DEBIAN_WEB_PACKAGE_RECOMMENDS camera-hub)
debian_service(web camera-hub-web)

debian_package(client-lib libcamera-hub-client2 SECTION libs DESCRIPTION "client library of the Camera Hub
The Camera Hub makes the colour cameras of a computer available to other
programs. With this library a program lists them and takes stills."
OVERRIDES "# CPack writes these calls for every shared library. The trigger, which is there too, does what they do.
libcamera-hub-client2: maintscript-calls-ldconfig *")

set(CPACK_DEBIAN_CLIENT-LIB_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers)

debian_package(client-dev libcamera-hub-client-dev SECTION libdevel DEPENDS client-lib DESCRIPTION
"client library of the Camera Hub, for development
The Camera Hub makes the colour cameras of a computer available to other
programs. With this library a program lists them and takes stills.
.
This package has what it takes to build such a program in C++.")

debian_package(client camera-hub-client SECTION video DEPENDS client-lib DESCRIPTION "command line of the Camera Hub
The Camera Hub makes the colour cameras of a computer available to other
programs. This is one of them: camera-hub lists them, takes stills and
shows them in the terminal.")

debian_package(python python3-camera-hub SECTION python ARCHITECTURE all DESCRIPTION "Python client of the Camera Hub
The Camera Hub makes the colour cameras of a computer available to other
programs. With this module a program lists them and takes stills.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3:any")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-numpy)

include(CPack)
