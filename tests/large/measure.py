#!/usr/bin/env python3
"""Runs a program and prints its status, its seconds and its peak memory in bytes.

    measure.py PROGRAM [ARGUMENT...]

A process of its own, because the peak memory of a child counts that of its parent at the start.
"""

import os
import sys
import time

begin = time.monotonic()
child = os.fork()
if child == 0:
    os.execv(sys.argv[1], sys.argv[1:])
_, status, usage = os.wait4(child, 0)
print(os.waitstatus_to_exitcode(status), time.monotonic() - begin, usage.ru_maxrss * 1024)
