#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# slurm_test.sh SOURCE TAVRIX: starts Slurm as a single node (Debian: slurm-wlm, as root), runs the array,
# cancels it, submits it again, and ends Slurm. Run by hand.
source "$(dirname "$0")/scaling.sh"
started=()
trap 'kill "${started[@]}" 2>/dev/null; wait; rm -rf "$work"' EXIT
make_scans

node=$(hostname -s)
mkdir -m 700 "$work/munge"
dd if=/dev/urandom of="$work/munge/key" bs=1024 count=1 status=none
chmod 600 "$work/munge/key"
munged --foreground --force --key-file "$work/munge/key" --socket "$work/munge/socket" \
    --log-file "$work/munge/log" --pid-file "$work/munge/pid" --seed-file "$work/munge/seed" >"$work/munged.log" 2>&1 &
started+=($!)
cat >"$work/slurm.conf" <<END
ClusterName=here
SlurmctldHost=$node(localhost)
SlurmUser=root
AuthInfo=socket=$work/munge/socket
CredType=cred/munge
SlurmctldPort=16817
SlurmdPort=16818
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
ReturnToService=2
NodeName=$node NodeAddr=localhost CPUs=$(nproc) RealMemory=4000 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES State=UP
END
mkdir "$work/state" "$work/spool"
export SLURM_CONF=$work/slurm.conf
slurmctld -D >"$work/slurmctld.log" 2>&1 &
started+=($!)
slurmd -D -N "$node" >"$work/slurmd.log" 2>&1 &
started+=($!)
for _ in $(seq 60); do
    sinfo -h -o %t 2>/dev/null | grep -q idle && break
    sleep 1
done
sinfo

cd "$work"
ln -s "$source_dir/samples" samples
recipe 'Slurm' >recipe.sh
wait_for_end() { while [ -n "$(squeue -h)" ]; do sleep 0.5; done; }
bash recipe.sh
wait_for_outputs
scancel --user "$(id -un)"
wait_for_end
[ "$(count)" -lt "$count_all" ] || { echo 'it was done before it was interrupted'; exit 1; }
bash recipe.sh
wait_for_end
grep -q 'scans/b/bad.jpg: JPEG' slurm-*.out
check_all_done
