"""What is measured. Each part takes the runner of its programs and gives rows for the table."""

import pathlib
import subprocess
import time

import table
from program_runner import HELPER_PIPE, PERSONA, STEAM_ID, TICKET

IDENTITY = (STEAM_ID, PERSONA, TICKET)
REQUEST_SIZE = 4 + len("STEA:info_request:1000000007")
ANSWER_SIZE = 4 + len(f"STEA:info_response:1000000007:{STEAM_ID}:{PERSONA}:{len(TICKET) // 2}:{TICKET}")


# It tries again until the pipe listens, and then stays.
SILENT_CLIENT = """
const open = () => require('net').connect(process.argv[1]).on('error', () => setTimeout(open, 50));
open();
"""


def start_floor(runner):
    runner.start("bench_floor", runner.pipe("bench-floor"), REQUEST_SIZE, ANSWER_SIZE)


def answers(runner, node):
    rounds, requests, seconds = 100, 100, 20
    runner.start_helper()
    start_floor(runner)
    runner.start("bench_libuv", runner.pipe("bench-libuv"), *IDENTITY)
    runner.start("bench_asio", runner.pipe("bench-asio"), *IDENTITY)
    script = runner.path(pathlib.Path(__file__).with_name("peer_node.js"))
    runner.start(node, script, runner.pipe("bench-node"), *IDENTITY)
    contenders = [("helper", runner.pipe(HELPER_PIPE))]
    contenders += [(name, runner.pipe(f"bench-{name}")) for name in ("floor", "libuv", "asio", "node")]
    times = runner.measure("answers", rounds, requests, seconds, *(text for pair in contenders for text in pair))

    goals = {"blocking echo": 1.15, "libuv": 1, "Boost.Asio": 1, "Node.js": 1} if runner.windows else {}
    for what, kind, size in (("answer at full speed", "full-speed", requests),
                             ("answer at 10/s", "paced", seconds * 10)):
        for who, name in (("blocking echo", "floor"), ("libuv", "libuv"), ("Boost.Asio", "asio"), ("Node.js", "node")):
            yield table.compare_percentiles(what, who, times[kind, "helper"], times[kind, name], size, goals.get(who))


def launch(runner):
    runner.start_helper()
    times = runner.measure("launch", 40, runner.pipe(HELPER_PIPE), runner.program("sample_game"),
                           runner.path(runner.work))
    yield table.compare("launch request to answer", "the same game by `CreateProcessW`", times["launch", "helper"],
                        times["launch", "floor"], 1.15)


def listening(runner):
    runner.start_helper()
    start_floor(runner)
    times = runner.measure("listening", 200, "helper", runner.pipe(HELPER_PIPE), "floor", runner.pipe("bench-floor"))
    yield table.compare("launcher gone until the pipe listens", "a bare server", times["listening", "helper"],
                        times["listening", "floor"], 1.3)


def start_and_close(runner):
    empty = runner.empty_program("bench-empty")
    times = runner.measure("start-and-close", 99,
                           "helper", runner.pipe(HELPER_PIPE), 1, runner.program("tollmere_steam_helper"),
                           "floor", runner.pipe("bench-empty"), 1 + len(empty), runner.program("bench_empty"), *empty)
    helper, floor = times["start-and-close", "helper"], times["start-and-close", "floor"]
    yield table.compare("start until the pipe listens", "the empty program", helper[::2], floor[::2], 1.12)
    yield table.compare("window closed to process gone", "the empty program", helper[1::2], floor[1::2], 1.15)


def store(runner):
    times = runner.measure("store", 300)
    yield table.compare("full store read, merged, written", "the same bytes read and written",
                        times["store", "helper"], times["store", "floor"], 1.2)


def figures(process):
    """Wake-ups, seconds of processor time, and private bytes of a process, as the Linux kernel counts them."""
    folder = pathlib.Path(f"/proc/{process.pid}")
    tasks = list((folder / "task").iterdir())
    wake_ups = sum(int(line.split()[1]) for task in tasks for line in (task / "status").read_text().splitlines()
                   if line.startswith("voluntary_ctxt_switches"))
    seconds = sum(int((task / "schedstat").read_text().split()[0]) for task in tasks) / 1e9
    private = next(int(line.split()[1]) * 1024 for line in (folder / "status").read_text().splitlines()
                   if line.startswith("RssAnon"))
    return wake_ups, seconds, private


def idle(runner, node):
    """Three minutes, of which the first 20 seconds don't count. A launcher is connected to the helper and silent."""
    helper = runner.start_helper()
    empty = runner.start(runner.work / f"bench_empty{runner.suffix}", *runner.empty_program("bench-empty"))
    launcher = runner.start(node, "-e", SILENT_CLIENT, runner.pipe(HELPER_PIPE))
    time.sleep(20)
    before = [figures(process) for process in (helper, empty)]
    time.sleep(160)
    after = [figures(process) for process in (helper, empty)]
    if launcher.poll() is not None:
        raise RuntimeError("the launcher hasn't stayed")
    wake_ups, seconds, growth = ([new[i] - old[i] for old, new in zip(before, after)] for i in range(3))
    yield table.compare_numbers("idle: wake-ups a second", "the empty program", *(n / 160 for n in wake_ups), 1.05)
    yield table.compare_numbers("idle: processor time, ms a minute", "the empty program",
                                *(n / 160 * 60_000 for n in seconds), 1.3)
    yield table.limit("idle: growth, KB", "the empty program", *(n / 1024 for n in growth), 0)
    yield table.margin("private memory, MB", "the empty program", *(figure[2] / 1e6 for figure in after), 1.5)


def size(runner):
    kilobytes = []
    for name in ("tollmere_steam_helper", "bench_empty"):
        stripped = runner.work / f"{name}.stripped"
        tool = "x86_64-w64-mingw32-strip" if runner.windows else "strip"
        subprocess.run([tool, "-o", stripped, runner.binaries / f"{name}{runner.suffix}"], check=True)
        kilobytes.append(stripped.stat().st_size / 1000)
    yield table.limit("program, stripped, KB", "the empty program", *kilobytes, 310)
