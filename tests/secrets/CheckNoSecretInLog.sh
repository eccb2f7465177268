#!/usr/bin/env bash
# Searches the logs of the tapped test programs for every secret their
# fixtures wrote down (see tests/support/LogTap.h). A piece of a secret is a
# leak too: of each secret but the basic-credential texts (whose first part is
# only the user name) every run of 12 characters is looked for. Fails when one
# is found, and when there is nothing to prove: no log, or a kind of secret
# that no test used, so the check can never pass by looking at nothing.
#   CheckNoSecretInLog.sh DIR
set -euo pipefail
dir="$1"
shopt -s nullglob
logs=("$dir"/*.log)
lists=("$dir"/*.secrets)
if [ ${#logs[@]} -eq 0 ] || [ ${#lists[@]} -eq 0 ]; then
  echo "no tapped log or secret list in $dir: did the tapped tests run?" >&2
  exit 1
fi
patterns="$(mktemp)"
trap 'rm -f "$patterns"' EXIT
awk -F'\t' -v n=12 '{
  if ($1 == "basic" || length($2) <= n) { print $2; next }
  for (i = 1; i + n - 1 <= length($2); i++) print substr($2, i, n)
}' "${lists[@]}" | sort -u >"$patterns"

missing=0
for kind in key passphrase password cookie basic adminPassword; do
  n=$(cut -f1 "${lists[@]}" | grep -cx -- "$kind" || true)
  echo "$kind: $n"
  if [ "$n" -eq 0 ]; then
    echo "no secret of kind '$kind' was used: the check would prove nothing for it" >&2
    missing=1
  fi
done
lines=$(cat "${logs[@]}" | wc -l)
echo "searched $(wc -l <"$patterns") secrets and pieces of secrets in $lines log lines of ${#logs[@]} programs"
[ "$lines" -gt 0 ] || { echo "the logs are empty" >&2; exit 1; }

if grep -F -n -f "$patterns" "${logs[@]}" >"$patterns.found"; then
  echo "secrets found in the library's log:" >&2
  cut -c1-400 "$patterns.found" | head -20 >&2
  rm -f "$patterns.found"
  exit 1
fi
rm -f "$patterns.found"
exit "$missing"
