#!/usr/bin/env bash
# Installs the Debian packages that building needs, only those that are
# missing. Runs as root on a fresh Debian 12 machine. With --test, also
# what the tests need: the browsers whose real profiles they read and
# render pages in.
set -euo pipefail

packages=(g++ cmake make libsqlite3-dev libjsoncpp-dev libacl1-dev libgtest-dev libgmock-dev
          libbenchmark-dev libcli11-dev libcpp-httplib-dev pkg-config sqlite3 acl)
if [ "${1:-}" = "--test" ]; then
  packages+=(chromium firefox-esr)
fi
missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all packages present"
  exit 0
fi
echo "install-deps: installing ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
"${sudo_cmd[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
