#!/usr/bin/env bash
# The whole spooler sweep: every spooler call of each scenario refused in turn (the test
# suite refuses a fixed sample of them). Runs the sweep's tests under Wine like the suite.
#
#   bash scripts/run-spooler-sweep.sh [FROM [TO]]
#
# FROM and TO limit the sweep to those call numbers, to replay what a run reported.
set -uo pipefail
export OZDK_SKIP_NATIVE=1 OZDK_SWEEP_STRIDE=1
[ $# -ge 1 ] && export OZDK_SWEEP_FROM=$1
[ $# -ge 2 ] && export OZDK_SWEEP_TO=$2
export OZDK_CTEST_ARGS="-R SpoolerRefusalSweep --verbose"
exec bash "$(dirname "$0")/test.sh"
