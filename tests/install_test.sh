#!/bin/bash
# Installs the library, moves the installation, and builds a C99 host against it in the two ways that
# hosts have: pkg-config and find_package. Then the host goes its whole road.
#   install_test.sh BUILD SOURCE [LIBRARY LFMETA]
set -euo pipefail
build=$1 source=$2
flags="-std=c99 -Wall -Wextra -Wpedantic -Werror"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/installed" >/dev/null
mv "$work/installed" "$work/moved"
libraries=$(dirname "$(find "$work/moved" -name pkgconfig)")
export LD_LIBRARY_PATH=$libraries

options=$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs LumenforgeMetaLib)
eval "cc $flags \"\$source/examples/host.c\" $options -o \"\$work/by-pkg-config\""  # blanks are escaped

mkdir "$work/consumer"
cat >"$work/consumer/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(consumer C)
find_package(LumenforgeMetaLib 1.0 REQUIRED)
add_executable(by-cmake "$source/examples/host.c")
target_link_libraries(by-cmake LumenforgeMetaLib::LumenforgeMetaLib)
CMAKE
cmake -G Ninja -S "$work/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$work/moved" \
  -DCMAKE_C_FLAGS="$flags" >/dev/null
cmake --build "$work/consumer" >/dev/null

if [ "${4:-}" ]; then  # an optimized build, which finds its library
  python3 -B "$source/tests/built_files_test.py" "$source" \
    "$3" "$4" "$libraries"/libLumenforgeMetaLib.so.?.* "$work/moved/bin/lfmeta"
  env -u LD_LIBRARY_PATH "$work/moved/bin/lfmeta" --version
fi

for host in "$work/by-pkg-config" "$work/consumer/by-cmake"; do
  "$host" "$source/examples/photo.jpg" "$work/out.tif"
  exiftool -s3 -Model -Keywords -ProfileFileSize "$work/out.tif" 2>/dev/null | head -n 2 >"$work/told"
  printf 'Alpenglow M2\nlake\n' | cmp - "$work/told"
done
"$work/moved/bin/lfmeta" read "$work/out.tif"
