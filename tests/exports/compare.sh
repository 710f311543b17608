#!/usr/bin/env bash
# compare.sh LIBRARY LIST: what the library exports of its own, against the list. Left out is what the compilers do not
# agree on: weak symbols, which are inline functions for the most part, and the tables of classes.
set -euo pipefail
diff --unified=0 --label "$2" --label "$1" "$2" <(nm --dynamic --defined-only --demangle "$1" |
  sed --quiet --regexp-extended '/ (typeinfo|vtable) /d; s/^[0-9a-f]* [BDRT] //p' | LC_ALL=C sort --unique)
