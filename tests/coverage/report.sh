#!/bin/sh
# Runs the tests of a build that counts which lines of the library run, and reports the lines of each file. Fails if a test
# does, or if the tests run less than 92 % of all lines. Argument: the build folder.
set -eu
build="$1"
report="$build/report"
status=0

# Left out: what leads through the same lines again, tests that look at sources, what takes very long here, and runs as
# another user, who may not add to the counts.
left_out='_hostile$|^failing_systems$|^abi$|^layers$|^generators$|^wrong_programs$|^wordcount$'
export GTEST_FILTER='-MorvaneText.TakesFilesOfAnySizeInConstantMemory'
GTEST_FILTER="$GTEST_FILTER:MorvaneFile.GivesNobodyMoreRights:MorvaneFile.KeepsWhatManyRunsSetAtOnce"

# What the run-time library of the counts has to say would be in what the tests compare.
export GCOV_ERROR_FILE=/dev/null

rm -rf "$report"
mkdir -p "$report"

# The counts of each test on their own: a process that is killed while it writes them leaves files that no other can add to.
collect()
{
    find "$build" -name '*.gcda' -delete
    ctest --test-dir "$build" --output-on-failure -R "$1" -E "$left_out" || status=$?
    gcovr --root . --filter source/ --gcov-ignore-parse-errors --exclude-throw-branches --json "$report/$2.json" \
        "$build/source" >/dev/null
}

for test in $( ctest --test-dir "$build" -N -E "$left_out|^fuzz_" | sed -n 's/.*Test *#[0-9]*: //p' ); do
    collect "^$test\$" "$test"
done
collect '^fuzz_' fuzz

gcovr --root . --add-tracefile "$report/*.json" --print-summary --fail-under-line 92 --txt "$report/lines.txt" \
    --html-details "$report/index.html" || status=$?
exit $status
