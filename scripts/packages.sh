# Sourced by scripts/build.sh: installs the Debian packages that are missing.

say() { printf '%s\n' "$*" >&2; }

# What the library and the tool are built with and from.
building=(g++ cmake ninja-build pkg-config libcli11-dev nlohmann-json3-dev libpng-dev libjpeg-dev
  libtiff-dev libopenexr-dev libexpat1-dev)
# The benchmarks, with what they are measured beside.
measuring=(libbenchmark-dev libtiff-dev libexif-dev libexiv2-dev libexpat1-dev libpugixml-dev exiv2
  libimage-exiftool-perl python3)
# What the fuzz targets need besides, and the tests.
fuzzing=(clang libclang-rt-14-dev imagemagick)
testing=(libgtest-dev libgmock-dev python3 libimage-exiftool-perl libtiff-tools imagemagick locales
  libc-bin binutils ccache mandoc zsh doxygen jq parallel sqlite3)

# What the Debian packages are built and checked with.
packaging=(debhelper dpkg-dev lintian doxygen)

# need PACKAGE...: returns when all are there; ends the script with a message when one cannot be had.
need() {
  local missing=() package as_root=() log
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail_install "${missing[*]}" "run as root, or install sudo"
    as_root=(sudo)
  fi
  say "Installing: ${missing[*]}"
  log=$(mktemp)
  if ! { "${as_root[@]}" apt-get update -qq && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}"; } </dev/null >"$log" 2>&1; then
    if grep -qE 'Temporary failure resolving|Could not (resolve|connect)|Unable to connect' "$log"; then
      rm -f "$log"
      fail_install "${missing[*]}" "the package servers cannot be reached: is there a network?"
    fi
    tail -n 5 "$log" >&2
    rm -f "$log"
    fail_install "${missing[*]}" "see the messages above"
  fi
  rm -f "$log"
}

fail_install() {
  say "These Debian packages are needed and cannot be installed here: $1 ($2)."
  exit 1
}
