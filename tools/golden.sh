#!/usr/bin/env bash
# Rewrites the golden files of the tests and the examples of docs/REPORT.md from the current output of the programs.
# Read "git diff" before you commit them.
#
#   tools/golden.sh [PRESET [CTEST-REGEX]]    default: debug, all tests
set -euo pipefail
cd "$(dirname "$0")/.."
PLATTERSCOPE_UPDATE_GOLDEN=1 ctest --preset "${1:-debug}" --parallel 2 --tests-regex "${2:-.}" || true
git status --short -- 'tests/*/golden' docs/REPORT.md
