#!/usr/bin/env bash
# exported_symbols.sh LIBRARY INCLUDE_DIR MAJOR: the shared library exports what its headers mark with LUMO25D_API and
# nothing else, has the soname of its major version, and needs no library that we don't know of.
set -euo pipefail
library=$1
include_dir=$2
major=$3
status=0

complain() {
    echo "exported symbols: $*" >&2
    status=1
}

# Declarations marked for export, one a line, without comments.
declarations=$(cat "$include_dir"/*.h | sed -e "s://.*$::" -e "/^ *#/d" | tr "\n" " " | grep -oE "LUMO25D_API [^;{]*[;{]")
classes=$(cat "$include_dir"/*.h | grep -oE '(class|struct) LUMO25D_API [A-Za-z0-9_]+' | awk '{print $3}' | sort -u)
functions=$(grep -F '(' <<<"$declarations" | sed -E 's/^([^(]*[ *&])(operator *[^ (]+|[A-Za-z0-9_]+) *\(.*$/\2/' | sort -u)

# The names in the symbols on standard input that are neither a marked class nor a marked function.
strangers() {
    sed -E 's/^(vtable|typeinfo name|typeinfo|guard variable|VTT|construction vtable) for //' |
        sed -E 's/^ORBI_LUMO25D::(operator *[^ (]+|[A-Za-z0-9_]+).*$/\1/' | sort -u |
        grep -vxFf <(printf '%s\n' "$classes" "$functions") || true
}

# A check that finds nothing in planted symbols would find nothing at all.
planted=$'ORBI_LUMO25D::Dt2::insertVector(int)\nstd::vector<int>::resize(unsigned long)\nvtable for ORBI_LUMO25D::Hidden'
[ "$(strangers <<<"$planted" | wc -l)" -eq 3 ] || complain "planted symbols went unnoticed"

symbols=$(nm -D --defined-only -C "$library" | sed -E 's/^[0-9a-f]* +[A-Za-z] //')
[ "$(wc -l <<<"$symbols")" -ge 20 ] || complain "hardly anything is exported by $library"
for name in $(strangers <<<"$symbols"); do
    complain "$name is exported, and no header marks it with LUMO25D_API"
done
for name in $functions; do
    grep -qF "ORBI_LUMO25D::$name(" <<<"$symbols" || complain "$name is declared with LUMO25D_API and not exported"
done

for needed in $(readelf -d "$library" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p'); do
    case $needed in
    libstdc++.so.* | libm.so.* | libgcc_s.so.* | libc.so.* | libgmp.so.* | ld-linux-*) ;;
    *) complain "the library needs $needed" ;;
    esac
done
soname=$(readelf -d "$library" | sed -nE 's/.*\(SONAME\).*\[(.*)\]/\1/p')
[ "$soname" = "liblumo25d.so.$major" ] || complain "the soname is $soname"

exit $status
