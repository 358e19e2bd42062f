# The index of the assembly, once for all tasks: those of a node share it in memory.
rule index:
    input:
        plan=rules.plan.output,
        assembly=config["assembly"],
    output:
        f"{WORK}/assembly.vix",
    log:
        f"{WORK}/logs/index.log",
    benchmark:
        f"{WORK}/benchmarks/index.tsv"
    conda:
        "../envs/velk.yaml"
    params:
        program=config["velk_run"],
        root=config["inputs_root"],
    threads: config["threads"]
    retries: 2
    resources:
        mem_mb=task_memory,
        runtime=task_minutes,
    shell:
        "{params.program} index --plan {input.plan:q} --inputs-root {params.root:q}"
        " -t {threads} -o {output:q} >{log:q} 2>&1"
