"""Measures what a user of the helper waits for, each beside the least that it could cost, and prints one table.

Exit status: 0 if all was measured, whatever came out; 1 if a part failed, which says why.
"""

import argparse
import functools
import pathlib
import sys
import tempfile

import parts
import table
from program_runner import ProgramRunner


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--binaries", required=True, type=pathlib.Path)
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("--node", required=True, type=pathlib.Path, help="Node.js for the same system")
    parser.add_argument("--only", help="the one part to measure")
    arguments = parser.parse_args()

    node = arguments.node.resolve()
    all_parts = {"answers": functools.partial(parts.answers, node=node), "launch": parts.launch,
                 "listening": parts.listening, "start and close": parts.start_and_close, "store": parts.store,
                 "idle": functools.partial(parts.idle, node=node), "size": parts.size}
    rows, failed = [], False
    for name, part in all_parts.items():
        if arguments.only not in (None, name):
            continue
        print(f"bench: {name}", file=sys.stderr, flush=True)
        # With a runner of its own: what one part has started is gone when the next begins.
        try:
            with tempfile.TemporaryDirectory() as work, \
                    ProgramRunner(arguments.binaries.resolve(), work, arguments.windows) as runner:
                rows.extend(part(runner))
        except Exception as error:  # whatever it is, the other parts can still be measured
            print(f"bench: {name} failed: {error}", file=sys.stderr, flush=True)
            failed = True
    print("\n".join([table.HEAD, *rows]))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
