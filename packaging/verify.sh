#!/bin/sh
# Installs the Debian packages in a folder into a Debian of their own, uses them as their users do, removes them, and looks what
# they left. As root:
#
#   verify.sh FOLDER
#
# The Debian is made anew with mmdebstrap, or, where no mirror can be reached, from this machine's own files under a layer that
# takes all writes. Either ends with the script.
set -eu

step() { printf 'verify: %s\n' "$1"; }

die() {
  printf 'verify: %s\n' "$1" >&2
  exit 1
}

packages=$(cd "$1" && pwd)
[ "$(id -u)" -eq 0 ] || die "only root may mount what this needs; run: sudo $0 $packages"
if [ "${VERIFY_IS_APART:-no}" = no ]; then
  # What is mounted here is unmounted with the last process.
  VERIFY_IS_APART=yes exec unshare --mount --pid --fork --mount-proc "$0" "$packages"
fi

# What an application's author has, besides what the packages bring.
tools='gcc gcc-multilib libc6-dev pkgconf'

work=$(mktemp -d)
trap 'umount -R "$work" && rmdir "$work"' EXIT
mount -t tmpfs tmpfs "$work"
root=$work/root
log=$work/log
mkdir "$root"

# inside COMMAND [ARGUMENT...]: in that Debian, with nothing of this process's environment but the way to the mirror.
inside() {
  chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
    ${http_proxy:+http_proxy="$http_proxy"} "$@"
}

# quietly COMMAND [ARGUMENT...]: says what the command said only if it fails.
quietly() {
  "$@" >"$log" 2>&1 || {
    cat "$log" >&2
    die "failed: $*"
  }
}

make_root() {
  if mmdebstrap --quiet --variant=minbase --include="$(echo "$tools" | tr ' ' ,)" bookworm "$root" >"$log" 2>&1; then
    step 'a Debian of its own, made with mmdebstrap'
    cp /etc/resolv.conf "$root/etc/resolv.conf"
  else
    step "this machine's own files, because mmdebstrap says: $(grep -m 1 '^E:' "$log" || tail -n 1 "$log")"
    rm -rf "$root"
    mkdir "$root" "$work/written" "$work/aside"
    mount -t overlay overlay -o "lowerdir=/,upperdir=$work/written,workdir=$work/aside" "$root"
  fi
  mount --rbind /dev "$root/dev"
  mount -t proc proc "$root/proc"

  # The packages as a mirror of their own, so that apt finds by itself what one needs of the others.
  mkdir "$root/packages"
  cp "$packages"/*.deb "$root/packages"
  (cd "$root/packages" && dpkg-scanpackages . >Packages 2>"$log") || die "dpkg-scanpackages failed: $(cat "$log")"
  echo 'deb [trusted=yes] file:/packages ./' >"$root/etc/apt/sources.list.d/packages.list"
  quietly inside apt-get update
}

# Every file and folder where packages put theirs, but for what dpkg, apt and the programs' caches know of themselves.
files() {
  (cd "$root" && ls -d ./* && find ./bin ./boot ./etc ./lib* ./opt ./sbin ./srv ./usr ./var \
    \( -path ./var/cache -o -path ./var/lib/apt -o -path ./var/lib/dpkg -o -path ./var/log -o -path ./var/tmp \) -prune \
    -o -print) | sort
}

installed() { inside dpkg-query -W -f "\${db:Status-Abbrev} \${Package}:\${Architecture}\n" | sort; }

install_packages() {
  step "installing $*"
  quietly inside apt-get install -y --no-install-recommends "$@"
}

# compile_example WORD_SIZE [VARIABLE=VALUE...]: the development package's example, with the flags that pkg-config knows.
compile_example() {
  word_size=$1
  shift
  # shellcheck disable=SC2016 # the words are for the shell inside
  quietly inside "$@" sh -euc 'cd /tmp
    example=/usr/share/doc/libvaskdfc-dev/examples/list_adapters.c
    cc -m$0 -std=c99 -Wall -Wextra -Werror $(pkg-config --cflags vaskdfc) $example $(pkg-config --libs vaskdfc) -o list_adapters' \
    "$word_size"
  quietly readelf --file-header "$root/tmp/list_adapters"
  grep -q "ELF$word_size" "$log" || die "the application is not a $word_size-bit one"
}

# expect_adapters COMMAND...: prints a line for every adapter that the simulator comes with.
expect_adapters() {
  quietly inside "$@"
  [ "$(grep -c 'Kestar K560' "$log")" -eq 5 ] || die "$* does not show the five simulated adapters: $(cat "$log")"
}

# expect_files PATH...: below /usr/share, each with something in it.
expect_files() {
  for file in "$@"; do
    [ -s "$root/usr/share/$file" ] || die "there is no /usr/share/$file"
  done
}

use_tool() {
  install_packages vaskdfc-tools
  step 'the tool shows the simulated adapters'
  expect_adapters vaskdfc list

  step 'the tool has its completions and manual pages'
  expect_files bash-completion/completions/vaskdfc fish/vendor_completions.d/vaskdfc.fish zsh/vendor-completions/_vaskdfc \
    man/man1/vaskdfc.1.gz man/man5/libvaskdfc.conf.5.gz man/man5/vaskdfc-scenario.5.gz
}

use_library() {
  install_packages libvaskdfc-dev
  expect_files man/man3/vaskdfc.3.gz man/man3/DFC_InitDiagEnv.3.gz
  step 'an application is built and runs'
  compile_example "$(dpkg-architecture --query DEB_HOST_ARCH_BITS)"
  expect_adapters /tmp/list_adapters
}

use_32_bit_library() {
  install_packages lib32vaskdfc-dev
  step 'a 32-bit application is built and runs'
  compile_example 32 PKG_CONFIG_LIBDIR=/usr/lib32/pkgconfig
  expect_adapters /tmp/list_adapters
}

remove_packages() {
  step 'removing them'
  installed >"$work/packages-with"
  comm -13 "$work/packages-before" "$work/packages-with" | sed 's/^ii *//' >"$work/packages-added"
  # shellcheck disable=SC2046 # names
  quietly inside apt-get purge -y $(cat "$work/packages-added")
  files >"$work/files-after"
  difference=$(diff "$work/files-before" "$work/files-after" | grep '^[<>]' || true)
  [ -z "$difference" ] || die "the files are not what they were (> left behind, < lost):
$difference"
  step 'nothing is left'
}

make_root
files >"$work/files-before"
installed >"$work/packages-before"
use_tool
use_library
case $(dpkg --print-architecture) in amd64) use_32_bit_library ;; esac
remove_packages
