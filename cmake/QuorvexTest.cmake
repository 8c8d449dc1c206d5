# quorvex_add_test(<name> SOURCES <files...> [LIBS <targets...>])
# One test executable per subject; every GoogleTest case is registered with CTest.
# The shared test main picks the offscreen platform, and each test that touches
# settings gives itself a temporary XDG_CONFIG_HOME, so tests never need a display
# nor touch a real home folder.
function(quorvex_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quorvex_test_support ${ARG_LIBS})
  target_compile_definitions(${name} PRIVATE QUORVEX_FOLLOWUP_EXE="$<TARGET_FILE:quorvex-followup>")
  add_dependencies(${name} quorvex-followup)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 30 PROPERTIES TIMEOUT 120)
endfunction()
