#!/usr/bin/env bash
#SBATCH --job-name=cabinets
#SBATCH --array=0-63
#SBATCH --cpus-per-task=1
#SBATCH --mem=2G
#SBATCH --time=08:00:00
#SBATCH --requeue
# sbatch slurm.sh SOURCE FOLDER [OPTION...]: each task of the array does its share of the cabinets, and keeps its results in
# a file in FOLDER. To be submitted from the folder with cabinet_digest.py. Submitted again, it does what is missing.
set -euo pipefail

source=$1
folder=$2
shift 2
part=$((SLURM_ARRAY_TASK_ID - SLURM_ARRAY_TASK_MIN))
mkdir -p "$folder"
# Status 1 says that some cabinets failed, which their rows tell.
python3 cabinet_digest.py --share "$part/$SLURM_ARRAY_TASK_COUNT" "$@" "$source" "$folder/part-$part.jsonl" || (($? == 1))
