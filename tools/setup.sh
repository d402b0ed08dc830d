# shellcheck shell=bash
# What ./run, ./test and .ci/run share: installing missing packages, configuring, building. Sourced, not run.
# Everything here speaks on standard error; standard output belongs to the caller.

KR_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

kr_say() { printf '%s\n' "$*" >&2; }

# kr_packages SECTION: the package names of one section of packages.txt.
kr_packages() {
  local line section=
  while IFS= read -r line || [[ -n $line ]]; do
    line=${line%%#*}
    line=${line//[[:space:]]/}
    case $line in
      '') ;;
      \[*\]) section=${line//[][]/} ;;
      *) [[ $section != "$1" ]] || printf '%s\n' "$line" ;;
    esac
  done < "$KR_ROOT/packages.txt"
}

# kr_ask QUESTION: true when the person at the terminal agrees. Standard input may be data, so the terminal itself is asked.
kr_ask() {
  local answer
  printf '%s [Y/n] ' "$1" > /dev/tty
  IFS= read -r answer < /dev/tty || return 1
  [[ -z $answer || $answer == [Yy]* ]]
}

# kr_install SECTION: sees to it that the section's packages are there. A stamp made from the list's own hash says that
# they were found before; removing build/ forgets it.
kr_install() {
  local section=$1 stamp hash
  stamp=$KR_ROOT/build/packages-$section.stamp
  hash=$(sha256sum < "$KR_ROOT/packages.txt")
  if [[ -f $stamp && $(< "$stamp") == "$hash" ]]; then
    return
  fi
  if ! command -v dpkg-query > /dev/null; then
    kr_say "This is not a Debian system: see packages.txt for what must be installed. Trying with what is there."
    return
  fi

  local -a wanted missing=()
  local package installed
  mapfile -t wanted <<< "$(kr_packages "$section")"
  # dpkg-query fails when it does not know one of them, and still prints the others.
  installed=$(dpkg-query -W -f='${db:Status-Status} ${binary:Package}\n' "${wanted[@]}" 2> /dev/null || true)
  for package in "${wanted[@]}"; do
    grep -Eq "^installed ${package//+/\\+}(:|\$)" <<< "$installed" || missing+=("$package")
  done

  if ((${#missing[@]} > 0)); then
    local -a as_root=()
    if ((EUID != 0)); then
      if [[ ${CI:-} == true ]]; then
        as_root=(sudo -n)
      elif { : > /dev/tty; } 2> /dev/null; then
        kr_say "These packages are missing: ${missing[*]}"
        if ! kr_ask "Install them with apt-get (as root, through sudo)?"; then
          kr_say "Nothing was installed. To do it yourself: sudo apt-get install ${missing[*]}"
          exit 2
        fi
        as_root=(sudo)
      else
        kr_say "These packages are missing: ${missing[*]}"
        kr_say "Install them with: sudo apt-get install ${missing[*]}"
        exit 2
      fi
    fi
    kr_say "Installing ${missing[*]}"
    local -a apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y)
    if ! { "${apt[@]}" update && "${apt[@]}" install --no-install-recommends "${missing[@]}"; } < /dev/null >&2; then
      kr_say "The packages could not be installed."
      exit 2
    fi
  fi
  mkdir -p "$KR_ROOT/build"
  printf '%s\n' "$hash" > "$stamp"
}

# kr_build PRESET [TARGET...]: configures build/PRESET if that was never done, and builds. Two calls at once take turns.
# The first build shows its progress; a later one says nothing but what the compiler has to say.
kr_build() {
  local preset=$1 folder=$KR_ROOT/build/$1 lock
  local first=false
  shift
  mkdir -p "$folder"
  exec {lock}> "$folder/.lock"
  ! command -v flock > /dev/null || flock "$lock"
  if [[ ! -f $folder/build.ninja ]]; then
    kr_say "Configuring build/$preset"
    if ! (cd "$KR_ROOT" && cmake --preset "$preset" > "$folder/configure.log" 2>&1); then
      cat "$folder/configure.log" >&2
      # A package may have been removed since the stamp was made.
      rm -f "$KR_ROOT"/build/packages-*.stamp "$folder/build.ninja"
      kr_say "The build could not be configured."
      exit 2
    fi
    kr_say "Building; the first time takes some minutes"
    first=true
  fi
  if $first; then
    ninja -C "$folder" "$@" >&2
  else
    ninja -C "$folder" --quiet "$@" | { grep -vxF 'ninja: no work to do.' || true; } >&2
  fi || {
    kr_say "The build failed."
    exit 2
  }
  exec {lock}>&-
}
