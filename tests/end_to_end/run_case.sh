#!/usr/bin/env bash
# Runs one test: run_case.sh NAME. The environment names the programs and the Wine prefix.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
exec </dev/null

: "${WINEPREFIX:?names no Wine prefix: ./kel test prepares one}"
kel_root=${here%/tests/*}
kel_build=$kel_root/build
source "$here/../../tools/report.sh"
source "$here/../../tools/prefix.sh"
source "$here/../../tools/instrument.sh"
source "$here/../../tools/members.sh"
source "$here/../../tools/package.sh"
source "$here/harness.sh"
source "$here/bench_cases.sh"
source "$here/cases.sh"
source "$here/document_cases.sh"
source "$here/package_cases.sh"
source "$here/registration_cases.sh"

"test_$1"
