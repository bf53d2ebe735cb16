#!/bin/sh
# Runs a command beside a Slurm of one node, this machine, which is gone afterwards.
#
#   tools/with-slurm.sh COMMAND [ARGUMENT ...]
#
# All that Slurm writes stands in a temporary folder. Needs root: its daemons start jobs as users.
set -eu
place=$(mktemp -d)
daemons=
cleanup() {
    for daemon in $daemons; do
        kill "$daemon" 2>/dev/null || true
    done
    wait
    rm -rf "$place"
}
trap cleanup EXIT

start() { # a daemon in the foreground
    "$@" >>"$place/log" 2>&1 &
    daemons="$! $daemons"
}

node=$(hostname -s)
dd if=/dev/urandom of="$place/key" bs=1024 count=1 2>/dev/null
chmod 400 "$place/key"
mkdir "$place/state" "$place/spool"
chmod 755 "$place"
cat >"$place/slurm.conf" <<CONF
ClusterName=one
SlurmctldHost=$node(127.0.0.1)
AuthType=auth/munge
AuthInfo=socket=$place/munge.socket
CryptoType=crypto/munge
SlurmUser=root
SlurmctldPort=16817
SlurmdPort=16818
StateSaveLocation=$place/state
SlurmdSpoolDir=$place/spool
SlurmctldPidFile=$place/slurmctld.pid
SlurmdPidFile=$place/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
ReturnToService=2
MpiDefault=none
NodeName=$node NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES State=UP
CONF
export SLURM_CONF="$place/slurm.conf"
start munged --foreground --force --key-file="$place/key" --socket="$place/munge.socket" \
    --pid-file="$place/munge.pid" --log-file="$place/munge.log" --seed-file="$place/munge.seed"
start slurmctld -D
start slurmd -D -N "$node"
tries=0
until sinfo --noheader --format=%T 2>/dev/null | grep -q '^idle'; do
    tries=$((tries + 1))
    if [ "$tries" -gt 60 ]; then
        echo "with-slurm: Slurm does not come up:" >&2
        tail -n 20 "$place/log" >&2
        exit 1
    fi
    sleep 0.5
done
status=0
"$@" || status=$?
exit "$status"
