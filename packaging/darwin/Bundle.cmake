# SPDX-License-Identifier: MIT
# What makes the program an app: how the system knows it, and its icon. For where the program itself is described. The
# bundle is signed for this machine alone, with no certificate: notices and opening at login want one that is signed as
# a whole.
set(VANTLE_EXECUTABLE Vantle)
set(plist ${CMAKE_CURRENT_BINARY_DIR}/Info.plist)
configure_file(${CMAKE_CURRENT_LIST_DIR}/Info.plist.in ${plist} @ONLY)
set_target_properties(vantle_program PROPERTIES OUTPUT_NAME ${VANTLE_EXECUTABLE} MACOSX_BUNDLE ON
                                                MACOSX_BUNDLE_INFO_PLIST ${plist}
                                                RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
set(bundle $<TARGET_BUNDLE_DIR:vantle_program>)

if(NOT CMAKE_CROSSCOMPILING) # it is drawn while the program is built
  add_executable(vantle_make_icon ${CMAKE_CURRENT_LIST_DIR}/MakeIcon.cpp ${CMAKE_CURRENT_LIST_DIR}/Icns.cpp)
  vantle_target(vantle_make_icon)
  target_link_libraries(vantle_make_icon PRIVATE Qt6::Gui Qt6::Svg)
  set(drawing ${PROJECT_SOURCE_DIR}/packaging/com.halvo.vantle.svg)
  set(icon ${CMAKE_CURRENT_BINARY_DIR}/Vantle.icns)
  add_custom_command(OUTPUT ${icon} COMMAND vantle_make_icon ${drawing} ${icon} DEPENDS vantle_make_icon ${drawing} VERBATIM)
  target_sources(vantle_program PRIVATE ${icon})
  set_source_files_properties(${icon} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
  # Otherwise an icon that alone is new gets into the bundle without it being signed again.
  set_property(TARGET vantle_program APPEND PROPERTY LINK_DEPENDS ${icon})
endif()
find_program(CODESIGN codesign)
if(CODESIGN)
  add_custom_command(TARGET vantle_program POST_BUILD COMMAND ${CODESIGN} --force --sign - ${bundle} VERBATIM)
endif()
