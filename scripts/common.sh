# Sourced by the scripts beside it: Debian packages, configuring, building. Bash.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What a machine with nothing but git needs for each task (Debian 12).
packages_build=(g++ cmake ninja-build pkg-config nlohmann-json3-dev libcli11-dev libsystemd-dev libgtest-dev libexpat1-dev zlib1g-dev)
packages_bench=("${packages_build[@]}" libbenchmark-dev)
packages_clang=("${packages_build[@]}" clang libclang-rt-dev llvm)
packages_format=(git clang-format)
packages_tidy=("${packages_clang[@]}" clang-tidy)

# Exit code of whatever kept a script from doing its job at all.
readonly cannot=70

# packages_for PRESET: what building it needs, in the array `packages`.
packages_for() {
  case $1 in
    release) packages=("${packages_build[@]}") ;;
    bench) packages=("${packages_bench[@]}") ;;
    *) packages=("${packages_clang[@]}") ;;
  esac
}

say() { echo "$(basename "$0"): $*" >&2; }

die() {
  say "$*"
  exit "$cannot"
}

# need_packages NAME...: installs those that are missing. Without dpkg the machine is taken as it is.
need_packages() {
  command -v dpkg-query >/dev/null || return 0
  local installed missing=() name
  installed=$(dpkg-query --show --showformat='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null || true)
  for name in "$@"; do
    grep -qFx "installed $name" <<<"$installed" || missing+=("$name")
  done
  [ ${#missing[@]} = 0 ] && return 0
  local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -q -o Dpkg::Use-Pty=0) log=$root/build/packages.log
  if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null || die "without root and sudo. As root: apt-get install ${missing[*]}"
    apt=(sudo "${apt[@]}")
  fi
  say "installing ${missing[*]} (once; it takes a minute)"
  mkdir -p "$root/build"
  "${apt[@]}" update >"$log" 2>&1 || say "apt-get update failed; using the old lists"
  if ! "${apt[@]}" install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1; then
    tail -20 "$log" >&2
    die "cannot install ${missing[*]}"
  fi
}

# Runs a command as the programs of a preset need it: ThreadSanitizer cannot map its memory where the kernel
# spreads addresses over more bits than it knows of.
run_for() {
  local preset=$1
  shift
  if [ "$preset" = tsan ] && setarch -R true 2>/dev/null; then
    setarch -R "$@"
  else
    "$@"
  fi
}

# configure PRESET: once; ninja itself sees to it that this is done again when a CMake file changes.
configure() {
  [ -f "$root/build/$1/build.ninja" ] && return 0
  (cd "$root" && cmake --preset "$1") >&2 || die "cmake --preset $1 failed"
}

# build PRESET [TARGET...]: builds what has changed, all output on standard error. Without targets everything.
build() {
  local preset=$1 tree=$root/build/$1
  shift
  configure "$preset"
  if ninja -C "$tree" -n "$@" 2>/dev/null | grep -q '^ninja: no work to do'; then
    return 0
  fi
  say "building in build/$preset"
  run_for "$preset" ninja -C "$tree" "$@" >&2 || die "the build in build/$preset failed"
}
