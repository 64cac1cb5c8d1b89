#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The libnubis_lite authors
# SPDX-License-Identifier: Apache-2.0
#
# Runs the benchmarks of a build folder and reports: benchmarks/run.sh BUILD [--short] [--only TEXT]
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")
build=$1
shift
rows=$(mktemp)
trap 'rm -f "$rows"' EXIT
for program in bench-library bench-service bench-small; do
    "$build/bin/$program" "$@" >>"$rows"
done
python3 "$here/report.py" "$build/bench" <"$rows"
