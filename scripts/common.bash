# What the scripts beside it share. Sourced, never run.

# shellcheck disable=SC2034  # used by the scripts that source this file
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Picked up by CMake when it configures a build directory for the first time.
if [[ -z ${CMAKE_CXX_COMPILER_LAUNCHER:-} ]] && command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

say() { printf '%s\n' "$*"; }

stop() {
  printf 'stopped: %s\n' "$*" >&2
  exit 1
}

# quietly LOG COMMAND...: what the command prints goes to LOG; when it fails, the
# end of the log is shown and the script stops.
quietly() {
  local log=$1
  shift
  mkdir -p "$(dirname "$log")"
  if ! "$@" >"$log" 2>&1 </dev/null; then
    tail -n 40 "$log" >&2
    stop "'${*##"$root"/}' failed; the whole log is $log"
  fi
}

# build PRESET [TARGET...]: configures build/PRESET, again when the presets have
# changed, and brings it up to date.
build() {
  local preset=$1 targets=()
  shift
  if (($#)); then targets=(--target "$@"); fi
  if [[ ! $root/build/$preset/build.ninja -nt $root/CMakePresets.json ]]; then
    quietly "$root/build/$preset-configure.log" cmake -S "$root" --preset "$preset"
  fi
  quietly "$root/build/$preset-build.log" \
    cmake --build "$root/build/$preset" --parallel "$(nproc)" "${targets[@]}"
}

# The one package that the viewer's tests need, as the lock file names it.
install_browser_driver() {
  local viewer=$root/Tests/Viewer
  if [[ $viewer/node_modules/.package-lock.json -nt $viewer/package-lock.json ]]; then return; fi
  (cd "$viewer" && quietly "$root/build/npm.log" npm ci --ignore-scripts --no-audit --no-fund)
  touch "$viewer/node_modules/.package-lock.json"
}
