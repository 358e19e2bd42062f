"""Disks without room: /dev/full, a file system of 64 kB, and a limit of the file size."""

import os
import shutil
import subprocess

import runs

OUTPUTS = ("found.fa", "s.fa.contigPos", "s.fa.contig", "s.fa.gapsinfo")
KILOBYTES = 64

# Puts a small file system, but for $1 kB filled, at `disk`; keeps what the run leaves there.
ON_SMALL_DISK = """
room=$1; shift
mount -t tmpfs -o size=%dk velk-faults disk || exit 99
dd if=/dev/zero of=disk/filling bs=1k count=$((%d - room)) 2>/dev/null
for name in links/*; do ln -s "disk/${name#links/}" "${name#links/}"; done
"$@"
status=$?
for name in links/*; do
  rm "${name#links/}"
  cp "disk/${name#links/}" "${name#links/}" 2>/dev/null
done
exit $status
""" % (KILOBYTES, KILOBYTES)


def can_mount():
    done = subprocess.run(["unshare", "-rm", "mount", "-t", "tmpfs", "tmpfs", "/mnt"],
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return done.returncode == 0


def device_full(bench, scenario, output):
    return bench.run(scenario,
                     prepare=lambda folder: os.symlink("/dev/full", os.path.join(folder, output)))


def small_disk(bench, scenario, outputs, room):
    def prepare(folder):
        os.mkdir(os.path.join(folder, "disk"))
        os.mkdir(os.path.join(folder, "links"))
        for output in outputs:
            open(os.path.join(folder, "links", output), "wb").close()

    prefix = ["unshare", "-rm", "sh", "-c", ON_SMALL_DISK, "sh", str(room)]
    ended = bench.run(scenario, prefix, prepare=prepare)
    if ended.status == 99:
        raise SystemExit("mounting a small file system failed")
    return ended


def size_limit(bench, scenario, limit):
    return bench.run(scenario, ["prlimit", "--fsize=%d" % limit])


def inject(bench, pool, table, short, sanitized):
    small, large = runs.small(bench, False, True, True), runs.large(bench)
    contigs = runs.small(bench, True, True, True)
    jobs = [("/dev/full", "%s: %s" % (scenario.name, output), device_full, scenario, output)
            for scenario, outputs in ((small, OUTPUTS), (large, OUTPUTS),
                                      (contigs, ("found.fa", ".gapsinfo")))
            for output in outputs]
    if can_mount():
        rooms = (0, 32, KILOBYTES) if short else range(0, KILOBYTES + 1, 4)
        for outputs in [(output,) for output in OUTPUTS] + [OUTPUTS]:
            jobs += [("disk of 64 kB", "%s: %s, %d kB free" % (
                scenario.name, ", ".join(outputs), room), small_disk,
                      scenario, outputs, room) for scenario in (small, large) for room in rooms]
    else:
        print("SKIPPED: a file system of 64 kB, tmpfs cannot be mounted here", flush=True)
    sizes = [len(bench.expected(scenario)[output])
             for scenario in (small, large) for output in OUTPUTS]
    if sanitized or not shutil.which("prlimit"):
        reason = "the program is built with sanitizers" if sanitized else "there is no prlimit"
        print("SKIPPED: limits of the file size, " + reason, flush=True)
    else:
        limits = {0, 1, 4096, 8191, 8192, 64 << 10} | {size - 1 for size in sizes}
        if not short:
            limits |= set(range(100, max(sizes), max(sizes) // 60))
        for scenario in (small, large):
            jobs += [("file size limit", "%s, %d bytes" % (scenario.name, limit), size_limit,
                      scenario, limit) for limit in sorted(limits)]

    for job, ended in zip(jobs, pool.map(lambda job: job[2](bench, *job[3:]), jobs)):
        table.add(*job[:2], bench.judge(job[3], ended), ended)
