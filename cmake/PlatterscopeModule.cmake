# Defines one static library per folder of the program and one test executable per folder of the tests. Both link
# platterscope_options, which has all compiler options of the project.

add_library(platterscope_options INTERFACE)
target_compile_features(platterscope_options INTERFACE cxx_std_20)
target_compile_options(platterscope_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wformat=2
  -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough)
# With optimization, GCC 12 reports text + std::string as an overlapping copy (GCC bug 105329).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(platterscope_options INTERFACE -Wno-restrict)
endif()
target_compile_definitions(platterscope_options INTERFACE
  _FILE_OFFSET_BITS=64
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
  QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_STRICT_ITERATORS
  QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(WIN32)
  target_compile_definitions(platterscope_options INTERFACE NOMINMAX UNICODE WIN32_LEAN_AND_MEAN)
endif()

# Hardens release builds, so that a memory fault ends the program instead of being exploited. Debug builds have the
# sanitizers instead, and Windows has other linker options. tests/structure/check_programs.sh checks the programs.
if(NOT WIN32)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  set(isOptimized $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  target_compile_options(platterscope_options INTERFACE "$<${isOptimized}:-fstack-protector-strong;-fstack-clash-protection>")
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_compile_options(platterscope_options INTERFACE $<${isOptimized}:-fcf-protection>)
  endif()
  # The distribution's compiler may define another level.
  target_compile_options(platterscope_options INTERFACE "$<${isOptimized}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
  target_compile_definitions(platterscope_options INTERFACE $<${isOptimized}:_GLIBCXX_ASSERTIONS>)
  target_link_options(platterscope_options INTERFACE
    "$<${isOptimized}:LINKER:-z,relro;LINKER:-z,now;LINKER:-z,noexecstack>")
endif()

# platterscope_module(name [MOC] SOURCES file... HEADERS file... LINK target...)
# Adds the library platterscope_<name> of the current folder. HEADERS are its public headers, each of which must compile
# alone (target all_verify_interface_header_sets of the release preset).
function(platterscope_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "MOC" "" "SOURCES;HEADERS;LINK")
  set(target platterscope_${name})
  add_library(${target} STATIC ${arg_SOURCES})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${target} PUBLIC ${arg_LINK} PRIVATE platterscope_options)
  target_compile_features(${target} PUBLIC cxx_std_20)  # public: the check of the headers uses these only
  set_target_properties(${target} PROPERTIES AUTOMOC ${arg_MOC})
endfunction()

# platterscope_test(name [QTEST] SOURCES file... LINK target... [ENVIRONMENT VAR=value...] [LABELS label...])
# Adds the executable tests_<name>. Each case of a GoogleTest program is a test of ctest; a Qt Test program (QTEST) is
# one test. Every test runs without a display, in the C.UTF-8 locale and in UTC, with an empty home.
function(platterscope_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "QTEST" "" "SOURCES;LINK;ENVIRONMENT;LABELS")
  set(target tests_${name})
  add_executable(${target} ${arg_SOURCES})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE platterscope_options ${arg_LINK})
  target_compile_options(${target} PRIVATE ${PLATTERSCOPE_TEST_FLAGS})
  set_target_properties(${target} PROPERTIES AUTOMOC ${arg_QTEST}
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
  set(home ${PROJECT_BINARY_DIR}/tests/home/${name})
  file(MAKE_DIRECTORY ${home} ${PROJECT_BINARY_DIR}/tests/runtime)
  file(CHMOD ${PROJECT_BINARY_DIR}/tests/runtime PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  set(environment
    QT_QPA_PLATFORM=offscreen TZ=UTC LC_ALL=C.UTF-8 HOME=${home} XDG_CONFIG_HOME=${home}/.config
    XDG_RUNTIME_DIR=${PROJECT_BINARY_DIR}/tests/runtime ${arg_ENVIRONMENT})
  if(arg_QTEST)
    target_link_libraries(${target} PRIVATE Qt6::Test)
    add_test(NAME ${name} COMMAND ${target})
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "${environment}" LABELS "${arg_LABELS}")
  else()
    target_link_libraries(${target} PRIVATE GTest::gtest GTest::gtest_main)
    gtest_discover_tests(${target} TEST_PREFIX ${name}. TEST_LIST ${target}_cases DISCOVERY_TIMEOUT 60)
    # gtest_discover_tests() splits properties that are lists, so they are set after it has listed the cases.
    set(properties ${CMAKE_CURRENT_BINARY_DIR}/${target}_properties.cmake)
    file(WRITE ${properties} "if(${target}_cases)
  set_tests_properties(\${${target}_cases} PROPERTIES ENVIRONMENT \"${environment}\" LABELS \"${arg_LABELS}\")
endif()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${properties})
  endif()
endfunction()
