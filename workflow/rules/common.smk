# What the rules are made of: the configuration, the inputs, and what a job may take.
import csv
import json
import os

from snakemake.exceptions import WorkflowError
from snakemake.utils import validate

validate(config, "../schemas/config.schema.yaml")
WORK = config["work"]


def require_file(file, of):
    if not os.path.isfile(file):
        raise WorkflowError(f"{of}: there is no file {file}")


def inputs_of(sheet):
    """The files of each task, in the order of velk-run plan: library by library, as they first occur."""
    libraries = {}
    require_file(sheet, "samplesheet")
    with open(sheet, newline="", encoding="utf-8-sig") as file:
        rows = csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE)
        for column in ("library", "R1"):
            if column not in (rows.fieldnames or ()):
                raise WorkflowError(f"samplesheet {sheet} has no column {column} in its first line;"
                                    " tabs separate columns")
        for row in rows:
            if row["library"] and not row["library"].startswith("#"):
                names = [row[key] for key in ("R1", "R2") if row.get(key) not in (None, "", ".")]
                files = [os.path.join(os.path.dirname(sheet), name) for name in names]
                for file_of_reads in files:
                    require_file(file_of_reads, f"samplesheet {sheet}")
                libraries.setdefault(row["library"], []).append(files)
    if not libraries:
        raise WorkflowError(f"samplesheet {sheet} has no row")
    return [files for library in libraries.values() for files in library]


require_file(config["assembly"], "assembly")
INPUTS = inputs_of(config["samplesheet"])


def plan_memory(wildcards, input, attempt):
    """MB: the assembly and an index of a part of it."""
    return int((1000 + 3 * os.path.getsize(input.assembly) / 1e6) * attempt)


def tasks_of(plan, wildcards):
    """The plan's tasks that a job is about; before there is a plan of them, one that stands for them."""
    tasks = []
    if os.path.exists(str(plan)):
        with open(str(plan), encoding="utf-8") as file:
            tasks = json.load(file)["tasks"]
    if len(tasks) != len(INPUTS):  # snakemake asks again before it starts the job
        return [{"memory_mb": 1000, "minutes": 10}]
    return [tasks[int(wildcards.task)]] if "task" in wildcards.keys() else tasks


def task_memory(wildcards, input, attempt):
    """MB: as the plan says, and half as much again at each new attempt."""
    most = max(task["memory_mb"] for task in tasks_of(input.plan, wildcards))
    return int(most * (1 + attempt) / 2)


def task_minutes(wildcards, input, attempt):
    """Four times what the plan says, since nodes differ, and more at each new attempt."""
    return int((10 + 4 * sum(task["minutes"] for task in tasks_of(input.plan, wildcards))) * attempt)
