# shellcheck shell=bash
# Steps of .ci/run and .ci/night: each prints one line with its time, and its whole output only when it fails. All of
# them run even when one has failed. Sourced, not run.

# shellcheck source=tools/setup.sh
source "$(dirname "${BASH_SOURCE[0]}")/../tools/setup.sh"

cd "$KR_ROOT"
exec < /dev/null
export CI=true
KR_LOGS=$KR_ROOT/build/ci
mkdir -p "$KR_LOGS"
KR_FAILED=()
KR_JOBS=$(nproc)

# step NAME COMMAND...: runs the command, whose output goes to build/ci/NAME.log.
step() {
  local name=$1 start=$SECONDS
  shift
  if (set -e; "$@") > "$KR_LOGS/$name.log" 2>&1; then
    printf '%-12s ok      %4d s\n' "$name" $((SECONDS - start))
  else
    printf '%-12s FAILED  %4d s\n' "$name" $((SECONDS - start))
    sed 's/^/    /' "$KR_LOGS/$name.log"
    KR_FAILED+=("$name")
  fi
}

# finish NAME: the closing lines of the tests that step NAME ran, then the failed steps if any; exits with 1 for those.
finish() {
  sed -n '/% tests passed/,$p' "$KR_LOGS/$1.log"
  if ((${#KR_FAILED[@]} > 0)); then
    printf 'Failed steps: %s\n' "${KR_FAILED[*]}"
    exit 1
  fi
  exit 0
}

# preset NAME [TARGET...]: configures build/NAME afresh and builds it.
preset() {
  local name=$1
  shift
  cmake --preset "$name"
  ninja -C "build/$name" "$@"
}

sources() { git ls-files '*.cpp' '*.h'; }

format() { sources | xargs clang-format --dry-run -Werror; }

# lint FOLDERS: clang-tidy on the sources of the folders, a pattern such as "app|tests". The second compiler's build folder
# is the linter's: it holds the flags and the precompiled headers that it understands.
lint() {
  local -a files
  mapfile -t files < <(sources | grep -E "^($1)/.*\.cpp\$")
  ((${#files[@]} > 0))
  files=("${files[@]/#/^$KR_ROOT/}")
  run-clang-tidy -quiet -p build/asan-ubsan -j "$KR_JOBS" "${files[@]/%/\$}"
}

# Steps are functions called by name, which looks like dead code to the checker (SC2317).
scripts() { shellcheck -x -e SC2317 run test tools/setup.sh tools/clean-root-check .ci/run .ci/night .ci/steps.sh; }

# fuzz_briefly SECONDS: each fuzz program of the sanitized build for so long, from the test data and the examples; other
# inputs for each commit, the same ones for the same commit.
fuzz_briefly() {
  local -a programs
  local program
  mapfile -t programs < <(find build/asan-ubsan/fuzz -maxdepth 1 -type f -perm -u+x | sort)
  ((${#programs[@]} > 0))
  for program in "${programs[@]}"; do
    echo "$program"
    "$program" --runs=1000000000 --seconds="$1" --seed="$(git rev-list --count HEAD)" tests/data examples
  done
}

# fuzz_long SECONDS: each fuzz program, linked with libFuzzer, for its share of that time.
fuzz_long() {
  local -a programs
  local program corpus
  preset fuzz
  mapfile -t programs < <(find build/fuzz/fuzz -maxdepth 1 -type f -perm -u+x | sort)
  ((${#programs[@]} > 0))
  for program in "${programs[@]}"; do
    corpus=build/fuzz/corpus/$(basename "$program")
    mkdir -p "$corpus"
    "$program" -max_total_time=$(($1 / ${#programs[@]} + 1)) -max_len=65536 -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="build/fuzz/" "$corpus" tests/data examples
  done
}
