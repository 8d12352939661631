#!/usr/bin/env bash
# run_test_host.sh LIBRARY ROUNDS COMMAND...: runs the test host, by way of a checking tool for instance, with a data
# folder of its own.
set -euo pipefail
library=$1 rounds=$2
shift 2
XDG_DATA_HOME=$(mktemp -d)
export XDG_DATA_HOME
trap 'rm -rf -- "$XDG_DATA_HOME"' EXIT
cd "$XDG_DATA_HOME"
"$@" "$library" "$rounds"
[[ -s $XDG_DATA_HOME/Tessaron/SonvelleConfiguration.cfg ]] || { echo "no settings were written at the end" >&2; exit 1; }
