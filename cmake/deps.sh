#!/usr/bin/env bash
# Installs what the build and the test bench need on a Debian 12 machine: the MinGW-w64 cross
# compiler, zlib for it, Wine with its 32-bit half, an X server for the GUI tests, NSIS for the
# benchmark, clang for the fuzzers, the Czech locale Wine takes code page 1250 from, and the
# release tools of the medium builder and the resource checks (code signing, CD and floppy
# images, a PE reader, icon rendering).
# Idempotent: a machine that has everything is left as it is. Must run as root (or with sudo).
set -u

need_pkgs=(cmake make g++ gcc python3 xauth xvfb x11-utils imagemagick nsis zlib1g-dev
           g++-mingw-w64-i686 gcc-mingw-w64-i686 libz-mingw-w64-dev
           wine wine64 wine32:i386 libgstreamer-plugins-base1.0-0:i386
           clang-14 libclang-rt-14-dev locales
           osslsigncode openssl xorriso mtools dosfstools python3-pefile icoutils librsvg2-bin)

SUDO=""
if [ "$(id -u)" != 0 ]; then SUDO="sudo"; fi

missing=()
for p in "${need_pkgs[@]}"; do
  st=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [ "$st" = "install ok installed" ] || missing+=("$p")
done

locale_ok=1
locale -a 2>/dev/null | grep -qi '^cs_CZ\.utf-\?8$' || locale_ok=0

if [ ${#missing[@]} -eq 0 ] && [ $locale_ok = 1 ]; then
  exit 0
fi

export DEBIAN_FRONTEND=noninteractive
if [ ${#missing[@]} -gt 0 ]; then
  echo "deps: installing ${missing[*]}" >&2
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    $SUDO dpkg --add-architecture i386
  fi
  # The security index for i386 is sometimes served broken on this mirror; the update then exits
  # non-zero, and the 32-bit and 64-bit halves of a package may end up at different versions.
  # Holding the security suite at a low priority keeps both halves on the release's versions.
  pin=/etc/apt/preferences.d/korvex-no-security-skew
  if [ ! -f "$pin" ]; then
    printf 'Package: *\nPin: release l=Debian-Security\nPin-Priority: 100\n' | $SUDO tee "$pin" >/dev/null
  fi
  $SUDO apt-get update -q >/tmp/korvex-apt-update.log 2>&1 || echo "deps: apt-get update reported errors (continuing)" >&2
  if ! $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}" >/tmp/korvex-apt-install.log 2>&1; then
    echo "deps: apt-get install failed; last lines of /tmp/korvex-apt-install.log:" >&2
    tail -n 30 /tmp/korvex-apt-install.log >&2
    exit 1
  fi
fi

if ! locale -a 2>/dev/null | grep -qi '^cs_CZ\.utf-\?8$'; then
  if ! grep -q '^cs_CZ.UTF-8 UTF-8' /etc/locale.gen 2>/dev/null; then
    echo 'cs_CZ.UTF-8 UTF-8' | $SUDO tee -a /etc/locale.gen >/dev/null
  fi
  $SUDO locale-gen >/dev/null 2>&1 || { echo "deps: locale-gen failed" >&2; exit 1; }
fi
exit 0
