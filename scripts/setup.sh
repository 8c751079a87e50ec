# Sourced by the other scripts: puts what is missing on a Debian 12 machine and builds a preset.
#   setup_packages KIND...      installs the packages of these kinds from packages.txt that are not there yet
#   setup_configure PRESET [OPTION...]   options of cmake's
#   setup_build PRESET [TARGET...]       configures when that has not been done
# They say what they do on standard error and are quick when there is nothing to do.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '\033[1m%s\033[0m\n' "$*" >&2; }

setup_packages() {
  local kinds wanted missing=() package
  kinds=$(IFS='|'; echo "$*")
  wanted=$(sed -nE "s/^($kinds)[[:space:]]+([^[:space:]#]+).*/\2/p" "$root/scripts/packages.txt")
  if ! command -v dpkg-query >/dev/null; then
    say "This is not Debian: install the counterparts of scripts/packages.txt by hand."
    return
  fi
  local have
  have=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' 2>/dev/null | sed -n 's/ installed$//p')
  for package in $wanted; do
    grep -qxF "$package" <<<"$have" || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  say "Installing ${#missing[@]} packages: ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { say "Run this as root once, or install sudo, so that packages can be installed."; return 1; }
    as_root=(sudo)
  fi
  "${as_root[@]}" apt-get update -q >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends "${missing[@]}" >&2
}

setup_configure() {
  say "Configuring build/$1"
  (cd "$root" && cmake --preset "$@" >&2)
}

setup_build() {
  local preset=$1
  shift
  [ -f "$root/build/$preset/build.ninja" ] || setup_configure "$preset"
  say "Building build/$preset"
  cmake --build "$root/build/$preset" ${1:+--target "$@"} >&2
}
