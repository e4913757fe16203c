# Sourced by the scripts in the root: where they build, and the packages that they need.
. "$root/scripts/packages.sh"

# own FOLDER: makes a build folder, or ends the script where the tree cannot be written.
own() {
  mkdir -p "$1" 2>/dev/null && [ -w "$1" ] && return
  say "Nothing can be written to $1: build in a copy of the tree that is yours."
  exit 1
}

# configure FOLDER OPTION...: the scripts' own build folders. One that was moved here from another
# place, or made by another generator, is made anew.
configure() {
  local folder=$1 cache=$1/CMakeCache.txt fresh=()
  shift
  if [ -e "$cache" ] && ! { grep -qxF "CMAKE_CACHEFILE_DIR:INTERNAL=$folder" "$cache" &&
    grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$cache" &&
    grep -qxF 'CMAKE_GENERATOR:INTERNAL=Ninja' "$cache"; }; then
    fresh=(--fresh)
  fi
  cmake "${fresh[@]}" -S "$root" -B "$folder" -G Ninja "$@"
}
