# SPDX-License-Identifier: MIT
"""cluster.py FOLDER RESULTS [SCHEDULER]: cleans every picture of a folder on the machines of a Dask cluster.

Both folders are shared by all machines. Start `dask-scheduler` on one of them and `dask-worker tcp://HOST:8786` on
the others (Debian: python3-distributed), all with tavrix installed, and give tcp://HOST:8786 as SCHEDULER; without
one, two workers are started on this machine. A worker that is lost has its pictures done by the others.
"""

import os
import sys

from dask.distributed import Client, LocalCluster, as_completed

import cards


def main(folder, results, scheduler=None):
    os.makedirs(results, exist_ok=True)
    folder, results = os.path.abspath(folder), os.path.abspath(results)
    here = scheduler or LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None)
    with Client(here) as client:
        client.upload_file(cards.__file__)
        futures = client.map(cards.clean, cards.pictures_in(folder), folder=results, pure=False, retries=1)
        return cards.report(future.result() for future in as_completed(futures))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
