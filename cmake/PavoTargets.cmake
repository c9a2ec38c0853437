# How every target of the tree is compiled and how every test is registered.

# Another compiler's new warning must not stop a project that embeds this one.
option(PAVO_WERROR "Treat warnings as errors" ${PROJECT_IS_TOP_LEVEL})
set(PAVO_SANITIZE "" CACHE STRING "Sanitizers of every target, as -fsanitize= takes them")

add_library(pavo_build_options INTERFACE)
if(MSVC)
  set(options /W4 /utf-8 $<$<BOOL:${PAVO_WERROR}>:/WX>)
else()
  set(options -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${PAVO_WERROR}>:-Werror>)
endif()
# The compiler of Windows resources has others.
target_compile_options(pavo_build_options INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:${options}>")
target_compile_definitions(pavo_build_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS
  $<$<PLATFORM_ID:Windows>:NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601>)
if(MINGW)
  # The same sources give the same bytes, whenever they are linked.
  add_link_options(-Wl,--no-insert-timestamp)
endif()
if(PAVO_SANITIZE)
  add_compile_options(-fsanitize=${PAVO_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${PAVO_SANITIZE})
  # That check opens a pipe to look at an object, and takes a process out of descriptors, which a
  # test has on purpose, for one with bad objects.
  if(PAVO_SANITIZE MATCHES undefined)
    add_compile_options(-fno-sanitize=vptr)
  endif()
endif()

# pavo_target(NAME): our warnings, our Qt settings, and the tree's root for #include.
function(pavo_target name)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:pavo_build_options>)
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
endfunction()

# pavo_add_test(NAME SOURCES ... LIBS ... [ISOLATED] [LABELS LABEL] [TIMEOUT SECONDS])
#   One GoogleTest executable. ISOLATED registers each of its tests on its own, so that each has a
#   process of its own (singletons, exit behaviour); otherwise the executable is one test.
function(pavo_add_test name)
  cmake_parse_arguments(arg "ISOLATED" "TIMEOUT;LABELS" "SOURCES;LIBS" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 600)
  endif()
  add_executable(${name} ${arg_SOURCES})
  pavo_target(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gtest)
  set(properties TIMEOUT ${arg_TIMEOUT})
  if(arg_LABELS)
    list(APPEND properties LABELS ${arg_LABELS})
  endif()
  if(arg_ISOLATED)
    gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST
      DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
  else()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES ${properties})
  endif()
endfunction()

# pavo_fuzz(NAME SOURCES ... LIBS ...)
#   One libFuzzer target, named as ./pavo fuzz takes it. PAVO_SANITIZE has everything else made ready
#   for it.
function(pavo_fuzz name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  pavo_target(${name})
  target_link_libraries(${name} PRIVATE pavo_fuzz_support ${arg_LIBS})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
