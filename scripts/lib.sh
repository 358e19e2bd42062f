# shellcheck shell=bash
# What the scripts share: the root of the tree, the packages they need and how those get installed.
# Sourced, not run. Package names are Debian 12's.

# shellcheck disable=SC2034  # the scripts read these
{
  root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
  build_packages=(g++ cmake ninja-build zlib1g-dev)
  check_packages=(libcli11-dev nlohmann-json3-dev)
  run_packages=(pkg-config libhts-dev libarchive-dev)
  test_packages=(libisal-dev libgtest-dev librapidcheck-dev python3 patch strace mandoc zsh samtools
    tabix zstd xz-utils bzip2 fml-asm megahit chromium multiqc)
  style_packages=(clang-format clang-tidy cppcheck shellcheck codespell)
  fuzz_packages=(clang libclang-rt-14-dev)
  coverage_packages=(gcovr)
  bench_packages=(libisal-dev libcli11-dev libbenchmark-dev python3 patch seqtk minimap2 tabix isal)
  cluster_packages=(munge slurmctld slurmd slurm-client)
  package_packages=(libisal-dev dpkg-dev lintian debootstrap)
}

# What shows that a package is there: a command, or a file of it.
probe_of() {
  case $1 in
    ninja-build) echo ninja ;;
    clang) echo clang++ ;;
    libc++-dev) echo /usr/lib/llvm-14/include/c++/v1/vector ;;
    libc++abi-dev) echo /usr/lib/llvm-14/lib/libc++abi.so ;;
    g++-aarch64-linux-gnu) echo aarch64-linux-gnu-g++ ;;
    qemu-user) echo qemu-aarch64 ;;
    zlib1g-dev) echo /usr/include/zlib.h ;;
    libisal-dev) echo /usr/include/isa-l.h ;;
    libbenchmark-dev) echo /usr/include/benchmark/benchmark.h ;;
    tabix) echo bgzip ;;
    xz-utils) echo xz ;;
    isal) echo igzip ;;
    libcli11-dev) echo /usr/include/CLI/CLI.hpp ;;
    libhts-dev) echo /usr/include/htslib/sam.h ;;
    libarchive-dev) echo /usr/include/archive.h ;;
    nlohmann-json3-dev) echo /usr/include/nlohmann/json.hpp ;;
    libgtest-dev) echo /usr/include/gtest/gtest.h ;;
    libclang-rt-14-dev) echo /usr/lib/llvm-14/lib/clang/14.0.6/lib/linux/libclang_rt.fuzzer-x86_64.a ;;
    dpkg-dev) echo dpkg-shlibdeps ;;
    munge) echo munged ;;
    slurm-client) echo sbatch ;;
    librapidcheck-dev) echo /usr/include/rapidcheck.h ;;
    *) echo "$1" ;;
  esac
}

is_present() {
  local probe PATH=$PATH:/usr/sbin
  probe=$(probe_of "$1")
  case $probe in
    /*) [[ -e $probe ]] ;;
    *) command -v "$probe" >/dev/null ;;
  esac
}

# missing_of PACKAGE...: prints those that are not there, one a line.
missing_of() {
  local package
  for package in "$@"; do
    is_present "$package" || echo "$package"
  done
}

# Runs a command as root: as it stands, or by sudo, which may ask for a password at a terminal only.
as_root() {
  if [[ $(id -u) -eq 0 ]]; then
    "$@"
  elif [[ -t 0 ]]; then
    sudo "$@"
  else
    sudo -n "$@"
  fi
}

can_install() {
  command -v apt-get >/dev/null || return 1
  [[ $(id -u) -eq 0 ]] && return 0
  command -v sudo >/dev/null || return 1
  [[ -t 0 ]] || sudo -n true 2>/dev/null
}

apt_get() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=120 "$@"
}

# require_packages PACKAGE...: installs what is missing of them. Where that is not possible, says
# what to install and exits with status 1.
require_packages() {
  local missing=()
  mapfile -t missing < <(missing_of "$@")
  [[ ${#missing[@]} -eq 0 ]] && return 0
  if can_install; then
    echo "Installing ${missing[*]}"
    # A package list that is partly out of reach may still be good enough.
    apt_get update || echo "apt-get update failed, trying to install all the same" >&2
    apt_get install --no-install-recommends "${missing[@]}" || true
    mapfile -t missing < <(missing_of "$@")
    [[ ${#missing[@]} -eq 0 ]] && return 0
    echo "These packages could not be installed: ${missing[*]}" >&2
  else
    echo "These packages are missing: ${missing[*]}" >&2
  fi
  echo "Install them as root and start again:" >&2
  echo "    apt-get update && apt-get install ${missing[*]}" >&2
  echo "(On a system other than Debian 12 the names may differ.)" >&2
  exit 1
}

# build_program program|program-zlib|program-isal: builds velk alone in that folder below build/, to inflate
# with the library that the name says.
build_program() {
  local build=$root/build/$1 options=(-DVELK_TESTS=OFF -DVELK_CHECK=OFF -DVELK_RUN=OFF)
  case $1 in
    *-zlib) options+=(-DVELK_ISAL=OFF) ;;
    *-isal) options+=(-DVELK_ISAL=ON) ;;
  esac
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release "${options[@]}" >/dev/null
  cmake --build "$build" --parallel 2 >/dev/null
}
