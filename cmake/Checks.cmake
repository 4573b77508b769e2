# Checks that are run by hand. What every change must pass is tools/test.sh.

# clang-tidy over every source of the release build; tools/test.sh looks at the changed ones only.
add_custom_target(tidy-all
  COMMAND ${PROJECT_SOURCE_DIR}/tools/tidy.sh --all
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  USES_TERMINAL VERBATIM)
