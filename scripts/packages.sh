# Sourced by demo.sh, test.sh and check.sh: sees to it that what the build needs is there.
# On Debian, as root or with sudo, missing packages are installed; elsewhere the script says exactly
# what is missing and stops.

# What the program is linked with.
libraries=(libncurses-dev zlib1g-dev libutf8proc-dev libmd-dev)

# What the modules for MPI and PVM are built with; without it they are left out.
transports=(openmpi-bin libopenmpi-dev pvm pvm-dev)

need_packages() {
  local package missing=()
  if command -v dpkg-query >/dev/null 2>&1 && command -v apt-get >/dev/null 2>&1; then
    for package in "$@"; do
      dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
      if command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
        as_root=(sudo)
      else
        echo "These Debian packages are missing: ${missing[*]}" >&2
        echo "Install them with: sudo apt-get install ${missing[*]}" >&2
        exit 1
      fi
    fi
    echo "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get -qq update &&
      "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -y --no-install-recommends install "${missing[@]}" >/dev/null || {
      echo "Could not install: ${missing[*]}" >&2
      exit 1
    }
    return 0
  fi
  # Not a Debian machine: look for the tools themselves, and leave the libraries to the configuration.
  local tool
  for tool in c++ cmake ninja python3; do
    command -v "$tool" >/dev/null 2>&1 || missing+=("$tool")
  done
  if [ ${#missing[@]} -ne 0 ]; then
    echo "These tools are missing: ${missing[*]}" >&2
    echo "ZEB also needs the development files of ncurses, zlib, utf8proc, libmd, GoogleTest and Google Benchmark." >&2
    exit 1
  fi
}

# The same for what is useful, but not needed: the caller goes on without it.
want_packages() {
  (need_packages "$@") || true
}
