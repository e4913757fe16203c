#!/usr/bin/env bash
# The built packages, unpacked: what is in them, and that hosts in C and lfmeta work with them alone.
#   check_packages.sh FOLDER SOURCE
set -euo pipefail
folder=$1 source=$2
triplet=$(gcc -print-multiarch)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Each file with its package, but for documents; of the pages for man 3 those with a function's name.
for package in lfmeta liblumenforgemetalib1 liblumenforgemetalib-dev; do
  dpkg-deb -x "$folder/$package"_*.deb "$work/$package"
  (cd "$work/$package/usr" && find . ! -type d ! -path './share/doc/*' | sed "s|^\.|$package|")
  cp -a "$work/$package/." "$work/root"
done | sed "s|$triplet|TRIPLET|" | grep -vE 'man3/(lumenforge_|[A-Z])' | LC_ALL=C sort >"$work/contents"
{
  cat <<'FILES'
lfmeta/bin/lfmeta
lfmeta/share/bash-completion/completions/lfmeta
lfmeta/share/man/man1/lfmeta.1.gz
lfmeta/share/zsh/vendor-completions/_lfmeta
liblumenforgemetalib-dev/include/LumenforgeMetaLib.h
liblumenforgemetalib-dev/lib/TRIPLET/cmake/LumenforgeMetaLib/LumenforgeMetaLibConfig.cmake
liblumenforgemetalib-dev/lib/TRIPLET/cmake/LumenforgeMetaLib/LumenforgeMetaLibConfigVersion.cmake
liblumenforgemetalib-dev/lib/TRIPLET/cmake/LumenforgeMetaLib/LumenforgeMetaLibTargets-none.cmake
liblumenforgemetalib-dev/lib/TRIPLET/cmake/LumenforgeMetaLib/LumenforgeMetaLibTargets.cmake
liblumenforgemetalib-dev/lib/TRIPLET/libLumenforgeMetaLib.a
liblumenforgemetalib-dev/lib/TRIPLET/libLumenforgeMetaLib.so
liblumenforgemetalib-dev/lib/TRIPLET/pkgconfig/LumenforgeMetaLib.pc
liblumenforgemetalib1/lib/TRIPLET/libLumenforgeMetaLib.so.1
liblumenforgemetalib1/lib/TRIPLET/libLumenforgeMetaLib.so.1.0.0
FILES
  sed -n 's|^ \(.*\)@.*|liblumenforgemetalib-dev/share/man/man3/\1.3.gz|p' "$source"/debian/*.symbols
} | LC_ALL=C sort | diff - "$work/contents"

libraries=$work/root/usr/lib/$triplet
python3 -B "$source/tests/built_files_test.py" "$source" \
  "$libraries/libLumenforgeMetaLib.so.1" "$work/root/usr/bin/lfmeta"

# The tests that are run where the packages are installed, on the unpacked ones.
export LD_LIBRARY_PATH=$libraries PKG_CONFIG_PATH=$libraries/pkgconfig PATH=$work/root/usr/bin:$PATH
export CMAKE_PREFIX_PATH=$work/root/usr AUTOPKGTEST_TMP=$work/tests
mkdir "$work/tests"
cd "$source"
debian/tests/host >/dev/null  # says what it did
debian/tests/lfmeta
