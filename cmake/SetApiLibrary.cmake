# setapi_add_library(<target> EXPORT_MACRO <NAME> SOURCES ... )
# Makes one shared library of the family: namespaced alias SetApi::<target>, VERSION and SOVERSION,
# public headers from include/, installed into the SetApi package export set.
function(setapi_add_library target)
  cmake_parse_arguments(ARG "" "EXPORT_MACRO" "SOURCES" ${ARGN})
  add_library(${target} SHARED ${ARG_SOURCES})
  add_library(SetApi::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    EXPORT_NAME ${target}
    OUTPUT_NAME setapi_${target})
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_definitions(${target} PRIVATE ${ARG_EXPORT_MACRO}_BUILDING)
  setapi_warnings(${target})
  install(TARGETS ${target} EXPORT SetApiTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()
