#!/usr/bin/env bash
# Runs what finds faults by persistence, for as long as it is given, and adds up the figures
# (docs/reliability.md):
#   ./stress.sh 4h       also 90m or 300s; what the last one has begun is ended, 15 minutes at most
# Side by side run the fuzzers in turn, and the fault programs (tests/faults: killed writers, full
# disks, broken helpers and servers) in turn with the tests of threads under the thread sanitizer.
# Inputs that fuzzers find are kept in build/stress/corpus and tried first the next time; those of
# fuzz/corpus are where they begin. Figures of all runs are in build/stress/figures, findings with
# their output beside it. Gives 1 where this run has findings. The full disks need root.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh

slice=600 # seconds that a fuzzer has at most before the next one
faults=(settings xml http helper)
races=(singleton_test measure_test threads_test thread_pool_test plugin_test helper_test service_test
  service_control_test http_test wininet_test winspool_test)

seconds_of() {
  [[ $1 =~ ^([0-9]+)([smh])$ ]] || die "how long is a number and s, m or h: 4h"
  case ${BASH_REMATCH[2]} in
    s) echo "${BASH_REMATCH[1]}" ;;
    m) echo $((BASH_REMATCH[1] * 60)) ;;
    h) echo $((BASH_REMATCH[1] * 3600)) ;;
  esac
}

# record KIND NAME COUNT SECONDS FINDINGS: a line of figures, which stays if the run is cut off.
record() {
  (IFS=$'\t' && echo "$*") | tee -a "$out/run" >>"$out/figures"
}

now() { date +%s; }

# fuzz NAME SECONDS
fuzz() {
  local name=$1 log=$out/$1.log begin options inputs findings=0
  begin=$(now)
  mapfile -t options <build/asan/fuzz/"$name".options
  mkdir -p "$out/corpus/$name"
  build/asan/bin/"$name" "${options[@]}" -max_total_time="$2" -print_final_stats=1 \
    -artifact_prefix="$out/$name-" "$out/corpus/$name" fuzz/corpus/"$name" >"$log" 2>&1 || findings=1
  inputs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  [ $findings = 0 ] || mv "$log" "$log.finding.$begin"
  record fuzzer "$name" "${inputs:-0}" $(($(now) - begin)) $findings
}

# All fuzzers, until the time is over.
fuzz_all() {
  local names name share
  mapfile -t names < <(cd build/asan/fuzz && printf '%s\n' *.options | sed 's/\.options$//')
  share=$(((end - $(now)) / ${#names[@]}))
  share=$((share > slice ? slice : share > 5 ? share : 5))
  while [ "$(now)" -lt "$end" ]; do
    for name in "${names[@]}"; do
      [ "$(now)" -ge "$end" ] || fuzz "$name" "$share"
    done
  done
}

# fault NAME: its rows that came out as they should, and those that didn't.
fault() {
  local log=$out/$1_faults.log begin status=0 lost
  begin=$(now)
  build/release/bin/"$1"_faults >"$log" 2>&1 || status=$?
  lost=$(grep -c ' LOST ' "$log" || true)
  [ "$status" = 0 ] || [ "$lost" -gt 0 ] || lost=1
  record faults "$1" "$(grep -c ' ok ' "$log" || true)" $(($(now) - begin)) "$lost"
  [ "$lost" = 0 ] || mv "$log" "$log.finding.$begin"
}

race() {
  local log=$out/$1.log begin findings=0
  begin=$(now)
  # However busy the machine is.
  ctest --preset tsan -R "^$1\$" --timeout 3600 >"$log" 2>&1 || findings=1
  record races "$1" 1 $(($(now) - begin)) $findings
  [ $findings = 0 ] || mv "$log" "$log.finding.$begin"
}

faults_and_races() {
  local name
  while [ "$(now)" -lt "$end" ]; do
    for name in "${races[@]}"; do [ "$(now)" -ge "$end" ] || race "$name"; done
    for name in "${faults[@]}"; do [ "$(now)" -ge "$end" ] || fault "$name"; done
  done
}

table() {
  awk -F '\t' '
    { key = $1 "\t" $2; count[key] += $3; seconds[key] += $4; findings[key] += $5 }
    END {
      for (key in count) {
        split(key, part, "\t")
        printf "%-8s %-22s %14d %9d s %9d\n", part[1], part[2], count[key], seconds[key],
               findings[key] | "sort"
      }
    }' "$1"
}

[ $# = 1 ] || die "for how long? ./stress.sh 4h"
length=$(seconds_of "$1")
out=$root/build/stress
mkdir -p "$out"
: >"$out/run"

need_compiler
need_packages clang cups-daemon libclang-rt-14-dev nginx-light openssl tinyproxy-bin xvfb
need_german_locale
build asan fuzzers
build tsan "${races[@]}"
build release "${faults[@]/%/_faults}"

end=$(($(now) + length))
fuzz_all &
faults_and_races
wait
echo "what     name                          tried       time  findings"
table "$out/figures"
! awk -F '\t' '$5 > 0 { found = 1 } END { exit !found }' "$out/run"
