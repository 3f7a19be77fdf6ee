#!/usr/bin/env bash
# Builds and runs the faults of the elevated helper; prints their figures, and fails if anything came
# out otherwise than it should.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset release
cmake --build --preset release --target helper_faults
build/release/bin/helper_faults
