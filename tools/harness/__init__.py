"""The test harness: a simulated instrument in the instrument sandbox, the update program run on it,
its console read and what it left checked, and the registry of the scenarios that say how. The
end-to-end runs (tests/e2e), the rehearsal (tools/rehearse), the benchmarks (bench/) and the
crash-state checker (tools/lossyfs) import it with tools/ on their path; it imports nothing of
tests/ but the scenario files its loader is given by list. docs/maintainer/harness.md is its map.

    console     the program's console lines and forms (update/ConsoleLines.h)
    sandbox     a sandbox root addressed by the instrument's paths; laying it out, running in it
    instrument  the instrument's paths, its expected log lines and states, stick contents, keys
    checks      what a run left, held against what a scenario expects
    scenarios   Scenario, the registries and the loader of the listed scenario files
    runner      one scenario run, and the command line of tests/e2e/runner.py
"""
