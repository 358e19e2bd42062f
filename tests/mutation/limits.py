"""Runs a test, and ends it when it takes far longer than it should.

A test may take five times the processor time that it has taken without a change, and ten seconds. Time
on the clock is bounded, too, for threads that wait for each other: ten times and a minute. It is counted in
looks at the test, so that a machine that stands still adds nothing.
"""

import os
import pathlib
import resource
import signal
import subprocess
import time
from dataclasses import dataclass

ADDRESS_SPACE = 16 << 30
LOOK = 0.1  # seconds from one look at a test to the next
TICK = os.sysconf("SC_CLK_TCK")


@dataclass
class Usage:
    seconds: float  # of processor time
    looks: int


# Without a usual time, as in the first run of a test.
MOST = Usage(3600, int(4 * 3600 / LOOK))


def allowed(usual):
    if usual is None:
        return MOST
    return Usage(5 * usual.seconds + 10, 10 * usual.looks + int(60 / LOOK))


def seconds_of(session):
    """The processor time of all processes of a session, with those that have ended."""
    ticks = 0
    for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            fields = stat.read_text().rpartition(")")[2].split()
        except OSError:  # it has ended
            continue
        if int(fields[3]) == session:
            ticks += sum(int(field) for field in fields[11:15])
    return ticks / TICK


def run(command, folder, usual=None):
    """Whether a test passes, and its usage; that is None if the test was ended. `usual`: its usage
    without a change."""
    most = allowed(usual)

    def limit():
        seconds = int(most.seconds) + 1
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
        resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))

    process = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=limit)
    looks = 0
    while True:
        pid, status, used = os.wait4(process.pid, os.WNOHANG)
        if pid != 0:
            process.returncode = os.waitstatus_to_exitcode(status)
            return process.returncode == 0, Usage(used.ru_utime + used.ru_stime, looks)
        if looks > most.looks or looks % 10 == 0 and seconds_of(process.pid) > most.seconds:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return False, None
        looks += 1
        time.sleep(LOOK)
