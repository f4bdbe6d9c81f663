#!/usr/bin/env bash
# Makes what the picture tests draw now their baselines. Look at each changed picture before you commit it.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset check >/dev/null
cmake --build --preset check
export VRK_RENEW_BASELINES=1 LIBGL_ALWAYS_SOFTWARE=1
xvfb-run -a ctest --test-dir build/check -L render
git status --short tests/baselines
