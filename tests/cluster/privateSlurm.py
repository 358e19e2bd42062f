"""A Slurm of this user's own: munged, slurmctld and slurmd of some nodes on this machine, with all
their files in one folder and on ports of their own. It ends the processes that it has started."""

import os
import pwd
import re
import shutil
import socket
import subprocess
import time

LONGEST_START = 60  # seconds, until all nodes are idle
CONFIG = """ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket
SlurmctldPort={port}
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool.%n
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.%n.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core_Memory
ReturnToService=2
{schedule}KillWait=2
SlurmdParameters=config_overrides
MinJobAge=600
JobAcctGatherType=jobacct_gather/linux
JobAcctGatherFrequency=1
JobAcctGatherParams=OverMemoryKill
AccountingStorageType=accounting_storage/none
PartitionName=main Nodes=n[1-{nodes}] Default=YES MaxTime=INFINITE State=UP
"""
HASTE = "SchedulerParameters=sched_interval=1,batch_sched_delay=1\n"
NODE = ("NodeName=n{n} NodeHostname={host} NodeAddr=127.0.0.1 Port={port} CPUs={processors}"
        " RealMemory={memory} State=UNKNOWN\n")


def free_ports(count):
    """Ports of the loopback interface that nobody listens on."""
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


class PrivateSlurm:
    """`in_haste`: looks for jobs to start every second, and not as Slurm does by default."""

    def __init__(self, folder, nodes=2, processors=1, memory=4000, in_haste=True):
        self.folder = folder
        self.nodes = nodes
        self.started = []
        ports = free_ports(nodes + 1)
        values = {"host": socket.gethostname().split(".")[0], "folder": folder, "nodes": nodes,
                  "user": pwd.getpwuid(os.getuid()).pw_name, "processors": processors,
                  "memory": memory, "schedule": HASTE if in_haste else ""}
        text = CONFIG.format(port=ports[0], **values)
        for n in range(1, nodes + 1):
            text += NODE.format(n=n, port=ports[n], **values)
            os.makedirs(f"{folder}/spool.n{n}")
        os.makedirs(f"{folder}/state")
        with open(f"{folder}/slurm.conf", "w", encoding="ascii") as file:
            file.write(text)
        with open(os.open(f"{folder}/munge.key", os.O_CREAT | os.O_WRONLY, 0o600), "wb") as file:
            file.write(os.urandom(128))
        self.environment = dict(os.environ, SLURM_CONF=f"{folder}/slurm.conf",
                                PATH=os.environ["PATH"] + ":/usr/sbin:/sbin")

        # Nodes take no control groups, which newer versions ask for by default.
        if int(re.search("[0-9]+", self.call("slurmd", "-V"))[0]) >= 23:
            with open(f"{folder}/cgroup.conf", "w", encoding="ascii") as file:
                file.write("CgroupPlugin=disabled\n")

    def __enter__(self):
        try:
            self.start_all()
        except BaseException:
            self.__exit__()
            raise
        return self

    def start_all(self):
        """Returns when all nodes are idle."""
        here = self.folder
        deadline = time.monotonic() + LONGEST_START
        self.start("munged", "--foreground", "--force", f"--key-file={here}/munge.key",
                   f"--socket={here}/munge.socket", f"--pid-file={here}/munged.pid",
                   f"--log-file={here}/munged.log", f"--seed-file={here}/munge.seed")
        while not os.path.exists(f"{here}/munge.socket"):
            self.wait(deadline)
        self.start("slurmctld", "-D", "-c")
        for n in range(1, self.nodes + 1):
            self.start("slurmd", "-D", "-N", f"n{n}")
        while self.call("sinfo", "-h", "-N", "-o", "%t").split() != ["idle"] * self.nodes:
            self.wait(deadline)

    def __exit__(self, *_):
        for process in reversed(self.started):
            process.terminate()
        for process in reversed(self.started):
            try:
                process.wait(20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    def start(self, program, *arguments):
        path = shutil.which(program, path=self.environment["PATH"])
        with open(f"{self.folder}/{program}.out", "ab") as log:
            self.started.append(subprocess.Popen([path, *arguments], env=self.environment,
                                                 stdin=subprocess.DEVNULL, stdout=log, stderr=log))

    def wait(self, deadline):
        if time.monotonic() > deadline:
            raise RuntimeError(f"Slurm takes too long; its words are in {self.folder}")
        for process in self.started:
            if process.poll() is not None:
                raise RuntimeError(f"{process.args[0]} has ended; its words are in {self.folder}")
        time.sleep(0.1)

    def call(self, *command, **how):
        done = subprocess.run(command, env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, check=False, **how)
        return done.stdout

    def finish_jobs(self, longest=600):
        """Waits until no job is left; returns the states of all, by name and number of the array."""
        deadline = time.monotonic() + longest
        while self.call("squeue", "-h", "-o", "%i").strip():
            self.wait(deadline)
        return {name: facts["JobState"] for name, facts in self.jobs().items()}

    def jobs(self):
        """Facts of all jobs, by name and number of the array; of those of one name, of the last."""
        jobs = {}
        for line in self.call("scontrol", "-o", "show", "job").splitlines():
            facts = dict(part.split("=", 1) for part in line.split() if "=" in part)
            if "JobState" in facts:
                array = "." + facts["ArrayTaskId"] if "ArrayTaskId" in facts else ""
                jobs[facts["JobName"] + array] = facts
        return jobs
