#!/usr/bin/env bash
# wine.sh PROGRAM [ARGUMENT...]: runs a Windows program with settings of its own, in build/wine.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
export WINEPREFIX=$root/build/wine WINEDEBUG=-all
# Where the compiler's own libraries are.
libraries=$(dirname "$(x86_64-w64-mingw32-g++-posix --print-file-name=libstdc++-6.dll)")
WINEPATH="Z:${libraries//\//\\};Z:\\usr\\x86_64-w64-mingw32\\lib"
export WINEPATH
unset DISPLAY
if [[ ! -e $WINEPREFIX/ready ]]; then
  mkdir -p "$WINEPREFIX"
  {
    flock 9
    if [[ ! -e $WINEPREFIX/ready ]]; then
      wine wineboot --init </dev/null >/dev/null 2>&1 9>&-
      # A program that ends at a debug break ends; no debugger starts.
      wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d false /f </dev/null \
        >/dev/null 2>&1 9>&-
      touch "$WINEPREFIX/ready"
    fi
  } 9>"$WINEPREFIX/lock"
fi
exec wine "$@"
