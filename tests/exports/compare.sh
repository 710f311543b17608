#!/usr/bin/env bash
# compare.sh NM LIBRARY LIST: what the library exports of its own, against the list. Left out is what the compilers do not
# agree on: weak symbols, which are inline functions for the most part, and the tables of classes.
#
# A library for Windows has a table of names instead, which its objdump prints. Left out there is what only that system
# needs, and the spelling of its 64-bit integers and of streams becomes that of the list.
set -euo pipefail
exported() {
  case $2 in
    *.dll)
      "${1%nm}objdump" --private-headers "$2" |
        sed --quiet --regexp-extended '/Ordinal\/Name Pointer/,/^$/s/^\s*\[ *[0-9]+\] (\+base\[ *[0-9]+\] +[0-9a-f]+ )?//p' |
        c++filt |
        sed --regexp-extended '/^(typeinfo|vtable) |^kx::detail::IsProcessEnding/d
          s/(unsigned )?long long/\1long/g; s/([0-9]u)ll/\1l/g; s/std::basic_ostream<char, std::char_traits<char> >/std::ostream/g' ;;
    *) "$1" --dynamic --defined-only --demangle "$2" |
      sed --quiet --regexp-extended '/ (typeinfo|vtable) /d; s/^[0-9a-f]* [BDRT] //p' ;;
  esac | LC_ALL=C sort --unique
}
diff --unified=0 --label "$3" --label "$2" "$3" <(exported "$1" "$2")
