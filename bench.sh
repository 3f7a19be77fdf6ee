#!/usr/bin/env bash
# Measures the library beside its peers and prints the table of ratios (bench/README.md).
#   ./bench.sh             every work
#   ./bench.sh IndexOf     the works whose name matches a regular expression
# All single results are afterwards in build/bench/bench.json. A ratio that isn't reached fails
# nothing.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh

need_compiler
need_packages libbenchmark-dev libfast-float-dev libfmt-dev libgeographiclib-dev \
  libhowardhinnant-date-dev libicu-dev libpugixml-dev libssl-dev libxml2-dev qtbase5-dev
build bench kelp_bench
echo "measuring, for about a minute or two" >&2
# The repetitions of all works run in random order, so that what slows the machine for a moment
# falls on no side alone.
build/bench/bin/kelp_bench --benchmark_filter="${1:-.}" \
  --benchmark_repetitions=9 --benchmark_min_time=0.1 --benchmark_enable_random_interleaving=true \
  --benchmark_out=build/bench/bench.json --benchmark_out_format=json
