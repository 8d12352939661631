# What Sonvelle brings along for its instruments, beside the command that uses it: synthesized when it is built, so in release
# trees alone. The states are checked in.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Release" OR SONVELLE_SANITIZE OR SONVELLE_BENCH)
  return()
endif()
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(content_folder ${PROJECT_BINARY_DIR}/content)
file(GLOB content_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/content/*.py)
file(GLOB_RECURSE content_states CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/resources/states/*.xml)
add_custom_command(
  OUTPUT ${content_folder}/.made
  COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/tools/make_content.py --command $<TARGET_FILE:sonvelle> ${content_folder}
  COMMAND ${CMAKE_COMMAND} -E touch ${content_folder}/.made
  DEPENDS sonvelle Sonvelle ${PROJECT_SOURCE_DIR}/tools/make_content.py ${content_sources}
  COMMENT "Making the content of the instruments"
  VERBATIM)
add_custom_command(
  OUTPUT ${content_folder}/.states
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${content_folder}/states
  COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/resources/states ${content_folder}/states
  COMMAND ${CMAKE_COMMAND} -E touch ${content_folder}/.states
  DEPENDS ${content_states}
  VERBATIM)
add_custom_target(content ALL DEPENDS ${content_folder}/.made ${content_folder}/.states)
install(DIRECTORY ${content_folder}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/sonvelle PATTERN ".*" EXCLUDE)
# A format that is installed by itself brings what its presets play.
foreach(component LV2 CLAP VST3)
  install(DIRECTORY ${content_folder}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/sonvelle COMPONENT ${component} EXCLUDE_FROM_ALL
    PATTERN ".*" EXCLUDE)
endforeach()
