#!/usr/bin/env python3
"""Runs velk-check on the cases of cases.py: the very findings must come out, in both forms of the
report, with the right status, and no file may change. Usage: run.py VELK-CHECK [ID...]"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

from cases import CASES, ELSEWHERE
from world import World

HERE = pathlib.Path(__file__).parent


def kinds_of(program):
    """The level of every kind, out of the program's own list."""
    listed = subprocess.run([program, "--list-findings"], check=True, capture_output=True,
                            text=True)
    rows = [row.split(" | ") for row in listed.stdout.splitlines() if row.startswith("| `")]
    return {row[0][3:-1]: row[1] for row in rows}


def tree(folder):
    return {path.name: path.read_bytes() if path.is_file() else None for path in folder.iterdir()}


def make(world, folder):
    for name in world.folders:
        (folder / name).mkdir()
    for name in world.pipes:
        os.mkfifo(folder / name)
    for name, text in world.all_files().items():
        (folder / name).write_bytes(text)


def look(program, world):
    """Runs both forms in a new folder. Returns the JSON report; raises on what must never be."""
    with tempfile.TemporaryDirectory(prefix="velk-check-") as temporary:
        folder = pathlib.Path(temporary)
        make(world, folder)
        before = tree(folder)
        command = [program, *world.arguments()]
        as_json, as_text = (subprocess.run([*command, *form], cwd=folder, capture_output=True,
                                           text=True, timeout=300, check=False)
                            for form in (["--json"], []))
        assert tree(folder) == before, "files changed"
    assert as_json.stderr == as_text.stderr == "", as_json.stderr + as_text.stderr
    report = json.loads(as_json.stdout)
    assert as_json.returncode == as_text.returncode == report["status"], "the statuses differ"
    for finding in report["findings"]:
        assert f"{finding['level']} [{finding['id']}] " in as_text.stdout, finding["id"]
    return report


def problem(program, kinds, change, expected):
    """What is wrong with the report of a world; empty when all is well."""
    world = World()
    change(world)
    try:
        report = look(program, world)
    except (AssertionError, ValueError) as error:
        return str(error)
    found = {finding["id"] for finding in report["findings"]}
    levels = {kinds[finding] for finding in found}
    status = 2 if "error" in levels else 1 if "warning" in levels else 0
    if report["status"] != status:
        return f"status {report['status']} for {sorted(found)}"
    return "" if found == expected else f"found {sorted(found)}, expected {sorted(expected)}"


def main(program, wanted):
    program = str(pathlib.Path(program).resolve())
    kinds = kinds_of(program)
    failures = []
    covered = [finding for finding, *_ in CASES] + list(ELSEWHERE)
    if sorted(covered) != sorted(kinds):
        failures.append(f"kinds and cases differ: {sorted(set(covered) ^ set(kinds))}")
    for finding, file in ELSEWHERE.items():
        if f'"{finding}"' not in (HERE / file).read_text():
            failures.append(f"{finding}: {file} does not name it")
    for finding, spoil, near, also, near_also in CASES:
        if wanted and finding not in wanted:
            continue
        if finding in near_also:
            failures.append(f"{finding}: near is not near")
        for name, change, expected in [("has", spoil, {finding} | also), ("near", near, near_also)]:
            said = problem(program, kinds, change, expected)
            if said:
                failures.append(f"{finding} ({name}): {said}")
    print("\n".join(failures) or f"{len(CASES)} kinds, each met and missed as it should be")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
