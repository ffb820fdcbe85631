#!/usr/bin/env bash
# Builds the two Debian packages in an optimized build without tests or
# sanitizers, and checks what a user gets from them: the files each package
# holds (against scripts/package-files.txt), the dependencies each declares,
# and that the programs, manual pages and completion work once extracted.
#   scripts/package-test.sh BUILD_DIR
#   PACKAGE_BUILD_JOBS=1 (default 2): parallel jobs of the build
set -euo pipefail
if [ $# -ne 1 ]; then
  echo "usage: $0 BUILD_DIR" >&2
  exit 2
fi
cd "$(dirname "$0")/.."
source=$PWD
build=$1
mkdir -p "$build"
build=$(cd "$build" && pwd)

failures=0
fail() {
  echo "package test: $*" >&2
  failures=$((failures + 1))
}

echo "== package build in $build"
# Every option that changes what is built is named, so that a reused build
# directory cannot carry sanitizers, tests or fuzz targets into the packages.
cmake -S "$source" -B "$build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DCORVEL_BUILD_SIM=ON \
  -DCORVEL_SANITIZE=OFF -DCORVEL_FUZZ=OFF -DCORVEL_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"${PACKAGE_BUILD_JOBS:-2}" >"$build/package-build.log" 2>&1 ||
  { cat "$build/package-build.log"; exit 1; }
rm -f "$build"/packages/*.deb
(cd "$build" && cpack -G DEB) >"$build/cpack.log" 2>&1 || { cat "$build/cpack.log"; exit 1; }

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
arch=$(dpkg --print-architecture)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# The files and links of each package, one "PACKAGE PATH" line each, with the
# version masked so that a new version needs no new list.
for package in corvelcfg corvelsim; do
  deb="$build/packages/${package}_${version}_${arch}.deb"
  if [ ! -f "$deb" ]; then
    fail "$deb was not made"
    continue
  fi
  dpkg-deb -c "$deb" | awk -v p="$package" '$1 !~ /^d/ { print p, $6 }'
done | sed "s/${version//./\\.}/VERSION/g" | LC_ALL=C sort >"$scratch/files.txt"
if ! diff -u scripts/package-files.txt "$scratch/files.txt"; then
  fail "the packages' files differ from scripts/package-files.txt (- expected, + made)"
fi

# has_depends PACKAGE NAME...: the package's Depends field names each NAME
# (with or without a version).
has_depends() {
  local package=$1 depends name
  shift
  depends=$(dpkg-deb -f "$build/packages/${package}_${version}_${arch}.deb" Depends)
  for name in "$@"; do
    if ! tr ',' '\n' <<<"$depends" | sed 's/^ *//; s/ .*//' | grep -Fxq "$name"; then
      fail "$package does not depend on $name (Depends: $depends)"
    fi
  done
}

for package in corvelcfg corvelsim; do
  deb="$build/packages/${package}_${version}_${arch}.deb"
  [ -f "$deb" ] || continue
  if [ "$(dpkg-deb -f "$deb" Version)" != "$version" ]; then
    fail "$package carries version $(dpkg-deb -f "$deb" Version), the project is $version"
  fi
  dpkg-deb -x "$deb" "$scratch/root"
done
# Linked libraries, as dpkg-shlibdeps found them, and what corvelsim preloads or runs.
has_depends corvelcfg libc6 libstdc++6 libusb-0.1-4 libssl3 libudev1
has_depends corvelsim libc6 libstdc++6 libssl3 libpugixml1v5 libumockdev0 umockdev faketime

root=$scratch/root
echo "== extracted programs, manual pages and completion"
# Without arguments the utility prints its usage text and opens nothing: no
# trace line, since no transport is ever made.
status=0
"$root/usr/bin/corvelcfg" >"$scratch/usage.out" 2>"$scratch/usage.err" || status=$?
if [ "$status" -ne 0 ] || ! grep -q '^  USAGE:$' "$scratch/usage.out" || [ -s "$scratch/usage.err" ]; then
  fail "corvelcfg without arguments: exit status $status, output:"
  cat "$scratch/usage.out" "$scratch/usage.err" >&2
fi
# -h prints the same text (standard error holds the transport's last line).
status=0
"$root/usr/bin/corvelcfg" -h >"$scratch/help.out" 2>/dev/null || status=$?
if [ "$status" -ne 0 ] || ! cmp -s "$scratch/usage.out" "$scratch/help.out"; then
  fail "corvelcfg -h: exit status $status, or not the usage text"
fi

for program in corvelctl corvelsim; do
  printed=$("$root/usr/bin/$program" --version 2>&1) || fail "$program --version failed"
  if [ "$printed" != "$program $version" ]; then
    fail "$program --version printed '$printed', expected '$program $version'"
  fi
done

for page in corvelcfg corvelctl corvelsim; do
  file="$root/usr/share/man/man1/$page.1.gz"
  MANPAGER=cat MANWIDTH=80 man -l "$file" >"$scratch/man.out" 2>"$scratch/man.err" || true
  # The page shows the version of its package in its footer.
  if ! grep -q '^SYNOPSIS' "$scratch/man.out" || ! grep -q "^$page $version " "$scratch/man.out" ||
    [ -s "$scratch/man.err" ]; then
    fail "man -l $file did not show a manual page cleanly:"
    cat "$scratch/man.err" >&2
  fi
done

for program in corvelcfg corvelctl corvelsim; do
  script="$root/usr/share/bash-completion/completions/$program"
  if ! bash --norc -c "source /usr/share/bash-completion/bash_completion; source '$script'; complete -p $program" \
    >/dev/null 2>&1; then
    fail "the completion $script does not load or register $program"
  fi
done

if ((failures > 0)); then
  echo "package test: $failures failure(s)" >&2
  exit 1
fi
echo "package test: corvelcfg (with corvelctl) and corvelsim $version packages passed"
