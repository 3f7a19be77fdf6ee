#!/usr/bin/env bash
# Builds and runs the faults of settings files; prints their figures, and fails if anything was lost.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset release
cmake --build --preset release --target settings_faults
build/release/bin/settings_faults
