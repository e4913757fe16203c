#!/bin/bash
# The library as a part of another project, through FetchContent (which adds the folder): an archive alone,
# that shows nothing but the boundary, and a host in C that goes its whole road.
#   subproject_test.sh SOURCE
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(consumer C CXX)
include(FetchContent)
FetchContent_Declare(LumenforgeMetaLib SOURCE_DIR "$source")
FetchContent_MakeAvailable(LumenforgeMetaLib)
add_executable(host "$source/examples/host.c")
target_link_libraries(host LumenforgeMetaLib::LumenforgeMetaLib)
install(TARGETS host)
CMAKE
cmake -G Ninja -S "$work" -B "$work/build" -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/host" "$source/examples/photo.jpg" "$work/out.tif"
cmake --install "$work/build" --prefix "$work/installed" >/dev/null
diff - <(cd "$work/installed" && find . -type f) <<<./bin/host

archive=$(find "$work/build" -name 'libLumenforgeMetaLib.*')
[[ $archive = *.a ]]
diff <(sed -n 's/^    \(\w*\);$/\1/p' "$source/src/LumenforgeMetaLib.map" | LC_ALL=C sort) \
  <(nm -g --defined-only "$archive" | sed -n 's/^[0-9a-f]* [A-Z] //p' | LC_ALL=C sort)
