"""SIGINT and SIGTERM at random moments of a run."""

import random
import shutil
import signal
import subprocess
import tempfile
import time

import runs


def one(bench, scenario, number, delay):
    """Sends signal `number` after `delay` seconds."""
    folder = tempfile.mkdtemp(dir=bench.folder)
    try:
        scenario.lay_out(folder)
        with subprocess.Popen([bench.velk, *scenario.argv], cwd=folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT) as process:
            try:
                said, _ = process.communicate(timeout=delay)
            except subprocess.TimeoutExpired:
                process.send_signal(number)
                try:
                    said, _ = process.communicate(timeout=runs.SECONDS)
                except subprocess.TimeoutExpired:
                    process.kill()
                    return runs.Ended(None, b"", {})
        return runs.Ended(process.returncode, said, runs.contents(folder))
    finally:
        shutil.rmtree(folder)


def inject(bench, pool, table, short):
    scenario = runs.large(bench)
    begin = time.monotonic()
    bench.run(scenario)
    length = time.monotonic() - begin
    r = random.Random(9)
    for number in (signal.SIGINT, signal.SIGTERM):
        delays = [r.uniform(0, 1.5 * length) for _ in range(15 if short else 200)]
        for delay, ended in zip(delays, pool.map(
                lambda delay: one(bench, scenario, number, delay), delays)):
            table.add(number.name, "after %.4f s" % delay,
                      bench.judge(scenario, ended, sent=number), ended)
