"""Runs all benchmarks of one build, prints the table, and writes results.json and results.svg."""

import argparse
import contextlib
import json
import os
import pathlib
import tempfile

import measurements
import picture
import rows
from surroundings import PERSONA, STEAM_ID, TICKET, Surroundings

REQUEST_SIZE = len("....STEA:info_request:1000000007")
ANSWER_SIZE = len(f"....STEA:info_response:1000000007:{STEAM_ID}:{PERSONA}:{len(TICKET) // 2}:{TICKET}")


@contextlib.contextmanager
def on_one_processor():
    """For us and all that we start. Spread over several, the same program takes twice or half as long from one moment to
    the next, depending on where the system happens to put the two ends of a pipe."""
    allowed = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {min(allowed)})
    try:
        yield
    finally:
        os.sched_setaffinity(0, allowed)


def measure(arguments):
    """Each part in surroundings of its own: what one has started is gone when the next begins."""
    parts = {
        "starts": lambda around: measurements.starts(around, REQUEST_SIZE, ANSWER_SIZE, arguments.rounds),
        "pipe": lambda around: measurements.answers(around, REQUEST_SIZE, ANSWER_SIZE, arguments.rounds),
        "in_process": lambda around: measurements.in_process(around, max(arguments.rounds // 2, 2)),
        "idle": lambda around: measurements.idle(around, arguments.idle),
        "sizes": measurements.sizes,
    }
    results = {}
    for name, part in parts.items():
        print(f"bench: {name}", flush=True)
        with tempfile.TemporaryDirectory(dir=arguments.output) as work:
            with Surroundings(arguments.binaries, work, arguments.windows, arguments.node) as around:
                with on_one_processor():
                    results[name] = part(around)
    return results


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--binaries", required=True, type=pathlib.Path)
    parser.add_argument("--output", required=True, type=pathlib.Path)
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("--node", help="Node.js for the same system")
    parser.add_argument("--rounds", type=int, default=30)
    parser.add_argument("--idle", type=int, default=60, help="seconds")
    arguments = parser.parse_args()

    measured = measure(arguments)
    table = (rows.pipe_rows(measured["pipe"]) + rows.in_process_rows(measured["in_process"]) +
             rows.start_rows(measured["starts"]) + rows.idle_rows(measured["idle"]) + rows.size_rows(measured["sizes"]))
    text = rows.as_text(table)
    (arguments.output / "results.txt").write_text(text + "\n")
    (arguments.output / "results.json").write_text(json.dumps({"rows": table, "measured": measured}, indent=1) + "\n")
    title = "Tollmere Steam Helper under Wine" if arguments.windows else "Tollmere Steam Helper on Linux"
    picture.draw(arguments.output / "results.svg", title, table, measured["in_process"])
    print(text)


if __name__ == "__main__":
    main()
