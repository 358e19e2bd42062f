#!/usr/bin/env bash
# Says for Snakemake 7 how a job of Slurm is: running, success or failed. Usage: status.sh JOB
state=$(scontrol --oneliner show job "$1" 2>/dev/null | sed -n 's/.* JobState=\([A-Z_]*\).*/\1/p')
# The controller forgets jobs; accounting, where there is any, does not.
[[ -n $state ]] || state=$(sacct -n -X -P -j "$1" -o State 2>/dev/null | sed 's/ .*//')
case $state in
  COMPLETED) echo success ;;
  BOOT_FAIL | CANCELLED | DEADLINE | FAILED | NODE_FAIL | OUT_OF_MEMORY | PREEMPTED | TIMEOUT) echo failed ;;
  *) echo running ;;
esac
