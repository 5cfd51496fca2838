# tarnby_add_test(NAME SOURCES... [UI] [LIBS ...] [TIMEOUT s] [ENV VAR=VALUE ...])
#
# Every test is a Qt Test executable that links the libraries (never the app's
# sources), runs headless on the offscreen platform and finds the sample corpus
# through TARNBY_FIXTURES. UI marks a test that needs the widget library; it
# gets the window tests' helpers (tarnby_ui_test_support) too.
function(tarnby_add_test name)
  cmake_parse_arguments(ARG "UI" "TIMEOUT" "LIBS;ENV" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE Qt6::Test tarnby_test_support ${ARG_LIBS})
  if(ARG_UI)
    target_link_libraries(${name} PRIVATE tarnby_ui_test_support)
  else()
    target_link_libraries(${name} PRIVATE tarnby_core)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  tarnby_test_environment(${name} env)
  # A test's own entries come last and win over the common ones.
  list(APPEND env ${ARG_ENV})
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "${env}" TIMEOUT ${ARG_TIMEOUT})
endfunction()

# tarnby_test_environment(NAME OUT_VAR)
#
# The environment every test runs in: headless, with cache, data and config
# folders of its own below the build folder, so that thumbnails, the trash and
# settings never touch the user's (or root's) real ones, and with the
# sanitizers' options. Tests that are scripts rather than Qt Test programs
# (tests/install) take it too.
function(tarnby_test_environment name out)
  set(home ${CMAKE_BINARY_DIR}/test-home/${name})
  file(MAKE_DIRECTORY ${home}/cache ${home}/data ${home}/config ${home}/runtime)
  # Qt wants a private runtime folder and warns on standard error without one.
  file(CHMOD ${home}/runtime DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  set(${out}
    "QT_QPA_PLATFORM=offscreen"
    "XDG_RUNTIME_DIR=${home}/runtime"
    "XDG_CACHE_HOME=${home}/cache"
    "XDG_DATA_HOME=${home}/data"
    "XDG_CONFIG_HOME=${home}/config"
    "TARNBY_FIXTURES=${TARNBY_FIXTURES}"
    "TARNBY_BINARY_DIR=${CMAKE_BINARY_DIR}"
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
    "UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1"
    "ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1"
    # Qt Test answers a crash by starting a debugger for a stack trace. After
    # an abort inside malloc (a corrupted heap) that never finishes, and the
    # test hangs until its time-out instead of failing at once. The
    # sanitizer build prints its own stack traces.
    "QTEST_DISABLE_STACK_DUMP=1"
    PARENT_SCOPE)
endfunction()
