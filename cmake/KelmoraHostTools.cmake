# Programs of the build itself, which make sources while building. They run on the machine that
# builds: a cross build makes them in <build>/host, with the compiler of this machine.

# The tree below <build>/host is configured once, by the first tool that needs it. What the
# environment says of compilers is meant for the other machine.
function(_kelmora_configure_host directory)
  get_property(known GLOBAL PROPERTY kelmora_host_tools)
  if(known)
    return()
  endif()
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env
      --unset=CC --unset=CXX --unset=CFLAGS --unset=CXXFLAGS --unset=LDFLAGS
      ${CMAKE_COMMAND} -S ${PROJECT_SOURCE_DIR} -B ${directory} -G ${CMAKE_GENERATOR}
      -D CMAKE_MAKE_PROGRAM=${CMAKE_MAKE_PROGRAM} -D CMAKE_BUILD_TYPE=Release -D KELMORA_TESTS=OFF
    RESULT_VARIABLE failure OUTPUT_QUIET)
  if(failure)
    message(FATAL_ERROR "The tools of the build cannot be configured for this machine")
  endif()
endfunction()

# kelmora_host_tool(<name> SOURCES <file>... [DEPS <name>...]): <name> is what a COMMAND or DEPENDS
# of add_custom_command names, in every kind of build. DEPS are libraries of this project.
function(kelmora_host_tool name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  if(NOT CMAKE_CROSSCOMPILING)
    list(TRANSFORM ARG_DEPS PREPEND kelmora_)
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_DEPS} kelmora_flags)
    set_target_properties(${name} PROPERTIES
      RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tools)
    return()
  endif()

  set(host ${CMAKE_BINARY_DIR}/host)
  _kelmora_configure_host(${host})
  set(program ${host}/tools/${name})
  add_custom_target(${name}_on_host
    COMMAND ${CMAKE_COMMAND} --build ${host} --target ${name}
    BYPRODUCTS ${program}
    COMMENT "Building ${name} for this machine"
    VERBATIM)
  # Two builds in one tree at a time would disturb each other.
  get_property(known GLOBAL PROPERTY kelmora_host_tools)
  if(known)
    add_dependencies(${name}_on_host ${known})
  endif()
  set_property(GLOBAL APPEND PROPERTY kelmora_host_tools ${name}_on_host)
  add_executable(${name} IMPORTED GLOBAL)
  set_target_properties(${name} PROPERTIES IMPORTED_LOCATION ${program})
  add_dependencies(${name} ${name}_on_host)
endfunction()
