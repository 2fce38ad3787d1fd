# SPDX-License-Identifier: MIT
# The toolkit of this system for a program that is to run on a Mac: its headers, its tools and its rules of building are
# the same there. Its libraries are text files of the names that they have (scripts/check-darwin).
foreach(kind PACKAGE LIBRARY INCLUDE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} BOTH)
endforeach()
foreach(wanted WrapOpenGL WrapVulkanHeaders) # of this system, and of no use there
  add_library(${wanted}::${wanted} INTERFACE IMPORTED)
endforeach()
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR ${VANTLE_TOOLKIT}/cmake)
include(${VANTLE_TOOLKIT}/cmake/Qt6/Qt6Config.cmake)
foreach(name Core Gui Network OpenGL Qml QmlIntegration QmlModels Quick Svg)
  get_target_property(folders Qt6::${name} INTERFACE_INCLUDE_DIRECTORIES)
  list(REMOVE_ITEM folders /usr/include)
  set_target_properties(Qt6::${name} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${folders}")
  get_target_property(configurations Qt6::${name} IMPORTED_CONFIGURATIONS)
  foreach(configuration IN LISTS configurations)
    set_target_properties(Qt6::${name} PROPERTIES IMPORTED_LINK_DEPENDENT_LIBRARIES_${configuration} ""
                          IMPORTED_LOCATION_${configuration} ${VANTLE_MAC_PARTS}/packages/lib/Qt${name}.tbd)
  endforeach()
endforeach()
