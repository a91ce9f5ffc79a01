#!/usr/bin/env bash
# check-time.sh LIBC FILE...: fails if a program or library of a 32-bit architecture imports a function
# whose times have 32 bits. LIBC: the C library there; whatever has a twin for 64-bit time in it is one.
set -euo pipefail
libc=$1
shift

imports_of() { LC_ALL=C readelf --wide --dyn-syms "$1" | awk '$7 == "UND" && $8 != "" { sub(/@.*/, "", $8); print $8 }'; }

# __stat64_time64 stands for stat and stat64, __ioctl_time64 for ioctl, __gmtime64_r for gmtime_r.
short=$(LC_ALL=C readelf --wide --dyn-syms "$libc" | sed -nE 's/.* _+([a-z0-9_]+)@@GLIBC_2\.3[4-9]$/\1/p' |
  sed -nE 's/^(.*)64_time64$/\1\n\164/p; t; s/^(.*)_time64$/\1/p; t; s/^(.*)64(_r)?$/\1\2/p')
grep --quiet '^clock_gettime$' <<<"$short" || {
  printf 'check-time.sh: %s has no functions with 64-bit time\n' "$libc" >&2
  exit 2
}
# Debian's C++ library, curl and OpenSSL for armhf were built with a time_t of 32 bits.
short+='
_ZNSt6chrono3_V212system_clock3nowEv
curl_getdate
ASN1_TIME_adj
ASN1_TIME_cmp_time_t
ASN1_TIME_set
X509_cmp_time
X509_time_adj
X509_time_adj_ex'

failed=0
for file in "$@"; do
  imports=$(imports_of "$file")
  [ -n "$imports" ] || {
    printf 'check-time.sh: %s imports nothing\n' "$file" >&2
    exit 2
  }
  found=$(grep --line-regexp --fixed-strings "$short" <<<"$imports") || {
    [ $? -eq 1 ] || exit 2
    continue
  }
  printf '%s imports with 32-bit time: %s\n' "$file" "$(tr '\n' ' ' <<<"$found")" >&2
  failed=1
done
[ "$failed" -eq 0 ] || exit 1
printf 'times have 64 bits in each of %d files, of %d short functions\n' $# "$(wc -l <<<"$short")"
