"""Cases of the command line, the outputs and the machine."""
import os

from table import case, option, options

def free_memory():
    with open("/proc/meminfo", encoding="ascii") as lines:
        fields = dict(one.split(":") for one in lines)
    free = int(fields["MemAvailable"].split()[0]) * 1024
    try:
        with open("/sys/fs/cgroup/memory.max", encoding="ascii") as limit, \
                open("/sys/fs/cgroup/memory.current", encoding="ascii") as used:
            free = min(free, int(limit.read()) - int(used.read()))
    except (OSError, ValueError):
        pass
    return free


def threads_of(share):
    """-t for threads that take a share of the free memory: stack, heap and a row of results each."""
    return lambda w: option("-t", int(share * free_memory() / 135208))(w)


case("option-missing", lambda w: w.options.pop("-o"))
case("stray-argument", lambda w: w.more.append("x"), lambda w: w.more.extend(["-t", "1"]))
case("value-not-number", option("-r", "100bp"), option("-r", "100"))
case("value-refused", option("-t", 0), option("-t", 1))
case("kmer-over-32", option("-k", 33), option("-k", 32))
case("kmer-short", option("-k", 14), option("-k", 15))
case("threads-many", lambda w: option("-t", os.cpu_count() + 1)(w),
     lambda w: option("-t", os.cpu_count())(w))
case("load-factor-replaced", option("-f", 1), option("-f", 0.99))
case("ratio-odd", option("-O", -0.1), option("-O", 0.1))
case("cutoff-negative", option("-L", -1), option("-L", 31), also=["nothing-indexed"])
case("cutoff-below-kmer", option("-L", 30), option("-L", 31))
case("cutoff-drops-contigs", option("-L", 1700), option("-L", 1500))
case("edge-cut-no-effect", options(r=1300, C=50), options(r=1100, C=50))
case("edge-cut-large", option("-C", 101), option("-C", 100))
case("contigs-ignored", option("-c", "c.fa"))
case("output-is-input", option("-o", "r_1.fq"), option("-o", "r_1.fa"))
case("output-unwritable", option("-o", "folder/out.fa"),
     lambda w: (option("-o", "folder/out.fa")(w), w.folders.append("folder")))
case("output-exists", lambda w: w.files.update({"out.fa": "x"}),
     lambda w: w.files.update({"out.fasta": "x"}))
case("table-refused", option("-m", 2000000000000), option("-m", 20000))
case("memory-short", threads_of(1.3), threads_of(0.6), also=["threads-many"],
     near_also=["threads-many"])
case("memory-tight", threads_of(0.9), threads_of(0.6), also=["threads-many"],
     near_also=["threads-many"])
