#!/usr/bin/env python3
"""Do the conversion tests test? Plants one small fault after another into a copy of lib/format_conversion (and the
plug-in's converters), compiles what it touches, runs the conversion tests, and reports the share of faults that they
notice.

  tests/mutation/mutate.py                    200 drawn faults, about an hour of processor time
  tests/mutation/mutate.py --count 20 --seed 7
  tests/mutation/mutate.py --planted          the named faults of planted.py only

Nothing of the working tree is touched: the copy lies in build/mutation. A fault that changes no instruction of any
build of the kernels is none, and another is drawn for it; builds that this machine cannot run are left out. Exit code
0 when at least --goal percent of the faults were noticed (with --planted: all)."""

import argparse
import collections
import concurrent.futures
import itertools
import json
import os
import random
import resource
import sys
import time

import faults
from workshop import COPY, WORK, Workshop, prepare


def tried(shop, drawn, jobs):
    """Each fault and its outcome, in the order in which they are drawn."""
    drawn = iter(drawn)
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        waiting = collections.deque()
        try:
            while True:
                for fault in itertools.islice(drawn, 2 * jobs - len(waiting)):
                    waiting.append((fault, pool.submit(shop.try_fault, fault)))
                if not waiting:
                    return
                fault, outcome = waiting.popleft()
                yield fault, outcome.result()
        finally:
            pool.shutdown(cancel_futures=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--seed", type=int, default=int(time.time()))
    parser.add_argument("--goal", type=float, default=90)
    parser.add_argument("--jobs", type=int, default=len(os.sched_getaffinity(0)), help="faults at a time")
    parser.add_argument("--planted", action="store_true")
    arguments = parser.parse_args()
    prepare()
    print(f"seed {arguments.seed}", flush=True)
    results = []
    drawn = faults.planted(COPY) if arguments.planted else faults.drawn(COPY, random.Random(arguments.seed))
    none = 0
    for fault, outcome in tried(Workshop(), drawn, arguments.jobs):
        if outcome is None:
            if arguments.planted:
                sys.exit(f"{fault.name} does not build, or changes nothing")
            none += 1
            continue
        where = fault.where(COPY)
        results.append({"fault": fault.name, "where": where, "outcome": outcome})
        print(f"{len(results):3} {outcome:25} {fault.name}: {where}", flush=True)
        if not arguments.planted and len(results) == arguments.count:
            break
    noticed = sum(r["outcome"] != "survived" for r in results)
    share = 100 * noticed / max(len(results), 1)
    (WORK / "report.json").write_text(json.dumps({"seed": arguments.seed, "share": share, "faults": results}, indent=1))
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    print(f"{noticed} of {len(results)} faults noticed: {share:.1f} %; {none} more were none; "
          f"{(used.ru_utime + used.ru_stime) / 60:.0f} minutes of the processor")
    sys.exit(0 if share >= (100 if arguments.planted else arguments.goal) else 1)


if __name__ == "__main__":
    main()
