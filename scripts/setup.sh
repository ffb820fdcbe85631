#!/usr/bin/env bash
# Installs the Debian packages the project needs. Quick when all are present;
# runs apt-get update only when something is missing.
set -euo pipefail

packages=(
  build-essential cmake g++ make ninja-build pkg-config  # toolchain
  libusb-dev libssl-dev                # the utility: libusb-0.1, OpenSSL
  libudev-dev                          # the identity and udev rule tests read what libudev sees
  jq                                   # the README's corvelctl walk reads JSON with it
  openssl                              # certificates made and signed in the tests and the demo
  libgtest-dev                         # unit tests
  nlohmann-json3-dev                   # corvelctl's end-to-end tests read its JSON output
  ansible-core ansible-lint            # the Ansible collection corvel.printer: its playbook tests, lint, sanity
  umockdev libumockdev-dev faketime    # the simulated printer and its fast clock
  libpugixml-dev                       # the simulated printer's XML
  clang libclang-rt-14-dev             # fuzzing (libFuzzer)
  libbenchmark-dev libexpat1-dev       # benchmarks and their reference parser
  dpkg-dev debhelper                   # the Debian packages (dpkg-buildpackage, dh; its build flags harden every optimized build)
  lintian devscripts                   # the package test: lintian, hardening-check
  mandoc man-db                        # manual pages: lint and reading
  bash-completion                      # the completion scripts' helpers (and dh_bash-completion)
  procps                               # pgrep: the test command stops its background builds
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if ((${#missing[@]} > 0)); then
  echo "Installing: ${missing[*]}"
  sudo=""
  if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null
fi
