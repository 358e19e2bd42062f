# What the rules are made of: the configuration, the inputs, and what a job may take.
import csv
import json
import os

from snakemake.exceptions import WorkflowError
from snakemake.utils import validate

validate(config, "../schemas/config.schema.yaml")
WORK = config["work"]


def inputs_of(sheet):
    """The files of each task, in the order of velk-run plan: library by library, as they first occur."""
    libraries = {}
    folder = os.path.dirname(sheet)
    try:
        with open(sheet, newline="", encoding="utf-8") as file:
            for row in csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE):
                if row["library"] and not row["library"].startswith("#"):
                    names = [row[key] for key in ("R1", "R2") if row.get(key) not in (None, "", ".")]
                    files = [os.path.join(folder, name) for name in names]
                    libraries.setdefault(row["library"], []).append(files)
    except (OSError, KeyError) as error:
        raise WorkflowError(f"samplesheet {sheet} can't be used: {error!r}") from error
    if not libraries:
        raise WorkflowError(f"samplesheet {sheet} has no row")
    return [files for library in libraries.values() for files in library]


INPUTS = inputs_of(config["samplesheet"])


def plan_memory(wildcards, input, attempt):
    """MB: the assembly and an index of a part of it."""
    return int((1000 + 3 * os.path.getsize(input.assembly) / 1e6) * attempt)


def tasks_of(plan, wildcards):
    """The plan's tasks that a job is about; before there is a plan, one that stands for them."""
    if not os.path.exists(str(plan)):  # snakemake asks again before it starts the job
        return [{"memory_mb": 1000, "minutes": 10}]
    with open(str(plan), encoding="utf-8") as file:
        tasks = json.load(file)["tasks"]
    return [tasks[int(wildcards.task)]] if "task" in wildcards.keys() else tasks


def task_memory(wildcards, input, attempt):
    """MB: as the plan says, and half as much again at each new attempt."""
    most = max(task["memory_mb"] for task in tasks_of(input.plan, wildcards))
    return int(most * (1 + attempt) / 2)


def task_minutes(wildcards, input, attempt):
    """Four times what the plan says, since nodes differ, and more at each new attempt."""
    return int((10 + 4 * sum(task["minutes"] for task in tasks_of(input.plan, wildcards))) * attempt)
