#!/usr/bin/env bash
# Builds the two Debian packages from debian/ with dpkg-buildpackage, in a copy
# of the source tree (it writes its packages beside the tree it builds), and
# checks what a user gets from them: the files each package holds (against
# scripts/package-files.txt), the dependencies each declares, the hardening of
# every program (hardening-check), lintian's verdict, and that the programs,
# manual pages and completion work once extracted.
#   scripts/package-test.sh BUILD_DIR      (BUILD_DIR is made afresh)
#   PACKAGE_BUILD_JOBS=1 (default 2): parallel jobs of the build
set -euo pipefail
if [ $# -ne 1 ]; then
  echo "usage: $0 BUILD_DIR" >&2
  exit 2
fi
cd "$(dirname "$0")/.."
source=$PWD
build=$1
rm -rf "$build"
mkdir -p "$build"
build=$(cd "$build" && pwd)

failures=0
fail() {
  echo "package test: $*" >&2
  failures=$((failures + 1))
}

# The changelog signs off the project's version: a native package, so the two are one.
version=$(dpkg-parsechangelog -l debian/changelog -S Version)
project_version=$(sed -n 's/^project(corvelcfg VERSION \([^ )]*\).*/\1/p' CMakeLists.txt)
if [ "$version" != "$project_version" ]; then
  fail "debian/changelog's version $version is not the project's $project_version"
fi

echo "== package build in $build"
# The files of the working tree, changes not yet committed included, without
# the build folders (which .gitignore names).
tree=$build/corvelcfg
mkdir "$tree"
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  git ls-files -z --cached --others --exclude-standard | tar -c --null --ignore-failed-read -T - 2>/dev/null
else
  tar -c --exclude=./build --exclude='./build-*' --exclude=./.git .
fi | tar -x -C "$tree"
# Without the -dbgsym packages: their debug symbols take seconds to compress
# and hold nothing this test checks.
(cd "$tree" && DEB_BUILD_OPTIONS="${DEB_BUILD_OPTIONS:+$DEB_BUILD_OPTIONS }noautodbgsym" \
  dpkg-buildpackage -us -uc -b -J"${PACKAGE_BUILD_JOBS:-2}") >"$build/dpkg-buildpackage.log" 2>&1 ||
  { cat "$build/dpkg-buildpackage.log"; exit 1; }

arch=$(dpkg --print-architecture)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# The files and links of each package, one "PACKAGE PATH" line each, with the
# version masked so that a new version needs no new list.
for package in corvelcfg corvelsim; do
  deb="$build/${package}_${version}_${arch}.deb"
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
  depends=$(dpkg-deb -f "$build/${package}_${version}_${arch}.deb" Depends)
  for name in "$@"; do
    if ! tr ',' '\n' <<<"$depends" | sed 's/^ *//; s/ .*//' | grep -Fxq "$name"; then
      fail "$package does not depend on $name (Depends: $depends)"
    fi
  done
}

for package in corvelcfg corvelsim; do
  deb="$build/${package}_${version}_${arch}.deb"
  [ -f "$deb" ] || continue
  if [ "$(dpkg-deb -f "$deb" Version)" != "$version" ]; then
    fail "$package carries version $(dpkg-deb -f "$deb" Version), the changelog $version"
  fi
  dpkg-deb -x "$deb" "$scratch/root"
done
# Linked libraries, as dpkg-shlibdeps found them, and what corvelsim preloads or runs.
has_depends corvelcfg libc6 libstdc++6 libusb-0.1-4 libssl3
has_depends corvelsim libc6 libstdc++6 libssl3 libpugixml1v5 libumockdev0 umockdev faketime

root=$scratch/root
echo "== hardening-check"
# Every program carries the hardening of dpkg-buildflags (hardening=+all).
# hardening-check's control-flow check looks for the IBT and SHSTK marks that
# the linker sets only when every object carries them, and bookworm's C
# library start files (Scrt1.o, crti.o, crtn.o) do not: no program linked on
# Debian 12 has them, /bin/ls included. So that check is left to a look at the
# code: compiled with -fcf-protection, each function begins with endbr64
# (without it, a program has two, from the compiler's start files).
for program in "$root"/usr/bin/* "$root"/usr/lib/corvelsim/*.so; do
  hardening-check --nocfprotection "$program" | sed "s|$root||" || fail "hardening-check: ${program#"$root"}"
  if [ "$arch" = amd64 ] || [ "$arch" = i386 ]; then
    branch_targets=$(objdump -d "$program" | grep -c endbr64 || true)
    echo " Control flow protection: $branch_targets endbr64 instructions"
    # corvelsim's preload library has two functions of its own, and the two
    # of the start files: four.
    least=100
    case $program in *.so) least=4 ;; esac
    if [ "$branch_targets" -lt "$least" ]; then
      fail "${program#"$root"} was not compiled with -fcf-protection ($branch_targets endbr64 instructions)"
    fi
  fi
done

echo "== lintian"
# Errors and warnings fail the test; informational tags are shown too. An
# override in debian/ needs a comment saying why.
lintian --display-info --fail-on error,warning "$build/corvelcfg_${version}_${arch}.changes" \
  >"$scratch/lintian.out" 2>&1 || fail "lintian found errors or warnings (below)"
grep -v '^running with root privileges' "$scratch/lintian.out" || echo "lintian: no tags"

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
